#include "shell/ui/Dialogs.h"

#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>

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

// Every dialog lives on the heap and is watched: a dialog is a child of its parent window,
// and a window closed while the dialog waits deletes its children. A dialog on the stack
// would then be freed twice; a watched one is simply gone, and counts as cancelled.
template <typename D>
struct OwnedDialog {
  QPointer<D> dialog;
  explicit OwnedDialog(D* d) : dialog(d) {}
  ~OwnedDialog() { delete dialog.data(); }
  OwnedDialog(const OwnedDialog&) = delete;
  OwnedDialog& operator=(const OwnedDialog&) = delete;
  // Runs the dialog; true when it was accepted and still exists.
  bool accepted() { return dialog->exec() == QDialog::Accepted && dialog; }
};

void QtDialogs::message(QWidget* parent, const QString& text, const QString& title, MessageIcon icon) {
  const auto qtIcon = icon == MessageIcon::Stop          ? QMessageBox::Critical
                      : icon == MessageIcon::Exclamation ? QMessageBox::Warning
                                                         : QMessageBox::Information;
  OwnedDialog box(new QMessageBox(qtIcon, title, text, QMessageBox::Ok, parent));
  box.accepted();
}

// One file dialog shape for loading and saving, with the program's options: no
// read-only box, ask before overwriting, the file must exist to be opened.
static QString runFileDialog(QWidget* parent, const QString& directory, const QString& filter, bool save) {
  OwnedDialog dlgFileDialog(new QFileDialog(parent, QString(), directory, qtFilter(filter)));
  QFileDialog* d = dlgFileDialog.dialog;
  d->setObjectName("dlgFileDialog");
  d->setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  d->setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  d->setOption(QFileDialog::ReadOnly, false);
  if (!dlgFileDialog.accepted() || dlgFileDialog.dialog->selectedFiles().isEmpty()) return {};
  return dlgFileDialog.dialog->selectedFiles().first();
}

QString QtDialogs::saveFileName(QWidget* parent, const QString& directory, const QString& filter) {
  return runFileDialog(parent, directory, filter, true);
}

QString QtDialogs::openFileName(QWidget* parent, const QString& directory, const QString& filter) {
  return runFileDialog(parent, directory, filter, false);
}

std::optional<QColor> QtDialogs::color(QWidget* parent, const QColor& preset) {
  OwnedDialog ColorDialog(new QColorDialog(preset, parent));
  ColorDialog.dialog->setObjectName("ColorDialog");
  if (!ColorDialog.accepted() || !ColorDialog.dialog->selectedColor().isValid()) return std::nullopt;
  return ColorDialog.dialog->selectedColor();
}

void QtDialogs::beep() { QApplication::beep(); }
