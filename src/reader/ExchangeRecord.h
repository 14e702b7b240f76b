// What went over the driver boundary, call by call, for whoever wants a capture of it:
// the operation, the request text, the status, the answer text and the real time of the
// call in microseconds. The trace log keeps its seconds as it always has; this record is
// the finer and complete account that a pcapng export is made from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "reader/ReaderDriver.h"

namespace reader {

struct ExchangeRecord {
  std::int64_t timeUs = 0;  // microseconds since 1970-01-01 UTC
  Op op = Op::Echo;
  std::int32_t status = kStatusOk;
  std::string request;
  std::string answer;  // the buffer up to its first NUL
};

// Told of every call of the driver made while it is the current observer.
class ExchangeObserver {
 public:
  virtual ~ExchangeObserver() = default;
  virtual void exchanged(const ExchangeRecord& r) = 0;
};

// A panel's capture: the newest calls, at most `limit` of them, the oldest dropped first,
// so that a loop left running for a day cannot eat the memory. Time stamps are made
// strictly increasing here: two calls within one microsecond still keep their order.
class ExchangeRecorder final : public ExchangeObserver {
 public:
  static constexpr std::size_t kDefaultLimit = 20000;
  explicit ExchangeRecorder(std::size_t limit = kDefaultLimit) : limit_(limit == 0 ? 1 : limit) {}

  void exchanged(const ExchangeRecord& r) override;
  void clear() { records_.clear(); }
  const std::deque<ExchangeRecord>& records() const { return records_; }
  std::size_t dropped() const { return dropped_; }

 private:
  std::size_t limit_;
  std::deque<ExchangeRecord> records_;
  std::size_t dropped_ = 0;
  std::int64_t lastUs_ = 0;
};

// The observer the driver calls report to; nullptr when nobody listens.
ExchangeObserver* currentObserver();

// Makes an observer current for its lifetime and restores the previous one after it, so
// that a handler of one panel, overtaken by another panel's handler while it yields,
// gets its own observer back when the other returns.
class ObserveExchanges {
 public:
  explicit ObserveExchanges(ExchangeObserver* o);
  ~ObserveExchanges();
  ObserveExchanges(const ObserveExchanges&) = delete;
  ObserveExchanges& operator=(const ObserveExchanges&) = delete;

 private:
  ExchangeObserver* previous_;
};

// The wall clock in microseconds since 1970; what a record is stamped with.
std::int64_t wallClockMicroseconds();

// Called by every driver call with its outcome; tells the current observer, if any.
void reportExchange(Op op, const std::string& request, std::int32_t status, const std::string& answer);

}  // namespace reader
