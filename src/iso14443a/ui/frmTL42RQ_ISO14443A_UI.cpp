#include "iso14443a/ui/frmTL42RQ_ISO14443A_UI.h"

#include <QApplication>
#include <QTextCursor>
#include <QCheckBox>
#include <QEvent>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "common/hex.h"
#include "iso14443a/NdefDecoder.h"
#include "iso15693/BlockRange.h"
#include "iso15693/ui/MemoryPageView.h"
#include "reader/Drivers.h"
#include "reader/HexText.h"
#include "reader/ui/HexFields.h"
#include "shell/Product.h"
#include "shell/ui/Dialogs.h"

using iso14443a::Single;
using iso14443a::Stage;
using iso14443a::Variant;
using reader::Op;
using reader::ReconnectKind;

namespace {

QString latin1(const std::string& s) { return QString::fromLatin1(s.data(), static_cast<int>(s.size())); }
std::string text(const QLineEdit* e) { return e->text().toLatin1().toStdString(); }

template <typename T>
T* named(T* w, const QString& name) {
  w->setObjectName(name);
  return w;
}
QLabel* label(const QString& name, const char* caption, QWidget* parent) {
  return named(new QLabel(caption, parent), name);
}
QLineEdit* lineEdit(const QString& name, QWidget* parent, int maxLength = 32767) {
  auto* e = named(new QLineEdit(parent), name);
  e->setMaxLength(maxLength);
  return e;
}
QFrame* divider(const QString& name, QWidget* parent) {
  auto* f = named(new QFrame(parent), name);
  f->setFrameShape(QFrame::HLine);
  f->setFrameShadow(QFrame::Sunken);
  return f;
}

constexpr std::array<const char*, 8> kTransmissionFlagCaptions{
    "nb of significant bits in last byte", "", "", "", "4 - RFU", "5 - append CRC", "6 - SplitFrame",
    "7 - RFU (use EOF instead of P for Topaz)"};
constexpr std::array<const char*, 6> kAnalysisCaptions{"result code : ",
                                                       "lenght : ",
                                                       "data received from tag : ",
                                                       "error status : ",
                                                       "index of 1st byte (collision) : ",
                                                       "index of 1st bit (collision) : "};
constexpr std::array<const char*, 8> kRespFlagCaptions{
    "nb significant bits for 1st byte ", "", "", "", "parity error", "CRC error", "RFU", "collision detected"};
constexpr std::array<const char*, 3> kAnticolCaptions{"Anticol1", "Anticol2", "Anticol 3"};
constexpr std::array<const char*, 3> kSelectCaptions{"Select 1", "Select 2", "Select 3"};
// Column widths of fgAnticolProcess: 1000, 1700 and 3000 twips at 15 twips a pixel.
constexpr std::array<int, 3> kGridColumnWidths{67, 113, 200};
constexpr int kByteBoxWidth = 36;

}  // namespace

frmTL42RQ_ISO14443A_UI::frmTL42RQ_ISO14443A_UI(QWidget* parent)
    : Panel(glob::PanelId::ISO14443A, "frmTL42RQ_ISO14443A_UI", parent) {
  setWindowTitle(iso14443a::kWindowTitle);
  buildControls();
  HandlerScope scope(this);
  load();
}

frmTL42RQ_ISO14443A_UI::~frmTL42RQ_ISO14443A_UI() { setBusy(false); }

// --- building the window ---------------------------------------------------------------------

