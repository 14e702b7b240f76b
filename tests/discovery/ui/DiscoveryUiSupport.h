// What the window tests of the two discovery tools share: a fake board whose tags answer
// from a table, the trace entries at the fixed time, and short ways to the controls.
#pragma once

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "common/crc.h"
#include "reader/Drivers.h"
#include "shell/GlobVariables.h"
#include "support/OnBoard.h"
#include "support/UiTestSupport.h"

namespace discoverytest {

using reader::FakeDriver;
using reader::Op;

inline constexpr const char* kStamp = "\r\n11-21-2026 10:20:30\t";

inline std::string titled(const std::string& title, const std::string& word, const std::string& request,
                          const std::string& answer) {
  return kStamp + title + "\r\n\t\t\t>>> " + word + ", " + request + "\r\n\t\t\t<<< " + answer;
}
inline std::string sendRecv(const std::string& title, const std::string& frame, const std::string& answer) {
  return titled(title, "TL42RQDLL_SENDRECV", frame, answer);
}
inline std::string select(const std::string& title, const std::string& parameters, const std::string& answer) {
  return titled(title, "TL42RQDLL_SELECT", parameters, answer);
}
inline std::string chipCommand(const std::string& title, const std::string& frame, const std::string& answer) {
  return titled(title, "TL42RQDLL_KQCMD", "01 " + frame, answer);
}
inline std::string echo(const std::string& answer) { return kStamp + std::string(">>> TL42RQDLL_ECHO\r\n\t\t\t<<< ") + answer; }
// The tag-detection tool's own KQCmd entries: the request with its blank behind the word.
inline std::string kq(const std::string& request, const std::string& answer) {
  return kStamp + std::string(">>> TL42RQDll_KQCmd, ") + request + "\r\n\t\t\t<<< " + answer;
}
inline std::string stepLine(const std::string& words) {
  return "\r\n\r\n11-21-2026 10:20:30\t>>> " + words;
}

inline std::string byteText(std::size_t n) {
  char t[3];
  std::snprintf(t, sizeof t, "%02X", static_cast<unsigned>(n));
  return t;
}
// A Send Receive answer with the tag's frame, its right CRC and the chip's result byte.
inline std::string tagAnswer(const std::string& frame, const std::string& tail = "00") {
  return "80" + byteText(frame.size() / 2 + 3) + frame + crc16Text(frame) + tail;
}

// The configuration entries of each probe, as the cycles trace them.
inline std::string iso15693Configuration() {
  return select("TL42RQ CONFIGURATION : ISO15693 High Datarate One Subcarrier", "010D", "0000");
}
inline std::string iso14443AConfiguration() {
  return select("TL42RQ CONFIGURATION : ISO14443-A protocol", "02000180", "0000") +
         chipCommand("TL42RQ CONFIGURATION : ", "09043A005804", "0000") +
         chipCommand("TL42RQ INCREASE DEMO GAIN : ", "0904680101D1", "0000") +
         chipCommand("TL42RQ INCREASE DEC TOLERANCE : ", "09110B00241204880F1F3F3F01000505005500", "0000");
}
inline std::string iso14443BConfiguration() {
  return select("TL42RQ CONFIGURATION : ISO14443-B protocol", "03010180", "0000") +
         chipCommand("TL42RQ CONFIGURATION : DEMO GAIN", "090468010130", "0000");
}
inline std::string felicaConfiguration() {
  return select("TL42RQ CONFIGURATION : FELICA mode", "0451", "0000") +
         chipCommand("TL42RQ CONFIGURATION : IndexMod & Gain", "090468010150", "0000") +
         chipCommand("TL42RQ CONFIGURATION : Auto FDet", "09040A0102A1", "0000");
}
inline std::string rfOff() { return select("TL42RQ RF OFF", "0000", "0000"); }

// One ISO 15693 tag's inventory answer, UID E0022A0012345678.
inline const std::string kInventoryAnswer = tagAnswer("0000" "78563412002A02E0");
inline const std::string kReqbAnswer = tagAnswer("50A1B2C3D400000000008171");
inline const std::string kReqcAnswer = tagAnswer("1201" "012E4CD2A3B4C5D6" "0120220427674EFF");

// A fake board: the echo answers 5500, Select and KQCmd 0000, Send Receive from the table
// (else 8700, no tag); `idle` answers the KQCmd requests that begin "01070E" and
// "010803".
struct FakeBoard {
  FakeDriver driver;
  std::map<std::string, std::string> frames;
  std::function<std::string(const std::string&)> idle = [](const std::string&) { return std::string("000101"); };
  std::function<void(Op, const std::string&)> onCall;

  FakeBoard() {
    driver.setHandler([this](Op op, const std::string& request) -> FakeDriver::Reply {
      if (onCall) onCall(op, request);
      switch (op) {
        case Op::Echo: return {0, "5500"};
        case Op::Select: return {0, "0000"};
        case Op::KQCmd:
          if (request.rfind("01070E", 0) == 0 || request.rfind("010803", 0) == 0) return {0, idle(request)};
          return {0, "0000"};
        case Op::SendReceive: {
          const auto it = frames.find(request);
          return {0, it == frames.end() ? "8700" : it->second};
        }
        default: return {0, ""};
      }
    });
  }
  std::vector<std::string> sent(Op op = Op::SendReceive) const {
    std::vector<std::string> out;
    for (const auto& c : driver.callsOf(op)) out.push_back(c.request);
    return out;
  }
  int count(Op op, const std::string& request) const {
    int n = 0;
    for (const auto& c : driver.callsOf(op)) n += c.request == request ? 1 : 0;
    return n;
  }
};

// A click as the person makes it: the button toggles (check boxes) and tells its handler.
// The discovery fixtures' board and antenna with no tag in the field.
inline constexpr const char* kNoTagField =
    R"({"board": {"chipName": "NFC TL42RQ"}, "antenna": {"detectLevel": 31}, "tags": []})";

// A discovery tool on the simulated board with `field`, the chip's name published as the
// detection at start-up publishes it.
template <class Tool>
std::unique_ptr<uitest::OnBoard<Tool>> toolOnBoard(const std::string& field) {
  return std::make_unique<uitest::OnBoard<Tool>>(field, [] { glob::state().chipIdentification = "NFC TL42RQ"; });
}

inline void click(QObject* root, const QString& name) { uitest::find<QAbstractButton>(root, name)->click(); }
inline QString text(QObject* root, const QString& name) {
  if (auto* l = root->findChild<QLabel*>(name)) return l->text();
  return uitest::find<QLineEdit>(root, name)->text();
}
inline QColor labelColour(QObject* root, const QString& name) {
  return uitest::find<QLabel>(root, name)->palette().color(QPalette::WindowText);
}

}  // namespace discoverytest
