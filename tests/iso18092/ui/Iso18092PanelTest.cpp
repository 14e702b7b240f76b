// The ISO 18092 panel: its opening with the three configuration steps and their trace,
// REQC once and in a loop with the three answer labels, the free frame; closing the panel
// or the main window while the loop runs; REQC against the simulated FeliCa card.
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QtTest>
#include <memory>

#include "iso18092/ui/frmTL42RQ_ISO18092_UI.h"
#include "reader/Drivers.h"
#include "reader/ui/HexFields.h"
#include "shell/GlobVariables.h"
#include "shell/Product.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "support/UiTestSupport.h"

using reader::FakeDriver;
using reader::Op;

namespace {

FakeDriver::Reply liveReply(Op op) {
  switch (op) {
    case Op::Echo:
      return {0, "5500"};
    case Op::Select:
    case Op::KQCmd:
      return {0, "0000"};
    case Op::SendReceive:
      return {0, "8700"};
    default:
      return {0, ""};
  }
}

std::string entry(const std::string& title, const std::string& word, const std::string& request,
                  const std::string& answer) {
  return "\r\n11-21-2026 10:20:30\t" + title + "\r\n\t\t\t>>> " + word + ", " + request + "\r\n\t\t\t<<< " + answer;
}
const std::string kEcho = "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500";
// A REQC answer: LEN 12, 01, IDm, PMm, CRC, tail.
const std::string kReqcAnswer = "8015" "12" "01" "012E4CD2A3B4C5D6" "0120220427674EFF" "A1B2" "00";

std::vector<std::string> sent(const FakeDriver& d, Op op = Op::SendReceive) {
  std::vector<std::string> out;
  for (const auto& c : d.callsOf(op)) out.push_back(c.request);
  return out;
}

struct Fixture {
  FakeDriver driver;
  ScriptedDialogs dialogs;
  uitest::FixedTime time;
  std::unique_ptr<frmTL42RQ_ISO18092_UI> panel;

  Fixture() {
    glob::state() = glob::GlobVariables();
    driver.setHandler([](Op op, const std::string&) { return liveReply(op); });
    reader::setDriver(&driver);
    setDialogs(&dialogs);
  }
  ~Fixture() {
    panel.reset();
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }
  frmTL42RQ_ISO18092_UI& open() {
    panel = std::make_unique<frmTL42RQ_ISO18092_UI>();
    panel->show();
    driver.clearCalls();
    return *panel;
  }
  template <typename T = QWidget>
  T* w(const QString& name) {
    return uitest::find<T>(panel.get(), name);
  }
  void click(const QString& name) { QTest::mouseClick(w<QAbstractButton>(name), Qt::LeftButton); }
  QString caption(const QString& name) { return w<QLabel>(name)->text(); }
  QStringList labels() {
    return {caption("lblReqBanswer"), caption("lblReqCanswer_ManufID"), caption("lblReqCanswer_ManufParameter")};
  }
  std::string log() const { return panel->log().text(); }
};

const QStringList kBare{"Answer : ", "Manuf ID : ", "Manuf Parameter : "};

}  // namespace

