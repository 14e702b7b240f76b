#include "iso15693/ui/frmTL42RQ_ISO15693_UI.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QEvent>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QVBoxLayout>
#include <cstdio>
#include <cstdlib>

#include "common/crc.h"
#include "common/hex.h"
#include "iso15693/BlockRange.h"
#include "iso15693/Iso15693Products.h"
#include "iso15693/ui/MemoryPageView.h"
#include "reader/Drivers.h"
#include "reader/HexText.h"
#include "reader/ui/HexFields.h"
#include "shell/Product.h"
#include "shell/ui/Dialogs.h"

using iso15693::Command;
using iso15693::FrameFields;
using reader::Op;

namespace {

constexpr const char* kWindowTitle = "ISO15693 Tags : ";
constexpr const char* kSelectTitle = "TL42RQ CONFIGURATION : ISO15693 10% High Datarate One Subcarrier";
constexpr const char* kSelectParameters = "010D";
// The fast commands answer at the tag's double data rate: the chip is switched for them.
constexpr const char* kFastSelectTitle = "TL42RQ CONFIGURATION : ISO15693 10% High Datarate One Subcarrier FAST READ";
constexpr const char* kFastSelectParameters = "011D";
constexpr const char* kNoTransponderUid = "No transponder UID";
constexpr int kByteBoxWidth = 36;  // a box for two hexadecimal digits

std::function<void()>& applicationEnd() {
  static std::function<void()> end = [] {
    // The panel cannot serve what it was given: the program ends here, as it always did.
    std::fflush(nullptr);
    std::_Exit(1);
  };
  return end;
}

QString latin1(const std::string& s) { return QString::fromLatin1(s.data(), static_cast<int>(s.size())); }
std::string text(const QLineEdit* e) { return e->text().toLatin1().toStdString(); }

template <typename T>
T* named(T* w, const char* name) {
  w->setObjectName(name);
  return w;
}

QGroupBox* group(const char* name, const char* caption, QWidget* parent) {
  return named(new QGroupBox(caption, parent), name);
}
QLabel* label(const char* name, const char* caption, QWidget* parent) {
  return named(new QLabel(caption, parent), name);
}
QCheckBox* check(const QString& name, const char* caption, QWidget* parent) {
  auto* c = new QCheckBox(caption, parent);
  c->setObjectName(name);
  return c;
}
QRadioButton* option(const QString& name, const char* caption, QWidget* parent) {
  auto* o = new QRadioButton(caption, parent);
  o->setObjectName(name);
  return o;
}

void setRed(QLineEdit* e, bool red) {
  QPalette p = e->palette();
  p.setColor(QPalette::Text, red ? QColor(255, 0, 0) : QApplication::palette().color(QPalette::Text));
  e->setPalette(p);
}

}  // namespace

void frmTL42RQ_ISO15693_UI::setApplicationEnd(std::function<void()> end) {
  applicationEnd() = end ? std::move(end) : [] {
    std::fflush(nullptr);
    std::_Exit(1);
  };
}

void frmTL42RQ_ISO15693_UI::endApplication() { applicationEnd()(); }

frmTL42RQ_ISO15693_UI::frmTL42RQ_ISO15693_UI(QWidget* parent)
    : Panel(glob::PanelId::ISO15693, "frmTL42RQ_ISO15693_UI", parent) {
  setWindowTitle(kWindowTitle);
  buildControls();
  HandlerScope scope(this);
  load();
}

frmTL42RQ_ISO15693_UI::~frmTL42RQ_ISO15693_UI() { setBusy(false); }

