// One trace entry appended through a panel (its log string and its shown log view) when
// the panel already holds N entries, N = 1 000 and N = 200 000, on the offscreen platform.
// Each append is followed by one turn of the event loop through yieldEvents, as a loop's
// handler yields after each step, so that the view's layout and painting are part of the
// cost. Then the memory: resident size of the process grown by 200 000 entries appended
// to a shown panel in that way, per entry, and the resident size after Clear Log against
// the size before the entries. Last, LOOP ON SCRIPT with 200 000 echoes in the script
// tool's window against the simulated board: its time, and the longest gap between two
// ticks of a 20 ms timer meanwhile. The program prints the ratios.
//
// The panel is built once per size with N entries (not timed) and then takes windows of
// appends; it is rebuilt when the windows have grown it by more than a tenth, so the size
// measured stays near N.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <QPlainTextEdit>
#include <QVBoxLayout>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "reader/Drivers.h"
#include "script/ui/frmTL42RQ_Script.h"
#include "shell/ui/Panel.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {

constexpr long kSmall = 1000;
constexpr long kLarge = 200000;
constexpr long kWindow = 100;

class LogPanel final : public Panel {
 public:
  LogPanel() : Panel(glob::PanelId::UserInterface, "frmTL42RQ_UserInterface") {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(createLogView("rtfLog"));
    resize(800, 600);
  }
};

void appendOne(Panel& p, long i) {
  p.log().titled("READ SINGLE BLOCK", "TL42RQDLL_SENDRECV", i % 2 ? "0220000000" : "022001000000",
                 "8008000102030444AA00");
}

struct Sized {
  std::unique_ptr<LogPanel> panel;
  long entries = 0;
};

// Fills a fresh panel while it is hidden, then shows it.
void rebuild(Sized& s, long n) {
  s.panel.reset();
  QCoreApplication::processEvents();
  s.panel = std::make_unique<LogPanel>();
  for (long i = 0; i < n; ++i) appendOne(*s.panel, i);
  s.panel->show();
  QCoreApplication::processEvents();
  s.entries = n;
}

// One panel per size, kept across the repetitions; they go before the application does.
std::map<long, Sized>& panels() {
  static std::map<long, Sized> all;
  return all;
}

Sized& panelOfSize(long n) {
  Sized& s = panels()[n];
  if (!s.panel) rebuild(s, n);
  return s;
}

void BM_PanelLogAppend(benchmark::State& state) {
  const long n = state.range(0);
  reader::setClock(std::make_shared<reader::FixedClock>(reader::DateTime{2026, 11, 21, 10, 20, 30}));
  Sized& s = panelOfSize(n);
  for (auto _ : state) {
    if (s.entries - n > n / 10) {
      state.PauseTiming();
      rebuild(s, n);
      state.ResumeTiming();
    }
    for (long i = 0; i < kWindow; ++i) {
      appendOne(*s.panel, i);
      yieldEvents(1);
    }
    s.entries += kWindow;
  }
  state.counters["items"] = static_cast<double>(kWindow);
  state.SetItemsProcessed(state.iterations() * kWindow);
  // The log must hold every entry: one entry is 97 characters.
  if (s.panel->log().text().size() < static_cast<std::size_t>(s.entries) * 90) state.SkipWithError("entries lost");
  reader::setClock(nullptr);
}
BENCHMARK(BM_PanelLogAppend)->Arg(kSmall)->Arg(kLarge)->Repetitions(3)->Unit(benchmark::kMicrosecond);

long residentBytes() {
  long pages = 0, resident = 0;
  if (FILE* f = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(f);
  }
  return resident * 4096;
}

struct Memory {
  double perEntry = -1;
  long before = 0, full = 0, cleared = 0;
  qint64 longestGapMs = -1;  // between two ticks of a 20 ms timer during the appends
};

