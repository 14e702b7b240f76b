// What the window tests of the ISO 14443-B panel share: a product chosen as openProduct
// chooses it, a fake board that answers the opening, and short ways to the controls.
#pragma once

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>
#include <memory>
#include <string>
#include <vector>

#include "iso14443b/ui/frmTL42RQ_ISO14443B_UI.h"
#include "reader/Drivers.h"
#include "shell/GlobVariables.h"
#include "shell/Product.h"
#include "shell/ui/Dialogs.h"
#include "support/UiTestSupport.h"

namespace iso14443btest {

using reader::FakeDriver;
using reader::Op;

using uitest::chooseProduct;

// Echo, Select and KQCmd answer as a live board does; Send Receive says "no tag".
inline FakeDriver::Reply liveReply(Op op) {
  switch (op) {
    case Op::Echo:
      return {0, "5500"};
    case Op::Select:
    case Op::KQCmd:
      return {0, "0000"};
    case Op::SendReceive:
      return {0, "8700"};
    default:
      return {0, ""};
  }
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

// One titled exchange as the trace writes it at the fixed time.
inline std::string entry(const std::string& title, const std::string& word, const std::string& request,
                         const std::string& answer) {
  return "\r\n11-21-2026 10:20:30\t" + title + "\r\n\t\t\t>>> " + word + ", " + request + "\r\n\t\t\t<<< " + answer;
}
inline std::string sendRecv(const std::string& title, const std::string& request, const std::string& answer) {
  return entry(title, "TL42RQDLL_SENDRECV", request, answer);
}

// The panel opened on a fake board with a fixed clock.
struct Fixture {
  FakeDriver driver;
  ScriptedDialogs dialogs;
  uitest::FixedTime time;
  std::unique_ptr<frmTL42RQ_ISO14443B_UI> panel;

  explicit Fixture(const std::string& reference = "ISO14443-B") {
    glob::state() = glob::GlobVariables();
    chooseProduct(reference);
    driver.setHandler([](Op op, const std::string&) { return liveReply(op); });
    reader::setDriver(&driver);
    setDialogs(&dialogs);
  }
  ~Fixture() {
    panel.reset();
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }
  frmTL42RQ_ISO14443B_UI& open() {
    panel = std::make_unique<frmTL42RQ_ISO14443B_UI>();
    panel->show();
    driver.clearCalls();
    return *panel;
  }
  // Send Receive answers from this list in turn, then "8700".
  void answers(std::vector<std::string> list) {
    auto queue = std::make_shared<std::vector<std::string>>(std::move(list));
    auto next = std::make_shared<std::size_t>(0);
    driver.setHandler([queue, next](Op op, const std::string&) -> FakeDriver::Reply {
      if (op != Op::SendReceive) return liveReply(op);
      if (*next < queue->size()) return {0, (*queue)[(*next)++]};
      return {0, "8700"};
    });
  }
  template <typename T = QWidget>
  T* w(const QString& name) {
    return uitest::find<T>(panel.get(), name);
  }
  void click(const QString& name) { QTest::mouseClick(w<QAbstractButton>(name), Qt::LeftButton); }
  void setText(const QString& name, const QString& t) { w<QLineEdit>(name)->setText(t); }
  QString text(const QString& name) { return w<QLineEdit>(name)->text(); }
  QString caption(const QString& name) { return w<QLabel>(name)->text(); }
  // Leaves a box as the focus does.
  void leave(const QString& name) {
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(w(name), &out);
  }
  std::string log() const { return panel->log().text(); }
  QString cell(int row, int column) {
    QTableWidgetItem* item = w<QTableWidget>("fgISO14443Banticol")->item(row, column);
    return item ? item->text() : QString("<none>");
  }
  QStringList cells() {
    QStringList out;
    for (int k = 1; k <= 15; ++k) out << cell((k - 1) % 3, (k - 1) / 3);
    return out;
  }
};

// The fifteen cells with their bare labels.
inline QStringList bareCells() {
  QStringList out;
  for (int k = 1; k <= 15; ++k) out << QString("%1: ").arg(k);
  return out;
}

}  // namespace iso14443btest
