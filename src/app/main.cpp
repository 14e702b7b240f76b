#include <QApplication>

#include "shell/ui/MainForm.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  return runProgram(app);
}
