// tl42rq-script: the script tool without its window, for bench scripts that run
// unattended. It loads the driver library as the program does, runs the file through the
// same interpreter, and writes the trace log to standard output as the tool shows it.
#include <QCoreApplication>
#include <QFile>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "export/Capture.h"
#include "reader/Drivers.h"
#include "reader/ExchangeRecord.h"
#include "reader/TraceLog.h"
#include "script/ScriptInterpreter.h"
#include "script/cli/LogCompare.h"
#include "script/cli/RunnerOptions.h"
#include "shell/GlobVariables.h"
#include "shell/ProgramInfo.h"

namespace {

constexpr const char* kUsage =
    "Usage: tl42rq-script [--loop N] FILE\n"
    "       tl42rq-script [--loop N] [--pcapng CAPTURE] [--expect LOG] FILE\n"
    "Runs a script file of the TL42RQ script tool against the board's driver library and\n"
    "writes the trace log to standard output, byte for byte as the script tool shows it\n"
    "(CR LF line ends).\n"
    "\n"
    "  --loop N          run the script N times, as LOOP ON SCRIPT with the number N does;\n"
    "                    0 runs it until the process is stopped\n"
    "  --pcapng CAPTURE  also write every driver call of the run to CAPTURE, a pcapng file\n"
    "                    that Wireshark reads (ISO 14443 frames decoded, the rest as data)\n"
    "  --expect LOG      compare the run's log with LOG (a saved log) instead of printing\n"
    "                    it; only the dates and times of the entries may differ. When they\n"
    "                    differ, a unified diff of the first differences (at most 40 lines)\n"
    "                    goes to standard output\n"
    "  --help            show this text\n"
    "  --version         show the version\n"
    "\n"
    "The driver library is the file named by TL42RQ_DRIVER, else libTL42RQ.so beside this\n"
    "program, else the one installed with it. With TL42RQ_TRACE_TIME=\"MM-DD-YYYY HH:MM:SS\"\n"
    "every entry carries that date and time instead of the clock's, so that the logs of\n"
    "two runs compare byte for byte.\n"
    "\n"
    "Exit status: 0 the script ran to its end; 1 a script error ended it (the error entry\n"
    "is the last thing printed); 2 the file could not be read or an argument is wrong.\n"
    "With --expect: 0 the logs agree, 1 they differ, 2 a file could not be read or\n"
    "written or an argument is wrong.\n";

int badArgument(const std::string& message) {
  std::fprintf(stderr, "tl42rq-script: %s (try --help)\n", message.c_str());
  return 2;
}

// "MM-DD-YYYY HH:MM:SS", the trace's own stamp.
bool parseTraceTime(const char* text, reader::DateTime& t) {
  int consumed = 0;
  if (std::sscanf(text, "%2d-%2d-%4d %2d:%2d:%2d%n", &t.month, &t.day, &t.year, &t.hour, &t.minute, &t.second,
                  &consumed) != 6)
    return false;
  return text[consumed] == '\0' && t.month >= 1 && t.month <= 12 && t.day >= 1 && t.day <= 31 && t.hour <= 23 &&
         t.minute <= 59 && t.second <= 59 && t.hour >= 0 && t.minute >= 0 && t.second >= 0;
}

// The whole file, or a message and false.
bool readWhole(const std::string& path, std::string& text) {
  QFile f(QString::fromLocal8Bit(path.c_str()));
  if (!f.open(QIODevice::ReadOnly)) {
    std::fprintf(stderr, "tl42rq-script: cannot read %s: %s\n", path.c_str(), f.errorString().toLocal8Bit().constData());
    return false;
  }
  const QByteArray bytes = f.readAll();
  if (f.error() != QFileDevice::NoError) {
    std::fprintf(stderr, "tl42rq-script: cannot read %s: %s\n", path.c_str(), f.errorString().toLocal8Bit().constData());
    return false;
  }
  text.assign(bytes.constData(), static_cast<std::size_t>(bytes.size()));
  return true;
}

// --version anywhere before "--" prints the version and ends the run.
bool printVersionIfAsked(int argc, char** argv) {
  for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
    if (std::strcmp(argv[i], "--version") == 0) {
      std::fputs(shell::versionText("tl42rq-script").c_str(), stdout);
      return true;
    }
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (printVersionIfAsked(argc, argv)) return 0;
  QCoreApplication app(argc, argv);

  const script::ParsedArguments parsed = script::parseRunnerArguments(std::vector<std::string>(argv + 1, argv + argc));
  if (!parsed.ok()) return badArgument(parsed.error);
  const script::RunnerOptions& options = parsed.options;
  if (options.help) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (const char* fixed = std::getenv("TL42RQ_TRACE_TIME"); fixed && *fixed) {
    reader::DateTime t{};
    if (!parseTraceTime(fixed, t))
      return badArgument(std::string("TL42RQ_TRACE_TIME must read MM-DD-YYYY HH:MM:SS, not '") + fixed + "'");
    reader::setClock(std::make_shared<reader::FixedClock>(t));
  }

  std::string bytes;
  if (!readWhole(options.scriptFile, bytes)) return 2;
  // As Load Script: an empty file loads nothing, and nothing runs.
  const std::string view = bytes.empty() ? std::string() : script::viewTextOfFile(bytes);

  // The saved log to compare with, read whole before anything runs.
  std::string expected;
  const bool comparing = !options.expectLog.empty();
  if (comparing && !readWhole(options.expectLog, expected)) return 2;

  // The capture, written as the calls happen.
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> captureFile(nullptr, &std::fclose);
  std::unique_ptr<capture::StreamWriter> captureWriter;
  if (!options.pcapngFile.empty()) {
    captureFile.reset(std::fopen(options.pcapngFile.c_str(), "wb"));
    if (!captureFile) {
      std::fprintf(stderr, "tl42rq-script: cannot write %s: %s\n", options.pcapngFile.c_str(), std::strerror(errno));
      return 2;
    }
    captureWriter = std::make_unique<capture::StreamWriter>([f = captureFile.get()](const pcapng::Bytes& b) {
      return std::fwrite(b.data(), 1, b.size(), f) == b.size() && std::fflush(f) == 0;
    });
  }
  reader::ObserveExchanges observe(captureWriter.get());

  std::unique_ptr<reader::ReaderDriver> driver = reader::LibraryDriver::load(
      reader::defaultLibraryPath(QCoreApplication::applicationDirPath().toStdString()));
  if (dynamic_cast<reader::MissingDriver*>(driver.get()))
    std::fprintf(stderr, "tl42rq-script: %s; every call answers status 5\n", driver->description().c_str());
  reader::setDriver(driver.get());

  // What the script tool sets when it opens.
  auto& g = glob::state();
  g.scriptChipId = "00";
  g.scriptLoop = false;

  script::PlainLoopControls controls;
  if (options.loop) controls.switchOn(options.loopPasses);

  reader::TraceLog log;
  std::string runLog;
  log.setSink(
      [&log, &runLog, comparing](const std::string& piece) {
        if (comparing) {
          runLog += piece;
        } else {
          std::fwrite(piece.data(), 1, piece.size(), stdout);
          std::fflush(stdout);
        }
        // Everything is on standard output or in runLog already; an endless loop must not
        // keep it twice.
        if (log.text().size() > (1u << 20)) log.clear();
      },
      nullptr);

  script::Interpreter interpreter(*driver, log,
                                  [](long long turns) {
                                    for (long long i = 0; i < turns; ++i) QCoreApplication::processEvents();
                                  },
                                  controls);
  const script::RunOutcome outcome = interpreter.launch(view);
  std::fflush(stdout);
  reader::setDriver(nullptr);
  if (captureWriter && captureWriter->failed()) {
    std::fprintf(stderr, "tl42rq-script: cannot write %s\n", options.pcapngFile.c_str());
    return 2;
  }
  if (comparing) {
    const script::LogComparison c = script::compareLogs(expected, runLog, options.expectLog, options.scriptFile + " (this run)");
    std::fputs(c.diff.c_str(), stdout);
    return c.same ? 0 : 1;
  }
  return outcome == script::RunOutcome::ScriptError ? 1 : 0;
}