// --- building the window ---------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::buildControls() {
  auto* main = new QHBoxLayout(this);

  // Left: what every command reads, and what every command shows.
  auto* left = new QVBoxLayout;
  FraDataRate = group("FraDataRate", " Data Rate", this);
  auto* rateLayout = new QVBoxLayout(FraDataRate);
  dataRateGroup_ = new QButtonGroup(this);
  for (int i = 0; i < 4; ++i) {
    optDataRate[i] = option(QString("optDataRate_%1").arg(i), iso15693::kDataRateCaptions[i], FraDataRate);
    dataRateGroup_->addButton(optDataRate[i], i);
    rateLayout->addWidget(optDataRate[i]);
  }
  optDataRate[iso15693::kDefaultDataRate]->setChecked(true);
  left->addWidget(FraDataRate);
  chk_Select_Address_flag[0] = check("chk_Select_Address_flag_0", "Select Flag", this);
  chk_Select_Address_flag[1] = check("chk_Select_Address_flag_1", "Address Flag", this);
  chkLockBits = check("chkLockBits", "Block Locking status", this);
  left->addWidget(chk_Select_Address_flag[0]);
  left->addWidget(chk_Select_Address_flag[1]);
  left->addWidget(chkLockBits);

  txtTransponderUID = new HexLineEdit("txtTransponderUID", reader::FieldKind::Hexadecimal, this);
  txtTransponderUID->setText("Transponder UID");
  left->addWidget(txtTransponderUID);

  // The short result of the last command stands beside "Tag :"; a click on that label
  // takes the UID box into frame order again.
  frmWriteTime = group("frmWriteTime", "Tag informations", this);
  auto* infoLayout = new QGridLayout(frmWriteTime);
  lblChoosenTag = new ClickableLabel("lblChoosenTag", "Tag :", frmWriteTime);
  lblWriteTime = label("lblWriteTime", "", frmWriteTime);
  lblLoopCount = label("lblLoopCount", "", frmWriteTime);
  infoLayout->addWidget(lblChoosenTag, 0, 0);
  infoLayout->addWidget(lblWriteTime, 0, 1);
  infoLayout->addWidget(lblLoopCount, 1, 1);
  infoLayout->setColumnStretch(1, 1);
  left->addWidget(frmWriteTime);

  FraSystemInfo = group("FraSystemInfo", "SYSTEM INFO for one transponder", this);
  auto* sysLayout = new QVBoxLayout(FraSystemInfo);
  cmdGetSystemInfo = button("cmdGetSystemInfo", "Get System Info", FraSystemInfo);
  optExtensionFlag[0] = option("optExtensionFlag_0", "Extension Flag = 0", FraSystemInfo);
  optExtensionFlag[1] = option("optExtensionFlag_1", "Extension Flag = 1", FraSystemInfo);
  optExtensionFlag[0]->setChecked(true);
  lstSystemInfo = named(new QListWidget(FraSystemInfo), "lstSystemInfo");
  sysLayout->addWidget(cmdGetSystemInfo);
  sysLayout->addWidget(optExtensionFlag[0]);
  sysLayout->addWidget(optExtensionFlag[1]);
  sysLayout->addWidget(lstSystemInfo);
  left->addWidget(FraSystemInfo);
  Label2 = label("Label2", "Use <TL42RQ commands> to configure your TL42RQ protocol", this);
  Label2->setWordWrap(true);
  left->addWidget(Label2);
  left->addStretch();
  main->addLayout(left);

  // Centre: the tabs and their pages, then the frames of the last exchange.
  auto* centre = new QVBoxLayout;
  tabStripchoice = named(new QTabBar(this), "tabStripchoice");
  tabStripchoice->addTab("&Inventory");
  tabStripchoice->addTab("&User Mode");
  centre->addWidget(tabStripchoice);
  for (int i = 1; i <= 3; ++i) {
    fraMode[i] = new QFrame(this);
    fraMode[i]->setObjectName(QString("fraMode_%1").arg(i));
    fraMode[i]->setFrameShape(QFrame::StyledPanel);
    centre->addWidget(fraMode[i], 1);
  }

  // Page 1: finding tags.
  {
    QFrame* page = fraMode[1];
    auto* grid = new QGridLayout(page);
    FraInventoryOptions = group("FraInventoryOptions", " Inventory Options", page);
    auto* opts = new QGridLayout(FraInventoryOptions);
    optInventorySlot[0] = option("optInventorySlot_0", "1 slot", FraInventoryOptions);
    optInventorySlot[1] = option("optInventorySlot_1", "16 slots", FraInventoryOptions);
    optInventorySlot[0]->setChecked(true);
    chkInventoryAFIOptions = check("chkInventoryAFIOptions", " AFI option flag", FraInventoryOptions);
    txtInventoryOptionalAFI = new HexLineEdit("txtInventoryOptionalAFI", reader::FieldKind::Hexadecimal,
                                              FraInventoryOptions);
    txtInventoryOptionalAFI->setText("00");
    txtInventoryOptionalAFI->setMaxLength(2);
    txtInventoryOptionalAFI->setFixedWidth(kByteBoxWidth);
    opts->addWidget(optInventorySlot[0], 0, 0);
    opts->addWidget(optInventorySlot[1], 0, 1);
    opts->addWidget(chkInventoryAFIOptions, 1, 0);
    opts->addWidget(txtInventoryOptionalAFI, 1, 1);
    opts->setColumnStretch(2, 1);
    grid->addWidget(FraInventoryOptions, 0, 0);

    FraInventoryParameters = group("FraInventoryParameters", " Inventory Parameters", page);
    auto* params = new QGridLayout(FraInventoryParameters);
    lblInventoryMaskLenght = label("lblInventoryMaskLenght", "Mask Lenght", FraInventoryParameters);
    txtInventoryMaskLenght = new HexLineEdit("txtInventoryMaskLenght", reader::FieldKind::Hexadecimal,
                                             FraInventoryParameters);
    txtInventoryMaskLenght->setText("00");
    txtInventoryMaskLenght->setMaxLength(2);
    txtInventoryMaskLenght->setFixedWidth(kByteBoxWidth);
    lblInventoryMaskValue = label("lblInventoryMaskValue", "Mask Value", FraInventoryParameters);
    params->addWidget(lblInventoryMaskLenght, 0, 0);
    params->addWidget(txtInventoryMaskLenght, 0, 1, Qt::AlignLeft);
    params->addWidget(lblInventoryMaskValue, 1, 0);
    // Index 0 is the rightmost box and goes first into the frame.
    auto* maskRow = new QHBoxLayout;
    maskRow->addStretch();
    for (int i = 0; i < 8; ++i) {
      txtInventoryMaskValue[i] = new HexLineEdit(QString("txtInventoryMaskValue_%1").arg(i),
                                                 reader::FieldKind::Hexadecimal, FraInventoryParameters);
      txtInventoryMaskValue[i]->setText("00");
      txtInventoryMaskValue[i]->setMaxLength(2);
      txtInventoryMaskValue[i]->setFixedWidth(kByteBoxWidth);
    }
    for (int i = 7; i >= 0; --i) maskRow->addWidget(txtInventoryMaskValue[i]);
    params->addLayout(maskRow, 1, 1);
    params->setColumnStretch(1, 1);
    grid->addWidget(FraInventoryParameters, 1, 0);

    auto* buttons = new QHBoxLayout;
    cmdInventory = button("cmdInventory", "Inventory", page);
    cmdAntiCollisionIso15693 = button("cmdAntiCollisionIso15693", "Anticollision", page);
    chkLoop = check("chkLoop", "Inventory loop", page);
    buttons->addWidget(cmdInventory);
    buttons->addWidget(cmdAntiCollisionIso15693);
    buttons->addWidget(chkLoop);
    grid->addLayout(buttons, 2, 0);

    FraINVENTORYresponse = group("FraINVENTORYresponse", "INVENTORY response", page);
    auto* resp = new QVBoxLayout(FraINVENTORYresponse);
    lstTransponderUID = named(new QListWidget(FraINVENTORYresponse), "lstTransponderUID");
    QFont fixed(pageview::kFontFamily);
    fixed.setStyleHint(QFont::Monospace);
    lstTransponderUID->setFont(fixed);
    resp->addWidget(lstTransponderUID);
    grid->addWidget(FraINVENTORYresponse, 3, 0);

    auto* state = new QGridLayout;
    cmdSelect = button("cmdSelect", "Select", page);
    cmdResetToReady = button("cmdResetToReady", "Reset to ready", page);
    cmdStayQuiet = button("cmdStayQuiet", "Stay Quiet", page);
    cmdInitiate = button("cmdInitiate", "Initiate", page);
    cmdInventoryInitiated = button("cmdInventoryInitiated", "Inventory Initiated", page);
    cmdFastInitiate = button("cmdFastInitiate", "Fast Initiate", page);
    cmdFastInventoryInitiated = button("cmdFastInventoryInitiated", "Fast Inventory Initiated", page);
    state->addWidget(cmdSelect, 0, 0);
    state->addWidget(cmdResetToReady, 0, 1);
    state->addWidget(cmdStayQuiet, 0, 2);
    state->addWidget(cmdInitiate, 1, 0);
    state->addWidget(cmdInventoryInitiated, 1, 1);
    state->addWidget(cmdFastInitiate, 2, 0);
    state->addWidget(cmdFastInventoryInitiated, 2, 1);
    grid->addLayout(state, 4, 0);
    grid->setRowStretch(3, 1);
  }

  // Page 2: tag memory.
  {
    QFrame* page = fraMode[2];
    auto* grid = new QGridLayout(page);
    auto* addr = new QHBoxLayout;
    lblUserAddress = label("lblUserAddress", "RF block address", page);
    lblUsrAddLow = label("lblUsrAddLow", "from", page);
    lblUsrAddHigh = label("lblUsrAddHigh", "to", page);
    txtUserAddress[0] = new HexLineEdit("txtUserAddress_0", reader::FieldKind::Hexadecimal, page);
    txtUserAddress[0]->setToolTip("enter here the Address to Write or Read from ");
    txtUserAddress[1] = new HexLineEdit("txtUserAddress_1", reader::FieldKind::Hexadecimal, page);
    txtUserAddress[1]->setToolTip("enter here the Address to Write or Read to");
    for (HexLineEdit* box : txtUserAddress) box->setFixedWidth(2 * kByteBoxWidth);
    addr->addWidget(lblUserAddress);
    addr->addWidget(lblUsrAddLow);
    addr->addWidget(txtUserAddress[0]);
    addr->addWidget(lblUsrAddHigh);
    addr->addWidget(txtUserAddress[1]);
    addr->addStretch();
    grid->addLayout(addr, 0, 0, 1, 2);

    auto* reads = new QVBoxLayout;
    cmdReadUser = button("cmdReadUser", "&Read Single Block", page);
    cmdReadMultipleBlock = button("cmdReadMultipleBlock", "Read Multiple Block", page);
    cmdFastReadSingleBlock = button("cmdFastReadSingleBlock", "Fast Read Single Block", page);
    cmdFastReadMultipleBlock = button("cmdFastReadMultipleBlock", "Fast Read Multiple Block", page);
    cmdWriteSingleBlock = button("cmdWriteSingleBlock", "&Write Single Block", page);
    cmdLockBlock = button("cmdLockBlock", "Lock Block", page);
    cmdGetMultipleBlockSecurityStatus =
        button("cmdGetMultipleBlockSecurityStatus", "Get Multiple Block Security Status", page);
    for (QWidget* w : {static_cast<QWidget*>(cmdReadUser), static_cast<QWidget*>(cmdReadMultipleBlock),
                       static_cast<QWidget*>(cmdFastReadSingleBlock), static_cast<QWidget*>(cmdFastReadMultipleBlock),
                       static_cast<QWidget*>(cmdWriteSingleBlock), static_cast<QWidget*>(cmdLockBlock),
                       static_cast<QWidget*>(cmdGetMultipleBlockSecurityStatus)})
      reads->addWidget(w);

    FraLoop = group("FraLoop", "", page);
    auto* loop = new QGridLayout(FraLoop);
    chkUserLoop = check("chkUserLoop", "AUTO LOOP", FraLoop);
    chkUserLoop->setToolTip("Execute with Loop");
    txtLOOPnumber = new HexLineEdit("txtLOOPnumber", reader::FieldKind::Decimal, FraLoop);
    txtLOOPnumber->setToolTip("enter the number of LOOP");
    txtLOOPnumber->setText("0");
    txtLOOPnumber->setFixedWidth(2 * kByteBoxWidth);
    lblLOOPnumber = label("lblLOOPnumber", "0 for infinty loop", FraLoop);
    loop->addWidget(chkUserLoop, 0, 0);
    loop->addWidget(txtLOOPnumber, 0, 1);
    loop->addWidget(lblLOOPnumber, 1, 0, 1, 2);
    reads->addWidget(FraLoop);
    cmdStopCommand = button("cmdStopCommand", "STOP", page);
    reads->addWidget(cmdStopCommand);

    FraAFI = group("FraAFI", "AFI", page);
    auto* afi = new QHBoxLayout(FraAFI);
    cmdWriteAFI = button("cmdWriteAFI", "Write", FraAFI);
    cmdLockAFI = button("cmdLockAFI", "Lock", FraAFI);
    afi->addWidget(cmdWriteAFI);
    afi->addWidget(cmdLockAFI);
    FraDSFID = group("FraDSFID", "DSFID", page);
    auto* dsfid = new QHBoxLayout(FraDSFID);
    cmdWriteDSFID = button("cmdWriteDSFID", "Write", FraDSFID);
    cmdLockDSFID = button("cmdLockDSFID", "Lock", FraDSFID);
    dsfid->addWidget(cmdWriteDSFID);
    dsfid->addWidget(cmdLockDSFID);
    reads->addWidget(FraAFI);
    reads->addWidget(FraDSFID);

    FraKill = group("FraKill", "", page);
    auto* kill = new QHBoxLayout(FraKill);
    cmdWriteKill = button("cmdWriteKill", "Write Kill", FraKill);
    cmdLockKill = button("cmdLockKill", "Lock Kill", FraKill);
    cmdKill = button("cmdKill", "Kill", FraKill);
    kill->addWidget(cmdWriteKill);
    kill->addWidget(cmdLockKill);
    kill->addWidget(cmdKill);
    reads->addWidget(FraKill);

    FraPasswordRF = group("FraPasswordRF", "", page);
    auto* pw = new QGridLayout(FraPasswordRF);
    Label1 = label("Label1", "password number = ", FraPasswordRF);
    pw->addWidget(Label1, 0, 0);
    for (int i = 0; i < 3; ++i) {
      OptPasswordNumber[i] = option(QString("OptPasswordNumber_%1").arg(i), "", FraPasswordRF);
      OptPasswordNumber[i]->setText(QString::number(i + 1));
      pw->addWidget(OptPasswordNumber[i], 0, i + 1);
    }
    OptPasswordNumber[0]->setChecked(true);
    cmdWriteSectorPassword = button("cmdWriteSectorPassword", "Write Sector Password", FraPasswordRF);
    cmdLockSectorPassword = button("cmdLockSectorPassword", "Lock Sector Password", FraPasswordRF);
    cmdPresentSectorPassword = button("cmdPresentSectorPassword", "Present Sector Password", FraPasswordRF);
    pw->addWidget(cmdWriteSectorPassword, 1, 0, 1, 4);
    pw->addWidget(cmdLockSectorPassword, 2, 0, 1, 4);
    pw->addWidget(cmdPresentSectorPassword, 3, 0, 1, 4);
    reads->addWidget(FraPasswordRF);

    FraEnergyHarvesting = group("FraEnergyHarvesting", "", page);
    auto* eh = new QGridLayout(FraEnergyHarvesting);
    cmdReadEHconfig = button("cmdReadEHconfig", "Read E.H. status", FraEnergyHarvesting);
    txtEHstatus = named(new QLineEdit("00", FraEnergyHarvesting), "txtEHstatus");
    txtEHstatus->setReadOnly(true);
    cmdCheckEHenable = button("cmdCheckEHenable", "Check EH enable", FraEnergyHarvesting);
    txtCheckEHenable = named(new QLineEdit("00", FraEnergyHarvesting), "txtCheckEHenable");
    txtCheckEHenable->setReadOnly(true);
    cmdWriteEHCfg = button("cmdWriteEHCfg", "Write E.H. config", FraEnergyHarvesting);
    txtEHconfig = new HexLineEdit("txtEHconfig", reader::FieldKind::Hexadecimal, FraEnergyHarvesting);
    txtEHconfig->setText("00");
    cmdWriteDOconfig = button("cmdWriteDOconfig", "Write DO config", FraEnergyHarvesting);
    txtWriteDOconfig = new HexLineEdit("txtWriteDOconfig", reader::FieldKind::Hexadecimal, FraEnergyHarvesting);
    txtWriteDOconfig->setText("00");
    cmdSetEHenable = button("cmdSetEHenable", "Set EH enable", FraEnergyHarvesting);
    cmdResetEHenable = button("cmdResetEHenable", "Reset EH enable", FraEnergyHarvesting);
    eh->addWidget(cmdReadEHconfig, 0, 0);
    eh->addWidget(txtEHstatus, 0, 1);
    eh->addWidget(cmdCheckEHenable, 1, 0);
    eh->addWidget(txtCheckEHenable, 1, 1);
    eh->addWidget(cmdWriteEHCfg, 2, 0);
    eh->addWidget(txtEHconfig, 2, 1);
    eh->addWidget(cmdWriteDOconfig, 3, 0);
    eh->addWidget(txtWriteDOconfig, 3, 1);
    eh->addWidget(cmdSetEHenable, 4, 0);
    eh->addWidget(cmdResetEHenable, 4, 1);
    reads->addWidget(FraEnergyHarvesting);
    reads->addStretch();
    grid->addLayout(reads, 1, 0);

    MemoryPageView::Host host;
    host.addressWidth = [this] { return addressBoxWidth(); };
    host.writeButtonVisible = [] { return glob::state().currentTab == 2; };
    pageView_ = new MemoryPageView(pageview::Variant::Iso15693, host, page);
    grid->addWidget(pageView_, 1, 1);
    grid->setColumnStretch(1, 1);
    ProgressBar1 = named(new QProgressBar(page), "ProgressBar1");
    ProgressBar1->setVisible(false);
    grid->addWidget(ProgressBar1, 2, 0, 1, 2);
  }

  // Page 3: the buffer tools of the old memory page. No tab shows it and none of them
  // has an action; they stand so that the page is complete.
  {
    auto* l = new QGridLayout(fraMode[3]);
    const char* names[] = {"cmdCompareMemory2Buffer", "CmdCRCMemory", "CmdCRCBuffer", "CmdSetBuffer",
                           "cmdClearBuffer", "cmdExportEeprom", "cmdImportEeprom", "cmdCheckEeprom",
                           "cmdBuffer2File", "cmdPrintBuffer", "cmdFile2Buffer", "cmdBuffer2Eeprom",
                           "cmdEditBuffer", "cmdEeprom2Buffer"};
    int i = 0;
    for (const char* n : names) l->addWidget(button(n, n, fraMode[3]), i / 4, i % 4), ++i;
    auto* rtfEditArea = named(new QPlainTextEdit(fraMode[3]), "rtfEditArea");
    l->addWidget(rtfEditArea, 4, 0, 1, 4);
    fraMode[3]->setVisible(false);
  }

  auto* frames = new QGridLayout;
  lbl_ISO15693_request = label("lbl_ISO15693_request", "request =", this);
  txt_ISO15693_request = named(new QLineEdit(this), "txt_ISO15693_request");
  txt_ISO15693_request->setReadOnly(true);
  lbl_ISO15693_answer = label("lbl_ISO15693_answer", "answer =", this);
  txt_ISO15693_answer = named(new QLineEdit(this), "txt_ISO15693_answer");
  txt_ISO15693_answer->setReadOnly(true);
  txt_ISO15693_answer_FastProtocol = named(new QLineEdit("Fast Protocol Answer (Hidden)", this),
                                           "txt_ISO15693_answer_FastProtocol");
  txt_ISO15693_answer_FastProtocol->setVisible(false);
  txt_ISO15693_AnyFrame = new FrameLineEdit("txt_ISO15693_AnyFrame", this);
  cmd_ISO15693_SendFrame = button("cmd_ISO15693_SendFrame", "Send any frame", this);
  frames->addWidget(lbl_ISO15693_request, 0, 0);
  frames->addWidget(txt_ISO15693_request, 0, 1);
  frames->addWidget(lbl_ISO15693_answer, 1, 0);
  frames->addWidget(txt_ISO15693_answer, 1, 1);
  frames->addWidget(txt_ISO15693_AnyFrame, 2, 1);
  frames->addWidget(cmd_ISO15693_SendFrame, 2, 0);
  centre->addLayout(frames);
  main->addLayout(centre, 2);

  // Right: the trace.
  auto* right = new QVBoxLayout;
  createLogView("rtfISO15693LogEdit");
  right->addWidget(logView(), 1);
  right->addWidget(createLogButtons());
  main->addLayout(right, 2);

  // The controls that setCommandsEnabled switches, in its order.
  commandWidgets_ = {tabStripchoice,
                     FraDataRate,
                     frmWriteTime,
                     cmdInventory,
                     cmdStayQuiet,
                     cmdSelect,
                     cmdResetToReady,
                     cmdInitiate,
                     cmdFastInitiate,
                     cmdInventoryInitiated,
                     cmdFastInventoryInitiated,
                     FraInventoryParameters,
                     FraInventoryOptions,
                     cmd_ISO15693_SendFrame,
                     cmdGetSystemInfo,
                     optExtensionFlag[0],
                     optExtensionFlag[1],
                     txt_ISO15693_AnyFrame,
                     cmdReadUser,
                     cmdFastReadSingleBlock,
                     cmdReadMultipleBlock,
                     cmdFastReadMultipleBlock,
                     pageView_->cboPageSize(),
                     txtUserAddress[0],
                     txtUserAddress[1],
                     fraMode[3],
                     cmdWriteSingleBlock,
                     FraAFI,
                     cmdWriteAFI,
                     cmdLockAFI,
                     FraDSFID,
                     cmdWriteDSFID,
                     cmdLockDSFID,
                     FraKill,
                     cmdKill,
                     cmdWriteKill,
                     cmdLockKill,
                     cmdLockBlock,
                     cmdGetMultipleBlockSecurityStatus,
                     chkLockBits,
                     FraPasswordRF,
                     cmdWriteSectorPassword,
                     cmdLockSectorPassword,
                     cmdPresentSectorPassword,
                     OptPasswordNumber[0],
                     OptPasswordNumber[1],
                     OptPasswordNumber[2]};

  // Events.
  connect(cmd_ISO15693_SendFrame, &QPushButton::clicked, this, [this] { cmd_ISO15693_SendFrame_Click(); });
  connect(cmdInventory, &QPushButton::clicked, this, [this] { cmdInventory_Click(); });
  connect(cmdAntiCollisionIso15693, &QPushButton::clicked, this, [this] { cmdAntiCollisionIso15693_Click(); });
  connect(chkLoop, &QCheckBox::clicked, this, [this] { chkLoop_Click(); });
  connect(lstTransponderUID, &QListWidget::itemClicked, this, [this] { lstTransponderUID_Click(); });
  connect(lblChoosenTag, &ClickableLabel::clicked, this, [this] { lblChoosenTag_Click(); });
  connect(tabStripchoice, &QTabBar::currentChanged, this, [this](int i) { tabStripchoice_Click(i + 1); });
  connect(cmdReadUser, &QPushButton::clicked, this, [this] { cmdReadUser_Click(); });
  connect(cmdReadMultipleBlock, &QPushButton::clicked, this, [this] { cmdReadMultipleBlock_Click(); });
  connect(cmdGetMultipleBlockSecurityStatus, &QPushButton::clicked, this,
          [this] { cmdGetMultipleBlockSecurityStatus_Click(); });
  connect(cmdLockBlock, &QPushButton::clicked, this, [this] { cmdLockBlock_Click(); });
  connect(cmdStopCommand, &QPushButton::clicked, this, [this] { cmdStopCommand_Click(); });
  connect(chkUserLoop, &QCheckBox::clicked, this, [this] { chkUserLoop_Click(); });
  connect(pageView_, &MemoryPageView::writeClicked, this, [this] { cmdWriteUser_Click(); });
  connect(pageView_, &MemoryPageView::cancelClicked, this, [this] { cmdCancelWriteTest_Click(); });
  connect(cmdWriteSingleBlock, &QPushButton::clicked, this, [this] { cmdWriteSingleBlock_Click(); });
  connect(cmdWriteAFI, &QPushButton::clicked, this, [this] { cmdWriteAFI_Click(); });
  connect(cmdWriteDSFID, &QPushButton::clicked, this, [this] { cmdWriteDSFID_Click(); });
  connect(cmdWriteKill, &QPushButton::clicked, this, [this] { cmdWriteKill_Click(); });
  connect(cmdKill, &QPushButton::clicked, this, [this] { cmdKill_Click(); });
  connect(cmdWriteSectorPassword, &QPushButton::clicked, this, [this] { cmdWriteSectorPassword_Click(); });
  connect(cmdLockSectorPassword, &QPushButton::clicked, this, [this] { cmdLockSectorPassword_Click(); });
  connect(cmdPresentSectorPassword, &QPushButton::clicked, this, [this] { cmdPresentSectorPassword_Click(); });
  connect(cmdSelect, &QPushButton::clicked, this, [this] { cmdSelect_Click(); });
  connect(cmdResetToReady, &QPushButton::clicked, this, [this] { cmdResetToReady_Click(); });
  connect(cmdStayQuiet, &QPushButton::clicked, this, [this] { cmdStayQuiet_Click(); });
  connect(cmdLockAFI, &QPushButton::clicked, this, [this] { cmdLockAFI_Click(); });
  connect(cmdLockDSFID, &QPushButton::clicked, this, [this] { cmdLockDSFID_Click(); });
  connect(cmdGetSystemInfo, &QPushButton::clicked, this, [this] { cmdGetSystemInfo_Click(); });
  connect(cmdInitiate, &QPushButton::clicked, this, [this] { cmdInitiate_Click(); });
  connect(cmdInventoryInitiated, &QPushButton::clicked, this, [this] { cmdInventoryInitiated_Click(); });
  connect(cmdFastInitiate, &QPushButton::clicked, this, [this] { cmdFastInitiate_Click(); });
  connect(cmdFastInventoryInitiated, &QPushButton::clicked, this, [this] { cmdFastInventoryInitiated_Click(); });
  connect(cmdFastReadSingleBlock, &QPushButton::clicked, this, [this] { cmdFastReadSingleBlock_Click(); });
  connect(cmdFastReadMultipleBlock, &QPushButton::clicked, this, [this] { cmdFastReadMultipleBlock_Click(); });
  connect(cmdLockKill, &QPushButton::clicked, this, [this] { cmdLockKill_Click(); });
  connect(cmdReadEHconfig, &QPushButton::clicked, this, [this] { cmdReadEHconfig_Click(); });
  connect(cmdCheckEHenable, &QPushButton::clicked, this, [this] { cmdCheckEHenable_Click(); });
  connect(cmdWriteEHCfg, &QPushButton::clicked, this, [this] { cmdWriteEHCfg_Click(); });
  connect(cmdSetEHenable, &QPushButton::clicked, this, [this] { cmdSetEHenable_Click(); });
  connect(cmdResetEHenable, &QPushButton::clicked, this, [this] { cmdResetEHenable_Click(); });
  connect(cmdWriteDOconfig, &QPushButton::clicked, this, [this] { cmdWriteDOconfig_Click(); });

  // Rules on leaving a box.
  for (QWidget* w : {static_cast<QWidget*>(txtTransponderUID), static_cast<QWidget*>(txtInventoryOptionalAFI),
                     static_cast<QWidget*>(txtInventoryMaskLenght), static_cast<QWidget*>(txtLOOPnumber),
                     static_cast<QWidget*>(txtEHconfig), static_cast<QWidget*>(txtWriteDOconfig)})
    w->installEventFilter(this);
  for (HexLineEdit* box : txtInventoryMaskValue) box->installEventFilter(this);
}

