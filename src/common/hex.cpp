#include "common/hex.h"

namespace hex {

bool isDigit(char c) { return digitValue(c) >= 0; }

int digitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

static constexpr char kDigits[] = "0123456789ABCDEF";

std::string byte(std::uint8_t value) {
  return std::string{kDigits[value >> 4], kDigits[value & 0x0F]};
}

std::string fromBytes(const std::uint8_t* data, std::size_t size) {
  std::string out;
  out.reserve(size * 2);
  for (std::size_t i = 0; i < size; ++i) {
    out.push_back(kDigits[data[i] >> 4]);
    out.push_back(kDigits[data[i] & 0x0F]);
  }
  return out;
}

std::optional<Bytes> toBytes(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  Bytes out;
  out.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int hi = digitValue(text[i]);
    const int lo = digitValue(text[i + 1]);
    if (hi < 0 || lo < 0) return std::nullopt;
    out.push_back(static_cast<std::uint8_t>(hi << 4 | lo));
  }
  return out;
}

Bytes toBytesLenient(std::string_view text) {
  Bytes out;
  out.reserve(text.size() / 2);
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    const int hi = digitValue(text[i]);
    const int lo = digitValue(text[i + 1]);
    out.push_back(hi < 0 || lo < 0 ? 0 : static_cast<std::uint8_t>(hi << 4 | lo));
  }
  return out;
}

std::optional<std::uint32_t> toNumber(std::string_view text) {
  if (text.empty() || text.size() > 8) return std::nullopt;
  std::uint32_t value = 0;
  for (char c : text) {
    const int d = digitValue(c);
    if (d < 0) return std::nullopt;
    value = value << 4 | static_cast<std::uint32_t>(d);
  }
  return value;
}

std::string upper(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return out;
}

std::string withoutBlanks(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text)
    if (c != ' ') out.push_back(c);
  return out;
}

}  // namespace hex
