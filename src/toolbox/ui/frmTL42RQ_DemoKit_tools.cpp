#include "toolbox/ui/frmTL42RQ_DemoKit_tools.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "reader/Drivers.h"
#include "reader/ui/HexFields.h"
#include "shell/DetectionParse.h"

using toolbox::Decode;
using toolbox::OperationRow;

namespace {
QLineEdit* box(QWidget* parent, const QString& name, int minimumWidth) {
  auto* e = new QLineEdit(parent);
  e->setObjectName(name);
  e->setReadOnly(true);
  e->setMinimumWidth(minimumWidth);
  return e;
}

QString latin1(const std::string& s) { return QString::fromLatin1(s.data(), static_cast<qsizetype>(s.size())); }
}  // namespace

frmTL42RQ_DemoKit_tools::frmTL42RQ_DemoKit_tools(QWidget* parent)
    : Panel(glob::PanelId::DemoKitTools, "frmTL42RQ_DemoKit_tools", parent) {
  setWindowTitle(toolbox::kWindowTitle);
  const int dllRevision = glob::state().dllRevision;

  auto* outer = new QHBoxLayout(this);
  auto* left = new QVBoxLayout;
  outer->addLayout(left);

  // One line per operation: button, answer box, decoded box.
  auto* fraOperations = new QGroupBox("DEMO-TL42RQ-A driver operations", this);
  fraOperations->setObjectName("fraDriverOperations");
  auto* grid = new QGridLayout(fraOperations);
  grid->setColumnStretch(1, 3);
  grid->setColumnStretch(2, 1);
  for (std::size_t i = 0; i < toolbox::kOperationRows.size(); ++i) {
    const OperationRow& row = toolbox::kOperationRows[i];
    RowWidgets& w = rows_[i];
    const int line = static_cast<int>(i);
    w.button = button(row.button, row.caption, fraOperations);
    w.button->setMinimumWidth(230);
    w.answer = box(fraOperations, row.answerBox, 240);
    grid->addWidget(w.button, line, 0);
    grid->addWidget(w.answer, line, 1);
    QWidget* third = nullptr;
    if (row.decodedBox) {
      w.decoded = box(fraOperations, row.decodedBox, 120);
      third = w.decoded;
    } else if (row.decode == Decode::PinState) {
      // Index 0 carries no caption: it only shows that no bus is selected.
      auto* pins = new QWidget(fraOperations);
      pins->setObjectName("fraPinState");
      auto* pinLayout = new QHBoxLayout(pins);
      pinLayout->setContentsMargins(0, 0, 0, 0);
      const char* captions[] = {"", "SPI bus", "UART bus"};
      for (int k = 0; k < 3; ++k) {
        OptPinState_[k] = new QRadioButton(captions[k], pins);
        OptPinState_[k]->setObjectName(QString("%1_%2").arg(toolbox::kPinStateGroup).arg(k));
        OptPinState_[k]->setToolTip(QString("Interface pin state %1").arg(k));
        pinLayout->addWidget(OptPinState_[k]);
      }
      third = pins;
    }
    if (third) grid->addWidget(third, line, 2);
    const bool visible = toolbox::rowVisible(row, dllRevision);
    w.button->setVisible(visible);
    w.answer->setVisible(visible);
    if (third) third->setVisible(visible);
    connect(w.button, &QPushButton::clicked, this, [this, &row] { runOperation(row); });
  }
  left->addWidget(fraOperations);

  // The free chip command.
  auto* fraAnyKQCmd = new QGroupBox("KQ_Cmd", this);
  fraAnyKQCmd->setObjectName("fraAnyKQCmd");
  auto* anyLayout = new QGridLayout(fraAnyKQCmd);
  auto* cmdSendAny = button("cmdSendAnyKQCmdRequest", "Send any KQ_Cmd request", fraAnyKQCmd);
  txtAnyKQCmdRequest_ = new HexLineEdit("txtAnyKQCmdRequest", reader::FieldKind::Hexadecimal, fraAnyKQCmd);
  txtAnyKQCmdAnswer_ = box(fraAnyKQCmd, "txtAnyKQCmdAnswer", 240);
  anyLayout->addWidget(new QLabel("Request (command code, length, data):", fraAnyKQCmd), 0, 0);
  anyLayout->addWidget(txtAnyKQCmdRequest_, 0, 1);
  anyLayout->addWidget(cmdSendAny, 1, 0);
  anyLayout->addWidget(txtAnyKQCmdAnswer_, 1, 1);
  connect(cmdSendAny, &QPushButton::clicked, this, &frmTL42RQ_DemoKit_tools::cmdSendAnyKQCmdRequest_Click);
  left->addWidget(fraAnyKQCmd);

  // ISO 14443-A modulation depth and receiver gain.
  auto* fraIso14443A = new QGroupBox("ISO14443-A Modulation depth and Receiver Gain", this);
  fraIso14443A->setObjectName("fraISO14443AModDepthReceiverGain");
  auto* modLayout = new QGridLayout(fraIso14443A);
  cboIso14443AModulationDepth_ = new QComboBox(fraIso14443A);
  cboIso14443AModulationDepth_->setObjectName("cboIso14443AModulationDepth");
  for (const char* e : toolbox::kModulationDepths) cboIso14443AModulationDepth_->addItem(e);
  cboIso14443AReceiverGain_ = new QComboBox(fraIso14443A);
  cboIso14443AReceiverGain_->setObjectName("cboIso14443AReceiverGain");
  for (const char* e : toolbox::kReceiverGains) cboIso14443AReceiverGain_->addItem(e);
  txtISO14443AModDepthReceiverGain_ = box(fraIso14443A, "txtISO14443AModDepthReceiverGain", 40);
  txtISO14443AModDepthReceiverGain_->setMaximumWidth(60);
  // The lists show the value in use; the value box shows it as it is kept.
  const std::string value = glob::state().iso14443AModulationGain;
  if (value.size() == 2) {
    if (const int d = toolbox::depthIndexOf(value[0]); d >= 0) cboIso14443AModulationDepth_->setCurrentIndex(d);
    if (const int g = toolbox::gainIndexOf(value[1]); g >= 0) cboIso14443AReceiverGain_->setCurrentIndex(g);
  }
  txtISO14443AModDepthReceiverGain_->setText(QString::fromStdString(value));
  auto* cmdChange = button("cmdISO14443AchangeRegValue", toolbox::kChangeRegisterCaption, fraIso14443A);
  txtRegisterValue_Answer_ = box(fraIso14443A, "txtRegisterValue_Answer", 240);
  auto* warning = new QLabel(toolbox::kModulationWarning, fraIso14443A);
  warning->setObjectName("labelIso14443Awarning");
  modLayout->addWidget(new QLabel("Modulation depth", fraIso14443A), 0, 0);
  modLayout->addWidget(cboIso14443AModulationDepth_, 0, 1);
  modLayout->addWidget(new QLabel("Receiver gain", fraIso14443A), 0, 2);
  modLayout->addWidget(cboIso14443AReceiverGain_, 0, 3);
  modLayout->addWidget(txtISO14443AModDepthReceiverGain_, 0, 4);
  modLayout->addWidget(cmdChange, 1, 0, 1, 3);
  modLayout->addWidget(txtRegisterValue_Answer_, 1, 3, 1, 2);
  modLayout->addWidget(warning, 2, 0, 1, 5);
  connect(cboIso14443AModulationDepth_, &QComboBox::currentIndexChanged, this,
          &frmTL42RQ_DemoKit_tools::modulationGainChanged);
  connect(cboIso14443AReceiverGain_, &QComboBox::currentIndexChanged, this,
          &frmTL42RQ_DemoKit_tools::modulationGainChanged);
  connect(cmdChange, &QPushButton::clicked, this, &frmTL42RQ_DemoKit_tools::cmdISO14443AchangeRegValue_Click);
  left->addWidget(fraIso14443A);
  left->addStretch(1);

  // The trace.
  auto* right = new QVBoxLayout;
  QPlainTextEdit* view = createLogView(toolbox::kLogViewName);
  view->setMinimumWidth(560);
  right->addWidget(view, 1);
  right->addWidget(createLogButtons());
  outer->addLayout(right, 1);

  // Without the three rows of newer libraries the window is shorter.
  adjustSize();
}