void frmTL42RQ_ISO14443A_UI::buildControls() {
  auto* main = new QHBoxLayout(this);

  // Left: the title, the flag, the commands and the anticollision process.
  auto* left = new QVBoxLayout;
  lbl_title_ISO14443A[2] = label("lbl_title_ISO14443A_2", "", this);
  QFont titleFont = lbl_title_ISO14443A[2]->font();
  titleFont.setBold(true);
  titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
  lbl_title_ISO14443A[2]->setFont(titleFont);
  left->addWidget(lbl_title_ISO14443A[2]);

  fraISO14443A_TL42RQ_TransmissionFlag =
      named(new QGroupBox(" TL42RQ ISO14443-A Transmission flag", this), "fraISO14443A_TL42RQ_TransmissionFlag");
  {
    auto* g = new QGridLayout(fraISO14443A_TL42RQ_TransmissionFlag);
    lbl_ISO14443A_transFlag =
        label("lbl_ISO14443A_transFlag", "Transmission Flag : ", fraISO14443A_TL42RQ_TransmissionFlag);
    txt_ISO14443A_transFlag = new HexLineEdit("txt_ISO14443A_transFlag", reader::FieldKind::Hexadecimal,
                                              fraISO14443A_TL42RQ_TransmissionFlag);
    txt_ISO14443A_transFlag->setMaxLength(2);
    txt_ISO14443A_transFlag->setFixedWidth(kByteBoxWidth);
    txt_ISO14443A_transFlag->setText("00");
    g->addWidget(lbl_ISO14443A_transFlag, 0, 0);
    g->addWidget(txt_ISO14443A_transFlag, 0, 1, Qt::AlignLeft);
    for (int i = 7; i >= 0; --i) {
      auto* box = named(new QCheckBox(kTransmissionFlagCaptions[i], fraISO14443A_TL42RQ_TransmissionFlag),
                        QString("chk_TL42RQ_transmission_flag_%1").arg(i));
      chk_TL42RQ_transmission_flag[i] = box;
      g->addWidget(box, 8 - i, 0, 1, 2);
    }
    g->setColumnStretch(1, 1);
  }
  left->addWidget(fraISO14443A_TL42RQ_TransmissionFlag);

  auto* commands = named(new QGroupBox(this), "fraISO14443A_commands");
  {
    auto* g = new QGridLayout(commands);
    cmd_ISO14443A_REQA = button("cmd_ISO14443A_REQA", "REQA", commands);
    cmd_ISO14443A_WUPA = button("cmd_ISO14443A_WUPA", "WUPA", commands);
    cmd_ISO14443A_HALT = button("cmd_ISO14443A_HALT", "HALT", commands);
    g->addWidget(cmd_ISO14443A_REQA, 0, 0);
    g->addWidget(cmd_ISO14443A_WUPA, 0, 1);
    g->addWidget(cmd_ISO14443A_HALT, 0, 2);
    Line[0] = divider("Line_0", commands);
    g->addWidget(Line[0], 1, 0, 1, 4);
    for (int i = 0; i < 3; ++i) {
      cmd_ISO14443A_Anticol[i] = button(QString("cmd_ISO14443A_Anticol_%1").arg(i), kAnticolCaptions[i], commands);
      g->addWidget(cmd_ISO14443A_Anticol[i], 2, i);
    }
    txtISO14443A_Anticol_Arg = lineEdit("txtISO14443A_Anticol_Arg", commands, 2);
    txtISO14443A_Anticol_Arg->setText("20");
    txtISO14443A_Anticol_Arg->setFixedWidth(kByteBoxWidth);
    g->addWidget(txtISO14443A_Anticol_Arg, 2, 3);
    Line[1] = divider("Line_1", commands);
    g->addWidget(Line[1], 3, 0, 1, 4);
    for (int i = 0; i < 3; ++i) {
      cmd_ISO14443A_Select[i] = button(QString("cmd_ISO14443A_Select_%1").arg(i), kSelectCaptions[i], commands);
      g->addWidget(cmd_ISO14443A_Select[i], 4, i);
    }
    lblISO14443A_DataForSelect = label("lblISO14443A_DataForSelect", "data for Select ", commands);
    txtUIDforSelect123 = lineEdit("txtUIDforSelect123", commands, 16);
    g->addWidget(lblISO14443A_DataForSelect, 5, 0);
    g->addWidget(txtUIDforSelect123, 5, 1, 1, 3);
    Line[2] = divider("Line_2", commands);
    g->addWidget(Line[2], 6, 0, 1, 4);

    // The TOPAZ commands take the places of the activation commands in that variant.
    cmd_ISO14443A_TOPAZ_REQA = button("cmd_ISO14443A_TOPAZ_REQA", "REQA", commands);
    cmd_ISO14443A_TOPAZ_RID = button("cmd_ISO14443A_TOPAZ_RID", "RID", commands);
    g->addWidget(cmd_ISO14443A_TOPAZ_REQA, 7, 0);
    g->addWidget(cmd_ISO14443A_TOPAZ_RID, 7, 1);
    lblHR0_TOPAZ = label("lblHR0_TOPAZ", "HR0 =", commands);
    txtHR0_TOPAZ = lineEdit("txtHR0_TOPAZ", commands, 16);
    txtHR0_TOPAZ->setReadOnly(true);
    lblHR1_TOPAZ = label("lblHR1_TOPAZ", "HR1 =", commands);
    txtHR1_TOPAZ = lineEdit("txtHR1_TOPAZ", commands, 16);
    txtHR1_TOPAZ->setReadOnly(true);
    lblUID_TOPAZ = label("lblUID_TOPAZ", "UID =", commands);
    txtUID_cmdSelect = new HexLineEdit("txtUID_cmdSelect", reader::FieldKind::Hexadecimal, commands);
    txtUID_cmdSelect->setMaxLength(16);
    txtUID_cmdSelect->setReadOnly(true);
    g->addWidget(lblHR0_TOPAZ, 8, 0);
    g->addWidget(txtHR0_TOPAZ, 8, 1, 1, 3);
    g->addWidget(lblHR1_TOPAZ, 9, 0);
    g->addWidget(txtHR1_TOPAZ, 9, 1, 1, 3);
    g->addWidget(lblUID_TOPAZ, 10, 0);
    g->addWidget(txtUID_cmdSelect, 10, 1, 1, 3);
    cmd_ISO14443A_TOPAZ_Write_E = button("cmd_ISO14443A_TOPAZ_Write_E", "Write_E", commands);
    cmd_ISO14443A_TOPAZ_Write_NE = button("cmd_ISO14443A_TOPAZ_Write_NE", "Write_NE", commands);
    g->addWidget(cmd_ISO14443A_TOPAZ_Write_E, 11, 0);
    g->addWidget(cmd_ISO14443A_TOPAZ_Write_NE, 11, 1);
  }
  left->addWidget(commands);

  FraAnticolRoutine =
      named(new QGroupBox("      ISO14443-A anticolision process      ", this), "FraAnticolRoutine");
  {
    auto* v = new QVBoxLayout(FraAnticolRoutine);
    cmd_ISO14443A_Anticol_Process = button("cmd_ISO14443A_Anticol_Process", "Anticolision Process", FraAnticolRoutine);
    v->addWidget(cmd_ISO14443A_Anticol_Process);
    fgAnticolProcess = named(new QTableWidget(8, 3, FraAnticolRoutine), "fgAnticolProcess");
    fgAnticolProcess->horizontalHeader()->setVisible(false);
    fgAnticolProcess->verticalHeader()->setVisible(false);
    fgAnticolProcess->setEditTriggers(QAbstractItemView::NoEditTriggers);
    fgAnticolProcess->verticalHeader()->setDefaultSectionSize(20);
    QFont fixed("Courier New");
    fixed.setStyleHint(QFont::Monospace);
    fixed.setPointSize(8);
    fgAnticolProcess->setFont(fixed);
    fgAnticolProcess->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    fgAnticolProcess->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Wide enough for its three columns, so that the grid shows whole.
    fgAnticolProcess->setMinimumWidth(kGridColumnWidths[0] + kGridColumnWidths[1] + kGridColumnWidths[2] + 4);
    for (int r = 0; r < 8; ++r)
      for (int c = 0; c < 3; ++c) {
        auto* item = new QTableWidgetItem;
        // The fixed row and column look like headers, as a grid's fixed cells do.
        if (r == 0 || c == 0) item->setBackground(QApplication::palette().color(QPalette::Button));
        fgAnticolProcess->setItem(r, c, item);
      }
    fgAnticolProcess->setFixedHeight(8 * 20 + 4);
    v->addWidget(fgAnticolProcess);
    auto* uidRow = new QHBoxLayout;
    lblUID = label("lblUID", "UID", FraAnticolRoutine);
    txtAnticolisionProcessUID = lineEdit("txtAnticolisionProcessUID", FraAnticolRoutine);
    txtAnticolisionProcessUID->setReadOnly(true);
    uidRow->addWidget(lblUID);
    uidRow->addWidget(txtAnticolisionProcessUID, 1);
    v->addLayout(uidRow);
  }
  left->addWidget(FraAnticolRoutine);
  left->addStretch();
  main->addLayout(left);

  // Centre: the analysis of the last answer, the frames, memory and NDEF.
  auto* centre = new QVBoxLayout;
  fraISO14443A_answer_analysis =
      named(new QGroupBox(" TL42RQ ISO14443-A Response analysis", this), "fraISO14443A_answer_analysis");
  {
    auto* g = new QGridLayout(fraISO14443A_answer_analysis);
    for (int i = 0; i < 6; ++i) {
      lblISO14443A_answer_analysis[i] = label(QString("lblISO14443A_answer_analysis_%1").arg(i), kAnalysisCaptions[i],
                                              fraISO14443A_answer_analysis);
      lblAnswerAnalysis[i] = label(QString("lblAnswerAnalysis_%1").arg(i), "", fraISO14443A_answer_analysis);
      lblAnswerAnalysis[i]->setFrameShape(QFrame::Panel);
      lblAnswerAnalysis[i]->setFrameShadow(QFrame::Sunken);
      lblAnswerAnalysis[i]->setTextInteractionFlags(Qt::TextSelectableByMouse);
      lblAnswerAnalysis[i]->setMinimumWidth(60);
      g->addWidget(lblISO14443A_answer_analysis[i], i, 0);
      g->addWidget(lblAnswerAnalysis[i], i, 1);
    }
    for (int i = 0; i < 8; ++i) {
      chk_respflag[i] = named(new QCheckBox(kRespFlagCaptions[i], fraISO14443A_answer_analysis),
                              QString("chk_respflag_%1").arg(i));
      g->addWidget(chk_respflag[i], 7 - i, 2);
    }
    g->setColumnStretch(1, 1);
  }
  centre->addWidget(fraISO14443A_answer_analysis);

  {
    auto* g = new QGridLayout;
    lbl_ISO14443A_request = label("lbl_ISO14443A_request", "request =", this);
    txt_ISO14443A_request = lineEdit("txt_ISO14443A_request", this);
    txt_ISO14443A_request->setReadOnly(true);
    lbl_ISO14443A_answer = label("lbl_ISO14443A_answer", "answer =", this);
    txt_ISO14443A_answer = lineEdit("txt_ISO14443A_answer", this);
    txt_ISO14443A_answer->setReadOnly(true);
    txt_ISO14443A_AnyFrame = new FrameLineEdit("txt_ISO14443A_AnyFrame", this);
    cmd_ISO14443A_SendFrame = button("cmd_ISO14443A_SendFrame", "Send any frame", this);
    g->addWidget(lbl_ISO14443A_request, 0, 0);
    g->addWidget(txt_ISO14443A_request, 0, 1);
    g->addWidget(lbl_ISO14443A_answer, 1, 0);
    g->addWidget(txt_ISO14443A_answer, 1, 1);
    g->addWidget(cmd_ISO14443A_SendFrame, 2, 0);
    g->addWidget(txt_ISO14443A_AnyFrame, 2, 1);
    centre->addLayout(g);
  }

  FraAddressRow = named(new QGroupBox("RF block address", this), "FraAddressRow");
  {
    auto* h = new QHBoxLayout(FraAddressRow);
    for (int i = 0; i < 2; ++i) {
      txtUserAddress[i] = new HexLineEdit(QString("txtUserAddress_%1").arg(i), reader::FieldKind::Hexadecimal,
                                          FraAddressRow);
      txtUserAddress[i]->setMaxLength(2);
      txtUserAddress[i]->setText("00");
      txtUserAddress[i]->setFixedWidth(2 * kByteBoxWidth);
      h->addWidget(txtUserAddress[i]);
    }
    cmd_ISO14443A_Read = button("cmd_ISO14443A_Read", "Read", FraAddressRow);
    cmd_ISO14443A_Write = button("cmd_ISO14443A_Write", "Write", FraAddressRow);
    cmd_ISO14443A_Write_compatibility = button("cmd_ISO14443A_Write_compatibility", "Compatibility Write", FraAddressRow);
    cmdStopCommand = button("cmdStopCommand", "STOP", FraAddressRow);
    cmdStopCommand->setVisible(false);
    h->addWidget(cmd_ISO14443A_Read);
    h->addWidget(cmd_ISO14443A_Write);
    h->addWidget(cmd_ISO14443A_Write_compatibility);
    h->addWidget(cmdStopCommand);
    h->addStretch();
  }
  centre->addWidget(FraAddressRow);

  MemoryPageView::Host host;
  host.addressWidth = [this] { return addressBoxWidth(); };
  pageView_ = new MemoryPageView(pageview::Variant::Iso14443A, host, this);
  centre->addWidget(pageView_, 1);

  FraNDEFiso14443A = named(new QGroupBox("NDEF", this), "FraNDEFiso14443A");
  {
    auto* g = new QGridLayout(FraNDEFiso14443A);
    cmdReadNdefIso1443A = button("cmdReadNdefIso1443A", "Read NDEF", FraNDEFiso14443A);
    txtNDEFmessage = named(new QPlainTextEdit(FraNDEFiso14443A), "txtNDEFmessage");
    txtNDEFmessage->setReadOnly(true);
    lblDetectedUrl = label("lblDetectedUrl", "URL : ", FraNDEFiso14443A);
    lblInternetLink = label("lblInternetLink", "", FraNDEFiso14443A);
    lblDetectedUrl->setVisible(false);
    lblInternetLink->setVisible(false);
    g->addWidget(cmdReadNdefIso1443A, 0, 0);
    g->addWidget(lblDetectedUrl, 0, 1);
    g->addWidget(lblInternetLink, 0, 2);
    g->addWidget(txtNDEFmessage, 1, 0, 1, 3);
    g->setColumnStretch(2, 1);
  }
  centre->addWidget(FraNDEFiso14443A);
  main->addLayout(centre, 2);

  // Right: the trace.
  auto* right = new QVBoxLayout;
  createLogView("rtfISO14443ALogEdit");
  right->addWidget(logView(), 1);
  right->addWidget(createLogButtons());
  main->addLayout(right, 2);
  resize(1280, 820);

  // Events.
  connect(cmd_ISO14443A_REQA, &QPushButton::clicked, this, [this] { cmd_ISO14443A_REQA_Click(); });
  connect(cmd_ISO14443A_WUPA, &QPushButton::clicked, this, [this] { cmd_ISO14443A_WUPA_Click(); });
  connect(cmd_ISO14443A_HALT, &QPushButton::clicked, this, [this] { cmd_ISO14443A_HALT_Click(); });
  for (int i = 0; i < 3; ++i) {
    connect(cmd_ISO14443A_Anticol[i], &QPushButton::clicked, this, [this, i] { cmd_ISO14443A_Anticol_Click(i); });
    connect(cmd_ISO14443A_Select[i], &QPushButton::clicked, this, [this, i] { cmd_ISO14443A_Select_Click(i); });
  }
  connect(cmd_ISO14443A_SendFrame, &QPushButton::clicked, this, [this] { cmd_ISO14443A_SendFrame_Click(); });
  connect(cmd_ISO14443A_Anticol_Process, &QPushButton::clicked, this, [this] { cmd_ISO14443A_Anticol_Process_Click(); });
  connect(cmd_ISO14443A_TOPAZ_REQA, &QPushButton::clicked, this, [this] { cmd_ISO14443A_TOPAZ_REQA_Click(); });
  connect(cmd_ISO14443A_TOPAZ_RID, &QPushButton::clicked, this, [this] { cmd_ISO14443A_TOPAZ_RID_Click(); });
  connect(cmd_ISO14443A_Read, &QPushButton::clicked, this, [this] { cmd_ISO14443A_Read_Click(); });
  connect(cmd_ISO14443A_Write, &QPushButton::clicked, this, [this] { cmd_ISO14443A_Write_Click(); });
  connect(cmd_ISO14443A_Write_compatibility, &QPushButton::clicked, this,
          [this] { cmd_ISO14443A_Write_compatibility_Click(); });
  connect(cmd_ISO14443A_TOPAZ_Write_E, &QPushButton::clicked, this, [this] { cmd_ISO14443A_TOPAZ_Write_E_Click(); });
  connect(cmd_ISO14443A_TOPAZ_Write_NE, &QPushButton::clicked, this, [this] { cmd_ISO14443A_TOPAZ_Write_NE_Click(); });
  connect(cmdStopCommand, &QPushButton::clicked, this, [this] { cmdStopCommand_Click(); });
  connect(pageView_, &MemoryPageView::writeClicked, this, [this] { cmdWriteUser_Click(); });
  connect(pageView_, &MemoryPageView::cancelClicked, this, [this] { cmdCancelWriteTest_Click(); });
  connect(cmdReadNdefIso1443A, &QPushButton::clicked, this, [this] { cmdReadNdefIso1443A_Click(); });
  txt_ISO14443A_transFlag->installEventFilter(this);
}

