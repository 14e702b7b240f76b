// The script tool on the real simulated board, and the same scripts through the window
// and through tl42rq-script: the two logs must be the same bytes.
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

#include "reader/Drivers.h"
#include "script/ui/frmTL42RQ_Script.h"
#include "shell/GlobVariables.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "support/UiTestSupport.h"

using uitest::find;

namespace {

const std::string T = "\r\n11-21-2026 10:20:30";

std::string entry(const std::string& what, const std::string& answer) {
  return T + "\t>>> " + what + "\r\n\t\t\t<<< " + answer;
}
std::string titled(const std::string& title, const std::string& frame, const std::string& answer) {
  return T + "\t" + title + "\r\n\t\t\t>>> TL42RQDLL_SENDRECV, " + frame + "\r\n\t\t\t<<< " + answer;
}

// A board in front of an empty field: nothing answers an RF frame.
constexpr const char* kEmptyField =
    "{ \"board\": { \"present\": true, \"dllRevision\": \"0.5.0\", \"mcuRevision\": [1, 4, 1],"
    " \"chipName\": \"NFC TL42RQ\", \"interfacePin\": 1 }, \"antenna\": { \"detectLevel\": 31 }, \"tags\": [] }";

struct Run {
  int exitCode = -1;
  QByteArray out;
  QByteArray err;
};

// The scripts of the edge cases that a real board can answer, each run both ways.
struct Case {
  const char* name;
  QByteArray file;
  QString loop;  // empty: no loop
  int exitCode;
};

const std::vector<Case>& cases() {
  static const std::vector<Case> all{
      {"blank lines only", "\n\n\n", "", 0},
      {"blank lines only CR LF", "\r\n\r\n\r\n", "", 0},
      {"blanks only", "TL42RQDLL_ECHO\r\n  \t \r\nTL42RQDLL_ECHO", "", 0},
      {"REM word", "REM hello\r\nTL42RQDLL_ECHO", "", 1},
      {"lower-case comment", "rem, Send the Echo\nTL42RQDLL_ECHO\n", "", 0},
      {"loop 1", "REM, once\r\nTL42RQDLL_ECHO", "1", 0},
      {"loop 3", "REM, three\r\nTL42RQDLL_ECHO\r\n\r\nTL42RQDLL_SELECT, 02000180", "3", 0},
      {"WAIT 12A", "WAIT, 12A", "", 1},
      {"WAIT 12345678", "WAIT, 12345678", "", 1},
      {"WAIT 0", "WAIT, 0\r\nTL42RQDLL_ECHO", "", 0},
      {"SELECT without comma", "TL42RQDLL_SELECT", "", 1},
      {"SELECT with two arguments", "TL42RQDLL_SELECT, 02, 00", "", 1},
      {"KQCMD 0301", "TL42RQDLL_KQCMD, 0301", "", 1},
      {"KQCMD 010100", "TL42RQDLL_KQCMD, 010100", "", 0},
      {"ECHO with an argument", "TL42RQDLL_ECHO, 55", "", 1},
      {"lower-case keyword", "tl42rqdll_echo\ntl42rqdll_idn", "", 0},
      {"PDYXX_SELECT before initiate", "TL42RQDLL_SELECT, 0301\nTL42RQ_PDYXX_SELECT", "", 0},
      {"anticollision without tag", "TL42RQDLL_SELECT, 02000180\nTL42RQ_ISO14443-A_ANTICOLSELECT123\nTL42RQDLL_ECHO",
       "", 0},
      {"pin state ends the script", "TL42RQDLL_GET_INTERFACE_PIN_STATE\nTL42RQDLL_ECHO", "", 1},
      {"every plain keyword",
       "TL42RQDLL_USB_CONNECT\nTL42RQDLL_USB_HANDLE_CHECK\nTL42RQDLL_GETDLLREV\nTL42RQDLL_MCUREV\n"
       "TL42RQDLL_FIELDOFF\nTL42RQDLL_RESET_SPI\nTL42RQDLL_PULSE_IRQ_IN\nTL42RQDLL_NSS_PULSE\n"
       "TL42RQDLL_POLLING_READING\n",
       "", 0},
  };
  return all;
}

}  // namespace

class ScriptOnBoard : public QObject {
  Q_OBJECT
  ScriptedDialogs dialogs_;
  QTemporaryDir dir_;
  std::unique_ptr<uitest::SimulatedBoard> board_;
  QString field_;

