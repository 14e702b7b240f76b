// The script interpreter: line cleaning, the keyword checks, the driver calls with their
// trace entries, WAIT, the loop rule and the one-line ISO 14443-A activation. It knows no
// widget: the script panel and the command-line runner hand it a driver, a trace log, a
// way to yield to the event loop and the loop controls, and share every line of it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "reader/ReaderDriver.h"
#include "reader/TraceLog.h"
#include "script/ScriptKeywords.h"

namespace script {

// The error messages; each ends the run.
inline constexpr const char* kErrCommandNotRecognized = "!!! Script Error : Command not recognized !!! ";
inline constexpr const char* kErrTooMuchData = "!!! Script Error : Too much Data parameters !!! ";
inline constexpr const char* kErrNotHexadecimal = "!!! Script Error : Data not in Hexadecimal format !!! ";
inline constexpr const char* kErrNotCompliant = "!!! Script Error : Data not compliant with dll command !!! ";
inline constexpr const char* kErrNoData = "!!! Script Error : No Data found for this dll command !!! ";
inline constexpr const char* kErrFirstByte = "!!! Script Error : 1st byte needed to be equal to '01' or '02' !!! ";
inline constexpr const char* kErrWaitTooLong =
    "!!! Script Error : Wait value is more than maximun accepted : 9999999 !!! ";
inline constexpr const char* kErrNotImplemented = "!!! Script Error : Command not yet implemented !!! ";

// The longest WAIT argument, in digits.
inline constexpr std::size_t kMaxWaitDigits = 7;

// ---- the script text ---------------------------------------------------------------

// The file's bytes as Load Script puts them into the script view: split at line feeds,
// an empty last piece dropped, the pieces joined with CR LF. A file with CR LF line ends
// thus shows CR CR LF.
std::string viewTextOfFile(const std::string& fileBytes);
// The view's text as Save Script writes it: every pair of carriage returns becomes one,
// left to right, as a plain text replacement does.
std::string fileTextOfView(const std::string& viewText);
// The line array of Launch Script: the text split at carriage returns.
std::vector<std::string> splitLines(const std::string& viewText);

// ---- one line ------------------------------------------------------------------------

// A line after cleaning: line ends and tabs gone; unless it is a comment (it begins with
// "REM" in capitals) also every blank gone and the line upper-cased.
struct CleanedLine {
  std::string text;
  bool comment = false;  // it began with "REM"
};
CleanedLine cleanLine(const std::string& raw);
// The tokens between commas; none at all for an empty line.
std::vector<std::string> tokenize(const std::string& cleaned);

// ---- the loop ------------------------------------------------------------------------

// The loop switch, the number of passes and the counter, wherever they are shown.
class LoopControls {
 public:
  virtual ~LoopControls() = default;
  // The loop flag, read at the end of each pass.
  virtual bool loopFlag() const = 0;
  // Whether the loop switch is on when the run starts.
  virtual bool loopSwitchOn() const = 0;
  virtual std::string loopNumber() const = 0;
  virtual void setLoopNumber(const std::string& text) = 0;
  // Switches the loop off (which clears the flag) and hides the number and its hint.
  virtual void switchLoopOff() = 0;
  // Shows the counter with "0", or hides it.
  virtual void showLoopCount(bool visible) = 0;
  virtual void addOneToLoopCount() = 0;
};

// The controls without a window: the command-line runner's and the tests'.
class PlainLoopControls final : public LoopControls {
 public:
  bool flag = false;
  std::string number = "1";
  bool countVisible = false;
  long long count = 0;
  bool numberVisible = false;

  // The switch turned on with this number of passes, as a person would set it up.
  void switchOn(const std::string& passes) {
    flag = true;
    numberVisible = true;
    number = passes;
  }
  bool loopFlag() const override { return flag; }
  bool loopSwitchOn() const override { return flag; }
  std::string loopNumber() const override { return number; }
  void setLoopNumber(const std::string& text) override { number = text; }
  void switchLoopOff() override {
    flag = false;
    numberVisible = false;
  }
  void showLoopCount(bool visible) override {
    countVisible = visible;
    if (visible) count = 0;
  }
  void addOneToLoopCount() override { ++count; }
};

// The loop rule after a pass, on the text of the number box: "0" counts on without end,
// "1" switches the loop off and leaves "0" in the box without counting, any other number
// counts and writes itself less one back. A text that is no whole number cannot count
// down, so it ends the loop as "1" does.
void applyLoopRule(LoopControls& loop);

// ---- the run -------------------------------------------------------------------------

enum class RunOutcome {
  NothingToRun,  // the script view was empty
  Finished,      // the last line of the last pass ran
  ScriptError,   // an error entry ended the run
};

class Interpreter {
 public:
  // Turns of the event loop to give away; WAIT hands over its whole count at once.
  using Yield = std::function<void(long long turns)>;

  Interpreter(reader::ReaderDriver& driver, reader::TraceLog& log, Yield yield, LoopControls& loop);

  // Launch Script from its third step on: the passes over the line array, the loop rule
  // between them, until the end or the first error.
  RunOutcome launch(const std::string& viewText);

  // The line array of the run. Each pass reads it line by line and stores each cleaned
  // line back, so that a later pass sees it cleaned.
  const std::vector<std::string>& lines() const { return lines_; }
  std::vector<std::string>& lineArray() { return lines_; }

 private:
  enum class Step { Next, Error };
  Step runLine(std::size_t index);
  Step act(const Keyword& k, const std::vector<std::string>& tokens, const std::string& cleaned);
  Step error(const std::string& cleaned, const char* message);
  Step checkData(const std::vector<std::string>& tokens, const std::string& cleaned);
  // A driver call with the keyword's reconnect on status 5 and no repeat.
  std::string call(const Keyword& k, reader::Op op, const std::string& request);
  void exchangeEntry(const std::string& what, const std::string& answer);
  std::string stamp() const;
  void anticolSelect123();
  bool anticolStep(const char* title, const std::string& frame, std::string& answer);

  reader::ReaderDriver& driver_;
  reader::TraceLog& log_;
  Yield yield_;
  LoopControls& loop_;
  std::vector<std::string> lines_;
};

}  // namespace script
