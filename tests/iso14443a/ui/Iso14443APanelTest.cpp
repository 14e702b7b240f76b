// The ISO 14443-A panel on a fake board: the opening of both variants, the single
// commands with their flags, frames and titles, the analysis boxes, the free frame, the
// reconnects, the anticollision process stage by stage, the TOPAZ commands, memory reads
// and writes, STOP, and closing the panel or the main window while a handler runs.
#include <QMdiArea>
#include <QTimer>

#include "Iso14443AUiSupport.h"
#include "shell/UsageFile.h"
#include "shell/ui/MainForm.h"

using namespace iso14443atest;

namespace {
const std::string kTimer = "09043A005804";
const std::string kCodec = "09110B00241204880F1F3F3F01000505005500";
// Sixteen bytes of a read and their tail.
std::string readAnswer(const std::string& sixteenBytes, const std::string& tail = "080000") {
  return "8015" + sixteenBytes + "ABCD" + tail;
}
}  // namespace

class Iso14443APanelTest : public QObject {
  Q_OBJECT

 private slots:
  // --- opening ----------------------------------------------------------------------------

  void openingSendsEchoSelectAndTheWritesWhoseEntriesShowTheSelectAnswer() {
    Fixture f;
    liveBoard(f.driver, "8200");
    f.open(false);
    QCOMPARE(f.log(), echoEntry("5500") +
                          entry("TL42RQ CONFIGURATION : ISO14443-A protocol", "TL42RQDLL_SELECT", "02000180", "0000") +
                          entry("ISO14443-A : CONFIG", "TL42RQDLL_KQCmd", "01 " + kTimer, "0000") +
                          entry("ISO14443-A : INCREASE DEMOD GAIN", "TL42RQDLL_KQCmd", "01 0904680101D1", "0000") +
                          entry("ISO14443-A : INCREASE DEC TOLERANCE", "TL42RQDLL_KQCmd", "01 " + kCodec, "0000") +
                          "\r\n");
    QCOMPARE(sent(f.driver, Op::KQCmd),
             (std::vector<std::string>{"01" + kTimer, "010904680101D1", "01" + kCodec}));
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"02000180"}));
    QCOMPARE(f.label("lbl_title_ISO14443A_2"), QString("ISO14443-A Cards user interface"));
    QCOMPARE(f.textOf("txt_ISO14443A_request"), QString());
    QCOMPARE(f.textOf("txt_ISO14443A_answer"), QString());
    QCOMPARE(f.textOf("txtUserAddress_0"), QString("00"));
    QCOMPARE(f.textOf("txtUserAddress_1"), QString("1F"));
    QCOMPARE(glob::state().rfAddressBytes, 1);
    // The grid's fixed row.
    QCOMPARE(f.cell(0, 0), QString(" "));
    QCOMPARE(f.cell(0, 1), QString("answer"));
    QCOMPARE(f.cell(0, 2), QString("request"));
  }

  void openingUsesTheGainValueOfTheToolbox() {
    Fixture f;
    glob::state().iso14443AModulationGain = "53";
    f.open(false);
    QCOMPARE(sent(f.driver, Op::KQCmd)[1], std::string("010904680101" "53"));
  }

  void topazProductOpensWithItsProtocolAndTitles() {
    Fixture f("TOPAZ");
    f.open(false);
    QCOMPARE(f.panel->variant(), iso14443a::Variant::Topaz);
    QCOMPARE(f.log(),
             echoEntry("5500") +
                 entry("TL42RQ CONFIGURATION : TOPAZ (ISO14443-A) protocol", "TL42RQDLL_SELECT", "02000300", "0000") +
                 entry("ISO14443-A TOPAZ : CONFIG", "TL42RQDLL_KQCmd", "01 " + kTimer, "0000") +
                 entry("ISO14443-A TOPAZ : INCREASE DEMOD GAIN", "TL42RQDLL_KQCmd", "01 0904680101D1", "0000") +
                 entry("ISO14443-A TOPAZ : INCREASE DEC TOLERANCE", "TL42RQDLL_KQCmd", "01 " + kCodec, "0000") +
                 "\r\n");
    QCOMPARE(f.label("lbl_title_ISO14443A_2"), QString("TOPAZ (ISO14443-A) user interface"));
  }

  void aReferenceThatOnlyContainsTopazOpensTheNormalVariant() {
    Fixture f;
    shell::currentProduct().Reference("MY TOPAZ");
    f.open(false);
    QCOMPARE(f.panel->variant(), iso14443a::Variant::Normal);
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"02000180"}));
  }

  void theVariantsShowTheirOwnControls() {
    {
      Fixture f;
      f.open();
      for (const char* name : {"FraAnticolRoutine", "cmd_ISO14443A_REQA", "cmd_ISO14443A_WUPA", "cmd_ISO14443A_HALT",
                               "cmd_ISO14443A_Anticol_2", "cmd_ISO14443A_Select_0", "cmd_ISO14443A_Write",
                               "cmd_ISO14443A_Write_compatibility", "lblISO14443A_answer_analysis_5", "chk_respflag_7",
                               "Line_1", "lblISO14443A_DataForSelect", "txtUIDforSelect123"})
        QVERIFY2(f.w(name)->isVisible(), name);
      for (const char* name : {"cmd_ISO14443A_TOPAZ_REQA", "cmd_ISO14443A_TOPAZ_RID", "txtHR0_TOPAZ", "lblUID_TOPAZ",
                               "txtUID_cmdSelect", "cmd_ISO14443A_TOPAZ_Write_E", "cmd_ISO14443A_TOPAZ_Write_NE",
                               "FraNDEFiso14443A"})
        QVERIFY2(!f.w(name)->isVisible(), name);
    }
    {
      Fixture f("TOPAZ");
      f.open();
      QVERIFY(!f.w("cmd_ISO14443A_REQA")->isVisible());
      QVERIFY(f.w("cmd_ISO14443A_TOPAZ_REQA")->isVisible());
      QVERIFY(f.w("lblHR1_TOPAZ")->isVisible());
      QVERIFY(!f.w("FraAnticolRoutine")->isVisible());
      QVERIFY(!f.w("lblISO14443A_answer_analysis_3")->isVisible());
      QVERIFY(!f.w("chk_respflag_0")->isVisible());
      QVERIFY(!f.w("FraNDEFiso14443A")->isVisible());
    }
  }

  void anEchoThatFailsTwiceDoesNotStopTheOpening() {
    Fixture f;
    f.driver.queue(Op::Echo, 1, "");
    f.driver.queue(Op::Echo, 0, "0000");
    f.open(false);
    QCOMPARE(f.driver.callsOf(Op::Echo).size(), std::size_t(2));
    QVERIFY(f.log().starts_with(echoEntry("") + echoEntry("0000") +
                                entry("TL42RQ CONFIGURATION : ISO14443-A protocol", "TL42RQDLL_SELECT", "02000180",
                                      "0000")));
    QCOMPARE(f.driver.callsOf(Op::KQCmd).size(), std::size_t(3));
  }

  // --- single commands ------------------------------------------------------------------------

  void reqaSendsItsLiteralAndCutsTheAnswer() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, "80054400080000");
    f.click("cmd_ISO14443A_REQA");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2607"}));
    QCOMPARE(f.textOf("txt_ISO14443A_request"), QString("2607"));
    QCOMPARE(f.textOf("txt_ISO14443A_answer"), QString("80054400080000"));
    QCOMPARE(f.log(), sendRecv("ISO14443-A REQA", "2607", "80054400080000"));
    QCOMPARE(f.analysis(), (QStringList{"80", "05", "4400", "08", "00", "00"}));
    QCOMPARE(f.respFlags(), QString("00001000"));
    QCOMPARE(f.textOf("txt_ISO14443A_transFlag"), QString("07"));
    QCOMPARE(f.transmissionFlags(), QString("00000111"));
  }

  void anticol1LogsTheNumberZeroAndHaltLogsWupa() {
    Fixture f;
    f.open();
    f.click("cmd_ISO14443A_Anticol_0");
    f.click("cmd_ISO14443A_HALT");
    f.click("cmd_ISO14443A_WUPA");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"932008", "5000", "5207"}));
    QCOMPARE(f.log(), sendRecv("ISO14443-A ANTICOL 0", "932008", "8700") +
                          sendRecv("ISO14443-A WUPA", "5000", "8700") + sendRecv("ISO14443-A WUPA", "5207", "8700"));
    QCOMPARE(f.textOf("txt_ISO14443A_transFlag"), QString("07"));
  }

  void theIndexedButtonsSendTheirCodesAndTitles() {
    Fixture f;
    f.open();
    f.setText("txtUIDforSelect123", "C3D4E5F604");
    f.click("cmd_ISO14443A_Anticol_1");
    f.click("cmd_ISO14443A_Anticol_2");
    f.click("cmd_ISO14443A_Select_1");
    f.click("cmd_ISO14443A_Select_2");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"952008", "972008", "9570C3D4E5F60428", "9770C3D4E5F60428"}));
    QVERIFY(f.log().find("ISO14443-A ANTICOL 2\r\n") != std::string::npos);
    QVERIFY(f.log().find("ISO14443-A SELECT 1\r\n") != std::string::npos);
    QCOMPARE(f.w<QPushButton>("cmd_ISO14443A_Anticol_0")->text(), QString("Anticol1"));
    QCOMPARE(f.w<QPushButton>("cmd_ISO14443A_Anticol_2")->text(), QString("Anticol 3"));
    QCOMPARE(f.w<QPushButton>("cmd_ISO14443A_Select_2")->text(), QString("Select 3"));
  }

  void aTypedFlagHasNoEffectOnAnyCommand() {
    Fixture f;
    f.open();
    for (const char* button : {"cmd_ISO14443A_REQA", "cmd_ISO14443A_WUPA", "cmd_ISO14443A_HALT",
                               "cmd_ISO14443A_Anticol_0", "cmd_ISO14443A_Select_0"}) {
      f.setText("txt_ISO14443A_transFlag", "FF");
      f.click(button);
    }
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2607", "5207", "5000", "932008", "937028"}));
  }

  void anticolWithTheArgumentClearedSendsTwoBytes() {
    Fixture f;
    f.open();
    f.setText("txtISO14443A_Anticol_Arg", "");
    f.click("cmd_ISO14443A_Anticol_0");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"9308"}));
  }

  void selectWithAnEmptyFieldSendsThreeBytes() {
    Fixture f;
    f.open();
    f.click("cmd_ISO14443A_Select_0");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"937028"}));
    QCOMPARE(f.transmissionFlags(), QString("00101000"));
  }

  void theEightFlagBoxesShowTheErrorStatus() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, "8008" "1122335555" "B30301");
    f.click("cmd_ISO14443A_Anticol_0");
    QCOMPARE(f.analysis(), (QStringList{"80", "08", "1122335555", "B3", "03", "01"}));
    QCOMPARE(f.respFlags(), QString("10110011"));
    QCOMPARE(f.w<QCheckBox>("chk_respflag_7")->text(), QString("collision detected"));
    QCOMPARE(f.w<QCheckBox>("chk_respflag_4")->text(), QString("parity error"));
    QCOMPARE(f.w<QCheckBox>("chk_respflag_0")->text(), QString("nb significant bits for 1st byte "));
    QCOMPARE(f.label("lblISO14443A_answer_analysis_4"), QString("index of 1st byte (collision) : "));
  }

  void answersOtherThanATagAnswerLeaveTheBoxesEmpty() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, "80054400080000");
    f.click("cmd_ISO14443A_REQA");
    for (const char* answer : {"90040A", "8600", "8700", "8E00"}) {
      f.driver.queue(Op::SendReceive, 0, answer);
      f.click("cmd_ISO14443A_WUPA");
      QCOMPARE(f.analysis(), (QStringList{"", "", "", "", "", ""}));
      QCOMPARE(f.respFlags(), QString("00000000"));
      QCOMPARE(f.textOf("txt_ISO14443A_answer"), QString(answer));
    }
  }

  void anAnswerShorterThanTenCharactersIsCutSafely() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, "8002AB");
    f.click("cmd_ISO14443A_REQA");
    QCOMPARE(f.analysis(), (QStringList{"80", "02", "", "80", "02", "AB"}));
  }

  void sendAnyFrameSendsAnOddFrameAsItStandsInRed() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, "80054400080000");
    f.click("cmd_ISO14443A_REQA");
    auto* box = f.w<FrameLineEdit>("txt_ISO14443A_AnyFrame");
    QTest::keyClicks(box, "26070");
    QVERIFY(!box->showsNormalColour());
    QVERIFY(f.w<QPushButton>("cmd_ISO14443A_SendFrame")->isEnabled());
    f.click("cmd_ISO14443A_SendFrame");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2607", "26070"}));
    QVERIFY(f.log().ends_with(sendRecv("SEND FRAME", "26070", "8700")));
    // The flag display and the analysis of the REQA stay.
    QCOMPARE(f.analysis()[2], QString("4400"));
    QCOMPARE(f.textOf("txt_ISO14443A_transFlag"), QString("07"));
    QTest::keyClicks(box, "7");
    QVERIFY(box->showsNormalColour());
  }

  void sendAnyFrameWithAnEmptyBoxSendsNothing() {
    Fixture f;
    f.open();
    f.click("cmd_ISO14443A_SendFrame");
    QVERIFY(f.driver.calls().empty());
    QCOMPARE(f.log(), std::string());
  }

  void theFlagBoxIsRewrittenOnLeavingAndRefusesOtherKeys() {
    Fixture f;
    f.open();
    auto* box = f.w<HexLineEdit>("txt_ISO14443A_transFlag");
    box->clear();
    QTest::keyClicks(box, "g5");
    QCOMPARE(box->text(), QString("5"));
    QCOMPARE(f.dialogs.beeps, 1);
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(box, &out);
    QCOMPARE(box->text(), QString("05"));
  }

  // --- reconnects -------------------------------------------------------------------------------

  void aLostBoardReconnectsInTheNormalProtocolAndRepeatsOnce() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 5, "");
    f.click("cmd_ISO14443A_REQA");
    std::vector<std::string> calls;
    for (const auto& c : f.driver.calls()) calls.push_back(std::string(reader::logWord(c.op)) + " " + c.request);
    QCOMPARE(calls, (std::vector<std::string>{"TL42RQDLL_SENDRECV 2607", "TL42RQDLL_USB_CONNECT ",
                                              "TL42RQDLL_USB_HANDLE_CHECK ", "TL42RQDLL_SELECT 02000180",
                                              "TL42RQDLL_KQCMD 01" + kTimer, "TL42RQDLL_KQCMD 010904680101D1",
                                              "TL42RQDLL_KQCMD 01" + kCodec, "TL42RQDLL_SENDRECV 2607"}));
  }

  void topazCommandsReconnectAsTheirTableSays() {
    Fixture f("TOPAZ");
    f.open();
    const auto selectAfterLoss = [&](const char* button) {
      f.driver.clearCalls();
      f.driver.queue(Op::SendReceive, 5, "");
      f.click(button);
      return sent(f.driver, Op::Select);
    };
    QCOMPARE(selectAfterLoss("cmd_ISO14443A_TOPAZ_REQA"), (std::vector<std::string>{"02000300"}));
    // RID reconnects in the normal protocol.
    QCOMPARE(selectAfterLoss("cmd_ISO14443A_TOPAZ_RID"), (std::vector<std::string>{"02000180"}));
    // So do the single commands, also in the TOPAZ variant.
    f.driver.clearCalls();
    f.driver.queue(Op::SendReceive, 5, "");
    f.panel->cmd_ISO14443A_WUPA_Click();
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"02000180"}));
    // The read of a byte is TOPAZ's.
    f.setText("txtUserAddress_0", "01");
    f.setText("txtUserAddress_1", "01");
    QCOMPARE(selectAfterLoss("cmd_ISO14443A_Read"), (std::vector<std::string>{"02000300"}));
  }

  void thePublicReconnectMethodsSetTheStatus() {
    Fixture f;
    f.open();
    std::int32_t status = 99;
    f.panel->DEMO_TL42RQ_A_reconnect_iso14443A_TOPAZ(status);
    QCOMPARE(status, 0);
    QCOMPARE(sent(f.driver, Op::Select), (std::vector<std::string>{"02000300"}));
    f.driver.queue(Op::USBhandlecheck, 5, "");
    f.panel->DEMO_TL42RQ_A_reconnect_iso14443A(status);
    QCOMPARE(status, 5);
  }

  void setCommandsEnabledSwitchesItsListAndClearsTheStopRequest() {
    Fixture f;
    f.open();
    glob::state().stopRequested = true;
    f.panel->setCommandsEnabled(false);
    for (const char* name : {"cmd_ISO14443A_Read", "cmd_ISO14443A_Write", "cmd_ISO14443A_Write_compatibility",
                             "cmd_ISO14443A_TOPAZ_Write_E", "cmd_ISO14443A_TOPAZ_Write_NE", "cmd_ISO14443A_Anticol_1",
                             "cmd_ISO14443A_Select_2", "cmd_ISO14443A_REQA", "cmd_ISO14443A_WUPA",
                             "cmd_ISO14443A_HALT", "cmd_ISO14443A_SendFrame", "txtUID_cmdSelect", "txtUserAddress_0",
                             "txtUserAddress_1", "txt_ISO14443A_AnyFrame", "cmdSaveLog", "cmdClearLog"})
      QVERIFY2(!f.w(name)->isEnabled(), name);
    for (const char* name : {"cmd_ISO14443A_TOPAZ_REQA", "cmd_ISO14443A_TOPAZ_RID", "cmd_ISO14443A_Anticol_Process"})
      QVERIFY2(f.w(name)->isEnabled(), name);
    QVERIFY(!glob::state().stopRequested);
    f.panel->setCommandsEnabled(true);
    QVERIFY(f.w("cmd_ISO14443A_Read")->isEnabled());
  }

  // --- the anticollision process ---------------------------------------------------------------

  void aDoubleSizeUidFillsRowsOneToFive() {
    Fixture f;
    f.open();
    for (const char* a : {"80054400080000", "8008" "8804A1B29F" "080000", "8006" "04DA17" "080000",
                          "8008" "C3D4E5F604" "080000", "8006" "00FE51" "080000"})
      f.driver.queue(Op::SendReceive, 0, a);
    f.click("cmd_ISO14443A_Anticol_Process");
    // The Select after an answer with 88 sends all five bytes, the 88 included.
    QCOMPARE(sent(f.driver),
             (std::vector<std::string>{"2607", "932008", "93708804A1B29F28", "952008", "9570C3D4E5F60428"}));
    QCOMPARE(f.textOf("txtAnticolisionProcessUID"), QString("04A1B2C3D4E5F6"));
    const QStringList expected[] = {{"REQ A", "2607 ", "80054400080000 "},
                                    {"ANTICOL 1", "932008 ", "80088804A1B29F080000 "},
                                    {"SELECT 1", "93708804A1B29F28 ", "800604DA17080000 "},
                                    {"ANTICOL 2", "952008 ", "8008C3D4E5F604080000 "},
                                    {"SELECT 2", "9570C3D4E5F60428 ", "800600FE51080000 "}};
    for (int r = 1; r <= 5; ++r)
      QCOMPARE((QStringList{f.cell(r, 0), f.cell(r, 1), f.cell(r, 2)}), expected[r - 1]);
    for (int r = 6; r <= 7; ++r)
      for (int c = 0; c < 3; ++c) QCOMPARE(f.cell(r, c), QString());
    QCOMPARE(f.log(), sendRecv("ISO14443-A REQA", "2607", "80054400080000") +
                          sendRecv("ISO14443-A ANTICOL 1", "932008", "80088804A1B29F080000") +
                          sendRecv("ISO14443-A SELECT 1", "93708804A1B29F28", "800604DA17080000") +
                          sendRecv("ISO14443-A ANTICOL 2", "952008", "8008C3D4E5F604080000") +
                          sendRecv("ISO14443-A SELECT 2", "9570C3D4E5F60428", "800600FE51080000"));
    // The boxes show the last exchange.
    QCOMPARE(f.analysis(), (QStringList{"80", "06", "00FE51", "08", "00", "00"}));
  }

  void levelThreeRepeatsCode93AndSelectsWithoutUid() {
    Fixture f;
    f.open();
    for (const char* a : {"80058400080000", "8008" "8801020388" "080000", "8006" "04DA17" "080000",
                          "8008" "880405068F" "080000", "8006" "04DA17" "080000", "8008" "0708090A0C" "080000"})
      f.driver.queue(Op::SendReceive, 0, a);
    f.click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2607", "932008", "93708801020388" "28", "952008",
                                                        "9570880405068F" "28", "932008", "937028"}));
    QCOMPARE(f.textOf("txtAnticolisionProcessUID"), QString("0102030405060708090A"));
    QCOMPARE(f.cell(6, 0), QString("ANTICOL 3"));
    QCOMPARE(f.cell(7, 0), QString("SELECT 3"));
    QCOMPARE(f.cell(7, 2), QString("8700 "));
    QVERIFY(f.log().ends_with(sendRecv("ISO14443-A SELECT 3", "937028", "8700")));
  }

  void aReqaAnswerOf90GoesOnWithoutAnalysis() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, "90040A");
    f.click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2607", "932008"}));
    QCOMPARE(f.cell(1, 2), QString("90040A "));
    QCOMPARE(f.cell(2, 2), QString("8700 "));
    QCOMPARE(f.analysis(), (QStringList{"", "", "", "", "", ""}));
  }

  void anyOtherReqaAnswerEndsTheRun() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, "8600");
    f.click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2607"}));
    QCOMPARE(f.cell(1, 1), QString("2607 "));
    QCOMPARE(f.cell(2, 0), QString());
  }

  void aFailingAnticolLeavesTheUidAsItStoodBeforeThatLevel() {
    Fixture f;
    f.open();
    f.setText("txtAnticolisionProcessUID", "OLD");
    for (const char* a : {"80054400080000", "8008" "8804A1B29F" "080000", "8006" "04DA17" "080000", "8B00"})
      f.driver.queue(Op::SendReceive, 0, a);
    f.click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(f.textOf("txtAnticolisionProcessUID"), QString("04A1B2"));
    QCOMPARE(f.cell(4, 2), QString("8B00 "));
    QCOMPARE(f.cell(5, 0), QString());
    // A run that fails at the first level leaves the box emptied.
    f.driver.queue(Op::SendReceive, 0, "80054400080000");
    f.driver.queue(Op::SendReceive, 0, "8700");
    f.click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(f.textOf("txtAnticolisionProcessUID"), QString());
  }

  void theArgumentFieldChangesEveryLevel() {
    Fixture f;
    f.open();
    f.setText("txtISO14443A_Anticol_Arg", "00");
    for (const char* a : {"80054400080000", "8008" "8804A1B29F" "080000", "8006" "04DA17" "080000"})
      f.driver.queue(Op::SendReceive, 0, a);
    f.click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2607", "9300" "08", "93708804A1B29F28", "9500" "08"}));
  }

  void aSingleSizeUidTakesThreeExchanges() {
    Fixture f;
    f.open();
    for (const char* a : {"80050400080000", "8008" "1A2B3C4D40" "080000", "8006" "08B6DD" "080000"})
      f.driver.queue(Op::SendReceive, 0, a);
    f.click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2607", "932008", "93701A2B3C4D4028"}));
    QCOMPARE(f.textOf("txtAnticolisionProcessUID"), QString("1A2B3C4D"));
    QCOMPARE(f.cell(4, 0), QString());
  }

  void theHeaderCellsAreNotWrittenAgainByARun() {
    Fixture f;
    f.open();
    f.w<QTableWidget>("fgAnticolProcess")->item(0, 1)->setText("X");
    f.driver.queue(Op::SendReceive, 0, "80054400080000");
    f.click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(f.cell(0, 1), QString("X"));
    QCOMPARE(f.cell(0, 2), QString("request"));
    QCOMPARE(f.w<QPushButton>("cmd_ISO14443A_Anticol_Process")->text(), QString("Anticolision Process"));
    QCOMPARE(f.w<QGroupBox>("FraAnticolRoutine")->title(), QString("      ISO14443-A anticolision process      "));
  }

  void stopDoesNotStopTheProcess() {
    Fixture f;
    f.open();
    int calls = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op != Op::SendReceive) return {0, ""};
      ++calls;
      if (calls == 1) QTimer::singleShot(0, [&] { f.panel->cmdStopCommand_Click(); });
      const char* answers[] = {"80054400080000", "8008" "1A2B3C4D40" "080000", "8006" "08B6DD" "080000"};
      return {0, calls <= 3 ? answers[calls - 1] : "8700"};
    });
    f.click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(calls, 3);
    QCOMPARE(f.textOf("txtAnticolisionProcessUID"), QString("1A2B3C4D"));
  }

  // --- TOPAZ ------------------------------------------------------------------------------------

  void ridFillsTheThreeBoxesAndASilentRidEmptiesThem() {
    Fixture f("TOPAZ");
    f.open();
    f.driver.queue(Op::SendReceive, 0, "800B" "11485E7A1122" "B92C" "080000");
    f.click("cmd_ISO14443A_TOPAZ_RID");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"78000000000000A8"}));
    QCOMPARE(f.log(), sendRecv("ISO14443-A TOPAZ RID", "78000000000000A8", "800B11485E7A1122B92C080000"));
    QCOMPARE(f.textOf("txtHR0_TOPAZ"), QString("11"));
    QCOMPARE(f.textOf("txtHR1_TOPAZ"), QString("48"));
    QCOMPARE(f.textOf("txtUID_cmdSelect"), QString("5E7A1122"));
    QCOMPARE(f.analysis().mid(0, 3), (QStringList{"80", "0B", "11485E7A1122B92C080000"}));
    QCOMPARE(f.textOf("txt_ISO14443A_transFlag"), QString("A8"));
    f.click("cmd_ISO14443A_TOPAZ_RID");
    QCOMPARE(f.textOf("txtHR0_TOPAZ"), QString());
    QCOMPARE(f.textOf("txtHR1_TOPAZ"), QString());
    QCOMPARE(f.textOf("txtUID_cmdSelect"), QString());
    QCOMPARE(f.analysis(), (QStringList{"", "", "", "", "", ""}));
  }

  void topazReqaSendsTheSameFrameAndClearsTheTopazBoxes() {
    Fixture f("TOPAZ");
    f.open();
    f.setText("txtHR0_TOPAZ", "11");
    f.setText("txtUID_cmdSelect", "5E7A1122");
    f.driver.queue(Op::SendReceive, 0, "80050C00080000");
    f.click("cmd_ISO14443A_TOPAZ_REQA");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"2607"}));
    QCOMPARE(f.log(), sendRecv("ISO14443-A TOPAZ REQA", "2607", "80050C00080000"));
    QCOMPARE(f.textOf("txtHR0_TOPAZ"), QString());
    QCOMPARE(f.textOf("txtUID_cmdSelect"), QString());
    QCOMPARE(f.analysis().mid(0, 3), (QStringList{"80", "05", "0C00080000"}));
  }

  void topazReadTakesOneByteAnExchangeWithWhateverUidTheBoxHolds() {
    Fixture f("TOPAZ");
    f.open();
    f.setText("txtUID_cmdSelect", "DEADBEEF");
    f.setText("txtUserAddress_0", "0D");
    f.setText("txtUserAddress_1", "0E");
    f.driver.queue(Op::SendReceive, 0, "8007" "0D10" "BEAF" "080000");
    f.driver.queue(Op::SendReceive, 0, "8700");
    f.click("cmd_ISO14443A_Read");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"010D00DEADBEEFA8", "010E00DEADBEEFA8"}));
    QCOMPARE(f.view(), (QStringList{"0D   10 ", "0E   error"}));
    QVERIFY(f.log().find("ISO14443-A TOPAZ READ\r\n") != std::string::npos);
    // No RID: the frame carries no UID.
    f.driver.clearCalls();
    f.setText("txtUID_cmdSelect", "");
    f.setText("txtUserAddress_1", "0D");
    f.click("cmd_ISO14443A_Read");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"010D00A8"}));
  }

  void topazWriteEAndWriteNeSendTheirFramesThroughTheGrid() {
    Fixture f("TOPAZ");
    f.open();
    f.setText("txtUID_cmdSelect", "5E7A1122");
    f.setText("txtUserAddress_0", "0D");
    f.setText("txtUserAddress_1", "0D");
    f.click("cmd_ISO14443A_TOPAZ_Write_E");
    QVERIFY(f.w("fraPageWrite")->isVisible());
    QCOMPARE(f.w<QLineEdit>("txtPageSize")->text(), QString("1"));
    QVERIFY(f.w("PWData_0")->isVisible());
    QVERIFY(!f.w("PWData_1")->isVisible());
    f.panel->pageView()->PWData(0)->setMaskedText("22 ");
    f.driver.queue(Op::SendReceive, 0, "8007" "0D22" "2FBD" "080000");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"530D225E7A1122A8"}));
    QCOMPARE(f.log(), sendRecv("ISO14443-A TOPAZ WRITE_E", "530D225E7A1122A8", "80070D222FBD080000"));
    QCOMPARE(f.view(), (QStringList{"0D   (00) No error during Prog sequence"}));
    QCOMPARE(f.analysis().mid(0, 3), (QStringList{"80", "07", "0D222FBD080000"}));
    f.click("cmd_ISO14443A_TOPAZ_Write_NE");
    f.panel->pageView()->PWData(0)->setMaskedText("80 ");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver).back(), std::string("1A0D805E7A1122A8"));
    QVERIFY(f.log().ends_with(sendRecv("ISO14443-A TOPAZ WRITE_NE", "1A0D805E7A1122A8", "8700")));
    QCOMPARE(f.view(), (QStringList{"0D   Error code"}));
  }

  // --- memory -------------------------------------------------------------------------------------

  void aRangeOfOnePageStillShowsFourRows() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_0", "05");
    f.setText("txtUserAddress_1", "05");
    f.driver.queue(Op::SendReceive, 0, readAnswer("00010203" "04050607" "08090A0B" "0C0D0E0F"));
    f.click("cmd_ISO14443A_Read");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"300528"}));
    QCOMPARE(f.view(), (QStringList{"05   00 01 02 03 ", "06   04 05 06 07 ", "07   08 09 0A 0B ", "08   0C 0D 0E 0F "}));
    QCOMPARE(f.log(), sendRecv("ISO14443-A READ", "300528", readAnswer("000102030405060708090A0B0C0D0E0F")));
    QCOMPARE(f.analysis()[3], QString("08"));
    QCOMPARE(f.textOf("txt_ISO14443A_transFlag"), QString("28"));
    QVERIFY(!f.w("cmdStopCommand")->isVisible());
    QVERIFY(f.w("cmd_ISO14443A_Read")->isEnabled());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
  }

  void anEndBelowTheStartWrapsThroughTheTopOfMemory() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_0", "1E");
    f.setText("txtUserAddress_1", "01");
    f.driver.queue(Op::SendReceive, 0, readAnswer("1E1E1E1E" "1F1F1F1F" "00000000" "01010101"));
    f.driver.queue(Op::SendReceive, 0, readAnswer("02020202" "03030303" "04040404" "05050505"));
    f.click("cmd_ISO14443A_Read");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"301E28", "300228"}));
    QCOMPARE(f.view(), (QStringList{"1E   1E 1E 1E 1E ", "1F   1F 1F 1F 1F ", "00   00 00 00 00 ", "01   01 01 01 01 ",
                                    "02   02 02 02 02 ", "03   03 03 03 03 ", "04   04 04 04 04 "}));
  }

  void failingReadsLeaveErrorRowsAndGoOn() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_0", "00");
    f.setText("txtUserAddress_1", "04");
    f.driver.queue(Op::SendReceive, 0, "900400");
    f.driver.queue(Op::SendReceive, 0, readAnswer("00000000000000000000000000000000", "880101"));
    f.click("cmd_ISO14443A_Read");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"300028", "300428"}));
    QCOMPARE(f.view(), (QStringList{"00   error", "01   error", "02   error", "03   error", "04   error detected ",
                                    "05   error detected ", "06   error detected ", "07   error detected "}));
  }

  void aBadAddressStopsBeforeAnythingIsSent() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_1", "1G");
    f.click("cmd_ISO14443A_Read");
    QVERIFY(f.driver.calls().empty());
    QCOMPARE(f.dialogs.messages.size(), std::size_t(1));
    QCOMPARE(f.dialogs.messages[0].text, QString("Invalid Address: check for Hexadecimal format or Adress value"));
    QVERIFY(f.w("cmd_ISO14443A_Read")->isEnabled());
    QVERIFY(!f.w("cmdStopCommand")->isVisible());
    f.click("cmd_ISO14443A_Write");
    QVERIFY(!f.w("fraPageWrite")->isVisible());
    QVERIFY(f.w("cmd_ISO14443A_Write")->isEnabled());
    QCOMPARE(f.dialogs.messages.size(), std::size_t(2));
  }

  void stopDuringAReadEndsItAfterTheRunningExchange() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_0", "00");
    f.setText("txtUserAddress_1", "1F");
    int reads = 0;
    bool stopShown = false;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op != Op::SendReceive) return {0, ""};
      if (++reads == 2) {
        stopShown = f.w("cmdStopCommand")->isVisible();
        QTimer::singleShot(0, [&] { f.click("cmdStopCommand"); });
      }
      return {0, readAnswer("11111111222222223333333344444444")};
    });
    f.click("cmd_ISO14443A_Read");
    QCOMPARE(reads, 2);
    QVERIFY(stopShown);
    QCOMPARE(f.view().size(), 8);
    QCOMPARE(f.view()[4], QString("04   11 11 11 11 "));
    QVERIFY(!f.w("cmdStopCommand")->isVisible());
    QVERIFY(f.w("cmd_ISO14443A_Read")->isEnabled());
  }

  void writeOpensTheGridOfFourBytesAndWritesOnePage() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_0", "04");
    f.setText("txtUserAddress_1", "04");
    f.click("cmd_ISO14443A_Write");
    QVERIFY(f.w("fraPageWrite")->isVisible());
    QCOMPARE(f.w<QPushButton>("cmdWriteUser")->text(), QString("Write"));
    QCOMPARE(f.w<QLineEdit>("txtPageSize")->text(), QString("4"));
    QCOMPARE(QString::fromStdString(f.panel->pageView()->PWData(0)->maskedText()), QString("00 00 00 00 "));
    QVERIFY(!f.w("PWData_1")->isVisible());
    QVERIFY(f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_1")->isReadOnly());
    QVERIFY(!f.w("cmd_ISO14443A_Read")->isEnabled());
    f.panel->pageView()->mskFillPage()->setMaskedText("AB");
    QCOMPARE(QString::fromStdString(f.panel->pageView()->PWData(0)->maskedText()), QString("AB AB AB AB "));
    f.driver.queue(Op::SendReceive, 0, "90040A");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"A204ABABABAB28"}));
    QCOMPARE(f.log(), sendRecv("ISO14443-A WRITE", "A204ABABABAB28", "90040A"));
    // The 4-bit ACK comes back with code 90, which is no "80 ... 00" answer.
    QCOMPARE(f.view(), (QStringList{"04   Error code"}));
    QVERIFY(!f.w("fraPageWrite")->isVisible());
    QVERIFY(f.w("cmd_ISO14443A_Read")->isEnabled());
    QCOMPARE(QString::fromStdString(f.panel->pageView()->mskFillPage()->maskedText()), QString("__"));
  }

  void aWriteWithARangeInTheBoxesClosesAtOnce() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_0", "04");
    f.setText("txtUserAddress_1", "06");
    f.click("cmd_ISO14443A_Write");
    f.driver.queue(Op::SendReceive, 0, "8006" "0000" "000000");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"A2040000000028"}));
    QVERIFY(!f.w("fraPageWrite")->isVisible());
    QVERIFY(!f.w("lstReadView")->isEnabled());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
    QVERIFY(f.w("cmd_ISO14443A_Write")->isEnabled());
    QCOMPARE(memoryBuffer().Contenu(), (std::vector<std::string>{"(00) No error during Prog sequence"}));
  }

  void compatibilityWriteSendsTwoFramesForEachPage() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_0", "06");
    f.setText("txtUserAddress_1", "06");
    f.click("cmd_ISO14443A_Write_compatibility");
    QCOMPARE(f.w<QPushButton>("cmdWriteUser")->text(), QString("Write Compatibility"));
    QCOMPARE(f.w<QLineEdit>("txtPageSize")->text(), QString("16"));
    for (int i = 0; i < 4; ++i) QVERIFY(f.w(QString("PWData_%1").arg(i))->isVisible());
    QVERIFY(!f.w("PWData_4")->isVisible());
    f.panel->pageView()->mskFillPage()->setMaskedText("5A");
    f.driver.queue(Op::SendReceive, 0, "90040A");
    f.driver.queue(Op::SendReceive, 0, "90040A");
    f.click("cmdWriteUser");
    std::string fives;
    for (int i = 0; i < 16; ++i) fives += "5A";
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"A00628", fives + "28"}));
    QCOMPARE(f.log(), sendRecv("ISO14443-A COMPATIBILITY WRITE", "A00628", "90040A") +
                          "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_SENDRECV, " + fives + "28\r\n\t\t\t<<< 90040A");
  }

  void badDataKeepsTheWriteFrame() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_0", "04");
    f.setText("txtUserAddress_1", "04");
    f.click("cmd_ISO14443A_Write");
    f.panel->pageView()->PWData(0)->setMaskedText("ZZ 00 00 00 ");
    f.click("cmdWriteUser");
    QVERIFY(f.driver.calls().empty());
    QCOMPARE(f.dialogs.messages.size(), std::size_t(1));
    QCOMPARE(f.dialogs.messages[0].text, QString("Invalid Data: check for Hexadecimal format or # of data"));
    QVERIFY(f.w("fraPageWrite")->isVisible());
    QVERIFY(f.w("cmdWriteUser")->isEnabled());
    QVERIFY(f.w("PWData_0")->isEnabled());
  }

  void cancelClosesTheWriteFrame() {
    Fixture f;
    f.open();
    f.click("cmd_ISO14443A_Write");
    glob::state().transferRunning = true;
    glob::state().autoLoopActive = true;
    f.click("cmdCancelWriteTest");
    QVERIFY(!f.w("fraPageWrite")->isVisible());
    QVERIFY(!glob::state().transferRunning);
    QVERIFY(!glob::state().autoLoopActive);
    QVERIFY(f.w("cmd_ISO14443A_Read")->isEnabled());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
  }

  // --- closing while a handler runs ------------------------------------------------------------

  void closingThePanelDuringAReadNeverCrashes() {
    Fixture f;
    f.open();
    f.setText("txtUserAddress_0", "00");
    f.setText("txtUserAddress_1", "1F");
    QPointer<frmTL42RQ_ISO14443A_UI> panel = f.panel.release();
    int reads = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++reads == 3) QTimer::singleShot(0, [&] { panel->close(); });
      return {0, readAnswer("00000000000000000000000000000000")};
    });
    QTest::mouseClick(uitest::find<QPushButton>(panel, "cmd_ISO14443A_Read"), Qt::LeftButton);
    QCOMPARE(reads, 3);
    QTRY_VERIFY(panel.isNull());
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO14443A));
  }

  void closingThePanelDuringTheProcessNeverCrashes() {
    Fixture f;
    f.open();
    QPointer<frmTL42RQ_ISO14443A_UI> panel = f.panel.release();
    int calls = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op != Op::SendReceive) return {0, ""};
      if (++calls == 1) QTimer::singleShot(0, [&] { panel->close(); });
      return {0, "80054400080000"};
    });
    QTest::mouseClick(uitest::find<QPushButton>(panel, "cmd_ISO14443A_Anticol_Process"), Qt::LeftButton);
    QCOMPARE(calls, 1);
    QTRY_VERIFY(panel.isNull());
  }

  void closingTheMainWindowDuringAReadNeverCrashes() {
    Fixture f;
    shell::setProgramDirectory(TL42RQ_SOURCE_DIR "/data/");
    {
      MainForm form;
      form.setEndsProcessOnClose(false);
      form.load(false);
      form.show();
      form.openProduct("ISO14443-A Cards commands");
      auto* panel = qobject_cast<frmTL42RQ_ISO14443A_UI*>(form.panel(glob::PanelId::ISO14443A));
      QVERIFY(panel);
      QCOMPARE(panel->windowTitle(), QString("ISO14443-A : ISO14443-A"));
      int reads = 0;
      f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
        if (op == Op::SendReceive && ++reads == 4) QTimer::singleShot(0, [&] { form.close(); });
        return {0, readAnswer("00000000000000000000000000000000")};
      });
      uitest::find<QPushButton>(panel, "cmd_ISO14443A_Read")->click();
      QCOMPARE(reads, 4);
      QTRY_VERIFY(form.mdiArea()->subWindowList().isEmpty());
    }
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO14443A));
  }
};

QTEST_MAIN(Iso14443APanelTest)
#include "Iso14443APanelTest.moc"
