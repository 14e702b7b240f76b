#include "discovery/ui/frmTL42RQ_TagDetection_UI.h"

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

#include "console/ui/FrameByteEdit.h"
#include "discovery/Cycles.h"
#include "discovery/TextCut.h"
#include "discovery/ui/ShapeMark.h"
#include "reader/Drivers.h"

using reader::Op;

namespace {
constexpr const char* kWindowTitle = "   Tag Detection Tool  user interface  ";
constexpr const char* kCalibrateTitle = "1) calibrate your DEMO-TL42RQ board before using \"Tag Detection\" Tool";
constexpr const char* kIdleParametersTitle = " IDLE command parameters";
constexpr const char* kChangeParametersTitle = " Change IDLE parameters ";
constexpr const char* kSelectTitle = "2) Select RF protocols";
constexpr const char* kSelectNote = "note : if no protocol selected, tag detection only";
constexpr const char* kLaunchTitle = "3) Launch Tag Detection process";
constexpr const char* kResultTitle = "4) Result";
// Character 18 of the chip's identification: "0" marks a chip whose Idle answer does not
// carry the wake-up reason, so that it is always read from register 62.
constexpr long kReadRegisterMarkPosition = 18;

QLabel* caption(const char* name, const QString& text, QWidget* parent) {
  auto* l = new QLabel(text, parent);
  l->setObjectName(name);
  return l;
}
}  // namespace

// The calibration search's steps, on this tool's frames and boxes.
class frmTL42RQ_TagDetection_UI::CalibrationSteps final : public discovery::CalibrationHost {
 public:
  explicit CalibrationSteps(frmTL42RQ_TagDetection_UI& tool) : t_(tool) {}
  std::string runStep(int dacLowCode, int dacHighCode) override {
    std::string answer = t_.sendIdleCalibrationFrame(true, 0, dacLowCode, dacHighCode, true);
    if (t_.chkWithReadRg->isChecked()) answer = t_.readWakeUpRegister(true);
    return answer;
  }
  void logStep(const std::string& words) override {
    t_.log().appendRaw(discovery::stepLine(words, reader::clock().now()));
  }
  void showReason(const std::string& reason, discovery::MarkColour colour) override {
    t_.txt_TagDetection_Calibr_WUflags->setText(latin1(reason));
    t_.shapCalibration_WuReason->setColour(colour == discovery::MarkColour::Green ? ShapeMark::green()
                                           : colour == discovery::MarkColour::Red ? ShapeMark::red()
                                                                                  : ShapeMark::faceColour());
  }
  void clearResults() override {
    t_.txt_Calibration_DacDataL_result->clear();
    t_.txt_Calibration_DacDataH_result->clear();
  }
  void showBand(const discovery::CalibrationBand& band) override {
    t_.lblDacDataL_result->setText(latin1(band.lowCaption));
    t_.txt_Calibration_DacDataL_result->setText(latin1(band.lowBox));
    t_.txt_TagDetection_DacDataL_value->setText(t_.txt_Calibration_DacDataL_result->text());
    t_.lblDacDataH_result->setText(latin1(band.highCaption));
    t_.txt_Calibration_DacDataH_result->setText(latin1(band.highBox));
    t_.txt_TagDetection_DacDataH_value->setText(t_.txt_Calibration_DacDataH_result->text());
  }
  void yield() override { yieldEvents(1); }

 private:
  frmTL42RQ_TagDetection_UI& t_;
};

frmTL42RQ_TagDetection_UI::frmTL42RQ_TagDetection_UI(QWidget* parent)
    : DiscoveryPanel(glob::PanelId::TagDetection, "frmTL42RQ_TagDetection_UI",
                     discovery::ProbeOptions{.resetSlotsAtStart = true, .radioOffBefore14443A = true},
                     "txt_TagDetection_request", "txt_TagDetection_answer", 0, parent) {
  setWindowTitle(kWindowTitle);
  buildControls();

  // Some chips give the reason only in register 62: then the option is forced on.
  const bool readRegisterOnly =
      discovery::mid(glob::state().chipIdentification, kReadRegisterMarkPosition, 1) == "0";
  chkWithReadRg->setChecked(readRegisterOnly);
  chkWithReadRg->setVisible(!readRegisterOnly);
  // The calibration's reason shows from its first run on.
  lbl_TagDetection_Calibration_Answer->hide();
  txt_TagDetection_Calibr_WUflags->hide();
  shapCalibration_WuReason->hide();
  ShapTagDetected[1]->hide();
}

