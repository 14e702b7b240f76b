// The demo-kit toolbox: one button for each driver operation with its answer box, a
// free chip command, and the ISO 14443-A modulation depth and receiver gain setting.
#pragma once

#include <array>

#include "shell/ui/Panel.h"
#include "toolbox/DemoKitTools.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class HexLineEdit;

class frmTL42RQ_DemoKit_tools : public Panel {
  Q_OBJECT
 public:
  explicit frmTL42RQ_DemoKit_tools(QWidget* parent = nullptr);

  // The handler of every operation button: the row says which call and which boxes.
  void runOperation(const toolbox::OperationRow& row);
  void cmdSendAnyKQCmdRequest_Click();
  void cmdISO14443AchangeRegValue_Click();
  void modulationGainChanged();

 protected:
  reader::ReconnectKind reconnectKind() const override { return reader::ReconnectKind::Plain; }

 private:
  struct RowWidgets {
    QPushButton* button = nullptr;
    QLineEdit* answer = nullptr;
    QLineEdit* decoded = nullptr;
  };
  RowWidgets& widgetsOf(const toolbox::OperationRow& row);
  void showDecoded(const toolbox::OperationRow& row, RowWidgets& w, const reader::Answer& a);

  std::array<RowWidgets, toolbox::kOperationRows.size()> rows_{};
  std::array<QRadioButton*, 3> OptPinState_{};
  HexLineEdit* txtAnyKQCmdRequest_ = nullptr;
  QLineEdit* txtAnyKQCmdAnswer_ = nullptr;
  QComboBox* cboIso14443AModulationDepth_ = nullptr;
  QComboBox* cboIso14443AReceiverGain_ = nullptr;
  QLineEdit* txtISO14443AModDepthReceiverGain_ = nullptr;
  QLineEdit* txtRegisterValue_Answer_ = nullptr;
};
