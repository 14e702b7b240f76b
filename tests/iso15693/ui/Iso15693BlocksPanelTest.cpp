// Block commands and transfers of the ISO 15693 panel against a fake board: chunks of
// Read Multiple Block and of the security status, ranges through the end of memory,
// Lock Block, the write grid, AUTO LOOP, STOP, and closing while a loop runs.
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QTimer>
#include <QtTest>

#include "Iso15693UiSupport.h"
#include "shell/UsageFile.h"
#include "shell/ui/MainForm.h"

using namespace iso15693test;

namespace {
// A tag that answers every read with block bytes made of the block address, and every
// write and lock with "no error".
void readableTag(FakeDriver& d) {
  d.setHandler([](Op op, const std::string& frame) -> FakeDriver::Reply {
    switch (op) {
      case Op::Echo:
        return {0, "5500"};
      case Op::SendReceive:
        if (frame.size() >= 6 && frame.substr(2, 2) == "20") {
          const std::string b = frame.substr(4, 2);
          return {0, tagAnswer("00" + b + b + b + b)};
        }
        return {0, tagAnswer("00")};
      default:
        return {0, "0000"};
    }
  });
}
}  // namespace

class Iso15693BlocksPanelTest : public QObject {
  Q_OBJECT
 private slots:
  void readSingleBlockOverARangeShowsRowsWithAddresses() {
    Fixture f;
    readableTag(f.driver);
    f.open();
    f.range("3", "5");
    f.click("cmdReadUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"022003", "022004", "022005"}));
    QCOMPARE(f.view(), (QStringList{"03   03 03 03 03 ", "04   04 04 04 04 ", "05   05 05 05 05 "}));
    QCOMPARE(f.w<QLineEdit>("txtUserAddress_0")->text(), QString("03"));
    QVERIFY(f.w("cmdReadUser")->isEnabled());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
    QVERIFY(!f.w("cmdStopCommand")->isVisible());
  }

  void readWithLockBitsAsksForTheStatusByte() {
    Fixture f;
    f.open();
    f.range("05", "05");
    f.w<QCheckBox>("chkLockBits")->setChecked(true);
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00" "01" "12345678"));
    f.click("cmdReadUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"422005"}));
    QCOMPARE(f.view(), QStringList{"05   01   12 34 56 78 "});
  }

  void readErrorsGiveTheirRows() {
    Fixture f;
    f.open();
    f.range("00", "02");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0110"));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("02"));
    f.driver.queue(Op::SendReceive, 0, "8700");
    f.click("cmdReadUser");
    // Each block is judged by its own answer: the one that was not cut had no response.
    QCOMPARE(f.view(), (QStringList{"00   (10) Block address not available", "01   (02) Answer format problemz",
                                    "02   No detected answer"}));
  }

  void readMultipleBlockOfTwelveFromFiveInChunksThreeEightOne() {
    Fixture f;
    f.open();
    f.range("05", "10");
    f.click("cmdReadMultipleBlock");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02230502", "02230807", "02231000"}));
    QCOMPARE(memoryBuffer().Size(), 12L);
    QCOMPARE(memoryBuffer().Item(0), std::string("no detected answer"));
  }

  void readMultipleBlockOfOneBlockSendsCount00() {
    Fixture f;
    f.open();
    f.range("07", "07");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00" "A1A2A3A4"));
    f.click("cmdReadMultipleBlock");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02230700"}));
    QCOMPARE(f.view(), QStringList{"07   A1 A2 A3 A4 "});
  }

  void readMultipleThroughTheEndOfMemorySendsUnmaskedAndShowsMasked() {
    Fixture f;  // VAX30: 64 blocks, mask 3F
    f.open();
    f.range("3E", "01");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00" "3E3E3E3E" "3F3F3F3F"));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00" "00000000" "01010101"));
    f.click("cmdReadMultipleBlock");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02233E01", "02234001"}));
    QCOMPARE(f.view(), (QStringList{"3E   3E 3E 3E 3E ", "3F   3F 3F 3F 3F ", "00   00 00 00 00 ",
                                    "01   01 01 01 01 "}));
  }