FrameByteEdit* frmTL42RQ_TagDetection_UI::byteField(const QString& name, const QString& text) {
  auto* field = new FrameByteEdit(name, reader::FieldKind::Hexadecimal, this);
  field->setText(text);
  field->setMaxLength(8);
  field->setFixedWidth(48);
  connect(field, &FrameByteEdit::keyUp, this, [field] {
    // An emptied field stays empty; anything else becomes its byte in two digits.
    const QString normal = latin1(discovery::byteFieldText(boxText(field)));
    if (!normal.isEmpty()) field->setNormalised(normal);
  });
  return field;
}

void frmTL42RQ_TagDetection_UI::buildControls() {
  auto* main = new QVBoxLayout(this);

  // 1) Calibration.
  auto* calibrate = new QGroupBox(kCalibrateTitle, this);
  calibrate->setObjectName("fraCalibration");
  auto* calLayout = new QHBoxLayout(calibrate);
  auto* idle = new QGroupBox(kIdleParametersTitle, calibrate);
  idle->setObjectName("fraIdleParameters");
  auto* idleGrid = new QGridLayout(idle);
  const discovery::IdleParameters start;
  txtWUPeriod = byteField("txtWUPeriod", latin1(start.wuPeriod));
  txtOscStart = byteField("txtOscStart", latin1(start.oscStart));
  txtDacStart = byteField("txtDacStart", latin1(start.dacStart));
  txtSwingsCnt = byteField("txtSwingsCnt", latin1(start.swingsCnt));
  txtTimeOut = byteField("txtTimeOut", latin1(start.timeOut));
  const std::array<std::pair<const char*, FrameByteEdit*>, 5> idleFields{{{"WU Period", txtWUPeriod},
                                                                           {"Osc Start", txtOscStart},
                                                                           {"Dac Start", txtDacStart},
                                                                           {"Swings Cnt", txtSwingsCnt},
                                                                           {"Max Sleep", txtTimeOut}}};
  for (std::size_t i = 0; i < idleFields.size(); ++i) {
    auto* l = caption("lblIdleParameter", idleFields[i].first, idle);
    l->setObjectName(QString("lblIdleParameter_%1").arg(i));
    idleGrid->addWidget(l, 0, static_cast<int>(i));
    idleGrid->addWidget(idleFields[i].second, 1, static_cast<int>(i));
  }
  chkWithReadRg = new QCheckBox("with ReadReg", idle);
  chkWithReadRg->setObjectName("chkWithReadRg");
  idleGrid->addWidget(chkWithReadRg, 2, 0, 1, 3);
  calLayout->addWidget(idle);

  auto* calRun = new QGridLayout;
  cmd_TagDetection_calibration = button("cmd_TagDetection_calibration", "Calibration", calibrate);
  calRun->addWidget(cmd_TagDetection_calibration, 0, 0, 1, 3);
  lblDacDataL_result = caption("lblDacDataL_result", "DacDataL", calibrate);
  lblDacDataH_result = caption("lblDacDataH_result", "DacDataH", calibrate);
  txt_Calibration_DacDataL_result = new QLineEdit(calibrate);
  txt_Calibration_DacDataL_result->setObjectName("txt_Calibration_DacDataL_result");
  txt_Calibration_DacDataH_result = new QLineEdit(calibrate);
  txt_Calibration_DacDataH_result->setObjectName("txt_Calibration_DacDataH_result");
  for (QLineEdit* e : {txt_Calibration_DacDataL_result, txt_Calibration_DacDataH_result}) {
    e->setReadOnly(true);
    e->setFixedWidth(48);
  }
  lbl_TagDetection_Calibration_Answer = caption("lbl_TagDetection_Calibration_Answer", "WUFlags", calibrate);
  txt_TagDetection_Calibr_WUflags = new QLineEdit(calibrate);
  txt_TagDetection_Calibr_WUflags->setObjectName("txt_TagDetection_Calibr_WUflags");
  txt_TagDetection_Calibr_WUflags->setReadOnly(true);
  txt_TagDetection_Calibr_WUflags->setFixedWidth(48);
  shapCalibration_WuReason = new ShapeMark("shapCalibration_WuReason", ShapeMark::faceColour(), calibrate);
  calRun->addWidget(lblDacDataL_result, 1, 0);
  calRun->addWidget(txt_Calibration_DacDataL_result, 1, 1);
  calRun->addWidget(lblDacDataH_result, 2, 0);
  calRun->addWidget(txt_Calibration_DacDataH_result, 2, 1);
  calRun->addWidget(lbl_TagDetection_Calibration_Answer, 3, 0);
  calRun->addWidget(txt_TagDetection_Calibr_WUflags, 3, 1);
  calRun->addWidget(shapCalibration_WuReason, 3, 2);
  calLayout->addLayout(calRun);

  auto* change = new QGroupBox(kChangeParametersTitle, calibrate);
  change->setObjectName("fraChangeIdleParameters");
  auto* changeGrid = new QGridLayout(change);
  txt_TagDetection_DacDataL_value = byteField("txt_TagDetection_DacDataL_value", "00");
  txt_TagDetection_DacDataH_value = byteField("txt_TagDetection_DacDataH_value", "FF");
  cmdDacDataL_minus = button("cmdDacDataL_minus", "-", change);
  cmdDacDataL_plus = button("cmdDacDataL_plus", "+", change);
  cmdDacDataH_minus = button("cmdDacDataH_minus", "-", change);
  cmdDacDataH_plus = button("cmdDacDataH_plus", "+", change);
  for (QPushButton* b : {cmdDacDataL_minus, cmdDacDataL_plus, cmdDacDataH_minus, cmdDacDataH_plus})
    b->setFixedWidth(28);
  changeGrid->addWidget(caption("lblDacDataL", "DacDataL", change), 0, 0);
  changeGrid->addWidget(txt_TagDetection_DacDataL_value, 0, 1);
  changeGrid->addWidget(cmdDacDataL_minus, 0, 2);
  changeGrid->addWidget(cmdDacDataL_plus, 0, 3);
  changeGrid->addWidget(caption("lblDacDataH", "DacDataH", change), 1, 0);
  changeGrid->addWidget(txt_TagDetection_DacDataH_value, 1, 1);
  changeGrid->addWidget(cmdDacDataH_minus, 1, 2);
  changeGrid->addWidget(cmdDacDataH_plus, 1, 3);
  calLayout->addWidget(change);
  calLayout->addStretch(1);
  main->addWidget(calibrate);

  // 2) and 3): the protocols and the launch.
  auto* middle = new QHBoxLayout;
  middle->addWidget(buildProtocolBoxes(kSelectTitle, kSelectNote), 1);
  auto* launch = new QGroupBox(kLaunchTitle, this);
  launch->setObjectName("fraLaunchTagDetection");
  auto* launchGrid = new QGridLayout(launch);
  cmd_TagDetection_Detection = button("cmd_TagDetection_Detection", "Launch Tag Detection", launch);
  chkLoop = new QCheckBox("loop", launch);
  chkLoop->setObjectName("chkLoop");
  chkLoop_While_detection = new QCheckBox("loop until a tag is detected", launch);
  chkLoop_While_detection->setObjectName("chkLoop_While_detection");
  pot_TagDetection_AWuCycleEnd[0] = new QRadioButton("WuCycleEnd = true", launch);
  pot_TagDetection_AWuCycleEnd[1] = new QRadioButton("WuCycleEnd = false", launch);
  for (int i = 0; i < 2; ++i) {
    pot_TagDetection_AWuCycleEnd[static_cast<std::size_t>(i)]->setObjectName(
        QString("pot_TagDetection_AWuCycleEnd_%1").arg(i));
    // Hidden: the wake-up flags byte is always 0B.
    pot_TagDetection_AWuCycleEnd[static_cast<std::size_t>(i)]->hide();
  }
  pot_TagDetection_AWuCycleEnd[0]->setChecked(true);
  txt_TagDetection_WUflags = new QLineEdit(launch);
  txt_TagDetection_WUflags->setObjectName("txt_TagDetection_WUflags");
  txt_TagDetection_WUflags->setReadOnly(true);
  txt_TagDetection_WUflags->setFixedWidth(48);
  shapWuReason = new ShapeMark("shapWuReason", ShapeMark::faceColour(), launch);
  launchGrid->addWidget(cmd_TagDetection_Detection, 0, 0, 1, 3);
  launchGrid->addWidget(chkLoop, 1, 0, 1, 3);
  launchGrid->addWidget(chkLoop_While_detection, 2, 0, 1, 3);
  launchGrid->addWidget(caption("lblWUflags", "WUFlags", launch), 3, 0);
  launchGrid->addWidget(txt_TagDetection_WUflags, 3, 1);
  launchGrid->addWidget(shapWuReason, 3, 2);
  launchGrid->setColumnStretch(3, 1);
  middle->addWidget(launch, 1);
  main->addLayout(middle);

  // 4) The result, the last exchange and the trace.
  main->addWidget(buildResults(kResultTitle));
  main->addWidget(buildRequestAnswer());
  main->addWidget(createLogView("rtfTagDetectionLogEdit"), 1);
  main->addWidget(createLogButtons());
  resize(820, 860);

  connect(cmd_TagDetection_calibration, &QPushButton::clicked, this, [this] { cmd_TagDetection_calibration_Click(); });
  connect(cmd_TagDetection_Detection, &QPushButton::clicked, this, [this] { cmd_TagDetection_Detection_Click(); });
  connect(cmdDacDataL_minus, &QPushButton::clicked, this, [this] { cmdDacDataL_minus_Click(); });
  connect(cmdDacDataL_plus, &QPushButton::clicked, this, [this] { cmdDacDataL_plus_Click(); });
  connect(cmdDacDataH_minus, &QPushButton::clicked, this, [this] { cmdDacDataH_minus_Click(); });
  connect(cmdDacDataH_plus, &QPushButton::clicked, this, [this] { cmdDacDataH_plus_Click(); });
  connect(chkLoop, &QCheckBox::clicked, this, [this] { chkLoop_Click(); });
  connect(chkLoop_While_detection, &QCheckBox::clicked, this, [this] { chkLoop_While_detection_Click(); });
}