bool frmTL42RQ_ISO15693_UI::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusOut) {
    if (watched == txtTransponderUID) txtTransponderUID_LostFocus();
    else if (watched == txtInventoryOptionalAFI) txtInventoryOptionalAFI_LostFocus();
    else if (watched == txtInventoryMaskLenght) txtInventoryMaskLenght_LostFocus();
    else if (watched == txtLOOPnumber) txtLOOPnumber_LostFocus();
    else if (watched == txtEHconfig) txtEHconfig_LostFocus();
    else if (watched == txtWriteDOconfig) txtWriteDOconfig_LostFocus();
    else
      for (int i = 0; i < 8; ++i)
        if (watched == txtInventoryMaskValue[i]) txtInventoryMaskValue_LostFocus(i);
  }
  return Panel::eventFilter(watched, event);
}

// --- opening -----------------------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::load() {
  auto& g = glob::state();
  const Product& product = shell::currentProduct();
  const shell::ProductSizes& sizes = shell::productSizes();

  cmdAntiCollisionIso15693->setVisible(iso15693::controllerHasAnticollision(g.mcuRevision));
  g.rfAddressBytes = iso15693::rfAddressBytesForDensity(product.Density());
  g.iso15693RequestFlags = 0;

  lblLoopCount->setText("");
  txtLOOPnumber->setVisible(false);
  lblLOOPnumber->setVisible(false);
  g.currentTab = 1;
  fraMode[1]->setVisible(true);
  fraMode[2]->setVisible(false);
  pageView_->lstReadView()->clear();
  pageView_->fillPageSizeList(product.PageSize());
  cmdStopCommand->setVisible(false);

  const int width = iso15693::addressBoxWidth(sizes.memorySize);
  for (HexLineEdit* box : txtUserAddress) box->setMaxLength(width);
  txtUserAddress[0]->setText(QString(width, QLatin1Char('0')));
  txtUserAddress[1]->setText(latin1(iso15693::addressBoxText(sizes.blockAddressMask, width)));

  // A product without a row ends the program; nothing more is done.
  if (!applyProductTable()) return;

  // The echo, once more when it failed; nothing stops the opening.
  for (int attempt = 0; attempt < 2; ++attempt) {
    const reader::Answer a = exchange(Op::Echo);
    txt_ISO15693_answer->setText(latin1(a.text));
    log().untitled(reader::logWord(Op::Echo), text(txt_ISO15693_answer));
    yieldEvents(1);
    if (a.good("5500")) break;
  }

  const reader::Answer a = exchange(Op::Select, kSelectParameters);
  txt_ISO15693_request->clear();
  txt_ISO15693_answer->setText(latin1(a.text));
  log().titled(kSelectTitle, reader::logWord(Op::Select), kSelectParameters, text(txt_ISO15693_answer));
  txt_ISO15693_request->clear();
  txt_ISO15693_answer->clear();
}

