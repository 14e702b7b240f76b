// What the window tests of the ISO 14443-A panel share: a product chosen as openProduct
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

#include "iso14443a/ui/frmTL42RQ_ISO14443A_UI.h"
#include "iso15693/ui/MemoryPageView.h"
#include "reader/Drivers.h"
#include "reader/ui/HexFields.h"
#include "shell/GlobVariables.h"
#include "shell/Product.h"
#include "shell/ui/Dialogs.h"
#include "support/UiTestSupport.h"

namespace iso14443atest {

using reader::FakeDriver;
using reader::Op;

using uitest::chooseProduct;

// Echo and Select answer as a live board does, the register writes with `kqAnswer`;
// Send Receive answers from the queue, else "8700" (no tag).
inline void liveBoard(FakeDriver& d, const std::string& kqAnswer = "0000") {
  d.setHandler([kqAnswer](Op op, const std::string&) -> FakeDriver::Reply {
    switch (op) {
      case Op::Echo:
        return {0, "5500"};
      case Op::Select:
        return {0, "0000"};
      case Op::KQCmd:
        return {0, kqAnswer};
      case Op::SendReceive:
        return {0, "8700"};
      default:
        return {0, ""};
    }
  });
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
inline std::string echoEntry(const std::string& answer) {
  return "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< " + answer;
}

// The panel with its controls, opened on a fake board with a fixed clock.
struct Fixture {
  FakeDriver driver;
  ScriptedDialogs dialogs;
  uitest::FixedTime time;
  std::unique_ptr<frmTL42RQ_ISO14443A_UI> panel;

  explicit Fixture(const std::string& reference = "ISO14443-A", bool live = true) {
    glob::state() = glob::GlobVariables();
    chooseProduct(reference);
    if (live) liveBoard(driver);
    reader::setDriver(&driver);
    setDialogs(&dialogs);
  }
  ~Fixture() {
    panel.reset();
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }
  frmTL42RQ_ISO14443A_UI& open(bool forgetOpening = true) {
    panel = std::make_unique<frmTL42RQ_ISO14443A_UI>();
    panel->show();
    if (forgetOpening) {
      driver.clearCalls();
      panel->log().clear();
    }
    return *panel;
  }
  template <typename T = QWidget>
  T* w(const QString& name) {
    return uitest::find<T>(panel.get(), name);
  }
  void click(const QString& name) { QTest::mouseClick(w<QAbstractButton>(name), Qt::LeftButton); }
  void setText(const QString& name, const QString& t) { w<QLineEdit>(name)->setText(t); }
  QString textOf(const QString& name) { return w<QLineEdit>(name)->text(); }
  QString label(const QString& name) { return w<QLabel>(name)->text(); }
  bool checked(const QString& name) { return w<QCheckBox>(name)->isChecked(); }
  std::string log() const { return panel->log().text(); }
  QStringList view() { return rows(w<QListWidget>("lstReadView")); }
  QString cell(int r, int c) { return w<QTableWidget>("fgAnticolProcess")->item(r, c)->text(); }
  QStringList analysis() {
    QStringList out;
    for (int i = 0; i < 6; ++i) out << label(QString("lblAnswerAnalysis_%1").arg(i));
    return out;
  }
  QString respFlags() {
    QString out;
    for (int i = 7; i >= 0; --i) out += checked(QString("chk_respflag_%1").arg(i)) ? '1' : '0';
    return out;
  }
  QString transmissionFlags() {
    QString out;
    for (int i = 7; i >= 0; --i) out += checked(QString("chk_TL42RQ_transmission_flag_%1").arg(i)) ? '1' : '0';
    return out;
  }
};

}  // namespace iso14443atest