bool frmTL42RQ_ISO14443A_UI::eventFilter(QObject* watched, QEvent* event) {
  if (watched == txt_ISO14443A_transFlag && event->type() == QEvent::FocusOut) txt_ISO14443A_transFlag_LostFocus();
  return Panel::eventFilter(watched, event);
}

// --- opening -----------------------------------------------------------------------------------

void frmTL42RQ_ISO14443A_UI::load() {
  auto& g = glob::state();
  const shell::ProductSizes& sizes = shell::productSizes();
  g.scriptLoop = false;
  log().clear();
  pageView_->lstReadView()->clear();
  const int width = iso15693::addressBoxWidth(sizes.memorySize);
  for (HexLineEdit* box : txtUserAddress) box->setMaxLength(width);
  txtUserAddress[0]->setText(QString(width, QLatin1Char('0')));
  txtUserAddress[1]->setText(latin1(iso15693::addressBoxText(sizes.blockAddressMask, width)));
  g.rfAddressBytes = 1;

  variant_ = iso14443a::variantOf(shell::currentProduct().Reference());
  const iso14443a::VariantTexts& t = iso14443a::variantTexts(variant_);
  lbl_title_ISO14443A[2]->setText(t.title);
  applyVariant();

  // The echo, once more when it failed; nothing stops the opening.
  reader::Answer echo = exchange(Op::Echo);
  log().untitled(reader::logWord(Op::Echo), showAnswer(echo));
  if (!echo.good("5500")) {
    echo = exchange(Op::Echo);
    log().untitled(reader::logWord(Op::Echo), showAnswer(echo));
  }

  const reader::Answer select = exchange(Op::Select, t.protocolText);
  txt_ISO14443A_request->clear();
  const std::string selectAnswer = showAnswer(select);
  log().titled(t.configurationTitle, reader::logWord(Op::Select), t.protocolText, selectAnswer);

  // The register writes go without reconnect and without a look at their answers; each
  // entry shows the answer of the Protocol Select once more, as the panel always has.
  for (const iso14443a::ConfigWrite& w : iso14443a::openingWrites(variant_, g.iso14443AModulationGain)) {
    reader::callOnce(reader::driver(), Op::KQCmd, "01" + w.frame);
    txt_ISO14443A_request->clear();
    txt_ISO14443A_answer->setText(latin1(selectAnswer));
    log().titled(w.title, iso14443a::kKQCmdLogWord, "01 " + w.frame, text(txt_ISO14443A_answer));
  }
  log().appendRaw(reader::kNewLine);

  if (variant_ == Variant::Normal) {
    fgAnticolProcess->item(0, 0)->setText(" ");
    fgAnticolProcess->item(0, 1)->setText("answer");
    fgAnticolProcess->item(0, 2)->setText("request");
    for (int c = 0; c < 3; ++c) fgAnticolProcess->setColumnWidth(c, kGridColumnWidths[static_cast<std::size_t>(c)]);
  }
  txt_ISO14443A_request->clear();
  txt_ISO14443A_answer->clear();
}

