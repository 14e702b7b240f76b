// Helpers for window tests: finding controls by name, a fixed clock, scripted dialogs,
// and the real simulated board loaded as the program loads it.
#pragma once

#include <QApplication>
#include <QTest>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

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

// --- every command judges its own answer ---------------------------------------------------
//
// The shape of the tests that check that no control carries the outcome of one command
// into the next: a command runs on a good board, something happens (the tag leaves the
// field, the board is unplugged, the board gives an error answer), and the command runs
// again; the test compares what the controls show after each run.

// What the control with this object name shows: the text of a line edit, label, text box
// or button; a check box or option button adds " [x]" when it is checked.
QString shows(QObject* root, const QString& name);
QStringList shows(QObject* root, const QStringList& names);

struct TwoRuns {
  QStringList good;   // after the first run
  QStringList after;  // after `then` and the second run
};
TwoRuns goodThen(QObject* root, const QStringList& names, const std::function<void()>& command,
                 const std::function<void()>& then);
// The same with a different second command.
TwoRuns goodThen(QObject* root, const QStringList& names, const std::function<void()>& first,
                 const std::function<void()>& then, const std::function<void()>& second);

// Forwards every call to the board, except the calls it was told to answer itself: an
// error answer a real board gives and the simulated tags do not.
class AnsweringDriver final : public reader::ReaderDriver {
 public:
  explicit AnsweringDriver(reader::ReaderDriver& board) : board_(board) {}
  // The next `times` calls of `op` whose request begins with `prefix` get this answer.
  void answer(reader::Op op, const std::string& prefix, std::int32_t status, const std::string& text, int times = 1);
  std::int32_t call(reader::Op op, const char* request, char* answer) override;
  std::string description() const override { return board_.description(); }
  bool isSimulated() const override { return board_.isSimulated(); }

 private:
  struct Canned {
    reader::Op op;
    std::string prefix;
    std::int32_t status;
    std::string text;
    int times;
  };
  reader::ReaderDriver& board_;
  std::vector<Canned> canned_;
};

}  // namespace uitest
