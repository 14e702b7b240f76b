#include "console/ui/frmTL42RQ_UserInterface.h"

#include <QButtonGroup>
#include <QCheckBox>
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

#include "console/ui/FrameByteEdit.h"
#include "reader/Drivers.h"
#include "reader/HexText.h"

using chip::ChipCommand;
using console::SendPanel;

namespace {

QString qs(std::string_view s) { return QString::fromLatin1(s.data(), static_cast<int>(s.size())); }
std::string str(const QString& s) { return s.toLatin1().toStdString(); }
QString indexed(const char* name, int i) { return QStringLiteral("%1_%2").arg(QLatin1String(name)).arg(i); }

QLabel* makeLabel(QWidget* parent, const QString& name, const QString& text) {
  auto* l = new QLabel(text, parent);
  l->setObjectName(name);
  return l;
}

FrameByteEdit* makeBox(QWidget* parent, const QString& name,
                       reader::FieldKind kind = reader::FieldKind::Hexadecimal) {
  auto* b = new FrameByteEdit(name, kind, parent);
  b->setMaxLength(kind == reader::FieldKind::Binary ? 1 : 2);
  b->setFixedWidth(kind == reader::FieldKind::Binary ? 22 : 30);
  b->setAlignment(Qt::AlignCenter);
  return b;
}

QLineEdit* makeOutput(QWidget* parent, const QString& name) {
  auto* e = new QLineEdit(parent);
  e->setObjectName(name);
  e->setReadOnly(true);
  return e;
}

// A caption under a frame box: small, wrapped, as wide as it needs to be readable.
QLabel* makeBoxCaption(QWidget* parent, const QString& name, const QString& text) {
  QLabel* l = makeLabel(parent, name, text);
  l->setWordWrap(true);
  l->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
  QFont f = l->font();
  f.setPointSizeF(f.pointSizeF() * 0.85);
  l->setFont(f);
  return l;
}

int checkedIndex(const auto& options) {
  for (std::size_t i = 0; i < options.size(); ++i)
    if (options[i]->isChecked()) return static_cast<int>(i);
  return -1;
}

constexpr std::size_t replyIndex(SendPanel p) { return static_cast<std::size_t>(p); }

}  // namespace

frmTL42RQ_UserInterface::frmTL42RQ_UserInterface(QWidget* parent)
    : Panel(glob::PanelId::UserInterface, QStringLiteral("frmTL42RQ_UserInterface"), parent) {
  setWindowTitle(QStringLiteral("   TL42RQ user interface"));
  stores_ = console::defaultStores();
  currentCommandEntry_ = qs(chip::kCommandListTitle);
  glob::state().currentProtocolCode = console::kNoProtocol;
  for (std::size_t i = 0; i < console::kProtocolOptions; ++i)
    bitStores_[i] = console::bitsOf(console::kProtocolOptionRows[i].startByte0);

  auto* top = new QVBoxLayout(this);

  // The command list and the three direct buttons.
  auto* head = new QHBoxLayout;
  commandList_ = new QComboBox(this);
  commandList_->setObjectName(QStringLiteral("cboTL42RQ_CommandList"));
  commandList_->addItem(qs(chip::kCommandListTitle));
  for (const ChipCommand& c : chip::kCommands)
    if (c.inList) commandList_->addItem(qs(c.listEntry));
  commandList_->setCurrentIndex(0);
  commandList_->setMinimumWidth(200);
  connect(commandList_, &QComboBox::activated, this, [this](int) { cboTL42RQ_CommandList_Click(); });
  head->addWidget(commandList_, 0, Qt::AlignTop);

  auto* direct = new QGridLayout;
  auto addDirect = [&](int row, const char* name, const char* caption, const char* boxName, QLineEdit*& box,
                       void (frmTL42RQ_UserInterface::*handler)()) {
    QPushButton* b = button(QLatin1String(name), QLatin1String(caption));
    b->setMinimumWidth(170);
    box = makeOutput(this, QLatin1String(boxName));
    box->setMinimumWidth(160);
    connect(b, &QPushButton::clicked, this, handler);
    direct->addWidget(b, row, 0);
    direct->addWidget(box, row, 1);
  };
  addDirect(0, "cmdEcho", "Echo", "txtEchoAnswer", echoAnswer_, &frmTL42RQ_UserInterface::cmdEcho_Click);
  addDirect(1, "cmdSendIRQPulse", "Negative pulse on IRQ in", "txtSendIRQPulseAnswer", irqAnswer_,
            &frmTL42RQ_UserInterface::cmdSendIRQPulse_Click);
  addDirect(2, "cmdNegativePulseOn_SPI_NSS", "Negative Pulse on SPI NSS", "txtNegPulse_SPI_NSS_Answer", nssAnswer_,
            &frmTL42RQ_UserInterface::cmdNegativePulseOn_SPI_NSS_Click);
  head->addStretch(1);
  head->addLayout(direct);
  top->addLayout(head);

  // The four frame panels share one place; the frames a command brings stand beside.
  auto* middle = new QHBoxLayout;
  auto* area = new QGridLayout;
  buildGenericPanel();
  buildProtocolSelectPanel();
  buildIdlePanel();
  buildFilterPanel();
  for (QWidget* w : {static_cast<QWidget*>(fraXX_), static_cast<QWidget*>(fra02_), static_cast<QWidget*>(fra07_),
                     static_cast<QWidget*>(fra0D_)})
    area->addWidget(w, 0, 0, Qt::AlignTop | Qt::AlignLeft);
  area->setRowStretch(1, 1);
  middle->addLayout(area, 1);
  auto* side = new QVBoxLayout;
  buildSideFrames();
  for (QWidget* w : {static_cast<QWidget*>(fra08_), static_cast<QWidget*>(fra09_), static_cast<QWidget*>(fraArcB_),
                     static_cast<QWidget*>(fraBaudRate_), static_cast<QWidget*>(fraRegisterMap_)})
    side->addWidget(w);
  uartNotice_->setWordWrap(true);
  uartNotice_->setMaximumWidth(320);
  side->addWidget(uartNotice_);
  side->addStretch(1);
  middle->addLayout(side);
  top->addLayout(middle, 1);

  // The log.
  QPlainTextEdit* logView = createLogView(QStringLiteral("rtfTL42RQLogEdit"));
  logView->setMinimumHeight(140);
  top->addWidget(logView);
  auto* logButtons = new QHBoxLayout;
  QPushButton* clear = button(QStringLiteral("cmdClearLog"), QStringLiteral("Clear Log"));
  QPushButton* save = button(QStringLiteral("cmdSaveLog"), QStringLiteral("Save Log"));
  connect(clear, &QPushButton::clicked, this, &Panel::cmdClearLog_Click);
  connect(save, &QPushButton::clicked, this, &Panel::cmdSaveLog_Click);
  logButtons->addWidget(clear);
  logButtons->addWidget(save);
  logButtons->addStretch(1);
  top->addLayout(logButtons);

  // Nothing is selected yet: no frame panel, no side frame.
  fraXX_->hide();
  fra02_->hide();
  fra07_->hide();
  fra0D_->hide();
  for (QWidget* w : {static_cast<QWidget*>(fra08_), static_cast<QWidget*>(fra09_), static_cast<QWidget*>(fraArcB_),
                     static_cast<QWidget*>(fraBaudRate_), static_cast<QWidget*>(fraRegisterMap_),
                     static_cast<QWidget*>(uartNotice_)})
    w->hide();
}

