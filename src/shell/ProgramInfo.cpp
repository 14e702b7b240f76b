#include "shell/ProgramInfo.h"

namespace shell {

namespace {
constexpr const char* kProgramHelp =
    "Usage: tl42rq [--help | --version]\n"
    "Starts the TL42RQ Development Software, the bench tool for the TL42RQ 13.56 MHz RF\n"
    "transceiver on the DEMO-TL42RQ-A board. The window program takes no other arguments.\n"
    "\n"
    "  --help     show this text\n"
    "  --version  show the version\n"
    "\n"
    "The driver library is the file named by TL42RQ_DRIVER, else libTL42RQ.so beside the\n"
    "program, else the one installed with it. Manual: man tl42rq.\n";
}  // namespace

std::string versionText(const std::string& program) {
  return program + " (TL42RQ Development Software) " TL42RQ_VERSION "\n";
}

std::optional<std::string> programInfoRequest(const std::vector<std::string>& args) {
  for (const std::string& a : args) {
    if (a == "--version") return versionText("tl42rq");
    if (a == "--help" || a == "-h") return std::string(kProgramHelp);
  }
  return std::nullopt;
}

}  // namespace shell
