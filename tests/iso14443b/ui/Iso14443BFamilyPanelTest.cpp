// The ISO 14443-B panel's family face against a fake board: the PDX51 to PDY55 family's
// commands, the slot inventory with its grid and loop, the block reads and writes with
// the page view, STOP, and closing the panel while the inventory loop runs.
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QTimer>
#include <QtTest>

#include "Iso14443BUiSupport.h"
#include "iso15693/ui/MemoryPageView.h"
#include "shell/UsageFile.h"
#include "shell/ui/MainForm.h"

using namespace iso14443btest;

namespace {
// A family tag's one-byte answer (chip identifier), with a CRC and the good tail.
std::string chipIdAnswer(const std::string& id) { return "8003" + id + "ABCD" "00"; }
const std::string kUidAnswer = "800B" "78563412003302D0" "1234" "00";

// The seventeen frames of a pass: Reset to Inventory, Initiate, Slot Markers 1 to 15.
std::vector<std::string> passFrames() {
  std::vector<std::string> frames{"0C", "0600"};
  for (int slot = 1; slot <= 15; ++slot) frames.push_back(std::string(1, "0123456789ABCDEF"[slot]) + "6");
  return frames;
}
// Answers for one pass with tags in the given slots (everything else silent).
std::vector<std::string> passAnswers(const std::vector<std::pair<int, std::string>>& tags) {
  std::vector<std::string> answers{"8700", "8600"};
  for (int slot = 1; slot <= 15; ++slot) {
    std::string a = "8700";
    for (const auto& [s, id] : tags)
      if (s == slot) a = chipIdAnswer(id);
    answers.push_back(a);
  }
  return answers;
}
std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}
}  // namespace

class Iso14443BFamilyPanelTest : public QObject {
  Q_OBJECT
 private slots:
  void captionsOfTheFamilyFace() {
    Fixture f("PDX54");
    f.open();
    const std::vector<std::pair<const char*, const char*>> buttons{
        {"cmd_ISO14443B_Initiate", "Initiate"},
        {"cmd_ISO14443B_Pcall16", "Pcall16"},
        {"cmd_ISO14443B_SlotMarker", "Slot Marker (SN)"},
        {"cmd_ISO14443B_Select", "Select(Chip_Id)"},
        {"cmd_ISO14443B_Completion", "Completion"},
        {"cmd_ISO14443B_ResetToInventory", "Reset to Inventory"},
        {"cmd_ISO14443B_GetUID", "Get UID"},
        {"cmd_ISO14443B_Anticollision", "ISO14443-B Anticollision"},
        {"chkAnticollisionLoop", "Loop"},
        {"cmd_ISO14443B_Read", "&Read Single Block"},
        {"cmd_ISO14443B_Write", "Write Single Block"},
        {"cmdStopCommand", "STOP"}};
    for (const auto& [name, caption] : buttons) QCOMPARE(f.w<QAbstractButton>(name)->text(), QString(caption));
    QCOMPARE(f.caption("lblISO1443B_ChipID"), QString("Chip Id ="));
    QCOMPARE(f.caption("lblSN"), QString("SN = "));
    QCOMPARE(f.caption("lblISO1443B_UID"), QString("UID ="));
    QCOMPARE(f.caption("lblAnticolUID"), QString("UID = "));
    QCOMPARE(f.caption("lblUserAddress"), QString("RF block address"));
    QCOMPARE(f.caption("lblUsrAddLow"), QString("from"));
    QCOMPARE(f.caption("lblUsrAddHigh"), QString("to"));
    QCOMPARE(f.w("txtUserAddress_0")->toolTip(), QString("enter here the Address to Write or Read from "));
    QCOMPARE(f.w("txtUserAddress_1")->toolTip(), QString("enter here the Address to Write or Read to"));
    QCOMPARE(f.text("txt_ISO14443B_ChipID"), QString("00"));
    for (int i = 0; i < 4; ++i) QCOMPARE(f.text(QString("txt_ISO14443B_SN_%1").arg(i)), QString("0"));
    QVERIFY(f.w<QLineEdit>("txt_ISO14443B_UID")->isReadOnly());
    QCOMPARE(f.w<QLineEdit>("txt_ISO14443B_UID")->maxLength(), 16);
    QVERIFY(f.w<QLineEdit>("txtAnticolUID")->isReadOnly());
  }

