#include "shell/ui/Dialogs.h"

#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QMessageBox>

namespace {
Dialogs*& current() {
  static Dialogs* d = nullptr;
  return d;
}
}  // namespace

Dialogs& dialogs() {
  static QtDialogs qt;
  return current() ? *current() : qt;
}

void setDialogs(Dialogs* d) { current() = d; }

QString qtFilter(const QString& filter) {
  const QStringList parts = filter.split('|');
  QStringList out;
  for (int i = 0; i < parts.size(); i += 2) out << parts[i];
  return out.join(";;");
}

void QtDialogs::message(QWidget* parent, const QString& text, const QString& title, MessageIcon icon) {
  const auto qtIcon = icon == MessageIcon::Stop          ? QMessageBox::Critical
                      : icon == MessageIcon::Exclamation ? QMessageBox::Warning
                                                         : QMessageBox::Information;
  QMessageBox box(qtIcon, title, text, QMessageBox::Ok, parent);
  box.exec();
}

// The program's own dialog options: no read-only box, ask before overwriting, leave the
// process's directory alone.
static QFileDialog::Options fileOptions() { return QFileDialog::Options(); }

QString QtDialogs::saveFileName(QWidget* parent, const QString& directory, const QString& filter) {
  return QFileDialog::getSaveFileName(parent, QString(), directory, qtFilter(filter), nullptr, fileOptions());
}

QString QtDialogs::openFileName(QWidget* parent, const QString& directory, const QString& filter) {
  return QFileDialog::getOpenFileName(parent, QString(), directory, qtFilter(filter), nullptr, fileOptions());
}

std::optional<QColor> QtDialogs::color(QWidget* parent, const QColor& preset) {
  const QColor c = QColorDialog::getColor(preset, parent);
  if (!c.isValid()) return std::nullopt;
  return c;
}

void QtDialogs::beep() { QApplication::beep(); }
