#include "shell/GlobVariables.h"

namespace glob {

GlobVariables& state() {
  static GlobVariables s;
  return s;
}

void GlobVariables::replaceInStatusPanel1(const std::string& from, const std::string& to) {
  const auto at = statusPanel1.find(from);
  if (at == std::string::npos) return;
  std::string text = statusPanel1;
  text.replace(at, from.size(), to);
  setStatusPanel1(std::move(text));
}

}  // namespace glob
