// A free notepad: text typed, saved to and loaded from note files of the user's choice.
#pragma once

#include "shell/ui/Panel.h"

class QTextEdit;

class frmMementoFile : public Panel {
  Q_OBJECT
 public:
  explicit frmMementoFile(QWidget* parent = nullptr);

  void cmdSaveMementoFile_Click();
  void cmdLoadMementoFile_Click();

 private:
  QTextEdit* rtfMementoEdit_ = nullptr;
};
