#include "shell/ui/LogView.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPlainTextDocumentLayout>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QWheelEvent>
#include <algorithm>
#include <climits>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {

// The document behind the editor's API is never shown, so it is never laid out either:
// laying out (shaping) every appended line is what made each append cost a tenth of a
// millisecond.
class UnshownLayout final : public QPlainTextDocumentLayout {
 public:
  explicit UnshownLayout(QTextDocument* doc) : QPlainTextDocumentLayout(doc) {}
  QRectF blockBoundingRect(const QTextBlock&) const override { return {}; }

 protected:
  void documentChanged(int, int, int) override {}
};

// Freed blocks of a long log lie all over the heap; hand the whole pages back to the
// system so that Clear Log shrinks the process, not only its free lists.
void giveMemoryBack() {
#if defined(__GLIBC__)
  malloc_trim(0);
#endif
}

}  // namespace

LogView::LogView(const reader::TraceLog& log, QWidget* parent)
    : QPlainTextEdit(parent), log_(log), vbar_(new QScrollBar(Qt::Vertical, this)), hbar_(new QScrollBar(Qt::Horizontal, this)) {
  auto* doc = new QTextDocument(this);
  doc->setDocumentLayout(new UnshownLayout(doc));
  doc->setUndoRedoEnabled(false);
  setDocument(doc);
  setMaximumBlockCount(kMirrorLines);
  setReadOnly(true);
  setLineWrapMode(QPlainTextEdit::NoWrap);
  // The view's own bars stand where the editor's stood, and count the log's lines.
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  vbar_->setRange(0, 0);
  hbar_->setRange(0, 0);
  vbar_->hide();
  hbar_->hide();
  connect(vbar_, &QScrollBar::valueChanged, this, [this] { viewport()->update(); });
  connect(hbar_, &QScrollBar::valueChanged, this, [this] { viewport()->update(); });
  refreshTimer_.setSingleShot(true);
  refreshTimer_.setInterval(kRefreshMs);
  connect(&refreshTimer_, &QTimer::timeout, this, &LogView::refresh);
}

LogView::~LogView() = default;

void LogView::appended(const std::string& piece) {
  const std::string& text = log_.text();
  lines_.appended(text, text.size() >= piece.size() ? text.size() - piece.size() : 0);
  if (text.capacity() != capacity_) {
    // The string moved to a larger buffer; the old one must not stay resident.
    capacity_ = text.capacity();
    giveMemoryBack();
  }
  if (!mirrorStale_ && burst_ < kSyncAppends) {
    mirror(piece);
    mirrored_ = text.size();
    ++burst_;
  } else {
    mirrorStale_ = true;
  }
  appendedSinceRefresh_ = scrollToEnd_ = true;
  scheduleRefresh();
}

void LogView::cleared() {
  lines_.clear();
  layouts_.clear();
  mirrored_ = 0;
  capacity_ = 0;
  document()->clear();
  mirrorStale_ = appendedSinceRefresh_ = false;
  burst_ = 0;
  hasSelection_ = selecting_ = false;
  widest_ = 0;
  scrollToEnd_ = false;
  vbar_->setValue(0);
  hbar_->setValue(0);
  refreshNow();
  giveMemoryBack();
}

void LogView::mirror(const std::string& piece) {
  QString text = QString::fromLatin1(piece.data(), static_cast<qsizetype>(piece.size()));
  text.remove(QLatin1Char('\r'));
  // Only the lines the document can keep are worth handing to it.
  const qsizetype keepFrom = [&] {
    qsizetype at = text.size();
    for (int feeds = 0; at > 0; --at)
      if (text.at(at - 1) == QLatin1Char('\n') && ++feeds >= kMirrorLines) return at;
    return qsizetype(0);
  }();
  if (keepFrom > 0) {
    document()->clear();
    text.remove(0, keepFrom);
  }
  QTextCursor c(document());
  c.beginEditBlock();
  c.movePosition(QTextCursor::End);
  c.insertText(text);
  c.endEditBlock();
  // The caret stays at the end, as after the editor's own appends.
  if (textCursor().position() != document()->characterCount() - 1) {
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    setTextCursor(end);
  }
}

void LogView::rebuildMirror() {
  mirrorStale_ = false;
  const std::string& text = log_.text();
  const std::size_t count = lines_.count();
  const std::size_t tailFrom = lines_.start(count > kMirrorLines ? count - kMirrorLines : 0);
  if (mirrored_ < tailFrom || mirrored_ > text.size()) {
    // More came than the document keeps: it takes the last lines afresh.
    document()->clear();
    mirrored_ = tailFrom;
  }
  if (mirrored_ < text.size()) mirror(text.substr(mirrored_));
  mirrored_ = text.size();
}

