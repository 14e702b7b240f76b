#include "script/ScriptInterpreter.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "reader/Exchange.h"
#include "reader/Reconnect.h"
#include "shell/GlobVariables.h"

namespace script {

namespace {

// Removes every occurrence of `what`, left to right.
void removeAll(std::string& s, std::string_view what) {
  std::string out;
  out.reserve(s.size());
  std::size_t pos = 0;
  for (std::size_t hit; (hit = s.find(what, pos)) != std::string::npos; pos = hit + what.size())
    out.append(s, pos, hit - pos);
  out.append(s, pos, std::string::npos);
  s.swap(out);
}

// Splits at every separator; an empty text has no piece at all, as the script has always
// split its text.
std::vector<std::string> splitAt(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  if (text.empty()) return pieces;
  std::size_t start = 0;
  for (std::size_t hit; (hit = text.find(separator, start)) != std::string::npos; start = hit + 1)
    pieces.emplace_back(text, start, hit - start);
  pieces.emplace_back(text, start, std::string::npos);
  return pieces;
}

// Characters `length` from position `start`, counted from 1; what there is of them.
std::string mid(const std::string& s, std::size_t start, std::size_t length) {
  if (start == 0 || start > s.size()) return {};
  return s.substr(start - 1, length);
}

bool isUpperHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }
bool isDecimalDigit(char c) { return c >= '0' && c <= '9'; }

// A whole number as the number box may hold it, blanks around allowed.
bool readWholeNumber(const std::string& text, long long& value) {
  const char* begin = text.c_str();
  char* end = nullptr;
  errno = 0;
  const long long v = std::strtoll(begin, &end, 10);
  if (end == begin || errno == ERANGE) return false;
  while (*end == ' ') ++end;
  if (*end != '\0') return false;
  value = v;
  return true;
}

constexpr const char* kAnticolStart = "------ ISO14443-A STARTING ANTICOLISION ALGORITHM ------";
constexpr const char* kAnticolEnd = "------ ISO14443-A END OF ANTICOLISION ALGORITHM ------";

}  // namespace

// ---- the script text ---------------------------------------------------------------

std::string viewTextOfFile(const std::string& fileBytes) {
  std::vector<std::string> pieces = splitAt(fileBytes, '\n');
  if (!pieces.empty() && pieces.back().empty()) pieces.pop_back();
  std::string view;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (i) view += reader::kNewLine;
    view += pieces[i];
  }
  return view;
}

std::string fileTextOfView(const std::string& viewText) {
  std::string out;
  out.reserve(viewText.size());
  for (std::size_t i = 0; i < viewText.size(); ++i) {
    out += viewText[i];
    if (viewText[i] == '\r' && i + 1 < viewText.size() && viewText[i + 1] == '\r') ++i;
  }
  return out;
}

std::vector<std::string> splitLines(const std::string& viewText) { return splitAt(viewText, '\r'); }

// ---- one line ------------------------------------------------------------------------

CleanedLine cleanLine(const std::string& raw) {
  CleanedLine c{raw, false};
  removeAll(c.text, "\r\n");
  removeAll(c.text, "\n");
  removeAll(c.text, "\r");
  removeAll(c.text, "\t");
  // Only "REM" in capitals makes a comment, which keeps its blanks and its case.
  if (c.text.compare(0, 3, "REM") == 0) {
    c.comment = true;
    return c;
  }
  removeAll(c.text, " ");
  for (char& ch : c.text)
    if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 'a' + 'A');
  return c;
}

std::vector<std::string> tokenize(const std::string& cleaned) { return splitAt(cleaned, ','); }

// ---- the loop ------------------------------------------------------------------------

void applyLoopRule(LoopControls& loop) {
  const std::string number = loop.loopNumber();
  if (number == "0") {
    loop.addOneToLoopCount();
    return;
  }
  long long value = 0;
  if (number == "1" || !readWholeNumber(number, value) || value == LLONG_MIN) {
    loop.switchLoopOff();
    loop.setLoopNumber("0");
    return;
  }
  loop.addOneToLoopCount();
  loop.setLoopNumber(std::to_string(value - 1));
}

// ---- the run -------------------------------------------------------------------------

Interpreter::Interpreter(reader::ReaderDriver& driver, reader::TraceLog& log, Yield yield, LoopControls& loop)
    : driver_(driver), log_(log), yield_(std::move(yield)), loop_(loop) {
  if (!yield_) yield_ = [](long long) {};
}