discovery::IdleParameters frmTL42RQ_TagDetection_UI::idleParameters() const {
  discovery::IdleParameters p;
  p.wuPeriod = boxText(txtWUPeriod);
  p.oscStart = boxText(txtOscStart);
  p.dacStart = boxText(txtDacStart);
  p.swingsCnt = boxText(txtSwingsCnt);
  p.timeOut = boxText(txtTimeOut);
  return p;
}

void frmTL42RQ_TagDetection_UI::setTagDetectionButtons(bool enabled) {
  for (QPushButton* b :
       {cmd_TagDetection_calibration, cmd_TagDetection_Detection, cmdISO14443B_AntiCollision, cmdISO15693_AntiCollision})
    b->setEnabled(enabled);
}

std::string frmTL42RQ_TagDetection_UI::kqCommand(const std::string& request, QLineEdit* answerInto) {
  requestBox->setText(latin1(request));
  reader::ReaderDriver& d = reader::driver();
  const reader::Answer a = reader::callOnce(d, Op::KQCmd, discovery::withoutBlanks(request));
  if (a.status == reader::kStatusNoBoard) {
    std::int32_t status = 0;
    DEMO_TL42RQ_A_reconnect(status);  // no repeat: the chip may have slept meanwhile
  }
  answerInto->setText(latin1(a.text));
  const std::string answer = boxText(answerInto);
  log().untitled(discovery::kKQCmdTraceWord + request, answer);
  return answer;
}

