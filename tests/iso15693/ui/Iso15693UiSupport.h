// What the window tests of the ISO 15693 panel share: a product chosen as openProduct
// chooses it, a fake board that answers the opening, and short ways to the controls.
#pragma once

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QtTest>
#include <memory>
#include <string>
#include <vector>

#include "common/crc.h"
#include "iso15693/ui/MemoryPageView.h"
#include "iso15693/ui/frmTL42RQ_ISO15693_UI.h"
#include "reader/Drivers.h"
#include "reader/ui/HexFields.h"
#include "shell/GlobVariables.h"
#include "shell/Product.h"
#include "shell/ui/Dialogs.h"
#include "support/UiTestSupport.h"

namespace iso15693test {

using reader::FakeDriver;
using reader::Op;

using uitest::chooseProduct;

// Echo and Select answer as a live board does; Send Receive answers from the queue,
// else "8700" (no tag).
inline void liveBoard(FakeDriver& d) {
  d.setHandler([](Op op, const std::string&) -> FakeDriver::Reply {
    switch (op) {
      case Op::Echo:
        return {0, "5500"};
      case Op::Select:
        return {0, "0000"};
      case Op::SendReceive:
        return {0, "8700"};
      default:
        return {0, ""};
    }
  });
}

// A tag answer as the chip reports it: "80", length, response, CRC, tail.
inline std::string tagAnswer(const std::string& response, const std::string& tail = "00") {
  const std::string crc = crc16Text(response);
  char ll[3];
  std::snprintf(ll, sizeof ll, "%02X", static_cast<unsigned>(response.size() / 2 + 3));
  return "80" + std::string(ll) + response + crc + tail;
}

inline std::vector<std::string> sent(const FakeDriver& d, Op op = Op::SendReceive) {
  std::vector<std::string> out;
  for (const auto& c : d.callsOf(op)) out.push_back(c.request);
  return out;
}

inline QStringList rows(QListWidget* l) {
  QStringList out;
  for (int i = 0; i < l->count(); ++i) out << l->item(i)->text();
  return out;
}

// The panel with its controls, opened on a fake board with a fixed clock.
struct Fixture {
  FakeDriver driver;
  ScriptedDialogs dialogs;
  uitest::FixedTime time;
  int applicationEnds = 0;
  std::unique_ptr<frmTL42RQ_ISO15693_UI> panel;

  explicit Fixture(const std::string& reference = "VAX30", bool live = true) {
    glob::state() = glob::GlobVariables();
    glob::state().mcuRevision = "1.4.1";
    chooseProduct(reference);
    if (live) liveBoard(driver);
    reader::setDriver(&driver);
    setDialogs(&dialogs);
    frmTL42RQ_ISO15693_UI::setApplicationEnd([this] { ++applicationEnds; });
  }
  ~Fixture() {
    panel.reset();
    frmTL42RQ_ISO15693_UI::setApplicationEnd(nullptr);
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }
  frmTL42RQ_ISO15693_UI& open() {
    panel = std::make_unique<frmTL42RQ_ISO15693_UI>();
    panel->show();
    driver.clearCalls();
    return *panel;
  }
  template <typename T = QWidget>
  T* w(const QString& name) {
    return uitest::find<T>(panel.get(), name);
  }
  void click(const QString& name) { QTest::mouseClick(w<QAbstractButton>(name), Qt::LeftButton); }
  void setText(const QString& name, const QString& t) { w<QLineEdit>(name)->setText(t); }
  // Leaves a box as the focus does.
  void leave(const QString& name) {
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(w(name), &out);
  }
  void chooseUid(const QString& uid) {
    setText("txtTransponderUID", uid);
    leave("txtTransponderUID");
  }
  void range(const QString& from, const QString& to) {
    w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    setText("txtUserAddress_0", from);
    setText("txtUserAddress_1", to);
  }
  std::string log() const { return panel->log().text(); }
  QStringList view() { return rows(w<QListWidget>("lstReadView")); }
};

// One titled exchange as the trace writes it at the fixed time.
inline std::string entry(const std::string& title, const std::string& word, const std::string& request,
                         const std::string& answer) {
  return "\r\n11-21-2026 10:20:30\t" + title + "\r\n\t\t\t>>> " + word + ", " + request + "\r\n\t\t\t<<< " + answer;
}
inline std::string sendRecv(const std::string& title, const std::string& request, const std::string& answer) {
  return entry(title, "TL42RQDLL_SENDRECV", request, answer);
}

}  // namespace iso15693test