RunOutcome Interpreter::launch(const std::string& viewText) {
  if (viewText.empty()) return RunOutcome::NothingToRun;
  lines_ = splitLines(viewText);
  loop_.showLoopCount(loop_.loopSwitchOn());
  for (;;) {
    for (std::size_t i = 0; i < lines_.size(); ++i)
      if (runLine(i) == Step::Error) return RunOutcome::ScriptError;
    if (loop_.loopFlag()) applyLoopRule(loop_);
    yield_(1);
    if (!loop_.loopFlag()) break;
  }
  return RunOutcome::Finished;
}

Interpreter::Step Interpreter::runLine(std::size_t index) {
  const std::string raw = lines_[index];
  const CleanedLine cleaned = cleanLine(raw);
  if (cleaned.comment) yield_(1);
  // Stored back, so that the next pass of a loop sees the cleaned line.
  lines_[index] = cleaned.text;
  const std::vector<std::string> tokens = tokenize(cleaned.text);
  // Only a bare line end is an empty line of the script; blanks alone log nothing.
  if ((raw == "\n" || raw == "\r\n") && tokens.empty()) log_.appendRaw(reader::kNewLine);
  if (tokens.empty()) return Step::Next;
  const Keyword* k = findKeyword(tokens[0]);
  if (!k) return error(cleaned.text, kErrCommandNotRecognized);
  if (act(*k, tokens, cleaned.text) == Step::Error) return Step::Error;
  yield_(1);
  return Step::Next;
}

std::string Interpreter::stamp() const {
  const reader::DateTime t = reader::clock().now();
  return std::string(reader::kNewLine) + reader::traceDate(t) + " " + reader::traceTime(t);
}

Interpreter::Step Interpreter::error(const std::string& cleaned, const char* message) {
  log_.appendRaw(stamp() + "\t>>> " + cleaned + reader::kNewLine + "\t\t\t" + message);
  return Step::Error;
}

void Interpreter::exchangeEntry(const std::string& what, const std::string& answer) { log_.untitled(what, answer); }

std::string Interpreter::call(const Keyword& k, reader::Op op, const std::string& request) {
  const reader::Answer a = reader::callOnce(driver_, op, request);
  if (a.status == reader::kStatusNoBoard) {
    // The board is looked for again, but the failed call is not repeated: its answer is
    // what the log shows, and the script goes on.
    std::int32_t result = 0;
    switch (k.reconnect) {
      case ScriptReconnect::None:
        break;
      case ScriptReconnect::Script:
        reader::DEMO_TL42RQ_A_reconnect_script(driver_, result);
        break;
      case ScriptReconnect::Script14443A:
        reader::DEMO_TL42RQ_A_reconnect_script_iso14443A(driver_, result);
        break;
      case ScriptReconnect::Script14443B:
        reader::DEMO_TL42RQ_A_reconnect_script_iso14443B(driver_, result);
        break;
    }
  }
  return a.text;
}

Interpreter::Step Interpreter::checkData(const std::vector<std::string>& tokens, const std::string& cleaned) {
  if (tokens.size() != 2 || tokens[1].empty()) return error(cleaned, kErrNoData);
  for (char c : tokens[1])
    if (!isUpperHexDigit(c)) return error(cleaned, kErrNotHexadecimal);
  if (tokens[1].size() % 2 != 0) return error(cleaned, kErrNotCompliant);
  return Step::Next;
}

