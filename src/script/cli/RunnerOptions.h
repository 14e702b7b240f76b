// The command line of tl42rq-script, read without side effects so that it can be tested
// and grown apart from the runner itself.
#pragma once

#include <string>
#include <vector>

namespace script {

struct RunnerOptions {
  bool help = false;
  bool loop = false;
  std::string loopPasses;  // digits only, when `loop`
  std::string scriptFile;
  std::string pcapngFile;  // empty: no capture
  std::string expectLog;   // empty: print the log instead of comparing it
};

struct ParsedArguments {
  RunnerOptions options;
  std::string error;  // empty when the arguments are good; else what is wrong
  bool ok() const { return error.empty(); }
};

// The arguments behind the program's name. --help wins wherever it stands; "--" ends the
// options. --loop N, --pcapng FILE and --expect LOG each take the next argument.
ParsedArguments parseRunnerArguments(const std::vector<std::string>& args);

}  // namespace script