bool frmTL42RQ_ISO15693_UI::applyProductTable() {
  const auto layout = iso15693::panelLayoutFor(shell::currentProduct().Reference());
  if (!layout) {
    endApplication();
    return false;
  }
  FraAFI->setVisible(layout->afiAndDsfid);
  FraDSFID->setVisible(layout->afiAndDsfid);
  FraKill->setVisible(layout->kill);
  cmdLockBlock->setVisible(layout->lockBlock);
  cmdGetMultipleBlockSecurityStatus->setVisible(layout->securityStatus);
  FraPasswordRF->setVisible(layout->password);
  cmdReadUser->setVisible(layout->readUser);
  cmdReadMultipleBlock->setVisible(layout->readMultipleBlock);
  cmdFastReadSingleBlock->setVisible(layout->fastReadSingleBlock);
  cmdFastReadMultipleBlock->setVisible(layout->fastReadMultipleBlock);
  cmdInitiate->setVisible(layout->initiate);
  cmdInventoryInitiated->setVisible(layout->inventoryInitiated);
  cmdFastInitiate->setVisible(layout->fastInitiate);
  cmdFastInventoryInitiated->setVisible(layout->fastInventoryInitiated);
  using iso15693::ExtensionChoice;
  switch (layout->extension) {
    case ExtensionChoice::AsDesigned:
      break;
    case ExtensionChoice::Index0Hidden:
    case ExtensionChoice::Index0Shown:
      optExtensionFlag[0]->setChecked(true);
      optExtensionFlag[0]->setVisible(layout->extension == ExtensionChoice::Index0Shown);
      optExtensionFlag[1]->setVisible(layout->extension == ExtensionChoice::Index0Shown);
      break;
    case ExtensionChoice::Index1Hidden:
      optExtensionFlag[1]->setChecked(true);
      optExtensionFlag[0]->setVisible(false);
      optExtensionFlag[1]->setVisible(false);
      break;
  }
  FraEnergyHarvesting->setVisible(layout->energyHarvesting);
  pageView_->lblNbData()->setVisible(layout->pageSize);
  pageView_->cboPageSize()->setVisible(layout->pageSize);
  chkLockBits->setVisible(true);
  chkLockBits->setChecked(false);
  return true;
}

void frmTL42RQ_ISO15693_UI::DEMO_TL42RQ_A_reconnect_iso15693(int mode, std::int32_t& status) {
  reader::DEMO_TL42RQ_A_reconnect_iso15693(reader::driver(), status, mode);
}

std::string frmTL42RQ_ISO15693_UI::CRC16_calculation(const std::vector<std::uint8_t>& bytes) {
  return crc16Bytes(bytes);
}

void frmTL42RQ_ISO15693_UI::clearFlagsOnClose() {
  auto& g = glob::state();
  inventoryLoop_ = false;
  g.autoLoopActive = false;
  g.transferRunning = false;
  g.writeMode = 0;
  setBusy(false);
}

void frmTL42RQ_ISO15693_UI::setBusy(bool busy) {
  if (busy == busy_) return;
  busy_ = busy;
  if (busy) QApplication::setOverrideCursor(Qt::WaitCursor);
  else QApplication::restoreOverrideCursor();
}

// --- flags and frames ---------------------------------------------------------------------------

int frmTL42RQ_ISO15693_UI::dataRateIndex() const {
  for (int i = 0; i < 4; ++i)
    if (optDataRate[i]->isChecked()) return i;
  return -1;
}

iso15693::FlagControls frmTL42RQ_ISO15693_UI::flagControls() const {
  iso15693::FlagControls f;
  f.base = static_cast<std::uint8_t>(glob::state().iso15693RequestFlags);
  f.select = chk_Select_Address_flag[0]->isChecked();
  f.address = chk_Select_Address_flag[1]->isChecked();
  f.lockBits = chkLockBits->isChecked();
  f.dataRate = dataRateIndex();
  f.extensionOption1 = !optExtensionFlag[0]->isChecked();
  return f;
}

iso15693::InventoryControls frmTL42RQ_ISO15693_UI::inventoryControls() const {
  iso15693::InventoryControls c;
  c.base = static_cast<std::uint8_t>(glob::state().iso15693RequestFlags);
  c.afiOption = chkInventoryAFIOptions->isChecked();
  c.oneSlot = optInventorySlot[0]->isChecked();
  c.dataRate = dataRateIndex();
  c.afi = text(txtInventoryOptionalAFI);
  c.maskLength = text(txtInventoryMaskLenght);
  for (int i = 0; i < 8; ++i) c.maskValues[i] = text(txtInventoryMaskValue[i]);
  return c;
}

std::string frmTL42RQ_ISO15693_UI::flagsOf(Command c, int width) {
  const auto flags = iso15693::commandFlagsText(c, flagControls(), width);
  if (!flags) {
    endApplication();
    return {};
  }
  return *flags;
}

std::string frmTL42RQ_ISO15693_UI::frameOf(Command c, const FrameFields& fields) {
  return iso15693::buildFrameWithFlags(c, flagsOf(c, fields.width), chk_Select_Address_flag[1]->isChecked(), fields);
}

int frmTL42RQ_ISO15693_UI::sendFrame(const std::string& title, const std::string& frame, ResponseStart start) {
  const reader::Answer a = exchange(Op::SendReceive, frame);
  return showAndCut(title, frame, a, start);
}

int frmTL42RQ_ISO15693_UI::sendFrame(const std::string& title, const std::string& frame, int reconnectMode,
                                     std::int32_t& status) {
  reader::Answer a;
  if (reconnectMode == 0) {
    a = exchange(Op::SendReceive, frame);
  } else {
    // The fast commands reconnect with "011D", so that the command can go on at its rate.
    auto& d = reader::driver();
    a = reader::callOnce(d, Op::SendReceive, frame);
    if (a.status == reader::kStatusNoBoard) {
      std::int32_t s = a.status;
      DEMO_TL42RQ_A_reconnect_iso15693(reconnectMode, s);
      a = reader::callOnce(d, Op::SendReceive, frame);
    }
  }
  status = a.status;
  return showAndCut(title, frame, a, ResponseStart::Empty);
}

int frmTL42RQ_ISO15693_UI::showAndCut(const std::string& title, const std::string& frame, const reader::Answer& a,
                                      ResponseStart start) {
  txt_ISO15693_request->setText(latin1(frame));
  txt_ISO15693_answer->setText(latin1(a.text));
  // The trace and the cut read the answer back from its box.
  const std::string answer = text(txt_ISO15693_answer);
  log().titled(title, reader::logWord(Op::SendReceive), frame, answer);
  // Each command is judged by its own answer: only a loop of one handler may keep the
  // response of its previous pass when an answer is not cut.
  const iso15693::Cut cut =
      iso15693::cutAnswer(a.status, answer, start == ResponseStart::Previous ? tagResponse_ : std::string());
  if (!cut.traceNote.empty()) log().appendRaw(cut.traceNote);
  tagResponse_ = cut.response;
  yieldEvents(1);
  return static_cast<int>(tagResponse_.size());
}

// --- free frame ---------------------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::cmd_ISO15693_SendFrame_Click() {
  HandlerScope scope(this);
  const std::string frame = text(txt_ISO15693_AnyFrame);
  if (frame.empty()) {
    yieldEvents(1);
    return;
  }
  const reader::Answer a = exchange(Op::SendReceive, frame);
  txt_ISO15693_request->setText(latin1(frame));
  txt_ISO15693_answer->setText(latin1(a.text));
  log().titled("SEND FRAME", reader::logWord(Op::SendReceive), frame, text(txt_ISO15693_answer));
}

void frmTL42RQ_ISO15693_UI::setCommandsEnabled(bool enabled) {
  for (QWidget* w : commandWidgets_)
    if (w) w->setEnabled(enabled);
  glob::state().stopRequested = false;
}

// --- inventory and anticollision ------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::fillTransponderList(
    const std::vector<std::pair<std::string, iso15693::InventoryEntry>>& rows) {
  lstTransponderUID->clear();
  lstTransponderUID->addItem(iso15693::kListHeader);
  lstTransponderUID->addItem("");
  for (const auto& [number, entry] : rows) lstTransponderUID->addItem(latin1(iso15693::transponderRow(number, entry)));
}

