#include "discovery/TextCut.h"

#include "common/hex.h"
#include "reader/HexText.h"

namespace discovery {

std::string mid(std::string_view text, long position, long length) {
  if (length <= 0 || position < 1) return {};
  const auto start = static_cast<std::size_t>(position - 1);
  if (start >= text.size()) return {};
  return std::string(text.substr(start, static_cast<std::size_t>(length)));
}

std::string left(std::string_view text, long length) { return mid(text, 1, length); }

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

bool endsWith(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

long hexLength(std::string_view answer) { return static_cast<long>(hexFieldValue(mid(answer, 3, 2))); }

std::uint32_t hexFieldValue(std::string_view text) {
  std::uint32_t value = 0;
  for (char c : text) {
    const int digit = hex::digitValue(c);
    if (digit < 0) break;
    value = (value << 4) | static_cast<std::uint32_t>(digit);
  }
  return value;
}

std::string byteFieldText(std::string_view text) {
  if (text.empty()) return {};
  return hex::byte(static_cast<std::uint8_t>(hexFieldValue(text) & 0xFF));
}

std::string twoDigits(long value) { return reader::hexPadWidth7(static_cast<std::int32_t>(value), 2); }

std::string wakeUpReason(std::string_view answer) { return mid(answer, 5, 2); }

}  // namespace discovery
