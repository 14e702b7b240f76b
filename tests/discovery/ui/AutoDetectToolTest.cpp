// The auto-detection tool on a fake board: the pass with its exact trace, the four loop
// modes, the lamps and labels, Stop Loop, and closing the tool or the main window while
// its loop runs.
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTimer>

#include "DiscoveryUiSupport.h"
#include "discovery/ui/ShapeMark.h"
#include "discovery/ui/frmTL42RQ_AutoDetectTool_UI.h"
#include "discovery/ui/frmTL42RQ_TagDetection_UI.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"

using namespace discoverytest;

namespace {

struct Fixture {
  FakeBoard board;
  uitest::FixedTime time;
  ScriptedDialogs dialogs;
  QPointer<frmTL42RQ_AutoDetectTool_UI> panel;

  Fixture() {
    glob::state() = glob::GlobVariables();
    reader::setDriver(&board.driver);
    setDialogs(&dialogs);
    panel = new frmTL42RQ_AutoDetectTool_UI;
    panel->show();
  }
  ~Fixture() {
    delete panel.data();
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }
  void tick(std::initializer_list<int> boxes) {
    for (int i : boxes) click(panel, QString("chkTagDetSelectProtocols_%1").arg(i));
  }
  void mode(int option) { click(panel, QString("optLoopAutoDetectionTool_%1").arg(option)); }
  void start() { click(panel, "cmd_Auto_Detection_Process"); }
  std::string log() const { return panel->log().text(); }
  bool lamp(int i) const { return uitest::find<ShapeMark>(panel, QString("ShapTagDetected_%1").arg(i))->isVisibleTo(panel); }
  QString result() const { return text(panel, "lblTagDetection_result"); }
  QString detected() const { return text(panel, "lblTagDetected"); }
};

// The frames of one tag of each protocol.
void oneTagOfEachProtocol(FakeBoard& b) {
  b.frames["260100"] = kInventoryAnswer;
  b.frames["2607"] = tagAnswer("4400");
  b.frames["932008"] = tagAnswer("1A2B3C4D40");
  b.frames["93701A2B3C4D4028"] = tagAnswer("08");
  b.frames["0500F0"] = kReqbAnswer;
  b.frames["0600"] = tagAnswer("2C");
  b.frames["46"] = tagAnswer("2C");
  b.frames["00FFFF0000"] = kReqcAnswer;
}

}  // namespace

class AutoDetectToolTest : public QObject {
  Q_OBJECT
 private slots:
  void openingSendsNothingAndHidesStopLoopAndLamps() {
    Fixture f;
    QCOMPARE(f.panel->windowTitle(), QString("   Auto Detect Tool  user interface  "));
    QVERIFY(f.board.driver.calls().empty());
    QVERIFY(!uitest::find<QPushButton>(f.panel, "cmdStopLoop")->isVisibleTo(f.panel));
    QVERIFY(!f.lamp(0));
    QVERIFY(!f.lamp(1));
    QVERIFY(glob::panelOpen(glob::PanelId::AutoDetect));
    QVERIFY(uitest::find<QRadioButton>(f.panel, "optLoopAutoDetectionTool_0")->isChecked());
    QCOMPARE(uitest::find<QRadioButton>(f.panel, "optLoopAutoDetectionTool_3")->text(),
             QString("loop on all selected protocols until a tag is found, then loop on this tag only"));
    QCOMPARE(uitest::find<QCheckBox>(f.panel, "chkTagDetSelectProtocols_3")->text(), QString("iso14443-B (PDYxx)"));
    QCOMPARE(text(f.panel, "txt_ISO14443B_anticollision_result_1"), QString("1 : "));
    QCOMPARE(text(f.panel, "txt_ISO14443B_anticollision_result_15"), QString("15 : "));
    QVERIFY(uitest::find<QPlainTextEdit>(f.panel, "rtfAutoDetectLogEdit")->isReadOnly());
  }

  void nothingTickedShowsLampZeroAndNoDetectedTagThenTheControlsComeBack() {
    Fixture f;
    f.start();
    QVERIFY(f.board.driver.calls().empty());
    QVERIFY(f.lamp(0));
    QVERIFY(!f.lamp(1));
    QCOMPARE(f.detected(), QString("No Detected Tag"));
    QCOMPARE(labelColour(f.panel, "lblTagDetected"), QApplication::palette().color(QPalette::WindowText));
    QVERIFY(uitest::find<QPushButton>(f.panel, "cmd_Auto_Detection_Process")->isEnabled());
    QVERIFY(!uitest::find<QPushButton>(f.panel, "cmdStopLoop")->isVisibleTo(f.panel));
    QCOMPARE(f.log(), std::string());
  }

