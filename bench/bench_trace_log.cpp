// Cost of one trace entry appended to a log that already holds N entries, for N = 1 000
// and N = 100 000. A panel's log grows without limit until Clear Log, so an append must
// not get slower as the log grows: the program prints the ratio of the two and, with
// --check-ratio=LIMIT, fails when the ratio is above LIMIT.
//
// Each iteration starts from a log built by appending N entries (not timed), then times
// N further appends: the window from N to 2N holds the string's growth in the same
// proportion at every size, so the time per append is the amortised cost at that size.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "reader/TraceLog.h"

namespace {

constexpr long kSmall = 1000;
constexpr long kLarge = 100000;

void appendOne(reader::TraceLog& log, long i) {
  // A typical ISO 15693 read: a 12-byte request and a 9-byte answer.
  log.titled("READ SINGLE BLOCK", "TL42RQDLL_SENDRECV", i % 2 ? "0220000000" : "022001000000",
             "8008000102030444AA00");
}

void BM_TraceLogAppend(benchmark::State& state) {
  const long n = state.range(0);
  reader::setClock(std::make_shared<reader::FixedClock>(reader::DateTime{2026, 11, 21, 10, 20, 30}));
  for (auto _ : state) {
    state.PauseTiming();
    auto log = std::make_unique<reader::TraceLog>();
    for (long i = 0; i < n; ++i) appendOne(*log, i);
    state.ResumeTiming();
    for (long i = 0; i < n; ++i) appendOne(*log, i);
    benchmark::DoNotOptimize(log->text().data());
    state.PauseTiming();
    log.reset();
    state.ResumeTiming();
  }
  state.counters["items"] = static_cast<double>(n);
  state.SetItemsProcessed(state.iterations() * n);
  reader::setClock(nullptr);
}
BENCHMARK(BM_TraceLogAppend)->Arg(kSmall)->Arg(kLarge)->Repetitions(5)->ReportAggregatesOnly(false);

}  // namespace

int main(int argc, char** argv) {
  const double limit = bench::takeOption(argc, argv, "check-ratio", 0);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  bench::BestTimeReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();

  const double small = reporter.bestNs("BM_TraceLogAppend/" + std::to_string(kSmall));
  const double large = reporter.bestNs("BM_TraceLogAppend/" + std::to_string(kLarge));
  if (small <= 0 || large <= 0) {
    std::printf("trace append ratio: not measured\n");
    return limit > 0 ? 1 : 0;
  }
  const double ratio = large / small;
  std::printf("trace append at %ld entries: %.1f ns, at %ld entries: %.1f ns (best of the repetitions)\n", kSmall,
              small, kLarge, large);
  std::printf("trace append ratio %ld/%ld entries: %.3f\n", kLarge, kSmall, ratio);
  if (limit > 0 && ratio > limit) {
    std::printf("FAILED: ratio %.3f is above %.2f\n", ratio, limit);
    return 1;
  }
  return 0;
}
