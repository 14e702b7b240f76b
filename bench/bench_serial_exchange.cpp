// One exchange through the serial driver and the chip emulator on a pseudo-terminal, against
// the same exchange through the in-process simulated board: an ISO 15693 inventory of one
// slot, the tag in the field answering. Wall-clock time, since the serial exchange spends
// its time waiting for the emulator's process; the program prints the ratio.
#include <benchmark/benchmark.h>

#include <QProcess>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "reader/Drivers.h"
#include "reader/Exchange.h"

namespace {

using reader::Op;

constexpr const char* kRequest = "260100";
constexpr const char* kField =
    R"({"board":{"present":true,"chipName":"NFC TL42RQ"},"antenna":{"detectLevel":31},"tags":[{"type":"iso15693",)"
    R"("product":"VAS60E","uid":"E002223344556677","dsfid":"00","afi":"00","blockSize":4,"blockCount":64}]})";

struct Board {
  std::unique_ptr<reader::ReaderDriver> driver;
  std::string problem;
  std::unique_ptr<QProcess> emulator;
};

// Selects ISO 15693 and checks that the tag answers.
void prepare(Board& b) {
  reader::callOnce(*b.driver, Op::USBconnect);
  reader::callOnce(*b.driver, Op::Select, "010D");
  const auto probe = reader::callOnce(*b.driver, Op::SendReceive, kRequest);
  if (!probe.good("80")) b.problem = b.driver->description() + " does not answer the inventory: " + probe.text;
}

Board& simulated() {
  static Board b = [] {
    Board out;
    out.driver = reader::LibraryDriver::load(TL42RQ_SIM_LIBRARY);
    auto* lib = dynamic_cast<reader::LibraryDriver*>(out.driver.get());
    auto load = lib ? reinterpret_cast<std::int32_t (*)(const char*)>(lib->resolve("TL42RQSim_LoadField")) : nullptr;
    if (!load || load(kField) != 0) {
      out.problem = "simulated board not loaded";
      return out;
    }
    prepare(out);
    return out;
  }();
  return b;
}

Board& serial() {
  static Board b = [] {
    Board out;
    char dir[] = "/tmp/tl42rq-bench-XXXXXX";
    if (!mkdtemp(dir)) {
      out.problem = "no temporary directory";
      return out;
    }
    const std::string field = std::string(dir) + "/field.json";
    if (FILE* f = std::fopen(field.c_str(), "w")) {
      std::fputs(kField, f);
      std::fclose(f);
    }
    out.emulator = std::make_unique<QProcess>();
    out.emulator->start(TL42RQ_CHIP_EMULATOR, {"--field", QString::fromStdString(field)});
    while (out.emulator->waitForReadyRead(5000) && !out.emulator->canReadLine()) {
    }
    if (!out.emulator->canReadLine()) {
      out.problem = "emulator did not start";
      return out;
    }
    setenv("TL42RQ_SERIAL_PORT", out.emulator->readLine().trimmed().constData(), 1);
    out.driver = reader::LibraryDriver::load(TL42RQ_SERIAL_LIBRARY);
    prepare(out);
    return out;
  }();
  return b;
}

void exchangeOn(benchmark::State& state, Board& b) {
  if (!b.problem.empty()) {
    state.SkipWithError(b.problem.c_str());
    return;
  }
  for (auto _ : state) {
    char buffer[reader::kAnswerSize];
    std::memset(buffer, 0, sizeof buffer);
    benchmark::DoNotOptimize(b.driver->call(Op::SendReceive, kRequest, buffer));
    benchmark::ClobberMemory();
  }
}

void BM_Exchange_Simulated(benchmark::State& state) { exchangeOn(state, simulated()); }
void BM_Exchange_SerialEmulator(benchmark::State& state) { exchangeOn(state, serial()); }

BENCHMARK(BM_Exchange_Simulated)->UseRealTime();
BENCHMARK(BM_Exchange_SerialEmulator)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  bench::BestTimeReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  const double sim = reporter.bestWallNs("BM_Exchange_Simulated");
  const double line = reporter.bestWallNs("BM_Exchange_SerialEmulator");
  if (sim > 0 && line > 0)
    std::printf("one exchange: serial driver + emulator %.1f us, simulated board %.1f us, ratio %.1f\n", line / 1000,
                sim / 1000, line / sim);
  else
    std::printf("one exchange: not measured\n");
  // The emulator ends at the end of its standard input.
  if (auto& e = serial().emulator) {
    e->closeWriteChannel();
    e->waitForFinished(2000);
  }
  return 0;
}