// 200 000 entries through a shown panel with a yield after each, then Clear Log.
Memory measureMemory() {
  panels().clear();
  QCoreApplication::processEvents();
#if defined(__GLIBC__)
  malloc_trim(0);
#endif
  Memory m;
  auto panel = std::make_unique<LogPanel>();
  panel->show();
  QCoreApplication::processEvents();
  m.before = residentBytes();
  // A 20 ms timer stands for everything else the window must keep doing during a loop.
  QTimer ticker;
  QElapsedTimer sinceTick;
  qint64 longest = 0;
  QObject::connect(&ticker, &QTimer::timeout, [&] {
    longest = std::max(longest, sinceTick.restart());
  });
  ticker.start(20);
  sinceTick.start();
  for (long i = 0; i < kLarge; ++i) {
    appendOne(*panel, i);
    yieldEvents(1);
  }
  ticker.stop();
  m.longestGapMs = std::max(longest, sinceTick.elapsed());
  for (int i = 0; i < 50; ++i) yieldEvents(1);
  m.full = residentBytes();
  m.perEntry = static_cast<double>(m.full - m.before) / kLarge;
  panel->cmdClearLog_Click();
  for (int i = 0; i < 50; ++i) yieldEvents(1);
  m.cleared = residentBytes();
  return m;
}

struct ScriptLoop {
  double seconds = -1;
  qint64 longestGapMs = -1;
  std::size_t logBytes = 0;
};

// LOOP ON SCRIPT with 200 000 passes of one echo in the script tool's window, against the
// simulated board, with a 20 ms timer ticking beside it.
ScriptLoop measureScriptLoop() {
  ScriptLoop out;
  std::unique_ptr<reader::ReaderDriver> driver = reader::LibraryDriver::load(TL42RQ_SIM_LIBRARY);
  reader::setDriver(driver.get());
  {
    frmTL42RQ_Script panel;
    panel.resize(900, 600);
    panel.show();
    QCoreApplication::processEvents();
    panel.setScriptText("TL42RQDLL_ECHO");
    panel.findChild<QCheckBox*>("chkLoopOnScript")->click();
    panel.findChild<QLineEdit*>("txtLOOPnumber")->setText(QString::number(kLarge));
    QTimer ticker;
    QElapsedTimer sinceTick, whole;
    qint64 longest = 0;
    QObject::connect(&ticker, &QTimer::timeout, [&] { longest = std::max(longest, sinceTick.restart()); });
    ticker.start(20);
    sinceTick.start();
    whole.start();
    panel.cmdLaunchScript_Click();
    out.seconds = static_cast<double>(whole.nsecsElapsed()) / 1e9;
    out.longestGapMs = std::max(longest, sinceTick.elapsed());
    out.logBytes = panel.log().text().size();
  }
  reader::setDriver(nullptr);
  return out;
}

// The offscreen platform says at every show that it cannot propagate size hints.
void quietOffscreen(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (message.contains(QLatin1String("propagateSizeHints"))) return;
  qt_message_output(type, context, message);
}

}  // namespace

int main(int argc, char** argv) {
  qInstallMessageHandler(quietOffscreen);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const bool memory = bench::takeOption(argc, argv, "memory", 1) != 0;
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  bench::BestTimeReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  panels().clear();
  const double small = reporter.bestNs("BM_PanelLogAppend/" + std::to_string(kSmall));
  const double large = reporter.bestNs("BM_PanelLogAppend/" + std::to_string(kLarge));
  if (small > 0 && large > 0) {
    std::printf("panel log append at %ld entries: %.1f us, at %ld entries: %.1f us\n", kSmall, small / 1000, kLarge,
                large / 1000);
    std::printf("panel log append ratio %ld/%ld entries: %.3f\n", kLarge, kSmall, large / small);
  } else {
    std::printf("panel log append ratio: not measured\n");
  }
  if (memory) {
    const Memory m = measureMemory();
    std::printf("resident size: %.1f MB before, %.1f MB after %ld entries, %.1f MB after Clear Log\n",
                m.before / 1e6, m.full / 1e6, kLarge, m.cleared / 1e6);
    std::printf("memory per trace entry at %ld entries: %.0f bytes; after Clear Log / before: %.2f\n", kLarge,
                m.perEntry, static_cast<double>(m.cleared) / static_cast<double>(m.before));
    std::printf("longest gap between two ticks of a 20 ms timer during the %ld appends: %lld ms\n", kLarge,
                static_cast<long long>(m.longestGapMs));
    const ScriptLoop loop = measureScriptLoop();
    std::printf("script tool, LOOP ON SCRIPT, %ld echoes on the simulated board: %.2f s, %.1f us per exchange, "
                "%zu bytes of log, longest gap between two ticks of a 20 ms timer: %lld ms\n",
                kLarge, loop.seconds, loop.seconds * 1e6 / kLarge, loop.logBytes,
                static_cast<long long>(loop.longestGapMs));
  }
  return 0;
}
