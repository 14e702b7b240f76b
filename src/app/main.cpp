#include <QApplication>
#include <cstdio>
#include <string>
#include <vector>

#include "shell/ProgramInfo.h"
#include "shell/ui/MainForm.h"

int main(int argc, char** argv) {
  // --version and --help answer before any window exists.
  if (const auto info = shell::programInfoRequest(std::vector<std::string>(argv + 1, argv + argc))) {
    std::fputs(info->c_str(), stdout);
    return 0;
  }
  QApplication app(argc, argv);
  return runProgram(app);
}