void frmTL42RQ_ISO14443A_UI::applyVariant() {
  const bool topaz = variant_ == Variant::Topaz;
  std::vector<QWidget*> normal{FraAnticolRoutine,
                               cmd_ISO14443A_REQA,
                               cmd_ISO14443A_WUPA,
                               cmd_ISO14443A_HALT,
                               cmd_ISO14443A_Write,
                               cmd_ISO14443A_Write_compatibility,
                               lblISO14443A_DataForSelect,
                               txtUIDforSelect123};
  for (int i = 0; i < 3; ++i) {
    normal.push_back(cmd_ISO14443A_Anticol[i]);
    normal.push_back(cmd_ISO14443A_Select[i]);
    normal.push_back(Line[i]);
    // The tail boxes go with their captions: a TOPAZ answer has no tail.
    normal.push_back(lblISO14443A_answer_analysis[i + 3]);
    normal.push_back(lblAnswerAnalysis[i + 3]);
  }
  for (QCheckBox* box : chk_respflag) normal.push_back(box);
  const std::vector<QWidget*> topazOnly{cmd_ISO14443A_TOPAZ_REQA, cmd_ISO14443A_TOPAZ_RID, lblHR0_TOPAZ,
                                        txtHR0_TOPAZ,             lblHR1_TOPAZ,            txtHR1_TOPAZ,
                                        lblUID_TOPAZ,             txtUID_cmdSelect,        cmd_ISO14443A_TOPAZ_Write_E,
                                        cmd_ISO14443A_TOPAZ_Write_NE};
  for (QWidget* w : normal) w->setVisible(!topaz);
  for (QWidget* w : topazOnly) w->setVisible(topaz);
  // The NDEF frame is not reached from the panel.
  FraNDEFiso14443A->setVisible(false);
}