QString frmTL42RQ_UserInterface::entryOf(std::string_view code) {
  const ChipCommand* c = chip::findCommand(code);
  if (c && !c->listEntry.empty()) return qs(c->listEntry);
  return QLatin1Char(' ') + qs(code) + QLatin1Char(' ');
}

// --- building --------------------------------------------------------------------------------

QWidget* frmTL42RQ_UserInterface::buildReplyBoxes(SendPanel panel, QWidget* parent, const QString& suffix) {
  // The boxes of each send action, by their names.
  struct ReplyNames {
    const char* request;
    const char* answer;
    const char* explain;
  };
  static constexpr std::array<ReplyNames, 4> kNames{{
      {"txtCommandCodeXXRequest", "txtCommandCodeXXAnswer", "txtCommandCodeXXAnswerExplain"},
      {"txtCommandCode02Request", "txtCommandCode02Answer", "txtCommandCode02AnswerExplain"},
      {"txtCommandCode07Request", "txtCommandCode07Answer", "txtCommandCode07AnswerExplain"},
      {"txtCommandCode0DRequest", "txtCommandCode0DAnswer", "txtCommandCode0DAnswerExplain"},
  }};
  const ReplyNames& names = kNames[replyIndex(panel)];
  auto* w = new QWidget(parent);
  auto* g = new QGridLayout(w);
  g->setContentsMargins(0, 0, 0, 0);
  ReplyBoxes& r = replies_[replyIndex(panel)];
  g->addWidget(makeLabel(w, QStringLiteral("lblRequest") + suffix, QStringLiteral("Request : ")), 0, 0);
  r.request = makeOutput(w, QLatin1String(names.request));
  g->addWidget(r.request, 0, 1);
  g->addWidget(makeLabel(w, QStringLiteral("lblAnswer") + suffix, QStringLiteral("Answer : ")), 1, 0);
  r.answer = makeOutput(w, QLatin1String(names.answer));
  g->addWidget(r.answer, 1, 1);
  for (std::size_t i = 0; i < console::explainBoxes(panel); ++i) {
    QLineEdit* e = makeOutput(w, indexed(names.explain, static_cast<int>(i)));
    e->hide();
    r.explain.push_back(e);
    g->addWidget(e, static_cast<int>(2 + i), 1);
  }
  g->setColumnMinimumWidth(1, 460);
  return w;
}

void frmTL42RQ_UserInterface::buildGenericPanel() {
  fraXX_ = new QGroupBox(qs(chip::kGenericHeader), this);
  fraXX_->setObjectName(QStringLiteral("FraCommandCodeXX"));
  auto* v = new QVBoxLayout(fraXX_);
  titleXX_ = makeLabel(fraXX_, QStringLiteral("lblCommandCodeXX"), QString());
  QFont bold = titleXX_->font();
  bold.setBold(true);
  titleXX_->setFont(bold);
  v->addWidget(titleXX_);

  auto* grid = new QGridLayout;
  for (std::size_t i = 0; i < chip::kGenericBoxes; ++i) {
    const int n = static_cast<int>(i);
    boxXX_[i] = makeBox(fraXX_, indexed("txtCodeXXFrame", n));
    boxXX_[i]->setReadOnly(true);
    labelXX_[i] = makeBoxCaption(fraXX_, indexed("lblCmdCodeXX", n), QString());
    labelXX_[i]->setFixedWidth(96);
    grid->addWidget(boxXX_[i], 0, n, Qt::AlignHCenter);
    grid->addWidget(labelXX_[i], 1, n, Qt::AlignTop);
    connect(boxXX_[i], &FrameByteEdit::keyUp, this, [this, n] { genericBoxKeyUp(n); });
  }
  dataXX_ = new FrameByteEdit(QStringLiteral("txtCodeXXFrameData"), reader::FieldKind::Hexadecimal, fraXX_);
  dataXX_->setMinimumWidth(150);
  connect(dataXX_, &FrameByteEdit::keyUp, this, &frmTL42RQ_UserInterface::dataKeyUp);
  dataLabelXX_ = makeBoxCaption(fraXX_, QStringLiteral("lblCmdCodeXXData"), QString());
  valueLabel09_ = makeLabel(fraXX_, QStringLiteral("lblDataCmdCode09"), qs(console::kValueLabel));
  auto* dataCell = new QHBoxLayout;
  dataCell->addWidget(valueLabel09_);
  dataCell->addWidget(dataXX_, 1);
  grid->addLayout(dataCell, 0, 5);
  grid->addWidget(dataLabelXX_, 1, 5, Qt::AlignTop);
  grid->setColumnStretch(6, 1);
  v->addLayout(grid);

  timeInterval0F_ = new QCheckBox(qs(console::kTimeIntervalCaption), fraXX_);
  timeInterval0F_->setObjectName(QStringLiteral("chkCommandCode0FTimeIntervalOption"));
  connect(timeInterval0F_, &QCheckBox::clicked, this, [this] { chkCommandCode0FTimeIntervalOption_Click(); });
  v->addWidget(timeInterval0F_);

  QPushButton* send = button(QStringLiteral("cmdSendCommandCodeXX"), QStringLiteral("Send frame"), fraXX_);
  connect(send, &QPushButton::clicked, this, &frmTL42RQ_UserInterface::cmdSendCommandCodeXX_Click);
  v->addWidget(send, 0, Qt::AlignLeft);
  v->addWidget(buildReplyBoxes(SendPanel::Generic, fraXX_, QStringLiteral("XX")));
}

