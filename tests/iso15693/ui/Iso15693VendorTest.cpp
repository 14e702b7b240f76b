// The ISO 15693 panel's system information and vendor commands on a fake board: the rows
// of Get System Info by product, its error rows, Select without a UID, the initiate family,
// the fast mode wrapper with its two Selects, the energy-harvesting buttons, kill and the
// sector passwords through the grid, and Lock Kill that walks without a frame.
#include <QTimer>
#include <QtTest>

#include "Iso15693UiSupport.h"

using namespace iso15693test;

namespace {
constexpr const char* kUidBox = "E00212345678" "9ABC";
const std::string kUidFrame = "BC9A7856341202E0";
const std::string kSelectTitle = "TL42RQ CONFIGURATION : ISO15693 10% High Datarate One Subcarrier";
const std::string kFastTitle = kSelectTitle + " FAST READ";
const std::string kSystemAnswer = "000F" + kUidFrame + "00" "00" "3F03" "20" "41";
}  // namespace

class Iso15693VendorTest : public QObject {
  Q_OBJECT

 private slots:
  // --- Get System Info ---------------------------------------------------------------------

  void systemInfoOnAOneByteProduct() {
    Fixture f("VAX30");
    f.open();
    f.driver.queue(Op::SendReceive, 0, tagAnswer(kSystemAnswer));
    f.click("cmdGetSystemInfo");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"022B"});
    QCOMPARE(rows(f.w<QListWidget>("lstSystemInfo")),
             (QStringList{" UID : \t\tE002123456789ABC", " DSFID : \t\t00h", " AFI : \t\t00h", " Memory size : \t3Fh",
                          " Block size : \t03h", " IC reference : \t20h"}));
    QVERIFY(f.log().ends_with(sendRecv("GET SYSTEM INFO", "022B", tagAnswer(kSystemAnswer))));
  }

  void systemInfoOnATwoByteProductShiftsTheFields() {
    Fixture f("VAS60E");
    f.open();
    f.chooseUid(kUidBox);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.driver.queue(Op::SendReceive, 0, tagAnswer(kSystemAnswer));
    f.click("cmdGetSystemInfo");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"222B" + kUidFrame});
    const QStringList r = rows(f.w<QListWidget>("lstSystemInfo"));
    QCOMPARE(r.mid(3), (QStringList{" Memory size : \t033Fh", " Block size : \t20h", " IC reference : \t41h"}));
    // The energy-harvesting model lets the user ask with the extension flag.
    f.w<QRadioButton>("optExtensionFlag_1")->setChecked(true);
    f.driver.queue(Op::SendReceive, 0, tagAnswer("000B" + kUidFrame + "B2" "00" "5E"));
    f.click("cmdGetSystemInfo");
    QCOMPARE(sent(f.driver).back(), "2A2B" + kUidFrame);
    QCOMPARE(rows(f.w<QListWidget>("lstSystemInfo")).mid(1),
             (QStringList{" DSFID : \t\tB2h", " AFI : \t\t00h", " Memory size : \tN.A.", " Block size : \tN.A.",
                          " IC reference : \t5Eh"}));
  }

  void productsWithoutChoiceAskWithTheExtensionFlag() {
    Fixture f("VAS70");
    f.open();
    QVERIFY(f.w<QRadioButton>("optExtensionFlag_1")->isChecked());
    QVERIFY(f.w<QRadioButton>("optExtensionFlag_0")->isHidden());
    f.click("cmdGetSystemInfo");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"0A2B"});
  }

  void systemInfoErrorsGiveOneRow() {
    Fixture f("VAX30");
    f.open();
    f.driver.queue(Op::SendReceive, 0, tagAnswer("010F"));
    f.click("cmdGetSystemInfo");
    QCOMPARE(rows(f.w<QListWidget>("lstSystemInfo")), QStringList{"error code 0F : other error"});
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0100"));
    f.click("cmdGetSystemInfo");
    QCOMPARE(rows(f.w<QListWidget>("lstSystemInfo")), QStringList{"No Error"});
    // An empty response empties the list and adds nothing.
    f.driver.queue(Op::SendReceive, 0, "800300" "0000");
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.w<QListWidget>("lstSystemInfo")->count(), 0);
  }

  void selectWithNoTransponderUidSendsSixteenZeros() {
    uitest::FixedTime time;
    Fixture f("VAX30");
    f.open();
    f.setText("txtTransponderUID", "No transponder UID");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00"));
    f.click("cmdSelect");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"0225" "0000000000000000"});
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("OK"));
  }

  // --- initiate family and the fast mode ---------------------------------------------------------

  void initiateListsTheAnsweringTagAsRowZero() {
    uitest::FixedTime time;
    Fixture f("VAX30");
    f.open();
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00A1" + kUidFrame));
    f.click("cmdInitiate");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"02D202"});
    QCOMPARE(f.w<QGroupBox>("FraINVENTORYresponse")->title(), QString("INITIATE response"));
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")),
             (QStringList{"\tUID\t\t\tDSFID", "", " 00\tE002123456789ABC\t\tA1"}));
    QVERIFY(f.log().ends_with(sendRecv("INITIATE", "02D202", tagAnswer("00A1" + kUidFrame))));
    // Select and Address come from their boxes; no UID follows.
    f.w<QCheckBox>("chk_Select_Address_flag_0")->setChecked(true);
    f.click("cmdInitiate");
    QCOMPARE(sent(f.driver).back(), std::string("12D202"));
  }

  void inventoryInitiatedUsesTheInventoryFields() {
    uitest::FixedTime time;
    Fixture f("VAX30");
    f.open();
    f.w<QCheckBox>("chkInventoryAFIOptions")->setChecked(true);
    f.setText("txtInventoryOptionalAFI", "12");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00A1" + kUidFrame));
    f.click("cmdInventoryInitiated");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"36D1021200"});
    QCOMPARE(f.w<QGroupBox>("FraINVENTORYresponse")->title(), QString("INVENTORY INITIATED response"));
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->item(2)->text(), QString(" 00\tE002123456789ABC\t\tA1"));
    QVERIFY(f.log().ends_with(sendRecv("INVENTORY INITIATED", "36D1021200", tagAnswer("00A1" + kUidFrame))));
  }

  void fastInitiateSwitchesTheChipAroundTheCommand() {
    uitest::FixedTime time;
    Fixture f("VAX30");
    f.open();
    const std::string before = f.log();
    f.click("cmdFastInitiate");
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"011D", "010D"}));
    QCOMPARE(sent(f.driver), std::vector<std::string>{"02C202"});
    QCOMPARE(f.log(), before + entry(kFastTitle, "TL42RQDLL_SELECT", "011D", "0000") +
                          sendRecv("FAST INITIATE", "02C202", "8700") +
                          entry(kSelectTitle, "TL42RQDLL_SELECT", "010D", "0000"));
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_answer_FastProtocol")->text(), QString("0000"));
    QCOMPARE(f.w<QGroupBox>("FraINVENTORYresponse")->title(), QString("FAST INITIATE response"));
    // The order of the calls on the board too.
    const auto& calls = f.driver.calls();
    QCOMPARE(calls.size(), std::size_t{3});
    QCOMPARE(calls[0].op, Op::Select);
    QCOMPARE(calls[1].op, Op::SendReceive);
    QCOMPARE(calls[2].op, Op::Select);
  }

  void fastInventoryInitiatedHasItsShortTitle() {
    uitest::FixedTime time;
    Fixture f("VAX30");
    f.open();
    const std::string before = f.log();
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00A1" + kUidFrame));
    f.click("cmdFastInventoryInitiated");
    QCOMPARE(f.log(), before + entry(kFastTitle, "TL42RQDLL_SELECT", "011D", "0000") +
                          sendRecv("FAST INVENTORY INITIATE", "26C10200", tagAnswer("00A1" + kUidFrame)) +
                          entry(kSelectTitle, "TL42RQDLL_SELECT", "010D", "0000"));
    QCOMPARE(f.w<QGroupBox>("FraINVENTORYresponse")->title(), QString("FAST INVENTORY INITIATED response"));
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->count(), 3);
  }

  void fastReadWithABadAddressBoxStillSelects010D() {
    uitest::FixedTime time;
    Fixture f("VAX30");
    f.open();
    const std::string before = f.log();
    f.range("", "05");
    f.click("cmdFastReadSingleBlock");
    QCOMPARE(f.dialogs.messages.size(), std::size_t{1});
    QVERIFY(sent(f.driver).empty());
    QCOMPARE(sent(f.driver, Op::Select), std::vector<std::string>{"010D"});
    QCOMPARE(f.log(), before + entry(kSelectTitle, "TL42RQDLL_SELECT", "010D", "0000"));
  }

  void fastReadsSendTheirFastFormsInsideTheWrapper() {
    uitest::FixedTime time;
    Fixture f("VAX30");
    f.open();
    f.chooseUid(kUidBox);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("05", "05");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0011223344"));
    const std::string before = f.log();
    f.click("cmdFastReadSingleBlock");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"22C002" + kUidFrame + "05"});
    QCOMPARE(f.view(), QStringList{"05   11 22 33 44 "});
    QCOMPARE(f.log(), before + entry(kFastTitle, "TL42RQDLL_SELECT", "011D", "0000") +
                          sendRecv("FAST READ SINGLE BLOCK", "22C002" + kUidFrame + "05", tagAnswer("0011223344")) +
                          entry(kSelectTitle, "TL42RQDLL_SELECT", "010D", "0000"));
    f.driver.clearCalls();
    f.range("04", "05");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00" "01020304" "11223344"));
    f.click("cmdFastReadMultipleBlock");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"22C302" + kUidFrame + "0401"});
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"011D", "010D"}));
    QCOMPARE(f.view(), (QStringList{"04   01 02 03 04 ", "05   11 22 33 44 "}));
    // The plain read is still the plain one.
    f.driver.clearCalls();
    f.range("05", "05");
    f.click("cmdReadUser");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"2220" + kUidFrame + "05"});
    QVERIFY(sent(f.driver, Op::Select).empty());
  }

  void fastCommandReconnectsWithTheFastSelect() {
    Fixture f("VAX30");
    f.open();
    f.driver.queue(Op::SendReceive, 5, "");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00A1" + kUidFrame));
    f.click("cmdFastInitiate");
    // 011D of the wrapper, 011D of the reconnect, 010D at the end.
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"011D", "011D", "010D"}));
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02C202", "02C202"}));
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->count(), 3);
  }

  void fastModeLastsTheWholeAutoLoop() {
    Fixture f("VAX30");
    f.open();
    f.range("05", "05");
    f.click("chkUserLoop");
    f.setText("txtLOOPnumber", "2");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0011223344"));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0055667788"));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0099AABBCC"));
    f.click("cmdFastReadSingleBlock");
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"011D", "010D"}));
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02C00205", "02C00205", "02C00205"}));
    const auto& calls = f.driver.calls();
    QCOMPARE(calls.front().op, Op::Select);
    QCOMPARE(calls.back().op, Op::Select);
    QVERIFY(!glob::state().autoLoopActive);
  }

  void aLostBoardAtTheEndReconnectsWith010DAndRepeats() {
    Fixture f("VAX30");
    f.open();
    f.driver.queue(Op::Select, 0, "0000");
    f.driver.queue(Op::Select, 5, "");
    f.click("cmdFastInitiate");
    // Wrapper 011D, the lost 010D, the reconnect's 010D, the repeated 010D.
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"011D", "010D", "010D", "010D"}));
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_answer_FastProtocol")->text(), QString("0000"));
  }

  // --- energy harvesting ---------------------------------------------------------------------------

  void setEhEnableSendsA2WithTheUidAnd01() {
    uitest::FixedTime time;
    Fixture f("VAS60E");
    f.open();
    QVERIFY(!f.w<QGroupBox>("FraEnergyHarvesting")->isHidden());
    f.w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    f.chooseUid(kUidBox);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00"));
    f.click("cmdSetEHenable");
    QCOMPARE(sent(f.driver), std::vector<std::string>{"22A202" + kUidFrame + "01"});
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("OK"));
    QVERIFY(f.log().ends_with(sendRecv("SET RESET EH CONFIG", "22A202" + kUidFrame + "01", tagAnswer("00"))));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0103"));
    f.click("cmdResetEHenable");
    QCOMPARE(sent(f.driver).back(), "22A202" + kUidFrame + "00");
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("03 : unknown error code"));
  }

  void ehWritesTakeTheirBoxes() {
    Fixture f("VAS60E");
    f.open();
    f.w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    f.setText("txtEHconfig", "1FF");
    f.leave("txtEHconfig");
    QCOMPARE(f.w<QLineEdit>("txtEHconfig")->text(), QString("FF"));
    f.setText("txtWriteDOconfig", "1");
    f.leave("txtWriteDOconfig");
    QCOMPARE(f.w<QLineEdit>("txtWriteDOconfig")->text(), QString("01"));
    f.w<QCheckBox>("chkLockBits")->setChecked(true);
    f.click("cmdWriteEHCfg");
    f.click("cmdWriteDOconfig");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"42A102FF", "42A40201"}));
  }

  void ehReadsFillTheirStatusBoxes() {
    Fixture f("VAS60E");
    f.open();
    f.w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    f.w<QCheckBox>("chkLockBits")->setChecked(true);  // Option stays clear for the reads
    f.driver.queue(Op::SendReceive, 0, tagAnswer("000D"));
    f.click("cmdReadEHconfig");
    QCOMPARE(f.w<QLineEdit>("txtEHstatus")->text(), QString("0D"));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0101"));
    f.click("cmdReadEHconfig");
    QCOMPARE(f.w<QLineEdit>("txtEHstatus")->text(), QString("XX"));
    f.driver.queue(Op::SendReceive, 0, tagAnswer("0001"));
    f.click("cmdCheckEHenable");
    QCOMPARE(f.w<QLineEdit>("txtCheckEHenable")->text(), QString("01"));
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02A002", "02A002", "02A302"}));
    QVERIFY(f.log().ends_with(sendRecv("CHECK EH ENABLE", "02A302", tagAnswer("0001"))));
  }

  // --- kill and passwords through the grid ------------------------------------------------------------

  void killCommandsPutTheKillNumberInFrontOfTheUid() {
    Fixture f("VAX30");
    f.open();
    f.chooseUid(kUidBox);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("00", "00");
    f.click("cmdWriteKill");
    QCOMPARE(glob::state().writeMode, 3);
    f.w<MaskedEdit>("PWData_0")->setMaskedText("A5 A5 A5 A5 ");
    f.driver.queue(Op::SendReceive, 0, tagAnswer("00"));
    f.click("cmdWriteUser");
    f.click("cmdKill");
    QCOMPARE(glob::state().writeMode, 4);
    f.w<MaskedEdit>("PWData_0")->setMaskedText("A5 A5 A5 A5 ");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"22B10200" + kUidFrame + "A5A5A5A5",
                                                        "22A60200" + kUidFrame + "A5A5A5A5"}));
  }

  void sectorPasswordFramesCarryTheNumberBehindTheUid() {
    Fixture f("VAS60E");
    f.open();
    f.chooseUid(kUidBox);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("0021", "0021");
    f.w<QRadioButton>("OptPasswordNumber_2")->setChecked(true);
    f.click("cmdPresentSectorPassword");
    f.w<MaskedEdit>("PWData_0")->setMaskedText("11 22 33 44 ");
    f.click("cmdWriteUser");
    f.click("cmdWriteSectorPassword");
    f.w<MaskedEdit>("PWData_0")->setMaskedText("55 66 77 88 ");
    f.click("cmdWriteUser");
    f.click("cmdLockSectorPassword");
    QCOMPARE(glob::state().writeMode, 6);
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("1B");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"22B302" + kUidFrame + "03" "11223344",
                                                        "22B102" + kUidFrame + "03" "55667788",
                                                        "2AB202" + kUidFrame + "2100" "1B"}));
  }

  // --- Lock Kill ---------------------------------------------------------------------------------------

  void lockKillUnderEndlessAutoLoopSendsNothingUntilTheLoopIsCut() {
    Fixture f("VAX30");
    f.open();
    const std::string before = f.log();
    f.range("00", "03");
    f.click("chkUserLoop");
    QVERIFY(glob::state().autoLoopActive);
    QCOMPARE(f.w<QLineEdit>("txtLOOPnumber")->text(), QString("0"));
    int passes = 0;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
      passes = f.w<QLabel>("lblLoopCount")->text().toInt();
      if (passes >= 5) f.click("chkUserLoop");
    });
    watch.start(5);
    f.click("cmdLockKill");
    watch.stop();
    QVERIFY(passes >= 5);
    QVERIFY(!glob::state().autoLoopActive);
    QVERIFY(f.driver.calls().empty());
    QCOMPARE(f.log(), before);
    // The ending enabled the commands again.
    QVERIFY(f.w<QPushButton>("cmdLockKill")->isEnabled());
  }

  void stopEndsAnEndlessLockKill() {
    Fixture f("VAX30");
    f.open();
    f.range("00", "01");
    f.click("chkUserLoop");
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
      if (f.w<QLabel>("lblLoopCount")->text().toInt() >= 3) f.panel->cmdStopCommand_Click();
    });
    watch.start(5);
    f.click("cmdLockKill");
    watch.stop();
    QVERIFY(f.w<QLabel>("lblLoopCount")->text().toInt() >= 3);
    QVERIFY(f.driver.calls().empty());
    QVERIFY(!glob::state().stopRequested);
  }

  void lockKillWithoutLoopWalksOnceSilently() {
    Fixture f("VAX30");
    f.open();
    f.range("00", "3F");
    f.click("cmdLockKill");
    QVERIFY(f.driver.calls().empty());
    QCOMPARE(f.w<QLabel>("lblLoopCount")->text(), QString(""));
    f.range("G0", "01");
    f.click("cmdLockKill");
    QCOMPARE(f.dialogs.messages.size(), std::size_t{1});
    QVERIFY(f.driver.calls().empty());
  }
};

QTEST_MAIN(Iso15693VendorTest)
#include "Iso15693VendorTest.moc"
