#include "toolbox/DemoKitTools.h"

#include <algorithm>

#include "console/ChipFrames.h"
#include "reader/TraceLog.h"

namespace toolbox {

const OperationRow* rowOfButton(const std::string& button) {
  for (const OperationRow& row : kOperationRows)
    if (button == row.button) return &row;
  return nullptr;
}

bool rowVisible(const OperationRow& row, int dllRevision) { return !row.needsRevision5 || dllRevision >= 5; }

McuStatusAction mcuStatusAction(std::int32_t status) {
  // For this button 1 counts like 5: the board has to be reached again.
  if (status == reader::kStatusNoBoard || status == 1) return McuStatusAction::ReconnectAndRepeat;
  if (status == reader::kStatusOk) return McuStatusAction::MarkConnected;
  return McuStatusAction::YieldOnly;
}

reader::Answer callRow(reader::ReaderDriver& d, const OperationRow& row, const RowHooks& hooks) {
  switch (row.rule) {
    case StatusRule::Reconnect:
      return reader::exchange(d, row.op, {}, hooks.reconnect);
    case StatusRule::NoReconnect:
      return reader::callOnce(d, row.op);
    case StatusRule::McuRevision: {
      reader::Answer a = reader::callOnce(d, row.op);
      switch (mcuStatusAction(a.status)) {
        case McuStatusAction::ReconnectAndRepeat:
          if (hooks.reconnect) hooks.reconnect();
          a = reader::callOnce(d, row.op);
          break;
        case McuStatusAction::MarkConnected:
          if (hooks.markConnected) hooks.markConnected();
          break;
        case McuStatusAction::YieldOnly:
          if (hooks.yieldOnce) hooks.yieldOnce();
          break;
      }
      return a;
    }
  }
  return {};
}

std::string answerBoxText(const OperationRow& row, const reader::Answer& a) {
  return row.decode == Decode::StatusNumber ? std::to_string(a.status) : a.text;
}

bool answerDecodable(const OperationRow& row, const reader::Answer& a) {
  switch (row.decode) {
    case Decode::None:
    case Decode::StatusNumber:
      return false;
    case Decode::DllRevision:
      return a.ok();
    case Decode::ChipName:
    case Decode::McuRevision:
    case Decode::PinState:
      return a.good("00");
  }
  return false;
}

std::optional<int> pinStateOption(const std::string& answer) {
  if (answer.size() < 6) return std::nullopt;
  const char c = answer[5];
  if (c < '0' || c > '2') return std::nullopt;
  return c - '0';
}

FreeCommand freeCommand(const std::string& text) {
  FreeCommand f;
  if (text.empty()) {
    f.notSentAnswer = kNoRequestFound;
  } else if (text.size() % 2 != 0) {
    f.notSentAnswer = kRequestFormatProblem;
  } else {
    std::string frame = text;
    frame.erase(std::remove(frame.begin(), frame.end(), ' '), frame.end());
    f.send = true;
    f.request = "01" + frame;
  }
  return f;
}

char entryCode(const std::string& entry) { return entry.size() >= 2 ? entry[1] : ' '; }

std::string modulationGainValue(const std::string& depthEntry, const std::string& gainEntry) {
  return std::string{entryCode(depthEntry), entryCode(gainEntry)};
}

namespace {
template <std::size_t N>
int indexOf(const std::array<const char*, N>& entries, char code) {
  for (std::size_t i = 0; i < N; ++i)
    if (entryCode(entries[i]) == code) return static_cast<int>(i);
  return -1;
}
}  // namespace

int depthIndexOf(char code) { return indexOf(kModulationDepths, code); }
int gainIndexOf(char code) { return indexOf(kReceiverGains, code); }

std::string registerChangeRequest(const std::string& value) {
  return "01" + chip::iso14443AModulationGainFrame(value);
}

std::string registerChangeEntry(const std::string& date, const std::string& value, const std::string& answer) {
  // The toolbox form (date, blank, TAB, no time; two TABs in front of the following
  // lines) with the register line first. The request line shows the mode field with its
  // blank, as the chip console writes chip commands, although the blank is not sent.
  return std::string(reader::kNewLine) + date + " \t>>> " + kRegisterChangedLine + reader::kNewLine + "\t\t>>> " +
         kRegisterChangeLogWord + ", " + "01 " + chip::kModulationGainPrefix + value + reader::kNewLine +
         "\t\t<<< " + answer;
}

}  // namespace toolbox
