#include "iso14443b/ui/frmTL42RQ_ISO14443B_UI.h"

#include <QApplication>
#include <QCheckBox>
#include <QEvent>
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

#include "common/hex.h"
#include "console/ChipFrames.h"
#include "iso15693/ui/MemoryPageView.h"
#include "reader/Drivers.h"
#include "reader/HexText.h"
#include "reader/ui/HexFields.h"
#include "shell/Product.h"
#include "shell/ui/Dialogs.h"

using iso14443b::FamilyCommand;
using reader::Op;

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
QGroupBox* group(const QString& name, const char* caption, QWidget* parent) {
  return named(new QGroupBox(caption, parent), name);
}
HexLineEdit* hexBox(const QString& name, const char* initial, int maxLength, QWidget* parent,
                    reader::FieldKind kind = reader::FieldKind::Hexadecimal) {
  auto* box = new HexLineEdit(name, kind, parent);
  box->setMaxLength(maxLength);
  box->setText(initial);
  return box;
}
QLineEdit* readOnlyBox(const QString& name, QWidget* parent) {
  auto* box = named(new QLineEdit(parent), name);
  box->setReadOnly(true);
  return box;
}

// One twip is a fifteenth of a pixel at the usual 96 dots an inch.
constexpr int twipsToPixels(int twips) { return twips / 15; }

}  // namespace

frmTL42RQ_ISO14443B_UI::frmTL42RQ_ISO14443B_UI(QWidget* parent)
    : Panel(glob::PanelId::ISO14443B, "frmTL42RQ_ISO14443B_UI", parent) {
  setWindowTitle(iso14443b::kWindowTitle);
  buildControls();
  HandlerScope scope(this);
  load();
}

frmTL42RQ_ISO14443B_UI::~frmTL42RQ_ISO14443B_UI() { setBusy(false); }

// --- building the window ---------------------------------------------------------------------

void frmTL42RQ_ISO14443B_UI::buildControls() {
  auto* main = new QVBoxLayout(this);
  lbl_title_ISO14443B[2] = label("lbl_title_ISO14443B_2", iso14443b::kFamilyTitle, this);
  QFont titleFont = lbl_title_ISO14443B[2]->font();
  titleFont.setBold(true);
  titleFont.setPointSize(titleFont.pointSize() + 2);
  lbl_title_ISO14443B[2]->setFont(titleFont);
  main->addWidget(lbl_title_ISO14443B[2]);

  auto* faces = new QHBoxLayout;
  auto* left = new QVBoxLayout;
  auto* right = new QVBoxLayout;
  faces->addLayout(left, 1);
  faces->addLayout(right, 1);
  main->addLayout(faces);

  buildStandardFace(this);
  left->addWidget(Fra_14443B_ReqBWupB);
  buildFamilyFace(this);
  left->addWidget(Frame1);
  left->addWidget(FraAnticol);
  left->addStretch();

  auto* addressLine = new QHBoxLayout;
  addressLine->addWidget(lblUserAddress);
  addressLine->addWidget(FraAddressRow, 1);
  right->addLayout(addressLine);
  auto* memoryButtons = new QHBoxLayout;
  memoryButtons->addWidget(cmd_ISO14443B_Read);
  memoryButtons->addWidget(cmd_ISO14443B_Write);
  memoryButtons->addWidget(cmdStopCommand);
  right->addLayout(memoryButtons);
  right->addWidget(pageView_, 1);

  // Both faces: the free frame, the last exchange and the log.
  auto* frameRow = new QHBoxLayout;
  txt_ISO14443B_AnyFrame = new FrameLineEdit("txt_ISO14443B_AnyFrame", this);
  cmd_ISO14443B_SendFrame = button("cmd_ISO14443B_SendFrame", "Send any frame", this);
  frameRow->addWidget(txt_ISO14443B_AnyFrame, 1);
  frameRow->addWidget(cmd_ISO14443B_SendFrame);
  right->addLayout(frameRow);
  auto* boxes = new QGridLayout;
  lbl_ISO14443B_request = label("lbl_ISO14443B_request", "request =", this);
  txt_ISO14443B_request = readOnlyBox("txt_ISO14443B_request", this);
  lbl_ISO14443B_answer = label("lbl_ISO14443B_answer", "answer =", this);
  txt_ISO14443B_answer = readOnlyBox("txt_ISO14443B_answer", this);
  boxes->addWidget(lbl_ISO14443B_request, 0, 0);
  boxes->addWidget(txt_ISO14443B_request, 0, 1);
  boxes->addWidget(lbl_ISO14443B_answer, 1, 0);
  boxes->addWidget(txt_ISO14443B_answer, 1, 1);
  right->addLayout(boxes);
  // Without the family's memory the free frame and the last exchange stand at the top.
  right->addStretch();

  main->addWidget(createLogView("rtfISO14443BLogEdit"), 1);
  main->addWidget(createLogButtons());

  // Events.
  connect(cmd_ISO14443B_ReqB, &QPushButton::clicked, this, [this] { cmd_ISO14443B_ReqB_Click(); });
  connect(cmd_ISO14443B_WupB, &QPushButton::clicked, this, [this] { cmd_ISO14443B_WupB_Click(); });
  connect(chkReqBWupBLoop, &QCheckBox::clicked, this, [this] { chkReqBWupBLoop_Click(); });
  connect(cmd_ISO14443B_Attrib, &QPushButton::clicked, this, [this] { cmd_ISO14443B_Attrib_Click(); });
  connect(cmd_ISO14443B_SendFrame, &QPushButton::clicked, this, [this] { cmd_ISO14443B_SendFrame_Click(); });
  connect(cmd_ISO14443B_Initiate, &QPushButton::clicked, this, [this] { cmd_ISO14443B_Initiate_Click(); });
  connect(cmd_ISO14443B_Pcall16, &QPushButton::clicked, this, [this] { cmd_ISO14443B_Pcall16_Click(); });
  connect(cmd_ISO14443B_SlotMarker, &QPushButton::clicked, this, [this] { cmd_ISO14443B_SlotMarker_Click(); });
  connect(cmd_ISO14443B_Select, &QPushButton::clicked, this, [this] { cmd_ISO14443B_Select_Click(); });
  connect(cmd_ISO14443B_Completion, &QPushButton::clicked, this, [this] { cmd_ISO14443B_Completion_Click(); });
  connect(cmd_ISO14443B_ResetToInventory, &QPushButton::clicked, this,
          [this] { cmd_ISO14443B_ResetToInventory_Click(); });
  connect(cmd_ISO14443B_GetUID, &QPushButton::clicked, this, [this] { cmd_ISO14443B_GetUID_Click(); });
  connect(cmd_ISO14443B_Anticollision, &QPushButton::clicked, this,
          [this] { cmd_ISO14443B_Anticollision_Click(); });
  connect(chkAnticollisionLoop, &QCheckBox::clicked, this, [this] { chkAnticollisionLoop_Click(); });
  connect(cmd_ISO14443B_Read, &QPushButton::clicked, this, [this] { cmd_ISO14443B_Read_Click(); });
  connect(cmd_ISO14443B_Write, &QPushButton::clicked, this, [this] { cmd_ISO14443B_Write_Click(); });
  connect(cmdStopCommand, &QPushButton::clicked, this, [this] { cmdStopCommand_Click(); });
  connect(pageView_, &MemoryPageView::writeClicked, this, [this] { cmdWriteUser_Click(); });
  connect(pageView_, &MemoryPageView::cancelClicked, this, [this] { cmdCancelWriteTest_Click(); });

  // Rules on leaving a box.
  for (HexLineEdit* box : txt_ISO14443B_ReqB_SN) box->installEventFilter(this);
  for (HexLineEdit* box : txt_ISO14443B_SN) box->installEventFilter(this);
  for (HexLineEdit* box : {txt_iso14443B_reqB_afi, txtAttriBrequest_Pupi, txtAttriBrequest_autorizedRespTime,
                           txtAttriBrequest_MaxFrameSize, txtAttriBrequest_ISO14443compliant, txtAttriBrequest_CID})
    box->installEventFilter(this);

  commandWidgets_ = {cmd_ISO14443B_ReqB,       cmd_ISO14443B_WupB,
                     cmd_ISO14443B_Attrib,     cmd_ISO14443B_SendFrame,
                     cmd_ISO14443B_Initiate,   cmd_ISO14443B_Pcall16,
                     cmd_ISO14443B_SlotMarker, cmd_ISO14443B_Select,
                     cmd_ISO14443B_Completion, cmd_ISO14443B_ResetToInventory,
                     cmd_ISO14443B_GetUID,     cmd_ISO14443B_Read,
                     cmd_ISO14443B_Write,      txtUserAddress[0],
                     txtUserAddress[1],        txt_ISO14443B_AnyFrame,
                     findChild<QPushButton*>("cmdSaveLog"), findChild<QPushButton*>("cmdClearLog")};
}