void frmTL42RQ_ISO15693_UI::showInventoryResponse(const std::string& number) {
  fillTransponderList({});
  if (tagResponse_.empty()) {
    memoryBuffer().AddItem(iso15693::kNoDetectedAnswer);
    return;
  }
  const std::string flags = iso15693::responseFlags(tagResponse_);
  if (flags == "00") {
    lstTransponderUID->addItem(latin1(iso15693::transponderRow(number, iso15693::inventoryEntry(tagResponse_))));
  } else {
    memoryBuffer().AddItem(iso15693::answerFormatProblem(flags));
  }
}

void frmTL42RQ_ISO15693_UI::cmdInventory_Click() {
  HandlerScope scope(this);
  setCommandsEnabled(false);
  lstTransponderUID->clear();
  FraINVENTORYresponse->setTitle("INVENTORY response");
  const iso15693::InventoryControls controls = inventoryControls();
  const auto frame = iso15693::inventoryFrame(controls, iso15693::InventoryCommand::Inventory);
  if (!frame) return endApplication();
  const std::string number = iso15693::inventoryRowNumber(controls);
  // The first pass starts from no response; later passes show the last good row again
  // when their answer is not cut.
  tagResponse_.clear();
  do {
    sendFrame(iso15693::inventoryRow(iso15693::InventoryCommand::Inventory).title, *frame, ResponseStart::Previous);
    showInventoryResponse(number);
    yieldEvents(1);
  } while (inventoryLoop_ && !leaving());
  setCommandsEnabled(true);
}

void frmTL42RQ_ISO15693_UI::cmdAntiCollisionIso15693_Click() {
  HandlerScope scope(this);
  setCommandsEnabled(false);
  lstTransponderUID->clear();
  FraINVENTORYresponse->setTitle("INVENTORY response");
  iso15693::InventoryControls controls = inventoryControls();
  controls.afi.clear();  // read and not used
  const auto frame = iso15693::anticollisionFrame(controls);
  if (!frame) return endApplication();
  auto& d = reader::driver();
  do {
    reader::Answer a = reader::callOnce(d, Op::KQCmd, *frame);
    if (a.status == reader::kStatusNoBoard) {
      std::int32_t status = a.status;
      DEMO_TL42RQ_A_reconnect_iso15693(0, status);
      // The repeat goes out through Send Receive, as it always has.
      a = reader::callOnce(d, Op::SendReceive, *frame);
    }
    yieldEvents(1);
    txt_ISO15693_request->setText(latin1(*frame));
    txt_ISO15693_answer->setText(latin1(a.text));
    const std::string answer = text(txt_ISO15693_answer);
    log().titled("ANTICOLLISION", reader::logWord(Op::KQCmd), *frame, answer);
    const auto entries = iso15693::anticollisionEntries(a.status, answer);
    std::vector<std::pair<std::string, iso15693::InventoryEntry>> rows;
    for (std::size_t n = 0; n < entries.size(); ++n)
      rows.emplace_back(iso15693::hex2(static_cast<std::uint32_t>(n + 1)), entries[n]);
    fillTransponderList(rows);
    if (entries.empty()) memoryBuffer().AddItem(iso15693::kNoDetectedAnswer);
    yieldEvents(1);
  } while (inventoryLoop_ && !leaving());
  setCommandsEnabled(true);
}

void frmTL42RQ_ISO15693_UI::chkLoop_Click() { inventoryLoop_ = chkLoop->isChecked(); }

void frmTL42RQ_ISO15693_UI::lstTransponderUID_Click() {
  QListWidgetItem* item = lstTransponderUID->currentItem();
  if (!item) return;
  txtTransponderUID->clear();
  glob::state().transponderUIDFrame.clear();
  txtTransponderUID->setText(latin1(iso15693::uidOfListRow(item->text().toLatin1().toStdString())));
  // Through the box and back, so that its rule on leaving builds the frame order.
  lstTransponderUID->setFocus();
  txtTransponderUID->setFocus();
  txtTransponderUID_LostFocus();
  lstTransponderUID->setFocus();
}

void frmTL42RQ_ISO15693_UI::txtTransponderUID_LostFocus() {
  const iso15693::UidBoxResult r = iso15693::leaveUidBox(text(txtTransponderUID));
  auto& g = glob::state();
  setRed(txtTransponderUID, r.red);
  switch (r.frame) {
    case iso15693::UidBoxResult::Frame::Rebuilt:
      g.transponderUIDFrame = r.uidFrame;
      break;
    case iso15693::UidBoxResult::Frame::Emptied:
      g.transponderUIDFrame.clear();
      break;
    case iso15693::UidBoxResult::Frame::Kept:
      break;
  }
  if (text(txtTransponderUID) != r.boxText) txtTransponderUID->setText(latin1(r.boxText));
}

void frmTL42RQ_ISO15693_UI::lblChoosenTag_Click() {
  glob::state().transponderUIDFrame = iso15693::uidFrameFromLabelClick(text(txtTransponderUID));
}

void frmTL42RQ_ISO15693_UI::txtInventoryOptionalAFI_LostFocus() {
  txtInventoryOptionalAFI->setText(latin1(iso15693::byteBoxOnLeave(text(txtInventoryOptionalAFI))));
}

void frmTL42RQ_ISO15693_UI::txtInventoryMaskValue_LostFocus(int index) {
  if (index < 0 || index > 7) return;
  HexLineEdit* box = txtInventoryMaskValue[index];
  box->setText(latin1(iso15693::byteBoxOnLeave(text(box))));
}

void frmTL42RQ_ISO15693_UI::txtInventoryMaskLenght_LostFocus() {
  const std::string t = text(txtInventoryMaskLenght);
  if (t.empty()) return;
  txtInventoryMaskLenght->setText(latin1(iso15693::maskLengthOnLeave(t)));
  updateMaskFields();
}

void frmTL42RQ_ISO15693_UI::updateMaskFields() {
  const int n = iso15693::maskByteCount(iso15693::maskLengthValue(text(txtInventoryMaskLenght)));
  for (int i = 0; i < 8; ++i) txtInventoryMaskValue[i]->setVisible(i < n);
}

// --- tabs ---------------------------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::tabStripchoice_Click(int newIndex) {
  auto& g = glob::state();
  if (newIndex == g.currentTab) return;
  g.writeMode = 0;
  g.transferRunning = false;
  g.autoLoopActive = false;
  pageGridOpen_ = false;
  yieldEvents(1);
  pageView_->lstReadView()->setVisible(false);
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  if (g.currentTab >= 1 && g.currentTab <= 3) fraMode[g.currentTab]->setVisible(false);
  g.currentTab = newIndex;
  if (newIndex == 1 || newIndex == 2) {
    fraMode[newIndex]->setVisible(true);
    chkUserLoop->setChecked(false);
  }
}

// --- loops ------------------------------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::loopOpening(bool readHandler) {
  lblLoopCount->setText(glob::state().autoLoopActive ? "1" : "");
  setCommandsEnabled(false);
  if (readHandler) cmdStopCommand->setVisible(true);
  setBusy(true);
}

void frmTL42RQ_ISO15693_UI::loopEnding() {
  setAddressBoxesLocked(false);
  setCommandsEnabled(true);
  cmdStopCommand->setVisible(false);
  setBusy(false);
}

void frmTL42RQ_ISO15693_UI::autoLoopStep() {
  auto& g = glob::state();
  if (!g.autoLoopActive) return;
  const std::string t = text(txtLOOPnumber);
  const long count = pageview::numberOf(lblLoopCount->text().toStdString());
  if (t == "0") {
    lblLoopCount->setText(QString::number(count + 1));
  } else if (t == "1") {
    g.autoLoopActive = false;
    txtLOOPnumber->setVisible(false);
    lblLOOPnumber->setVisible(false);
    chkUserLoop->setChecked(false);
    txtLOOPnumber->setText("0");
    txtLOOPnumber->setFixedWidth(2 * kByteBoxWidth);
  } else {
    lblLoopCount->setText(QString::number(count + 1));
    txtLOOPnumber->setText(QString::number(pageview::numberOf(t) - 1));
  }
  yieldEvents(1);
}

void frmTL42RQ_ISO15693_UI::chkUserLoop_Click() {
  const bool on = chkUserLoop->isChecked();
  glob::state().autoLoopActive = on;
  txtLOOPnumber->setVisible(on);
  lblLOOPnumber->setVisible(on);
}

void frmTL42RQ_ISO15693_UI::txtLOOPnumber_LostFocus() {
  if (txtLOOPnumber->text().isEmpty()) txtLOOPnumber->setText(latin1(reader::hexPadWidth7(0, 1)));
}

void frmTL42RQ_ISO15693_UI::cmdStopCommand_Click() {
  // Enabling first: setCommandsEnabled clears the request that follows.
  setCommandsEnabled(true);
  glob::state().stopRequested = true;
  cmdStopCommand->setVisible(false);
}

void frmTL42RQ_ISO15693_UI::setAddressBoxesLocked(bool locked) {
  txtUserAddress[0]->setReadOnly(locked);
  txtUserAddress[1]->setReadOnly(locked);
  pageView_->cboPageSize()->setLocked(locked);
}

bool frmTL42RQ_ISO15693_UI::checkAddressBoxes() {
  for (HexLineEdit* box : txtUserAddress) {
    if (!reader::checkHexAddress(text(box))) {
      dialogs().message(this, reader::kInvalidAddress.text, reader::kInvalidAddress.title, MessageIcon::Exclamation);
      return false;
    }
  }
  return true;
}

long frmTL42RQ_ISO15693_UI::addressBoxValue(int index) const {
  const auto v = hex::toNumber(text(txtUserAddress[index]));
  return static_cast<long>(v.value_or(0) & 0x7FFFFFFF) & shell::productSizes().blockAddressMask;
}

int frmTL42RQ_ISO15693_UI::addressBoxWidth() const { return std::max(1, txtUserAddress[0]->maxLength()); }

void frmTL42RQ_ISO15693_UI::writeBackRange(long start, long end) {
  txtUserAddress[0]->setText(latin1(iso15693::addressBoxText(start, addressBoxWidth())));
  txtUserAddress[1]->setText(latin1(iso15693::addressBoxText(end, addressBoxWidth())));
}

// --- block routines -----------------------------------------------------------------------------

