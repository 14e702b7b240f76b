// The usage file lies beside the program and may hold anything: parsing it and reading
// its colour must never crash, and a line the program wrote must read back the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "shell/UsageFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  (void)shell::colourValue(text);
  const auto prefs = shell::parseUsageText(text);
  if (!prefs) return 0;
  (void)shell::colourValue(prefs->backgroundColor);

  // The program writes its fields in quotes without escaping, so a value without a quote
  // comes back exactly.
  if (prefs->lastDirectory.find('"') == std::string::npos && prefs->backgroundColor.find('"') == std::string::npos) {
    const auto again = shell::parseUsageText(shell::usageLine(prefs->lastDirectory, prefs->backgroundColor));
    if (!again || again->lastDirectory != prefs->lastDirectory || again->backgroundColor != prefs->backgroundColor)
      std::abort();
  }
  return 0;
}