void frmTL42RQ_ISO14443B_UI::buildStandardFace(QWidget* parent) {
  Fra_14443B_ReqBWupB = group("Fra_14443B_ReqBWupB", " ISO14443-B REQB / WUPB / ATTRIB", parent);
  auto* layout = new QVBoxLayout(Fra_14443B_ReqBWupB);

  auto* reqRow = new QHBoxLayout;
  cmd_ISO14443B_ReqB = button("cmd_ISO14443B_ReqB", "REQB", Fra_14443B_ReqBWupB);
  cmd_ISO14443B_WupB = button("cmd_ISO14443B_WupB", "WUPB", Fra_14443B_ReqBWupB);
  lblRegB_N = label("lblRegB_N", "N", Fra_14443B_ReqBWupB);
  reqRow->addWidget(cmd_ISO14443B_ReqB);
  reqRow->addWidget(cmd_ISO14443B_WupB);
  reqRow->addWidget(lblRegB_N);
  // Index 2 is the high bit of N, so it stands first.
  for (int i = 2; i >= 0; --i) {
    txt_ISO14443B_ReqB_SN[i] = hexBox(QString("txt_ISO14443B_ReqB_SN_%1").arg(i), "0", 1, Fra_14443B_ReqBWupB,
                                      reader::FieldKind::Binary);
    txt_ISO14443B_ReqB_SN[i]->setMaximumWidth(24);
    reqRow->addWidget(txt_ISO14443B_ReqB_SN[i]);
  }
  lblRegB_afi = label("lblRegB_afi", "afi", Fra_14443B_ReqBWupB);
  txt_iso14443B_reqB_afi = hexBox("txt_iso14443B_reqB_afi", "00", 2, Fra_14443B_ReqBWupB);
  txt_iso14443B_reqB_afi->setMaximumWidth(36);
  chkReqBWupBLoop = named(new QCheckBox("Loop", Fra_14443B_ReqBWupB), "chkReqBWupBLoop");
  reqRow->addWidget(lblRegB_afi);
  reqRow->addWidget(txt_iso14443B_reqB_afi);
  reqRow->addWidget(chkReqBWupBLoop);
  reqRow->addStretch();
  layout->addLayout(reqRow);

  frmREQB_WUPB_answer = group("frmREQB_WUPB_answer", " REQB / WUPB answer", Fra_14443B_ReqBWupB);
  auto* answerLayout = new QVBoxLayout(frmREQB_WUPB_answer);
  const iso14443b::ReqbLabels bare;
  lblReqBanswer = label("lblReqBanswer", bare.answer.c_str(), frmREQB_WUPB_answer);
  lblReqBanswer_FirstByte = label("lblReqBanswer_FirstByte", bare.firstByte.c_str(), frmREQB_WUPB_answer);
  lblReqBanswer_Pupi = label("lblReqBanswer_Pupi", bare.pupi.c_str(), frmREQB_WUPB_answer);
  lblReqBanswer_ApplicationData =
      label("lblReqBanswer_ApplicationData", bare.applicationData.c_str(), frmREQB_WUPB_answer);
  lblReqBanswer_ProtocolInfo = label("lblReqBanswer_ProtocolInfo", bare.protocolInfo.c_str(), frmREQB_WUPB_answer);
  lblReqBanswer_Crc = label("lblReqBanswer_Crc", bare.crc.c_str(), frmREQB_WUPB_answer);
  for (QLabel* l : {lblReqBanswer, lblReqBanswer_FirstByte, lblReqBanswer_Pupi, lblReqBanswer_ApplicationData,
                    lblReqBanswer_ProtocolInfo, lblReqBanswer_Crc}) {
    l->setTextInteractionFlags(Qt::TextSelectableByMouse);
    answerLayout->addWidget(l);
  }
  layout->addWidget(frmREQB_WUPB_answer);

  auto* attrib = new QGridLayout;
  cmd_ISO14443B_Attrib = button("cmd_ISO14443B_Attrib", "ATTRIB", Fra_14443B_ReqBWupB);
  attrib->addWidget(cmd_ISO14443B_Attrib, 0, 0);
  const struct {
    QLabel** label;
    const char* labelName;
    const char* caption;
    HexLineEdit** box;
    const char* boxName;
    const char* initial;
    int length;
  } fields[] = {
      {&lblAttriBrequest_Pupi, "lblAttriBrequest_Pupi", "Pupi : ", &txtAttriBrequest_Pupi, "txtAttriBrequest_Pupi",
       iso14443b::kEmptyPupi, 8},
      {&lblAttriBrequest_autorizedRespTime, "lblAttriBrequest_autorizedRespTime", "Autorized response time : ",
       &txtAttriBrequest_autorizedRespTime, "txtAttriBrequest_autorizedRespTime", "00", 2},
      {&lblAttriBrequest_MaxFrameSize, "lblAttriBrequest_MaxFrameSize", "Max frame size : ",
       &txtAttriBrequest_MaxFrameSize, "txtAttriBrequest_MaxFrameSize", "07", 2},
      {&lblAttriBrequest_ISO14443compliant, "lblAttriBrequest_ISO14443compliant", "ISO14443 compliant : ",
       &txtAttriBrequest_ISO14443compliant, "txtAttriBrequest_ISO14443compliant", "01", 2},
      {&lblAttriBrequest_CID, "lblAttriBrequest_CID", "CID(8bits) card identifier : ", &txtAttriBrequest_CID,
       "txtAttriBrequest_CID", "00", 2},
  };
  int row = 1;
  for (const auto& f : fields) {
    *f.label = label(f.labelName, f.caption, Fra_14443B_ReqBWupB);
    *f.box = hexBox(f.boxName, f.initial, f.length, Fra_14443B_ReqBWupB);
    (*f.box)->setMaximumWidth(f.length == 8 ? 90 : 36);
    attrib->addWidget(*f.label, row, 0, Qt::AlignRight);
    attrib->addWidget(*f.box, row, 1, Qt::AlignLeft);
    ++row;
  }
  lblAttriBanswer = label("lblAttriBanswer", "ATTRIB answer", Fra_14443B_ReqBWupB);
  lblAttriBanswer_MBLI_CID = label("lblAttriBanswer_MBLI_CID", iso14443b::kMbliCidCaption, Fra_14443B_ReqBWupB);
  lblAttriBanswer_Crc = label("lblAttriBanswer_Crc", iso14443b::kAttribCrcCaption, Fra_14443B_ReqBWupB);
  attrib->addWidget(lblAttriBanswer, row++, 0, 1, 2);
  attrib->addWidget(lblAttriBanswer_MBLI_CID, row++, 0, 1, 2);
  attrib->addWidget(lblAttriBanswer_Crc, row++, 0, 1, 2);
  attrib->setColumnStretch(2, 1);
  layout->addLayout(attrib);
}

