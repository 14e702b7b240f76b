// A panel's trace: the log string that Save Log writes, built from fixed entry forms.
// Appends are amortised O(1); whoever shows the log receives only the new piece.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace reader {

struct DateTime {
  int year, month, day, hour, minute, second;
};

// The time the trace stamps entries with; tests fix it.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual DateTime now() const = 0;
};

class SystemClock final : public Clock {
 public:
  DateTime now() const override;
};

// The clock every trace uses; a test may install a fixed one.
const Clock& clock();
void setClock(std::shared_ptr<const Clock> c);

class FixedClock final : public Clock {
 public:
  explicit FixedClock(DateTime t) : t_(t) {}
  DateTime now() const override { return t_; }

 private:
  DateTime t_;
};

std::string traceDate(const DateTime& t);  // MM-DD-YYYY
std::string traceTime(const DateTime& t);  // HH:MM:SS

class TraceLog {
 public:
  using Sink = std::function<void(const std::string& appended)>;

  // date time TAB title / TAB TAB TAB ">>> " op ", " request / TAB TAB TAB "<<< " answer
  void titled(const std::string& title, const std::string& opWord, const std::string& request,
              const std::string& answer);
  // A chip command through KQCmd: the request shows as "01 " and the frame.
  void titledChipCommand(const std::string& title, const std::string& frame, const std::string& answer);
  // date time TAB ">>> " op / TAB TAB TAB "<<< " answer
  void untitled(const std::string& opWord, const std::string& answer);
  // The toolbox's own form: date, blank, TAB, no time, and two TABs before the answer.
  void toolbox(const std::string& opWord, const std::string& answer);
  // Any other line a panel writes, as it stands.
  void appendRaw(const std::string& text);

  void clear();
  const std::string& text() const { return text_; }
  bool empty() const { return text_.empty(); }

  // The view: told each appended piece, and told when the log was cleared.
  void setSink(Sink onAppend, std::function<void()> onClear) {
    sink_ = std::move(onAppend);
    onClear_ = std::move(onClear);
  }

 private:
  void append(std::string piece);
  std::string text_;
  Sink sink_;
  std::function<void()> onClear_;
};

inline constexpr const char* kNewLine = "\r\n";

}  // namespace reader