reader::ReconnectKind frmTL42RQ_ISO14443A_UI::reconnectKind() const {
  return iso14443a::variantTexts(variant_).reconnect;
}

void frmTL42RQ_ISO14443A_UI::DEMO_TL42RQ_A_reconnect_iso14443A(std::int32_t& status) {
  reader::DEMO_TL42RQ_A_reconnect_iso14443A(reader::driver(), status);
}

void frmTL42RQ_ISO14443A_UI::DEMO_TL42RQ_A_reconnect_iso14443A_TOPAZ(std::int32_t& status) {
  reader::DEMO_TL42RQ_A_reconnect_iso14443A_TOPAZ(reader::driver(), status);
}

void frmTL42RQ_ISO14443A_UI::clearFlagsOnClose() {
  auto& g = glob::state();
  g.autoLoopActive = false;
  g.transferRunning = false;
  g.writeMode = 0;
  setBusy(false);
}

void frmTL42RQ_ISO14443A_UI::setBusy(bool busy) {
  if (busy == busy_) return;
  busy_ = busy;
  if (busy) QApplication::setOverrideCursor(Qt::WaitCursor);
  else QApplication::restoreOverrideCursor();
}

void frmTL42RQ_ISO14443A_UI::setCommandsEnabled(bool enabled) {
  const std::vector<QWidget*> switched{cmd_ISO14443A_Read,
                                       cmd_ISO14443A_Write,
                                       cmd_ISO14443A_Write_compatibility,
                                       cmd_ISO14443A_TOPAZ_Write_E,
                                       cmd_ISO14443A_TOPAZ_Write_NE,
                                       cmd_ISO14443A_Anticol[0],
                                       cmd_ISO14443A_Anticol[1],
                                       cmd_ISO14443A_Anticol[2],
                                       cmd_ISO14443A_Select[0],
                                       cmd_ISO14443A_Select[1],
                                       cmd_ISO14443A_Select[2],
                                       cmd_ISO14443A_REQA,
                                       cmd_ISO14443A_WUPA,
                                       cmd_ISO14443A_HALT,
                                       cmd_ISO14443A_SendFrame,
                                       txtUID_cmdSelect,
                                       txtUserAddress[0],
                                       txtUserAddress[1],
                                       txt_ISO14443A_AnyFrame,
                                       findChild<QPushButton*>("cmdSaveLog"),
                                       findChild<QPushButton*>("cmdClearLog")};
  for (QWidget* w : switched)
    if (w) w->setEnabled(enabled);
  glob::state().stopRequested = false;
}

// --- the three steps every handler shares -------------------------------------------------------

std::string frmTL42RQ_ISO14443A_UI::transFlagText() const { return text(txt_ISO14443A_transFlag); }
std::string frmTL42RQ_ISO14443A_UI::answerText() const { return text(txt_ISO14443A_answer); }

void frmTL42RQ_ISO14443A_UI::showTransmissionFlag(const std::string& flag) {
  txt_ISO14443A_transFlag->setText(latin1(flag));
  const std::array<bool, 8> bits = iso14443a::flagBits(flag);
  for (int i = 7; i >= 0; --i) chk_TL42RQ_transmission_flag[static_cast<std::size_t>(i)]->setChecked(bits[static_cast<std::size_t>(i)]);
}

void frmTL42RQ_ISO14443A_UI::clearAnswerAnalysis() {
  txt_ISO14443A_answer->clear();
  for (QLabel* l : lblAnswerAnalysis) l->setText("");
  for (QCheckBox* b : chk_respflag) b->setChecked(false);
}

void frmTL42RQ_ISO14443A_UI::fillAnswerAnalysis() {
  const iso14443a::Analysis a = iso14443a::analyseAnswer(answerText());
  for (std::size_t i = 0; i < a.fields.size(); ++i) lblAnswerAnalysis[i]->setText(latin1(a.fields[i]));
  for (std::size_t i = 0; i < a.flags.size(); ++i) chk_respflag[i]->setChecked(a.flags[i]);
}

std::string frmTL42RQ_ISO14443A_UI::showAnswer(const reader::Answer& a) {
  txt_ISO14443A_answer->setText(latin1(a.text));
  // Read back from the box: that is what cuts the answer at its first NUL.
  return answerText();
}

std::string frmTL42RQ_ISO14443A_UI::sendFrame(ReconnectKind kind, const std::string& title, const std::string& frame) {
  auto& d = reader::driver();
  const reader::Answer a = reader::exchange(d, Op::SendReceive, frame, reader::reconnectWith(d, kind));
  txt_ISO14443A_request->setText(latin1(frame));
  const std::string answer = showAnswer(a);
  log().titled(title, reader::logWord(Op::SendReceive), frame, answer);
  return answer;
}

// --- single commands ---------------------------------------------------------------------------

void frmTL42RQ_ISO14443A_UI::singleCommand(Single c, int index) {
  HandlerScope scope(this);
  showTransmissionFlag(iso14443a::singleFlag(c));
  clearAnswerAnalysis();
  const std::string frame = iso14443a::singleFrame(c, index, transFlagText(), text(txtISO14443A_Anticol_Arg),
                                                   text(txtUIDforSelect123));
  const std::string answer = sendFrame(ReconnectKind::Iso14443A, iso14443a::singleTitle(c, index), frame);
  // Only a tag answer is cut; the chip's error codes end here with empty boxes.
  if (answer.compare(0, 2, "80") == 0) fillAnswerAnalysis();
}