void frmTL42RQ_ISO14443B_UI::buildFamilyFace(QWidget* parent) {
  Frame1 = group("Frame1", " PDYxxx inventory commands", parent);
  auto* grid = new QGridLayout(Frame1);
  QPushButton** buttons[] = {&cmd_ISO14443B_Initiate, &cmd_ISO14443B_Pcall16,    &cmd_ISO14443B_SlotMarker,
                             &cmd_ISO14443B_Select,   &cmd_ISO14443B_Completion, &cmd_ISO14443B_ResetToInventory,
                             &cmd_ISO14443B_GetUID};
  for (std::size_t i = 0; i < iso14443b::familyCommands().size(); ++i) {
    const iso14443b::FamilyRow& row = iso14443b::familyCommands()[i];
    *buttons[i] = button(row.control, row.caption, Frame1);
    grid->addWidget(*buttons[i], static_cast<int>(i), 0);
  }
  lblISO1443B_ChipID = label("lblISO1443B_ChipID", "Chip Id =", Frame1);
  txt_ISO14443B_ChipID = hexBox("txt_ISO14443B_ChipID", "00", 2, Frame1);
  txt_ISO14443B_ChipID->setMaximumWidth(36);
  auto* chipRow = new QHBoxLayout;
  chipRow->addWidget(lblISO1443B_ChipID);
  chipRow->addWidget(txt_ISO14443B_ChipID);
  chipRow->addStretch();
  grid->addLayout(chipRow, 3, 1);

  lblSN = label("lblSN", "SN = ", Frame1);
  auto* snRow = new QHBoxLayout;
  snRow->addWidget(lblSN);
  // Index 3 is the high bit of the slot number, so it stands first.
  for (int i = 3; i >= 0; --i) {
    txt_ISO14443B_SN[i] = hexBox(QString("txt_ISO14443B_SN_%1").arg(i), "0", 1, Frame1, reader::FieldKind::Binary);
    txt_ISO14443B_SN[i]->setMaximumWidth(24);
    snRow->addWidget(txt_ISO14443B_SN[i]);
  }
  snRow->addStretch();
  grid->addLayout(snRow, 2, 1);

  lblISO1443B_UID = label("lblISO1443B_UID", "UID =", Frame1);
  txt_ISO14443B_UID = readOnlyBox("txt_ISO14443B_UID", Frame1);
  txt_ISO14443B_UID->setMaxLength(16);
  auto* uidRow = new QHBoxLayout;
  uidRow->addWidget(lblISO1443B_UID);
  uidRow->addWidget(txt_ISO14443B_UID, 1);
  grid->addLayout(uidRow, 6, 1);
  grid->setColumnStretch(1, 1);

  FraAnticol = group("FraAnticol", " Anticollision", parent);
  auto* anticol = new QGridLayout(FraAnticol);
  cmd_ISO14443B_Anticollision = button("cmd_ISO14443B_Anticollision", "ISO14443-B Anticollision", FraAnticol);
  chkAnticollisionLoop = named(new QCheckBox("Loop", FraAnticol), "chkAnticollisionLoop");
  fgISO14443Banticol = named(new QTableWidget(iso14443b::kGridRows, iso14443b::kGridColumns, FraAnticol),
                             "fgISO14443Banticol");
  fgISO14443Banticol->horizontalHeader()->setVisible(false);
  fgISO14443Banticol->verticalHeader()->setVisible(false);
  fgISO14443Banticol->setEditTriggers(QAbstractItemView::NoEditTriggers);
  fgISO14443Banticol->setWordWrap(true);
  for (int r = 0; r < iso14443b::kGridRows; ++r) fgISO14443Banticol->setRowHeight(r, 34);
  fgISO14443Banticol->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  fgISO14443Banticol->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  fgISO14443Banticol->setFixedSize(iso14443b::kGridColumns * twipsToPixels(iso14443b::kColumnTwips) + 4,
                                   iso14443b::kGridRows * 34 + 4);
  lblAnticolUID = label("lblAnticolUID", "UID = ", FraAnticol);
  txtAnticolUID = readOnlyBox("txtAnticolUID", FraAnticol);
  anticol->addWidget(cmd_ISO14443B_Anticollision, 0, 0);
  anticol->addWidget(chkAnticollisionLoop, 0, 1);
  anticol->addWidget(fgISO14443Banticol, 1, 0, 1, 4);
  anticol->addWidget(lblAnticolUID, 2, 0, Qt::AlignRight);
  anticol->addWidget(txtAnticolUID, 2, 1, 1, 3);

  lblUserAddress = label("lblUserAddress", "RF block address", parent);
  FraAddressRow = group("FraAddressRow", "", parent);
  auto* addressRow = new QHBoxLayout(FraAddressRow);
  lblUsrAddLow = label("lblUsrAddLow", "from", FraAddressRow);
  lblUsrAddHigh = label("lblUsrAddHigh", "to", FraAddressRow);
  txtUserAddress[0] = hexBox("txtUserAddress_0", "00", 2, FraAddressRow);
  txtUserAddress[1] = hexBox("txtUserAddress_1", "00", 2, FraAddressRow);
  txtUserAddress[0]->setToolTip("enter here the Address to Write or Read from ");
  txtUserAddress[1]->setToolTip("enter here the Address to Write or Read to");
  for (HexLineEdit* box : txtUserAddress) box->setMaximumWidth(60);
  addressRow->addWidget(lblUsrAddLow);
  addressRow->addWidget(txtUserAddress[0]);
  addressRow->addWidget(lblUsrAddHigh);
  addressRow->addWidget(txtUserAddress[1]);
  addressRow->addStretch();
  cmd_ISO14443B_Read = button("cmd_ISO14443B_Read", "&Read Single Block", parent);
  cmd_ISO14443B_Write = button("cmd_ISO14443B_Write", iso14443b::kWriteCaption, parent);
  cmdStopCommand = button("cmdStopCommand", "STOP", parent);

  MemoryPageView::Host host;
  host.addressWidth = [this] { return addressBoxWidth(); };
  // The one write of this panel is always offered once the grid is open.
  host.writeButtonVisible = [] { return true; };
  pageView_ = new MemoryPageView(pageview::Variant::Iso14443B, std::move(host), parent);
}

