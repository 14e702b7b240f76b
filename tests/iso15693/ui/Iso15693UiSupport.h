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
#include <functional>
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
#include "support/OnBoard.h"
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

// The panel opened on the real simulated board with a field given as JSON text, with
// short ways to take the tags out of the field and to unplug the board.
struct BoardFixture : uitest::OnBoard<frmTL42RQ_ISO15693_UI> {
  std::string field;

  // `fieldJson` is the field's text or a file's path; `beforeOpening` may change the
  // chosen product before the panel opens on it.
  BoardFixture(const std::string& reference, const std::string& fieldJson,
               const std::function<void()>& beforeOpening = {})
      : OnBoard(fieldJson,
                [&] {
                  glob::state().mcuRevision = "1.4.1";
                  chooseProduct(reference);
                  if (beforeOpening) beforeOpening();
                }),
        field(fieldJson) {}

  // Every tag of the field leaves it: the same field with each tag marked out of it.
  void takeTagsOut() {
    const std::string type = "\"type\"", out_of_field = "\"inField\": false, ";
    std::string out = field;
    for (std::size_t at = 0; (at = out.find(type, at)) != std::string::npos; at += out_of_field.size() + type.size())
      out.insert(at, out_of_field);
    if (board.loadField(out) != 0) qFatal("%s", board.lastError().c_str());
  }
  void check(const QString& name, bool on) { w<QAbstractButton>(name)->setChecked(on); }
  void range(const QString& from, const QString& to) {
    w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    w<QLineEdit>("txtUserAddress_0")->setText(from);
    w<QLineEdit>("txtUserAddress_1")->setText(to);
  }
  // Opens the grid with `opener`, types the bytes and writes.
  void gridWrite(const QString& opener, const std::string& bytes) {
    click(opener);
    w<MaskedEdit>("PWData_0")->setMaskedText(bytes);
    click("cmdWriteUser");
  }
  // Chooses the UID through the box and a click on the label "Tag :".
  void chooseUid(const QString& uid) {
    w<QLineEdit>("txtTransponderUID")->setText(uid);
    QTest::mouseClick(w("lblChoosenTag"), Qt::LeftButton);
  }
  // Clicks a row of the list of found tags, as a person chooses a UID.
  void chooseListRow(int row) {
    auto* list = w<QListWidget>("lstTransponderUID");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
  }
  bool shown(const QString& name) { return !w(name)->isHidden(); }
  QString request() { return w<QLineEdit>("txt_ISO15693_request")->text(); }
  QString answer() { return w<QLineEdit>("txt_ISO15693_answer")->text(); }
  QString result() { return w<QLabel>("lblWriteTime")->text(); }
  QStringList view() { return rows(w<QListWidget>("lstReadView")); }
  QStringList transponders() { return rows(w<QListWidget>("lstTransponderUID")); }
  QStringList systemInfo() { return rows(w<QListWidget>("lstSystemInfo")); }
  std::string log() const { return panel->log().text(); }
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
