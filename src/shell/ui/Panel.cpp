#include "shell/ui/Panel.h"

#include <array>

#include <QApplication>
#include <QCloseEvent>
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

void yieldEvents(int turns) {
  for (int i = 0; i < turns; ++i) QCoreApplication::processEvents();
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

Panel::HandlerScope::HandlerScope(Panel* p) : panel_(p) { ++panel_->handlersRunning_; }

Panel::HandlerScope::~HandlerScope() {
  if (!panel_) return;
  if (--panel_->handlersRunning_ == 0 && panel_->deferredClose_) panel_->finishClose();
}

QPlainTextEdit* Panel::createLogView(const QString& name) {
  logView_ = new QPlainTextEdit(this);
  logView_->setObjectName(name);
  logView_->setReadOnly(true);
  logView_->setVisible(true);
  logView_->setLineWrapMode(QPlainTextEdit::NoWrap);
  // The view gets only the new piece; the string stays the truth that Save Log writes.
  log_.setSink(
      [view = logView_](const std::string& piece) {
        QString text = QString::fromLatin1(piece.data(), static_cast<int>(piece.size()));
        text.remove(QLatin1Char('\r'));
        QTextCursor c = view->textCursor();
        c.movePosition(QTextCursor::End);
        c.insertText(text);
        view->setTextCursor(c);
      },
      [view = logView_] { view->clear(); });
  return logView_;
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

void Panel::cmdClearLog_Click() { log_.clear(); }

// The file dialog runs an event loop of its own, in which the panel may be closed or
// replaced: the scope keeps it alive, only hidden, until the save is done.
void Panel::cmdSaveLog_Click() {
  HandlerScope scope(this);
  if (!logView_ || logView_->toPlainText().isEmpty()) return;
  saveTextAs(this, log_.text());
}

// `text` is a copy: the window it came from may go while the dialog is up.
void saveTextAs(QWidget* parent, std::string text) {
  if (text.empty()) return;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  auto& g = glob::state();
  const QString name = dialogs()
                           .saveFileName(parent, QString::fromStdString(g.lastDirectory), "txt File (*.txt)|*.txt")
                           .trimmed();
  if (!name.isEmpty()) {
    const QString title = QFileInfo(name).fileName().trimmed();
    const std::string dir = name.left(name.size() - title.size()).toStdString();
    if (dir != g.lastDirectory) {
      g.lastDirectory = dir;
      shell::writeUsageFile(g.lastDirectory, g.backgroundColor);
    }
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
