#include "reader/HexText.h"

#include <cstdio>

#include "common/hex.h"

namespace reader {

std::string hexText(std::int32_t value) {
  char text[9];
  std::snprintf(text, sizeof text, "%X", static_cast<std::uint32_t>(value));
  return text;
}

namespace {
std::string padded(std::int32_t value, std::size_t width, std::size_t maxZeros) {
  std::string text = hexText(value);
  if (text.size() >= width) return text;
  const std::size_t missing = width - text.size();
  if (missing > maxZeros) return text;
  return std::string(missing, '0') + text;
}
}  // namespace

std::string hexPad4(std::int32_t value) { return padded(value, 4, 4); }
std::string hexPadWidth7(std::int32_t value, std::uint8_t width) { return padded(value, width, 7); }
std::string hexPadWidth8(std::int32_t value, std::uint8_t width) { return padded(value, width, 8); }

std::optional<std::string> checkHexAddress(std::string_view text) {
  if (text.empty()) return std::nullopt;
  for (char c : text)
    if (!hex::isDigit(c)) return std::nullopt;
  return "&H" + std::string(text);
}

bool checkHexData(std::string_view text, int mode) {
  if (text.empty()) return false;
  if (mode == 0) {
    for (char c : text)
      if (!hex::isDigit(c)) return false;
    return true;
  }
  const std::size_t groups = text.size() / 3;
  for (std::size_t i = 0; i < groups; ++i)
    if (!hex::isDigit(text[3 * i]) || !hex::isDigit(text[3 * i + 1])) return false;
  return true;
}

bool keyAllowed(FieldKind kind, char32_t key) {
  if (key <= 31) return true;
  switch (kind) {
    case FieldKind::Hexadecimal:
      return key < 128 && hex::isDigit(static_cast<char>(key));
    case FieldKind::Binary:
      return key == U'0' || key == U'1';
    case FieldKind::Decimal:
      return key >= U'0' && key <= U'9';
  }
  return false;
}

bool frameColourNormalOnChange(std::string_view text) { return !text.empty() && text.size() % 2 == 0; }
bool frameColourNormalOnKey(std::string_view textBeforeKey) {
  return !textBeforeKey.empty() && textBeforeKey.size() % 2 == 1;
}

}  // namespace reader
