#include "script/cli/RunnerOptions.h"

namespace script {

namespace {

bool allDigits(const std::string& s) {
  if (s.empty()) return false;
  for (char c : s)
    if (c < '0' || c > '9') return false;
  return true;
}

}  // namespace

ParsedArguments parseRunnerArguments(const std::vector<std::string>& args) {
  ParsedArguments p;
  RunnerOptions& o = p.options;
  std::vector<std::string> files;
  for (const std::string& a : args)
    if (a == "--help" || a == "-h") {
      o.help = true;
      return p;
    }
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool hasValue = i + 1 < args.size();
    if (a == "--loop") {
      if (!hasValue) return p.error = "--loop needs a number of passes", p;
      if (!allDigits(args[i + 1]) || args[i + 1].size() > 18)
        return p.error = "--loop needs a whole number of passes, not '" + args[i + 1] + "'", p;
      o.loop = true;
      o.loopPasses = args[++i];
      continue;
    }
    if (a == "--pcapng" || a == "--expect") {
      if (!hasValue || args[i + 1].empty()) return p.error = a + " needs a file name", p;
      (a == "--pcapng" ? o.pcapngFile : o.expectLog) = args[++i];
      continue;
    }
    if (a == "--") {
      files.insert(files.end(), args.begin() + static_cast<std::ptrdiff_t>(i) + 1, args.end());
      break;
    }
    if (a.size() > 1 && a[0] == '-') return p.error = "unknown option '" + a + "'", p;
    files.push_back(a);
  }
  if (files.size() != 1) return p.error = files.empty() ? "no script file given" : "give one script file only", p;
  // A comparison happens when the run ends; an endless loop never gets there.
  if (!o.expectLog.empty() && o.loop && o.loopPasses.find_first_not_of('0') == std::string::npos)
    return p.error = "--expect cannot wait for the end of an endless --loop 0", p;
  o.scriptFile = files[0];
  return p;
}

}  // namespace script
