#include "discovery/ui/frmTL42RQ_AutoDetectTool_UI.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "discovery/ui/ShapeMark.h"

using reader::Op;

namespace {
constexpr const char* kWindowTitle = "   Auto Detect Tool  user interface  ";
constexpr const char* kSelectTitle = "1) Select RF protocols";
constexpr const char* kSelectHint = "Select at least one RF protocol to be able to launch Auto Detection process";
constexpr const char* kLaunchTitle = "2) Launch Auto Detection process";
constexpr const char* kResultTitle = "3) Result";
}  // namespace

frmTL42RQ_AutoDetectTool_UI::frmTL42RQ_AutoDetectTool_UI(QWidget* parent)
    : DiscoveryPanel(glob::PanelId::AutoDetect, "frmTL42RQ_AutoDetectTool_UI", discovery::ProbeOptions{},
                     "txt_AutoDetect_request", "txt_AutoDetect_answer", 1, parent) {
  setWindowTitle(kWindowTitle);
  buildControls();
  // Opening sends nothing: the first run configures what it probes.
  glob::state().stopFlag = false;
  cmdStopLoop->hide();
  ShapTagDetected[0]->hide();
  ShapTagDetected[1]->hide();
}

void frmTL42RQ_AutoDetectTool_UI::buildControls() {
  auto* main = new QVBoxLayout(this);
  auto* top = new QHBoxLayout;
  top->addWidget(buildProtocolBoxes(kSelectTitle, kSelectHint), 1);

  auto* launch = new QGroupBox(kLaunchTitle, this);
  launch->setObjectName("fraLaunchAutoDetection");
  auto* launchLayout = new QVBoxLayout(launch);
  fraLoopAutoDetectionTool = new QGroupBox(launch);
  fraLoopAutoDetectionTool->setObjectName("fraLoopAutoDetectionTool");
  auto* loopLayout = new QVBoxLayout(fraLoopAutoDetectionTool);
  for (int i = 0; i < 4; ++i) {
    auto* option = new QRadioButton(discovery::kLoopModeCaptions[static_cast<std::size_t>(i)], fraLoopAutoDetectionTool);
    option->setObjectName(QString("optLoopAutoDetectionTool_%1").arg(i));
    optLoopAutoDetectionTool[static_cast<std::size_t>(i)] = option;
    loopLayout->addWidget(option);
  }
  optLoopAutoDetectionTool[0]->setChecked(true);
  launchLayout->addWidget(fraLoopAutoDetectionTool);
  auto* buttons = new QHBoxLayout;
  cmd_Auto_Detection_Process = button("cmd_Auto_Detection_Process", "Launch Auto Detection", launch);
  cmdStopLoop = button("cmdStopLoop", "Stop Loop", launch);
  buttons->addWidget(cmd_Auto_Detection_Process);
  buttons->addWidget(cmdStopLoop);
  buttons->addStretch(1);
  launchLayout->addLayout(buttons);
  top->addWidget(launch, 2);
  main->addLayout(top);

  main->addWidget(buildResults(kResultTitle));
  main->addWidget(buildRequestAnswer());
  main->addWidget(createLogView("rtfAutoDetectLogEdit"), 1);
  QWidget* logButtons = createLogButtons();
  cmdSaveLog = logButtons->findChild<QPushButton*>("cmdSaveLog");
  cmdClearLog = logButtons->findChild<QPushButton*>("cmdClearLog");
  main->addWidget(logButtons);
  resize(760, 760);

  connect(cmd_Auto_Detection_Process, &QPushButton::clicked, this, [this] { cmd_Auto_Detection_Process_Click(); });
  connect(cmdStopLoop, &QPushButton::clicked, this, [this] { cmdStopLoop_Click(); });
  for (int i = 0; i < discovery::kProtocolCount; ++i)
    connect(chkTagDetSelectProtocols[static_cast<std::size_t>(i)], &QCheckBox::clicked, this,
            [this, i] { chkTagDetSelectProtocols_Click(i); });
}

