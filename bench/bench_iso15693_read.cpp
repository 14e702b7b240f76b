// Reading the largest ISO 15693 product's memory (VAS60E, 2048 blocks of 4 bytes) block
// by block through the ISO 15693 panel on the simulated board, as Read Single Block does
// it: one Send Receive, the request and answer boxes, the trace entry, the cut, a turn of
// the event loop and one buffer row per block, then the sixteen rows of the page view.
// Measured per block for a 64-block and a 2048-block read, against one bare driver call
// and against one exchange of the headless script runner (the same interpreter, trace log
// and yields as tl42rq-script, 2048 Send Receive lines). The program prints the ratios;
// with --check-ratio=R it fails when a block of the long read costs more than R times a
// block of the short one (a cost that grows with the log or the buffer would show there),
// and with --check-headless-ratio=H when a block of the long read costs more than H times
// a headless exchange.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTabBar>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "iso15693/ui/frmTL42RQ_ISO15693_UI.h"
#include "reader/Drivers.h"
#include "reader/Exchange.h"
#include "reader/ui/HexFields.h"
#include "script/ScriptInterpreter.h"
#include "shell/GlobVariables.h"
#include "shell/Product.h"

namespace {

using reader::Op;

constexpr long kShort = 64;
constexpr long kLong = 2048;
// One VAS60E tag in front of the antenna with its whole memory.
constexpr const char* kField =
    R"({"tags":[{"type":"iso15693","product":"VAS60E","uid":"E002223344556677","blockSize":4,"blockCount":2048,)"
    R"("memory":"0011223344556677"}]})";

struct Bench {
  std::unique_ptr<reader::ReaderDriver> driver;
  std::unique_ptr<frmTL42RQ_ISO15693_UI> panel;
  std::string problem;
};

Bench& readBench() {
  static Bench b = [] {
    Bench out;
    out.driver = reader::LibraryDriver::load(TL42RQ_SIM_LIBRARY);
    auto* lib = dynamic_cast<reader::LibraryDriver*>(out.driver.get());
    if (!lib || !lib->isSimulated()) {
      out.problem = "simulated board not loaded: " + out.driver->description();
      return out;
    }
    auto load = reinterpret_cast<std::int32_t (*)(const char*)>(lib->resolve("TL42RQSim_LoadField"));
    if (!load || load(kField) != 0) {
      out.problem = "simulated board refused the field";
      return out;
    }
    reader::setDriver(out.driver.get());
    Product p;
    p.Reference("VAS60E");
    p.Density(64);
    p.PageSize(4);
    p.NbAdressByte(2);
    p.NbAdressByteRF(2);
    shell::currentProduct() = p;
    shell::productSizes() = shell::deriveSizes(p);
    out.panel = std::make_unique<frmTL42RQ_ISO15693_UI>();
    out.panel->resize(1400, 900);
    out.panel->show();
    out.panel->tabStripchoice->setCurrentIndex(1);
    QCoreApplication::processEvents();
    return out;
  }();
  return b;
}

void BM_WindowReadPerBlock(benchmark::State& state) {
  Bench& b = readBench();
  if (!b.problem.empty()) {
    state.SkipWithError(b.problem.c_str());
    return;
  }
  const long blocks = state.range(0);
  auto& p = *b.panel;
  p.txtUserAddress[0]->setText("0000");
  p.txtUserAddress[1]->setText(QString("%1").arg(blocks - 1, 4, 16, QLatin1Char('0')).toUpper());
  for (auto _ : state) {
    state.PauseTiming();
    p.cmdClearLog_Click();
    state.ResumeTiming();
    p.cmdReadUser->click();
  }
  state.counters["items"] = static_cast<double>(blocks);
  state.SetItemsProcessed(state.iterations() * blocks);
  // The read must have shown the tag's memory, not error rows.
  if (memoryBuffer().Size() != blocks || memoryBuffer().Item(1) != "44 55 66 77 ")
    state.SkipWithError("the read did not give the tag's blocks");
}
BENCHMARK(BM_WindowReadPerBlock)->Arg(kShort)->Arg(kLong)->Repetitions(3)->Unit(benchmark::kMicrosecond);

void BM_BareDriverCall(benchmark::State& state) {
  Bench& b = readBench();
  if (!b.problem.empty()) {
    state.SkipWithError(b.problem.c_str());
    return;
  }
  char answer[256];
  std::int32_t status = 0;
  for (auto _ : state) {
    std::memset(answer, 0, sizeof answer);
    status |= b.driver->call(Op::SendReceive, "0A200100", answer);
    benchmark::DoNotOptimize(answer);
  }
  if (status != 0 || std::string(answer).rfind("80", 0) != 0) state.SkipWithError("the bare call failed");
}
BENCHMARK(BM_BareDriverCall)->Repetitions(3)->Unit(benchmark::kMicrosecond);

// The headless runner's work for one exchange: the script line read, the call, the trace
// entry and the interpreter's yields, as tl42rq-script does them (without the printing).
void BM_HeadlessPerExchange(benchmark::State& state) {
  Bench& b = readBench();
  if (!b.problem.empty()) {
    state.SkipWithError(b.problem.c_str());
    return;
  }
  std::string scriptText;
  for (long i = 0; i < kLong; ++i) {
    char line[64];
    std::snprintf(line, sizeof line, "TL42RQDLL_SENDRECV, 0A20%02lX00\n", i % 256);
    scriptText += line;
  }
  glob::state().scriptChipId = "00";
  std::size_t logged = 0;
  for (auto _ : state) {
    reader::TraceLog log;
    script::PlainLoopControls controls;
    script::Interpreter interpreter(
        *b.driver, log, [](long long turns) { for (long long i = 0; i < turns; ++i) QCoreApplication::processEvents(); },
        controls);
    if (interpreter.launch(script::viewTextOfFile(scriptText)) != script::RunOutcome::Finished) {
      std::fprintf(stderr, "%s\n", log.text().substr(0, 300).c_str());
      state.SkipWithError("the script did not run");
    }
    logged = log.text().size();
  }
  state.counters["items"] = static_cast<double>(kLong);
  state.SetItemsProcessed(state.iterations() * kLong);
  if (logged < static_cast<std::size_t>(kLong) * 40) state.SkipWithError("the script logged too little");
}
BENCHMARK(BM_HeadlessPerExchange)->Repetitions(3)->Unit(benchmark::kMicrosecond);

void quietOffscreen(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (message.contains(QLatin1String("propagateSizeHints"))) return;
  qt_message_output(type, context, message);
}

}  // namespace