void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_REQA_Click() { singleCommand(Single::Reqa, 0); }
void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_WUPA_Click() { singleCommand(Single::Wupa, 0); }
void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_HALT_Click() { singleCommand(Single::Halt, 0); }
void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_Anticol_Click(int index) { singleCommand(Single::Anticol, index); }
void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_Select_Click(int index) { singleCommand(Single::Select, index); }

void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_SendFrame_Click() {
  HandlerScope scope(this);
  const std::string frame = text(txt_ISO14443A_AnyFrame);
  if (frame.empty()) {
    yieldEvents(1);
    return;
  }
  // The flag display and the analysis stay as they were.
  sendFrame(ReconnectKind::Iso14443A, iso14443a::kSendFrameTitle, frame);
}

void frmTL42RQ_ISO14443A_UI::txt_ISO14443A_transFlag_LostFocus() {
  const std::string t = transFlagText();
  if (t.empty()) return;
  txt_ISO14443A_transFlag->setText(latin1(iso14443a::flagBoxOnLeave(t)));
}

// --- the anticollision process -------------------------------------------------------------------

void frmTL42RQ_ISO14443A_UI::clearAnticolGrid() {
  // Every data cell; the fixed row keeps the headers written at opening.
  for (int r = 1; r < fgAnticolProcess->rowCount(); ++r)
    for (int c = 0; c < fgAnticolProcess->columnCount(); ++c) fgAnticolProcess->item(r, c)->setText("");
}

void frmTL42RQ_ISO14443A_UI::writeGridRow(const iso14443a::StageRow& row, const std::string& request,
                                           const std::string& answer) {
  fgAnticolProcess->item(row.row, 0)->setText(row.label);
  fgAnticolProcess->item(row.row, 1)->setText(latin1(request + " "));
  fgAnticolProcess->item(row.row, 2)->setText(latin1(answer + " "));
}

void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_Anticol_Process_Click() {
  HandlerScope scope(this);
  txtAnticolisionProcessUID->clear();
  clearAnticolGrid();
  const std::string argument = text(txtISO14443A_Anticol_Arg);
  auto& d = reader::driver();
  const auto stage = [&](Stage s, const std::string& uidSegment) {
    const iso14443a::StageRow& row = iso14443a::stageRow(s);
    showTransmissionFlag(row.flag);
    clearAnswerAnalysis();
    const std::string frame = iso14443a::stageFrame(s, transFlagText(), argument, uidSegment);
    const reader::Answer a =
        reader::exchange(d, Op::SendReceive, frame, reader::reconnectWith(d, ReconnectKind::Iso14443A));
    txt_ISO14443A_request->setText(latin1(frame));
    const std::string answer = showAnswer(a);
    // The row is written before the answer is judged.
    writeGridRow(row, frame, answer);
    log().titled(row.title, reader::logWord(Op::SendReceive), frame, answer);
    return answer;
  };
  const auto tagAnswered = [](const std::string& answer) { return answer.compare(0, 2, "80") == 0; };
  // One level: anticollision, then select with what it gave. True when the UID goes on.
  const auto level = [&](Stage anticol, Stage select, bool first) {
    const std::string a = stage(anticol, "");
    if (!tagAnswered(a)) return false;
    fillAnswerAnalysis();
    const std::string segment = iso14443a::uidSegmentOf(a);
    const std::string part = iso14443a::uidPartOf(a);
    if (first) txtAnticolisionProcessUID->setText(latin1(part));
    else txtAnticolisionProcessUID->setText(txtAnticolisionProcessUID->text() + latin1(part));
    const std::string s = stage(select, segment);
    if (!tagAnswered(s)) return false;
    fillAnswerAnalysis();
    yieldEvents(1);
    return segment.compare(0, 2, "88") == 0 && !closing();
  };

  const std::string reqa = stage(Stage::Reqa, "");
  bool goOn = true;
  if (tagAnswered(reqa)) {
    fillAnswerAnalysis();
    yieldEvents(1);
    goOn = !closing();
  } else if (reqa.compare(0, 2, "90") != 0) {
    // 86 to 8E and every other answer end the run alike.
    goOn = false;
  }
  if (goOn && level(Stage::Anticol1, Stage::Select1, true) && level(Stage::Anticol2, Stage::Select2, false)) {
    // Level 3 as the process has it: code 93 again, and a select without UID bytes.
    const std::string a = stage(Stage::Anticol3, "");
    if (tagAnswered(a)) {
      fillAnswerAnalysis();
      txtAnticolisionProcessUID->setText(txtAnticolisionProcessUID->text() + latin1(iso14443a::uidPartOf(a)));
      if (tagAnswered(stage(Stage::Select3, iso14443a::uidSegmentOf(a)))) fillAnswerAnalysis();
    }
  }
  yieldEvents(1);
}

// --- TOPAZ -------------------------------------------------------------------------------------------

void frmTL42RQ_ISO14443A_UI::topazActivation(bool rid) {
  HandlerScope scope(this);
  txtHR0_TOPAZ->clear();
  txtHR1_TOPAZ->clear();
  txtUID_cmdSelect->clear();
  clearAnswerAnalysis();
  showTransmissionFlag(rid ? iso14443a::kTopazFlag : "07");
  // RID reconnects in the normal protocol; REQA in TOPAZ's.
  const std::string answer =
      rid ? sendFrame(ReconnectKind::Iso14443A, iso14443a::kTopazRidTitle, iso14443a::topazRidFrame())
          : sendFrame(ReconnectKind::Iso14443ATopaz, iso14443a::kTopazReqaTitle, iso14443a::kTopazReqaFrame);
  if (answer.compare(0, 2, "80") != 0) return;
  const std::array<std::string, 3> fields = iso14443a::topazAnalysis(answer);
  for (std::size_t i = 0; i < fields.size(); ++i) lblAnswerAnalysis[i]->setText(latin1(fields[i]));
  if (!rid) return;
  const iso14443a::RidBoxes boxes = iso14443a::ridBoxes(answer);
  txtHR0_TOPAZ->setText(latin1(boxes.hr0));
  txtHR1_TOPAZ->setText(latin1(boxes.hr1));
  txtUID_cmdSelect->setText(latin1(boxes.uid));
}

