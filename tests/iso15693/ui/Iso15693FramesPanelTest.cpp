// The ISO 15693 panel's common part against a fake board: opening, flags and frames as
// the controls build them, the cut of answers with its trace notes, the reconnect, the
// free frame box, the table of products and the tabs.
#include <QtTest>

#include "Iso15693UiSupport.h"

using namespace iso15693test;

class Iso15693FramesPanelTest : public QObject {
  Q_OBJECT
 private slots:
  void openingSendsEchoAndSelectAndLogsThem() {
    Fixture f;
    f.open();
    const std::string expected =
        "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500" +
        entry("TL42RQ CONFIGURATION : ISO15693 10% High Datarate One Subcarrier", "TL42RQDLL_SELECT", "010D", "0000");
    QCOMPARE(f.log(), expected);
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_request")->text(), QString());
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_answer")->text(), QString());
    QCOMPARE(glob::state().rfAddressBytes, 1);
    QCOMPARE(glob::state().iso15693RequestFlags, 0);
    QCOMPARE(glob::state().currentTab, 1);
    QCOMPARE(f.w<QLineEdit>("txtUserAddress_0")->text(), QString("00"));
    QCOMPARE(f.w<QLineEdit>("txtUserAddress_1")->text(), QString("3F"));
    QVERIFY(f.w("cmdAntiCollisionIso15693")->isVisible());
    QVERIFY(!f.w("cmdStopCommand")->isVisible());
    QCOMPARE(f.panel->windowTitle(), QString("ISO15693 Tags : "));
  }

