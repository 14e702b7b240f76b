// The script tool's window and its help, driven through their controls against a fake
// driver: loading and saving files, launching with and without the loop, the count-down,
// the loop switch during a run, and closing the panel or the main window mid-run.
#include <QAction>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QtTest>

#include "reader/Drivers.h"
#include "script/ui/frmScriptHelp.h"
#include "script/ui/frmTL42RQ_Script.h"
#include "shell/GlobVariables.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "support/UiTestSupport.h"

using reader::FakeDriver;
using reader::Op;
using uitest::find;

namespace {

const std::string T = "\r\n11-21-2026 10:20:30";

std::string entry(const std::string& what, const std::string& answer) {
  return T + "\t>>> " + what + "\r\n\t\t\t<<< " + answer;
}

// A board with a tag-less field: echo, select and an empty Send Receive.
void quietBoard(FakeDriver& d) {
  d.setHandler([](Op op, const std::string&) -> FakeDriver::Reply {
    switch (op) {
      case Op::Echo: return {0, "5500"};
      case Op::Select: return {0, "0000"};
      case Op::SendReceive: return {0, "8700"};
      default: return {0, ""};
    }
  });
}

QPushButton* buttonOf(QWidget* p, const char* name) { return find<QPushButton>(p, name); }
void click(QWidget* p, const char* name) { QTest::mouseClick(buttonOf(p, name), Qt::LeftButton); }

}  // namespace

class ScriptWindow : public QObject {
  Q_OBJECT
  ScriptedDialogs dialogs_;
  QTemporaryDir dir_;