bool frmTL42RQ_ISO14443B_UI::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusOut) {
    auto* box = qobject_cast<HexLineEdit*>(watched);
    if (box && box->kind() == reader::FieldKind::Binary) {
      box->setText(latin1(iso14443b::binaryBoxOnLeave(text(box))));
    } else if (box == txtAttriBrequest_Pupi) {
      box->setText(latin1(iso14443b::hexBoxOnLeave(text(box), 8)));
    } else if (box) {
      box->setText(latin1(iso14443b::hexBoxOnLeave(text(box), 2)));
    }
  }
  return Panel::eventFilter(watched, event);
}

// --- opening -----------------------------------------------------------------------------------

void frmTL42RQ_ISO14443B_UI::load() {
  auto& g = glob::state();
  g.scriptLoop = false;
  g.iso14443bReqbLoop = false;
  g.iso14443bWupbLoop = false;
  g.iso14443bAnticolLoop = false;

  // The address fields: wide enough for the product's last address.
  const shell::ProductSizes& sizes = shell::productSizes();
  pageView_->lstReadView()->clear();
  const int width = iso14443b::addressWidth(sizes.lastAddress);
  for (HexLineEdit* box : txtUserAddress) box->setMaxLength(width);
  txtUserAddress[0]->setText(QString(width, QLatin1Char('0')));
  txtUserAddress[1]->setText(latin1(reader::hexPadWidth7(static_cast<std::int32_t>(std::max(0L, sizes.lastAddress)),
                                                         static_cast<std::uint8_t>(width))));
  g.rfAddressBytes = 1;

  // The echo, once more when it failed; nothing stops the opening.
  reader::Answer echo = exchange(Op::Echo);
  log().untitled(reader::logWord(Op::Echo), showAnswer(echo));
  if (!echo.good("5500")) {
    echo = exchange(Op::Echo);
    log().untitled(reader::logWord(Op::Echo), showAnswer(echo));
  }

  const reader::Answer select = exchange(Op::Select, iso14443b::kSelectParameters);
  txt_ISO14443B_request->clear();
  log().titled(iso14443b::kSelectTitle, reader::logWord(Op::Select), iso14443b::kSelectParameters,
               showAnswer(select));

  // The gain write goes without reconnect and, unlike the reconnect's, without a blank.
  txt_ISO14443B_request->clear();
  txt_ISO14443B_answer->clear();
  const reader::Answer gain =
      reader::callOnce(reader::driver(), Op::KQCmd, std::string("01") + chip::kModulationGain30);
  log().titledChipCommand(iso14443b::kGainTitle, chip::kModulationGain30, showAnswer(gain));

  txt_ISO14443B_request->clear();
  txt_ISO14443B_answer->clear();

  for (int c = 0; c < iso14443b::kGridColumns; ++c)
    fgISO14443Banticol->setColumnWidth(c, twipsToPixels(iso14443b::kColumnTwips));
  writeCellLabels();

  chooseFace(iso14443b::standardFace(shell::currentProduct().Reference()));
}