class Iso18092PanelTest : public QObject {
  Q_OBJECT
 private slots:
  void openingConfiguresFelicaInThreeTracedSteps() {
    Fixture f;
    glob::state().iso18092ReqcLoop = true;
    glob::state().scriptLoop = true;
    f.panel = std::make_unique<frmTL42RQ_ISO18092_UI>();
    std::vector<std::pair<Op, std::string>> calls;
    for (const auto& c : f.driver.calls()) calls.emplace_back(c.op, c.request);
    const std::vector<std::pair<Op, std::string>> expected{{Op::Echo, ""},
                                                           {Op::Select, "0451"},
                                                           {Op::KQCmd, "01090468010150"},
                                                           {Op::KQCmd, "0109040A0102A1"}};
    QCOMPARE(calls, expected);
    QCOMPARE(f.log(), kEcho + entry("TL42RQ CONFIGURATION : ISO18092 protocol", "TL42RQDLL_SELECT", "0451", "0000") +
                          entry("TL42RQ CONFIGURATION : Index modulation & Gain adjust", "TL42RQDLL_KQCMD",
                                "01 090468010150", "0000") +
                          entry("TL42RQ CONFIGURATION : Auto FDet", "TL42RQDLL_KQCMD", "01 09040A0102A1", "0000"));
    QCOMPARE(f.w<QLineEdit>("txt_ISO18092_request")->text(), QString());
    QCOMPARE(f.w<QLineEdit>("txt_ISO18092_answer")->text(), QString());
    QVERIFY(!glob::state().iso18092ReqcLoop);
    QVERIFY(!glob::state().scriptLoop);
    QVERIFY(glob::panelOpen(glob::PanelId::ISO18092));
    QCOMPARE(f.panel->windowTitle(), QString("   ISO18092  user interface  "));
  }

  void anEchoThatIsNot5500IsSentOnceMore() {
    Fixture f;
    f.driver.setHandler(nullptr);
    f.driver.queue(Op::Echo, 0, "0000");
    f.driver.queue(Op::Echo, 0, "5500");
    f.panel = std::make_unique<frmTL42RQ_ISO18092_UI>();
    QCOMPARE(f.driver.callsOf(Op::Echo).size(), std::size_t{2});
    QVERIFY(f.log().starts_with("\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 0000" + kEcho));
  }

  void aGoodEchoIsSentOnce() {
    Fixture f;
    f.panel = std::make_unique<frmTL42RQ_ISO18092_UI>();
    QCOMPARE(f.driver.callsOf(Op::Echo).size(), std::size_t{1});
  }

  void captionsAndNames() {
    Fixture f;
    f.open();
    QCOMPARE(f.w<QAbstractButton>("cmd_ISO18092_ReqC")->text(), QString("REQC"));
    QCOMPARE(f.w<QAbstractButton>("chkReqCLoop")->text(), QString("Loop"));
    QCOMPARE(f.w<QAbstractButton>("cmd_ISO18092_SendFrame")->text(), QString("Send any frame"));
    QCOMPARE(f.labels(), kBare);
    QCOMPARE(f.caption("lbl_ISO18092_request"), QString("request ="));
    QCOMPARE(f.caption("lbl_ISO18092_answer"), QString("answer ="));
    QVERIFY(f.w<QPlainTextEdit>("rtfISO18092LogEdit")->isReadOnly());
    QVERIFY(f.w<QLineEdit>("txt_ISO18092_answer")->isReadOnly());
    f.w<QPushButton>("cmdSaveLog");
    f.w<QPushButton>("cmdClearLog");
  }