void frmTL42RQ_UserInterface::buildProtocolSelectPanel() {
  fra02_ = new QGroupBox(this);
  fra02_->setObjectName(QStringLiteral("FraCommandCode02"));
  auto* v = new QVBoxLayout(fra02_);
  QLabel* title = makeLabel(fra02_, QStringLiteral("lblCommandCode02"), qs(chip::findCommand("02")->title));
  QFont bold = title->font();
  bold.setBold(true);
  title->setFont(bold);
  v->addWidget(title);

  auto* columns = new QHBoxLayout;
  auto* left = new QVBoxLayout;
  auto* right = new QVBoxLayout;
  columns->addLayout(left);
  columns->addLayout(right, 1);
  v->addLayout(columns);

  // The protocol: one exclusive group across the reader and the card titles.
  auto* options = new QHBoxLayout;
  auto* reader = new QGroupBox(qs(console::kReaderProtocolTitle), fra02_);
  reader->setObjectName(QStringLiteral("fraReaderProtocolCode"));
  auto* card = new QGroupBox(qs(console::kCardProtocolTitle), fra02_);
  card->setObjectName(QStringLiteral("fraCardProtocolCode"));
  auto* readerLayout = new QVBoxLayout(reader);
  auto* cardLayout = new QVBoxLayout(card);
  auto* group = new QButtonGroup(this);
  for (std::size_t i = 0; i < console::kProtocolOptions; ++i) {
    const int n = static_cast<int>(i);
    QGroupBox* owner = i < console::kFirstCardOption ? reader : card;
    optProtocol_[i] = new QRadioButton(qs(console::kProtocolOptionRows[i].caption), owner);
    optProtocol_[i]->setObjectName(indexed("OptProtocolCode", n));
    group->addButton(optProtocol_[i], n);
    (i < console::kFirstCardOption ? readerLayout : cardLayout)->addWidget(optProtocol_[i]);
    connect(optProtocol_[i], &QRadioButton::clicked, this, [this, n] { OptProtocolCode_Click(n); });
  }
  cardLayout->addStretch(1);
  options->addWidget(reader);
  options->addWidget(card);
  left->addLayout(options);

  // The frame as it will be sent.
  static constexpr std::array<const char*, console::kProtocolFrameBoxes> kCaptions{
      "command code", "lenght of data", "protocol code", "parameter byte 0", "parameter byte 1", "parameter byte 2"};
  auto* frame = new QGridLayout;
  for (std::size_t i = 0; i < console::kProtocolFrameBoxes; ++i) {
    const int n = static_cast<int>(i);
    box02_[i] = makeBox(fra02_, indexed("txtCode02Frame", n));
    box02_[i]->setText(i == 0 ? QStringLiteral("02") : QStringLiteral("00"));
    QLabel* caption = makeBoxCaption(fra02_, indexed("lblCmdCode02", n), QLatin1String(kCaptions[i]));
    caption->setFixedWidth(72);
    frame->addWidget(box02_[i], 0, n, Qt::AlignHCenter);
    frame->addWidget(caption, 1, n, Qt::AlignTop);
    caption02_[i] = caption;
    frame02Shown_.push_back(box02_[i]);
    frame02Shown_.push_back(caption);
    connect(box02_[i], &FrameByteEdit::keyUp, this, [this, n] { frame02KeyUp(n); });
  }
  box02_[0]->setReadOnly(true);
  left->addLayout(frame);
  QPushButton* send = button(QStringLiteral("cmdSendCommandCode02"), QStringLiteral("Send frame"), fra02_);
  connect(send, &QPushButton::clicked, this, &frmTL42RQ_UserInterface::cmdSendCommandCode02_Click);
  left->addWidget(send, 0, Qt::AlignLeft);
  QWidget* replies = buildReplyBoxes(SendPanel::ProtocolSelect, fra02_, QStringLiteral("02"));
  left->addWidget(replies);
  left->addStretch(1);
  frame02Shown_.push_back(send);
  frame02Shown_.push_back(replies);

  // A row of eight bit boxes, bit 7 on the left, and the byte they make.
  auto bitRow = [this](QWidget* parent, const char* bitName, std::array<FrameByteEdit*, 8>& bits, int byte,
                       FrameByteEdit*& byteBox, const char* byteName) {
    auto* g = new QGridLayout;
    for (int n = 7; n >= 0; --n) {
      const int column = 7 - n;
      g->addWidget(new QLabel(QString::number(n), parent), 0, column, Qt::AlignHCenter);
      bits[static_cast<std::size_t>(n)] = makeBox(parent, indexed(bitName, n), reader::FieldKind::Binary);
      bits[static_cast<std::size_t>(n)]->setText(QStringLiteral("0"));
      g->addWidget(bits[static_cast<std::size_t>(n)], 1, column);
      connect(bits[static_cast<std::size_t>(n)], &FrameByteEdit::keyUp, this, [this, &bits, n, byte] {
        FrameByteEdit* b = bits[static_cast<std::size_t>(n)];
        b->setNormalised(qs(console::normaliseBitBox(str(b->text()))));
        writeByteFromBits(byte);
      });
    }
    g->addWidget(new QLabel(QStringLiteral("="), parent), 1, 8);
    byteBox = makeBox(parent, QLatin1String(byteName));
    byteBox->setText(QStringLiteral("00"));
    g->addWidget(byteBox, 1, 9);
    g->setColumnStretch(10, 1);
    return g;
  };
  auto listRow = [this](QWidget* parent, const console::ParameterList& list) {
    auto* row = new QWidget(parent);
    auto* h = new QHBoxLayout(row);
    h->setContentsMargins(0, 0, 0, 0);
    const QString bits = list.read == console::EntryRead::TwoBits
                             ? QStringLiteral("b%1 b%2").arg(list.lowBit + 1).arg(list.lowBit)
                             : list.read == console::EntryRead::SlotCounter
                                   ? QStringLiteral("b%1 - b%2").arg(list.lowBit + 3).arg(list.lowBit)
                                   : QStringLiteral("b%1").arg(list.lowBit);
    auto* bitLabel = new QLabel(bits, row);
    bitLabel->setFixedWidth(60);
    h->addWidget(bitLabel);
    auto* combo = new QComboBox(row);
    combo->setObjectName(qs(list.name));
    for (std::string_view e : list.entries) combo->addItem(qs(e));
    if (list.startEntry >= 0) combo->setCurrentIndex(list.startEntry);
    combo->setMinimumWidth(230);
    h->addWidget(combo, 1);
    connect(combo, &QComboBox::activated, this,
            [this, &list, combo](int i) { parameterList_Click(list, combo->itemText(i)); });
    lists_[std::string(list.name)] = combo;
    listRows_[std::string(list.name)] = row;
    return row;
  };

  fraByte0_ = new QGroupBox(fra02_);
  fraByte0_->setObjectName(QStringLiteral("FraByte0Config"));
  auto* b0 = new QVBoxLayout(fraByte0_);
  labelByte0_ = makeLabel(fraByte0_, QStringLiteral("txtLabelByte0"), QString());
  labelByte0_->setFont(bold);
  b0->addWidget(labelByte0_);
  b0->addLayout(bitRow(fraByte0_, "txtBitsByte0", bits0_, 0, byte0_, "txtByte0Configuration"));
  connect(byte0_, &FrameByteEdit::keyUp, this, [this] {
    byte0_->setNormalised(qs(console::normaliseByteBox(str(byte0_->text()), "")));
    setFrame02Box(3, byte0_->text());
  });
  for (const console::ParameterList& l : console::kParameterLists)
    if (l.byte == 0) b0->addWidget(listRow(fraByte0_, l));
  right->addWidget(fraByte0_);

  fraByte1_ = new QGroupBox(fra02_);
  fraByte1_->setObjectName(QStringLiteral("FraByte1Config"));
  auto* b1 = new QVBoxLayout(fraByte1_);
  slotCounter_ = new QCheckBox(qs(console::kSlotCounterCaption), fraByte1_);
  slotCounter_->setObjectName(QStringLiteral("chkiso18092_SlotCounterByte1"));
  connect(slotCounter_, &QCheckBox::clicked, this, [this] { chkiso18092_SlotCounterByte1_Click(); });
  b1->addWidget(slotCounter_);
  b1->addLayout(bitRow(fraByte1_, "txtBitsByte1", bits1_, 1, byte1_, "txtByte1Configuration"));
  connect(byte1_, &FrameByteEdit::keyUp, this, [this] {
    byte1_->setNormalised(qs(console::normaliseByteBox(str(byte1_->text()), "")));
    setFrame02Box(4, byte1_->text());
  });
  for (const console::ParameterList& l : console::kParameterLists)
    if (l.byte == 1) b1->addWidget(listRow(fraByte1_, l));
  right->addWidget(fraByte1_);

  fraByte12_ = new QGroupBox(fra02_);
  fraByte12_->setObjectName(QStringLiteral("FraByte12Config"));
  auto* b12 = new QHBoxLayout(fraByte12_);
  optional12_ = new QCheckBox(qs(console::kOptionalBytesCaption), fraByte12_);
  optional12_->setObjectName(QStringLiteral("OptByte12optional"));
  connect(optional12_, &QCheckBox::clicked, this, [this] { OptByte12optional_Click(); });
  b12->addWidget(optional12_);
  lblByte1_ = makeLabel(fraByte12_, QStringLiteral("lblByte1"), QStringLiteral("byte 1"));
  lblByte2_ = makeLabel(fraByte12_, QStringLiteral("lblByte2"), QStringLiteral("byte 2"));
  for (int i = 0; i < 2; ++i) {
    byte12_[static_cast<std::size_t>(i)] = makeBox(fraByte12_, indexed("txtByte12Configuration", i));
    FrameByteEdit* box = byte12_[static_cast<std::size_t>(i)];
    box->setText(QStringLiteral("00"));
    box->setEnabled(false);
    b12->addWidget(i == 0 ? lblByte1_ : lblByte2_);
    b12->addWidget(box);
    connect(box, &FrameByteEdit::keyUp, this, [this, box, i] {
      box->setNormalised(qs(console::normaliseByteBox(str(box->text()), "")));
      setFrame02Box(4 + i, box->text());
    });
  }
  b12->addStretch(1);
  lblByte1_->hide();
  lblByte2_->hide();
  right->addWidget(fraByte12_);
  right->addStretch(1);

  // Byte 1 of FeliCa is closed until its check box opens it.
  for (FrameByteEdit* b : bits1_) b->setEnabled(false);
  byte1_->setEnabled(false);
  lists_["cboISO18092reader_SlotCounter"]->setEnabled(false);
  lists_["cboISO18092reader_Disregard_SlotCounter"]->setEnabled(false);

  fraByte0_->hide();
  fraByte1_->hide();
  fraByte12_->hide();
  for (auto& [name, row] : listRows_) row->setVisible(name.find("SlotCounter") != std::string::npos);
  for (QWidget* w : frame02Shown_) w->hide();
}

