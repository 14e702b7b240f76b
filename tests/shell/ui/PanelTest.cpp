// What every panel shares: the trace log and its view, Clear and Save Log, one exchange
// with reconnect, and closing while a handler still runs.
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QtTest>

#include "reader/Drivers.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "shell/ui/Panel.h"
#include "support/UiTestSupport.h"

using reader::FakeDriver;
using reader::Op;

// The smallest panel: one exchange that logs a titled entry, and a loop that yields.
class SamplePanel : public Panel {
 public:
  SamplePanel() : Panel(glob::PanelId::ISO18092, "frmTL42RQ_ISO18092_UI") { createLogView("rtfLogView"); }
  reader::Answer send(const std::string& frame) {
    HandlerScope scope(this);
    const reader::Answer a = exchange(Op::SendReceive, frame);
    log().titled("REQC", "TL42RQDLL_SENDRECV", frame, a.text);
    return a;
  }
  int loopUntilClosed() {
    HandlerScope scope(this);
    int turns = 0;
    while (!closing() && turns < 100000) {
      ++turns;
      yieldEvents(1);
    }
    return turns;
  }

 protected:
  reader::ReconnectKind reconnectKind() const override { return reader::ReconnectKind::Iso18092; }
};

class PanelTest : public QObject {
  Q_OBJECT
  ScriptedDialogs dialogs_;
  QTemporaryDir dir_;

 private slots:
  void init() {
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
    glob::state() = glob::GlobVariables();
  }
  void cleanup() {
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }

  void clearLogThenOneExchangeStartsWithAnEmptyLine() {
    uitest::FixedTime time;
    FakeDriver d;
    d.queue(Op::SendReceive, 0, "80120100112233445566778801020304050607085C4F00");
    reader::setDriver(&d);
    SamplePanel p;
    QVERIFY(glob::panelOpen(glob::PanelId::ISO18092));
    p.log().appendRaw("old");
    p.cmdClearLog_Click();
    QCOMPARE(p.logView()->toPlainText(), QString());
    p.send("00FFFF000000");
    const std::string expected =
        "\r\n11-21-2026 10:20:30\tREQC\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 00FFFF000000\r\n"
        "\t\t\t<<< 80120100112233445566778801020304050607085C4F00";
    QCOMPARE(p.log().text(), expected);
    QCOMPARE(p.logView()->toPlainText(), QString::fromStdString(expected).remove('\r'));
    QCOMPARE(p.logView()->textCursor().position(), p.logView()->document()->characterCount() - 1);
  }

  void failedCallStillLogsAnEmptyAnswer() {
    uitest::FixedTime time;
    FakeDriver d;
    d.setHandler([](Op op, const std::string&) -> FakeDriver::Reply {
      return {op == Op::USBhandlecheck ? 1 : 5, ""};
    });
    reader::setDriver(&d);
    SamplePanel p;
    const reader::Answer a = p.send("00FFFF0000");
    QCOMPARE(a.status, 5);
    QVERIFY(p.log().text().size() >= 5);
    QCOMPARE(p.log().text().substr(p.log().text().size() - 5), std::string("\t<<< "));
    // Called once, the reconnect failed, called once more: never a third time.
    QCOMPARE(d.callsOf(Op::SendReceive).size(), std::size_t(2));
  }

  void goodReconnectSelectsThePanelsProtocolAgain() {
    FakeDriver d;
    d.queue(Op::SendReceive, 5, "");
    d.queue(Op::SendReceive, 0, "8700");
    reader::setDriver(&d);
    glob::state().statusPanel1 = glob::kBoardNotConnected;
    SamplePanel p;
    p.send("00FFFF0000");
    std::vector<std::string> sent;
    for (const auto& c : d.calls()) sent.push_back(std::string(reader::info(c.op).symbol) + " " + c.request);
    QCOMPARE(sent, (std::vector<std::string>{"TL42RQDll_SendReceive 00FFFF0000", "TL42RQDLL_USBconnect ",
                                              "TL42RQDLL_USBhandlecheck ", "TL42RQDll_Select 0451",
                                              "TL42RQDll_KQCmd 01090468010150", "TL42RQDll_KQCmd 0109040A0102A1",
                                              "TL42RQDll_SendReceive 00FFFF0000"}));
    QCOMPARE(glob::state().statusPanel1, std::string(glob::kBoardConnected));
  }

  void saveLogWithAnEmptyLogOpensNoDialog() {
    SamplePanel p;
    p.cmdSaveLog_Click();
    QVERIFY(dialogs_.fileRequests.empty());
  }

  void saveLogWritesTheStringAndKeepsTheDirectory() {
    uitest::FixedTime time;
    shell::setProgramDirectory(dir_.path().toStdString());
    QFile usage(QDir(dir_.path()).filePath("usageTL42RQsoftware.dat"));
    QVERIFY(usage.open(QIODevice::WriteOnly));
    usage.write("\"\",\"123\"\r\n");
    usage.close();
    glob::state().backgroundColor = "123";
    FakeDriver d;
    d.queue(Op::SendReceive, 0, "8700");
    reader::setDriver(&d);
    SamplePanel p;
    p.send("0600");
    const QString target = QDir(dir_.path()).filePath("trace.txt");
    dialogs_.fileAnswers.push_back(" " + target + " ");
    p.cmdSaveLog_Click();
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t(1));
    QCOMPARE(dialogs_.fileRequests[0].filter, QString("txt File (*.txt)|*.txt"));
    QFile saved(target);
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QCOMPARE(saved.readAll().toStdString(), p.log().text());
    QCOMPARE(glob::state().lastDirectory, dir_.path().toStdString() + "/");
    QVERIFY(usage.open(QIODevice::ReadOnly));
    QCOMPARE(usage.readAll().toStdString(), "\"" + dir_.path().toStdString() + "/\",\"123\"\r\n");
  }

  void cancelledSaveChangesNothing() {
    SamplePanel p;
    p.log().appendRaw("\r\nline");
    p.cmdSaveLog_Click();
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t(1));
    QCOMPARE(p.log().text(), std::string("\r\nline"));
  }

  void closingWhileALoopRunsHidesFirstAndDestroysAfter() {
    QMdiArea area;
    auto* p = new SamplePanel;
    QMdiSubWindow* sub = area.addSubWindow(p);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->show();
    QPointer<SamplePanel> watch(p);
    QTimer::singleShot(0, sub, [sub] { sub->close(); });
    const int turns = p->loopUntilClosed();
    QVERIFY(turns < 100000);
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO18092));
    QTRY_VERIFY(watch.isNull());
  }
};

QTEST_MAIN(PanelTest)
#include "PanelTest.moc"
