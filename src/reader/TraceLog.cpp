#include "reader/TraceLog.h"

#include <QDateTime>
#include <cstdio>

namespace reader {

DateTime SystemClock::now() const {
  const QDateTime t = QDateTime::currentDateTime();
  return {t.date().year(), t.date().month(), t.date().day(), t.time().hour(), t.time().minute(), t.time().second()};
}

namespace {
std::shared_ptr<const Clock>& clockSlot() {
  static std::shared_ptr<const Clock> c = std::make_shared<SystemClock>();
  return c;
}
}  // namespace

const Clock& clock() { return *clockSlot(); }
void setClock(std::shared_ptr<const Clock> c) { clockSlot() = c ? std::move(c) : std::make_shared<SystemClock>(); }

std::string traceDate(const DateTime& t) {
  char text[16];
  std::snprintf(text, sizeof text, "%02d-%02d-%04d", t.month % 100, t.day % 100, t.year % 10000);
  return text;
}

std::string traceTime(const DateTime& t) {
  char text[12];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d", t.hour % 100, t.minute % 100, t.second % 100);
  return text;
}

void TraceLog::titled(const std::string& title, const std::string& opWord, const std::string& request,
                      const std::string& answer) {
  const DateTime t = clock().now();
  append(std::string(kNewLine) + traceDate(t) + " " + traceTime(t) + "\t" + title + kNewLine + "\t\t\t>>> " +
         opWord + ", " + request + kNewLine + "\t\t\t<<< " + answer);
}

void TraceLog::titledChipCommand(const std::string& title, const std::string& frame, const std::string& answer) {
  titled(title, "TL42RQDLL_KQCMD", "01 " + frame, answer);
}

void TraceLog::untitled(const std::string& opWord, const std::string& answer) {
  const DateTime t = clock().now();
  append(std::string(kNewLine) + traceDate(t) + " " + traceTime(t) + "\t>>> " + opWord + kNewLine +
         "\t\t\t<<< " + answer);
}

void TraceLog::toolbox(const std::string& opWord, const std::string& answer) {
  const DateTime t = clock().now();
  append(std::string(kNewLine) + traceDate(t) + " \t>>> " + opWord + kNewLine + "\t\t<<< " + answer);
}

void TraceLog::appendRaw(const std::string& text) { append(text); }

void TraceLog::append(std::string piece) {
  text_ += piece;
  if (sink_) sink_(piece);
}

void TraceLog::clear() {
  // A long log's memory goes back with it, not only its length.
  std::string().swap(text_);
  if (onClear_) onClear_();
}

}  // namespace reader
