// What a panel's capture costs each exchange: reader::exchange with the panel's recorder
// current (kept full, so that every call also drops the oldest record) against the same
// exchange with no recorder, on a driver that answers at once, so that the recorder's
// share is as large as it can get. The program prints both and the difference.
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "BenchSupport.h"
#include "reader/Exchange.h"
#include "reader/ExchangeRecord.h"

namespace {

using reader::Op;

constexpr const char* kRequest = "260100";
constexpr const char* kAnswer = "800D0000E0027766554433220200F800";

// Answers every call at once with one inventory answer.
class InstantDriver final : public reader::ReaderDriver {
 public:
  std::int32_t call(Op, const char*, char* answer) override {
    std::memcpy(answer, kAnswer, std::strlen(kAnswer));
    return reader::kStatusOk;
  }
  std::string description() const override { return "instant"; }
};

void exchanges(benchmark::State& state, reader::ExchangeObserver* observer) {
  InstantDriver d;
  reader::ObserveExchanges scope(observer);
  for (auto _ : state) benchmark::DoNotOptimize(reader::exchange(d, Op::SendReceive, kRequest, {}));
}

void BM_Exchange_NoCapture(benchmark::State& state) { exchanges(state, nullptr); }

void BM_Exchange_FullCapture(benchmark::State& state) {
  static reader::ExchangeRecorder recorder;
  InstantDriver d;
  {
    reader::ObserveExchanges fill(&recorder);
    while (recorder.records().size() < reader::ExchangeRecorder::kDefaultLimit)
      reader::exchange(d, Op::SendReceive, kRequest, {});
  }
  exchanges(state, &recorder);
}

BENCHMARK(BM_Exchange_NoCapture)->Repetitions(3);
BENCHMARK(BM_Exchange_FullCapture)->Repetitions(3);

}  // namespace

// The heap a full recorder holds, with this inventory's request and answer in each record.
std::size_t fullRecorderBytes() {
  const std::size_t before = mallinfo2().uordblks;
  auto* recorder = new reader::ExchangeRecorder;
  InstantDriver d;
  {
    reader::ObserveExchanges fill(recorder);
    while (recorder->records().size() < reader::ExchangeRecorder::kDefaultLimit)
      reader::exchange(d, Op::SendReceive, kRequest, {});
  }
  const std::size_t after = mallinfo2().uordblks;
  delete recorder;
  return after - before;
}

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  std::printf("capture: a full recorder (%zu exchanges) holds %zu bytes of heap\n",
              reader::ExchangeRecorder::kDefaultLimit, fullRecorderBytes());
  bench::BestTimeReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const double without = reporter.bestNs("BM_Exchange_NoCapture");
  const double with = reporter.bestNs("BM_Exchange_FullCapture");
  if (without > 0 && with > 0)
    std::printf("capture: exchange %.1f ns without, %.1f ns with a full recorder, %.1f ns more each\n", without, with,
                with - without);
  benchmark::Shutdown();
  return 0;
}
