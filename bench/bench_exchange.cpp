// What one exchange costs on top of the driver: reader::exchange (fresh guarded buffer,
// the call, the status test) plus the titled trace entry, against the bare driver call
// with a zero-filled 256-character buffer. Measured on the test fake and on the simulated
// board library loaded as the program loads it; the program prints the ratios.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "reader/Drivers.h"
#include "reader/Exchange.h"
#include "reader/Reconnect.h"
#include "reader/TraceLog.h"

namespace {

using reader::Op;

// Inventory of one slot after selecting ISO 15693: the commonest call of the program.
constexpr const char* kRequest = "260100";
// The simulated board's field for these runs: one ISO 15693 tag in front of the antenna.
constexpr const char* kField =
    R"({"board":{"present":true,"dllRevision":"0.5.0","mcuRevision":[1,4,1],"chipName":"NFC TL42RQ",)"
    R"("interfacePin":1},"antenna":{"detectLevel":31},"tags":[{"type":"iso15693","product":"VAS60E",)"
    R"("uid":"E002223344556677","dsfid":"00","afi":"00","blockSize":4,"blockCount":64,"memory":"E1400001"}]})";

reader::FakeDriver& fakeBoard() {
  static reader::FakeDriver fake = [] {
    reader::FakeDriver f;
    f.setHandler([](Op, const std::string&) { return reader::FakeDriver::Reply{0, "800D0000E0027766554433220200F800"}; });
    return f;
  }();
  return fake;
}

struct Simulated {
  std::unique_ptr<reader::ReaderDriver> driver;
  std::string problem;
};

Simulated& simulatedBoard() {
  static Simulated s = [] {
    Simulated out;
    out.driver = reader::LibraryDriver::load(TL42RQ_SIM_LIBRARY);
    auto* lib = dynamic_cast<reader::LibraryDriver*>(out.driver.get());
    if (!lib || !lib->isSimulated()) {
      out.problem = "simulated board not loaded: " + out.driver->description();
      return out;
    }
    auto load = reinterpret_cast<std::int32_t (*)(const char*)>(lib->resolve("TL42RQSim_LoadField"));
    if (!load || load(kField) != 0) {
      auto err = reinterpret_cast<const char* (*)()>(lib->resolve("TL42RQSim_LastError"));
      out.problem = std::string("simulated board refused the field: ") + (err && err() ? err() : "");
      return out;
    }
    reader::callOnce(*out.driver, Op::USBconnect);
    reader::callOnce(*out.driver, Op::Select, "010D");
    const auto probe = reader::callOnce(*out.driver, Op::SendReceive, kRequest);
    if (!probe.good("80")) out.problem = "simulated board does not answer the inventory: " + probe.text;
    return out;
  }();
  return s;
}

// `tidy` runs every 20000 iterations: the fake records every call and the log would grow
// past any panel's size; both are cleared rarely enough not to count.
template <typename Tidy>
void bare(benchmark::State& state, reader::ReaderDriver& d, Tidy tidy) {
  long n = 0;
  for (auto _ : state) {
    char buffer[reader::kAnswerSize];
    std::memset(buffer, 0, sizeof buffer);
    benchmark::DoNotOptimize(d.call(Op::SendReceive, kRequest, buffer));
    benchmark::ClobberMemory();
    if (++n % 20000 == 0) tidy();
  }
}

template <typename Tidy>
void full(benchmark::State& state, reader::ReaderDriver& d, Tidy tidy) {
  reader::TraceLog log;
  const auto reconnect = reader::reconnectWith(d, reader::ReconnectKind::Iso15693);
  long n = 0;
  for (auto _ : state) {
    const auto a = reader::exchange(d, Op::SendReceive, kRequest, reconnect);
    log.titled("INVENTORY", reader::logWord(Op::SendReceive), kRequest, a.text);
    benchmark::DoNotOptimize(log.text().data());
    if (++n % 20000 == 0) {
      log.clear();
      tidy();
    }
  }
}

void BM_BareCall_Fake(benchmark::State& state) {
  bare(state, fakeBoard(), [] { fakeBoard().clearCalls(); });
}

void BM_FullExchange_Fake(benchmark::State& state) {
  full(state, fakeBoard(), [] { fakeBoard().clearCalls(); });
}

void BM_BareCall_Simulated(benchmark::State& state) {
  auto& s = simulatedBoard();
  if (!s.problem.empty()) {
    state.SkipWithError(s.problem.c_str());
    return;
  }
  bare(state, *s.driver, [] {});
}

void BM_FullExchange_Simulated(benchmark::State& state) {
  auto& s = simulatedBoard();
  if (!s.problem.empty()) {
    state.SkipWithError(s.problem.c_str());
    return;
  }
  full(state, *s.driver, [] {});
}

// The two parts of the full exchange apart: the call through reader::exchange alone, and
// the titled entry alone with the system clock the program stamps entries with.
void BM_ExchangeOnly_Fake(benchmark::State& state) {
  auto& fake = fakeBoard();
  const auto reconnect = reader::reconnectWith(fake, reader::ReconnectKind::Iso15693);
  long n = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(reader::exchange(fake, Op::SendReceive, kRequest, reconnect));
    if (++n % 20000 == 0) fake.clearCalls();
  }
}

void BM_TitledEntryOnly(benchmark::State& state) {
  reader::TraceLog log;
  long n = 0;
  for (auto _ : state) {
    log.titled("INVENTORY", reader::logWord(Op::SendReceive), kRequest, "800D0000E0027766554433220200F800");
    if (++n % 20000 == 0) log.clear();
  }
}

BENCHMARK(BM_ExchangeOnly_Fake)->Repetitions(3);
BENCHMARK(BM_TitledEntryOnly)->Repetitions(3);
BENCHMARK(BM_BareCall_Fake)->Repetitions(3);
BENCHMARK(BM_FullExchange_Fake)->Repetitions(3);
BENCHMARK(BM_BareCall_Simulated)->Repetitions(3);
BENCHMARK(BM_FullExchange_Simulated)->Repetitions(3);

void printRatio(const bench::BestTimeReporter& r, const char* what, const std::string& fullKey,
                const std::string& bareKey) {
  const double f = r.bestNs(fullKey);
  const double b = r.bestNs(bareKey);
  if (f <= 0 || b <= 0) {
    std::printf("%s: not measured\n", what);
    return;
  }
  std::printf("%s: full exchange %.1f ns, bare call %.1f ns, ratio %.2f, overhead %.1f ns\n", what, f, b, f / b, f - b);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  bench::BestTimeReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  printRatio(reporter, "fake driver", "BM_FullExchange_Fake", "BM_BareCall_Fake");
  std::printf("of which: exchange alone %.1f ns, titled entry alone (system clock) %.1f ns\n",
              reporter.bestNs("BM_ExchangeOnly_Fake"), reporter.bestNs("BM_TitledEntryOnly"));
  printRatio(reporter, "simulated board", "BM_FullExchange_Simulated", "BM_BareCall_Simulated");
  return 0;
}