  QString writeFile(const QString& name, const QByteArray& bytes) {
    const QString path = QDir(dir_.path()).filePath(name);
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) qFatal("cannot write %s", qPrintable(path));
    f.write(bytes);
    return path;
  }

  // The window's log of one run from a fresh board, as a person would do it.
  std::string panelLog(const QString& path, const QString& loopNumber, frmTL42RQ_Script& p) {
    board_->reset();
    p.show();
    dialogs_.fileAnswers.push_back(path);
    QTest::mouseClick(find<QPushButton>(&p, "cmdScriptLoad"), Qt::LeftButton);
    if (!loopNumber.isEmpty()) {
      QTest::mouseClick(find<QCheckBox>(&p, "chkLoopOnScript"), Qt::LeftButton);
      find<QLineEdit>(&p, "txtLOOPnumber")->setText(loopNumber);
    }
    QTest::mouseClick(find<QPushButton>(&p, "cmdLaunchScript"), Qt::LeftButton);
    return p.log().text();
  }

  Run runner(const QStringList& args, const QString& driver = QString(SIM_LIBRARY)) {
    QProcess proc;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("TL42RQ_TRACE_TIME", "11-21-2026 10:20:30");
    env.insert("TL42RQ_FIELD", field_);
    env.insert("TL42RQ_DRIVER", driver);
    proc.setProcessEnvironment(env);
    proc.start(QCoreApplication::applicationDirPath() + "/tl42rq-script", args);
    Run r;
    if (!proc.waitForFinished(120000)) return r;
    r.exitCode = proc.exitStatus() == QProcess::NormalExit ? proc.exitCode() : -2;
    r.out = proc.readAllStandardOutput();
    r.err = proc.readAllStandardError();
    return r;
  }

 private slots:
  void initTestCase() {
    QVERIFY(QFileInfo::exists(QCoreApplication::applicationDirPath() + "/tl42rq-script"));
    field_ = writeFile("empty_field.json", kEmptyField);
    board_ = std::make_unique<uitest::SimulatedBoard>();
    QVERIFY(board_->loaded());
  }
  void init() {
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
    glob::state() = glob::GlobVariables();
    shell::setProgramDirectory(dir_.path().toStdString() + "/");
    reader::setDriver(&board_->driver());
    QCOMPARE(board_->loadField(field_.toStdString()), 0);
    QCOMPARE(board_->setBoardPresent(true), 0);
    board_->reset();
  }
  void cleanup() { setDialogs(nullptr); }
  void cleanupTestCase() { board_.reset(); }

  void crLfScriptLoopedThreeTimesOnTheSimulatedBoard() {
    uitest::FixedTime time;
    const QByteArray original =
        "REM, Quiet field\r\n"
        "TL42RQDLL_ECHO\r\n"
        "\r\n"
        "tl42rqdll_select, 02000180\r\n"
        "TL42RQDLL_SENDRECV, 2607\r\n"
        "TL42RQ_ISO14443-A_ANTICOLSELECT123";
    const QString path = writeFile("bench.txt", original);
    frmTL42RQ_Script p;
    const std::string log = panelLog(path, "3", p);

    const std::string head = T + "\tREM,  Quiet field" + entry("TL42RQDLL_ECHO", "5500");
    const std::string tail = entry("TL42RQDLL_SELECT, 02000180", "0000") +
                             entry("TL42RQDLL_SENDRECEIVE, 2607", "8700") + "\r\n" + T +
                             "\t>>> TL42RQDLL_ANTICOLSELECT123\r\n\r\n"
                             "\t------ ISO14443-A STARTING ANTICOLISION ALGORITHM ------\r\n" +
                             titled("ISO14443-A REQA", "2607", "8700") + titled("ISO14443-A REQA", "2607", "8700") +
                             "\r\n\r\n\t------ ISO14443-A END OF ANTICOLISION ALGORITHM ------\r\n\t\t\t ";
    QCOMPARE(log, head + "\r\n" + tail + head + tail + head + tail);
    QCOMPARE(find<QLabel>(&p, "lblLoopCount")->text(), QString("2"));
    QVERIFY(!find<QLabel>(&p, "lblLoopCount")->isHidden());
    QCOMPARE(find<QLineEdit>(&p, "txtLOOPnumber")->text(), QString("0"));
    QVERIFY(!find<QCheckBox>(&p, "chkLoopOnScript")->isChecked());

    // Saving gives back the file as it was read.
    const QString saved = QDir(dir_.path()).filePath("saved.txt");
    dialogs_.fileAnswers.push_back(saved);
    QTest::mouseClick(find<QPushButton>(&p, "cmdScriptSave"), Qt::LeftButton);
    QFile f(saved);
    QVERIFY(f.open(QIODevice::ReadOnly));
    QCOMPARE(f.readAll(), original);
  }

  void unpluggedBoardReconnectsWithoutRepeat() {
    uitest::FixedTime time;
    const QString path = writeFile("unplugged.txt", "TL42RQDLL_ECHO\nTL42RQDLL_USB_HANDLE_CHECK");
    QCOMPARE(board_->setBoardPresent(false), 0);
    frmTL42RQ_Script p;
    dialogs_.fileAnswers.push_back(path);
    QTest::mouseClick(find<QPushButton>(&p, "cmdScriptLoad"), Qt::LeftButton);
    QTest::mouseClick(find<QPushButton>(&p, "cmdLaunchScript"), Qt::LeftButton);
    QCOMPARE(p.log().text(), entry("TL42RQDLL_ECHO", "") + T +
                                 "\t>>> TL42RQDLL_USB_HANDLE_CHECK\r\n"
                                 "\t\t\t<<< return 5 value : DEMO-TL42RQ-A not connected USB port\r\n"
                                 "\t\t\tuse the 'TL42RQDLL_USBconnect' function to reconnect your DEMO-TL42RQ-A");
    QCOMPARE(board_->setBoardPresent(true), 0);
  }

  void sameScriptsGiveByteIdenticalLogsThroughTheWindowAndTheRunner() {
    uitest::FixedTime time;
    int n = 0;
    for (const Case& c : cases()) {
      const QString path = writeFile(QString("case%1.txt").arg(n++), c.file);
      frmTL42RQ_Script p;
      const std::string windowLog = panelLog(path, c.loop, p);
      QStringList args;
      if (!c.loop.isEmpty()) args << "--loop" << c.loop;
      args << path;
      const Run r = runner(args);
      QVERIFY2(r.exitCode == c.exitCode, c.name);
      QVERIFY2(r.out.toStdString() == windowLog, c.name);
      QVERIFY2(r.err.isEmpty(), c.name);
      if (c.exitCode == 1) QVERIFY2(r.out.contains("!!! Script Error : "), c.name);
      // A script without an error leaves no error entry, so the runner's exit code is
      // the window's outcome.
      QVERIFY2((c.exitCode == 1) == (windowLog.find("!!! Script Error : ") != std::string::npos), c.name);
    }
  }

  void runnerPrintsTheErrorEntryLast() {
    const QString path = writeFile("error.txt", "TL42RQDLL_ECHO\r\nTL42RQDLL_KQCMD, 0301\r\nTL42RQDLL_ECHO");
    const Run r = runner({path});
    QCOMPARE(r.exitCode, 1);
    QCOMPARE(r.out.toStdString(), entry("TL42RQDLL_ECHO", "5500") + T +
                                      "\t>>> TL42RQDLL_KQCMD,0301\r\n\t\t\t"
                                      "!!! Script Error : 1st byte needed to be equal to '01' or '02' !!! ");
  }

  void runnerLoopsAsTheWindowDoes() {
    const QString path = writeFile("loop.txt", "TL42RQDLL_ECHO\n");
    const Run r = runner({"--loop", "4", path});
    QCOMPARE(r.exitCode, 0);
    const std::string echo = entry("TL42RQDLL_ECHO", "5500");
    QCOMPARE(r.out.toStdString(), echo + echo + echo + echo);
  }

  void runnerExplainsItselfAndRefusesBadArguments() {
    const Run help = runner({"--help"});
    QCOMPARE(help.exitCode, 0);
    QVERIFY(help.out.startsWith("Usage: tl42rq-script [--loop N] FILE\n"));
    QVERIFY(help.out.contains("TL42RQ_DRIVER"));

    const QString path = writeFile("ok.txt", "TL42RQDLL_ECHO");
    for (const QStringList& args : {QStringList{}, QStringList{"--loop"}, QStringList{"--loop", "x", path},
                                    QStringList{"--loop", "-1", path}, QStringList{"--verbose", path},
                                    QStringList{path, path}}) {
      const Run r = runner(args);
      QVERIFY2(r.exitCode == 2, qPrintable(args.join(' ')));
      QVERIFY2(r.out.isEmpty(), qPrintable(args.join(' ')));
      QVERIFY2(r.err.count('\n') == 1 && r.err.startsWith("tl42rq-script: "), qPrintable(args.join(' ')));
    }
    const Run missing = runner({QDir(dir_.path()).filePath("no-such-script.txt")});
    QCOMPARE(missing.exitCode, 2);
    QVERIFY(missing.out.isEmpty());
    QVERIFY(missing.err.startsWith("tl42rq-script: cannot read "));
    QCOMPARE(missing.err.count('\n'), 1);
  }

  void runnerWithAnEmptyFileRunsNothing() {
    const Run r = runner({writeFile("empty.txt", "")});
    QCOMPARE(r.exitCode, 0);
    QVERIFY(r.out.isEmpty());
  }

  void runnerWithoutDriverLibraryStillRunsOnStatusFive() {
    const QString path = writeFile("nodriver.txt", "TL42RQDLL_ECHO\nTL42RQDLL_USB_CONNECT");
    const Run r = runner({path}, QDir(dir_.path()).filePath("missing-library.so"));
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out.toStdString(), entry("TL42RQDLL_ECHO", "") + T +
                                      "\t>>> TL42RQDLL_USB_CONNECT\r\n"
                                      "\t\t\t<<< return 5 value : DEMO-TL42RQ-A reconnection failed\r\n"
                                      "\t\t\tverify DEMO-TL42RQ-A USB connection");
    QVERIFY(r.err.contains("missing-library.so"));
  }
};

QTEST_MAIN(ScriptOnBoard)
#include "script_board.moc"
