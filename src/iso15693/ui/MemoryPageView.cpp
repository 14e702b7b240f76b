#include "iso15693/ui/MemoryPageView.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QVBoxLayout>

#include "reader/HexText.h"
#include "shell/GlobVariables.h"
#include "shell/Product.h"
#include "shell/ui/Dialogs.h"

// --- MaskedEdit ------------------------------------------------------------------------------

MaskedEdit::MaskedEdit(const QString& name, QWidget* parent) : QLineEdit(parent) { setObjectName(name); }

void MaskedEdit::setPattern(const std::string& pattern) {
  pattern_ = pattern;
  if (pattern.empty()) {
    setInputMask(QString());
    return;
  }
  // "A" is an alphanumeric place, "&" any character; the rest stands as it is. Unfilled
  // places show "_".
  QString mask;
  for (char c : pattern) {
    if (c == 'A') mask += 'N';
    else if (c == '&') mask += 'X';
    else mask += QLatin1Char(c);
  }
  setInputMask(mask + ";_");
}

void MaskedEdit::setHexPlaces(int places) {
  pattern_ = std::string(static_cast<std::size_t>(places), 'H');
  setInputMask(QString(places, QLatin1Char('H')) + ";_");
}

std::string MaskedEdit::maskedText() const { return displayText().toStdString(); }

void MaskedEdit::setMaskedText(const std::string& text) {
  // Unfilled places are given as "_"; the mask leaves them empty.
  QString t = QString::fromStdString(text);
  if (!inputMask().isEmpty()) t.replace(QLatin1Char('_'), QLatin1Char(' '));
  setText(t);
}

// --- LockableComboBox ------------------------------------------------------------------------

LockableComboBox::LockableComboBox(const QString& name, QWidget* parent) : QComboBox(parent) { setObjectName(name); }
void LockableComboBox::showPopup() {
  if (!locked_) QComboBox::showPopup();
}
void LockableComboBox::keyPressEvent(QKeyEvent* e) {
  if (locked_) return e->ignore();
  QComboBox::keyPressEvent(e);
}
void LockableComboBox::wheelEvent(QWheelEvent* e) {
  if (!locked_) QComboBox::wheelEvent(e);
}
void LockableComboBox::mousePressEvent(QMouseEvent* e) {
  if (!locked_) QComboBox::mousePressEvent(e);
}

// --- ClickableLabel --------------------------------------------------------------------------

ClickableLabel::ClickableLabel(const QString& name, const QString& caption, QWidget* parent)
    : QLabel(caption, parent) {
  setObjectName(name);
}
void ClickableLabel::mousePressEvent(QMouseEvent* e) {
  QLabel::mousePressEvent(e);
  emit clicked();
}

// --- the list --------------------------------------------------------------------------------

class ReadViewList : public QListWidget {
 public:
  ReadViewList(MemoryPageView* view, QWidget* parent) : QListWidget(parent), view_(view) {
    setObjectName("lstReadView");
  }

 protected:
  void keyPressEvent(QKeyEvent* e) override {
    // The scroll over the buffer runs first; the list's own handling of the key stays.
    view_->lstReadView_KeyDown(virtualKeyCode(e->key()));
    QListWidget::keyPressEvent(e);
  }
  void mouseDoubleClickEvent(QMouseEvent* e) override {
    QListWidget::mouseDoubleClickEvent(e);
    view_->lstReadView_DblClick();
  }

 private:
  static int virtualKeyCode(int qtKey) {
    switch (qtKey) {
      case Qt::Key_End:
        return 0x23;
      case Qt::Key_Down:
        return 0x28;
      case Qt::Key_Right:
        return 0x27;
      case Qt::Key_PageDown:
        return 0x22;
      case Qt::Key_Up:
        return 0x26;
      case Qt::Key_Left:
        return 0x25;
      case Qt::Key_PageUp:
        return 0x21;
      case Qt::Key_Home:
        return 0x24;
      default:
        return 0;
    }
  }
  MemoryPageView* view_;
};

// --- the view --------------------------------------------------------------------------------

namespace {
std::vector<std::string> bufferRows() { return memoryBuffer().Contenu(); }
int pageRowBytes() { return shell::productSizes().pageRowBytes; }
long blockMask() { return shell::productSizes().blockAddressMask; }
}  // namespace

