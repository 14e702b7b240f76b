// What the two programs print for --version and --help: the only arguments the window
// program knows, answered before any window exists.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace shell {

// "<program> (TL42RQ Development Software) <version>\n"
std::string versionText(const std::string& program);

// The text tl42rq prints for its arguments, or nullopt when it starts as always (no
// argument, or only arguments that are not --version, --help or -h).
std::optional<std::string> programInfoRequest(const std::vector<std::string>& args);

}  // namespace shell
