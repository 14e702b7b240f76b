#include "iso18092/ui/frmTL42RQ_ISO18092_UI.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "iso18092/Iso18092Frames.h"
#include "reader/Drivers.h"
#include "reader/ui/HexFields.h"

using reader::Op;

namespace {
QString latin1(const std::string& s) { return QString::fromLatin1(s.data(), static_cast<int>(s.size())); }
std::string text(const QLineEdit* e) { return e->text().toLatin1().toStdString(); }
QLabel* label(const char* name, const char* caption, QWidget* parent) {
  auto* l = new QLabel(caption, parent);
  l->setObjectName(name);
  return l;
}
}  // namespace

frmTL42RQ_ISO18092_UI::frmTL42RQ_ISO18092_UI(QWidget* parent)
    : Panel(glob::PanelId::ISO18092, "frmTL42RQ_ISO18092_UI", parent) {
  setWindowTitle(iso18092::kWindowTitle);
  buildControls();
  HandlerScope scope(this);
  load();
}

void frmTL42RQ_ISO18092_UI::buildControls() {
  auto* main = new QVBoxLayout(this);

  auto* reqc = new QGroupBox(" REQC", this);
  reqc->setObjectName("fraReqC");
  auto* reqcLayout = new QGridLayout(reqc);
  cmd_ISO18092_ReqC = button("cmd_ISO18092_ReqC", "REQC", reqc);
  chkReqCLoop = new QCheckBox("Loop", reqc);
  chkReqCLoop->setObjectName("chkReqCLoop");
  lblReqBanswer = label("lblReqBanswer", iso18092::kAnswerCaption, reqc);
  lblReqCanswer_ManufID = label("lblReqCanswer_ManufID", iso18092::kManufIdCaption, reqc);
  lblReqCanswer_ManufParameter = label("lblReqCanswer_ManufParameter", iso18092::kManufParameterCaption, reqc);
  for (QLabel* l : {lblReqBanswer, lblReqCanswer_ManufID, lblReqCanswer_ManufParameter})
    l->setTextInteractionFlags(Qt::TextSelectableByMouse);
  reqcLayout->addWidget(cmd_ISO18092_ReqC, 0, 0);
  reqcLayout->addWidget(chkReqCLoop, 0, 1);
  reqcLayout->addWidget(lblReqBanswer, 1, 0, 1, 3);
  reqcLayout->addWidget(lblReqCanswer_ManufID, 2, 0, 1, 3);
  reqcLayout->addWidget(lblReqCanswer_ManufParameter, 3, 0, 1, 3);
  reqcLayout->setColumnStretch(2, 1);
  main->addWidget(reqc);

  auto* frameRow = new QHBoxLayout;
  txt_ISO18092_AnyFrame = new FrameLineEdit("txt_ISO18092_AnyFrame", this);
  cmd_ISO18092_SendFrame = button("cmd_ISO18092_SendFrame", "Send any frame", this);
  frameRow->addWidget(txt_ISO18092_AnyFrame, 1);
  frameRow->addWidget(cmd_ISO18092_SendFrame);
  main->addLayout(frameRow);

  auto* boxes = new QGridLayout;
  lbl_ISO18092_request = label("lbl_ISO18092_request", "request =", this);
  txt_ISO18092_request = new QLineEdit(this);
  txt_ISO18092_request->setObjectName("txt_ISO18092_request");
  txt_ISO18092_request->setReadOnly(true);
  lbl_ISO18092_answer = label("lbl_ISO18092_answer", "answer =", this);
  txt_ISO18092_answer = new QLineEdit(this);
  txt_ISO18092_answer->setObjectName("txt_ISO18092_answer");
  txt_ISO18092_answer->setReadOnly(true);
  boxes->addWidget(lbl_ISO18092_request, 0, 0);
  boxes->addWidget(txt_ISO18092_request, 0, 1);
  boxes->addWidget(lbl_ISO18092_answer, 1, 0);
  boxes->addWidget(txt_ISO18092_answer, 1, 1);
  main->addLayout(boxes);

  main->addWidget(createLogView("rtfISO18092LogEdit"), 1);
  main->addWidget(createLogButtons());

  connect(cmd_ISO18092_ReqC, &QPushButton::clicked, this, [this] { cmd_ISO18092_ReqC_Click(); });
  connect(chkReqCLoop, &QCheckBox::clicked, this, [this] { chkReqCLoop_Click(); });
  connect(cmd_ISO18092_SendFrame, &QPushButton::clicked, this, [this] { cmd_ISO18092_SendFrame_Click(); });
}

