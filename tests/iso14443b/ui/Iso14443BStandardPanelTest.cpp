// The ISO 14443-B panel's opening and its standard face against a fake board: the
// configuration and its trace, the faces by product, REQB and WUPB with their frames,
// labels and loop, ATTRIB, the free frame and the rules of the boxes; closing the panel
// or the main window while a loop runs.
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QTimer>
#include <QtTest>

#include "Iso14443BUiSupport.h"
#include "iso15693/ui/MemoryPageView.h"
#include "reader/ui/HexFields.h"
#include "shell/UsageFile.h"
#include "shell/ui/MainForm.h"

using namespace iso14443btest;

namespace {
const std::string kAtqb = "800F" "50" "A1B2C3D4" "11223344" "008171" "9C3E" "00";
const QStringList kReqbLabelNames{"lblReqBanswer",           "lblReqBanswer_FirstByte",    "lblReqBanswer_Pupi",
                                  "lblReqBanswer_ApplicationData", "lblReqBanswer_ProtocolInfo", "lblReqBanswer_Crc"};
const QStringList kBareReqbLabels{"Answer : ",          "First Byte : ",      "Pupi : ",
                                  "Application data : ", "Protocol Info : ", "Crc : "};
const QStringList kAtqbLabels{"Answer : 50A1B2C3D411223344008171" "9C3E00", "First Byte : 50",
                              "Pupi : A1B2C3D4",  "Application data : 11223344",
                              "Protocol Info : 0081719C",                 "Crc : 3E00"};
// The controls the family face shows and the standard face hides.
const QStringList kFamilyControls{"Frame1",        "cmd_ISO14443B_Read",          "cmd_ISO14443B_Write",
                                  "lblUserAddress", "FraAddressRow",               "lstReadView",
                                  "fraPageWrite",  "cmdStopCommand",              "cmd_ISO14443B_Anticollision",
                                  "fgISO14443Banticol", "chkAnticollisionLoop"};
}  // namespace

class Iso14443BStandardPanelTest : public QObject {
  Q_OBJECT

  static QStringList labels(Fixture& f) {
    QStringList out;
    for (const QString& name : kReqbLabelNames) out << f.caption(name);
    return out;
  }

 private slots:
  void openingSendsEchoSelectAndGainWithTheirTrace() {
    Fixture f;
    f.panel = std::make_unique<frmTL42RQ_ISO14443B_UI>();
    const auto calls = f.driver.calls();
    QCOMPARE(calls.size(), std::size_t{3});
    QCOMPARE(calls[0].op, Op::Echo);
    QCOMPARE(calls[1].op, Op::Select);
    QCOMPARE(calls[1].request, std::string("03010180"));
    QCOMPARE(calls[2].op, Op::KQCmd);
    // The opening's gain write has no blank behind the mode field.
    QCOMPARE(calls[2].request, std::string("01090468010130"));
    QCOMPARE(f.log(), "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500" +
                          entry("TL42RQ CONFIGURATION : ISO14443-B protocol", "TL42RQDLL_SELECT", "03010180", "0000") +
                          entry("TL42RQ CONFIGURATION : INCREASE DEMOD GAIN", "TL42RQDLL_KQCMD", "01 090468010130",
                                "0000"));
    QCOMPARE(f.text("txt_ISO14443B_request"), QString());
    QCOMPARE(f.text("txt_ISO14443B_answer"), QString());
    QCOMPARE(f.panel->objectName(), QString("frmTL42RQ_ISO14443B_UI"));
    QVERIFY(glob::panelOpen(glob::PanelId::ISO14443B));
  }