MemoryPageView::MemoryPageView(pageview::Variant variant, Host host, QWidget* parent)
    : QWidget(parent), variant_(variant), host_(std::move(host)) {
  setObjectName("MemoryPageView");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);

  if (variant_ == pageview::Variant::Iso15693) {
    auto* row = new QHBoxLayout;
    lblNbData_ = new QLabel("Page Size", this);
    lblNbData_->setObjectName("lblNbData");
    cboPageSize_ = new LockableComboBox("cboPageSize", this);
    cboPageSize_->setToolTip("In page mode, specify here the number of byte to write inside the page");
    connect(cboPageSize_, &QComboBox::activated, this, [this] { cboPageSize_Click(); });
    row->addWidget(lblNbData_);
    row->addWidget(cboPageSize_);
    row->addStretch();
    layout->addLayout(row);
  }

  list_ = new ReadViewList(this, this);
  QFont font(pageview::kFontFamily);
  font.setStyleHint(QFont::Monospace);
  font.setFixedPitch(true);
  list_->setFont(font);
  list_->setVisible(false);
  layout->addWidget(list_, 1);

  fraPageWrite_ = new QGroupBox("Data in Page", this);
  fraPageWrite_->setObjectName("fraPageWrite");
  auto* grid = new QGridLayout(fraPageWrite_);
  for (int i = 0; i < 16; ++i) {
    auto* box = new MaskedEdit(QString("PWData_%1").arg(i), fraPageWrite_);
    box->setFont(font);
    box->setPattern(">&& && && &&");
    pwData_[static_cast<std::size_t>(i)] = box;
    grid->addWidget(box, i, 0, 1, 4);
  }
  if (variant_ == pageview::Variant::Iso14443A) {
    txtPageSize_ = new QLineEdit("4", fraPageWrite_);
    txtPageSize_->setObjectName("txtPageSize");
    grid->addWidget(txtPageSize_, 16, 0);
  }
  lblAutoFill_ = new QLabel("Fill with", fraPageWrite_);
  lblAutoFill_->setObjectName("lblAutoFill");
  mskFillPage_ = new MaskedEdit("mskFillPage", fraPageWrite_);
  mskFillPage_->setHexPlaces(2);
  mskFillPage_->setFont(font);
  mskFillPage_->setFixedWidth(48);
  cmdWriteUser_ = new QPushButton("Write", fraPageWrite_);
  cmdWriteUser_->setObjectName("cmdWriteUser");
  cmdWriteTest_ = new QPushButton("Write", fraPageWrite_);
  cmdWriteTest_->setObjectName("cmdWriteTest");
  cmdWriteTest_->setVisible(false);
  cmdCancelWriteTest_ = new QPushButton("Cancel", fraPageWrite_);
  cmdCancelWriteTest_->setObjectName("cmdCancelWriteTest");
  grid->addWidget(lblAutoFill_, 17, 0);
  grid->addWidget(mskFillPage_, 17, 1);
  grid->addWidget(cmdWriteUser_, 18, 0, 1, 2);
  grid->addWidget(cmdWriteTest_, 18, 2);
  grid->addWidget(cmdCancelWriteTest_, 18, 3);
  fraPageWrite_->setVisible(false);
  fraPageWrite_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
  layout->addWidget(fraPageWrite_);
  // With the list hidden the grid keeps its own height; the rest stays empty below.
  layout->addStretch(0);

  connect(mskFillPage_, &QLineEdit::textChanged, this, [this] { mskFillPage_Change(); });
  connect(cmdWriteUser_, &QPushButton::clicked, this, &MemoryPageView::writeClicked);
  connect(cmdCancelWriteTest_, &QPushButton::clicked, this, &MemoryPageView::cancelClicked);
}

QListWidget* MemoryPageView::lstReadView() const { return list_; }

void MemoryPageView::showReadRows(long count, long start) {
  list_->clear();
  const pageview::Shown shown =
      pageview::showReadRows(bufferRows(), count, start, blockMask(), host_.addressWidth ? host_.addressWidth() : 2);
  firstShownRow_ = shown.firstShownRow;
  for (const std::string& row : shown.rows) list_->addItem(QString::fromStdString(row));
  list_->setVisible(true);
}