std::string frmTL42RQ_TagDetection_UI::sendIdleCalibrationFrame(bool wakeOnBoth, int, int dacLowCode, int dacHighCode,
                                                                bool) {
  return kqCommand(discovery::idleCalibrationRequest(wakeOnBoth, idleParameters(), dacLowCode, dacHighCode), requestBox);
}

std::string frmTL42RQ_TagDetection_UI::readWakeUpRegister(bool) {
  return kqCommand(discovery::kReadWakeUpRegisterRequest, requestBox);
}

std::string frmTL42RQ_TagDetection_UI::sendTagDetectorSetup(bool) {
  return kqCommand(discovery::kTagDetectorSetupRequest, answerBox);
}

std::string frmTL42RQ_TagDetection_UI::sendIdleDetectionFrame(bool wakeCycleEnd, int, long dacLow, long dacHigh,
                                                              bool) {
  return kqCommand(discovery::idleDetectionRequest(wakeCycleEnd, idleParameters(), dacLow, dacHigh), requestBox);
}

void frmTL42RQ_TagDetection_UI::echoCheck() {
  const auto echo = [this] {
    reader::Answer a = reader::callOnce(reader::driver(), Op::Echo);
    if (a.status == reader::kStatusNoBoard) {
      std::int32_t status = 0;
      DEMO_TL42RQ_A_reconnect(status);
    }
    log().untitled(reader::logWord(Op::Echo), showAnswer(a.text));
    return a;
  };
  if (!echo().good("5500")) echo();
}

