// A long LOOP ON SCRIPT in the script tool's window: the trace view shows every line of
// the log (drawn from the log's string), follows its end, and keeps the editor's text of
// its last lines; Clear Log empties log and view, and after one more run the view and
// Save Log hold exactly the new entry.
#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include "reader/Drivers.h"
#include "script/ui/frmTL42RQ_Script.h"
#include "shell/GlobVariables.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/LogView.h"
#include "support/UiTestSupport.h"

using reader::FakeDriver;
using reader::Op;
using uitest::find;

namespace {

constexpr int kPasses = 1500;  // 3001 lines: more than the editor's document keeps
const std::string kEcho = "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500";

void click(QWidget* p, const char* name) { QTest::mouseClick(find<QPushButton>(p, name), Qt::LeftButton); }

// The lines the view must show for a log text: split at line feeds, carriage returns gone.
QStringList shownLines(const std::string& log) { return QString::fromStdString(log).remove('\r').split('\n'); }

QStringList viewLines(const LogView& view) {
  QStringList out;
  for (std::size_t n = 0; n < view.lineCount(); ++n) out << view.lineText(n);
  return out;
}

QByteArray readFile(const QString& path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
}

}  // namespace

class ScriptLongLoop : public QObject {
  Q_OBJECT
  ScriptedDialogs dialogs_;
  QTemporaryDir dir_;

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

  void longLoopThenClearLogShowsAndSavesExactlyTheNewEntry() {
    uitest::FixedTime time;
    FakeDriver d;
    d.setHandler([](Op, const std::string&) -> FakeDriver::Reply { return {0, "5500"}; });
    reader::setDriver(&d);
    frmTL42RQ_Script p;
    p.resize(900, 500);
    p.show();
    QVERIFY(QTest::qWaitForWindowExposed(&p));
    auto* view = find<LogView>(&p, "rtfScriptLogEdit");

    p.setScriptText("TL42RQDLL_ECHO");
    QTest::mouseClick(find<QCheckBox>(&p, "chkLoopOnScript"), Qt::LeftButton);
    find<QLineEdit>(&p, "txtLOOPnumber")->setText(QString::number(kPasses));
    click(&p, "cmdLaunchScript");

    std::string expected;
    for (int i = 0; i < kPasses; ++i) expected += kEcho;
    QCOMPARE(p.log().text(), expected);
    QCOMPARE(view->lineCount(), std::size_t(2 * kPasses + 1));
    QCOMPARE(viewLines(*view), shownLines(expected));
    // Once the burst has paused, the editor's document holds the last lines, caret at the end.
    const QStringList tail = shownLines(expected).mid(2 * kPasses + 1 - LogView::kMirrorLines);
    QTRY_COMPARE(view->toPlainText(), tail.join('\n'));
    QCOMPARE(view->textCursor().position(), view->document()->characterCount() - 1);
    // At the next screen refresh the view stands at the end: the last line is on screen.
    QTRY_VERIFY(view->followsEnd());
    QVERIFY(view->firstVisibleLine() > 0);
    QVERIFY(view->firstVisibleLine() < view->lineCount());

    const QString whole = QDir(dir_.path()).filePath("whole.txt");
    dialogs_.fileAnswers.push_back(whole);
    click(&p, "cmdSaveScriptLog");
    QCOMPARE(readFile(whole), QByteArray::fromStdString(expected));

    click(&p, "cmdEraseLogScript");
    QCOMPARE(p.log().text(), std::string());
    QCOMPARE(view->lineCount(), std::size_t(1));
    QCOMPARE(view->lineText(0), QString());
    QCOMPARE(view->toPlainText(), QString());
    QCOMPARE(view->firstVisibleLine(), std::size_t(0));
    dialogs_.fileAnswers.push_back(QDir(dir_.path()).filePath("empty.txt"));
    click(&p, "cmdSaveScriptLog");
    QVERIFY(!QFile::exists(QDir(dir_.path()).filePath("empty.txt")));  // empty log: no dialog, no file
    dialogs_.fileAnswers.clear();

    // The loop switch went off with the count-down: one pass.
    click(&p, "cmdLaunchScript");
    QCOMPARE(p.log().text(), kEcho);
    QCOMPARE(viewLines(*view), shownLines(kEcho));
    QCOMPARE(view->toPlainText(), QString::fromStdString(kEcho).remove('\r'));
    const QString one = QDir(dir_.path()).filePath("one.txt");
    dialogs_.fileAnswers.push_back(one);
    click(&p, "cmdSaveScriptLog");
    QCOMPARE(readFile(one), QByteArray::fromStdString(kEcho));
  }
};

QTEST_MAIN(ScriptLongLoop)
#include "script_long_loop.moc"