  void theGainAnswerIsTheWritesOwn() {
    Fixture f;
    f.driver.setHandler([](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::KQCmd) return {0, "8200"};
      return liveReply(op);
    });
    f.open();
    QVERIFY(f.log().ends_with(entry("TL42RQ CONFIGURATION : INCREASE DEMOD GAIN", "TL42RQDLL_KQCMD",
                                    "01 090468010130", "8200")));
  }

  void aFailedEchoIsSentOnceMore() {
    Fixture f;
    f.driver.queue(Op::Echo, 0, "0000");
    f.driver.queue(Op::Echo, 0, "0000");
    f.driver.setHandler(nullptr);
    f.panel = std::make_unique<frmTL42RQ_ISO14443B_UI>();
    QCOMPARE(f.driver.callsOf(Op::Echo).size(), std::size_t{2});
    QVERIFY(f.log().starts_with("\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 0000"
                                "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 0000"
                                "\r\n11-21-2026 10:20:30\tTL42RQ CONFIGURATION : ISO14443-B protocol"));
  }

  void theStandardProductShowsTheStandardFace() {
    Fixture f("ISO14443-B");
    f.open();
    QCOMPARE(f.caption("lbl_title_ISO14443B_2"), QString("ISO14443-B user interface : "));
    QVERIFY(!f.w("Fra_14443B_ReqBWupB")->isHidden());
    for (const QString& name : kFamilyControls) QVERIFY2(f.w(name)->isHidden(), qPrintable(name));
  }

  void anyOtherProductShowsTheFamilyFace() {
    for (const char* reference : {"PDX51", "PDX54", "PDY55"}) {
      Fixture f(reference);
      f.open();
      QCOMPARE(f.caption("lbl_title_ISO14443B_2"), QString("ISO14443-B Cards user interface (PDYxxx) :"));
      QVERIFY(f.w("Fra_14443B_ReqBWupB")->isHidden());
      for (const QString& name : kFamilyControls) QVERIFY2(!f.w(name)->isHidden(), qPrintable(name));
    }
  }

  void theGridHoldsItsFifteenLabelsAtOpening() {
    Fixture f("PDX54");
    f.open();
    auto* grid = f.w<QTableWidget>("fgISO14443Banticol");
    QCOMPARE(grid->rowCount(), 3);
    QCOMPARE(grid->columnCount(), 5);
    for (int c = 0; c < 5; ++c) QCOMPARE(grid->columnWidth(c), 1250 / 15);
    QCOMPARE(f.cells(), bareCells());
  }

  void fieldsStartWithTheirDefaults() {
    Fixture f;
    f.open();
    for (int i = 0; i < 3; ++i) QCOMPARE(f.text(QString("txt_ISO14443B_ReqB_SN_%1").arg(i)), QString("0"));
    QCOMPARE(f.text("txt_iso14443B_reqB_afi"), QString("00"));
    QCOMPARE(f.text("txtAttriBrequest_Pupi"), QString("00000000"));
    QCOMPARE(f.text("txtAttriBrequest_autorizedRespTime"), QString("00"));
    QCOMPARE(f.text("txtAttriBrequest_MaxFrameSize"), QString("07"));
    QCOMPARE(f.text("txtAttriBrequest_ISO14443compliant"), QString("01"));
    QCOMPARE(f.text("txtAttriBrequest_CID"), QString("00"));
    QCOMPARE(f.caption("lblRegB_N"), QString("N"));
    QCOMPARE(f.caption("lblRegB_afi"), QString("afi"));
    QCOMPARE(f.caption("lblAttriBrequest_Pupi"), QString("Pupi : "));
    QCOMPARE(f.caption("lblAttriBrequest_autorizedRespTime"), QString("Autorized response time : "));
    QCOMPARE(f.caption("lblAttriBrequest_MaxFrameSize"), QString("Max frame size : "));
    QCOMPARE(f.caption("lblAttriBrequest_ISO14443compliant"), QString("ISO14443 compliant : "));
    QCOMPARE(f.caption("lblAttriBrequest_CID"), QString("CID(8bits) card identifier : "));
    QCOMPARE(f.caption("lbl_ISO14443B_request"), QString("request ="));
    QCOMPARE(f.caption("lbl_ISO14443B_answer"), QString("answer ="));
    QCOMPARE(f.w<QAbstractButton>("cmd_ISO14443B_ReqB")->text(), QString("REQB"));
    QCOMPARE(f.w<QAbstractButton>("cmd_ISO14443B_WupB")->text(), QString("WUPB"));
    QCOMPARE(f.w<QAbstractButton>("cmd_ISO14443B_Attrib")->text(), QString("ATTRIB"));
    QCOMPARE(f.w<QAbstractButton>("cmd_ISO14443B_SendFrame")->text(), QString("Send any frame"));
    QCOMPARE(f.w<QAbstractButton>("chkReqBWupBLoop")->text(), QString("Loop"));
    QCOMPARE(labels(f), kBareReqbLabels);
    QVERIFY(f.w<QPlainTextEdit>("rtfISO14443BLogEdit")->isReadOnly());
  }

  void defaultReqbSends0500F0AndCutsTheAtqb() {
    Fixture f;
    f.open();
    f.answers({kAtqb});
    f.click("cmd_ISO14443B_ReqB");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0500F0"}));
    QCOMPARE(f.text("txt_ISO14443B_request"), QString("0500F0"));
    QCOMPARE(f.text("txt_ISO14443B_answer"), QString::fromStdString(kAtqb));
    QCOMPARE(labels(f), kAtqbLabels);
    QCOMPARE(f.text("txtAttriBrequest_Pupi"), QString("A1B2C3D4"));
    QVERIFY(f.log().ends_with(sendRecv("REQB", "0500F0", kAtqb)));
  }

  void nFiveGivesF5ForReqbAndFdForWupb() {
    Fixture f;
    f.open();
    f.setText("txt_ISO14443B_ReqB_SN_2", "1");
    f.setText("txt_ISO14443B_ReqB_SN_1", "0");
    f.setText("txt_ISO14443B_ReqB_SN_0", "1");
    f.click("cmd_ISO14443B_ReqB");
    f.click("cmd_ISO14443B_WupB");
    f.setText("txt_iso14443B_reqB_afi", "12");
    f.click("cmd_ISO14443B_ReqB");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0500F5", "0500FD", "0512F5"}));
    QVERIFY(f.log().ends_with(sendRecv("REQB", "0512F5", "8700")));
  }

  void wupbNeverChangesThePupiBox() {
    Fixture f;
    f.open();
    f.setText("txtAttriBrequest_Pupi", "01020304");
    f.answers({kAtqb, "8700"});
    f.click("cmd_ISO14443B_WupB");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0500F8"}));
    QCOMPARE(f.text("txtAttriBrequest_Pupi"), QString("01020304"));
    QCOMPARE(labels(f), kAtqbLabels);
    QVERIFY(f.log().ends_with(sendRecv("WUPB", "0500F8", kAtqb)));
    // An unanswered WUPB resets nothing: the last values stand.
    f.click("cmd_ISO14443B_WupB");
    QCOMPARE(labels(f), kAtqbLabels);
    QCOMPARE(f.text("txtAttriBrequest_Pupi"), QString("01020304"));
  }

  void anUnansweredReqbResetsLabelsAndPupi() {
    Fixture f;
    f.open();
    f.answers({kAtqb, "8700"});
    f.click("cmd_ISO14443B_ReqB");
    f.click("cmd_ISO14443B_ReqB");
    QCOMPARE(labels(f), kBareReqbLabels);
    QCOMPARE(f.text("txtAttriBrequest_Pupi"), QString("00000000"));
    QCOMPARE(f.text("txt_ISO14443B_answer"), QString("8700"));
  }

  void an80WithAnErrorTailIsNotDecoded() {
    Fixture f;
    f.open();
    const std::string flagged = "800F" "50A1B2C3D411223344008171" "9C3E" "02";
    f.answers({flagged});
    f.click("cmd_ISO14443B_ReqB");
    QCOMPARE(labels(f), kBareReqbLabels);
    QCOMPARE(f.text("txtAttriBrequest_Pupi"), QString("00000000"));
    QCOMPARE(f.text("txt_ISO14443B_answer"), QString::fromStdString(flagged));
  }

  void aFirstByteOtherThan50IsShownWithoutComplaint() {
    Fixture f;
    f.open();
    f.answers({"800F" "1D" "A1B2C3D4" "11223344" "008171" "9C3E" "00"});
    f.click("cmd_ISO14443B_ReqB");
    QCOMPARE(f.caption("lblReqBanswer_FirstByte"), QString("First Byte : 1D"));
    QCOMPARE(f.text("txtAttriBrequest_Pupi"), QString("A1B2C3D4"));
    QVERIFY(f.dialogs.messages.empty());
  }

  void uncheckingLoopEndsTheLoopAfterThePause() {
    for (const char* command : {"cmd_ISO14443B_ReqB", "cmd_ISO14443B_WupB"}) {
      Fixture f;
      f.open();
      QTest::mouseClick(f.w<QCheckBox>("chkReqBWupBLoop"), Qt::LeftButton);
      QVERIFY(glob::state().iso14443bReqbLoop);
      QVERIFY(glob::state().iso14443bWupbLoop);
      int passes = 0;
      f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
        // During the third exchange the box is cleared; the pass ends with its pause.
        if (op == Op::SendReceive && ++passes == 3)
          QTimer::singleShot(0, [&] { QTest::mouseClick(f.w<QCheckBox>("chkReqBWupBLoop"), Qt::LeftButton); });
        return liveReply(op);
      });
      f.click(command);
      QCOMPARE(passes, 3);
      QVERIFY(!glob::state().iso14443bReqbLoop);
      QVERIFY(!f.w<QCheckBox>("chkReqBWupBLoop")->isChecked());
    }
  }

  void theLoopReadsNAndAfiAgainInEachPass() {
    Fixture f;
    f.open();
    QTest::mouseClick(f.w<QCheckBox>("chkReqBWupBLoop"), Qt::LeftButton);
    int passes = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op != Op::SendReceive) return liveReply(op);
      if (++passes == 1)
        QTimer::singleShot(0, [&] {
          f.setText("txt_ISO14443B_ReqB_SN_0", "1");
          f.setText("txt_iso14443B_reqB_afi", "34");
        });
      else
        QTimer::singleShot(0, [&] { QTest::mouseClick(f.w<QCheckBox>("chkReqBWupBLoop"), Qt::LeftButton); });
      return liveReply(op);
    });
    f.click("cmd_ISO14443B_ReqB");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0500F0", "0534F1"}));
  }

  void closingThePanelDuringTheLoopEndsIt() {
    Fixture f;
    f.open();
    QTest::mouseClick(f.w<QCheckBox>("chkReqBWupBLoop"), Qt::LeftButton);
    QPointer<frmTL42RQ_ISO14443B_UI> panel = f.panel.release();
    int passes = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++passes == 2) QTimer::singleShot(0, [&] { panel->close(); });
      return liveReply(op);
    });
    QTest::mouseClick(uitest::find<QPushButton>(panel, "cmd_ISO14443B_WupB"), Qt::LeftButton);
    QCOMPARE(passes, 2);
    QVERIFY(!glob::state().iso14443bReqbLoop);
    QVERIFY(!glob::state().iso14443bWupbLoop);
    QTRY_VERIFY(panel.isNull());
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO14443B));
  }

  void closingTheMainWindowDuringTheLoopNeverCrashes() {
    Fixture f;
    shell::setProgramDirectory(TL42RQ_SOURCE_DIR "/data/");
    {
      MainForm form;
      form.setEndsProcessOnClose(false);
      form.load(false);
      form.show();
      form.openProduct("ISO14443-B");
      auto* panel = qobject_cast<frmTL42RQ_ISO14443B_UI*>(form.panel(glob::PanelId::ISO14443B));
      QVERIFY(panel);
      QCOMPARE(panel->windowTitle(), QString("ISO14443-B user interface : ISO14443-B"));
      QTest::mouseClick(uitest::find<QCheckBox>(panel, "chkReqBWupBLoop"), Qt::LeftButton);
      int passes = 0;
      f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
        if (op == Op::SendReceive && ++passes == 3) QTimer::singleShot(0, [&] { form.close(); });
        return liveReply(op);
      });
      uitest::find<QPushButton>(panel, "cmd_ISO14443B_ReqB")->click();
      QCOMPARE(passes, 3);
      QTRY_VERIFY(form.mdiArea()->subWindowList().isEmpty());
    }
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO14443B));
    QVERIFY(!glob::state().iso14443bReqbLoop);
  }

  void attribSendsTheFieldsAndCutsTheAnswer() {
    Fixture f;
    f.open();
    f.answers({kAtqb, "8004" "03" "C1D2" "00"});
    f.click("cmd_ISO14443B_ReqB");
    f.setText("txtAttriBrequest_CID", "03");
    f.click("cmd_ISO14443B_Attrib");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0500F0", "1D" "A1B2C3D4" "00" "07" "01" "03"}));
    QCOMPARE(f.caption("lblAttriBanswer_MBLI_CID"), QString("MBLI(4 bits) CID(4 bits) : 0 3"));
    QCOMPARE(f.caption("lblAttriBanswer_Crc"), QString("CRC : C1"));
    QVERIFY(f.log().ends_with(sendRecv("ATTRIB", "1DA1B2C3D400070103", "8004" "03" "C1D2" "00")));
  }

  void attribWithTheDefaultsAndNoAnswerShowsBareLabels() {
    Fixture f;
    f.open();
    f.answers({"8004" "03" "C1D2" "00", "8700"});
    f.click("cmd_ISO14443B_Attrib");
    f.click("cmd_ISO14443B_Attrib");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"1D0000000000070100", "1D0000000000070100"}));
    QCOMPARE(f.caption("lblAttriBanswer_MBLI_CID"), QString("MBLI(4 bits) CID(4 bits) : "));
    QCOMPARE(f.caption("lblAttriBanswer_Crc"), QString("CRC : "));
  }

  void sendAnyFrameSendsOddDigitsInRed() {
    Fixture f;
    f.open();
    auto* frame = f.w<FrameLineEdit>("txt_ISO14443B_AnyFrame");
    f.click("cmd_ISO14443B_SendFrame");  // empty: nothing is sent
    QVERIFY(sent(f.driver).empty());
    frame->setText("0500F");
    QVERIFY(!frame->showsNormalColour());
    QVERIFY(f.w("cmd_ISO14443B_SendFrame")->isEnabled());
    f.click("cmd_ISO14443B_SendFrame");
    frame->setText("0500F0");
    QVERIFY(frame->showsNormalColour());
    f.click("cmd_ISO14443B_SendFrame");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"0500F", "0500F0"}));
    QVERIFY(f.log().ends_with(sendRecv("SEND FRAME", "0500F0", "8700")));
  }

  void binaryBoxesTakeOnlyZeroAndOne() {
    Fixture f;
    f.open();
    auto* box = f.w<QLineEdit>("txt_ISO14443B_ReqB_SN_1");
    box->clear();
    QTest::keyClicks(box, "2");
    QCOMPARE(box->text(), QString());
    QCOMPARE(f.dialogs.beeps, 1);
    QTest::keyClicks(box, "1");
    QCOMPARE(box->text(), QString("1"));
    box->setText("");
    f.leave("txt_ISO14443B_ReqB_SN_1");
    QCOMPARE(box->text(), QString("0"));
    box->setText("3");  // pasted
    f.leave("txt_ISO14443B_ReqB_SN_1");
    QCOMPARE(box->text(), QString("1"));
  }

  void hexadecimalBoxesArePaddedOnLeaving() {
    Fixture f;
    f.open();
    f.setText("txt_iso14443B_reqB_afi", "7");
    f.leave("txt_iso14443B_reqB_afi");
    QCOMPARE(f.text("txt_iso14443B_reqB_afi"), QString("07"));
    f.setText("txtAttriBrequest_Pupi", "1a2b");
    f.leave("txtAttriBrequest_Pupi");
    QCOMPARE(f.text("txtAttriBrequest_Pupi"), QString("00001A2B"));
    f.setText("txtAttriBrequest_MaxFrameSize", "8");
    f.leave("txtAttriBrequest_MaxFrameSize");
    QCOMPARE(f.text("txtAttriBrequest_MaxFrameSize"), QString("08"));
    auto* afi = f.w<QLineEdit>("txt_iso14443B_reqB_afi");
    afi->clear();
    QTest::keyClicks(afi, "g");
    QCOMPARE(afi->text(), QString());
    QCOMPARE(f.dialogs.beeps, 1);
  }

  void reconnectSelectsAgainWithTheBlank() {
    Fixture f;
    f.open();
    int sendReceives = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++sendReceives == 1) return {5, ""};
      return liveReply(op);
    });
    f.click("cmd_ISO14443B_ReqB");
    std::vector<std::pair<Op, std::string>> calls;
    for (const auto& c : f.driver.calls()) calls.emplace_back(c.op, c.request);
    const std::vector<std::pair<Op, std::string>> expected{
        {Op::SendReceive, "0500F0"}, {Op::USBconnect, ""},           {Op::USBhandlecheck, ""},
        {Op::Select, "03010180"},    {Op::KQCmd, "01 090468010130"}, {Op::SendReceive, "0500F0"}};
    QCOMPARE(calls, expected);
  }
};

QTEST_MAIN(Iso14443BStandardPanelTest)
#include "Iso14443BStandardPanelTest.moc"