  void reqcCutsAGoodAnswerIntoTheThreeLabels() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, kReqcAnswer);
    f.driver.setHandler(nullptr);
    f.click("cmd_ISO18092_ReqC");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"00FFFF0000"}));
    QCOMPARE(f.labels(), (QStringList{"Answer : 1201012E4CD2A3B4C5D6012022042767", "Manuf ID : 12",
                                      "Manuf Parameter : 01012E4C"}));
    QCOMPARE(f.w<QLineEdit>("txt_ISO18092_request")->text(), QString("00FFFF0000"));
    QCOMPARE(f.w<QLineEdit>("txt_ISO18092_answer")->text(), QString::fromStdString(kReqcAnswer));
    QVERIFY(f.log().ends_with(entry("TL42RQ CONFIGURATION : Auto FDet", "TL42RQDLL_KQCMD", "01 09040A0102A1", "0000") +
                              entry("REQC", "TL42RQDLL_SENDRECV", "00FFFF0000", kReqcAnswer)));
  }

  void withNoTagTheLabelsStayBareAndTheLoopKeepsRunning() {
    Fixture f;
    f.open();
    f.driver.queue(Op::SendReceive, 0, kReqcAnswer);
    f.driver.setHandler(nullptr);
    f.click("cmd_ISO18092_ReqC");
    QTest::mouseClick(f.w<QCheckBox>("chkReqCLoop"), Qt::LeftButton);
    QVERIFY(glob::state().iso18092ReqcLoop);
    int passes = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++passes == 4)
        QTimer::singleShot(0, [&] { QTest::mouseClick(f.w<QCheckBox>("chkReqCLoop"), Qt::LeftButton); });
      return liveReply(op);
    });
    f.click("cmd_ISO18092_ReqC");
    // Four passes: the box was cleared during the fourth, whose pause ended the loop.
    QCOMPARE(passes, 4);
    QCOMPARE(f.labels(), kBare);
    QVERIFY(!glob::state().iso18092ReqcLoop);
    QVERIFY(f.log().ends_with(entry("REQC", "TL42RQDLL_SENDRECV", "00FFFF0000", "8700") +
                              entry("REQC", "TL42RQDLL_SENDRECV", "00FFFF0000", "8700")));
  }

  void closingThePanelDuringTheLoopEndsItAtItsCheck() {
    Fixture f;
    f.open();
    QTest::mouseClick(f.w<QCheckBox>("chkReqCLoop"), Qt::LeftButton);
    QPointer<frmTL42RQ_ISO18092_UI> panel = f.panel.release();
    int passes = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++passes == 2) QTimer::singleShot(0, [&] { panel->close(); });
      return liveReply(op);
    });
    QTest::mouseClick(uitest::find<QPushButton>(panel, "cmd_ISO18092_ReqC"), Qt::LeftButton);
    QCOMPARE(passes, 2);
    QVERIFY(!glob::state().iso18092ReqcLoop);
    QTRY_VERIFY(panel.isNull());
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO18092));
  }

  void closingTheMainWindowDuringTheLoopNeverCrashes() {
    Fixture f;
    shell::setProgramDirectory(TL42RQ_SOURCE_DIR "/data/");
    {
      MainForm form;
      form.setEndsProcessOnClose(false);
      form.load(false);
      form.show();
      form.openProduct("ISO18092");
      auto* panel = qobject_cast<frmTL42RQ_ISO18092_UI*>(form.panel(glob::PanelId::ISO18092));
      QVERIFY(panel);
      QCOMPARE(panel->windowTitle(), QString("   ISO18092  user interface  ISO18092"));
      QTest::mouseClick(uitest::find<QCheckBox>(panel, "chkReqCLoop"), Qt::LeftButton);
      int passes = 0;
      f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
        if (op == Op::SendReceive && ++passes == 3) QTimer::singleShot(0, [&] { form.close(); });
        return liveReply(op);
      });
      uitest::find<QPushButton>(panel, "cmd_ISO18092_ReqC")->click();
      QCOMPARE(passes, 3);
      QTRY_VERIFY(form.mdiArea()->subWindowList().isEmpty());
    }
    QVERIFY(!glob::panelOpen(glob::PanelId::ISO18092));
    QVERIFY(!glob::state().iso18092ReqcLoop);
  }

  void anOddFrameTurnsRedAndIsStillSent() {
    Fixture f;
    f.open();
    const std::string before = f.log();
    f.click("cmd_ISO18092_SendFrame");  // empty: nothing happens
    QVERIFY(f.driver.calls().empty());
    QCOMPARE(f.log(), before);
    auto* frame = f.w<FrameLineEdit>("txt_ISO18092_AnyFrame");
    frame->setText("00FFFF000");
    QVERIFY(!frame->showsNormalColour());
    QVERIFY(f.w("cmd_ISO18092_SendFrame")->isEnabled());
    f.click("cmd_ISO18092_SendFrame");
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"00FFFF000"}));
    QCOMPARE(f.log(), before + entry("SEND FRAME", "TL42RQDLL_SENDRECV", "00FFFF000", "8700"));
    frame->setText("00FFFF0000");
    QVERIFY(frame->showsNormalColour());
  }

  void freeFrameFiltersItsKeys() {
    Fixture f;
    f.open();
    auto* frame = f.w<FrameLineEdit>("txt_ISO18092_AnyFrame");
    QTest::keyClicks(frame, "0g4");
    QCOMPARE(frame->text(), QString("04"));
    QCOMPARE(f.dialogs.beeps, 1);
  }

  void reconnectConfiguresFelicaAgain() {
    Fixture f;
    f.open();
    int sendReceives = 0;
    f.driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::SendReceive && ++sendReceives == 1) return {5, ""};
      return liveReply(op);
    });
    f.click("cmd_ISO18092_ReqC");
    std::vector<std::pair<Op, std::string>> calls;
    for (const auto& c : f.driver.calls()) calls.emplace_back(c.op, c.request);
    const std::vector<std::pair<Op, std::string>> expected{
        {Op::SendReceive, "00FFFF0000"}, {Op::USBconnect, ""},          {Op::USBhandlecheck, ""},
        {Op::Select, "0451"},            {Op::KQCmd, "01090468010150"}, {Op::KQCmd, "0109040A0102A1"},
        {Op::SendReceive, "00FFFF0000"}};
    QCOMPARE(calls, expected);
  }

  void reqcShowsTheSimulatedCardsIdm() {
    uitest::SimulatedBoard board;
    QVERIFY2(board.loaded(), "the simulated board library did not load");
    QCOMPARE(board.loadField(uitest::fixture("field_felica.json")), 0);
    QCOMPARE(board.reset(), 0);
    uitest::FixedTime time;
    glob::state() = glob::GlobVariables();
    auto panel = std::make_unique<frmTL42RQ_ISO18092_UI>();
    QTest::mouseClick(uitest::find<QPushButton>(panel.get(), "cmd_ISO18092_ReqC"), Qt::LeftButton);
    const QString answer = uitest::find<QLineEdit>(panel.get(), "txt_ISO18092_answer")->text();
    // "80", length 15, LEN 12, 01, IDm, PMm, the card's CRC, tail 00.
    QVERIFY2(answer.startsWith("801512" "01" "012E4CD2A3B4C5D6" "0120220427674EFF"), qPrintable(answer));
    QVERIFY(answer.endsWith("00"));
    QCOMPARE(answer.size(), 2 * (2 + 21));
    QCOMPARE(uitest::find<QLabel>(panel.get(), "lblReqBanswer")->text(),
             QString("Answer : 1201012E4CD2A3B4C5D6012022042767"));
    QCOMPARE(uitest::find<QLabel>(panel.get(), "lblReqCanswer_ManufID")->text(), QString("Manuf ID : 12"));
    QCOMPARE(uitest::find<QLabel>(panel.get(), "lblReqCanswer_ManufParameter")->text(),
             QString("Manuf Parameter : 01012E4C"));
    // Out of the field, no tag: bare labels.
    QCOMPARE(board.loadField(R"({ "tags": [ { "type": "felica", "inField": false,
                                 "idm": "012E4CD2A3B4C5D6", "pmm": "0120220427674EFF" } ] })"),
             0);
    QTest::mouseClick(uitest::find<QPushButton>(panel.get(), "cmd_ISO18092_ReqC"), Qt::LeftButton);
    QCOMPARE(uitest::find<QLineEdit>(panel.get(), "txt_ISO18092_answer")->text(), QString("8700"));
    QCOMPARE(uitest::find<QLabel>(panel.get(), "lblReqBanswer")->text(), QString("Answer : "));
    panel.reset();
  }
};

QTEST_MAIN(Iso18092PanelTest)
#include "Iso18092PanelTest.moc"