void frmTL42RQ_TagDetection_UI::showCalibrationMarks() {
  lbl_TagDetection_Calibration_Answer->show();
  txt_TagDetection_Calibr_WUflags->show();
  shapCalibration_WuReason->show();
}

void frmTL42RQ_TagDetection_UI::cmd_TagDetection_calibration_Click() {
  HandlerScope scope(this);
  showCalibrationMarks();
  setTagDetectionButtons(false);
  echoCheck();
  CalibrationSteps steps(*this);
  discovery::runCalibrationSearch(steps);
  showCalibrationMarks();
  setTagDetectionButtons(true);
}

void frmTL42RQ_TagDetection_UI::cmd_TagDetection_Detection_Click() {
  HandlerScope scope(this);
  const bool logIt = true;
  setTagDetectionButtons(false);
  ShapTagDetected[0]->show();
  showDetected(false);

  const int protocolCount = tickedProtocols();
  const bool readerState = true;  // the probes configure their protocol: the chip slept meanwhile
  echoCheck();

  bool marked = false;
  for (;;) {
    lblTagDetection_result->clear();
    resetSlots();
    txtISO15693DetectTags->clear();
    txtISO14443ADetectTags->clear();
    // The REQB and FeliCa boxes too: a cycle that wakes by time-out must not show the
    // tags an earlier cycle found.
    txt_ISO14443B_REQB_result->clear();
    txtFelicaDetectTags->clear();
    shapWuReason->setColour(ShapeMark::faceColour());
    txt_TagDetection_WUflags->clear();

    sendTagDetectorSetup(logIt);
    yieldEvents(1);
    const long low = static_cast<long>(discovery::hexFieldValue(boxText(txt_TagDetection_DacDataL_value)));
    const long high = static_cast<long>(discovery::hexFieldValue(boxText(txt_TagDetection_DacDataH_value)));
    // The chip sleeps here; the call returns when it wakes.
    std::string answer = sendIdleDetectionFrame(pot_TagDetection_AWuCycleEnd[0]->isChecked(), 0, low, high, logIt);
    yieldEvents(1);
    if (chkWithReadRg->isChecked()) {
      answer = readWakeUpRegister(logIt);
      yieldEvents(1);
    }

    const std::string reason = discovery::wakeUpReason(answer);
    txt_TagDetection_WUflags->setText(latin1(reason));
    shapWuReason->setColour(reason == discovery::kReasonTagDetect ? ShapeMark::green() : ShapeMark::red());

    if (reason == discovery::kReasonTagDetect) {
      discovery::DetectionCounts counts;
      discovery::Probes p = probes();
      if (ticked(discovery::kIso15693Index)) counts.iso15693 = p.probeISO15693(logIt, readerState);
      if (ticked(discovery::kIso14443AIndex)) counts.iso14443A = p.probeISO14443A(logIt, readerState);
      if (ticked(discovery::kIso14443BIndex)) counts.iso14443B = p.probeISO14443B(logIt, readerState);
      if (ticked(discovery::kPdyxxIndex)) {
        // Both ISO 14443-B boxes write the same count: the PDYxx probe's wins.
        counts.iso14443B = p.probeISO14443B_PDYxx(logIt, readerState);
        yieldEvents(1);
      }
      if (ticked(discovery::kFelicaIndex)) counts.felica = p.probeFelica(logIt, readerState);
      lblTagDetection_result->clear();
      marked = false;
      const discovery::DetectionResult r = discovery::detectionResult(counts, protocolCount);
      lblTagDetection_result->setText(latin1(r.label));
      marked = r.marked;
      showDetected(marked);
    } else {
      txtISO15693DetectTags->clear();
      resetSlots();
      showDetected(false);
      lblTagDetection_result->clear();
    }

    yieldEvents(1);
    if (loopDetection && !closing()) continue;
    yieldEvents(1);
    if (loopUntilDetected && !marked && !closing()) continue;
    break;
  }
  setTagDetectionButtons(true);
}

