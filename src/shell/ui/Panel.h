// What every panel shares: its name, its open flag, its trace log and view, the
// exchange-and-log shape of a handler, and safe closing while a handler still runs.
#pragma once

#include <QPointer>
#include <QWidget>
#include <string>

#include "reader/Exchange.h"
#include "reader/ExchangeRecord.h"
#include "reader/Reconnect.h"
#include "reader/TraceLog.h"
#include "shell/GlobVariables.h"

class QPlainTextEdit;
class QPushButton;

// Turns of the event loop; the program's only pause and its way to stay alive in loops.
void yieldEvents(int turns);

class Panel : public QWidget {
  Q_OBJECT
 public:
  Panel(glob::PanelId id, const QString& name, QWidget* parent = nullptr);
  ~Panel() override;

  glob::PanelId panelId() const { return id_; }
  reader::TraceLog& log() { return log_; }
  // Every driver call made while one of this panel's handlers runs, for a capture export;
  // cleared with the log.
  const reader::ExchangeRecorder& capture() const { return capture_; }
  QPlainTextEdit* logView() const { return logView_; }
  // True once the panel was asked to close; loops end at their next check.
  bool closing() const { return closing_; }

  // Keeps the panel alive while a handler is on the stack; a close requested meanwhile
  // only hides it, and the panel goes away when the last handler returns.
  class HandlerScope {
   public:
    explicit HandlerScope(Panel* p);
    ~HandlerScope();
    HandlerScope(const HandlerScope&) = delete;
    HandlerScope& operator=(const HandlerScope&) = delete;

   private:
    QPointer<Panel> panel_;
    reader::ObserveExchanges observe_;
  };

  void cmdClearLog_Click();
  void cmdSaveLog_Click();

 protected:
  // Creates the read-only log view with this name and wires it to the trace log.
  QPlainTextEdit* createLogView(const QString& name);
  // The Clear Log and Save Log buttons, wired; the script panel gives them other names.
  QWidget* createLogButtons(const QString& clearName = "cmdClearLog", const QString& saveName = "cmdSaveLog");
  // Creates a push button with the given name and caption.
  QPushButton* button(const QString& name, const QString& caption, QWidget* parent = nullptr);

  // The reconnect a plain exchange of this panel uses.
  virtual reader::ReconnectKind reconnectKind() const { return reader::ReconnectKind::Plain; }
  // One exchange with reconnect and repeat.
  reader::Answer exchange(reader::Op op, const std::string& request = {});
  // Flags the panel clears when it closes (loop flags and the like).
  virtual void clearFlagsOnClose() {}

  void closeEvent(QCloseEvent* event) override;

 private:
  void finishClose();
  // Clears the kind's open flag, unless a newer panel of the kind holds it.
  void markClosed();
  glob::PanelId id_;
  reader::TraceLog log_;
  reader::ExchangeRecorder capture_;
  QPlainTextEdit* logView_ = nullptr;
  int handlersRunning_ = 0;
  bool closing_ = false;
  bool deferredClose_ = false;
};

// The directory of a chosen file becomes the last-used one, and the usage file keeps it.
void keepDirectoryOf(const QString& fileName);

// The file name the user picks in the save dialog with `filter`, starting in the
// last-used directory, which then becomes the picked file's directory (and is written to
// the usage file). Empty when the dialog was cancelled.
QString askSaveFileName(QWidget* parent, const QString& filter);

// Saves a text through the save dialog into a file of the user's choice, keeping the
// last-used directory: the shape of Save Log and of the other Save buttons.
void saveTextAs(QWidget* parent, std::string text);
