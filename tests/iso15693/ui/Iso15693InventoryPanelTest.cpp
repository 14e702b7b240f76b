// Inventory and the controller's anticollision on the ISO 15693 panel, against a fake
// board: frames, the UID list, the rules of the mask boxes, the loop, choosing a UID.
#include <QTimer>
#include <QtTest>

#include "Iso15693UiSupport.h"

using namespace iso15693test;

namespace {
const std::string kHeader = "\tUID\t\t\tDSFID";
// Anticollision reply with the given records (DSFID + UID least significant first).
std::string anticollisionReply(const std::vector<std::string>& records) {
  char head[7];
  std::snprintf(head, sizeof head, "80%02X%02X", static_cast<unsigned>(1 + 9 * records.size()),
                static_cast<unsigned>(records.size()));
  std::string out = head;
  for (const auto& r : records) out += r;
  return out;
}
}  // namespace

class Iso15693InventoryPanelTest : public QObject {
  Q_OBJECT
 private slots:
  void maskLengthRulesOnLeaving() {
    Fixture f;
    f.open();
    const std::vector<std::pair<QString, QString>> cases{{"41", "00"}, {"C0", "40"}, {"C1", "00"}, {"c", "0C"}};
    for (const auto& [typed, shown] : cases) {
      f.setText("txtInventoryMaskLenght", typed);
      f.leave("txtInventoryMaskLenght");
      QCOMPARE(f.w<QLineEdit>("txtInventoryMaskLenght")->text(), shown);
    }
    f.setText("txtInventoryMaskLenght", "");
    f.leave("txtInventoryMaskLenght");
    QCOMPARE(f.w<QLineEdit>("txtInventoryMaskLenght")->text(), QString());
  }

  void maskLengthShowsAsManyBoxesAsItNeeds() {
    Fixture f;
    f.open();
    const std::vector<std::pair<QString, int>> cases{{"40", 8}, {"01", 1}, {"09", 2}, {"00", 0}};
    for (const auto& [length, shown] : cases) {
      f.setText("txtInventoryMaskLenght", length);
      f.leave("txtInventoryMaskLenght");
      for (int i = 0; i < 8; ++i)
        QCOMPARE(!f.w(QString("txtInventoryMaskValue_%1").arg(i))->isHidden(), i < shown);
    }
  }

  void afiAndMaskBoxesOnLeaving() {
    Fixture f;
    f.open();
    f.setText("txtInventoryOptionalAFI", "7");
    f.leave("txtInventoryOptionalAFI");
    QCOMPARE(f.w<QLineEdit>("txtInventoryOptionalAFI")->text(), QString("07"));
    f.setText("txtInventoryMaskValue_3", "b");
    f.leave("txtInventoryMaskValue_3");
    QCOMPARE(f.w<QLineEdit>("txtInventoryMaskValue_3")->text(), QString("0B"));
  }