  QString writeFile(const QString& name, const QByteArray& bytes) {
    const QString path = QDir(dir_.path()).filePath(name);
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) qFatal("cannot write %s", qPrintable(path));
    f.write(bytes);
    return path;
  }
  QByteArray readFile(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return "<unreadable>";
    return f.readAll();
  }
  void load(frmTL42RQ_Script& p, const QString& path) {
    dialogs_.fileAnswers.push_back(path);
    click(&p, "cmdScriptLoad");
  }
  void loop(frmTL42RQ_Script& p, const QString& number) {
    auto* chk = find<QCheckBox>(&p, "chkLoopOnScript");
    if (!chk->isChecked()) QTest::mouseClick(chk, Qt::LeftButton);
    find<QLineEdit>(&p, "txtLOOPnumber")->setText(number);
  }

 private slots:
  void init() {
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
    glob::state() = glob::GlobVariables();
    shell::setProgramDirectory(dir_.path().toStdString() + "/");
  }
  void cleanup() {
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }

  void panelHasItsControlsCaptionsAndTitle() {
    glob::state().scriptChipId = "3D";
    glob::state().scriptLoop = true;
    frmTL42RQ_Script p;
    QCOMPARE(p.objectName(), QString("frmTL42RQ_Script"));
    QCOMPARE(p.windowTitle(), QString("   TL42RQ script tool"));
    QCOMPARE(buttonOf(&p, "cmdScriptLoad")->text(), QString("Load Script"));
    QCOMPARE(buttonOf(&p, "cmdScriptSave")->text(), QString("Save Script"));
    QCOMPARE(buttonOf(&p, "cmdLaunchScript")->text(), QString("Launch Script"));
    QCOMPARE(buttonOf(&p, "cmdEraseLogScript")->text(), QString("Clear Log"));
    QCOMPARE(buttonOf(&p, "cmdSaveScriptLog")->text(), QString("Save Log"));
    QCOMPARE(find<QCheckBox>(&p, "chkLoopOnScript")->text(), QString("LOOP ON SCRIPT"));
    QCOMPARE(find<QLineEdit>(&p, "txtLOOPnumber")->toolTip(), QString("enter the number of LOOP"));
    QCOMPARE(find<QLabel>(&p, "lblLOOPnumber")->text(), QString("0 for infinty loop"));
    QVERIFY(find<QLineEdit>(&p, "txtLOOPnumber")->isHidden());
    QVERIFY(find<QLabel>(&p, "lblLOOPnumber")->isHidden());
    QVERIFY(find<QLabel>(&p, "lblLoopCount")->isHidden());
    QVERIFY(find<QPlainTextEdit>(&p, "rtfScriptLogEdit")->isReadOnly());
    QVERIFY(!find<QPlainTextEdit>(&p, "rtfScriptLoadFileEdit")->isReadOnly());
    // Opening resets the loop flag and the saved Chip_Id; the file dialog gets the
    // program's directory and its flags.
    QCOMPARE(glob::state().scriptChipId, std::string("00"));
    QVERIFY(!glob::state().scriptLoop);
    QCOMPARE(p.fileDialog().initDir, dir_.path().toStdString() + "/");
    QCOMPARE(p.fileDialog().flags, 0x20180Eu);
    QVERIFY(glob::panelOpen(glob::PanelId::Script));
  }

  void panelSendsNothingWhenItOpens() {
    FakeDriver d;
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    p.show();
    QCoreApplication::processEvents();
    QVERIFY(d.calls().empty());
  }

  void loopSwitchShowsAndHidesTheNumberAndSetsTheFlag() {
    frmTL42RQ_Script p;
    p.show();
    auto* chk = find<QCheckBox>(&p, "chkLoopOnScript");
    QTest::mouseClick(chk, Qt::LeftButton);
    QVERIFY(glob::state().scriptLoop);
    QVERIFY(!find<QLineEdit>(&p, "txtLOOPnumber")->isHidden());
    QVERIFY(!find<QLabel>(&p, "lblLOOPnumber")->isHidden());
    QTest::mouseClick(chk, Qt::LeftButton);
    QVERIFY(!glob::state().scriptLoop);
    QVERIFY(find<QLineEdit>(&p, "txtLOOPnumber")->isHidden());
    QVERIFY(find<QLabel>(&p, "lblLOOPnumber")->isHidden());
  }

  void loadOfCrLfFileKeepsCrCrLfAndShowsEachLineOnce() {
    glob::state().lastDirectory = dir_.path().toStdString() + "/";
    const QString path = writeFile("crlf.txt", "REM, one\r\nTL42RQDLL_ECHO\r\n\r\nWAIT, 5");
    frmTL42RQ_Script p;
    load(p, " " + path + " ");
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t(1));
    QVERIFY(!dialogs_.fileRequests[0].save);
    QCOMPARE(dialogs_.fileRequests[0].filter, QString("Text File (*.txt)|*.txt|"));
    QCOMPARE(dialogs_.fileRequests[0].directory, dir_.path() + "/");
    QCOMPARE(p.scriptText(), std::string("REM, one\r\r\nTL42RQDLL_ECHO\r\r\n\r\r\nWAIT, 5"));
    QCOMPARE(find<QPlainTextEdit>(&p, "rtfScriptLoadFileEdit")->toPlainText(),
             QString("REM, one\nTL42RQDLL_ECHO\n\nWAIT, 5"));
  }

  void loadStartsInTheProgramDirectoryWithoutALastUsedOne() {
    frmTL42RQ_Script p;
    click(&p, "cmdScriptLoad");
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t(1));
    QCOMPARE(dialogs_.fileRequests[0].directory, dir_.path() + "/");
  }

  void loadKeepsTheDirectoryInTheUsageFile() {
    QDir(dir_.path()).mkpath("scripts");
    const QString usage = writeFile("usageTL42RQsoftware.dat", "\"\",\"123\"\r\n");
    glob::state().backgroundColor = "123";
    const QString path = writeFile("scripts/s.txt", "TL42RQDLL_ECHO");
    frmTL42RQ_Script p;
    load(p, path);
    QCOMPARE(glob::state().lastDirectory, dir_.path().toStdString() + "/scripts/");
    QCOMPARE(readFile(usage).toStdString(), "\"" + dir_.path().toStdString() + "/scripts/\",\"123\"\r\n");
  }

  void cancelledEmptyOrMissingFileLeavesTheViewAsItWas() {
    frmTL42RQ_Script p;
    p.setScriptText("TL42RQDLL_IDN");
    click(&p, "cmdScriptLoad");  // cancelled
    load(p, writeFile("empty.txt", ""));
    load(p, QDir(dir_.path()).filePath("missing.txt"));
    QCOMPARE(p.scriptText(), std::string("TL42RQDLL_IDN"));
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t(3));
  }

  void saveWritesBackTheOriginalBytes() {
    const QByteArray original = "REM, save me\r\nTL42RQDLL_ECHO\r\n\r\n  tl42rqdll_select , 0201\r\nWAIT, 10";
    frmTL42RQ_Script p;
    load(p, writeFile("in.txt", original));
    const QString out = QDir(dir_.path()).filePath("out.txt");
    dialogs_.fileAnswers.push_back(out);
    click(&p, "cmdScriptSave");
    QCOMPARE(dialogs_.fileRequests.back().filter, QString("txt File (*.txt)|*.txt"));
    QVERIFY(dialogs_.fileRequests.back().save);
    QCOMPARE(readFile(out), original);
    // The view's text was put back without the doubled carriage returns.
    QCOMPARE(p.scriptText(), original.toStdString());
  }

  void saveWithAnEmptyViewOpensNoDialog() {
    frmTL42RQ_Script p;
    click(&p, "cmdScriptSave");
    QVERIFY(dialogs_.fileRequests.empty());
  }

  void typedScriptRunsWithCrLfLines() {
    uitest::FixedTime time;
    FakeDriver d;
    quietBoard(d);
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    p.show();
    auto* view = find<QPlainTextEdit>(&p, "rtfScriptLoadFileEdit");
    view->setFocus();
    QTest::keyClicks(view, "tl42rqdll_echo");
    QTest::keyClick(view, Qt::Key_Return);
    QTest::keyClick(view, Qt::Key_Return);
    QTest::keyClicks(view, "REM, typed");
    QCOMPARE(p.scriptText(), std::string("tl42rqdll_echo\r\n\r\nREM, typed"));
    click(&p, "cmdLaunchScript");
    QCOMPARE(p.log().text(), entry("TL42RQDLL_ECHO", "5500") + "\r\n" + T + "\tREM,  typed");
  }

  void launchWithEmptyViewDoesNothing() {
    FakeDriver d;
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    click(&p, "cmdLaunchScript");
    QVERIFY(d.calls().empty());
    QVERIFY(p.log().empty());
    QVERIFY(buttonOf(&p, "cmdLaunchScript")->isEnabled());
  }

  void launchOnceHidesTheCountAndUnlocksAfterwards() {
    uitest::FixedTime time;
    FakeDriver d;
    bool lockedDuringRun = false;
    frmTL42RQ_Script* panel = nullptr;
    d.setHandler([&](Op, const std::string&) -> FakeDriver::Reply {
      lockedDuringRun = !buttonOf(panel, "cmdScriptLoad")->isEnabled() &&
                        !buttonOf(panel, "cmdScriptSave")->isEnabled() &&
                        !buttonOf(panel, "cmdLaunchScript")->isEnabled() &&
                        find<QPlainTextEdit>(panel, "rtfScriptLoadFileEdit")->isReadOnly();
      return {0, "5500"};
    });
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    panel = &p;
    p.show();
    load(p, writeFile("once.txt", "TL42RQDLL_ECHO\n"));
    click(&p, "cmdLaunchScript");
    QVERIFY(lockedDuringRun);
    QCOMPARE(p.log().text(), entry("TL42RQDLL_ECHO", "5500"));
    QCOMPARE(find<QPlainTextEdit>(&p, "rtfScriptLogEdit")->toPlainText(),
             QString::fromStdString(entry("TL42RQDLL_ECHO", "5500")).remove('\r'));
    QVERIFY(find<QLabel>(&p, "lblLoopCount")->isHidden());
    QVERIFY(buttonOf(&p, "cmdScriptLoad")->isEnabled());
    QVERIFY(buttonOf(&p, "cmdScriptSave")->isEnabled());
    QVERIFY(buttonOf(&p, "cmdLaunchScript")->isEnabled());
    QVERIFY(!find<QPlainTextEdit>(&p, "rtfScriptLoadFileEdit")->isReadOnly());
  }

  void loopOfThreeCountsDownInViewAndEndsWithCountTwo() {
    uitest::FixedTime time;
    FakeDriver d;
    quietBoard(d);
    frmTL42RQ_Script* panel = nullptr;
    QStringList seen;  // number box and counter at each echo
    d.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::Echo) {
        seen << find<QLineEdit>(panel, "txtLOOPnumber")->text() + "/" + find<QLabel>(panel, "lblLoopCount")->text();
        return {0, "5500"};
      }
      return {0, op == Op::Select ? "0000" : "8700"};
    });
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    panel = &p;
    p.show();
    load(p, writeFile("loop.txt", "REM, pass\r\nTL42RQDLL_ECHO\r\n\r\ntl42rqdll_select, 0201\r\nTL42RQDLL_SENDRECV,2607"));
    loop(p, "3");
    click(&p, "cmdLaunchScript");
    QCOMPARE(seen, (QStringList{"3/0", "2/1", "1/2"}));
    const std::string pass = T + "\tREM,  pass" + entry("TL42RQDLL_ECHO", "5500");
    const std::string tail = entry("TL42RQDLL_SELECT, 0201", "0000") + entry("TL42RQDLL_SENDRECEIVE, 2607", "8700");
    // The empty line is logged in the first pass only: later passes see cleaned lines.
    QCOMPARE(p.log().text(), pass + "\r\n" + tail + pass + tail + pass + tail);
    QCOMPARE(find<QLabel>(&p, "lblLoopCount")->text(), QString("2"));
    QVERIFY(!find<QLabel>(&p, "lblLoopCount")->isHidden());
    QCOMPARE(find<QLineEdit>(&p, "txtLOOPnumber")->text(), QString("0"));
    QVERIFY(find<QLineEdit>(&p, "txtLOOPnumber")->isHidden());
    QVERIFY(find<QLabel>(&p, "lblLOOPnumber")->isHidden());
    QVERIFY(!find<QCheckBox>(&p, "chkLoopOnScript")->isChecked());
    QVERIFY(!glob::state().scriptLoop);
  }

  void loopOfOneRunsOnceWithCountZero() {
    FakeDriver d;
    quietBoard(d);
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    p.show();
    p.setScriptText("TL42RQDLL_ECHO");
    loop(p, "1");
    click(&p, "cmdLaunchScript");
    QCOMPARE(d.calls().size(), std::size_t(1));
    QCOMPARE(find<QLabel>(&p, "lblLoopCount")->text(), QString("0"));
    QCOMPARE(find<QLineEdit>(&p, "txtLOOPnumber")->text(), QString("0"));
  }

  void switchingTheLoopOffEndsAnEndlessLoopAfterThePass() {
    FakeDriver d;
    frmTL42RQ_Script* panel = nullptr;
    int echoes = 0;
    d.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::Echo && ++echoes == 4) QTest::mouseClick(find<QCheckBox>(panel, "chkLoopOnScript"), Qt::LeftButton);
      return {0, "5500"};
    });
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    panel = &p;
    p.show();
    p.setScriptText("TL42RQDLL_ECHO\r\nTL42RQDLL_IDN");
    loop(p, "0");
    click(&p, "cmdLaunchScript");
    QCOMPARE(echoes, 4);
    QCOMPARE(d.callsOf(Op::Idn).size(), std::size_t(4));  // the fourth pass ran to its end
    QCOMPARE(find<QLabel>(&p, "lblLoopCount")->text(), QString("3"));
    QVERIFY(find<QLineEdit>(&p, "txtLOOPnumber")->isHidden());
  }

  void errorEndsTheLoopAndKeepsTheFlag() {
    uitest::FixedTime time;
    FakeDriver d;
    quietBoard(d);
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    p.show();
    p.setScriptText("TL42RQDLL_ECHO\r\nTL42RQDLL_ECHO, 12");
    loop(p, "10");
    click(&p, "cmdLaunchScript");
    QCOMPARE(p.log().text(), entry("TL42RQDLL_ECHO", "5500") + T + "\t>>> TL42RQDLL_ECHO,12\r\n\t\t\t" +
                                 "!!! Script Error : Too much Data parameters !!! ");
    QCOMPARE(find<QLineEdit>(&p, "txtLOOPnumber")->text(), QString("10"));
    QCOMPARE(find<QLabel>(&p, "lblLoopCount")->text(), QString("0"));
    QVERIFY(glob::state().scriptLoop);
    QVERIFY(find<QCheckBox>(&p, "chkLoopOnScript")->isChecked());
    QVERIFY(buttonOf(&p, "cmdLaunchScript")->isEnabled());
  }

  void clearLogDuringARunKeepsOnlyLaterEntries() {
    uitest::FixedTime time;
    FakeDriver d;
    frmTL42RQ_Script* panel = nullptr;
    d.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::Idn) click(panel, "cmdEraseLogScript");
      return {0, op == Op::Idn ? "000F" : "5500"};
    });
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    panel = &p;
    p.show();
    p.setScriptText("TL42RQDLL_ECHO\r\nTL42RQDLL_IDN\r\nTL42RQDLL_ECHO");
    click(&p, "cmdLaunchScript");
    QCOMPARE(p.log().text(), entry("TL42RQDLL_IDN", "000F") + entry("TL42RQDLL_ECHO", "5500"));
  }

  void saveLogWritesTheTrace() {
    uitest::FixedTime time;
    FakeDriver d;
    quietBoard(d);
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    p.setScriptText("TL42RQDLL_ECHO");
    click(&p, "cmdSaveScriptLog");
    QVERIFY(dialogs_.fileRequests.empty());  // nothing logged yet: no dialog
    click(&p, "cmdLaunchScript");
    const QString out = QDir(dir_.path()).filePath("trace.txt");
    dialogs_.fileAnswers.push_back(out);
    click(&p, "cmdSaveScriptLog");
    QCOMPARE(readFile(out).toStdString(), entry("TL42RQDLL_ECHO", "5500"));
  }

  void closingThePanelDuringAnEndlessLoopEndsItAfterThePass() {
    FakeDriver d;
    quietBoard(d);
    reader::setDriver(&d);
    MainForm form;
    form.setEndsProcessOnClose(false);
    form.load(false);
    form.show();
    auto* p = qobject_cast<frmTL42RQ_Script*>(form.openPanel(glob::PanelId::Script));
    QVERIFY(p);
    QPointer<frmTL42RQ_Script> watch(p);
    p->setScriptText("TL42RQDLL_ECHO\r\nWAIT, 50\r\nTL42RQDLL_IDN");
    loop(*p, "0");
    auto* sub = qobject_cast<QMdiSubWindow*>(p->parentWidget());
    QVERIFY(sub);
    QTimer::singleShot(20, sub, [sub] { sub->close(); });
    click(p, "cmdLaunchScript");
    // The handler has returned: the pass in which the panel closed ran to its end.
    QVERIFY(!glob::state().scriptLoop);
    QVERIFY(!glob::panelOpen(glob::PanelId::Script));
    QCOMPARE(d.callsOf(Op::Echo).size(), d.callsOf(Op::Idn).size());
    QTRY_VERIFY(watch.isNull());
    QVERIFY(form.panel(glob::PanelId::Script) == nullptr);
  }

  void closingTheMainWindowDuringAnEndlessLoopDoesNotCrash() {
    FakeDriver d;
    quietBoard(d);
    reader::setDriver(&d);
    MainForm form;
    form.setEndsProcessOnClose(false);
    form.load(false);
    form.show();
    auto* p = qobject_cast<frmTL42RQ_Script*>(form.openPanel(glob::PanelId::Script));
    QVERIFY(p);
    QPointer<frmTL42RQ_Script> watch(p);
    p->setScriptText("TL42RQDLL_ECHO\r\nWAIT, 50\r\nTL42RQ_ISO14443-A_ANTICOLSELECT123");
    loop(*p, "0");
    QTimer::singleShot(20, &form, [&form] { form.close(); });
    click(p, "cmdLaunchScript");
    QVERIFY(!glob::state().scriptLoop);
    QVERIFY(d.callsOf(Op::Echo).size() >= 1);
    QTRY_VERIFY(watch.isNull());
  }

  void menusOpenTheToolAndItsHelp() {
    MainForm form;
    form.setEndsProcessOnClose(false);
    form.load(false);
    form.enableTopMenus(true);
    find<QAction>(&form, "mnuShowScriptTool")->trigger();
    Panel* tool = form.panel(glob::PanelId::Script);
    QVERIFY(tool);
    QCOMPARE(tool->objectName(), QString("frmTL42RQ_Script"));
    QCOMPARE(qobject_cast<QMdiSubWindow*>(tool->parentWidget())->windowTitle(), QString("   TL42RQ script tool"));
    find<QAction>(&form, "mnuScriptHelp")->trigger();
    Panel* help = form.panel(glob::PanelId::ScriptHelp);
    QVERIFY(help);
    QCOMPARE(help->objectName(), QString("frmScriptHelp"));
    QCOMPARE(qobject_cast<QMdiSubWindow*>(help->parentWidget())->windowTitle(), QString("   Script Help"));
  }

  void helpShowsItsThreeGroupsForANewLibrary() {
    glob::state().dllRevision = 5;
    frmScriptHelp h;
    QCOMPARE(h.windowTitle(), QString("   Script Help"));
    QCOMPARE(find<QGroupBox>(&h, "fraAvailableCommands")->title(), QString("Available commands on Script tool "));
    QCOMPARE(find<QGroupBox>(&h, "fraCustomCommands")->title(), QString("Custom commands on Script tool "));
    QCOMPARE(find<QGroupBox>(&h, "fraScriptExample")->title(), QString(" Script example"));
    QCOMPARE(find<QLabel>(&h, "lblHelp_0")->text(), QString("Comment :                                   REM, note"));
    QCOMPARE(find<QLabel>(&h, "lblHelp_18")->text(),
             QString("DEMO-TL42RQ-A USB Connect :                 TL42RQDLL_USB_CONNECT"));
    QCOMPARE(find<QLabel>(&h, "lblHelp_10")->text(), QString("by default, Chip_Id_data = 0x00"));
    QCOMPARE(find<QLabel>(&h, "lblHelp_21")->text(),
             QString("Anticolision  ISO14443-A :                  TL42RQ_ISO14443-A_AnticolSelect123"));
    for (int row : {16, 17, 18}) QVERIFY(!find<QLabel>(&h, QString("lblHelp_%1").arg(row))->isHidden());
    QCOMPARE(find<QLabel>(&h, "lblExample_0")->text(), QString("REM, send ECHO request"));
    QCOMPARE(find<QLabel>(&h, "lblExample_1")->text(), QString("TL42RQDLL_ECHO"));
    QCOMPARE(find<QLabel>(&h, "lblExample_2")->text(), QString("REM, send IDN request with KQCMD request"));
    QCOMPARE(find<QLabel>(&h, "lblExample_3")->text(), QString("TL42RQDLL_KQCMD, 010100"));
    // The data note closes the first group.
    auto* layout = find<QGroupBox>(&h, "fraAvailableCommands")->layout();
    QCOMPARE(layout->itemAt(layout->count() - 1)->widget()->objectName(), QString("lblHelp_8"));
  }

  void helpHidesRows16To18ForOlderLibrariesAndTheGroupShrinks() {
    glob::state().dllRevision = 5;
    frmScriptHelp newer;
    newer.show();
    glob::state().dllRevision = 4;
    frmScriptHelp older;
    older.show();
    QCoreApplication::processEvents();
    for (int row : {16, 17, 18}) QVERIFY(find<QLabel>(&older, QString("lblHelp_%1").arg(row))->isHidden());
    for (int row : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15})
      QVERIFY(!find<QLabel>(&older, QString("lblHelp_%1").arg(row))->isHidden());
    auto* olderGroup = find<QGroupBox>(&older, "fraAvailableCommands");
    auto* newerGroup = find<QGroupBox>(&newer, "fraAvailableCommands");
    QVERIFY(olderGroup->sizeHint().height() < newerGroup->sizeHint().height());
    // Row 8 moves up: it now follows row 15 directly.
    QVERIFY(find<QLabel>(&older, "lblHelp_8")->geometry().top() <
            find<QLabel>(&newer, "lblHelp_8")->geometry().top());
  }
};

QTEST_MAIN(ScriptWindow)
#include "script_window.moc"