void frmTL42RQ_ISO14443B_UI::chooseFace(bool standard) {
  if (standard) lbl_title_ISO14443B[2]->setText(iso14443b::kStandardTitle);
  Fra_14443B_ReqBWupB->setVisible(standard);
  for (QWidget* w : std::initializer_list<QWidget*>{
           Frame1, cmd_ISO14443B_Read, cmd_ISO14443B_Write, lblUserAddress, FraAddressRow, pageView_->lstReadView(),
           pageView_->fraPageWrite(), cmdStopCommand, cmd_ISO14443B_Anticollision, fgISO14443Banticol,
           chkAnticollisionLoop})
    w->setVisible(!standard);
  // The frames that only hold the family's controls go with them.
  FraAnticol->setVisible(!standard);
  pageView_->setVisible(!standard);
  if (!standard) {
    // The write frame stands empty until a write lays its grid out.
    for (int i = 0; i < 16; ++i) pageView_->PWData(i)->setVisible(false);
    for (QWidget* w : std::initializer_list<QWidget*>{pageView_->cmdWriteUser(), pageView_->cmdWriteTest(),
                                                      pageView_->cmdCancelWriteTest(), pageView_->mskFillPage(),
                                                      pageView_->lblAutoFill()})
      w->setVisible(false);
  }
}

void frmTL42RQ_ISO14443B_UI::DEMO_TL42RQ_A_reconnect_iso14443B(std::int32_t& status) {
  reader::DEMO_TL42RQ_A_reconnect_iso14443B(reader::driver(), status, true);
}

void frmTL42RQ_ISO14443B_UI::clearFlagsOnClose() {
  auto& g = glob::state();
  g.iso14443bReqbLoop = false;
  g.iso14443bWupbLoop = false;
  g.iso14443bAnticolLoop = false;
  g.transferRunning = false;
  g.autoLoopActive = false;
  g.writeMode = 0;
  setBusy(false);
  yieldEvents(1);
}

void frmTL42RQ_ISO14443B_UI::setBusy(bool busy) {
  if (busy == busy_) return;
  busy_ = busy;
  if (busy) QApplication::setOverrideCursor(Qt::WaitCursor);
  else QApplication::restoreOverrideCursor();
}

void frmTL42RQ_ISO14443B_UI::setCommandsEnabled(bool enabled) {
  for (QWidget* w : commandWidgets_)
    if (w) w->setEnabled(enabled);
  glob::state().stopRequested = false;
}

// --- one exchange ---------------------------------------------------------------------------