std::string frmTL42RQ_ISO18092_UI::showAnswer(const reader::Answer& a) {
  txt_ISO18092_answer->setText(latin1(a.text));
  // Read back from the box: that is what the trace and the labels see.
  return text(txt_ISO18092_answer);
}

// Opening: echo (twice when the first fails), then the FeliCa configuration, each step
// traced; nothing stops the opening.
void frmTL42RQ_ISO18092_UI::load() {
  auto& g = glob::state();
  g.scriptLoop = false;
  g.iso18092ReqcLoop = false;

  reader::Answer echo = exchange(Op::Echo);
  log().untitled(reader::logWord(Op::Echo), showAnswer(echo));
  if (echo.ok()) {
    if (!echo.good("5500")) {
      echo = exchange(Op::Echo);
      log().untitled(reader::logWord(Op::Echo), showAnswer(echo));
    }
    yieldEvents(1);
  } else {
    yieldEvents(1);
    echo = exchange(Op::Echo);
    log().untitled(reader::logWord(Op::Echo), showAnswer(echo));
  }

  const reader::Answer select = exchange(Op::Select, iso18092::kSelectParameters);
  txt_ISO18092_request->clear();
  log().titled(iso18092::kSelectTitle, reader::logWord(Op::Select), iso18092::kSelectParameters, showAnswer(select));

  // The register writes go without reconnect: they are the configuration itself.
  for (const iso18092::ChipWrite& w : iso18092::openingWrites()) {
    const reader::Answer a = reader::callOnce(reader::driver(), Op::KQCmd, std::string("01") + w.frame);
    log().titledChipCommand(w.title, w.frame, showAnswer(a));
  }

  txt_ISO18092_request->clear();
  txt_ISO18092_answer->clear();
}

void frmTL42RQ_ISO18092_UI::DEMO_TL42RQ_A_reconnect_iso18092(std::int32_t& status) {
  reader::DEMO_TL42RQ_A_reconnect_iso18092(reader::driver(), status);
}

void frmTL42RQ_ISO18092_UI::clearFlagsOnClose() { glob::state().iso18092ReqcLoop = false; }

void frmTL42RQ_ISO18092_UI::chkReqCLoop_Click() { glob::state().iso18092ReqcLoop = chkReqCLoop->isChecked(); }

void frmTL42RQ_ISO18092_UI::cmd_ISO18092_ReqC_Click() {
  HandlerScope scope(this);
  do {
    const iso18092::ReqcLabels bare;
    lblReqBanswer->setText(latin1(bare.answer));
    lblReqCanswer_ManufID->setText(latin1(bare.manufId));
    lblReqCanswer_ManufParameter->setText(latin1(bare.manufParameter));

    const reader::Answer a = exchange(Op::SendReceive, iso18092::kReqcFrame);
    txt_ISO18092_request->setText(iso18092::kReqcFrame);
    const std::string answer = showAnswer(a);
    log().titled(iso18092::kReqcTitle, reader::logWord(Op::SendReceive), iso18092::kReqcFrame, answer);

    const iso18092::ReqcLabels labels = iso18092::reqcLabels(answer);
    lblReqBanswer->setText(latin1(labels.answer));
    lblReqCanswer_ManufID->setText(latin1(labels.manufId));
    lblReqCanswer_ManufParameter->setText(latin1(labels.manufParameter));

    // The pause between passes, and the only moment the user can untick the loop.
    yieldEvents(10000);
    yieldEvents(1);
  } while (glob::state().iso18092ReqcLoop && !closing());
}

void frmTL42RQ_ISO18092_UI::cmd_ISO18092_SendFrame_Click() {
  HandlerScope scope(this);
  const std::string frame = text(txt_ISO18092_AnyFrame);
  if (frame.empty()) return;
  yieldEvents(1);
  const reader::Answer a = exchange(Op::SendReceive, frame);
  txt_ISO18092_request->setText(latin1(frame));
  log().titled(iso18092::kSendFrameTitle, reader::logWord(Op::SendReceive), frame, showAnswer(a));
}
