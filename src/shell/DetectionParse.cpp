#include "shell/DetectionParse.h"

#include <algorithm>
#include <cstdlib>

#include "common/hex.h"

namespace shell {

namespace {
// Digits at the front of the text as a decimal number, like a basic Val() of them.
long leadingNumber(const std::string& text) {
  long v = 0;
  for (char c : text) {
    if (c < '0' || c > '9') break;
    v = v * 10 + (c - '0');
    if (v > 1000000) break;
  }
  return v;
}

int hexPair(const std::string& text, std::size_t at) {
  if (at + 2 > text.size()) return 0;
  const int hi = hex::digitValue(text[at]);
  const int lo = hex::digitValue(text[at + 1]);
  return hi < 0 || lo < 0 ? 0 : hi * 16 + lo;
}
}  // namespace

int dllRevisionNumber(const std::string& answer) {
  std::string first = answer.substr(0, 3);
  first.erase(std::remove(first.begin(), first.end(), '.'), first.end());
  return static_cast<int>(leadingNumber(first));
}

std::string mcuRevisionText(const std::string& answer) {
  const long count = answer.size() >= 4 ? leadingNumber(answer.substr(2, 2)) : 0;
  std::string text;
  for (long i = 0; i < count; ++i) {
    text += std::to_string(hexPair(answer, 4 + 2 * static_cast<std::size_t>(i)));
    if (i < count - 1) text += ".";
  }
  return text;
}

std::string chipNameOfIdn(const std::string& answer) {
  std::string name;
  const long last = static_cast<long>(answer.size()) / 2 - 5;
  for (long i = 0; i <= last; ++i) {
    const int code = hexPair(answer, 4 + 2 * static_cast<std::size_t>(i));
    name.push_back(static_cast<char>(code));
  }
  return name;
}

}  // namespace shell
