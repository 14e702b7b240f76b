#include "shell/ui/Panel.h"

#include <array>

#include <QApplication>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QHash>
#include <QPointer>
#include <QTimer>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>

#include "reader/Drivers.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/LogView.h"

namespace {

// A handler's loop yields after every step, and each yield used to repaint whatever the
// step changed: a whole window drawn per block read. While a handler yields, a window is
// repainted at most once per screen refresh; what changed meanwhile is painted together.
// Outside yields (the program waiting for the user) painting is left as Qt does it.
class PaintPacer final : public QObject {
 public:
  static constexpr qint64 kRefreshMs = 16;

  // The pacer of the running application, made at the first yield; none without one.
  static PaintPacer* instance() {
    static QPointer<PaintPacer> pacer;
    if (!pacer && QCoreApplication::instance()) {
      pacer = new PaintPacer(QCoreApplication::instance());
      QCoreApplication::instance()->installEventFilter(pacer);
    }
    return pacer;
  }

  int yielding = 0;

 protected:
  bool eventFilter(QObject* target, QEvent* event) override {
    if (event->type() != QEvent::UpdateRequest || !target->isWidgetType()) return false;
    auto* window = static_cast<QWidget*>(target);
    if (!clock_.isValid()) clock_.start();
    const qint64 now = clock_.elapsed();
    const auto last = lastPaint_.constFind(window);
    if (yielding > 0 && last != lastPaint_.cend() && now - *last < kRefreshMs) {
      // Held back: the window's pending paint is asked for again at the next refresh.
      if (!held_.contains(window)) held_.push_back(window);
      if (!timer_.isActive()) timer_.start(static_cast<int>(kRefreshMs - (now - *last)));
      return true;
    }
    lastPaint_.insert(window, now);
    return false;
  }

 private:
  explicit PaintPacer(QObject* parent) : QObject(parent) {
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] {
      const QList<QPointer<QWidget>> held = std::move(held_);
      held_.clear();
      for (const QPointer<QWidget>& w : held) lastPaint_.remove(w.data());
      for (const QPointer<QWidget>& w : held)
        if (w) QCoreApplication::postEvent(w, new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
    });
  }

  QElapsedTimer clock_;
  // When each window was last painted; only compared, never dereferenced.
  QHash<const QObject*, qint64> lastPaint_;
  QTimer timer_;
  QList<QPointer<QWidget>> held_;
};

}  // namespace

void yieldEvents(int turns) {
  QPointer<PaintPacer> pacer = PaintPacer::instance();
  if (pacer) ++pacer->yielding;
  for (int i = 0; i < turns; ++i) QCoreApplication::processEvents();
  if (pacer) --pacer->yielding;
}

namespace {
// The panel of each kind that opened last: only it clears the kind's open flag, so that a
// panel closed under a running handler, and destroyed only when the handler returns, does
// not clear the flag of the fresh panel that replaced it meanwhile.
Panel*& latestOf(glob::PanelId id) {
  static std::array<Panel*, static_cast<std::size_t>(glob::PanelId::Count)> latest{};
  return latest[static_cast<std::size_t>(id)];
}
}  // namespace

Panel::Panel(glob::PanelId id, const QString& name, QWidget* parent) : QWidget(parent), id_(id) {
  setObjectName(name);
  glob::panelOpen(id_) = true;
  latestOf(id_) = this;
}

Panel::~Panel() {
  log_.setSink(nullptr, nullptr);
  markClosed();
  if (latestOf(id_) == this) latestOf(id_) = nullptr;
}

void Panel::markClosed() {
  if (latestOf(id_) == this) glob::panelOpen(id_) = false;
}

Panel::HandlerScope::HandlerScope(Panel* p) : panel_(p), observe_(&p->capture_) { ++panel_->handlersRunning_; }

Panel::HandlerScope::~HandlerScope() {
  if (!panel_) return;
  if (--panel_->handlersRunning_ == 0 && panel_->deferredClose_) panel_->finishClose();
}

QPlainTextEdit* Panel::createLogView(const QString& name) {
  auto* view = new LogView(log_, this);
  logView_ = view;
  view->setObjectName(name);
  view->setVisible(true);
  // The view gets only the new piece; the string stays the truth that Save Log writes.
  log_.setSink([view](const std::string& piece) { view->appended(piece); }, [view] { view->cleared(); });
  return view;
}

QWidget* Panel::createLogButtons(const QString& clearName, const QString& saveName) {
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  QPushButton* clear = button(clearName, "Clear Log", row);
  QPushButton* save = button(saveName, "Save Log", row);
  connect(clear, &QPushButton::clicked, this, &Panel::cmdClearLog_Click);
  connect(save, &QPushButton::clicked, this, &Panel::cmdSaveLog_Click);
  layout->addWidget(clear);
  layout->addWidget(save);
  return row;
}

QPushButton* Panel::button(const QString& name, const QString& caption, QWidget* parent) {
  auto* b = new QPushButton(caption, parent ? parent : this);
  b->setObjectName(name);
  return b;
}

reader::Answer Panel::exchange(reader::Op op, const std::string& request) {
  auto& d = reader::driver();
  return reader::exchange(d, op, request, reader::reconnectWith(d, reconnectKind()));
}

void Panel::cmdClearLog_Click() {
  log_.clear();
  capture_.clear();
}

// The file dialog runs an event loop of its own, in which the panel may be closed or
// replaced: the scope keeps it alive, only hidden, until the save is done.
void Panel::cmdSaveLog_Click() {
  HandlerScope scope(this);
  // The view shows the string without its carriage returns: nothing else to show, nothing to save.
  if (!logView_ || log_.text().find_first_not_of('\r') == std::string::npos) return;
  saveTextAs(this, log_.text());
}

void keepDirectoryOf(const QString& fileName) {
  auto& g = glob::state();
  const QString title = QFileInfo(fileName).fileName().trimmed();
  const std::string dir = fileName.left(fileName.size() - title.size()).toStdString();
  if (dir != g.lastDirectory) {
    g.lastDirectory = dir;
    shell::writeUsageFile(g.lastDirectory, g.backgroundColor);
  }
}

QString askSaveFileName(QWidget* parent, const QString& filter) {
  const QString name =
      dialogs().saveFileName(parent, QString::fromStdString(glob::state().lastDirectory), filter).trimmed();
  if (!name.isEmpty()) keepDirectoryOf(name);
  return name;
}

// `text` is a copy: the window it came from may go while the dialog is up.
void saveTextAs(QWidget* parent, std::string text) {
  if (text.empty()) return;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const QString name = askSaveFileName(parent, "txt File (*.txt)|*.txt");
  if (!name.isEmpty()) {
    QFile f(name);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) f.write(text.data(), static_cast<qint64>(text.size()));
  }
  QApplication::restoreOverrideCursor();
}

void Panel::closeEvent(QCloseEvent* event) {
  closing_ = true;
  clearFlagsOnClose();
  if (handlersRunning_ > 0) {
    // A handler of this panel is still on the stack: hide now, go when it returns.
    deferredClose_ = true;
    event->ignore();
    if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget())) sub->hide();
    else hide();
    return;
  }
  markClosed();
  event->accept();
}

void Panel::finishClose() {
  deferredClose_ = false;
  markClosed();
  if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget())) sub->deleteLater();
  else deleteLater();
}