discovery::LoopMode frmTL42RQ_AutoDetectTool_UI::loopMode() const {
  for (int i = 3; i > 0; --i)
    if (optLoopAutoDetectionTool[static_cast<std::size_t>(i)]->isChecked()) return static_cast<discovery::LoopMode>(i);
  return discovery::LoopMode::NoLoop;
}

void frmTL42RQ_AutoDetectTool_UI::chkTagDetSelectProtocols_Click(int) { selectedProtocols_ = tickedProtocols(); }

void frmTL42RQ_AutoDetectTool_UI::setRunControlsEnabled(bool enabled) {
  for (QWidget* w : std::initializer_list<QWidget*>{cmdISO14443B_AntiCollision, cmdISO15693_AntiCollision,
                                                    cmd_Auto_Detection_Process, fraLoopAutoDetectionTool, cmdSaveLog,
                                                    cmdClearLog})
    w->setEnabled(enabled);
  for (QCheckBox* box : chkTagDetSelectProtocols) box->setEnabled(enabled);
}

void frmTL42RQ_AutoDetectTool_UI::synchroniseWithChip() {
  const auto echo = [this] {
    const reader::Answer a = exchange(Op::Echo);
    log().untitled(reader::logWord(Op::Echo), showAnswer(a.text));
    return a;
  };
  const reader::Answer first = echo();
  if (first.ok() && first.good("5500")) return;
  // A chip out of step answers the next echo; either way the run goes on.
  yieldEvents(1);
  echo();
}

void frmTL42RQ_AutoDetectTool_UI::cmd_Auto_Detection_Process_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  keep_.fill(true);
  results_.fill(0);
  const bool logIt = true;
  const bool configure = true;  // each probe configures the chip anew, so the radio-off step is safe

  setRunControlsEnabled(false);
  cmdStopLoop->show();
  ShapTagDetected[0]->show();
  lblTagDetected->show();
  showDetected(false);

  selectedProtocols_ = tickedProtocols();
  if (selectedProtocols_ > 0) {
    synchroniseWithChip();
    lblTagDetection_result->clear();
    resetSlots();
    txt_ISO14443B_REQB_result->clear();
    txtISO14443ADetectTags->clear();
    // Every result box starts the run empty, also of a protocol not ticked this time: a
    // box must not show a tag that an earlier run or probe button found.
    txtISO15693DetectTags->clear();
    txtFelicaDetectTags->clear();
    lblTagDetection_result->clear();

    const discovery::LoopMode mode = loopMode();
    do {
      lblTagDetection_result->clear();
      bool tagFound = false;
      discovery::Probes p = probes();
      p.rfOffAutoDetect();
      for (int i = 0; i < discovery::kProtocolCount; ++i) {
        const auto at = static_cast<std::size_t>(i);
        if (!ticked(i) || !keep_[at]) continue;
        results_[at] = p.probe(i, logIt, configure);
        if (!discovery::autoDetectHit(i, results_[at])) continue;
        lblTagDetection_result->setText(lblTagDetection_result->text() +
                                        latin1(discovery::autoDetectWords(i, results_[at])));
        showDetected(true);
        tagFound = true;
        if (mode == discovery::LoopMode::UntilFoundThenFollow) break;
      }
      showDetected(tagFound);
      if (!tagFound) lblTagDetection_result->clear();
      yieldEvents(1);
      discovery::decideNextPass(mode, tagFound, results_, keep_, g.stopFlag);
    } while (!g.stopFlag && !closing());
  }

  cmdStopLoop->hide();
  g.stopFlag = false;
  setRunControlsEnabled(true);
}

void frmTL42RQ_AutoDetectTool_UI::cmdStopLoop_Click() {
  // The pass under way runs to its end; the flag is read after it.
  glob::state().stopFlag = true;
  cmdStopLoop->hide();
}

void frmTL42RQ_AutoDetectTool_UI::clearFlagsOnClose() { glob::state().stopFlag = true; }