void frmTL42RQ_UserInterface::buildIdlePanel() {
  fra07_ = new QGroupBox(this);
  fra07_->setObjectName(QStringLiteral("FraCommandCode07"));
  auto* v = new QVBoxLayout(fra07_);
  QLabel* title = makeLabel(fra07_, QStringLiteral("lblCommandCode07"), qs(chip::findCommand("07")->title));
  QFont bold = title->font();
  bold.setBold(true);
  title->setFont(bold);
  v->addWidget(title);

  const auto start = console::frameBytes(console::kIdleExamples[0].frame);
  auto* grid = new QGridLayout;
  for (std::size_t i = 0; i < chip::kIdleFrameBytes; ++i) {
    const int n = static_cast<int>(i);
    const int row = n / 8 * 2;
    const int column = n % 8;
    box07_[i] = makeBox(fra07_, indexed("txtCode07Frame", n));
    box07_[i]->setText(qs(start[i]));
    box07_[i]->setReadOnly(i < 2);
    QLabel* caption = makeBoxCaption(fra07_, indexed("lblCmd07Byte", n), qs(chip::kIdleCaptions[i]));
    caption->setFixedWidth(84);
    caption->setToolTip(qs(console::idleCaptionTip(i)));
    grid->addWidget(box07_[i], row, column, Qt::AlignHCenter);
    grid->addWidget(caption, row + 1, column, Qt::AlignTop);
    connect(box07_[i], &FrameByteEdit::keyUp, this, [this, n] {
      FrameByteEdit* b = box07_[static_cast<std::size_t>(n)];
      b->setNormalised(qs(console::normaliseByteBox(str(b->text()), "00")));
    });
  }
  grid->setColumnStretch(8, 1);
  v->addLayout(grid);

  auto* examples = new QGroupBox(qs(console::kIdleExamplesHeading), fra07_);
  examples->setObjectName(QStringLiteral("fraIDLEframeExamples"));
  auto* ev = new QVBoxLayout(examples);
  for (std::size_t i = 0; i < console::kIdleExamples.size(); ++i) {
    const int n = static_cast<int>(i);
    optIdle_[i] = new QRadioButton(qs(console::kIdleExamples[i].caption), examples);
    optIdle_[i]->setObjectName(indexed("optIDLEframe", n));
    ev->addWidget(optIdle_[i]);
    connect(optIdle_[i], &QRadioButton::clicked, this, [this, n] { optIDLEframe_Click(n); });
  }
  optIdle_[0]->setChecked(true);
  ev->addWidget(makeLabel(examples, QStringLiteral("lblIdleDacHint"), qs(console::kIdleDacHint)));
  v->addWidget(examples);

  QPushButton* send = button(QStringLiteral("cmdSendCommandCode07"), QStringLiteral("Send frame"), fra07_);
  connect(send, &QPushButton::clicked, this, &frmTL42RQ_UserInterface::cmdSendCommandCode07_Click);
  v->addWidget(send, 0, Qt::AlignLeft);
  v->addWidget(buildReplyBoxes(SendPanel::Idle, fra07_, QStringLiteral("07")));
  buildIdleBitPanel(fra07_);
  v->addWidget(fraIdleBits_);
}

void frmTL42RQ_UserInterface::buildIdleBitPanel(QWidget* parent) {
  // No control opens this panel: a click on a caption does nothing, and the byte under
  // edit stays at its start value 99, so its bit boxes never write into the frame. It
  // is kept, hidden, with its lists and their bit handling.
  fraIdleBits_ = new QGroupBox(parent);
  fraIdleBits_->setObjectName(QStringLiteral("FraCmd07ByteBits"));
  auto* h = new QHBoxLayout(fraIdleBits_);
  auto bits = std::make_shared<std::array<FrameByteEdit*, 8>>();
  for (int n = 7; n >= 0; --n) {
    FrameByteEdit* b = makeBox(fraIdleBits_, indexed("txtCommand07Bits", n), reader::FieldKind::Binary);
    b->setText(QStringLiteral("0"));
    (*bits)[static_cast<std::size_t>(n)] = b;
    h->addWidget(b);
    connect(b, &FrameByteEdit::keyUp, this, [b] { b->setNormalised(qs(console::normaliseBitBox(str(b->text())))); });
  }
  for (const console::ParameterList& l : console::kIdleBitLists) {
    auto* combo = new QComboBox(fraIdleBits_);
    combo->setObjectName(qs(l.name));
    for (std::string_view e : l.entries) combo->addItem(qs(e));
    combo->setCurrentIndex(l.startEntry);
    h->addWidget(combo);
    connect(combo, &QComboBox::activated, this, [&l, combo, bits](int i) {
      const int value = console::entryValue(l, str(combo->itemText(i)));
      if (value < 0) return;
      console::Bits b;
      for (std::size_t n = 0; n < 8; ++n) b[n] = str((*bits)[n]->text());
      console::applyEntryValue(l, value, b);
      for (std::size_t n = 0; n < 8; ++n) (*bits)[n]->setText(qs(b[n]));
    });
  }
  QPushButton* close = button(QStringLiteral("cmdCloseCmd07Byte"), QStringLiteral("close"), fraIdleBits_);
  connect(close, &QPushButton::clicked, fraIdleBits_, &QWidget::hide);
  h->addWidget(close);
  fraIdleBits_->hide();
}