std::size_t LogView::firstVisibleLine() const { return static_cast<std::size_t>(vbar_->value()); }

void LogView::scheduleRefresh() {
  if (!refreshTimer_.isActive()) refreshTimer_.start();
}

void LogView::refreshNow() {
  refreshTimer_.stop();
  refresh();
}

qreal LogView::lineHeight() const {
  if (lineHeight_ > 0) return lineHeight_;
  QTextLayout probe(QStringLiteral("X"), font());
  probe.beginLayout();
  QTextLine line = probe.createLine();
  line.setLeadingIncluded(true);
  probe.endLayout();
  qreal h = line.height();
  if (line.leading() < 0) h += std::ceil(line.leading());
  lineHeight_ = h > 0 ? h : 1;
  return lineHeight_;
}

int LogView::visibleLines() const {
  return std::max(1, static_cast<int>(viewport()->height() / lineHeight()));
}

int LogView::endTop() const {
  // As the editor scrolls its caret into view at the end: the last line at the bottom,
  // lines above it up to the top edge, the topmost one possibly cut.
  const int lines = static_cast<int>(std::min<std::size_t>(lines_.count(), INT_MAX));
  const int above = static_cast<int>(std::ceil((viewport()->height() - lineHeight()) / lineHeight()));
  return std::max(0, lines - 1 - std::max(0, above));
}

bool LogView::followsEnd() const { return vbar_->value() >= endTop(); }

void LogView::refresh() {
  if (appendedSinceRefresh_) {
    // Look once more after the next interval: a burst has ended when nothing came meanwhile.
    appendedSinceRefresh_ = false;
    scheduleRefresh();
  } else {
    burst_ = 0;
    if (mirrorStale_) rebuildMirror();
  }
  const qreal margin = document()->documentMargin();
  // Every append puts the caret at the end of the log, and the caret is kept in view.
  qreal caretX = -1;
  if (scrollToEnd_) {
    // The same layout the paint that follows draws the line with.
    const QTextLayout& last = laidOutLine(lines_.count() - 1);
    caretX = margin + (last.lineCount() > 0 ? last.lineAt(0).naturalTextWidth() : 0);
    widest_ = std::max(widest_, caretX + margin);
  }
  placeScrollBars();
  const int lines = static_cast<int>(std::min<std::size_t>(lines_.count(), INT_MAX));
  vbar_->setPageStep(visibleLines());
  vbar_->setSingleStep(1);
  vbar_->setRange(0, std::max(0, lines - visibleLines()));
  const int width = viewport()->width();
  hbar_->setPageStep(width);
  hbar_->setSingleStep(20);
  hbar_->setRange(0, std::max(0, static_cast<int>(std::ceil(widest_)) - width));
  if (scrollToEnd_) {
    scrollToEnd_ = false;
    if (vbar_->value() < endTop()) vbar_->setValue(endTop());
    if (caretX < hbar_->value() || caretX + 1 > hbar_->value() + width)
      hbar_->setValue(static_cast<int>(caretX) - width / 2);
  }
  placeScrollBars();
  viewport()->update();
}

void LogView::placeScrollBars() {
  const bool needV = vbar_->maximum() > 0 ||
                     static_cast<qreal>(lines_.count()) * lineHeight() + document()->documentMargin() > viewport()->height();
  const bool needH = std::ceil(widest_) > viewport()->width();
  const int vw = needV ? vbar_->sizeHint().width() : 0;
  const int hh = needH ? hbar_->sizeHint().height() : 0;
  if (viewportMargins() != QMargins(0, 0, vw, hh)) setViewportMargins(0, 0, vw, hh);
  const QRect r = contentsRect();
  vbar_->setGeometry(r.right() - vw + 1, r.top(), vw, r.height() - hh);
  hbar_->setGeometry(r.left(), r.bottom() - hh + 1, r.width() - vw, hh);
  vbar_->setVisible(needV);
  hbar_->setVisible(needH);
}

QString LogView::shownLine(std::size_t n) const {
  const std::string_view s = lines_.line(log_.text(), n);
  QString text = QString::fromLatin1(s.data(), static_cast<qsizetype>(s.size()));
  text.remove(QLatin1Char('\r'));
  return text;
}