  void addressBoxesAreWideEnoughForTheLastAddress() {
    {
      Fixture f("PDX54");  // 512 bytes: last address 1FF
      f.open();
      QCOMPARE(f.text("txtUserAddress_0"), QString("000"));
      QCOMPARE(f.text("txtUserAddress_1"), QString("1FF"));
      QCOMPARE(f.w<QLineEdit>("txtUserAddress_0")->maxLength(), 3);
    }
    {
      Fixture f("PDX51");  // 64 bytes: last address 3F
      f.open();
      QCOMPARE(f.text("txtUserAddress_0"), QString("00"));
      QCOMPARE(f.text("txtUserAddress_1"), QString("3F"));
    }
  }

  void everyCommandSendsItsFrameUnderItsTitle() {
    Fixture f("PDX54");
    f.open();
    f.setText("txt_ISO14443B_ChipID", "57");
    const std::vector<std::tuple<const char*, std::string, std::string>> rows{
        {"cmd_ISO14443B_Initiate", "0600", "INITIATE"},
        {"cmd_ISO14443B_Pcall16", "0604", "PCALL16"},
        {"cmd_ISO14443B_SlotMarker", "06", "SLOT MARKER"},
        {"cmd_ISO14443B_Select", "0E57", "SELECT"},
        {"cmd_ISO14443B_Completion", "0F", "COMPLETION"},
        {"cmd_ISO14443B_ResetToInventory", "0C", "RESET TO INVENTORY"},
        {"cmd_ISO14443B_GetUID", "0B", "GET UID"}};
    for (const auto& [button, frame, title] : rows) {
      f.driver.clearCalls();
      f.click(button);
      QCOMPARE(sent(f.driver), std::vector<std::string>{frame});
      QCOMPARE(f.text("txt_ISO14443B_request"), QString::fromStdString(frame));
      QCOMPARE(f.text("txt_ISO14443B_answer"), QString("8700"));
      QVERIFY2(f.log().ends_with(sendRecv(title, frame, "8700")), button);
    }
  }

  void initiateTakesTheChipIdOnlyFromAGoodAnswer() {
    Fixture f("PDX54");
    f.open();
    f.answers({chipIdAnswer("57"), "80035812AB02", "8700"});
    f.click("cmd_ISO14443B_Initiate");
    QCOMPARE(f.text("txt_ISO14443B_ChipID"), QString("57"));
    // "80" with another last byte is a failure: the old Chip Id stays.
    f.click("cmd_ISO14443B_Initiate");
    QCOMPARE(f.text("txt_ISO14443B_ChipID"), QString("57"));
    QCOMPARE(f.text("txt_ISO14443B_answer"), QString("80035812AB02"));
    f.click("cmd_ISO14443B_Initiate");
    QCOMPARE(f.text("txt_ISO14443B_ChipID"), QString("57"));
  }

  void pcall16AndSlotMarkerLeaveTheChipIdToTheUser() {
    Fixture f("PDX54");
    f.open();
    f.answers({chipIdAnswer("50"), chipIdAnswer("57")});
    f.click("cmd_ISO14443B_Pcall16");
    f.click("cmd_ISO14443B_SlotMarker");
    QCOMPARE(f.text("txt_ISO14443B_ChipID"), QString("00"));
  }

