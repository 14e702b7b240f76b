// The script language's help: every keyword with its syntax, drawn from the keyword
// table the interpreter uses, and a short example.
#pragma once

#include "shell/ui/Panel.h"

class frmScriptHelp : public Panel {
  Q_OBJECT
 public:
  explicit frmScriptHelp(QWidget* parent = nullptr);
};