  void inventoryFramesFromTheControls() {
    Fixture f;
    f.open();
    f.w<QRadioButton>("optDataRate_0")->setChecked(true);
    f.click("cmdInventory");
    f.w<QRadioButton>("optDataRate_1")->setChecked(true);
    f.w<QRadioButton>("optInventorySlot_1")->setChecked(true);
    f.w<QCheckBox>("chkInventoryAFIOptions")->setChecked(true);
    f.setText("txtInventoryOptionalAFI", "12");
    f.setText("txtInventoryMaskLenght", "0C");
    f.leave("txtInventoryMaskLenght");
    f.setText("txtInventoryMaskValue_0", "34");
    f.setText("txtInventoryMaskValue_1", "12");
    f.click("cmdInventory");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"240100", "1601120C3412"}));
    QVERIFY(f.log().ends_with(sendRecv("INVENTORY", "1601120C3412", "8700")));
  }

  void twelveBitMaskSendsTheSecondByteAsTyped() {
    Fixture f;
    f.open();
    f.setText("txtInventoryMaskLenght", "0C");
    f.setText("txtInventoryMaskValue_0", "A5");
    f.setText("txtInventoryMaskValue_1", "FF");
    f.click("cmdInventory");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"26010CA5FF"}));
  }

  void inventoryWithNoTagShowsHeaderAndEmptyRow() {
    Fixture f;
    f.open();
    f.click("cmdInventory");
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")), (QStringList{QString::fromStdString(kHeader), ""}));
    QCOMPARE(memoryBuffer().Contenu(), (std::vector<std::string>{"No detected answer"}));
    QCOMPARE(f.w<QGroupBox>("FraINVENTORYresponse")->title(), QString("INVENTORY response"));
    QVERIFY(f.w("cmdInventory")->isEnabled());
  }

  void inventoryWithOneTagListsIt() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0007BC9A7856341202E0"));
    f.click("cmdInventory");
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")),
             (QStringList{QString::fromStdString(kHeader), "", " 00\tE002123456789ABC\t\t07"}));
  }

  void inventoryRowNumberIsTheMaskWalkNotACount() {
    Fixture f;
    f.open();
    f.setText("txtInventoryMaskLenght", "0C");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0007BC9A7856341202E0"));
    f.click("cmdInventory");
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")).last(), QString(" 03\tE002123456789ABC\t\t07"));
  }

  void inventoryWithOtherFlagsAddsTheFormatProblem() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, tagAnswer("010F"));
    f.click("cmdInventory");
    QCOMPARE(memoryBuffer().Contenu(), (std::vector<std::string>{"(01) Answer format problemz"}));
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->count(), 2);
  }

  void inventoryLoopRepeatsTheSameFrameUntilTheBoxIsCleared() {
    Fixture f;
    f.open();
    int calls = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op != Op::SendReceive) return {0, ""};
      if (++calls == 5) QTimer::singleShot(0, [&] { f.click("chkLoop"); });
      return {0, calls == 2 ? tagAnswer("0007BC9A7856341202E0") : "8700"};
    });
    QTest::mouseClick(f.w<QCheckBox>("chkLoop"), Qt::LeftButton);
    QVERIFY(f.panel->inventoryLoop());
    // Changing the mask during the loop changes nothing: the frame was built once.
    QTimer::singleShot(0, [&] { f.setText("txtInventoryMaskLenght", "08"); });
    f.click("cmdInventory");
    QVERIFY(!f.panel->inventoryLoop());
    const auto frames = sent(f.driver);
    QVERIFY(frames.size() >= 5);
    for (const auto& fr : frames) QCOMPARE(fr, std::string("260100"));
    // After the good pass the failed ones show the last good row again.
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")).last(), QString(" 00\tE002123456789ABC\t\t07"));
    QVERIFY(f.w("tabStripchoice")->isEnabled());
  }

  void anticollisionListsEveryTagNumbered() {
    Fixture f;
    f.open();
    const std::string reply = anticollisionReply(
        {"00" "BC9A7856341202E0", "11" "0807060504030201", "22" "8877665544332211"});
    f.driver.queue(Op::KQCmd, 0, reply);
    f.click("cmdAntiCollisionIso15693");
    QCOMPARE(sent(f.driver, Op::KQCmd), (std::vector<std::string>{"02A00126"}));
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")),
             (QStringList{QString::fromStdString(kHeader), "", " 01\tE002123456789ABC\t\t00",
                          " 02\t0102030405060708\t\t11", " 03\t1122334455667788\t\t22"}));
    QVERIFY(f.log().ends_with(entry("ANTICOLLISION", "TL42RQDLL_KQCMD", "02A00126", reply)));
    QVERIFY(memoryBuffer().Contenu().empty());
  }

  void anticollisionSixteenSlotsAndNoTag() {
    Fixture f;
    f.open();
    f.w<QRadioButton>("optInventorySlot_1")->setChecked(true);
    f.w<QCheckBox>("chkInventoryAFIOptions")->setChecked(true);
    f.driver.queue(Op::KQCmd, 0, "800100");
    f.click("cmdAntiCollisionIso15693");
    QCOMPARE(sent(f.driver, Op::KQCmd), (std::vector<std::string>{"02A00106"}));
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->count(), 2);
    QCOMPARE(memoryBuffer().Contenu(), (std::vector<std::string>{"No detected answer"}));
  }

  void anticollisionRepeatGoesThroughSendReceive() {
    Fixture f;
    f.open();
    f.driver.queue(Op::KQCmd, 5, "");
    f.driver.queue(Op::SendReceive, 0, anticollisionReply({"00" "BC9A7856341202E0"}));
    f.click("cmdAntiCollisionIso15693");
    std::vector<std::string> calls;
    for (const auto& c : f.driver.calls()) calls.push_back(std::string(reader::info(c.op).symbol) + " " + c.request);
    QCOMPARE(calls, (std::vector<std::string>{"TL42RQDll_KQCmd 02A00126", "TL42RQDLL_USBconnect ",
                                               "TL42RQDLL_USBhandlecheck ", "TL42RQDll_Select 010D",
                                               "TL42RQDll_SendReceive 02A00126"}));
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")).last(), QString(" 01\tE002123456789ABC\t\t00"));
  }

  void clickingADataRowChoosesTheUidForAddressedCommands() {
    Fixture f;
    f.open();
    f.driver.queue(Op::KQCmd, 0, anticollisionReply({"00" "BC9A7856341202E0", "00" "0807060504030201"}));
    f.click("cmdAntiCollisionIso15693");
    auto* list = f.w<QListWidget>("lstTransponderUID");
    const QRect r = list->visualItemRect(list->item(3));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, r.center());
    QCOMPARE(f.w<QLineEdit>("txtTransponderUID")->text(), QString("0102030405060708"));
    QCOMPARE(glob::state().transponderUIDFrame, std::string("0807060504030201"));
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.click("cmdStayQuiet");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"22020807060504030201"}));
  }

  void clickingTheHeaderTakesAShortTextAndEmptiesTheFrame() {
    Fixture f;
    f.open();
    f.click("cmdInventory");
    glob::state().transponderUIDFrame = "0807060504030201";
    auto* list = f.w<QListWidget>("lstTransponderUID");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
    QCOMPARE(f.w<QLineEdit>("txtTransponderUID")->text(), QString("\t\t\tDSFID"));
    QCOMPARE(glob::state().transponderUIDFrame, std::string());
    QCOMPARE(f.w<QLineEdit>("txtTransponderUID")->palette().color(QPalette::Text), QColor(255, 0, 0));
  }

  void closingThePanelDuringTheInventoryLoopEndsIt() {
    Fixture f;
    f.open();
    QPointer<frmTL42RQ_ISO15693_UI> panel = f.panel.release();
    int calls = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++calls == 3) QTimer::singleShot(0, [&] { panel->close(); });
      return {0, "8700"};
    });
    QTest::mouseClick(uitest::find<QCheckBox>(panel, "chkLoop"), Qt::LeftButton);
    QTest::mouseClick(uitest::find<QPushButton>(panel, "cmdInventory"), Qt::LeftButton);
    // The loop ended at its next check; the panel goes once the handler has returned.
    QCOMPARE(calls, 3);
    QTRY_VERIFY(panel.isNull());
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO15693));
  }
};

QTEST_MAIN(Iso15693InventoryPanelTest)
#include "Iso15693InventoryPanelTest.moc"