Interpreter::Step Interpreter::act(const Keyword& k, const std::vector<std::string>& tokens,
                                   const std::string& cleaned) {
  if (k.kind == Kind::Plain && tokens.size() > 1) return error(cleaned, kErrTooMuchData);
  if (k.kind == Kind::Data && checkData(tokens, cleaned) == Step::Error) return Step::Error;
  const std::string argument = tokens.size() > 1 ? tokens[1] : std::string();
  const std::string logWord(k.logWord);

  switch (k.action) {
    case Action::Rem:
      log_.appendRaw(stamp() + "\t" + tokens[0] + (tokens.size() > 1 ? ", " + argument : std::string()));
      return Step::Next;

    case Action::Wait: {
      if (tokens.size() != 2 || argument.empty()) return error(cleaned, kErrNoData);
      for (char c : argument)
        if (!isDecimalDigit(c)) return error(cleaned, kErrNotHexadecimal);
      if (argument.size() > kMaxWaitDigits) return error(cleaned, kErrWaitTooLong);
      log_.appendRaw(stamp() + "\t" + tokens[0] + ", " + argument);
      yield_(std::stoll(argument) + 1);
      return Step::Next;
    }

    case Action::UsbConnect:
    case Action::UsbHandleCheck: {
      const std::int32_t result = driver_.call(k.op, nullptr, nullptr);
      std::string text;
      if (result == 0)
        text = "return 0 value : DEMO-TL42RQ-A always connected to USB port";
      else if (k.action == Action::UsbConnect)
        text = "return " + std::to_string(result) + " value : DEMO-TL42RQ-A reconnection failed" + reader::kNewLine +
               "\t\t\tverify DEMO-TL42RQ-A USB connection";
      else
        text = "return " + std::to_string(result) + " value : DEMO-TL42RQ-A not connected USB port" +
               reader::kNewLine + "\t\t\tuse the 'TL42RQDLL_USBconnect' function to reconnect your DEMO-TL42RQ-A";
      exchangeEntry(logWord, text);
      return Step::Next;
    }

    case Action::Call: {
      const std::string answer = call(k, k.op, argument);
      exchangeEntry(k.kind == Kind::Data ? logWord + ", " + argument : logWord, answer);
      return Step::Next;
    }

    case Action::CallKQCmd: {
      const std::string mode = argument.substr(0, 2);
      if (mode != "01" && mode != "02") return error(cleaned, kErrFirstByte);
      // The whole argument goes to the board; the log shows the mode field apart.
      const std::string answer = call(k, k.op, argument);
      exchangeEntry(logWord + ", " + mode + " " + argument.substr(2), answer);
      return Step::Next;
    }

    case Action::PinState: {
      const std::string answer = call(k, k.op, {});
      exchangeEntry(logWord, answer);
      // Logged like any other, and still the end of the script: the command has never
      // been finished, and a script that relies on it must not run on.
      return error(cleaned, kErrNotImplemented);
    }

    case Action::PdyInitiate: {
      const std::string answer = call(k, k.op, "0600");
      std::string& chipId = glob::state().scriptChipId;
      chipId = mid(answer, 5, 2);
      exchangeEntry(logWord, answer + " (Chip_ID = " + chipId + ")");
      return Step::Next;
    }

    case Action::PdySelect: {
      const std::string chipId = glob::state().scriptChipId;
      const std::string answer = call(k, k.op, "0E" + chipId);
      exchangeEntry(logWord + " (Chip_ID = " + chipId + ")", answer);
      return Step::Next;
    }

    case Action::AnticolSelect123:
      anticolSelect123();
      return Step::Next;
  }
  return Step::Next;
}

// ---- the one-line ISO 14443-A activation -------------------------------------------

bool Interpreter::anticolStep(const char* title, const std::string& frame, std::string& answer) {
  static const Keyword& anticol = *findKeyword("TL42RQ_ISO14443-A_ANTICOLSELECT123");
  answer = call(anticol, reader::Op::SendReceive, frame);
  log_.titled(title, "TL42RQDLL_SENDRECV", frame, answer);
  return answer.compare(0, 2, "80") == 0;
}

void Interpreter::anticolSelect123() {
  const std::string nl = reader::kNewLine;
  log_.appendRaw(nl + stamp() + "\t>>> TL42RQDLL_ANTICOLSELECT123" + nl + nl + "\t" + kAnticolStart + nl);
  auto end = [&] { log_.appendRaw(nl + nl + "\t" + kAnticolEnd + nl + "\t\t\t "); };

  std::string answer;
  std::string uid;
  std::string field;
  // The level's five bytes, and the UID part: without the cascade tag when there is one;
  // otherwise from the second UID byte over the check byte, as the command always cut it.
  auto cut = [&] {
    field = mid(answer, 5, 10);
    uid += mid(answer, 5, 2) == "88" ? mid(answer, 7, 6) : mid(answer, 7, 8);
  };
  auto cascades = [&] { return field.compare(0, 2, "88") == 0; };

  if (!anticolStep("ISO14443-A REQA", "2607", answer)) {
    if (!anticolStep("ISO14443-A REQA", "2607", answer)) {
      end();
      return;
    }
  }
  yield_(1);

  if (!anticolStep("ISO14443-A ANTICOL 1", "932008", answer)) return;
  cut();
  if (!anticolStep("ISO14443-A SELECT 1", "9370" + field + "28", answer)) return;
  yield_(1);

  if (cascades()) {
    yield_(1);
    if (!anticolStep("ISO14443-A ANTICOL 2", "952008", answer)) return;
    cut();
    if (!anticolStep("ISO14443-A SELECT 2", "9570" + field + "28", answer)) return;
    yield_(1);

    if (cascades()) {
      yield_(1);
      // Level 3 as the command has always sent it: the level-1 code, and a select
      // without the UID field.
      if (!anticolStep("ISO14443-A ANTICOL 3", "932008", answer)) return;
      cut();
      if (!anticolStep("ISO14443-A SELECT 3", "937028", answer)) return;
    }
  }

  yield_(1);
  yield_(1);
  log_.appendRaw(nl + nl + "\t\t\t--> UID = " + uid + nl + "\t\t\t--> TAG selected");
  end();
}

}  // namespace script