  void noLoopRunsOnePassWithItsExactTrace() {
    Fixture f;
    f.board.frames["260100"] = kInventoryAnswer;
    f.tick({0});
    f.start();
    QCOMPARE(f.log(), echo("5500") + rfOff() + iso15693Configuration() + sendRecv("INVENTORY", "260100", kInventoryAnswer));
    QCOMPARE(f.result(), QString("1 ISO15693 "));
    QCOMPARE(f.detected(), QString("Detected Tag"));
    QCOMPARE(labelColour(f.panel, "lblTagDetected"), QColor(0, 0, 255));
    QVERIFY(f.lamp(0));
    QVERIFY(f.lamp(1));
    QCOMPARE(text(f.panel, "txtISO15693DetectTags"), QString("UID = E0022A0012345678"));
    QCOMPARE(text(f.panel, "txt_AutoDetect_request"), QString("260100"));
    QCOMPARE(text(f.panel, "txt_AutoDetect_answer"), QString::fromStdString(kInventoryAnswer));
    QVERIFY(!glob::state().stopFlag);
  }

  void everyProtocolTickedNamesOneTagOfEach() {
    Fixture f;
    oneTagOfEachProtocol(f.board);
    f.tick({0, 1, 2, 3, 4});
    f.start();
    QCOMPARE(f.result(), QString("1 ISO15693 1 ISO14443-A 1 ISO14443-B 1 ISO14443-B 1 FELICA"));
    QCOMPARE(text(f.panel, "txtISO14443ADetectTags"), QString("2B3C4D40"));
    QCOMPARE(text(f.panel, "txt_ISO14443B_REQB_result"), QString("50A1B2C3D400000000008171"));
    QCOMPARE(text(f.panel, "txt_ISO14443B_anticollision_result_4"), QString("4 : Chip ID = 2C"));
    QCOMPARE(text(f.panel, "txtFelicaDetectTags"), QString("1201012E4CD2A3B4C5D60120220427674EFF"));
    // Each probe configured its protocol after the radio went off.
    const std::string log = f.log();
    QVERIFY(log.find(rfOff() + iso15693Configuration()) != std::string::npos);
    QVERIFY(log.find(iso14443AConfiguration()) != std::string::npos);
    QVERIFY(log.find(iso14443BConfiguration() + sendRecv("INITIATE", "0600", tagAnswer("2C"))) != std::string::npos);
    QVERIFY(log.find(felicaConfiguration() + sendRecv("REQC", "00FFFF0000", kReqcAnswer)) != std::string::npos);
    QCOMPARE(f.board.count(Op::Select, "0000"), 1);
  }

  void noTagInAPassClearsTheResultLabel() {
    Fixture f;
    f.tick({0, 4});
    f.start();
    QCOMPARE(f.result(), QString());
    QCOMPARE(f.detected(), QString("No Detected Tag"));
    QVERIFY(!f.lamp(1));
    QCOMPARE(f.board.sent(), (std::vector<std::string>{"260100", "00FFFF0000"}));
  }

  void badIso15693AnswerNamesNothing() {
    Fixture f;
    f.board.frames["260100"] = tagAnswer("0000" "7E5E3F56002A02E0", "03").replace(24, 4, "ABCD");
    f.tick({0});
    f.start();
    QCOMPARE(f.result(), QString());
    QCOMPARE(f.detected(), QString("No Detected Tag"));
    QVERIFY(f.log().find("   -> CRC HS (expected=") != std::string::npos);
  }

  void untilFoundStopsAfterTheFirstPassThatFindsATag() {
    Fixture f;
    int inventories = 0;
    f.board.onCall = [&](Op op, const std::string& request) {
      if (op == Op::SendReceive && request == "260100" && ++inventories == 3) f.board.frames["260100"] = kInventoryAnswer;
    };
    f.tick({0, 4});
    f.mode(2);
    f.start();
    QCOMPARE(inventories, 3);
    // All ticked protocols were probed in that pass.
    QCOMPARE(f.board.count(Op::SendReceive, "00FFFF0000"), 3);
    QCOMPARE(f.board.count(Op::Select, "0000"), 3);
    QCOMPARE(f.result(), QString("1 ISO15693 "));
    QCOMPARE(f.detected(), QString("Detected Tag"));
  }

