// tl42rq-script: the script tool without its window, for bench scripts that run
// unattended. It loads the driver library as the program does, runs the file through the
// same interpreter, and writes the trace log to standard output as the tool shows it.
#include <QCoreApplication>
#include <QFile>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "reader/Drivers.h"
#include "reader/TraceLog.h"
#include "script/ScriptInterpreter.h"
#include "shell/GlobVariables.h"
#include "shell/ProgramInfo.h"

namespace {

constexpr const char* kUsage =
    "Usage: tl42rq-script [--loop N] FILE\n"
    "Runs a script file of the TL42RQ script tool against the board's driver library and\n"
    "writes the trace log to standard output, byte for byte as the script tool shows it\n"
    "(CR LF line ends).\n"
    "\n"
    "  --loop N   run the script N times, as LOOP ON SCRIPT with the number N does;\n"
    "             0 runs it until the process is stopped\n"
    "  --help     show this text\n"
    "  --version  show the version\n"
    "\n"
    "The driver library is the file named by TL42RQ_DRIVER, else libTL42RQ.so beside this\n"
    "program, else the one installed with it. With TL42RQ_TRACE_TIME=\"MM-DD-YYYY HH:MM:SS\"\n"
    "every entry carries that date and time instead of the clock's, so that the logs of\n"
    "two runs compare byte for byte.\n"
    "\n"
    "Exit status: 0 the script ran to its end; 1 a script error ended it (the error entry\n"
    "is the last thing printed); 2 the file could not be read or an argument is wrong.\n";

int badArgument(const std::string& message) {
  std::fprintf(stderr, "tl42rq-script: %s (try --help)\n", message.c_str());
  return 2;
}

bool allDigits(const char* s) {
  if (!*s) return false;
  for (; *s; ++s)
    if (*s < '0' || *s > '9') return false;
  return true;
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

  std::string loopPasses;
  bool loop = false;
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) {
    const char* a = argv[i];
    if (std::strcmp(a, "--help") == 0 || std::strcmp(a, "-h") == 0) {
      std::fputs(kUsage, stdout);
      return 0;
    }
    if (std::strcmp(a, "--loop") == 0) {
      if (i + 1 >= argc) return badArgument("--loop needs a number of passes");
      if (!allDigits(argv[i + 1]) || std::strlen(argv[i + 1]) > 18)
        return badArgument(std::string("--loop needs a whole number of passes, not '") + argv[i + 1] + "'");
      loop = true;
      loopPasses = argv[++i];
      continue;
    }
    if (std::strcmp(a, "--") == 0) {
      for (++i; i < argc; ++i) files.emplace_back(argv[i]);
      break;
    }
    if (a[0] == '-' && a[1] != '\0') return badArgument(std::string("unknown option '") + a + "'");
    files.emplace_back(a);
  }
  if (files.size() != 1) return badArgument(files.empty() ? "no script file given" : "give one script file only");

  if (const char* fixed = std::getenv("TL42RQ_TRACE_TIME"); fixed && *fixed) {
    reader::DateTime t{};
    if (!parseTraceTime(fixed, t))
      return badArgument(std::string("TL42RQ_TRACE_TIME must read MM-DD-YYYY HH:MM:SS, not '") + fixed + "'");
    reader::setClock(std::make_shared<reader::FixedClock>(t));
  }

  QFile file(QString::fromLocal8Bit(files[0].c_str()));
  if (!file.open(QIODevice::ReadOnly)) {
    std::fprintf(stderr, "tl42rq-script: cannot read %s: %s\n", files[0].c_str(),
                 file.errorString().toLocal8Bit().constData());
    return 2;
  }
  const QByteArray bytes = file.readAll();
  if (file.error() != QFileDevice::NoError) {
    std::fprintf(stderr, "tl42rq-script: cannot read %s: %s\n", files[0].c_str(),
                 file.errorString().toLocal8Bit().constData());
    return 2;
  }
  file.close();
  // As Load Script: an empty file loads nothing, and nothing runs.
  const std::string view = bytes.isEmpty() ? std::string() : script::viewTextOfFile(bytes.toStdString());

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
  if (loop) controls.switchOn(loopPasses);

  reader::TraceLog log;
  log.setSink(
      [&log](const std::string& piece) {
        std::fwrite(piece.data(), 1, piece.size(), stdout);
        std::fflush(stdout);
        // Everything is on standard output already; an endless loop must not keep it all.
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
  return outcome == script::RunOutcome::ScriptError ? 1 : 0;
}