std::string frmTL42RQ_ISO14443B_UI::showAnswer(const reader::Answer& a) {
  txt_ISO14443B_answer->setText(latin1(a.text));
  // Read back from the box: that is what the trace and the labels see.
  return text(txt_ISO14443B_answer);
}

std::string frmTL42RQ_ISO14443B_UI::sendFrame(const std::string& title, const std::string& frame) {
  const reader::Answer a = exchange(Op::SendReceive, frame);
  txt_ISO14443B_request->setText(latin1(frame));
  const std::string answer = showAnswer(a);
  log().titled(title, reader::logWord(Op::SendReceive), frame, answer);
  return answer;
}

std::string frmTL42RQ_ISO14443B_UI::sendFrameFromRequestBox(const std::string& title, const std::string& frame) {
  txt_ISO14443B_request->setText(latin1(frame));
  const reader::Answer a = exchange(Op::SendReceive, frame);
  const std::string answer = showAnswer(a);
  log().titled(title, reader::logWord(Op::SendReceive), text(txt_ISO14443B_request), answer);
  return answer;
}

// --- REQB, WUPB, ATTRIB, free frame ---------------------------------------------------------------

void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_ReqB_Click() { reqbWupbLoop(false); }
void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_WupB_Click() { reqbWupbLoop(true); }

void frmTL42RQ_ISO14443B_UI::chkReqBWupBLoop_Click() {
  // One mark for both loops: whichever runs reads it.
  auto& g = glob::state();
  g.iso14443bReqbLoop = chkReqBWupBLoop->isChecked();
  g.iso14443bWupbLoop = g.iso14443bReqbLoop;
}

void frmTL42RQ_ISO14443B_UI::reqbWupbLoop(bool wakeUp) {
  HandlerScope scope(this);
  auto& g = glob::state();
  do {
    if (!wakeUp) {
      const iso14443b::ReqbLabels bare;
      lblReqBanswer->setText(latin1(bare.answer));
      lblReqBanswer_FirstByte->setText(latin1(bare.firstByte));
      lblReqBanswer_Pupi->setText(latin1(bare.pupi));
      lblReqBanswer_ApplicationData->setText(latin1(bare.applicationData));
      lblReqBanswer_ProtocolInfo->setText(latin1(bare.protocolInfo));
      lblReqBanswer_Crc->setText(latin1(bare.crc));
      txtAttriBrequest_Pupi->setText(iso14443b::kEmptyPupi);
    }
    const int n = iso14443b::slotParameter(
        {text(txt_ISO14443B_ReqB_SN[0]), text(txt_ISO14443B_ReqB_SN[1]), text(txt_ISO14443B_ReqB_SN[2])});
    const std::string afi = text(txt_iso14443B_reqB_afi);
    const std::string frame = wakeUp ? iso14443b::wupbFrame(afi, n) : iso14443b::reqbFrame(afi, n);
    const std::string answer = sendFrame(wakeUp ? iso14443b::kWupbTitle : iso14443b::kReqbTitle, frame);
    if (iso14443b::goodAnswer(answer)) {
      const iso14443b::ReqbLabels l = iso14443b::reqbLabels(answer);
      lblReqBanswer->setText(latin1(l.answer));
      lblReqBanswer_FirstByte->setText(latin1(l.firstByte));
      lblReqBanswer_Pupi->setText(latin1(l.pupi));
      lblReqBanswer_ApplicationData->setText(latin1(l.applicationData));
      lblReqBanswer_ProtocolInfo->setText(latin1(l.protocolInfo));
      lblReqBanswer_Crc->setText(latin1(l.crc));
      // Only REQB hands the PUPI on to ATTRIB.
      if (!wakeUp) txtAttriBrequest_Pupi->setText(latin1(iso14443b::pupiOf(answer)));
    }
    // The pause between passes: the only moment the user can clear the Loop box.
    yieldEvents(10001);
    if (!wakeUp) yieldEvents(1);
  } while ((wakeUp ? g.iso14443bWupbLoop : g.iso14443bReqbLoop) && !closing());
}

void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_Attrib_Click() {
  HandlerScope scope(this);
  lblAttriBanswer_MBLI_CID->setText(iso14443b::kMbliCidCaption);
  lblAttriBanswer_Crc->setText(iso14443b::kAttribCrcCaption);
  iso14443b::AttribFields f;
  f.pupi = text(txtAttriBrequest_Pupi);
  f.responseTime = text(txtAttriBrequest_autorizedRespTime);
  f.maxFrameSize = text(txtAttriBrequest_MaxFrameSize);
  f.compliant = text(txtAttriBrequest_ISO14443compliant);
  f.cid = text(txtAttriBrequest_CID);
  const std::string answer = sendFrame(iso14443b::kAttribTitle, iso14443b::attribFrame(f));
  if (!iso14443b::goodAnswer(answer)) return;
  const iso14443b::AttribLabels l = iso14443b::attribLabels(answer);
  lblAttriBanswer_MBLI_CID->setText(latin1(l.mbliCid));
  lblAttriBanswer_Crc->setText(latin1(l.crc));
}

void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_SendFrame_Click() {
  HandlerScope scope(this);
  const std::string frame = text(txt_ISO14443B_AnyFrame);
  if (frame.empty()) {
    yieldEvents(1);
    return;
  }
  sendFrame(iso14443b::kSendFrameTitle, frame);
}

// --- the family's commands --------------------------------------------------------------------