void frmTL42RQ_UserInterface::buildFilterPanel() {
  fra0D_ = new QGroupBox(this);
  fra0D_->setObjectName(QStringLiteral("FraCommandCode0D"));
  auto* v = new QVBoxLayout(fra0D_);
  QLabel* title = makeLabel(fra0D_, QStringLiteral("lblCommandCode0D"), qs(chip::findCommand("0D")->title));
  QFont bold = title->font();
  bold.setBold(true);
  title->setFont(bold);
  v->addWidget(title);

  for (std::size_t i = 0; i < console::kFilterOptions.size(); ++i) {
    const int n = static_cast<int>(i);
    opt0D_[i] = new QRadioButton(qs(console::kFilterOptions[i].caption), fra0D_);
    opt0D_[i]->setObjectName(indexed("OptCommad0D", n));
    v->addWidget(opt0D_[i]);
    connect(opt0D_[i], &QRadioButton::clicked, this, [this, n] { OptCommad0D_Click(n); });
  }
  opt0D_[0]->setChecked(true);

  auto* grid = new QGridLayout;
  for (std::size_t i = 0; i < console::kFilterFrameBoxes; ++i) {
    const int n = static_cast<int>(i);
    box0D_[i] = makeBox(fra0D_, indexed("txtCode0DFrame", n));
    box0D_[i]->setText(i == 0 ? QStringLiteral("0D") : QStringLiteral("00"));
    box0D_[i]->setReadOnly(i < 4);
    grid->addWidget(box0D_[i], 0, n);
    connect(box0D_[i], &FrameByteEdit::keyUp, this, [this, n] {
      FrameByteEdit* b = box0D_[static_cast<std::size_t>(n)];
      b->setNormalised(qs(console::normaliseByteBox(str(b->text()), "00")));
    });
  }
  // Captions under the boxes: code, length, ATQA over two boxes, SAK, then four boxes a
  // UID cascade level.
  const std::array<QString, 4> byteLabels{qs(chip::kCommandCode), qs(chip::kLengthOfData), qs(console::kAtqaLabel),
                                          qs(console::kSakLabel)};
  const std::array<std::pair<int, int>, 4> byteSpans{{{0, 1}, {1, 1}, {2, 2}, {4, 1}}};
  for (std::size_t i = 0; i < byteLabels.size(); ++i) {
    label0D_[i] = makeBoxCaption(fra0D_, indexed("lblCmd0DByte", static_cast<int>(i)), byteLabels[i]);
    if (i < 2) label0D_[i]->setFixedWidth(44);
    grid->addWidget(label0D_[i], 1, byteSpans[i].first, 1, byteSpans[i].second);
  }
  for (std::size_t k = 0; k < uidLevel_.size(); ++k) {
    static constexpr std::array<const char*, 3> kUidNames{"lblUIDcascadelevel1", "lblUIDcascadelevel2",
                                                          "lblUIDcascadelevel3"};
    uidLevel_[k] = makeBoxCaption(fra0D_, QLatin1String(kUidNames[k]), qs(console::kUidLevelLabels[k]));
    grid->addWidget(uidLevel_[k], 1, console::kUidLevelFirstBox[k], 1, 4);
  }
  grid->setColumnStretch(static_cast<int>(console::kFilterFrameBoxes), 1);
  v->addLayout(grid);

  QPushButton* send = button(QStringLiteral("cmdSendCommandCode0D"), QStringLiteral("Send frame"), fra0D_);
  connect(send, &QPushButton::clicked, this, &frmTL42RQ_UserInterface::cmdSendCommandCode0D_Click);
  v->addWidget(send, 0, Qt::AlignLeft);
  v->addWidget(buildReplyBoxes(SendPanel::Filter, fra0D_, QStringLiteral("0D")));

  for (std::size_t i = 2; i < console::kFilterFrameBoxes; ++i) box0D_[i]->hide();
  label0D_[2]->hide();
  label0D_[3]->hide();
  for (QLabel* l : uidLevel_) l->hide();
}

void frmTL42RQ_UserInterface::buildSideFrames() {
  fra08_ = new QGroupBox(qs(console::kReadRegisterTitle), this);
  fra08_->setObjectName(QStringLiteral("fraCmd08SelectRegister"));
  auto* v8 = new QVBoxLayout(fra08_);
  for (std::size_t i = 0; i < console::kReadRegisterOptions.size(); ++i) {
    const int n = static_cast<int>(i);
    const auto& o = console::kReadRegisterOptions[i];
    opt08_[i] = new QRadioButton(qs(o.caption), fra08_);
    opt08_[i]->setObjectName(indexed("optCmd08ReadRegister", n));
    v8->addWidget(opt08_[i]);
    connect(opt08_[i], &QRadioButton::clicked, this, [this, n] { optCmd08ReadRegister_Click(n); });
    for (std::size_t h = 0; h < o.hints.size(); ++h) {
      if (o.hints[h].empty()) continue;
      QLabel* hint = makeLabel(fra08_, QStringLiteral("lblCmd08Hint%1_%2").arg(i).arg(h), qs(o.hints[h]));
      hint->setIndent(22);
      v8->addWidget(hint);
    }
  }
  opt08_[0]->setChecked(true);

  fra09_ = new QGroupBox(qs(console::kWriteRegisterTitle), this);
  fra09_->setObjectName(QStringLiteral("fraCmd09SelectRegister"));
  auto* v9 = new QVBoxLayout(fra09_);
  for (std::size_t i = 0; i < console::kWriteRegisterOptions.size(); ++i) {
    const int n = static_cast<int>(i);
    opt09_[i] = new QRadioButton(qs(console::kWriteRegisterOptions[i].caption), fra09_);
    opt09_[i]->setObjectName(indexed("optCmd09WriteRegister", n));
    v9->addWidget(opt09_[i]);
    connect(opt09_[i], &QRadioButton::clicked, this, [this, n] { optCmd09WriteRegister_Click(n); });
  }
  opt09_[0]->setChecked(true);

  // The ARC_B digits: X the modulation depth, Y the receiver gain.
  fraArcB_ = new QGroupBox(this);
  fraArcB_->setObjectName(QStringLiteral("fraArcBValue"));
  auto* arc = new QGridLayout(fraArcB_);
  arc->addWidget(makeLabel(fraArcB_, QStringLiteral("lblModulationDepth"), qs(chip::kModulationDepthTitle)), 0, 0);
  arc->addWidget(makeLabel(fraArcB_, QStringLiteral("lblReceiverGain"), qs(chip::kReceiverGainTitle)), 0, 1);
  for (std::size_t i = 0; i < chip::kModulationDepths.size(); ++i)
    arc->addWidget(new QLabel(QStringLiteral("X = %1 : %2").arg(QLatin1Char(chip::kModulationDepths[i].digit))
                                  .arg(qs(chip::kModulationDepths[i].text)), fraArcB_),
                   static_cast<int>(i + 1), 0);
  for (std::size_t i = 0; i < chip::kReceiverGains.size(); ++i)
    arc->addWidget(new QLabel(QStringLiteral("Y = %1 : %2").arg(QLatin1Char(chip::kReceiverGains[i].digit))
                                  .arg(qs(chip::kReceiverGains[i].text)), fraArcB_),
                   static_cast<int>(i + 1), 1);

  fraRegisterMap_ = new QGroupBox(this);
  fraRegisterMap_->setObjectName(QStringLiteral("FraRegisterAddressInfos"));
  auto* map = new QVBoxLayout(fraRegisterMap_);
  map->setSpacing(0);
  for (const chip::RegisterBlock& b : chip::kRegisterMap)
    map->addWidget(new QLabel(qs(chip::registerRange(b)) + QStringLiteral(" : ") + qs(b.block), fraRegisterMap_));

  fraBaudRate_ = new QGroupBox(this);
  fraBaudRate_->setObjectName(QStringLiteral("FraCommandCode0Abaudrate"));
  auto* baud = new QVBoxLayout(fraBaudRate_);
  baud->addWidget(new QLabel(qs(chip::kBaudRateRule), fraBaudRate_));
  for (const chip::BaudRateRow& r : chip::kBaudRates)
    baud->addWidget(new QLabel(qs(chip::baudRateLine(r)), fraBaudRate_));

  uartNotice_ = makeLabel(this, QStringLiteral("lblCommand02Uart"), qs(chip::kUartNotice));
}

