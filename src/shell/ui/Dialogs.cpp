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
  for (int i = 0; i < parts.size(); i += 2)
    if (!parts[i].isEmpty()) out << parts[i];  // a trailing "|" names no filter
  return out.join(";;");
}

void QtDialogs::message(QWidget* parent, const QString& text, const QString& title, MessageIcon icon) {
  const auto qtIcon = icon == MessageIcon::Stop          ? QMessageBox::Critical
                      : icon == MessageIcon::Exclamation ? QMessageBox::Warning
                                                         : QMessageBox::Information;
  QMessageBox box(qtIcon, title, text, QMessageBox::Ok, parent);
  box.exec();
}

// One file dialog shape for loading and saving, with the program's options: no
// read-only box, ask before overwriting, the file must exist to be opened.
static QString runFileDialog(QWidget* parent, const QString& directory, const QString& filter, bool save) {
  QFileDialog dlgFileDialog(parent, QString(), directory, qtFilter(filter));
  dlgFileDialog.setObjectName("dlgFileDialog");
  dlgFileDialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dlgFileDialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  dlgFileDialog.setOption(QFileDialog::ReadOnly, false);
  if (dlgFileDialog.exec() != QDialog::Accepted || dlgFileDialog.selectedFiles().isEmpty()) return {};
  return dlgFileDialog.selectedFiles().first();
}

QString QtDialogs::saveFileName(QWidget* parent, const QString& directory, const QString& filter) {
  return runFileDialog(parent, directory, filter, true);
}

QString QtDialogs::openFileName(QWidget* parent, const QString& directory, const QString& filter) {
  return runFileDialog(parent, directory, filter, false);
}

std::optional<QColor> QtDialogs::color(QWidget* parent, const QColor& preset) {
  QColorDialog ColorDialog(preset, parent);
  ColorDialog.setObjectName("ColorDialog");
  if (ColorDialog.exec() != QDialog::Accepted || !ColorDialog.selectedColor().isValid()) return std::nullopt;
  return ColorDialog.selectedColor();
}

void QtDialogs::beep() { QApplication::beep(); }
