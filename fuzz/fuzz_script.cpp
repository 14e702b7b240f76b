// Script files come from the user's disk: any bytes must load, run and log without a
// crash or a hang. The first input byte seeds the board's answers (good ones, a cascade
// tag, no tag, a lost board) and picks a loop of one to three passes; the rest is the
// file. The harness's turns of the event loop cost nothing, which bounds WAIT.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "reader/Drivers.h"
#include "reader/TraceLog.h"
#include "script/ScriptInterpreter.h"
#include "shell/GlobVariables.h"

namespace {

constexpr const char* kAnswers[] = {"5500",
                                    "0000",
                                    "8700",
                                    "80054400280000",
                                    "800804A1B2C3D4280000",
                                    "80088804A1B29F280000",
                                    "800888C3D4E58A280000",
                                    "80043D010000",
                                    "87",
                                    "8",
                                    "",
                                    "80"};
constexpr std::int32_t kStatuses[] = {0, 0, 0, 0, 5, 1};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static const bool clockFixed = [] {
    reader::setClock(std::make_shared<reader::FixedClock>(reader::DateTime{2026, 11, 21, 10, 20, 30}));
    return true;
  }();
  (void)clockFixed;

  std::uint32_t seed = data[0];
  const std::string file(reinterpret_cast<const char*>(data + 1), size - 1);

  reader::FakeDriver board;
  board.setHandler([&seed](reader::Op, const std::string&) {
    seed = seed * 1103515245u + 12345u;
    return reader::FakeDriver::Reply{kStatuses[(seed >> 8) % std::size(kStatuses)],
                                     kAnswers[(seed >> 16) % std::size(kAnswers)]};
  });

  glob::state().scriptChipId = "00";
  script::PlainLoopControls loop;
  const unsigned passes = data[0] % 4;  // 0: no loop
  if (passes) loop.switchOn(std::to_string(passes));

  reader::TraceLog log;
  long long turns = 0;
  script::Interpreter interpreter(board, log, [&turns](long long n) { turns += n; }, loop);

  const std::string view = script::viewTextOfFile(file);
  // Every line feed of the view follows a carriage return: loading joins with CR LF.
  for (std::size_t i = 0; i < view.size(); ++i)
    if (view[i] == '\n' && (i == 0 || view[i - 1] != '\r')) std::abort();
  (void)script::fileTextOfView(view);

  const script::RunOutcome outcome = interpreter.launch(view);
  // An error entry is the last thing a run that ended in an error writes.
  if (outcome == script::RunOutcome::ScriptError) {
    const std::string& text = log.text();
    if (text.size() < 5 || text.compare(text.size() - 5, 5, " !!! ") != 0) std::abort();
  }
  if (outcome == script::RunOutcome::NothingToRun && !view.empty()) std::abort();
  // A loop of N passes never counts to N.
  if (passes && loop.count >= static_cast<long long>(passes)) std::abort();
  return 0;
}
