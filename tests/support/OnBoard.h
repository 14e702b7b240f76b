// A window opened on the real simulated board: what most window tests on the board start
// from, written once.
#pragma once

#include <QAbstractButton>
#include <QTest>
#include <functional>
#include <memory>
#include <string>

#include "shell/GlobVariables.h"
#include "shell/ui/Dialogs.h"
#include "support/UiTestSupport.h"

namespace uitest {

// The board with a field loaded (a fixture's path or the JSON text itself) and reset, the
// program's global state fresh, the dialogs scripted, and then the window opened and shown.
// `beforeOpening` runs just before the window is made (a product to choose, a revision).
template <class Window>
struct OnBoard {
  SimulatedBoard board;
  ScriptedDialogs dialogs;
  std::unique_ptr<Window> panel;

  explicit OnBoard(const std::string& field, const std::function<void()>& beforeOpening = {}) {
    if (!board.loaded()) qFatal("simulated board not loaded");
    if (board.loadField(field) != 0) qFatal("%s", board.lastError().c_str());
    board.reset();
    glob::state() = glob::GlobVariables();
    setDialogs(&dialogs);
    if (beforeOpening) beforeOpening();
    panel = std::make_unique<Window>();
    panel->show();
  }
  ~OnBoard() {
    panel.reset();
    setDialogs(nullptr);
  }
  OnBoard(const OnBoard&) = delete;
  OnBoard& operator=(const OnBoard&) = delete;

  template <typename T = QWidget>
  T* w(const QString& name) {
    return find<T>(panel.get(), name);
  }
  void click(const QString& name) { QTest::mouseClick(w<QAbstractButton>(name), Qt::LeftButton); }

  // Every tag leaves the field: the board stays, the field is empty.
  void tagsGone() {
    if (board.loadField(R"({"board": {"present": true}, "tags": []})") != 0) qFatal("%s", board.lastError().c_str());
  }
  // The board is unplugged: every operation answers status 5 from now on.
  void boardLost() { board.setBoardPresent(false); }
};

}  // namespace uitest