// --- the command list ------------------------------------------------------------------------

void frmTL42RQ_UserInterface::cboTL42RQ_CommandList_Click() {
  HandlerScope scope(this);
  selectCommandEntry(commandList_->currentText());
}

void frmTL42RQ_UserInterface::storeCurrentCommand() {
  const std::string key = chip::entryKey(str(currentCommandEntry_));
  const auto it = stores_.find(key);
  const ChipCommand* command = chip::findCommand(key);
  if (it == stores_.end() || !command) return;
  for (int i = 0; i < command->storedBoxes; ++i)
    it->second.boxes[static_cast<std::size_t>(i)] = str(boxXX_[static_cast<std::size_t>(i)]->text());
  if (command->data != chip::DataBox::None) it->second.data = str(dataXX_->text());
}

void frmTL42RQ_UserInterface::selectCommandEntry(const QString& entry) {
  HandlerScope scope(this);
  storeCurrentCommand();

  fraXX_->hide();
  fra02_->hide();
  fra07_->hide();
  fra0D_->hide();
  for (std::size_t p = 0; p < replies_.size(); ++p) {
    replies_[p].request->clear();
    replies_[p].answer->clear();
    for (QLineEdit* e : replies_[p].explain) {
      e->clear();
      e->hide();
    }
  }
  for (QWidget* w : {static_cast<QWidget*>(fraBaudRate_), static_cast<QWidget*>(timeInterval0F_),
                     static_cast<QWidget*>(fra08_), static_cast<QWidget*>(fra09_),
                     static_cast<QWidget*>(fraRegisterMap_), static_cast<QWidget*>(valueLabel09_),
                     static_cast<QWidget*>(uartNotice_), static_cast<QWidget*>(fraArcB_),
                     static_cast<QWidget*>(dataXX_), static_cast<QWidget*>(dataLabelXX_)})
    w->hide();
  for (std::size_t i = 1; i < chip::kGenericBoxes; ++i) {
    boxXX_[i]->hide();
    labelXX_[i]->hide();
  }
  for (FrameByteEdit* b : boxXX_) b->setReadOnly(true);

  if (const ChipCommand* command = chip::findCommand(chip::entryKey(str(entry)))) {
    switch (command->panel) {
      case chip::FramePanel::Generic:
        showGenericCommand(*command);
        break;
      case chip::FramePanel::ProtocolSelect:
        fra02_->show();
        break;
      case chip::FramePanel::Idle:
        fra07_->show();
        break;
      case chip::FramePanel::Filter:
        fra0D_->show();
        break;
    }
  }

  currentCommandEntry_ = entry;
  auto& d = reader::driver();
  if (reader::callOnce(d, reader::Op::USBhandlecheck).status != 0) {
    std::int32_t result = 0;
    reader::DEMO_TL42RQ_A_reconnect_UserInterface(d, result);
  }
}

void frmTL42RQ_UserInterface::showGenericCommand(const ChipCommand& command) {
  const console::CommandStore& store = stores_[std::string(command.code)];
  titleXX_->setText(qs(command.title));
  for (int i = 0; i < command.storedBoxes; ++i)
    boxXX_[static_cast<std::size_t>(i)]->setText(qs(store.boxes[static_cast<std::size_t>(i)]));
  for (int i = 0; i < command.shownBoxes; ++i) {
    const auto n = static_cast<std::size_t>(i);
    boxXX_[n]->show();
    boxXX_[n]->setReadOnly((command.openBoxes & (1u << n)) == 0);
    labelXX_[n]->setText(qs(command.boxLabels[n]));
    labelXX_[n]->show();
  }
  switch (command.data) {
    case chip::DataBox::None:
      break;
    case chip::DataBox::Free:
      dataXX_->setText(qs(store.data));
      dataXX_->setReadOnly(false);
      dataXX_->show();
      dataLabelXX_->setText(qs(command.dataLabel));
      dataLabelXX_->show();
      break;
    case chip::DataBox::Register:
      dataXX_->setText(qs(store.data));
      dataLabelXX_->setText(qs(command.dataLabel));
      showWriteData();
      break;
  }
  switch (command.side) {
    case chip::SideFrame::None:
      break;
    case chip::SideFrame::ReadRegister:
      fra08_->show();
      fraRegisterMap_->show();
      break;
    case chip::SideFrame::WriteRegister:
      fra09_->show();
      fraRegisterMap_->show();
      break;
    case chip::SideFrame::BaudRate:
      fraBaudRate_->show();
      uartNotice_->show();
      break;
    case chip::SideFrame::TimeInterval:
      timeInterval0F_->show();
      chkCommandCode0FTimeIntervalOption_Click();
      break;
  }
  fraXX_->show();
}

void frmTL42RQ_UserInterface::showWriteData() {
  // The option on decides: no data with option 0, the kept ARC_B value open for editing
  // with option 1, a fixed byte with options 2 and 3.
  const int option = checkedIndex(opt09_);
  const bool shown = option > 0;
  const bool arcB = option == console::kWriteArcBOption;
  dataXX_->setVisible(shown);
  dataLabelXX_->setVisible(shown);
  dataXX_->setReadOnly(!arcB);
  valueLabel09_->setVisible(arcB);
  fraArcB_->setVisible(arcB);
}

// --- generic panel ---------------------------------------------------------------------------