int frmTL42RQ_ISO15693_UI::sendReadSingleBlock(long& address, long count, int pageSize, int width) {
  auto& g = glob::state();
  memoryBuffer().Clear();
  const Command command = fastReads_ ? Command::FastReadSingleBlock : Command::ReadSingleBlock;
  const std::string flags = flagsOf(command, width);
  const bool addressed = chk_Select_Address_flag[1]->isChecked();
  int result = 0;
  readStopped_ = false;
  for (long i = 0; i < count; ++i) {
    FrameFields f;
    f.uidFrame = g.transponderUIDFrame;
    f.block = static_cast<std::uint32_t>(address);
    f.width = width;
    std::int32_t status = 0;
    result = sendFrame(iso15693::commandRow(command).title,
                       iso15693::buildFrameWithFlags(command, flags, addressed, f), fastReads_ ? 1 : 0, status);
    std::string row;
    const std::string rflags = iso15693::responseFlags(tagResponse_);
    if (tagResponse_.empty()) row = iso15693::kNoDetectedAnswer;
    else if (rflags == "00") row = iso15693::readSingleBlockRow(tagResponse_, chkLockBits->isChecked(), pageSize);
    else if (rflags == "01") row = iso15693::iso15693ErrorText(iso15693::responseErrorCode(tagResponse_));
    else row = iso15693::answerFormatProblem(rflags);
    memoryBuffer().AddItem(row);
    yieldEvents(1);
    ++address;
    if (g.stopRequested) {
      g.stopRequested = false;
      readStopped_ = true;
      return 0;
    }
    if (leaving()) {
      readStopped_ = true;
      return 0;
    }
  }
  return result;
}

int frmTL42RQ_ISO15693_UI::sendReadMultipleBlock(long address, long count, int pageSize, int width) {
  FrameFields f;
  f.uidFrame = glob::state().transponderUIDFrame;
  f.block = static_cast<std::uint32_t>(address);
  f.width = width;
  f.count = static_cast<std::uint32_t>(count);
  const Command command = fastReads_ ? Command::FastReadMultipleBlock : Command::ReadMultipleBlock;
  std::int32_t status = 0;
  const int result = sendFrame(iso15693::commandRow(command).title, frameOf(command, f), fastReads_ ? 1 : 0, status);
  const std::string rflags = iso15693::responseFlags(tagResponse_);
  if (tagResponse_.empty()) {
    for (long i = 0; i < count; ++i) memoryBuffer().AddItem(iso15693::kNoDetectedAnswerLower);
  } else if (rflags == "00") {
    for (std::string& row : iso15693::readMultipleBlockRows(tagResponse_, chkLockBits->isChecked(), pageSize, count))
      memoryBuffer().AddItem(std::move(row));
  } else if (rflags == "01") {
    const std::string t = iso15693::iso15693ErrorText(iso15693::responseErrorCode(tagResponse_));
    for (long i = 0; i < count; ++i) memoryBuffer().AddItem(t);
  } else {
    for (long i = 0; i < count; ++i) memoryBuffer().AddItem(iso15693::kNoTagAnswer);
  }
  return result;
}

int frmTL42RQ_ISO15693_UI::sendGetMultipleBlockSecurityStatus(long address, long count, int width) {
  FrameFields f;
  f.uidFrame = glob::state().transponderUIDFrame;
  f.block = static_cast<std::uint32_t>(address);
  f.width = width;
  f.count = static_cast<std::uint32_t>(count);
  const int result = sendFrame(iso15693::commandRow(Command::GetMultipleBlockSecurityStatus).title,
                               frameOf(Command::GetMultipleBlockSecurityStatus, f));
  const std::string rflags = iso15693::responseFlags(tagResponse_);
  if (tagResponse_.empty()) {
    for (long i = 0; i < count; ++i) memoryBuffer().AddItem(iso15693::kNoDetectedAnswerLower);
  } else if (rflags == "00") {
    for (std::string& row : iso15693::securityStatusRows(tagResponse_, count)) memoryBuffer().AddItem(std::move(row));
  } else if (rflags == "01") {
    const std::string t = iso15693::iso15693ErrorText(iso15693::responseErrorCode(tagResponse_));
    for (long i = 0; i < count; ++i) memoryBuffer().AddItem(t);
  } else {
    for (long i = 0; i < count; ++i) memoryBuffer().AddItem(iso15693::kNoTagAnswer);
  }
  // The button goes after each request, so it vanishes after the first of a long walk.
  cmdStopCommand->setVisible(false);
  return result;
}

int frmTL42RQ_ISO15693_UI::sendWriteSingleBlock(long address, const std::string& data, int, int width) {
  FrameFields f;
  f.uidFrame = glob::state().transponderUIDFrame;
  f.block = static_cast<std::uint32_t>(address);
  f.width = width;
  f.data = data;
  const int result =
      sendFrame(iso15693::commandRow(Command::WriteSingleBlock).title, frameOf(Command::WriteSingleBlock, f));
  const iso15693::WriteJudgement j = iso15693::judgeWriteSingleBlock(tagResponse_);
  if (j.setsLabel) lblWriteTime->setText(latin1(j.label));
  if (j.addsRow) memoryBuffer().AddItem(j.row);
  return result;
}

int frmTL42RQ_ISO15693_UI::sendStateCommand(Command c, const FrameFields& fields) {
  const int result = sendFrame(iso15693::commandRow(c).title, frameOf(c, fields));
  const iso15693::WriteJudgement j = iso15693::judgeStateCommand(tagResponse_);
  if (j.setsLabel) lblWriteTime->setText(latin1(j.label));
  return result;
}

void frmTL42RQ_ISO15693_UI::sendLockBlock(long address, int width) {
  FrameFields f;
  f.uidFrame = glob::state().transponderUIDFrame;
  f.block = static_cast<std::uint32_t>(address);
  f.width = width;
  sendStateCommand(Command::LockBlock, f);
}

namespace {
FrameFields withUid(const std::string& uid) {
  FrameFields f;
  f.uidFrame = uid;
  return f;
}
FrameFields withData(const std::string& data) {
  FrameFields f = withUid(glob::state().transponderUIDFrame);
  f.data = data;
  return f;
}
}  // namespace

int frmTL42RQ_ISO15693_UI::sendSelect(const std::string& uid) { return sendStateCommand(Command::Select, withUid(uid)); }
// The two others put transponderUIDFrame into the frame, and only with the Address box.
int frmTL42RQ_ISO15693_UI::sendResetToReady(const std::string&) {
  return sendStateCommand(Command::ResetToReady, withUid(glob::state().transponderUIDFrame));
}
int frmTL42RQ_ISO15693_UI::sendStayQuiet(const std::string&) {
  return sendStateCommand(Command::StayQuiet, withUid(glob::state().transponderUIDFrame));
}
int frmTL42RQ_ISO15693_UI::sendWriteAFI(const std::string& data) { return sendStateCommand(Command::WriteAFI, withData(data)); }
int frmTL42RQ_ISO15693_UI::sendLockAFI() { return sendStateCommand(Command::LockAFI, withData("")); }
int frmTL42RQ_ISO15693_UI::sendWriteDSFID(const std::string& data) {
  return sendStateCommand(Command::WriteDSFID, withData(data));
}
int frmTL42RQ_ISO15693_UI::sendLockDSFID() { return sendStateCommand(Command::LockDSFID, withData("")); }
int frmTL42RQ_ISO15693_UI::sendWriteKill(const std::string& data) { return sendStateCommand(Command::WriteKill, withData(data)); }
int frmTL42RQ_ISO15693_UI::sendKill(const std::string& data) { return sendStateCommand(Command::Kill, withData(data)); }
int frmTL42RQ_ISO15693_UI::sendWriteSectorPassword(int number, const std::string& data) {
  FrameFields f = withData(data);
  f.passwordNumber = number;
  return sendStateCommand(Command::WriteSectorPassword, f);
}
int frmTL42RQ_ISO15693_UI::sendPresentPassword(int number, const std::string& data) {
  FrameFields f = withData(data);
  f.passwordNumber = number;
  return sendStateCommand(Command::PresentPassword, f);
}
int frmTL42RQ_ISO15693_UI::sendLockSectorPassword(long block, int width, const std::string& data) {
  FrameFields f = withData(data);
  f.block = static_cast<std::uint32_t>(block);
  f.width = width;
  return sendStateCommand(Command::LockSectorPassword, f);
}

// --- read handlers ------------------------------------------------------------------------------

frmTL42RQ_ISO15693_UI::FastReadScope::~FastReadScope() {
  if (on) panel->leaveFastMode();
  panel->fastReads_ = false;
}

bool frmTL42RQ_ISO15693_UI::openReadRange(bool fast, ReadRange& range) {
  loopOpening(true);
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  setAddressBoxesLocked(true);
  glob::state().writeMode = 0;
  if (!checkAddressBoxes()) {
    loopEnding();
    return false;
  }
  if (fast) enterFastMode();
  fastReads_ = fast;
  range.start = addressBoxValue(0);
  const long end = addressBoxValue(1);
  writeBackRange(range.start, end);
  range.count = iso15693::rangeCount(range.start, end, shell::productSizes().blockAddressMask);
  pageView_->lstReadView()->clear();
  pageView_->lstReadView()->setVisible(true);
  lblWriteTime->setText("");
  return true;
}

void frmTL42RQ_ISO15693_UI::cmdReadUser_Click() { readSingleHandler(false); }
void frmTL42RQ_ISO15693_UI::cmdFastReadSingleBlock_Click() { readSingleHandler(true); }

void frmTL42RQ_ISO15693_UI::readSingleHandler(bool fast) {
  HandlerScope scope(this);
  auto& g = glob::state();
  const Product& product = shell::currentProduct();
  FastReadScope fastMode{this, fast};
  ReadRange range;
  if (!openReadRange(fast, range)) return;
  const long start = range.start;
  const long count = range.count;
  long address = start;
  int result = sendReadSingleBlock(address, count, product.PageSize(), g.rfAddressBytes);
  // A pass that STOP cut short ends AUTO LOOP as well.
  const bool stopped = readStopped_;
  pageView_->showReadRows(count, start);
  while (!stopped && g.autoLoopActive && !leaving()) {
    lblWriteTime->setText("");
    address = start;
    result = sendReadSingleBlock(address, count, product.PageSize(), g.rfAddressBytes);
    if (result <= 0 || leaving()) break;
    pageView_->showReadRows(count, start);
    autoLoopStep();
    yieldEvents(1);
  }
  loopEnding();
}

void frmTL42RQ_ISO15693_UI::cmdReadMultipleBlock_Click() { readMultipleHandler(false); }
void frmTL42RQ_ISO15693_UI::cmdFastReadMultipleBlock_Click() { readMultipleHandler(true); }