void MemoryPageView::fillPageSizeList(int pageSize) {
  if (!cboPageSize_) return;
  cboPageSize_->clear();
  for (int i = 1; i <= pageSize; ++i) cboPageSize_->addItem(QString::number(i));
  cboPageSize_->setCurrentText(QString::number(pageSize));
}

std::string MemoryPageView::pageSizeText() const {
  if (cboPageSize_) return cboPageSize_->currentText().toStdString();
  if (txtPageSize_) return txtPageSize_->text().toStdString();
  return "4";
}

void MemoryPageView::setPageGrid(int bytes) {
  for (MaskedEdit* box : pwData_) {
    box->setVisible(false);
    box->setEnabled(false);
  }
  for (QWidget* w : std::initializer_list<QWidget*>{cmdWriteUser_, cmdWriteTest_, cmdCancelWriteTest_,
                                                     mskFillPage_, lblAutoFill_}) {
    w->setEnabled(true);
    w->setVisible(false);
  }
  cmdWriteUser_->setVisible(!host_.writeButtonVisible || host_.writeButtonVisible());
  cmdCancelWriteTest_->setVisible(true);
  mskFillPage_->setVisible(true);
  lblAutoFill_->setVisible(true);
  const pageview::Grid g = pageview::pageGrid(bytes, pageRowBytes(), variant_);
  gridBoxes_ = static_cast<int>(std::min<std::size_t>(g.masks.size(), pwData_.size()));
  for (int i = 0; i < gridBoxes_; ++i) {
    MaskedEdit* box = pwData_[static_cast<std::size_t>(i)];
    box->setPattern("");
    box->clear();
    box->setPattern(g.masks[static_cast<std::size_t>(i)]);
    box->setMaskedText(g.texts[static_cast<std::size_t>(i)]);
    box->setEnabled(true);
    box->setVisible(true);
  }
}

std::string MemoryPageView::gridData(int bytes) const {
  const int prb = pageRowBytes();
  const int last = prb > 0 ? (bytes - 1) / prb : 0;
  std::string data;
  for (int i = 0; i <= last && i < 16; ++i) data += pwData_[static_cast<std::size_t>(i)]->maskedText();
  return data;
}

void MemoryPageView::setGridEnabled(bool enabled) {
  for (MaskedEdit* box : pwData_) box->setEnabled(enabled);
}

void MemoryPageView::clearFill() { mskFillPage_->setMaskedText(pageview::kEmptyFill); }

void MemoryPageView::lstReadView_KeyDown(int code) {
  const long size = memoryBuffer().Size();
  const pageview::KeyOutcome o =
      pageview::keyDown(pageview::keyOfCode(code), firstShownRow_, list_->currentRow(), size);
  if (!o.refill || list_->count() == 0) return;
  const long base = pageview::addressBase(list_->item(0)->text().toStdString(), firstShownRow_);
  const int before = list_->currentRow();
  firstShownRow_ = o.firstShownRow;
  list_->clear();
  for (const std::string& row : pageview::refill(bufferRows(), firstShownRow_, base, blockMask(),
                                                 host_.addressWidth ? host_.addressWidth() : 2))
    list_->addItem(QString::fromStdString(row));
  list_->setCurrentRow(o.listIndex >= 0 ? o.listIndex : before);
}

void MemoryPageView::lstReadView_DblClick() {
  QClipboard* clipboard = QGuiApplication::clipboard();
  clipboard->clear();
  if (QListWidgetItem* item = list_->currentItem()) clipboard->setText(item->text());
}

void MemoryPageView::mskFillPage_Change() {
  const std::string fill = mskFillPage_->maskedText();
  if (fill == pageview::kEmptyFill) return;
  const int bytes = pageview::fillByteCount(variant_, glob::state().writeMode, pageSizeText());
  const auto texts = pageview::fillTexts(fill, bytes, pageRowBytes());
  if (!texts) {
    dialogs().message(this, reader::kInvalidData.text, reader::kInvalidData.title, MessageIcon::Exclamation);
    return;
  }
  for (std::size_t i = 0; i < texts->size() && i < pwData_.size(); ++i) pwData_[i]->setMaskedText((*texts)[i]);
}

void MemoryPageView::cboPageSize_Click() {
  fraPageWrite_->setVisible(false);
  clearFill();
  list_->setVisible(false);
}
