// The ISO 18092 (FeliCa) panel: it configures the chip for FeliCa when it opens, sends
// REQC once or in a loop and cuts the answer into three labels, and sends any frame the
// user types.
#pragma once

#include <QSize>
#include <cstdint>

#include "shell/ui/Panel.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class FrameLineEdit;

class frmTL42RQ_ISO18092_UI : public Panel {
  Q_OBJECT
 public:
  explicit frmTL42RQ_ISO18092_UI(QWidget* parent = nullptr);

  // The panel's public reconnect method.
  void DEMO_TL42RQ_A_reconnect_iso18092(std::int32_t& status);

  // Handlers, one per control event.
  void cmd_ISO18092_ReqC_Click();
  void chkReqCLoop_Click();
  void cmd_ISO18092_SendFrame_Click();

  // The size the main window gives the panel when it opens.
  QSize sizeHint() const override { return {640, 560}; }

  QPushButton* cmd_ISO18092_ReqC = nullptr;
  QCheckBox* chkReqCLoop = nullptr;
  QLabel* lblReqBanswer = nullptr;
  QLabel* lblReqCanswer_ManufID = nullptr;
  QLabel* lblReqCanswer_ManufParameter = nullptr;
  FrameLineEdit* txt_ISO18092_AnyFrame = nullptr;
  QPushButton* cmd_ISO18092_SendFrame = nullptr;
  QLabel* lbl_ISO18092_request = nullptr;
  QLineEdit* txt_ISO18092_request = nullptr;
  QLabel* lbl_ISO18092_answer = nullptr;
  QLineEdit* txt_ISO18092_answer = nullptr;

 protected:
  reader::ReconnectKind reconnectKind() const override { return reader::ReconnectKind::Iso18092; }
  void clearFlagsOnClose() override;

 private:
  void buildControls();
  void load();
  // Shows the answer in its box and returns it as the box holds it.
  std::string showAnswer(const reader::Answer& a);
};