void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_Initiate_Click() { familyCommand(FamilyCommand::Initiate); }
void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_Pcall16_Click() { familyCommand(FamilyCommand::Pcall16); }
void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_SlotMarker_Click() { familyCommand(FamilyCommand::SlotMarker); }
void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_Select_Click() { familyCommand(FamilyCommand::Select); }
void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_Completion_Click() { familyCommand(FamilyCommand::Completion); }
void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_ResetToInventory_Click() {
  familyCommand(FamilyCommand::ResetToInventory);
}
void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_GetUID_Click() { familyCommand(FamilyCommand::GetUid); }

void frmTL42RQ_ISO14443B_UI::familyCommand(FamilyCommand c) {
  HandlerScope scope(this);
  const iso14443b::FamilyRow& row = iso14443b::familyRow(c);
  std::string frame = row.frame;
  if (c == FamilyCommand::SlotMarker)
    frame = iso14443b::slotMarkerFrame(iso14443b::slotNumber({text(txt_ISO14443B_SN[0]), text(txt_ISO14443B_SN[1]),
                                                             text(txt_ISO14443B_SN[2]), text(txt_ISO14443B_SN[3])}));
  else if (c == FamilyCommand::Select)
    frame = iso14443b::selectFrame(text(txt_ISO14443B_ChipID));
  // Get UID empties its box before it asks: a silent tag leaves it empty.
  if (c == FamilyCommand::GetUid) txt_ISO14443B_UID->clear();
  const std::string answer = sendFrame(row.title, frame);
  if (!iso14443b::goodAnswer(answer)) return;
  if (c == FamilyCommand::Initiate) txt_ISO14443B_ChipID->setText(latin1(iso14443b::chipIdOf(answer)));
  if (c == FamilyCommand::GetUid) txt_ISO14443B_UID->setText(latin1(iso14443b::reversedUid(answer)));
}

// --- the slot inventory ---------------------------------------------------------------------------

void frmTL42RQ_ISO14443B_UI::setCell(int k, const std::string& cellText) {
  const iso14443b::Cell cell = iso14443b::cellOf(k);
  QTableWidgetItem* item = fgISO14443Banticol->item(cell.row, cell.column);
  if (!item) {
    item = new QTableWidgetItem;
    fgISO14443Banticol->setItem(cell.row, cell.column, item);
  }
  item->setText(latin1(cellText));
}

void frmTL42RQ_ISO14443B_UI::writeCellLabels() {
  for (int k = 1; k <= iso14443b::kSlots; ++k) setCell(k, iso14443b::cellLabel(k));
}

void frmTL42RQ_ISO14443B_UI::chkAnticollisionLoop_Click() {
  glob::state().iso14443bAnticolLoop = chkAnticollisionLoop->isChecked();
}

void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_Anticollision_Click() {
  HandlerScope scope(this);
  writeCellLabels();
  do {
    std::array<std::string, iso14443b::kSlots> entries{};
    int count = 0;
    int lastSlot = 0;
    txtAnticolUID->clear();

    // Every pass starts from the inventory; Initiate's own answer (slot 0) is not read.
    sendFrame(iso14443b::familyRow(FamilyCommand::ResetToInventory).title,
              iso14443b::familyRow(FamilyCommand::ResetToInventory).frame);
    sendFrameFromRequestBox(iso14443b::familyRow(FamilyCommand::Initiate).title,
                            iso14443b::familyRow(FamilyCommand::Initiate).frame);
    for (int slot = 1; slot <= iso14443b::kSlots; ++slot) {
      const std::string answer =
          sendFrameFromRequestBox(iso14443b::slotMarkerTitle(slot), iso14443b::slotMarkerFrame(slot));
      if (iso14443b::goodAnswer(answer)) {
        entries[static_cast<std::size_t>(slot - 1)] = iso14443b::slotEntry(answer);
        lastSlot = slot;
        ++count;
      }
      yieldEvents(1);
    }
    for (int k = 1; k <= iso14443b::kSlots; ++k)
      setCell(k, iso14443b::cellLabel(k) + entries[static_cast<std::size_t>(k - 1)]);

    // One tag alone is selected and read; more, or none, end the pass here.
    if (count == 1) {
      txt_ISO14443B_ChipID->setText(
          latin1(iso14443b::chipIdOfEntry(entries[static_cast<std::size_t>(lastSlot - 1)])));
      const std::string selected = sendFrame(iso14443b::familyRow(FamilyCommand::Select).title,
                                             iso14443b::selectFrame(text(txt_ISO14443B_ChipID)));
      if (iso14443b::goodAnswer(selected)) {
        txt_ISO14443B_UID->clear();
        const std::string uid = sendFrame(iso14443b::familyRow(FamilyCommand::GetUid).title,
                                          iso14443b::familyRow(FamilyCommand::GetUid).frame);
        if (iso14443b::goodAnswer(uid)) txtAnticolUID->setText(txtAnticolUID->text() + latin1(iso14443b::reversedUid(uid)));
      }
    }
    yieldEvents(10001);
  } while (glob::state().iso14443bAnticolLoop && !closing());
}

// --- block memory ------------------------------------------------------------------------------

int frmTL42RQ_ISO14443B_UI::addressBoxWidth() const { return std::max(1, txtUserAddress[0]->maxLength()); }

long frmTL42RQ_ISO14443B_UI::addressBoxValue(int index) const {
  const auto v = hex::toNumber(text(txtUserAddress[static_cast<std::size_t>(index)]));
  return static_cast<long>(v.value_or(0) & 0x7FFFFFFF) & shell::productSizes().blockAddressMask;
}