  void slotMarkerFramesFromTheSnBoxes() {
    Fixture f("PDX54");
    f.open();
    f.click("cmd_ISO14443B_SlotMarker");
    f.setText("txt_ISO14443B_SN_0", "1");
    f.setText("txt_ISO14443B_SN_2", "1");
    f.click("cmd_ISO14443B_SlotMarker");
    for (int i = 0; i < 4; ++i) f.setText(QString("txt_ISO14443B_SN_%1").arg(i), "1");
    f.click("cmd_ISO14443B_SlotMarker");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"06", "56", "F6"}));
    QVERIFY(f.log().ends_with(sendRecv("SLOT MARKER", "F6", "8700")));
  }

  void snBoxesTakeOnlyBinaryDigits() {
    Fixture f("PDX54");
    f.open();
    auto* box = f.w<QLineEdit>("txt_ISO14443B_SN_3");
    box->clear();
    QTest::keyClicks(box, "7");
    QCOMPARE(box->text(), QString());
    QCOMPARE(f.dialogs.beeps, 1);
    f.leave("txt_ISO14443B_SN_3");
    QCOMPARE(box->text(), QString("0"));
  }

  void selectWithAnEmptyChipIdSends0EAlone() {
    Fixture f("PDX54");
    f.open();
    f.setText("txt_ISO14443B_ChipID", "");
    f.click("cmd_ISO14443B_Select");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0E"}));
  }

  void getUidReversesTheBytesAndClearsItsBoxFirst() {
    Fixture f("PDX54");
    f.open();
    f.answers({kUidAnswer, "8700", "8006" "AABBCC" "1234" "00"});
    f.click("cmd_ISO14443B_GetUID");
    QCOMPARE(f.text("txt_ISO14443B_UID"), QString("D002330012345678"));
    f.click("cmd_ISO14443B_GetUID");
    QCOMPARE(f.text("txt_ISO14443B_UID"), QString());
    // Fewer than eight bytes: the pieces past the end are empty.
    f.click("cmd_ISO14443B_GetUID");
    QCOMPARE(f.text("txt_ISO14443B_UID"), QString("003412CCBBAA"));
  }

  void oneTagInSlotSevenIsSelectedAndRead() {
    Fixture f("PDX54");
    f.open();
    f.answers(passAnswers({{7, "57"}}) + std::vector<std::string>{chipIdAnswer("57"), kUidAnswer});
    f.click("cmd_ISO14443B_Anticollision");
    QCOMPARE(sent(f.driver), (passFrames() + std::vector<std::string>{"0E57", "0B"}));
    QStringList expected = bareCells();
    expected[6] = "7:  ChipID = 57 ";
    QCOMPARE(f.cells(), expected);
    QCOMPARE(f.cell(0, 2), QString("7:  ChipID = 57 "));  // cell 7: column 2, row 0
    QCOMPARE(f.text("txt_ISO14443B_ChipID"), QString("57"));
    QCOMPARE(f.text("txtAnticolUID"), QString("D002330012345678"));
    QCOMPARE(f.text("txt_ISO14443B_UID"), QString());
    QVERIFY(f.log().ends_with(sendRecv("SLOT MARKER (15)", "F6", "8700") + sendRecv("SELECT", "0E57", chipIdAnswer("57")) +
                              sendRecv("GET UID", "0B", kUidAnswer)));
    QVERIFY(f.log().find(sendRecv("SLOT MARKER (7)", "76", chipIdAnswer("57"))) != std::string::npos);
    QVERIFY(f.log().find(sendRecv("RESET TO INVENTORY", "0C", "8700") + sendRecv("INITIATE", "0600", "8600")) !=
            std::string::npos);
  }

  void twoTagsInSlotsTwoAndNineFillTwoCellsAndSelectNone() {
    Fixture f("PDX54");
    f.open();
    f.answers(passAnswers({{2, "32"}, {9, "A9"}}));
    f.click("cmd_ISO14443B_Anticollision");
    QCOMPARE(sent(f.driver), passFrames());
    QStringList expected = bareCells();
    expected[1] = "2:  ChipID = 32 ";
    expected[8] = "9:  ChipID = A9 ";
    QCOMPARE(f.cells(), expected);
    QCOMPARE(f.text("txtAnticolUID"), QString());
    QCOMPARE(f.text("txt_ISO14443B_ChipID"), QString("00"));
    QVERIFY(f.dialogs.messages.empty());
  }

  void aTagInSlotFifteenIsSeen() {
    Fixture f("PDX54");
    f.open();
    f.answers(passAnswers({{15, "CF"}}) + std::vector<std::string>{chipIdAnswer("CF"), "8700"});
    f.click("cmd_ISO14443B_Anticollision");
    QCOMPARE(sent(f.driver), (passFrames() + std::vector<std::string>{"0ECF", "0B"}));
    QCOMPARE(f.cell(2, 4), QString("15:  ChipID = CF "));
    QCOMPARE(f.text("txtAnticolUID"), QString());
  }

  void aFailedSelectEndsThePassWithoutGetUid() {
    Fixture f("PDX54");
    f.open();
    f.answers(passAnswers({{4, "14"}}) + std::vector<std::string>{"8700"});
    f.click("cmd_ISO14443B_Anticollision");
    QCOMPARE(sent(f.driver), passFrames() + std::vector<std::string>{"0E14"});
  }

  void theLoopRepeatsSeventeenExchangesAndRewritesTheGrid() {
    Fixture f("PDX54");
    f.open();
    QTest::mouseClick(f.w<QCheckBox>("chkAnticollisionLoop"), Qt::LeftButton);
    QVERIFY(glob::state().iso14443bAnticolLoop);
    const std::vector<std::string> first = passAnswers({{3, "23"}}) + std::vector<std::string>{"8700"};
    int exchanges = 0;
    QString cellThreeAfterFirstPass;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op != Op::SendReceive) return liveReply(op);
      ++exchanges;
      if (exchanges == 19) cellThreeAfterFirstPass = f.cell(2, 0);
      // Cleared during the third pass: it ends after that pass's pause.
      if (exchanges == 18 + 17 + 5)
        QTimer::singleShot(0, [&] { QTest::mouseClick(f.w<QCheckBox>("chkAnticollisionLoop"), Qt::LeftButton); });
      if (exchanges <= static_cast<int>(first.size())) return {0, first[static_cast<std::size_t>(exchanges - 1)]};
      return {0, "8700"};
    });
    f.click("cmd_ISO14443B_Anticollision");
    QCOMPARE(exchanges, 18 + 17 + 17);
    QCOMPARE(sent(f.driver), passFrames() + std::vector<std::string>{"0E23"} + passFrames() + passFrames());
    QCOMPARE(cellThreeAfterFirstPass, QString("3:  ChipID = 23 "));
    QCOMPARE(f.cells(), bareCells());
    QVERIFY(!glob::state().iso14443bAnticolLoop);
  }

  void closingThePanelDuringTheInventoryLoopEndsIt() {
    Fixture f("PDX54");
    f.open();
    QTest::mouseClick(f.w<QCheckBox>("chkAnticollisionLoop"), Qt::LeftButton);
    QPointer<frmTL42RQ_ISO14443B_UI> panel = f.panel.release();
    int exchanges = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++exchanges == 20) QTimer::singleShot(0, [&] { panel->close(); });
      return liveReply(op);
    });
    QTest::mouseClick(uitest::find<QPushButton>(panel, "cmd_ISO14443B_Anticollision"), Qt::LeftButton);
    // The pass in which the panel closed runs to its end; no other starts.
    QCOMPARE(exchanges, 34);
    QVERIFY(!glob::state().iso14443bAnticolLoop);
    QTRY_VERIFY(panel.isNull());
  }

  void closingTheMainWindowDuringTheInventoryLoopNeverCrashes() {
    Fixture f("PDX54");
    shell::setProgramDirectory(TL42RQ_SOURCE_DIR "/data/");
    {
      MainForm form;
      form.setEndsProcessOnClose(false);
      form.load(false);
      form.show();
      form.openProduct("PDX54");
      auto* panel = qobject_cast<frmTL42RQ_ISO14443B_UI*>(form.panel(glob::PanelId::ISO14443B));
      QVERIFY(panel);
      QCOMPARE(panel->windowTitle(), QString("ISO14443-B user interface : PDX54"));
      QTest::mouseClick(uitest::find<QCheckBox>(panel, "chkAnticollisionLoop"), Qt::LeftButton);
      int exchanges = 0;
      f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
        if (op == Op::SendReceive && ++exchanges == 40) QTimer::singleShot(0, [&] { form.close(); });
        return liveReply(op);
      });
      uitest::find<QPushButton>(panel, "cmd_ISO14443B_Anticollision")->click();
      QCOMPARE(exchanges, 51);  // the third pass runs to its end
      QTRY_VERIFY(form.mdiArea()->subWindowList().isEmpty());
    }
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO14443B));
    QVERIFY(!glob::state().iso14443bAnticolLoop);
  }

  void closingThePanelDuringAReadEndsIt() {
    Fixture f("PDX54");
    f.open();
    f.setText("txtUserAddress_0", "000");
    f.setText("txtUserAddress_1", "07F");
    QPointer<frmTL42RQ_ISO14443B_UI> panel = f.panel.release();
    int reads = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++reads == 5) QTimer::singleShot(0, [&] { panel->close(); });
      return liveReply(op);
    });
    QTest::mouseClick(uitest::find<QPushButton>(panel, "cmd_ISO14443B_Read"), Qt::LeftButton);
    QCOMPARE(reads, 5);
    QTRY_VERIFY(panel.isNull());
  }

  void aRangeOfOneBlockReadsExactlyOneBlock() {
    Fixture f("PDX54");
    f.open();
    f.setText("txtUserAddress_0", "005");
    f.setText("txtUserAddress_1", "005");
    f.answers({"8007" "0A0B0C0D" "1234" "00"});
    f.click("cmd_ISO14443B_Read");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0805"}));
    QCOMPARE(rows(f.w<QListWidget>("lstReadView")), (QStringList{"005   0A 0B 0C 0D "}));
    QCOMPARE(memoryBuffer().Contenu(), (std::vector<std::string>{"0A 0B 0C 0D "}));
    QVERIFY(f.log().ends_with(sendRecv("READ", "0805", "8007" "0A0B0C0D" "1234" "00")));
    QVERIFY(f.w("cmd_ISO14443B_Read")->isEnabled());
    QVERIFY(f.w("cmdStopCommand")->isHidden());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
    QVERIFY(f.w("lstReadView")->isEnabled());
  }

  void aReadShowsErrorsAndMasksTheAddresses() {
    Fixture f("PDX51");  // 16 blocks
    f.open();
    f.setText("txtUserAddress_0", "1E");  // masked to 0E
    f.setText("txtUserAddress_1", "0F");
    f.answers({"8007" "01020304" "1234" "00", "8700"});
    f.click("cmd_ISO14443B_Read");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"080E", "080F"}));
    QCOMPARE(f.text("txtUserAddress_0"), QString("0E"));
    QCOMPARE(rows(f.w<QListWidget>("lstReadView")), (QStringList{"0E   01 02 03 04 ", "0F   error code returned"}));
  }

  void anEndBeforeTheStartWrapsThroughTheLastBlock() {
    Fixture f("PDX51");
    f.open();
    f.setText("txtUserAddress_0", "0E");
    f.setText("txtUserAddress_1", "01");
    f.click("cmd_ISO14443B_Read");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"080E", "080F", "0800", "0801"}));
    QCOMPARE(rows(f.w<QListWidget>("lstReadView")),
             (QStringList{"0E   error code returned", "0F   error code returned", "00   error code returned",
                          "01   error code returned"}));
  }

  void stopIsPolledAfterEveryBlock() {
    Fixture f("PDX54");
    f.open();
    f.setText("txtUserAddress_0", "000");
    f.setText("txtUserAddress_1", "00F");
    int reads = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++reads == 3) f.panel->cmdStopCommand_Click();
      return liveReply(op);
    });
    f.click("cmd_ISO14443B_Read");
    QCOMPARE(reads, 3);
    QCOMPARE(memoryBuffer().Size(), 3L);
    QVERIFY(f.w("cmd_ISO14443B_Read")->isEnabled());
    QVERIFY(f.w("cmdStopCommand")->isHidden());
  }

  void aBadAddressStopsBeforeAnythingIsSent() {
    Fixture f("PDX54");
    f.open();
    f.setText("txtUserAddress_1", "");
    f.click("cmd_ISO14443B_Read");
    QVERIFY(sent(f.driver).empty());
    QCOMPARE(f.dialogs.messages.size(), std::size_t{1});
    QCOMPARE(f.dialogs.messages[0].text, QString("Invalid Address: check for Hexadecimal format or Adress value"));
    QCOMPARE(f.dialogs.messages[0].title, QString("Hexadecimal Data Required"));
    QVERIFY(f.w("cmd_ISO14443B_Read")->isEnabled());
    f.click("cmd_ISO14443B_Write");
    QCOMPARE(f.dialogs.messages.size(), std::size_t{2});
    QVERIFY(f.w("fraPageWrite")->isHidden() || f.w<MaskedEdit>("PWData_0")->isHidden());
    QVERIFY(f.w("cmd_ISO14443B_Write")->isEnabled());
  }

  void writeOpensAFourByteGridAndWritesOneBlock() {
    Fixture f("PDX54");
    f.open();
    f.setText("txtUserAddress_0", "005");
    f.setText("txtUserAddress_1", "005");
    f.click("cmd_ISO14443B_Write");
    QVERIFY(!f.w("fraPageWrite")->isHidden());
    QVERIFY(!f.w("PWData_0")->isHidden());
    QVERIFY(f.w("PWData_1")->isHidden());
    QCOMPARE(f.w<MaskedEdit>("PWData_0")->pattern(), std::string(">AA AA AA AA "));
    QCOMPARE(f.w<QAbstractButton>("cmdWriteUser")->text(), QString("Write Single Block"));
    QVERIFY(!f.w("cmdWriteUser")->isHidden());
    QVERIFY(!f.w("cmd_ISO14443B_Read")->isEnabled());
    QVERIFY(f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_1")->isReadOnly());
    // Fill with AB: four bytes, whatever else the panel says.
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("AB");
    QCOMPARE(f.w<MaskedEdit>("PWData_0")->maskedText(), std::string("AB AB AB AB "));
    f.answers({"8000"});
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0905ABABABAB"}));
    QVERIFY(f.log().ends_with(sendRecv("WRITE", "0905ABABABAB", "8000")));
    QCOMPARE(rows(f.w<QListWidget>("lstReadView")), (QStringList{"005   (00) No error during Prog sequence"}));
    QVERIFY(f.w("fraPageWrite")->isHidden());
    QCOMPARE(f.w<MaskedEdit>("mskFillPage")->maskedText(), std::string("__"));
    QVERIFY(f.w("cmd_ISO14443B_Read")->isEnabled());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
  }

  void aFailedWriteSaysErrorCode() {
    Fixture f("PDX54");
    f.open();
    f.setText("txtUserAddress_0", "002");
    f.setText("txtUserAddress_1", "002");
    f.click("cmd_ISO14443B_Write");
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"090200000000"}));
    QCOMPARE(memoryBuffer().Contenu(), (std::vector<std::string>{"Error code"}));
  }

  void aWriteWhoseLastAddressDiffersClosesAtOnce() {
    Fixture f("PDX54");
    f.open();
    f.setText("txtUserAddress_0", "003");  // the last box keeps 1FF
    f.click("cmd_ISO14443B_Write");
    f.answers({"8000"});
    f.click("cmdWriteUser");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"090300000000"}));
    QVERIFY(f.w("fraPageWrite")->isHidden());
    QVERIFY(f.w("cmd_ISO14443B_Write")->isEnabled());
    QCOMPARE(memoryBuffer().Contenu(), (std::vector<std::string>{"(00) No error during Prog sequence"}));
  }

  void badDataKeepsTheGridOpen() {
    Fixture f("PDX54");
    f.open();
    f.click("cmd_ISO14443B_Write");
    f.w<MaskedEdit>("PWData_0")->setMaskedText("ZZ 00 00 00 ");
    f.click("cmdWriteUser");
    QVERIFY(sent(f.driver).empty());
    QCOMPARE(f.dialogs.messages.size(), std::size_t{1});
    QCOMPARE(f.dialogs.messages[0].text, QString("Invalid Data: check for Hexadecimal format or # of data"));
    QVERIFY(!f.w("fraPageWrite")->isHidden());
    QVERIFY(f.w("PWData_0")->isEnabled());
  }

  void cancelClosesTheGridAndEnablesTheCommands() {
    Fixture f("PDX54");
    f.open();
    f.click("cmd_ISO14443B_Write");
    f.click("cmdCancelWriteTest");
    QVERIFY(f.w("fraPageWrite")->isHidden());
    QVERIFY(f.w("cmd_ISO14443B_Read")->isEnabled());
    QVERIFY(!f.w<QLineEdit>("txtUserAddress_0")->isReadOnly());
    QVERIFY(!glob::state().transferRunning);
    QVERIFY(sent(f.driver).empty());
  }
};

QTEST_MAIN(Iso14443BFamilyPanelTest)
#include "Iso14443BFamilyPanelTest.moc"
