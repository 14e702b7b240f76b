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

// One answer override of the field file ("answers"; docs/field-file.md): the board gives
// `answer` and `status` instead of the simulation to `op` calls whose request begins with
// `request` ("" for all), `times` times (-1: every time).
struct Answer {
  std::string op;  // as the library exports it: "TL42RQDll_SendReceive"
  std::string request;
  std::string answer;
  int status = 0;
  int times = -1;
};

// Writes the fixture field `fixtureName` (tests/fixtures) with `answers` as its "answers"
// list to a file of its own in a temporary directory that lives as long as the test
// program, and gives the file's path.
std::string fieldWithAnswers(const std::string& fixtureName, const std::vector<Answer>& answers);
// The same, loaded into the board. Returns TL42RQSim_LoadField's result, 0 when the field
// was taken (else board.lastError() says why).
int loadFieldWithAnswers(SimulatedBoard& board, const std::string& fixtureName, const std::vector<Answer>& answers);

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

}  // namespace uitest