  void readMultipleWithLockBitsShowsTheFirstStatusOnTheSecondRow() {
    Fixture f;
    f.open();
    f.range("00", "01");
    f.w<QCheckBox>("chkLockBits")->setChecked(true);
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00" "00" "11223344" "01" "55667788"));
    f.click("cmdReadMultipleBlock");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"42230001"}));
    QCOMPARE(f.view(), (QStringList{"00   00   11 22 33 44 ", "01   00   55 66 77 88 "}));
  }

  void readMultipleErrorRowsForEveryBlock() {
    Fixture f;
    f.open();
    f.range("00", "02");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("010F"));
    f.click("cmdReadMultipleBlock");
    QCOMPARE(f.view(), (QStringList{"00   (0F) Error with no information given",
                                    "01   (0F) Error with no information given",
                                    "02   (0F) Error with no information given"}));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("02"));
    f.click("cmdReadMultipleBlock");
    QCOMPARE(f.view(), (QStringList{"00   no Tag answer", "01   no Tag answer", "02   no Tag answer"}));
  }

  void securityStatusOfFortyBlocksInRequestsOfThirtyTwoAndEight() {
    Fixture f;
    f.open();
    f.range("00", "27");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00" + std::string(64, '0')));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00" "0101010101010101"));
    f.click("cmdGetMultipleBlockSecurityStatus");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"022C001F", "022C2007"}));
    QCOMPARE(memoryBuffer().Size(), 40L);
    QCOMPARE(f.view().last(), QString("27   01"));
    QVERIFY(f.log().find(sendRecv("GET MULTIPLE BLOCK SECURITY STATUS", "022C2007", tagAnswer("00" "0101010101010101"))) !=
            std::string::npos);
  }

  void securityStatusAtWidthTwo() {
    Fixture f("VAS60E");
    f.open();
    f.range("0100", "0102");
    f.click("cmdGetMultipleBlockSecurityStatus");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0A2C00010200"}));
  }

  void lockBlockWithStartEqualToEndSendsOneFrame() {
    Fixture f;
    f.open();
    f.range("09", "09");
    f.click("cmdLockBlock");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"082209"}));
    QVERIFY(!glob::state().transferRunning);
  }

  void lockBlockWalksThroughTheEndOfMemory() {
    Fixture f;
    f.open();
    f.range("3F", "01");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0111"));
    f.click("cmdLockBlock");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"08223F", "082200", "082201"}));
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("11 : unknown error code"));
  }

  void badAddressBoxShowsTheMessageAndSendsNothing() {
    Fixture f;
    f.open();
    f.range("", "05");
    f.click("cmdReadUser");
    QVERIFY(f.driver.calls().empty());
    QCOMPARE(f.dialogs.messages.size(), std::size_t(1));
    QCOMPARE(f.dialogs.messages[0].text, QString("Invalid Address: check for Hexadecimal format or Adress value"));
    QCOMPARE(f.dialogs.messages[0].title, QString("Hexadecimal Data Required"));
    QVERIFY(f.w("cmdReadUser")->isEnabled());
  }

  void writeSingleBlockFromZeroToThreeWritesTheSameDataFourTimes() {
    Fixture f;
    readableTag(f.driver);
    f.open();
    f.range("00", "03");
    f.click("cmdWriteSingleBlock");
    QVERIFY(f.w("fraPageWrite")->isVisible());
    QVERIFY(f.w("cmdWriteUser")->isVisible());
    QCOMPARE(f.w<QPushButton>("cmdWriteUser")->text(), QString("Write Single Block"));
    QVERIFY(!f.w("cmdReadUser")->isEnabled());
    QVERIFY(f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_1")->isReadOnly());
    f.w<MaskedEdit>("PWData_0")->setMaskedText("11 22 33 44 ");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02210011223344", "02210111223344", "02210211223344",
                                                        "02210311223344"}));
    QCOMPARE(f.view(), (QStringList{"00   (00) No error during Prog sequence", "01   (00) No error during Prog sequence",
                                    "02   (00) No error during Prog sequence",
                                    "03   (00) No error during Prog sequence"}));
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("OK"));
    QVERIFY(!f.w("fraPageWrite")->isVisible());
    QVERIFY(f.w("cmdReadUser")->isEnabled());
    QVERIFY(!glob::state().transferRunning);
  }

  void writeToALockedBlockShowsTheTagError() {
    Fixture f;
    f.open();
    f.range("02", "02");
    f.click("cmdWriteSingleBlock");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0112"));
    f.click("cmdWriteUser");
    QCOMPARE(f.view(), QStringList{"02   (12) Block is locked, content cannot be changed"});
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("HS"));
  }

  void dataBoxWithABlankFailsTheCheckAndSendsNothing() {
    Fixture f;
    f.open();
    f.range("00", "00");
    f.click("cmdWriteSingleBlock");
    auto* box = f.w<MaskedEdit>("PWData_0");
    box->setMaskedText("11 22 33 44 ");
    box->setCursorPosition(4);
    QTest::keyClick(box, Qt::Key_Delete);
    QCOMPARE(box->maskedText(), std::string("11 2_ 33 44 "));
    f.click("cmdWriteUser");
    QVERIFY(f.driver.calls().empty());
    QCOMPARE(f.dialogs.messages.size(), std::size_t(1));
    QCOMPARE(f.dialogs.messages[0].text, QString("Invalid Data: check for Hexadecimal format or # of data"));
    QCOMPARE(f.dialogs.messages[0].title, QString("Hexadecimal data required "));
    // The grid stays open for a new try.
    QVERIFY(f.w("fraPageWrite")->isVisible());
    QVERIFY(f.w("PWData_0")->isEnabled());
    QVERIFY(f.w("cmdWriteUser")->isEnabled());
  }

  void writeKillTakesOneWholeBoxEvenWithPageSizeFour() {
    Fixture f;
    f.open();
    f.range("00", "00");
    QCOMPARE(f.w<QComboBox>("cboPageSize")->currentText(), QString("4"));
    f.click("cmdWriteKill");
    QCOMPARE(f.w<QPushButton>("cmdWriteUser")->text(), QString("Write Single Block"));
    QCOMPARE(glob::state().writeMode, 3);
    f.w<MaskedEdit>("PWData_0")->setMaskedText("A1 B2 C3 D4 ");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02B10200A1B2C3D4"}));
  }

  void writeAfiUsesAGridOfOneByte() {
    Fixture f;
    f.open();
    f.range("00", "00");
    f.click("cmdWriteAFI");
    QCOMPARE(f.w<QPushButton>("cmdWriteUser")->text(), QString("Write AFI"));
    QCOMPARE(f.w<MaskedEdit>("PWData_0")->maskedText(), std::string("00 "));
    QVERIFY(f.w("PWData_1")->isHidden());
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("C3");
    QCOMPARE(f.w<MaskedEdit>("PWData_0")->maskedText(), std::string("C3 "));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00"));
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0227C3"}));
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("OK"));
  }

  void passwordCommandsTakeTheNumberOfTheOption() {
    Fixture f("VAS60E");
    f.open();
    f.range("0102", "0102");
    f.w<QRadioButton>("OptPasswordNumber_1")->setChecked(true);
    f.click("cmdPresentSectorPassword");
    QCOMPARE(f.w<QPushButton>("cmdWriteUser")->text(), QString("Present Password"));
    f.w<MaskedEdit>("PWData_0")->setMaskedText("01 02 03 04 ");
    f.click("cmdWriteUser");
    f.click("cmdLockSectorPassword");
    QCOMPARE(f.w<QPushButton>("cmdWriteUser")->text(), QString("Lock Password"));
    f.w<MaskedEdit>("PWData_0")->setMaskedText("03 ");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02B30202" "01020304", "0AB202020103"}));
  }

  void autoLoopWithThreeGivesFourReadsAndCountsDown() {
    Fixture f;
    f.open();
    f.range("00", "00");
    QTest::mouseClick(f.w<QCheckBox>("chkUserLoop"), Qt::LeftButton);
    QVERIFY(glob::state().autoLoopActive);
    QVERIFY(f.w("txtLOOPnumber")->isVisible());
    QVERIFY(f.w("lblLOOPnumber")->isVisible());
    f.setText("txtLOOPnumber", "3");
    QStringList boxAtEachRead;
    QStringList countAtEachRead;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive) {
        boxAtEachRead << f.w<QLineEdit>("txtLOOPnumber")->text();
        countAtEachRead << f.w<QLabel>("lblLoopCount")->text();
      }
      return {0, tagAnswer("0011223344")};
    });
    f.click("cmdReadUser");
    QCOMPARE(sent(f.driver).size(), std::size_t(4));
    QCOMPARE(boxAtEachRead, (QStringList{"3", "3", "2", "1"}));
    QCOMPARE(countAtEachRead, (QStringList{"1", "1", "2", "3"}));
    QCOMPARE(f.w<QLineEdit>("txtLOOPnumber")->text(), QString("0"));
    QVERIFY(!f.w("txtLOOPnumber")->isVisible());
    QVERIFY(!f.w("lblLOOPnumber")->isVisible());
    QVERIFY(!f.w<QCheckBox>("chkUserLoop")->isChecked());
    QVERIFY(!glob::state().autoLoopActive);
  }

  void autoLoopWithZeroRunsUntilStop() {
    Fixture f;
    f.open();
    f.range("00", "01");
    QTest::mouseClick(f.w<QCheckBox>("chkUserLoop"), Qt::LeftButton);
    int reads = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++reads == 9) QTimer::singleShot(0, [&] { f.click("cmdStopCommand"); });
      return {0, tagAnswer("0011223344")};
    });
    f.click("cmdReadUser");
    // STOP came in the yield after the ninth read: the pass ends there.
    QCOMPARE(reads, 9);
    QCOMPARE(f.w<QLabel>("lblLoopCount")->text(), QString("4"));
    QVERIFY(!f.w("cmdStopCommand")->isVisible());
    QVERIFY(!glob::state().stopRequested);
    QVERIFY(f.w("cmdReadUser")->isEnabled());
  }

  void stopDuringAReadEndsItAfterTheRunningExchange() {
    Fixture f;
    f.open();
    f.range("00", "3F");
    int reads = 0;
    bool stopShown = false;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++reads == 3) {
        stopShown = f.w("cmdStopCommand")->isVisible();
        QTimer::singleShot(0, [&] { f.click("cmdStopCommand"); });
      }
      return {0, tagAnswer("0011223344")};
    });
    f.click("cmdReadUser");
    QCOMPARE(reads, 3);
    QVERIFY(stopShown);
    QCOMPARE(memoryBuffer().Size(), 3L);
  }

  void cancelWhileAutoLoopIsOnClearsTheBox() {
    Fixture f;
    f.open();
    f.range("00", "00");
    QTest::mouseClick(f.w<QCheckBox>("chkUserLoop"), Qt::LeftButton);
    f.click("cmdWriteSingleBlock");
    f.click("cmdCancelWriteTest");
    QVERIFY(!f.w<QCheckBox>("chkUserLoop")->isChecked());
    QVERIFY(!glob::state().autoLoopActive);
    QVERIFY(!f.w("fraPageWrite")->isVisible());
    QVERIFY(f.w("cmdReadUser")->isEnabled());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
    QVERIFY(f.driver.calls().empty());
  }

  void emptyLoopNumberBecomesZeroOnLeaving() {
    Fixture f;
    f.open();
    f.setText("txtLOOPnumber", "");
    f.leave("txtLOOPnumber");
    QCOMPARE(f.w<QLineEdit>("txtLOOPnumber")->text(), QString("0"));
  }

  void oneRequestReadWarnsAboveFourteenBlocks() {
    Fixture f;
    f.open();
    f.range("00", "0E");
    f.panel->readMultipleBlockOneRequest();
    QVERIFY(f.driver.calls().empty());
    QCOMPARE(f.dialogs.messages.size(), std::size_t(1));
    QCOMPARE(f.dialogs.messages[0].text, QString("WARNING : \r\nTL42RQ is able to transfer 14 pages of 4 bytes max."));
    QCOMPARE(f.dialogs.messages[0].title, QString("DEMO-TL42RQ-A : Read Multiple Block"));
    f.range("00", "0D");
    f.panel->readMultipleBlockOneRequest();
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0223000D"}));
  }

  void closingThePanelDuringAutoLoopNeverCrashes() {
    Fixture f;
    f.open();
    f.range("00", "03");
    QTest::mouseClick(f.w<QCheckBox>("chkUserLoop"), Qt::LeftButton);
    QPointer<frmTL42RQ_ISO15693_UI> panel = f.panel.release();
    int reads = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++reads == 6) QTimer::singleShot(0, [&] { panel->close(); });
      return {0, tagAnswer("0011223344")};
    });
    QTest::mouseClick(uitest::find<QPushButton>(panel, "cmdReadUser"), Qt::LeftButton);
    QCOMPARE(reads, 6);
    QTRY_VERIFY(panel.isNull());
    QVERIFY(!glob::state().autoLoopActive);
  }

  void closingTheMainWindowDuringATransferNeverCrashes() {
    Fixture f;
    shell::setProgramDirectory(TL42RQ_SOURCE_DIR "/data/");
    {
      MainForm form;
      form.setEndsProcessOnClose(false);
      form.load(false);
      form.show();
      form.openProduct("VAX30");
      auto* panel = qobject_cast<frmTL42RQ_ISO15693_UI*>(form.panel(glob::PanelId::ISO15693));
      QVERIFY(panel);
      QCOMPARE(panel->windowTitle(), QString("ISO15693 Tags : VAX30"));
      uitest::find<QTabBar>(panel, "tabStripchoice")->setCurrentIndex(1);
      QTest::mouseClick(uitest::find<QCheckBox>(panel, "chkUserLoop"), Qt::LeftButton);
      uitest::find<QPushButton>(panel, "cmdWriteSingleBlock")->click();
      int writes = 0;
      f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
        if (op == Op::SendReceive && ++writes == 70) QTimer::singleShot(0, [&] { form.close(); });
        return {0, tagAnswer("00")};
      });
      uitest::find<QPushButton>(panel, "cmdWriteUser")->click();
      QCOMPARE(writes, 70);
      QTRY_VERIFY(form.mdiArea()->subWindowList().isEmpty());
    }
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO15693));
  }
};

QTEST_MAIN(Iso15693BlocksPanelTest)
#include "Iso15693BlocksPanelTest.moc"