void frmTL42RQ_TagDetection_UI::stepLevel(FrameByteEdit* field, int delta) {
  const std::uint32_t value = discovery::hexFieldValue(boxText(field));
  if (delta < 0 && value > 0) field->setText(latin1(discovery::twoDigits(static_cast<long>(value) - 1)));
  if (delta > 0 && value < 0xFF) field->setText(latin1(discovery::twoDigits(static_cast<long>(value) + 1)));
}

void frmTL42RQ_TagDetection_UI::cmdDacDataL_minus_Click() { stepLevel(txt_TagDetection_DacDataL_value, -1); }
void frmTL42RQ_TagDetection_UI::cmdDacDataL_plus_Click() { stepLevel(txt_TagDetection_DacDataL_value, +1); }
void frmTL42RQ_TagDetection_UI::cmdDacDataH_minus_Click() { stepLevel(txt_TagDetection_DacDataH_value, -1); }
void frmTL42RQ_TagDetection_UI::cmdDacDataH_plus_Click() { stepLevel(txt_TagDetection_DacDataH_value, +1); }

void frmTL42RQ_TagDetection_UI::chkLoop_Click() {
  if (chkLoop->isChecked()) {
    // Unticking the other box runs its own handler, as a click would.
    if (chkLoop_While_detection->isChecked()) {
      chkLoop_While_detection->setChecked(false);
      chkLoop_While_detection_Click();
    }
    loopDetection = true;
    loopOnce = false;
  } else {
    loopOnce = true;
    loopDetection = false;
  }
}

void frmTL42RQ_TagDetection_UI::chkLoop_While_detection_Click() {
  if (chkLoop_While_detection->isChecked()) {
    if (chkLoop->isChecked()) {
      chkLoop->setChecked(false);
      chkLoop_Click();
    }
    loopUntilDetected = true;
    loopOnce = false;
  } else {
    loopOnce = true;
    loopUntilDetected = false;
  }
}

void frmTL42RQ_TagDetection_UI::clearFlagsOnClose() {
  loopDetection = false;
  loopOnce = false;
  loopUntilDetected = false;
}
