// The tag-detection tool: it calibrates the chip's tag detector (the band of DAC levels
// an empty field stays inside), then puts the chip to sleep with that band, and when a
// tag wakes it, runs the probes of the selected protocols and names what answered.
#pragma once

#include <array>
#include <string>

#include "discovery/Calibration.h"
#include "discovery/ui/DiscoveryPanel.h"

class FrameByteEdit;
class QRadioButton;

class frmTL42RQ_TagDetection_UI : public DiscoveryPanel {
  Q_OBJECT
 public:
  explicit frmTL42RQ_TagDetection_UI(QWidget* parent = nullptr);

  void cmd_TagDetection_calibration_Click();
  void cmd_TagDetection_Detection_Click();
  void cmdDacDataL_minus_Click();
  void cmdDacDataL_plus_Click();
  void cmdDacDataH_minus_Click();
  void cmdDacDataH_plus_Click();
  void chkLoop_Click();
  void chkLoop_While_detection_Click();

  // The frames of the tool. Each shows its request in txt_TagDetection_request, sends it
  // through KQCmd without blanks (on status 5 the plain reconnect, no repeat) and traces
  // it; the Idle answers and the register read land in the request box too.
  std::string sendIdleCalibrationFrame(bool wakeOnBoth, int ignored, int dacLowCode, int dacHighCode, bool logIt);
  std::string readWakeUpRegister(bool logIt);
  std::string sendTagDetectorSetup(bool logIt);
  std::string sendIdleDetectionFrame(bool wakeCycleEnd, int ignored, long dacLow, long dacHigh, bool logIt);
  void setTagDetectionButtons(bool enabled);

  discovery::IdleParameters idleParameters() const;

  // The run flags of the detection loop.
  bool loopDetection = false;
  bool loopOnce = true;
  bool loopUntilDetected = false;

  FrameByteEdit* txtWUPeriod = nullptr;
  FrameByteEdit* txtOscStart = nullptr;
  FrameByteEdit* txtDacStart = nullptr;
  FrameByteEdit* txtSwingsCnt = nullptr;
  FrameByteEdit* txtTimeOut = nullptr;
  QCheckBox* chkWithReadRg = nullptr;
  QPushButton* cmd_TagDetection_calibration = nullptr;
  QLabel* lblDacDataL_result = nullptr;
  QLabel* lblDacDataH_result = nullptr;
  QLineEdit* txt_Calibration_DacDataL_result = nullptr;
  QLineEdit* txt_Calibration_DacDataH_result = nullptr;
  QLabel* lbl_TagDetection_Calibration_Answer = nullptr;
  QLineEdit* txt_TagDetection_Calibr_WUflags = nullptr;
  ShapeMark* shapCalibration_WuReason = nullptr;

  FrameByteEdit* txt_TagDetection_DacDataL_value = nullptr;
  FrameByteEdit* txt_TagDetection_DacDataH_value = nullptr;
  QPushButton* cmdDacDataL_minus = nullptr;
  QPushButton* cmdDacDataL_plus = nullptr;
  QPushButton* cmdDacDataH_minus = nullptr;
  QPushButton* cmdDacDataH_plus = nullptr;

  QPushButton* cmd_TagDetection_Detection = nullptr;
  QCheckBox* chkLoop = nullptr;
  QCheckBox* chkLoop_While_detection = nullptr;
  std::array<QRadioButton*, 2> pot_TagDetection_AWuCycleEnd{};
  QLineEdit* txt_TagDetection_WUflags = nullptr;
  ShapeMark* shapWuReason = nullptr;

 protected:
  void clearFlagsOnClose() override;

 private:
  class CalibrationSteps;
  void buildControls();
  FrameByteEdit* byteField(const QString& name, const QString& text);
  // Echo, and one more when the first is not "5500"; the run goes on either way.
  void echoCheck();
  // One KQCmd exchange of the tool; the answer goes into `answerInto`.
  std::string kqCommand(const std::string& request, QLineEdit* answerInto);
  void stepLevel(FrameByteEdit* field, int delta);
  void showCalibrationMarks();
};
