// Every message box, file dialog, colour dialog and beep goes through here, so that the
// program shows Qt's dialogs and the tests answer them.
#pragma once

#include <QColor>
#include <QString>
#include <QStringList>
#include <deque>
#include <optional>
#include <vector>

class QWidget;

enum class MessageIcon { Stop, Exclamation, Information };

class Dialogs {
 public:
  virtual ~Dialogs() = default;
  virtual void message(QWidget* parent, const QString& text, const QString& title, MessageIcon icon) = 0;
  // Filters are written as the program has them: "txt File (*.txt)|*.txt".
  // An empty result means cancelled.
  virtual QString saveFileName(QWidget* parent, const QString& directory, const QString& filter) = 0;
  virtual QString openFileName(QWidget* parent, const QString& directory, const QString& filter) = 0;
  virtual std::optional<QColor> color(QWidget* parent, const QColor& preset) = 0;
  virtual void beep() = 0;
};

Dialogs& dialogs();
void setDialogs(Dialogs* d);  // nullptr restores Qt's dialogs

// "txt File (*.txt)|*.txt" as Qt writes it: "txt File (*.txt)".
QString qtFilter(const QString& filter);

class QtDialogs final : public Dialogs {
 public:
  void message(QWidget* parent, const QString& text, const QString& title, MessageIcon icon) override;
  QString saveFileName(QWidget* parent, const QString& directory, const QString& filter) override;
  QString openFileName(QWidget* parent, const QString& directory, const QString& filter) override;
  std::optional<QColor> color(QWidget* parent, const QColor& preset) override;
  void beep() override;
};

// Answers dialogs from queues and remembers what was asked.
class ScriptedDialogs final : public Dialogs {
 public:
  struct Message {
    QString text, title;
    MessageIcon icon;
  };
  struct FileRequest {
    bool save;
    QString directory, filter;
  };
  std::vector<Message> messages;
  std::vector<FileRequest> fileRequests;
  std::deque<QString> fileAnswers;  // empty string = cancel; nothing queued = cancel
  std::deque<std::optional<QColor>> colourAnswers;
  std::vector<QColor> colourPresets;
  int beeps = 0;

  void message(QWidget*, const QString& text, const QString& title, MessageIcon icon) override {
    messages.push_back({text, title, icon});
  }
  QString saveFileName(QWidget*, const QString& directory, const QString& filter) override {
    return nextFile(true, directory, filter);
  }
  QString openFileName(QWidget*, const QString& directory, const QString& filter) override {
    return nextFile(false, directory, filter);
  }
  std::optional<QColor> color(QWidget*, const QColor& preset) override {
    colourPresets.push_back(preset);
    if (colourAnswers.empty()) return std::nullopt;
    auto c = colourAnswers.front();
    colourAnswers.pop_front();
    return c;
  }
  void beep() override { ++beeps; }

 private:
  QString nextFile(bool save, const QString& directory, const QString& filter) {
    fileRequests.push_back({save, directory, filter});
    if (fileAnswers.empty()) return {};
    QString f = fileAnswers.front();
    fileAnswers.pop_front();
    return f;
  }
};
