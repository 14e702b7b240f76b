// One trace entry appended through a panel (its log string and its shown log view) when
// the panel already holds N entries, N = 1 000 and N = 100 000, on the offscreen platform.
// Each append is followed by one turn of the event loop, as a handler returns to it, so
// that the view's layout and painting are part of the cost. The program prints the ratio.
//
// The panel is built once per size with N entries (not timed) and then takes windows of
// appends; it is rebuilt when the windows have grown it by more than a tenth, so the size
// measured stays near N.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPlainTextEdit>
#include <QVBoxLayout>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "shell/ui/Panel.h"

namespace {

constexpr long kSmall = 1000;
constexpr long kLarge = 100000;
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

// Fills a fresh panel while it is hidden (the view then holds the same text and caret
// as after N shown appends, in a fraction of the time), then shows it.
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
      QCoreApplication::processEvents();
    }
    s.entries += kWindow;
  }
  state.counters["items"] = static_cast<double>(kWindow);
  state.SetItemsProcessed(state.iterations() * kWindow);
  // The view must hold what the log holds: one line per line of the string.
  const auto lines = s.panel->logView()->document()->blockCount();
  if (lines != static_cast<int>(s.entries * 3 + 1)) state.SkipWithError("the view lost lines");
  reader::setClock(nullptr);
}
BENCHMARK(BM_PanelLogAppend)->Arg(kSmall)->Arg(kLarge)->Repetitions(3)->Unit(benchmark::kMicrosecond);

// The offscreen platform says at every show that it cannot propagate size hints.
void quietOffscreen(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (message.contains(QLatin1String("propagateSizeHints"))) return;
  qt_message_output(type, context, message);
}

}  // namespace

int main(int argc, char** argv) {
  qInstallMessageHandler(quietOffscreen);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  bench::BestTimeReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  panels().clear();
  const double small = reporter.bestNs("BM_PanelLogAppend/" + std::to_string(kSmall));
  const double large = reporter.bestNs("BM_PanelLogAppend/" + std::to_string(kLarge));
  if (small <= 0 || large <= 0) {
    std::printf("panel log append ratio: not measured\n");
    return 0;
  }
  std::printf("panel log append at %ld entries: %.1f us, at %ld entries: %.1f us\n", kSmall, small / 1000, kLarge,
              large / 1000);
  std::printf("panel log append ratio %ld/%ld entries: %.3f\n", kLarge, kSmall, large / small);
  return 0;
}