int main(int argc, char** argv) {
  qInstallMessageHandler(quietOffscreen);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const double limit = bench::takeOption(argc, argv, "check-ratio", 0);
  const double headlessLimit = bench::takeOption(argc, argv, "check-headless-ratio", 0);
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  bench::BestTimeReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  readBench().panel.reset();
  reader::setDriver(nullptr);
  const double shortRead = reporter.bestNs("BM_WindowReadPerBlock/" + std::to_string(kShort));
  const double longRead = reporter.bestNs("BM_WindowReadPerBlock/" + std::to_string(kLong));
  const double bare = reporter.bestNs("BM_BareDriverCall");
  const double headless = reporter.bestNs("BM_HeadlessPerExchange");
  if (shortRead <= 0 || longRead <= 0 || bare <= 0 || headless <= 0) {
    std::printf("ISO 15693 read ratios: not measured\n");
    return limit > 0 || headlessLimit > 0 ? 1 : 0;
  }
  std::printf("time per block through the window: %.1f us (%ld blocks), %.1f us (%ld blocks)\n", shortRead / 1000,
              kShort, longRead / 1000, kLong);
  std::printf("time per bare driver call: %.1f us; window / bare: %.1f\n", bare / 1000, longRead / bare);
  std::printf("whole %ld-block read through the window: %.3f s wall clock (best of the runs)\n", kLong,
              reporter.bestWallNs("BM_WindowReadPerBlock/" + std::to_string(kLong)) * kLong / 1e9);
  std::printf("time per headless exchange: %.1f us; window per block / headless per exchange: %.2f\n",
              headless / 1000, longRead / headless);
  if (headlessLimit > 0 && longRead / headless > headlessLimit) {
    std::printf("window / headless above %.2f\n", headlessLimit);
    return 1;
  }
  const double ratio = longRead / shortRead;
  std::printf("time per block, %ld-block read / %ld-block read: %.3f\n", kLong, kShort, ratio);
  if (limit > 0 && ratio > limit) {
    std::printf("ratio above %.2f\n", limit);
    return 1;
  }
  return 0;
}