  void followModeStaysOnTheFirstProtocolInIndexOrder() {
    Fixture f;
    oneTagOfEachProtocol(f.board);
    int inventories = 0;
    f.board.onCall = [&](Op op, const std::string& request) {
      if (op != Op::SendReceive || request != "260100") return;
      ++inventories;
      if (inventories == 2) f.board.frames.erase("260100");  // the followed tag leaves
      if (inventories == 4) f.panel->cmdStopLoop_Click();
    };
    f.tick({0, 1});
    f.mode(3);
    f.start();
    QCOMPARE(inventories, 4);
    // The first hit skipped ISO 14443-A; the passes after it probed ISO 15693 alone, also
    // once it had stopped answering.
    QCOMPARE(f.board.count(Op::SendReceive, "2607"), 0);
    QCOMPARE(f.result(), QString());
    QCOMPARE(f.detected(), QString("No Detected Tag"));
    QVERIFY(uitest::find<QPushButton>(f.panel, "cmd_Auto_Detection_Process")->isEnabled());
  }

  void followModeWithTwoPdyxxTagsStops() {
    Fixture f;
    f.board.frames["0600"] = tagAnswer("2C");
    f.board.frames["36"] = tagAnswer("31");
    f.board.frames["B6"] = tagAnswer("B2");
    f.tick({3});
    f.mode(3);
    f.start();
    QCOMPARE(f.board.count(Op::SendReceive, "0600"), 1);
    QCOMPARE(f.result(), QString("2 ISO14443-B "));
    QCOMPARE(text(f.panel, "txt_ISO14443B_anticollision_result_3"), QString("3 : Chip ID = 31"));
    QCOMPARE(text(f.panel, "txt_ISO14443B_anticollision_result_11"), QString("11 :Chip ID = B2"));
  }

  void stopLoopLetsThePassEndThenTheControlsComeBack() {
    Fixture f;
    bool stopHiddenAfterClick = false;
    f.board.onCall = [&](Op op, const std::string& request) {
      if (op == Op::SendReceive && request == "260100") {
        click(f.panel, "cmdStopLoop");
        stopHiddenAfterClick = !uitest::find<QPushButton>(f.panel, "cmdStopLoop")->isVisibleTo(f.panel);
      }
    };
    f.tick({0, 4});
    f.mode(1);
    f.start();
    QVERIFY(stopHiddenAfterClick);
    QCOMPARE(f.board.count(Op::SendReceive, "260100"), 1);
    QCOMPARE(f.board.count(Op::SendReceive, "00FFFF0000"), 1);  // the pass ran to its end
    QVERIFY(!glob::state().stopFlag);
    QVERIFY(uitest::find<QCheckBox>(f.panel, "chkTagDetSelectProtocols_0")->isEnabled());
  }

  void aRunDisablesItsControlsButNotTheAAndFelicaButtons() {
    Fixture f;
    std::map<QString, bool> enabled;
    bool stopShown = false;
    f.board.onCall = [&](Op op, const std::string&) {
      if (op != Op::SendReceive) return;
      for (const char* name : {"cmdISO14443B_AntiCollision", "cmdISO15693_AntiCollision", "cmd_Auto_Detection_Process",
                               "fraLoopAutoDetectionTool", "cmdSaveLog", "cmdClearLog", "chkTagDetSelectProtocols_2",
                               "cmdISO14443A_AntiCollision", "cmdFelica_AntiCollision"})
        enabled[name] = uitest::find<QWidget>(f.panel, name)->isEnabled();
      stopShown = uitest::find<QPushButton>(f.panel, "cmdStopLoop")->isVisibleTo(f.panel);
    };
    f.tick({0});
    f.start();
    QVERIFY(stopShown);
    for (const char* name : {"cmdISO14443B_AntiCollision", "cmdISO15693_AntiCollision", "cmd_Auto_Detection_Process",
                             "fraLoopAutoDetectionTool", "cmdSaveLog", "cmdClearLog", "chkTagDetSelectProtocols_2"})
      QVERIFY2(!enabled[name], name);
    QVERIFY(enabled["cmdISO14443A_AntiCollision"]);
    QVERIFY(enabled["cmdFelica_AntiCollision"]);
    QVERIFY(uitest::find<QWidget>(f.panel, "fraLoopAutoDetectionTool")->isEnabled());
  }

  void chipOutOfStepGetsASecondEcho() {
    Fixture f;
    f.board.driver.queue(Op::Echo, 0, "8200");
    f.tick({4});
    f.start();
    QCOMPARE(f.board.driver.callsOf(Op::Echo).size(), std::size_t(2));
    QVERIFY(f.log().rfind(echo("8200") + echo("5500") + rfOff(), 0) == 0);
  }

