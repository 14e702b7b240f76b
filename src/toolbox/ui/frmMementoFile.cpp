#include "toolbox/ui/frmMementoFile.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/Panel.h"

namespace {
constexpr const char* kNoteFilter = "txt File (*.txt)|*.txt";

// Keeps the directory of a chosen file as the last-used one, and the usage file with it.
}  // namespace

frmMementoFile::frmMementoFile(QWidget* parent) : Panel(glob::PanelId::MementoFile, "frmMementoFile", parent) {
  setWindowTitle("   Memento");
  auto* layout = new QVBoxLayout(this);
  rtfMementoEdit_ = new QTextEdit(this);
  rtfMementoEdit_->setObjectName("rtfMementoEdit");
  // Notes are plain text files: what is pasted in keeps its words, not its formatting.
  rtfMementoEdit_->setAcceptRichText(false);
  rtfMementoEdit_->setReadOnly(false);
  rtfMementoEdit_->setVisible(true);
  rtfMementoEdit_->setMinimumSize(480, 320);
  layout->addWidget(rtfMementoEdit_, 1);
  auto* buttons = new QHBoxLayout;
  auto* save = button("cmdSaveMementoFile", "Save Memento File");
  auto* load = button("cmdLoadMementoFile", "Load Memento File");
  buttons->addWidget(save);
  buttons->addWidget(load);
  buttons->addStretch(1);
  layout->addLayout(buttons);
  connect(save, &QPushButton::clicked, this, &frmMementoFile::cmdSaveMementoFile_Click);
  connect(load, &QPushButton::clicked, this, &frmMementoFile::cmdLoadMementoFile_Click);
}

void frmMementoFile::cmdSaveMementoFile_Click() {
  // An empty view opens no dialog (saveTextAs leaves empty text alone).
  saveTextAs(this, rtfMementoEdit_->toPlainText().toStdString());
}

void frmMementoFile::cmdLoadMementoFile_Click() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const QString name =
      dialogs().openFileName(this, QString::fromStdString(glob::state().lastDirectory), kNoteFilter).trimmed();
  if (!name.isEmpty()) {
    keepDirectoryOf(name);
    QFile f(name);
    // A file that cannot be read leaves the notes as they are, without a message.
    if (f.open(QIODevice::ReadOnly)) {
      QString text = QString::fromUtf8(f.readAll());
      text.replace("\r\n", "\n");
      rtfMementoEdit_->setPlainText(text);
    }
  }
  QApplication::restoreOverrideCursor();
}
