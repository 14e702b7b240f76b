#include "reader/ExchangeRecord.h"

#include <chrono>

namespace reader {

namespace {
ExchangeObserver* current = nullptr;
}

void ExchangeRecorder::exchanged(const ExchangeRecord& r) {
  if (records_.size() >= limit_) {
    records_.pop_front();
    ++dropped_;
  }
  records_.push_back(r);
  ExchangeRecord& added = records_.back();
  if (added.timeUs <= lastUs_) added.timeUs = lastUs_ + 1;
  lastUs_ = added.timeUs;
}

ExchangeObserver* currentObserver() { return current; }

ObserveExchanges::ObserveExchanges(ExchangeObserver* o) : previous_(current) { current = o; }
ObserveExchanges::~ObserveExchanges() { current = previous_; }

std::int64_t wallClockMicroseconds() {
  using namespace std::chrono;
  return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

void reportExchange(Op op, const std::string& request, std::int32_t status, const std::string& answer) {
  if (!current) return;
  ExchangeRecord r;
  r.timeUs = wallClockMicroseconds();
  r.op = op;
  r.status = status;
  // Only the operations that take a request have one; the others get none recorded.
  if (info(op).shape == Shape::RequestAndAnswer) r.request = request;
  r.answer = answer;
  current->exchanged(r);
}

}  // namespace reader
