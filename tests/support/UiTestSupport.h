// Helpers for window tests: finding controls by name, a fixed clock, scripted dialogs,
// and the real simulated board loaded as the program loads it.
#pragma once

#include <QApplication>
#include <QTest>
#include <QWidget>
#include <memory>
#include <string>

#include "reader/Drivers.h"
#include "shell/ui/Dialogs.h"

namespace uitest {

// The control with this object name under `root`; fails the test when absent.
template <typename T = QWidget>
T* find(QObject* root, const QString& name) {
  T* w = root->findChild<T*>(name);
  if (!w) qFatal("control %s not found", qPrintable(name));
  return w;
}

// Loads the simulated board from the build tree as the program would, installs it as
// the program's driver, and gives access to its control interface.
class SimulatedBoard {
 public:
  SimulatedBoard();
  ~SimulatedBoard();
  bool loaded() const { return loaded_; }
  int loadField(const std::string& jsonTextOrPath);
  int setBoardPresent(bool present);
  int reset();
  std::string dumpField();
  std::string lastError();
  reader::ReaderDriver& driver() { return *driver_; }

 private:
  std::unique_ptr<reader::ReaderDriver> driver_;
  bool loaded_ = false;
};

// Fixes the trace clock at 11-21-2026 10:20:30 for the life of the object.
class FixedTime {
 public:
  FixedTime();
  ~FixedTime();
};

std::string fixture(const std::string& name);

// The product as openProduct leaves it: the record of the shipped product file, the
// derived sizes, an empty memory buffer.
void chooseProduct(const std::string& reference);

}  // namespace uitest