void frmTL42RQ_UserInterface::genericBoxKeyUp(int box) {
  FrameByteEdit* b = boxXX_[static_cast<std::size_t>(box)];
  b->setNormalised(qs(console::normaliseByteBox(str(b->text()), "00")));
}

void frmTL42RQ_UserInterface::dataKeyUp() {
  dataXX_->setNormalised(qs(console::evenData(str(dataXX_->text()))));
  const std::string text = str(dataXX_->text());
  const ChipCommand* command = chip::findCommand(chip::entryKey(str(currentCommandEntry_)));
  if (!command) return;
  if (command->data == chip::DataBox::Free) boxXX_[1]->setText(qs(console::dataLength(text)));
  // A write of ARC_B keeps its value apart; its length stays "04".
  if (command->data == chip::DataBox::Register && opt09_[console::kWriteArcBOption]->isChecked()) arcBValue_ = text;
}

void frmTL42RQ_UserInterface::optCmd08ReadRegister_Click(int index) {
  const auto& o = console::kReadRegisterOptions[static_cast<std::size_t>(index)];
  opt08_[static_cast<std::size_t>(index)]->setChecked(true);
  boxXX_[2]->setText(qs(o.box2));
  labelXX_[2]->setText(qs(o.label2));
}

void frmTL42RQ_UserInterface::optCmd09WriteRegister_Click(int index) {
  const auto& o = console::kWriteRegisterOptions[static_cast<std::size_t>(index)];
  opt09_[static_cast<std::size_t>(index)]->setChecked(true);
  for (std::size_t i = 0; i < o.boxes.size(); ++i) boxXX_[i + 1]->setText(qs(o.boxes[i]));
  switch (o.data) {
    case console::WriteData::Hidden:
      break;
    case console::WriteData::ArcB:
      dataXX_->setText(qs(arcBValue_));
      break;
    case console::WriteData::Fixed:
      dataXX_->setText(qs(o.fixedData));
      break;
  }
  showWriteData();
  // Options 2 and 3 show the caption "value" beside their fixed byte as well.
  if (o.data == console::WriteData::Fixed) valueLabel09_->show();
}

void frmTL42RQ_UserInterface::chkCommandCode0FTimeIntervalOption_Click() {
  const bool on = timeInterval0F_->isChecked();
  boxXX_[1]->setText(qs(on ? console::kSleepLengthWithInterval : console::kSleepLengthWithoutInterval));
  boxXX_[3]->setVisible(on);
  labelXX_[3]->setVisible(on);
  if (on) labelXX_[3]->setText(qs(chip::findCommand("0F")->boxLabels[3]));
}

// --- send actions --------------------------------------------------------------------------

void frmTL42RQ_UserInterface::clearReplies(SendPanel panel) {
  ReplyBoxes& r = replies_[replyIndex(panel)];
  r.request->clear();
  r.answer->clear();
  for (QLineEdit* e : r.explain) {
    e->hide();
    // The Protocol Select panel only hides its boxes here; they are emptied when written.
    if (panel != SendPanel::ProtocolSelect) e->clear();
  }
}

void frmTL42RQ_UserInterface::sendRequest(SendPanel panel, const std::string& request) {
  ReplyBoxes& r = replies_[replyIndex(panel)];
  r.request->setText(qs(console::requestBoxText(request)));
  yieldEvents(1000);
  const reader::Answer a = exchange(reader::Op::KQCmd, console::kqCmdText(request));
  // The generic panel explains by its box 0 as it stands when the answer has come.
  const std::string command = panel == SendPanel::Generic ? str(boxXX_[0]->text()) : std::string();
  const console::Explanation e = console::analyseAnswer(panel, command, a.status, a.text);
  r.answer->setText(qs(e.answerBox));
  for (std::size_t i = 0; i < e.lines.size() && i < r.explain.size(); ++i) {
    r.explain[i]->setText(qs(e.lines[i]));
    r.explain[i]->show();
  }
  log().untitled("TL42RQDll_KQCmd, " + request, e.answerBox);
}

void frmTL42RQ_UserInterface::cmdSendCommandCodeXX_Click() {
  HandlerScope scope(this);
  clearReplies(SendPanel::Generic);
  console::GenericFrame frame;
  for (std::size_t i = 0; i < chip::kGenericBoxes; ++i) frame.boxes[i] = str(boxXX_[i]->text());
  frame.data = str(dataXX_->text());
  frame.writeOption = checkedIndex(opt09_);
  frame.timeInterval = timeInterval0F_->isChecked();
  sendRequest(SendPanel::Generic, console::genericRequest(frame));
}

void frmTL42RQ_UserInterface::cmdSendCommandCode02_Click() {
  HandlerScope scope(this);
  clearReplies(SendPanel::ProtocolSelect);
  std::vector<std::string> boxes;
  for (FrameByteEdit* b : box02_) boxes.push_back(str(b->text()));
  sendRequest(SendPanel::ProtocolSelect, console::countedRequest(boxes));
}

void frmTL42RQ_UserInterface::cmdSendCommandCode07_Click() {
  HandlerScope scope(this);
  clearReplies(SendPanel::Idle);
  std::vector<std::string> boxes;
  for (FrameByteEdit* b : box07_) boxes.push_back(str(b->text()));
  sendRequest(SendPanel::Idle, console::idleRequest(boxes));
}

void frmTL42RQ_UserInterface::cmdSendCommandCode0D_Click() {
  HandlerScope scope(this);
  clearReplies(SendPanel::Filter);
  std::vector<std::string> boxes;
  for (FrameByteEdit* b : box0D_) boxes.push_back(str(b->text()));
  sendRequest(SendPanel::Filter, console::countedRequest(boxes));
}

void frmTL42RQ_UserInterface::directButton(reader::Op op, QLineEdit* box) {
  HandlerScope scope(this);
  const reader::Answer a = exchange(op);
  box->setText(qs(a.text));
  if (!a.good(chip::kGoodChipAnswer)) yieldEvents(1);
  log().untitled(reader::logWord(op), a.text);
}

void frmTL42RQ_UserInterface::cmdEcho_Click() { directButton(reader::Op::Echo, echoAnswer_); }
void frmTL42RQ_UserInterface::cmdSendIRQPulse_Click() { directButton(reader::Op::SendIRQPulse, irqAnswer_); }
void frmTL42RQ_UserInterface::cmdNegativePulseOn_SPI_NSS_Click() {
  directButton(reader::Op::SendNSSPulse, nssAnswer_);
}

// --- Protocol Select -----------------------------------------------------------------------

console::Bits frmTL42RQ_UserInterface::bitBoxes(int byte) const {
  const auto& boxes = byte == 0 ? bits0_ : bits1_;
  console::Bits b;
  for (std::size_t n = 0; n < 8; ++n) b[n] = str(boxes[n]->text());
  return b;
}

void frmTL42RQ_UserInterface::setBitBoxes(int byte, const console::Bits& bits) {
  auto& boxes = byte == 0 ? bits0_ : bits1_;
  for (std::size_t n = 0; n < 8; ++n) boxes[n]->setText(qs(bits[n]));
}