  void probeButtonsSendNoConfiguration() {
    Fixture f;
    click(f.panel, "cmdISO14443B_AntiCollision");
    std::vector<std::string> expected{"0600"};
    for (const char* s : {"16", "26", "36", "46", "56", "66", "76", "86", "96", "A6", "B6", "C6", "D6", "E6", "F6"})
      expected.push_back(s);
    expected.push_back("0500F0");
    QCOMPARE(f.board.sent(), expected);
    QVERIFY(f.board.driver.callsOf(Op::Select).empty());
    QVERIFY(f.board.driver.callsOf(Op::KQCmd).empty());
    f.board.driver.clearCalls();
    click(f.panel, "cmdFelica_AntiCollision");
    click(f.panel, "cmdISO14443A_AntiCollision");
    click(f.panel, "cmdISO15693_AntiCollision");
    QCOMPARE(f.board.sent(), (std::vector<std::string>{"00FFFF0000", "2607", "260100"}));
    QCOMPARE(uitest::find<QPushButton>(f.panel, "cmdISO15693_AntiCollision")->text(), QString("ISO15693 Inventory"));
  }

  void closingThePanelDuringTheLoopEndsIt() {
    Fixture f;
    int inventories = 0;
    f.board.onCall = [&](Op op, const std::string& request) {
      if (op == Op::SendReceive && request == "260100" && ++inventories == 3)
        QTimer::singleShot(0, [&] { f.panel->close(); });
    };
    f.tick({0});
    f.mode(1);
    f.start();
    QCOMPARE(inventories, 3);
    QTRY_VERIFY(f.panel.isNull());
    QVERIFY(!glob::panelOpen(glob::PanelId::AutoDetect));
  }

  void closingTheMainWindowDuringTheLoopNeverCrashes() {
    FakeBoard board;
    uitest::FixedTime time;
    glob::state() = glob::GlobVariables();
    reader::setDriver(&board.driver);
    {
      MainForm form;
      form.setEndsProcessOnClose(false);
      form.load(false);
      form.show();
      auto* panel = qobject_cast<frmTL42RQ_AutoDetectTool_UI*>(form.openPanel(glob::PanelId::AutoDetect));
      QVERIFY(panel);
      int inventories = 0;
      board.onCall = [&](Op op, const std::string& request) {
        if (op == Op::SendReceive && request == "260100" && ++inventories == 5) QTimer::singleShot(0, [&] { form.close(); });
      };
      click(panel, "chkTagDetSelectProtocols_0");
      click(panel, "optLoopAutoDetectionTool_1");
      click(panel, "cmd_Auto_Detection_Process");
      QCOMPARE(inventories, 5);
      QTRY_VERIFY(form.mdiArea()->subWindowList().isEmpty());
    }
    QVERIFY(!glob::panelOpen(glob::PanelId::AutoDetect));
    reader::setDriver(nullptr);
  }

  void openingTheTagDetectionToolWhileTheLoopRunsClosesTheAutoDetectTool() {
    FakeBoard board;
    uitest::FixedTime time;
    glob::state() = glob::GlobVariables();
    reader::setDriver(&board.driver);
    {
      MainForm form;
      form.setEndsProcessOnClose(false);
      form.load(false);
      form.show();
      QPointer<Panel> autoDetect = form.openPanel(glob::PanelId::AutoDetect);
      QVERIFY(autoDetect);
      int inventories = 0;
      board.onCall = [&](Op op, const std::string& request) {
        if (op == Op::SendReceive && request == "260100" && ++inventories == 2)
          QTimer::singleShot(0, [&] { uitest::find<QAction>(&form, "mnuShowTagDetectionTool")->trigger(); });
      };
      click(autoDetect, "chkTagDetSelectProtocols_0");
      click(autoDetect, "chkTagDetSelectProtocols_4");
      click(autoDetect, "optLoopAutoDetectionTool_1");
      click(autoDetect, "cmd_Auto_Detection_Process");
      // The pass under way ended, then the loop stopped at its check.
      QCOMPARE(inventories, 2);
      QCOMPARE(board.count(Op::SendReceive, "00FFFF0000"), 2);
      QTRY_VERIFY(autoDetect.isNull());
      QVERIFY(!glob::panelOpen(glob::PanelId::AutoDetect));
      QVERIFY(form.panel(glob::PanelId::TagDetection));
      QVERIFY(glob::panelOpen(glob::PanelId::TagDetection));
      form.close();
    }
    reader::setDriver(nullptr);
  }
};

QTEST_MAIN(AutoDetectToolTest)
#include "AutoDetectToolTest.moc"