void frmTL42RQ_ISO15693_UI::readMultipleHandler(bool fast) {
  HandlerScope scope(this);
  auto& g = glob::state();
  const Product& product = shell::currentProduct();
  FastReadScope fastMode{this, fast};
  ReadRange range;
  if (!openReadRange(fast, range)) return;
  const long start = range.start;
  const long count = range.count;
  memoryBuffer().Clear();
  // First pass: aligned chunks of at most eight blocks, with the product's own address
  // width. The walk does not mask its address.
  long a = start;
  long r = count;
  while (r > 0) {
    const long chunk = iso15693::readMultipleChunk(a, r);
    const int result = sendReadMultipleBlock(a, chunk, product.PageSize(), product.NbAdressByteRF());
    if (result == -1 || g.stopRequested || leaving()) return loopEnding();
    r -= chunk;
    a += chunk;
  }
  pageView_->showReadRows(count, start);
  // Later passes: the whole range in one request, rows piling up in the buffer.
  while (g.autoLoopActive && !leaving()) {
    lblWriteTime->setText("");
    const int result = sendReadMultipleBlock(start, count, product.PageSize(), g.rfAddressBytes);
    if (result <= 0 || leaving()) break;
    pageView_->showReadRows(count, start);
    autoLoopStep();
    yieldEvents(1);
  }
  loopEnding();
}

void frmTL42RQ_ISO15693_UI::cmdGetMultipleBlockSecurityStatus_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  loopOpening(true);
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  setAddressBoxesLocked(true);
  g.writeMode = 0;
  if (!checkAddressBoxes()) return loopEnding();
  const long start = addressBoxValue(0);
  const long end = addressBoxValue(1);
  writeBackRange(start, end);
  const long count = iso15693::rangeCount(start, end, shell::productSizes().blockAddressMask);
  pageView_->lstReadView()->clear();
  pageView_->lstReadView()->setVisible(true);
  lblWriteTime->setText("");
  memoryBuffer().Clear();
  long a = start;
  long r = count;
  int result = 0;
  while (r > 0) {
    const long chunk = iso15693::securityStatusChunk(r);
    result = sendGetMultipleBlockSecurityStatus(a, chunk, g.rfAddressBytes);
    if (result == -1 || g.stopRequested || leaving()) return loopEnding();
    r -= chunk;
    a += chunk;
  }
  if (result >= 0) pageView_->showReadRows(count, start);
  while (g.autoLoopActive && !leaving()) {
    lblWriteTime->setText("");
    result = sendGetMultipleBlockSecurityStatus(start, count, g.rfAddressBytes);
    if (result <= 0 || leaving()) break;
    pageView_->showReadRows(count, start);
    autoLoopStep();
    yieldEvents(1);
  }
  loopEnding();
}

void frmTL42RQ_ISO15693_UI::readMultipleBlockOneRequest() {
  HandlerScope scope(this);
  auto& g = glob::state();
  const Product& product = shell::currentProduct();
  loopOpening(true);
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  setAddressBoxesLocked(true);
  g.writeMode = 0;
  if (!checkAddressBoxes()) return loopEnding();
  const long start = addressBoxValue(0);
  const long end = addressBoxValue(1);
  writeBackRange(start, end);
  const long count = iso15693::rangeCount(start, end, shell::productSizes().blockAddressMask);
  if (count > 14) {
    dialogs().message(this, "WARNING : \r\nTL42RQ is able to transfer 14 pages of 4 bytes max.",
                      "DEMO-TL42RQ-A : Read Multiple Block", MessageIcon::Exclamation);
    return loopEnding();
  }
  pageView_->lstReadView()->clear();
  pageView_->lstReadView()->setVisible(true);
  lblWriteTime->setText("");
  memoryBuffer().Clear();
  sendReadMultipleBlock(start, count, product.PageSize(), g.rfAddressBytes);
  pageView_->showReadRows(count, start);
  loopEnding();
}

void frmTL42RQ_ISO15693_UI::readWholeMemorySingle() {
  HandlerScope scope(this);
  auto& g = glob::state();
  const Product& product = shell::currentProduct();
  loopOpening(true);
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  g.writeMode = 0;
  const long count = shell::productSizes().blockAddressMask + 1;
  pageView_->lstReadView()->clear();
  pageView_->lstReadView()->setVisible(true);
  lblWriteTime->setText("");
  long address = 0;
  int result = sendReadSingleBlock(address, count, product.PageSize(), g.rfAddressBytes);
  const bool stopped = readStopped_;
  pageView_->showReadRows(count, 0);
  while (!stopped && g.autoLoopActive && !leaving()) {
    address = 0;
    result = sendReadSingleBlock(address, count, product.PageSize(), g.rfAddressBytes);
    if (result <= 0 || leaving()) break;
    pageView_->showReadRows(count, 0);
    autoLoopStep();
    yieldEvents(1);
  }
  loopEnding();
}

// --- lock block ---------------------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::cmdLockBlock_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  loopOpening(false);
  if (!checkAddressBoxes()) return loopEnding();
  g.transferRunning = true;
  const long mask = shell::productSizes().blockAddressMask;
  do {
    long address = addressBoxValue(0);
    const long end = addressBoxValue(1);
    do {
      sendLockBlock(address, g.rfAddressBytes);
      yieldEvents(1);
      if (end == address) g.transferRunning = false;
      address = (address + 1) & mask;
    } while (g.transferRunning && !leaving());
    g.transferRunning = true;
    autoLoopStep();
  } while (g.autoLoopActive && !leaving());
  g.transferRunning = false;
  loopEnding();
}

// --- the write grid -----------------------------------------------------------------------------

int frmTL42RQ_ISO15693_UI::passwordNumber() const {
  if (OptPasswordNumber[0]->isChecked()) return 1;
  if (OptPasswordNumber[1]->isChecked()) return 2;
  return 3;
}

void frmTL42RQ_ISO15693_UI::openGrid(int writeMode, const char* caption, bool checkBoxes) {
  setCommandsEnabled(false);
  if (checkBoxes && !checkAddressBoxes()) {
    setCommandsEnabled(true);
    return;
  }
  glob::state().writeMode = writeMode;
  txtUserAddress[0]->setReadOnly(true);
  txtUserAddress[1]->setReadOnly(false);
  pageView_->cmdWriteUser()->setText(caption);
  // Modes 1, 2 and 6 lay out one byte; the others the page size, mode 3 included.
  const bool oneByte = writeMode == 1 || writeMode == 2 || writeMode == 6;
  pageView_->setPageGrid(oneByte ? 1 : static_cast<int>(pageview::numberOf(pageView_->pageSizeText())));
  pageGridOpen_ = true;
  pageView_->lstReadView()->setVisible(false);
  pageView_->clearFill();
  pageView_->fraPageWrite()->setVisible(true);
  pageView_->PWData(0)->setFocus();
}

void frmTL42RQ_ISO15693_UI::cmdWriteSingleBlock_Click() { openGrid(0, "Write Single Block", true); }
void frmTL42RQ_ISO15693_UI::cmdWriteAFI_Click() { openGrid(1, "Write AFI", true); }
void frmTL42RQ_ISO15693_UI::cmdWriteDSFID_Click() { openGrid(2, "Write DSFID", true); }
void frmTL42RQ_ISO15693_UI::cmdWriteKill_Click() { openGrid(3, "Write Single Block", true); }
void frmTL42RQ_ISO15693_UI::cmdKill_Click() { openGrid(4, "Write Single Block", true); }
void frmTL42RQ_ISO15693_UI::cmdWriteSectorPassword_Click() { openGrid(5, "Write Password", true); }
void frmTL42RQ_ISO15693_UI::cmdLockSectorPassword_Click() { openGrid(6, "Lock Password", false); }
void frmTL42RQ_ISO15693_UI::cmdPresentSectorPassword_Click() { openGrid(7, "Present Password", true); }

void frmTL42RQ_ISO15693_UI::cmdCancelWriteTest_Click() {
  auto& g = glob::state();
  g.transferRunning = false;
  pageGridOpen_ = false;
  pageView_->fraPageWrite()->setVisible(false);
  pageView_->clearFill();
  if (g.autoLoopActive) g.autoLoopActive = false;
  if (chkUserLoop->isChecked()) chkUserLoop->setChecked(false);
  setCommandsEnabled(true);
  txtUserAddress[0]->setReadOnly(false);
  txtUserAddress[1]->setReadOnly(false);
}

void frmTL42RQ_ISO15693_UI::cmdWriteUser_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  QPushButton* write = pageView_->cmdWriteUser();
  loopOpening(false);
  pageView_->setGridEnabled(false);
  write->setEnabled(false);
  const auto unlock = [&] {
    write->setEnabled(true);
    pageView_->setGridEnabled(true);
    pageView_->fraPageWrite()->setVisible(false);
    pageView_->clearFill();
    pageGridOpen_ = false;
    setCommandsEnabled(true);
    txtUserAddress[0]->setReadOnly(false);
    txtUserAddress[1]->setReadOnly(false);
    setBusy(false);
  };
  if (!checkAddressBoxes()) return unlock();
  const long mask = shell::productSizes().blockAddressMask;
  const long start = addressBoxValue(0);
  const long end = addressBoxValue(1);
  const int bytes = pageview::oneByteMode(g.writeMode) ? 1 : static_cast<int>(pageview::numberOf(pageView_->pageSizeText()));
  const std::string data = pageView_->gridData(bytes);
  g.transferRunning = true;
  if (!reader::checkHexData(data, 1)) {
    dialogs().message(this, reader::kInvalidData.text, reader::kInvalidData.title, MessageIcon::Exclamation);
    pageView_->setGridEnabled(true);
    write->setEnabled(true);
    setCommandsEnabled(true);
    setBusy(false);
    return;
  }
  do {
    if (g.writeMode == 0) {
      const long count = iso15693::rangeCount(start, end, mask);
      long address = start;
      pageView_->lstReadView()->clear();
      pageView_->lstReadView()->setVisible(true);
      memoryBuffer().Clear();
      bool reachedEnd = false;
      do {
        sendWriteSingleBlock(address, data, bytes, g.rfAddressBytes);
        yieldEvents(1);
        if (end == address) {
          g.transferRunning = false;
          reachedEnd = true;
        }
        address = (address + 1) & mask;
      } while (g.transferRunning && !leaving());
      if (reachedEnd) {
        pageView_->showReadRows(count, start);
      } else {
        // Cancelled in the walk: the grid's own Cancel already closed it.
        pageView_->lstReadView()->setEnabled(false);
        txtUserAddress[0]->setReadOnly(false);
        txtUserAddress[1]->setReadOnly(false);
        setCommandsEnabled(true);
        setBusy(false);
        return;
      }
    } else {
      switch (g.writeMode) {
        case 1:
          sendWriteAFI(data);
          break;
        case 2:
          sendWriteDSFID(data);
          break;
        case 3:
          sendWriteKill(data);
          break;
        case 4:
          sendKill(data);
          break;
        case 5:
          sendWriteSectorPassword(passwordNumber(), data);
          break;
        case 6:
          sendLockSectorPassword(start, g.rfAddressBytes, data);
          break;
        case 7:
          sendPresentPassword(passwordNumber(), data);
          break;
        default:
          break;
      }
    }
    yieldEvents(1);
    g.transferRunning = true;
    autoLoopStep();
  } while (g.autoLoopActive && !leaving());
  g.transferRunning = false;
  unlock();
}