void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_TOPAZ_REQA_Click() { topazActivation(false); }
void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_TOPAZ_RID_Click() { topazActivation(true); }

// --- memory ------------------------------------------------------------------------------------------

int frmTL42RQ_ISO14443A_UI::addressBoxWidth() const { return std::max(1, txtUserAddress[0]->maxLength()); }

long frmTL42RQ_ISO14443A_UI::addressBoxValue(int index) const {
  const auto v = hex::toNumber(text(txtUserAddress[static_cast<std::size_t>(index)]));
  return static_cast<long>(v.value_or(0) & 0x7FFFFFFF) & shell::productSizes().blockAddressMask;
}

void frmTL42RQ_ISO14443A_UI::setAddressBoxesReadOnly(bool readOnly) {
  for (HexLineEdit* box : txtUserAddress) box->setReadOnly(readOnly);
}

bool frmTL42RQ_ISO14443A_UI::checkAddressBoxes() {
  for (HexLineEdit* box : txtUserAddress)
    if (!reader::checkHexAddress(text(box))) {
      dialogs().message(this, reader::kInvalidAddress.text, reader::kInvalidAddress.title, MessageIcon::Exclamation);
      return false;
    }
  return true;
}

int frmTL42RQ_ISO14443A_UI::readMemoryBlocks(long& address, long count, int pageSize, int addressBytes) {
  auto& g = glob::state();
  const long mask = shell::productSizes().blockAddressMask;
  memoryBuffer().Clear();
  const bool topaz = variant_ == Variant::Topaz;
  showTransmissionFlag(topaz ? iso14443a::kTopazFlag : "28");
  clearAnswerAnalysis();
  int added = 0;
  // TOPAZ reads one byte an exchange; the others four pages.
  const long step = topaz ? 1 : 4;
  for (long done = 0; done < count; done += step) {
    if (topaz) {
      const std::string answer = sendFrame(ReconnectKind::Iso14443ATopaz, iso14443a::kTopazReadTitle,
                                           iso14443a::topazReadFrame(address, text(txtUID_cmdSelect)));
      memoryBuffer().AddItem(iso14443a::topazReadRow(answer));
    } else {
      const std::string answer =
          sendFrame(ReconnectKind::Iso14443A, iso14443a::kReadTitle, iso14443a::readFrame(address, addressBytes));
      if (answer.compare(0, 2, "80") == 0) fillAnswerAnalysis();
      for (std::string& row : iso14443a::readRows(answer, pageSize)) memoryBuffer().AddItem(std::move(row));
    }
    added += static_cast<int>(step);
    address = (address + step) & mask;
    yieldEvents(1);
    if (g.stopRequested || closing()) break;
  }
  return added;
}

void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_Read_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  setCommandsEnabled(false);
  cmdStopCommand->setVisible(true);
  setBusy(true);
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  setAddressBoxesReadOnly(true);
  g.writeMode = 0;
  if (checkAddressBoxes()) {
    const long mask = shell::productSizes().blockAddressMask;
    const long start = addressBoxValue(0);
    const long end = addressBoxValue(1);
    txtUserAddress[0]->setText(latin1(iso15693::addressBoxText(start, addressBoxWidth())));
    txtUserAddress[1]->setText(latin1(iso15693::addressBoxText(end, addressBoxWidth())));
    const long count = variant_ == Variant::Topaz ? iso15693::rangeCount(start, end, mask)
                                                  : iso14443a::readPageCount(start, end, mask);
    pageView_->lstReadView()->clear();
    pageView_->lstReadView()->setEnabled(true);
    pageView_->lstReadView()->setVisible(true);
    long address = start;
    const int result = readMemoryBlocks(address, count, shell::currentProduct().PageSize(), g.rfAddressBytes);
    if (result > 0) pageView_->showReadRows(std::min(count, memoryBuffer().Size()), start);
  }
  setAddressBoxesReadOnly(false);
  setCommandsEnabled(true);
  cmdStopCommand->setVisible(false);
  setBusy(false);
}

void frmTL42RQ_ISO14443A_UI::cmdStopCommand_Click() {
  // Enabling first: setCommandsEnabled clears the request that follows.
  setCommandsEnabled(true);
  glob::state().stopRequested = true;
  cmdStopCommand->setVisible(false);
}

void frmTL42RQ_ISO14443A_UI::openWriteGrid(int writeMode, const char* pageSize, const char* caption) {
  setCommandsEnabled(false);
  if (!checkAddressBoxes()) {
    setCommandsEnabled(true);
    return;
  }
  glob::state().writeMode = writeMode;
  txtUserAddress[0]->setReadOnly(true);
  txtUserAddress[1]->setReadOnly(false);
  pageView_->cmdWriteUser()->setText(caption);
  pageView_->txtPageSize()->setText(pageSize);
  // A TOPAZ product writes one byte at a time, also through Compatibility Write.
  const int bytes = variant_ == Variant::Topaz ? 1 : static_cast<int>(pageview::numberOf(pageSize));
  pageView_->setPageGrid(bytes);
  pageView_->lstReadView()->setEnabled(false);
  pageView_->clearFill();
  pageView_->fraPageWrite()->setVisible(true);
  pageView_->PWData(0)->setFocus();
}

void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_Write_Click() {
  openWriteGrid(iso14443a::kModeWrite, "4", "Write");
}
void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_Write_compatibility_Click() {
  openWriteGrid(iso14443a::kModeCompatibilityWrite, "16", "Write Compatibility");
}
void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_TOPAZ_Write_E_Click() {
  openWriteGrid(iso14443a::kModeTopazWriteE, "1", "Write");
}
void frmTL42RQ_ISO14443A_UI::cmd_ISO14443A_TOPAZ_Write_NE_Click() {
  openWriteGrid(iso14443a::kModeTopazWriteNE, "1", "Write");
}