void LogView::layOut(QTextLayout& layout, const QString& text) const {
  QTextOption option = document()->defaultTextOption();
  option.setWrapMode(QTextOption::NoWrap);
  layout.setText(text);
  layout.setFont(font());
  layout.setTextOption(option);
  layout.setCacheEnabled(true);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  if (line.isValid()) {
    line.setLeadingIncluded(true);
    line.setLineWidth(qreal(INT_MAX) / 256);
    line.setPosition(QPointF(document()->documentMargin(), 0));
  }
  layout.endLayout();
}

const QTextLayout& LogView::laidOutLine(std::size_t n) const {
  const QString text = shownLine(n);
  std::shared_ptr<QTextLayout>& slot = layouts_[n];
  if (!slot || slot->text() != text) {
    slot = std::make_shared<QTextLayout>();
    layOut(*slot, text);
  }
  return *slot;
}

void LogView::setWidest(qreal width) {
  if (width <= widest_) return;
  widest_ = width;
  scheduleRefresh();
}

void LogView::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  const QRect area = event->rect();
  const qreal h = lineHeight();
  const qreal margin = document()->documentMargin();
  const std::size_t count = lines_.count();
  Spot from = anchor_, to = caret_;
  if (to < from) std::swap(from, to);
  QTextCharFormat selected;
  selected.setBackground(palette().brush(QPalette::Highlight));
  selected.setForeground(palette().brush(QPalette::HighlightedText));
  // Shaping a line costs more than drawing it: the lines on screen keep their layouts
  // from one refresh to the next, and the store is emptied when it outgrows the screen.
  if (layouts_.size() > 4 * (visibleLines() + 8)) layouts_.clear();
  qreal y = vbar_->value() == 0 ? margin : 0;
  for (std::size_t n = firstVisibleLine(); n < count && y < area.bottom() + 1; ++n, y += h) {
    if (y + h < area.top()) continue;
    const QTextLayout& layout = laidOutLine(n);
    QList<QTextLayout::FormatRange> ranges;
    if (hasSelection_ && n >= from.line && n <= to.line) {
      const int start = n == from.line ? from.column : 0;
      const int end = n == to.line ? to.column : static_cast<int>(layout.text().size()) + 1;
      if (end > start) ranges.push_back({start, end - start, selected});
    }
    layout.draw(&painter, QPointF(-hbar_->value(), y), ranges);
    if (layout.lineCount() > 0) setWidest(layout.lineAt(0).naturalTextWidth() + 2 * margin);
  }
}

void LogView::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  refresh();
}

void LogView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  refresh();
}

void LogView::changeEvent(QEvent* event) {
  QPlainTextEdit::changeEvent(event);
  if (event->type() == QEvent::FontChange) {
    lineHeight_ = 0;
    layouts_.clear();
    widest_ = 0;
    scheduleRefresh();
  }
}

void LogView::scrollContentsBy(int, int) { viewport()->update(); }

void LogView::wheelEvent(QWheelEvent* event) {
  const QPoint steps = event->angleDelta() / 40;
  if (event->modifiers() & Qt::ShiftModifier || steps.y() == 0)
    hbar_->setValue(hbar_->value() - (steps.y() ? steps.y() : steps.x()) * hbar_->singleStep());
  else
    vbar_->setValue(vbar_->value() - steps.y());
  event->accept();
}

void LogView::keyPressEvent(QKeyEvent* event) {
  if (event == QKeySequence::Copy) return copySelection();
  if (event == QKeySequence::SelectAll) return selectEverything();
  const bool control = event->modifiers() & Qt::ControlModifier;
  switch (event->key()) {
    case Qt::Key_Up: vbar_->triggerAction(QAbstractSlider::SliderSingleStepSub); break;
    case Qt::Key_Down: vbar_->triggerAction(QAbstractSlider::SliderSingleStepAdd); break;
    case Qt::Key_PageUp: vbar_->triggerAction(QAbstractSlider::SliderPageStepSub); break;
    case Qt::Key_PageDown: vbar_->triggerAction(QAbstractSlider::SliderPageStepAdd); break;
    case Qt::Key_Left: hbar_->triggerAction(QAbstractSlider::SliderSingleStepSub); break;
    case Qt::Key_Right: hbar_->triggerAction(QAbstractSlider::SliderSingleStepAdd); break;
    case Qt::Key_Home:
      if (control) vbar_->triggerAction(QAbstractSlider::SliderToMinimum);
      hbar_->triggerAction(QAbstractSlider::SliderToMinimum);
      break;
    case Qt::Key_End:
      if (control) vbar_->triggerAction(QAbstractSlider::SliderToMaximum);
      break;
    default: event->ignore(); return;
  }
  event->accept();
}