// --- tag-state commands ---------------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::stateCommandHandler(int (frmTL42RQ_ISO15693_UI::*routine)(const std::string&)) {
  HandlerScope scope(this);
  auto& g = glob::state();
  loopOpening(false);
  do {
    const std::string uid =
        text(txtTransponderUID) == kNoTransponderUid ? std::string("0000000000000000") : g.transponderUIDFrame;
    (this->*routine)(uid);
    autoLoopStep();
  } while (g.autoLoopActive && !leaving());
  setCommandsEnabled(true);
  setBusy(false);
}

void frmTL42RQ_ISO15693_UI::cmdSelect_Click() { stateCommandHandler(&frmTL42RQ_ISO15693_UI::sendSelect); }
void frmTL42RQ_ISO15693_UI::cmdResetToReady_Click() { stateCommandHandler(&frmTL42RQ_ISO15693_UI::sendResetToReady); }
void frmTL42RQ_ISO15693_UI::cmdStayQuiet_Click() { stateCommandHandler(&frmTL42RQ_ISO15693_UI::sendStayQuiet); }

void frmTL42RQ_ISO15693_UI::lockAfiDsfidHandler(int (frmTL42RQ_ISO15693_UI::*routine)()) {
  HandlerScope scope(this);
  auto& g = glob::state();
  loopOpening(false);
  if (checkAddressBoxes()) {
    g.transferRunning = true;
    do {
      (this->*routine)();
      yieldEvents(1);
      g.transferRunning = true;
      autoLoopStep();
    } while (g.autoLoopActive && !leaving());
    g.transferRunning = false;
  }
  txtUserAddress[0]->setReadOnly(false);
  txtUserAddress[1]->setReadOnly(false);
  setCommandsEnabled(true);
  setBusy(false);
}

void frmTL42RQ_ISO15693_UI::cmdLockAFI_Click() { lockAfiDsfidHandler(&frmTL42RQ_ISO15693_UI::sendLockAFI); }
void frmTL42RQ_ISO15693_UI::cmdLockDSFID_Click() { lockAfiDsfidHandler(&frmTL42RQ_ISO15693_UI::sendLockDSFID); }

// --- system information ---------------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::cmdGetSystemInfo_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  lstSystemInfo->clear();
  const int n = sendFrame(iso15693::commandRow(Command::GetSystemInfo).title,
                          frameOf(Command::GetSystemInfo, withUid(g.transponderUIDFrame)));
  if (n == 0) {
    yieldEvents(1);
    return;
  }
  // The field widths come from the chosen product, not from the tag's information flags.
  for (const std::string& row : iso15693::systemInfoRows(tagResponse_, g.rfAddressBytes))
    lstSystemInfo->addItem(latin1(row));
  yieldEvents(1);
}

// --- initiate family and the fast mode --------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::enterFastMode() {
  auto& d = reader::driver();
  const reader::Answer a = reader::callOnce(d, Op::Select, kFastSelectParameters);
  if (a.status == reader::kStatusNoBoard) {
    // The reconnect selects "011D" itself; the Select is not repeated.
    std::int32_t status = a.status;
    DEMO_TL42RQ_A_reconnect_iso15693(1, status);
  }
  txt_ISO15693_answer_FastProtocol->setText(latin1(a.text));
  log().titled(kFastSelectTitle, reader::logWord(Op::Select), kFastSelectParameters,
               text(txt_ISO15693_answer_FastProtocol));
}

void frmTL42RQ_ISO15693_UI::leaveFastMode() {
  const reader::Answer a = exchange(Op::Select, kSelectParameters);
  txt_ISO15693_answer_FastProtocol->setText(latin1(a.text));
  log().titled(kSelectTitle, reader::logWord(Op::Select), kSelectParameters, text(txt_ISO15693_answer_FastProtocol));
}

int frmTL42RQ_ISO15693_UI::initiateExchange(const char* caption, const std::string& title, const std::string& frame,
                                            std::int32_t& status, int reconnectMode) {
  lstTransponderUID->clear();
  FraINVENTORYresponse->setTitle(caption);
  const int n = sendFrame(title, frame, reconnectMode, status);
  // An initiated tag answers as to an inventory; the row's number is always "00".
  showInventoryResponse("00");
  return n;
}

void frmTL42RQ_ISO15693_UI::inventoryInitiatedExchange(iso15693::InventoryCommand command, const char* caption,
                                                       std::int32_t& status, int reconnectMode) {
  lstTransponderUID->clear();
  FraINVENTORYresponse->setTitle(caption);
  const iso15693::InventoryControls controls = inventoryControls();
  const auto frame = iso15693::inventoryFrame(controls, command);
  if (!frame) return endApplication();
  sendFrame(iso15693::inventoryRow(command).title, *frame, reconnectMode, status);
  showInventoryResponse(iso15693::inventoryRowNumber(controls));
  yieldEvents(1);
}

void frmTL42RQ_ISO15693_UI::cmdInitiate_Click() {
  HandlerScope scope(this);
  std::int32_t status = 0;
  initiateExchange("INITIATE response", iso15693::commandRow(Command::Initiate).title,
                   frameOf(Command::Initiate, FrameFields{}), status, 0);
}

void frmTL42RQ_ISO15693_UI::cmdInventoryInitiated_Click() {
  HandlerScope scope(this);
  std::int32_t status = 0;
  inventoryInitiatedExchange(iso15693::InventoryCommand::InventoryInitiated, "INVENTORY INITIATED response", status,
                             0);
}

int frmTL42RQ_ISO15693_UI::sendFastInitiate(std::int32_t& status) {
  return initiateExchange("FAST INITIATE response", iso15693::commandRow(Command::FastInitiate).title,
                          frameOf(Command::FastInitiate, FrameFields{}), status, 1);
}

int frmTL42RQ_ISO15693_UI::sendFastInventoryInitiated(std::int32_t& status) {
  inventoryInitiatedExchange(iso15693::InventoryCommand::FastInventoryInitiated, "FAST INVENTORY INITIATED response",
                             status, 1);
  return static_cast<int>(tagResponse_.size());
}

void frmTL42RQ_ISO15693_UI::cmdFastInitiate_Click() {
  HandlerScope scope(this);
  enterFastMode();
  std::int32_t status = 0;
  sendFastInitiate(status);
  if (status == reader::kStatusNoBoard) DEMO_TL42RQ_A_reconnect_iso15693(1, status);
  leaveFastMode();
}

void frmTL42RQ_ISO15693_UI::cmdFastInventoryInitiated_Click() {
  HandlerScope scope(this);
  enterFastMode();
  std::int32_t status = 0;
  sendFastInventoryInitiated(status);
  if (status == reader::kStatusNoBoard) DEMO_TL42RQ_A_reconnect_iso15693(1, status);
  leaveFastMode();
}

int frmTL42RQ_ISO15693_UI::sendFastReadSingleBlock(long& address, long count, int pageSize, int width) {
  const bool was = fastReads_;
  fastReads_ = true;
  const int result = sendReadSingleBlock(address, count, pageSize, width);
  fastReads_ = was;
  return result;
}

int frmTL42RQ_ISO15693_UI::sendFastReadMultipleBlock(long address, long count, int pageSize, int width) {
  const bool was = fastReads_;
  fastReads_ = true;
  const int result = sendReadMultipleBlock(address, count, pageSize, width);
  fastReads_ = was;
  return result;
}

// --- kill ---------------------------------------------------------------------------------------------

// Walks the range as Lock Block does, with its opening, AUTO LOOP step and ending, and
// sends nothing: the button has never had an exchange in its walk.
void frmTL42RQ_ISO15693_UI::cmdLockKill_Click() {
  HandlerScope scope(this);
  auto& g = glob::state();
  loopOpening(false);
  if (!checkAddressBoxes()) return loopEnding();
  g.transferRunning = true;
  const long mask = shell::productSizes().blockAddressMask;
  do {
    long address = addressBoxValue(0);
    const long end = addressBoxValue(1);
    do {
      yieldEvents(1);
      if (end == address) g.transferRunning = false;
      address = (address + 1) & mask;
    } while (g.transferRunning && !leaving());
    g.transferRunning = true;
    autoLoopStep();
    if (g.stopRequested) break;
  } while (g.autoLoopActive && !leaving());
  g.transferRunning = false;
  loopEnding();
}

// --- energy harvesting and data out ---------------------------------------------------------------------

void frmTL42RQ_ISO15693_UI::readEhByte(Command c, QLineEdit* box) {
  HandlerScope scope(this);
  sendFrame(iso15693::commandRow(c).title, frameOf(c, withUid(glob::state().transponderUIDFrame)));
  if (const auto t = iso15693::ehStatusText(tagResponse_)) box->setText(latin1(*t));
}

void frmTL42RQ_ISO15693_UI::cmdReadEHconfig_Click() { readEhByte(Command::ReadEHConfig, txtEHstatus); }
void frmTL42RQ_ISO15693_UI::cmdCheckEHenable_Click() { readEhByte(Command::CheckEHEnable, txtCheckEHenable); }

int frmTL42RQ_ISO15693_UI::sendWriteEHConfig(const std::string& data) {
  return sendStateCommand(Command::WriteEHConfig, withData(data));
}
int frmTL42RQ_ISO15693_UI::sendSetResetEHConfig(const std::string& data) {
  return sendStateCommand(Command::SetResetEHConfig, withData(data));
}
int frmTL42RQ_ISO15693_UI::sendWriteDOConfig(const std::string& data) {
  return sendStateCommand(Command::WriteDOConfig, withData(data));
}

void frmTL42RQ_ISO15693_UI::cmdWriteEHCfg_Click() {
  HandlerScope scope(this);
  sendWriteEHConfig(text(txtEHconfig));
}
void frmTL42RQ_ISO15693_UI::cmdSetEHenable_Click() {
  HandlerScope scope(this);
  sendSetResetEHConfig("01");
}
void frmTL42RQ_ISO15693_UI::cmdResetEHenable_Click() {
  HandlerScope scope(this);
  sendSetResetEHConfig("00");
}
void frmTL42RQ_ISO15693_UI::cmdWriteDOconfig_Click() {
  HandlerScope scope(this);
  sendWriteDOConfig(text(txtWriteDOconfig));
}

void frmTL42RQ_ISO15693_UI::txtEHconfig_LostFocus() {
  txtEHconfig->setText(latin1(iso15693::byteBoxOnLeave(text(txtEHconfig))));
}
void frmTL42RQ_ISO15693_UI::txtWriteDOconfig_LostFocus() {
  txtWriteDOconfig->setText(latin1(iso15693::byteBoxOnLeave(text(txtWriteDOconfig))));
}