bool frmTL42RQ_ISO14443B_UI::checkAddressBoxes() {
  for (HexLineEdit* box : txtUserAddress) {
    if (!reader::checkHexAddress(text(box))) {
      dialogs().message(this, reader::kInvalidAddress.text, reader::kInvalidAddress.title, MessageIcon::Exclamation);
      return false;
    }
  }
  return true;
}

void frmTL42RQ_ISO14443B_UI::setAddressBoxesReadOnly(bool first, bool second) {
  txtUserAddress[0]->setReadOnly(first);
  txtUserAddress[1]->setReadOnly(second);
}

void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_Read_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  setCommandsEnabled(false);
  cmdStopCommand->setVisible(true);
  setBusy(true);
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  setAddressBoxesReadOnly(true, true);
  g.writeMode = 0;

  if (checkAddressBoxes()) {
    const long mask = shell::productSizes().blockAddressMask;
    const long start = addressBoxValue(0);
    const long end = addressBoxValue(1);
    const int width = addressBoxWidth();
    txtUserAddress[0]->setText(latin1(reader::hexPadWidth7(static_cast<std::int32_t>(start), static_cast<std::uint8_t>(width))));
    txtUserAddress[1]->setText(latin1(reader::hexPadWidth7(static_cast<std::int32_t>(end), static_cast<std::uint8_t>(width))));
    const long count = iso14443b::blockCount(start, end, mask);
    pageView_->lstReadView()->clear();
    pageView_->lstReadView()->setVisible(true);
    // A write's grid leaves the list disabled; a read gives it back its keys.
    pageView_->lstReadView()->setEnabled(true);
    memoryBuffer().Clear();
    // One block a request; STOP is looked at after each.
    for (long i = 0; i < count; ++i) {
      const long address = (start + i) & mask;
      const std::string answer =
          sendFrame(iso14443b::kReadTitle, iso14443b::readFrame(address, g.rfAddressBytes));
      memoryBuffer().AddItem(iso14443b::readRow(answer, iso14443b::kBlockBytes));
      pageView_->showReadRows(memoryBuffer().Size(), start);
      yieldEvents(1);
      if (g.stopRequested || closing()) break;
    }
  }

  setAddressBoxesReadOnly(false, false);
  setCommandsEnabled(true);
  cmdStopCommand->setVisible(false);
  setBusy(false);
}

void frmTL42RQ_ISO14443B_UI::cmd_ISO14443B_Write_Click() {
  HandlerScope scope(this);
  setCommandsEnabled(false);
  if (!checkAddressBoxes()) {
    setCommandsEnabled(true);
    return;
  }
  glob::state().writeMode = 0;
  setAddressBoxesReadOnly(true, false);
  pageView_->cmdWriteUser()->setText(iso14443b::kWriteCaption);
  pageView_->setPageGrid(iso14443b::kBlockBytes);
  pageView_->lstReadView()->setEnabled(false);
  pageView_->clearFill();
  pageView_->fraPageWrite()->setVisible(true);
  pageView_->PWData(0)->setFocus();
}

void frmTL42RQ_ISO14443B_UI::cmdWriteUser_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  setCommandsEnabled(false);
  setBusy(true);
  pageView_->setGridEnabled(false);
  pageView_->cmdWriteUser()->setEnabled(false);

  const auto closeGrid = [&] {
    pageView_->lstReadView()->setEnabled(false);
    pageView_->fraPageWrite()->setVisible(false);
    setAddressBoxesReadOnly(false, false);
    setCommandsEnabled(true);
    setBusy(false);
  };
  if (!reader::checkHexAddress(text(txtUserAddress[0]))) {
    dialogs().message(this, reader::kInvalidAddress.text, reader::kInvalidAddress.title, MessageIcon::Exclamation);
    return closeGrid();
  }
  const long address = addressBoxValue(0);
  const std::string data = pageView_->gridData(iso14443b::kBlockBytes);
  g.transferRunning = true;
  if (!reader::checkHexData(data, 1)) {
    dialogs().message(this, reader::kInvalidData.text, reader::kInvalidData.title, MessageIcon::Exclamation);
    pageView_->setGridEnabled(true);
    pageView_->cmdWriteUser()->setEnabled(true);
    setBusy(false);
    return;
  }

  do {
    pageView_->lstReadView()->clear();
    memoryBuffer().Clear();
    const std::string answer =
        sendFrame(iso14443b::kWriteTitle, iso14443b::writeFrame(address, g.rfAddressBytes, data));
    memoryBuffer().AddItem(iso14443b::writeRow(answer));
    yieldEvents(1);
    // A write of one block ends where it began; a range asks for no more than that.
    if (address != addressBoxValue(1) || closing()) return closeGrid();
    g.transferRunning = false;
    pageView_->showReadRows(1, address);
    yieldEvents(1);
    g.transferRunning = true;
    yieldEvents(1);
  } while (g.autoLoopActive && !closing());

  pageView_->cmdWriteUser()->setEnabled(true);
  pageView_->setGridEnabled(true);
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  setAddressBoxesReadOnly(false, false);
  setCommandsEnabled(true);
  setBusy(false);
}

void frmTL42RQ_ISO14443B_UI::cmdCancelWriteTest_Click() {
  auto& g = glob::state();
  g.transferRunning = false;
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  g.autoLoopActive = false;
  setCommandsEnabled(true);
  setAddressBoxesReadOnly(false, false);
}

void frmTL42RQ_ISO14443B_UI::cmdStopCommand_Click() {
  // Enabling first: setCommandsEnabled clears the request that follows.
  setCommandsEnabled(true);
  glob::state().stopRequested = true;
  cmdStopCommand->setVisible(false);
}