frmTL42RQ_DemoKit_tools::RowWidgets& frmTL42RQ_DemoKit_tools::widgetsOf(const OperationRow& row) {
  return rows_[static_cast<std::size_t>(&row - toolbox::kOperationRows.data())];
}

void frmTL42RQ_DemoKit_tools::runOperation(const OperationRow& row) {
  HandlerScope scope(this);
  yieldEvents(toolbox::kYieldsBeforeCall);
  RowWidgets& w = widgetsOf(row);
  if (w.decoded && (row.decode == Decode::ChipName || row.decode == Decode::McuRevision)) w.decoded->clear();

  auto& d = reader::driver();
  toolbox::RowHooks hooks;
  hooks.reconnect = reader::reconnectWith(d, reconnectKind());
  hooks.markConnected = [] { glob::state().replaceInStatusPanel1(glob::kBoardNotConnected, glob::kBoardConnected); };
  hooks.yieldOnce = [] { yieldEvents(1); };
  const reader::Answer a = toolbox::callRow(d, row, hooks);

  // The box and the trace show the same text.
  const std::string shown = toolbox::answerBoxText(row, a);
  w.answer->setText(latin1(shown));
  log().toolbox(reader::logWord(row.op), shown);
  showDecoded(row, w, a);
}

void frmTL42RQ_DemoKit_tools::showDecoded(const OperationRow& row, RowWidgets& w, const reader::Answer& a) {
  if (!toolbox::answerDecodable(row, a)) return;
  switch (row.decode) {
    case Decode::DllRevision:
      w.decoded->setText(latin1(a.text));
      break;
    case Decode::ChipName:
      w.decoded->setText(latin1(shell::chipNameOfIdn(a.text)));
      break;
    case Decode::McuRevision:
      w.decoded->setText(latin1(shell::mcuRevisionText(a.text)));
      break;
    case Decode::PinState:
      if (const auto option = toolbox::pinStateOption(a.text)) OptPinState_[static_cast<std::size_t>(*option)]->setChecked(true);
      break;
    case Decode::None:
    case Decode::StatusNumber:
      break;
  }
}

