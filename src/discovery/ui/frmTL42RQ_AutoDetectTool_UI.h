// The auto-detection tool: it runs the probes of the ticked protocols in a fixed order,
// once or in one of three loops, and names the tags it found in each pass.
#pragma once

#include <array>

#include "discovery/Cycles.h"
#include "discovery/ui/DiscoveryPanel.h"

class QGroupBox;
class QRadioButton;

class frmTL42RQ_AutoDetectTool_UI : public DiscoveryPanel {
  Q_OBJECT
 public:
  explicit frmTL42RQ_AutoDetectTool_UI(QWidget* parent = nullptr);

  void cmd_Auto_Detection_Process_Click();
  void cmdStopLoop_Click();
  // A click on a protocol box only reads the boxes again: the start button stays as it is.
  void chkTagDetSelectProtocols_Click(int index);

  discovery::LoopMode loopMode() const;

  QGroupBox* fraLoopAutoDetectionTool = nullptr;
  std::array<QRadioButton*, 4> optLoopAutoDetectionTool{};
  QPushButton* cmd_Auto_Detection_Process = nullptr;
  QPushButton* cmdStopLoop = nullptr;
  QPushButton* cmdSaveLog = nullptr;
  QPushButton* cmdClearLog = nullptr;

 protected:
  void clearFlagsOnClose() override;

 private:
  void buildControls();
  // The controls a run disables and enables again.
  void setRunControlsEnabled(bool enabled);
  // The echo that puts the tool in step with the chip before the first pass.
  void synchroniseWithChip();

  discovery::ProtocolFlags keep_{};
  discovery::ProtocolResults results_{};
  int selectedProtocols_ = 0;
};