LogView::Spot LogView::spotAt(const QPoint& pos) const {
  const qreal h = lineHeight();
  const qreal top = vbar_->value() == 0 ? document()->documentMargin() : 0;
  const qreal row = std::floor((pos.y() - top) / h);
  const std::size_t count = lines_.count();
  Spot s;
  if (row < 0) {
    s.line = row + static_cast<qreal>(firstVisibleLine()) < 0 ? 0 : firstVisibleLine() - static_cast<std::size_t>(-row);
  } else {
    s.line = std::min(firstVisibleLine() + static_cast<std::size_t>(row), count - 1);
  }
  QTextLayout layout;
  layOut(layout, shownLine(s.line));
  s.column = layout.lineCount() > 0 ? layout.lineAt(0).xToCursor(pos.x() + hbar_->value()) : 0;
  return s;
}

void LogView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  anchor_ = caret_ = spotAt(event->position().toPoint());
  selecting_ = true;
  hasSelection_ = false;
  viewport()->update();
  event->accept();
}

void LogView::mouseMoveEvent(QMouseEvent* event) {
  if (!selecting_) return event->ignore();
  const QPoint pos = event->position().toPoint();
  if (pos.y() < 0) vbar_->triggerAction(QAbstractSlider::SliderSingleStepSub);
  else if (pos.y() > viewport()->height()) vbar_->triggerAction(QAbstractSlider::SliderSingleStepAdd);
  caret_ = spotAt(pos);
  hasSelection_ = !(caret_ == anchor_);
  viewport()->update();
  event->accept();
}

void LogView::mouseReleaseEvent(QMouseEvent* event) {
  if (!selecting_) return event->ignore();
  selecting_ = false;
  if (hasSelection_ && QApplication::clipboard()->supportsSelection())
    QApplication::clipboard()->setText(selectedText(), QClipboard::Selection);
  event->accept();
}

void LogView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  // The word under the pointer, as the editor selects it.
  const Spot at = spotAt(event->position().toPoint());
  const QString line = shownLine(at.line);
  int from = std::min(at.column, static_cast<int>(line.size()));
  int to = from;
  while (from > 0 && line.at(from - 1).isLetterOrNumber()) --from;
  while (to < line.size() && line.at(to).isLetterOrNumber()) ++to;
  anchor_ = {at.line, from};
  caret_ = {at.line, to};
  hasSelection_ = to > from;
  viewport()->update();
  event->accept();
}

void LogView::contextMenuEvent(QContextMenuEvent* event) {
  QMenu menu(this);
  QAction* copy = menu.addAction(tr("&Copy") + QLatin1Char('\t') + QKeySequence(QKeySequence::Copy).toString(QKeySequence::NativeText));
  copy->setEnabled(hasSelection_);
  connect(copy, &QAction::triggered, this, &LogView::copySelection);
  menu.addSeparator();
  QAction* all = menu.addAction(tr("Select All") + QLatin1Char('\t') +
                                QKeySequence(QKeySequence::SelectAll).toString(QKeySequence::NativeText));
  all->setEnabled(lines_.count() > 1 || !log_.empty());
  connect(all, &QAction::triggered, this, &LogView::selectEverything);
  menu.exec(event->globalPos());
}

QString LogView::selectedText() const {
  if (!hasSelection_) return {};
  Spot from = anchor_, to = caret_;
  if (to < from) std::swap(from, to);
  QString out;
  for (std::size_t n = from.line; n <= to.line && n < lines_.count(); ++n) {
    const QString line = shownLine(n);
    const int start = n == from.line ? std::min(from.column, static_cast<int>(line.size())) : 0;
    const int end = n == to.line ? std::min(to.column, static_cast<int>(line.size())) : static_cast<int>(line.size());
    if (n != from.line) out += QLatin1Char('\n');
    out += line.mid(start, end - start);
  }
  return out;
}

void LogView::copySelection() const {
  if (hasSelection_) QApplication::clipboard()->setText(selectedText());
}

void LogView::selectEverything() {
  if (lines_.count() == 0) return;
  anchor_ = {0, 0};
  caret_ = {lines_.count() - 1, static_cast<int>(shownLine(lines_.count() - 1).size())};
  hasSelection_ = !(anchor_ == caret_);
  viewport()->update();
}