  void echoThatFailsIsRepeatedOnce() {
    Fixture f;
    f.driver.queue(Op::Echo, 0, "5501");
    f.driver.queue(Op::Echo, 0, "5501");
    f.panel = std::make_unique<frmTL42RQ_ISO15693_UI>();
    QCOMPARE(sent(f.driver, Op::Echo).size(), std::size_t(2));
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"010D"}));
  }

  void twoByteProductOpensWithWideBoxes() {
    Fixture f("VAS60E");
    f.open();
    QCOMPARE(glob::state().rfAddressBytes, 2);
    QCOMPARE(f.w<QLineEdit>("txtUserAddress_0")->text(), QString("0000"));
    QCOMPARE(f.w<QLineEdit>("txtUserAddress_1")->text(), QString("07FF"));
    QCOMPARE(f.w<QLineEdit>("txtUserAddress_1")->maxLength(), 4);
  }

  void oldControllerHidesAnticollision() {
    Fixture f;
    glob::state().mcuRevision = "1.4.0";
    f.open();
    QVERIFY(!f.w("cmdAntiCollisionIso15693")->isVisible());
  }

  void productTableShowsWhatEachProductGets() {
    {
      Fixture f("VAX30");
      f.open();
      QVERIFY(!f.w("FraKill")->isHidden());
      QVERIFY(!f.w("cmdLockBlock")->isHidden());
      QVERIFY(f.w("FraPasswordRF")->isHidden());
      QVERIFY(f.w("FraEnergyHarvesting")->isHidden());
      QVERIFY(f.w("optExtensionFlag_0")->isHidden());
      QVERIFY(f.w<QRadioButton>("optExtensionFlag_0")->isChecked());
      QVERIFY(!f.w("cboPageSize")->isHidden());
    }
    {
      Fixture f("VAS50");
      f.open();
      QVERIFY(f.w("cmdReadMultipleBlock")->isHidden());
      QVERIFY(!f.w("cmdReadUser")->isHidden());
    }
    {
      Fixture f("VAS60E");
      f.open();
      QVERIFY(f.w("FraKill")->isHidden());
      QVERIFY(f.w("cmdLockBlock")->isHidden());
      QVERIFY(!f.w("cmdGetMultipleBlockSecurityStatus")->isHidden());
      QVERIFY(!f.w("FraPasswordRF")->isHidden());
      QVERIFY(!f.w("FraEnergyHarvesting")->isHidden());
      QVERIFY(!f.w("optExtensionFlag_1")->isHidden());
      QVERIFY(f.w<QRadioButton>("optExtensionFlag_0")->isChecked());
      QVERIFY(f.w("cboPageSize")->isHidden());
      QVERIFY(f.w("lblNbData")->isHidden());
    }
    {
      Fixture f("QLN43");
      f.open();
      QVERIFY(f.w("FraEnergyHarvesting")->isHidden());
      QVERIFY(f.w<QRadioButton>("optExtensionFlag_1")->isChecked());
      QVERIFY(f.w("optExtensionFlag_1")->isHidden());
    }
    QCOMPARE(Fixture().applicationEnds, 0);
  }

  void referenceWithoutRowEndsTheApplication() {
    Fixture f("ISO14443-A");
    f.panel = std::make_unique<frmTL42RQ_ISO15693_UI>();
    QCOMPARE(f.applicationEnds, 1);
    // It ends before anything is sent.
    QVERIFY(f.driver.calls().empty());
  }

  void stayQuietLowTwoScSendsOnlyFlagsAndCode() {
    Fixture f;
    f.open();
    f.w<QRadioButton>("optDataRate_2")->setChecked(true);
    f.click("cmdStayQuiet");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0102"}));
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_request")->text(), QString("0102"));
    QVERIFY(f.log().ends_with(sendRecv("STAY QUIET", "0102", "8700")));
  }

  void readSingleBlockAddressedOneByteBlock() {
    Fixture f;
    f.open();
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.chooseUid("E002123456789ABC");
    f.range("05", "05");
    f.click("cmdReadUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2220BC9A7856341202E005"}));
  }

  void readSingleBlockTwoByteBlock() {
    Fixture f("VAS60E");
    f.open();
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.chooseUid("E002123456789ABC");
    f.range("0105", "0105");
    f.click("cmdReadUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2A20BC9A7856341202E00501"}));
  }

  void lockBlockSendsFlags08WhateverTheControls() {
    Fixture f;
    f.open();
    f.w<QRadioButton>("optDataRate_3")->setChecked(true);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.chooseUid("E002123456789ABC");
    f.range("07", "07");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00"));
    f.click("cmdLockBlock");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0822BC9A7856341202E007"}));
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("OK"));
    QVERIFY(f.log().ends_with(sendRecv("LOCK", "0822BC9A7856341202E007", tagAnswer("00"))));
  }

  void lengthThreeWithTailZeroEndsAsNoAnswer() {
    Fixture f;
    f.open();
    f.range("05", "05");
    f.driver.queue(Op::SendReceive, 0, "8003ABCD00");
    f.click("cmdReadUser");
    QCOMPARE(f.panel->tagResponse(), std::string());
    QCOMPARE(memoryBuffer().Contenu(), (std::vector<std::string>{"No detected answer"}));
    QCOMPARE(f.view(), QStringList{"05   No detected answer"});
  }

  void lengthFourGivesAOneByteResponse() {
    Fixture f;
    f.open();
    f.range("05", "05");
    f.driver.queue(Op::SendReceive, 0, "800400ABCD00");
    f.click("cmdReadUser");
    QCOMPARE(f.panel->tagResponse(), std::string("00"));
    QCOMPARE(memoryBuffer().Contenu(), (std::vector<std::string>{""}));
  }

  void answerNot80LeavesTheResponseEmptyWithoutNote() {
    Fixture f;
    f.open();
    f.range("05", "05");
    f.click("cmdReadUser");
    QCOMPARE(f.panel->tagResponse(), std::string());
    QVERIFY(f.log().ends_with(sendRecv("READ SINGLE BLOCK", "022005", "8700")));
    QVERIFY(f.log().find("CRC") == std::string::npos);
  }

  void flaggedTailWithGoodCrcIsUsed() {
    Fixture f;
    f.open();
    f.range("05", "05");
    const std::string answer = "80080012345678" "87A8" "02";
    f.driver.queue(Op::SendReceive, 0, answer);
    f.click("cmdReadUser");
    QVERIFY(f.log().ends_with(sendRecv("READ SINGLE BLOCK", "022005", answer) + "  02 -> CRC OK"));
    QCOMPARE(f.view(), QStringList{"05   12 34 56 78 "});
  }

  void flaggedTailWithBadCrcIsNotUsed() {
    Fixture f;
    f.open();
    f.range("05", "05");
    const std::string answer = "80080012345678" "0000" "02";
    f.driver.queue(Op::SendReceive, 0, answer);
    f.click("cmdReadUser");
    QVERIFY(f.log().ends_with(sendRecv("READ SINGLE BLOCK", "022005", answer) + "  02 -> CRC HS (expected=87A8)"));
    QCOMPARE(f.view(), QStringList{"05   No detected answer"});
    // The note stands at the end of the answer line in the view too.
    QVERIFY(f.panel->logView()->toPlainText().endsWith("<<< 800800123456780000" "02  02 -> CRC HS (expected=87A8)"));
  }

  void fifteenCharacterUidTurnsRedAndAddressedFramesGoWithoutUid() {
    Fixture f;
    f.open();
    f.chooseUid("E002123456789ABC");
    QCOMPARE(glob::state().transponderUIDFrame, std::string("BC9A7856341202E0"));
    f.chooseUid("E002123456789AB");
    QCOMPARE(glob::state().transponderUIDFrame, std::string());
    QCOMPARE(f.w<QLineEdit>("txtTransponderUID")->palette().color(QPalette::Text), QColor(255, 0, 0));
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.click("cmdStayQuiet");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2202"}));
  }

  void defaultUidTextIsKeptInUpperCase() {
    Fixture f;
    f.open();
    glob::state().transponderUIDFrame = "1122334455667788";
    f.leave("txtTransponderUID");
    QCOMPARE(f.w<QLineEdit>("txtTransponderUID")->text(), QString("TRANSPONDER UID"));
    QCOMPARE(glob::state().transponderUIDFrame, std::string("1122334455667788"));
    QVERIFY(f.w<QLineEdit>("txtTransponderUID")->palette().color(QPalette::Text) != QColor(255, 0, 0));
  }

  void labelClickRebuildsTheFrameOrder() {
    Fixture f;
    f.open();
    f.setText("txtTransponderUID", "E002123456789ABC");
    QTest::mouseClick(f.w("lblChoosenTag"), Qt::LeftButton);
    QCOMPARE(glob::state().transponderUIDFrame, std::string("BC9A7856341202E0"));
    f.setText("txtTransponderUID", "E002");
    glob::state().transponderUIDFrame = "x";
    QTest::mouseClick(f.w("lblChoosenTag"), Qt::LeftButton);
    QCOMPARE(glob::state().transponderUIDFrame, std::string("02E0"));
  }

  void selectWithNoTransponderUidSendsSixteenZeros() {
    Fixture f;
    f.open();
    f.setText("txtTransponderUID", "No transponder UID");
    f.click("cmdSelect");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02250000000000000000"}));
  }

  void statusFiveReconnectsWith010DAndRepeatsOnce() {
    Fixture f;
    f.open();
    glob::state().statusPanel1 = glob::kBoardNotConnected;
    f.driver.queue(Op::SendReceive, 5, "");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00"));
    f.click("cmdStayQuiet");
    std::vector<std::string> calls;
    for (const auto& c : f.driver.calls()) calls.push_back(std::string(reader::info(c.op).symbol) + " " + c.request);
    QCOMPARE(calls, (std::vector<std::string>{"TL42RQDll_SendReceive 0202", "TL42RQDLL_USBconnect ",
                                               "TL42RQDLL_USBhandlecheck ", "TL42RQDll_Select 010D",
                                               "TL42RQDll_SendReceive 0202"}));
    QCOMPARE(glob::state().statusPanel1, std::string(glob::kBoardConnected));
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("OK"));
  }

  void lostBoardRepeatsOnceAndLogsAnEmptyAnswer() {
    Fixture f;
    f.open();
    f.driver.setHandler([](Op op, const std::string&) -> FakeDriver::Reply {
      return {op == Op::USBhandlecheck ? 1 : 5, ""};
    });
    f.click("cmdStayQuiet");
    QCOMPARE(sent(f.driver).size(), std::size_t(2));
    QVERIFY(f.log().ends_with(sendRecv("STAY QUIET", "0202", "")));
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString(""));
  }

  void sendAnyFrameSendsTheTextAsItStandsAndCutsNothing() {
    Fixture f;
    f.open();
    f.click("cmd_ISO15693_SendFrame");
    QVERIFY(f.driver.calls().empty());
    f.setText("txt_ISO15693_AnyFrame", "0220050");
    const std::string answer = "80080012345678" "0000" "02";
    f.driver.queue(Op::SendReceive, 0, answer);
    f.click("cmd_ISO15693_SendFrame");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0220050"}));
    QVERIFY(f.log().ends_with(sendRecv("SEND FRAME", "0220050", answer)));
    QCOMPARE(f.panel->tagResponse(), std::string());
    QVERIFY(!f.w<FrameLineEdit>("txt_ISO15693_AnyFrame")->showsNormalColour());
    QVERIFY(f.w("cmd_ISO15693_SendFrame")->isEnabled());
  }

  void setCommandsEnabledSwitchesTheListAndClearsStop() {
    Fixture f;
    f.open();
    glob::state().stopRequested = true;
    f.panel->setCommandsEnabled(false);
    QVERIFY(!glob::state().stopRequested);
    for (const char* name : {"tabStripchoice", "FraDataRate", "frmWriteTime", "cmdInventory", "cmdReadUser",
                             "cboPageSize", "txtUserAddress_0", "txtUserAddress_1", "fraMode_3", "chkLockBits",
                             "OptPasswordNumber_2", "cmdLockKill", "txt_ISO15693_AnyFrame"})
      QVERIFY2(!f.w(name)->isEnabled(), name);
    // Neither STOP, nor the loop boxes, nor the log buttons are on the list.
    for (const char* name : {"cmdStopCommand", "chkUserLoop", "chkLoop", "cmdClearLog", "cmdSaveLog"})
      QVERIFY2(f.w(name)->isEnabled(), name);
    glob::state().stopRequested = true;
    f.panel->setCommandsEnabled(true);
    QVERIFY(!glob::state().stopRequested);
    QVERIFY(f.w("cmdReadUser")->isEnabled());
  }

  void tabChangeClearsTheLoopWordsAndShowsItsPage() {
    Fixture f;
    f.open();
    auto& g = glob::state();
    g.writeMode = 5;
    g.transferRunning = true;
    g.autoLoopActive = true;
    f.w<QCheckBox>("chkUserLoop")->setChecked(true);
    f.w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    QCOMPARE(g.currentTab, 2);
    QCOMPARE(g.writeMode, 0);
    QVERIFY(!g.transferRunning);
    QVERIFY(!g.autoLoopActive);
    QVERIFY(!f.w<QCheckBox>("chkUserLoop")->isChecked());
    QVERIFY(f.w("fraMode_2")->isVisible());
    QVERIFY(!f.w("fraMode_1")->isVisible());
    QVERIFY(!f.w("lstReadView")->isVisible());
    QCOMPARE(f.w<MaskedEdit>("mskFillPage")->maskedText(), std::string("__"));
    f.w<QTabBar>("tabStripchoice")->setCurrentIndex(0);
    QVERIFY(f.w("fraMode_1")->isVisible());
    QVERIFY(!f.w("fraMode_2")->isVisible());
    QVERIFY(!f.w("fraMode_3")->isVisible());
  }

  void crcRoutineOfThePanel() {
    QCOMPARE(frmTL42RQ_ISO15693_UI::CRC16_calculation({'1', '2', '3', '4', '5', '6', '7', '8', '9'}),
             std::string("6E90"));
  }
};

QTEST_MAIN(Iso15693FramesPanelTest)
#include "Iso15693FramesPanelTest.moc"
