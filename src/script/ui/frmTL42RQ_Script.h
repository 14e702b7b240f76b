// The script tool: loads a script file into an editable view, runs it once, a number of
// times or without end, and keeps the trace of what it sent. The interpreter itself is
// the pure one that tl42rq-script runs too; this window only wires controls to it.
#pragma once

#include <string>

#include "shell/ui/Panel.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

class frmTL42RQ_Script : public Panel {
  Q_OBJECT
 public:
  explicit frmTL42RQ_Script(QWidget* parent = nullptr);

  void cmdScriptLoad_Click();
  void cmdScriptSave_Click();
  void cmdLaunchScript_Click();
  void chkLoopOnScript_Click(bool on);

  // The script view's text as the interpreter and Save Script see it (CR LF line ends,
  // CR CR LF for a file that had CR LF), whatever the view shows.
  std::string scriptText();
  // Puts a text into the script view, as loading does.
  void setScriptText(const std::string& text);

  // The file dialog's settings, given at load.
  struct FileDialogSettings {
    std::string initDir;
    unsigned flags = 0;
  };
  const FileDialogSettings& fileDialog() const { return dlgFileDialog; }

 protected:
  void clearFlagsOnClose() override;

 private:
  void showScript();

  QPlainTextEdit* rtfScriptLoadFileEdit = nullptr;
  QPlainTextEdit* rtfScriptLogEdit = nullptr;
  QPushButton* cmdScriptLoad = nullptr;
  QPushButton* cmdScriptSave = nullptr;
  QPushButton* cmdLaunchScript = nullptr;
  QCheckBox* chkLoopOnScript = nullptr;
  QLineEdit* txtLOOPnumber = nullptr;
  QLabel* lblLOOPnumber = nullptr;
  QLabel* lblLoopCount = nullptr;
  FileDialogSettings dlgFileDialog;

  // The script's text is kept as bytes: the view cannot hold a carriage return of its
  // own, and Save Script must give back what Load Script read.
  std::string script_;
  bool viewEdited_ = false;
  bool showing_ = false;

  friend class ScriptLoopControls;
};
