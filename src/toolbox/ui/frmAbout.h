// The About box: the program's title and version, and the platform's system
// information tool.
#pragma once

#include <functional>
#include <string>

#include "shell/ui/Panel.h"

class QLabel;

class frmAbout : public Panel {
  Q_OBJECT
 public:
  explicit frmAbout(QWidget* parent = nullptr);

  void cmdOK_Click();
  void cmdSysInfo_Click();
  // Finds and starts the system information tool, or says that there is none.
  void StartSysInfo();

  // Where the tool is looked for and how it is started; empty functions restore the
  // program's own (the search path, a detached process). Tests put their own here.
  using ToolFinder = std::function<std::string()>;
  using ToolStarter = std::function<bool(const std::string& program)>;
  static void setSysInfoServices(ToolFinder finder, ToolStarter starter);
};

// The application's title as the About box and the program's own messages name it.
inline constexpr const char* kApplicationTitle = "TL42RQ_Development_Software";