void frmTL42RQ_UserInterface::writeByteFromBits(int byte) {
  const QString text = qs(reader::hexPadWidth7(console::byteOf(bitBoxes(byte)), 2));
  if (byte == 0) {
    byte0_->setText(text);
    box02_[3]->setText(text);
  } else {
    byte1_->setText(text);
    box02_[4]->setText(text);
  }
}

void frmTL42RQ_UserInterface::showFrame02Box(int box, bool shown) {
  box02_[static_cast<std::size_t>(box)]->setVisible(shown);
  caption02_[static_cast<std::size_t>(box)]->setVisible(shown);
}

void frmTL42RQ_UserInterface::setFrame02Box(int box, const QString& text) {
  box02_[static_cast<std::size_t>(box)]->setText(text);
}

void frmTL42RQ_UserInterface::frame02KeyUp(int box) {
  FrameByteEdit* b = box02_[static_cast<std::size_t>(box)];
  b->setNormalised(qs(console::normaliseByteBox(str(b->text()), "")));
  // Boxes 4 and 5 are the one place where a frame box runs back up, to the optional
  // ISO 14443 bytes, also when FeliCa shows box 4.
  if (box == 4 || box == 5) byte12_[static_cast<std::size_t>(box - 4)]->setText(b->text());
}

void frmTL42RQ_UserInterface::OptProtocolCode_Click(int index) {
  HandlerScope scope(this);
  if (index < 0 || index >= static_cast<int>(console::kProtocolOptions)) return;
  auto& g = glob::state();
  const auto& row = console::kProtocolOptionRows[static_cast<std::size_t>(index)];
  optProtocol_[static_cast<std::size_t>(index)]->setChecked(true);

  // 1. Keep the bits of the protocol we leave; Field OFF keeps none.
  if (g.currentProtocolCode == console::kNoProtocol) {
    yieldEvents(1);
  } else if (const int leaving = console::optionOfProtocolCode(g.currentProtocolCode); leaving >= 0) {
    bitStores_[static_cast<std::size_t>(leaving)] = bitBoxes(0);
  }

  // 2. Only the frame and the send boxes stay.
  fraByte0_->hide();
  fraByte1_->hide();
  fraByte12_->hide();
  for (const console::ParameterList& l : console::kParameterLists)
    if (l.byte == 0) listRows_[std::string(l.name)]->hide();
  for (QWidget* w : frame02Shown_) w->show();

  // 3. to 7. The protocol's title, its bits, its lists and byte 0 from the bits.
  g.currentProtocolCode = row.protocolCode;
  labelByte0_->setText(qs(row.byte0Title));
  fraByte0_->show();
  const console::Bits& bits = bitStores_[static_cast<std::size_t>(index)];
  setBitBoxes(0, bits);
  if (console::showsList(row, console::kAppendCrcList))
    lists_[std::string(console::kAppendCrcList)]->setCurrentText(qs(console::appendCrcEntry(bits[0])));
  for (std::string_view name : row.lists)
    if (!name.empty()) listRows_[std::string(name)]->show();
  writeByteFromBits(0);

  // 8. Length, protocol code and the bytes behind byte 0.
  box02_[2]->setText(qs(row.box2));
  switch (row.extra) {
    case console::ExtraBytes::None:
      box02_[1]->setText(QStringLiteral("02"));
      showFrame02Box(4, false);
      showFrame02Box(5, false);
      break;
    case console::ExtraBytes::Optional12: {
      fraByte12_->setTitle(qs(row.extraTitle));
      fraByte12_->show();
      const bool on = optional12_->isChecked();
      box02_[1]->setText(on ? QStringLiteral("04") : QStringLiteral("02"));
      showFrame02Box(4, on);
      showFrame02Box(5, on);
      if (on) {
        box02_[4]->setText(byte12_[0]->text());
        box02_[5]->setText(byte12_[1]->text());
      }
      break;
    }
    case console::ExtraBytes::SlotCounter:
      fraByte1_->setTitle(qs(row.extraTitle));
      fraByte1_->show();
      writeByteFromBits(1);
      showFrame02Box(5, false);
      chkiso18092_SlotCounterByte1_Click();
      break;
  }
}

void frmTL42RQ_UserInterface::OptByte12optional_Click() {
  const bool on = optional12_->isChecked();
  lblByte1_->setVisible(on);
  lblByte2_->setVisible(on);
  for (FrameByteEdit* b : byte12_) b->setEnabled(on);
  box02_[1]->setText(qs(console::movedLength(str(box02_[1]->text()), on ? 2 : -2)));
  showFrame02Box(4, on);
  showFrame02Box(5, on);
  if (on) {
    box02_[4]->setText(byte12_[0]->text());
    box02_[5]->setText(byte12_[1]->text());
  }
}

void frmTL42RQ_UserInterface::chkiso18092_SlotCounterByte1_Click() {
  // Byte 1 keeps its value while closed; box 4 shows it when it goes out.
  const bool on = slotCounter_->isChecked();
  for (FrameByteEdit* b : bits1_) b->setEnabled(on);
  byte1_->setEnabled(on);
  lists_["cboISO18092reader_SlotCounter"]->setEnabled(on);
  lists_["cboISO18092reader_Disregard_SlotCounter"]->setEnabled(on);
  showFrame02Box(4, on);
  box02_[1]->setText(on ? QStringLiteral("03") : QStringLiteral("02"));
  if (on) box02_[4]->setText(byte1_->text());
}

void frmTL42RQ_UserInterface::parameterList_Click(const console::ParameterList& list, const QString& entry) {
  const int value = console::entryValue(list, str(entry));
  if (value < 0) return;
  console::Bits bits = bitBoxes(list.byte);
  console::applyEntryValue(list, value, bits);
  setBitBoxes(list.byte, bits);
  writeByteFromBits(list.byte);
}

// --- Idle and filter -----------------------------------------------------------------------

void frmTL42RQ_UserInterface::optIDLEframe_Click(int index) {
  if (index < 0 || index >= static_cast<int>(console::kIdleExamples.size())) return;
  optIdle_[static_cast<std::size_t>(index)]->setChecked(true);
  const auto bytes = console::frameBytes(console::kIdleExamples[static_cast<std::size_t>(index)].frame);
  for (std::size_t i = 0; i < box07_.size() && i < bytes.size(); ++i) box07_[i]->setText(qs(bytes[i]));
}

void frmTL42RQ_UserInterface::OptCommad0D_Click(int index) {
  if (index < 0 || index >= static_cast<int>(console::kFilterOptions.size())) return;
  const auto& o = console::kFilterOptions[static_cast<std::size_t>(index)];
  opt0D_[static_cast<std::size_t>(index)]->setChecked(true);
  box0D_[1]->setText(qs(o.box1));
  for (std::size_t i = 2; i < box0D_.size(); ++i) box0D_[i]->setVisible(static_cast<int>(i) <= o.lastBox);
  if (!o.box4.empty()) box0D_[4]->setText(qs(o.box4));
  if (!o.box8.empty()) box0D_[8]->setText(qs(o.box8));
  label0D_[2]->setVisible(o.levels > 0);
  label0D_[3]->setVisible(o.levels > 0);
  for (std::size_t k = 0; k < uidLevel_.size(); ++k) uidLevel_[k]->setVisible(static_cast<int>(k) + 1 == o.levels);
}