void frmTL42RQ_DemoKit_tools::cmdSendAnyKQCmdRequest_Click() {
  HandlerScope scope(this);
  yieldEvents(toolbox::kYieldsBeforeCall);
  const toolbox::FreeCommand f = toolbox::freeCommand(txtAnyKQCmdRequest_->text().toStdString());
  std::string answer = f.notSentAnswer;
  // The free command goes out as typed, without reconnect: it is the tool to look at
  // the board as it is.
  if (f.send) answer = reader::callOnce(reader::driver(), reader::Op::KQCmd, f.request).text;
  txtAnyKQCmdAnswer_->setText(latin1(answer));
  log().toolbox(toolbox::kFreeCommandLogWord + f.request, answer);
}

void frmTL42RQ_DemoKit_tools::modulationGainChanged() {
  txtISO14443AModDepthReceiverGain_->setText(QString::fromStdString(toolbox::modulationGainValue(
      cboIso14443AModulationDepth_->currentText().toStdString(), cboIso14443AReceiverGain_->currentText().toStdString())));
}

void frmTL42RQ_DemoKit_tools::cmdISO14443AchangeRegValue_Click() {
  HandlerScope scope(this);
  yieldEvents(toolbox::kYieldsBeforeCall);
  const std::string value = txtISO14443AModDepthReceiverGain_->text().toStdString();
  // Kept first: every later ISO 14443-A configuration sends it, whatever the chip says now.
  glob::state().iso14443AModulationGain = value;
  const reader::Answer a = reader::callOnce(reader::driver(), reader::Op::KQCmd, toolbox::registerChangeRequest(value));
  txtRegisterValue_Answer_->setText(latin1(a.text));
  log().appendRaw(toolbox::registerChangeEntry(reader::traceDate(reader::clock().now()), value, a.text));
}