int frmTL42RQ_ISO14443A_UI::writeMemoryPage(long address, const std::string& data, int, int addressBytes) {
  auto& d = reader::driver();
  std::string answer;
  switch (glob::state().writeMode) {
    case iso14443a::kModeWrite:
      answer = sendFrame(ReconnectKind::Iso14443A, iso14443a::kWriteTitle,
                         iso14443a::writeFrame(address, data, addressBytes));
      break;
    case iso14443a::kModeCompatibilityWrite: {
      const auto frames = iso14443a::compatibilityWriteFrames(address, data, addressBytes);
      sendFrame(ReconnectKind::Iso14443A, iso14443a::kCompatibilityWriteTitle, frames[0]);
      // The data frame's entry has no title line of its own.
      const reader::Answer a =
          reader::exchange(d, Op::SendReceive, frames[1], reader::reconnectWith(d, ReconnectKind::Iso14443A));
      txt_ISO14443A_request->setText(latin1(frames[1]));
      answer = showAnswer(a);
      log().untitled(std::string(reader::logWord(Op::SendReceive)) + ", " + frames[1], answer);
      break;
    }
    case iso14443a::kModeTopazWriteE:
    case iso14443a::kModeTopazWriteNE: {
      const bool erase = glob::state().writeMode == iso14443a::kModeTopazWriteE;
      // The analysis boxes are this write's alone: a failed write must not show the
      // fields of the RID or of the write before it.
      clearAnswerAnalysis();
      answer = sendFrame(ReconnectKind::Iso14443ATopaz,
                         erase ? iso14443a::kTopazWriteETitle : iso14443a::kTopazWriteNETitle,
                         iso14443a::topazWriteFrame(erase, address, data, text(txtUID_cmdSelect)));
      if (iso14443a::goodWriteAnswer(answer)) {
        const std::array<std::string, 3> fields = iso14443a::topazAnalysis(answer);
        for (std::size_t i = 0; i < fields.size(); ++i) lblAnswerAnalysis[i]->setText(latin1(fields[i]));
      }
      break;
    }
    default:
      return 0;
  }
  memoryBuffer().AddItem(iso14443a::goodWriteAnswer(answer) ? iso14443a::kWriteDone : iso14443a::kWriteError);
  return 1;
}

void frmTL42RQ_ISO14443A_UI::cmdWriteUser_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  QPushButton* write = pageView_->cmdWriteUser();
  setCommandsEnabled(false);
  setBusy(true);
  pageView_->setGridEnabled(false);
  write->setEnabled(false);
  const auto closeGrid = [&] {
    pageView_->lstReadView()->setEnabled(false);
    pageView_->fraPageWrite()->setVisible(false);
    setAddressBoxesReadOnly(false);
    setCommandsEnabled(true);
    setBusy(false);
  };
  const auto finish = [&] {
    write->setEnabled(true);
    pageView_->setGridEnabled(true);
    pageView_->fraPageWrite()->setVisible(false);
    pageView_->clearFill();
    setCommandsEnabled(true);
    setBusy(false);
  };
  if (!reader::checkHexAddress(text(txtUserAddress[0]))) {
    dialogs().message(this, reader::kInvalidAddress.text, reader::kInvalidAddress.title, MessageIcon::Exclamation);
    return finish();
  }
  const long address = addressBoxValue(0);
  const int pageSize = static_cast<int>(pageview::numberOf(pageView_->pageSizeText()));
  const std::string data =
      variant_ == Variant::Topaz ? pageView_->PWData(0)->maskedText() : pageView_->gridData(pageSize);
  g.transferRunning = true;
  if (!reader::checkHexData(data, 1)) {
    dialogs().message(this, reader::kInvalidData.text, reader::kInvalidData.title, MessageIcon::Exclamation);
    // The write frame stays for another try.
    pageView_->setGridEnabled(true);
    write->setEnabled(true);
    setBusy(false);
    return;
  }
  do {
    pageView_->lstReadView()->clear();
    memoryBuffer().Clear();
    writeMemoryPage(address, data, pageSize, g.rfAddressBytes);
    yieldEvents(1);
    // One click writes one page; a range in the boxes closes the write at once.
    const auto last = hex::toNumber(text(txtUserAddress[1]));
    if (!last || static_cast<long>(*last) != address || closing()) return closeGrid();
    g.transferRunning = false;
    pageView_->showReadRows(memoryBuffer().Size(), address);
    yieldEvents(1);
    g.transferRunning = true;
    yieldEvents(1);
  } while (g.autoLoopActive && !closing());
  finish();
}

void frmTL42RQ_ISO14443A_UI::cmdCancelWriteTest_Click() {
  auto& g = glob::state();
  g.transferRunning = false;
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  if (g.autoLoopActive) g.autoLoopActive = false;
  setCommandsEnabled(true);
  setAddressBoxesReadOnly(false);
}

// --- NDEF ------------------------------------------------------------------------------------------

std::string frmTL42RQ_ISO14443A_UI::readNdefBlock(int page) {
  showTransmissionFlag("28");
  clearAnswerAnalysis();
  const std::string answer =
      sendFrame(ReconnectKind::Iso14443A, iso14443a::kReadTitle, iso14443a::ndefReadFrame(page));
  if (answer.compare(0, 2, "80") == 0) fillAnswerAnalysis();
  return iso14443a::ndefBlockText(answer);
}

void frmTL42RQ_ISO14443A_UI::decodeNdefMessage(const std::string& memory) {
  ndef::Events events;
  events.recordDone = [this](const std::string& record) {
    QString t = latin1(record);
    t.remove(QLatin1Char('\r'));
    QTextCursor c = txtNDEFmessage->textCursor();
    c.movePosition(QTextCursor::End);
    c.insertText(t);
    txtNDEFmessage->setTextCursor(c);
  };
  events.urlFound = [this](const std::string& link) {
    lblDetectedUrl->setVisible(true);
    lblInternetLink->setVisible(true);
    lblInternetLink->setText(latin1(link));
  };
  events.yield = [] { yieldEvents(1); };
  ndef::decodeNdefMessage(memory, events);
}

void frmTL42RQ_ISO14443A_UI::cmdReadNdefIso1443A_Click() {
  HandlerScope scope(this);
  txtNDEFmessage->clear();
  std::string memory;
  // The activation's outcome is not looked at: the reads tell.
  cmd_ISO14443A_Anticol_Process_Click();
  for (int page : iso14443a::kNdefPages) {
    if (closing()) return;
    const std::string block = readNdefBlock(page);
    if (block == "error") return;
    memory += block;
  }
  memory.erase(std::remove(memory.begin(), memory.end(), ' '), memory.end());
  decodeNdefMessage(memory);
}
