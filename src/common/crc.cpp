#include "common/crc.h"

#include <cstdio>

#include "common/hex.h"

namespace crc {

std::uint16_t reflected16(const std::uint8_t* data, std::size_t size, std::uint16_t start) {
  std::uint16_t value = start;
  for (std::size_t i = 0; i < size; ++i) {
    value ^= data[i];
    for (int bit = 0; bit < 8; ++bit)
      value = (value & 1) ? static_cast<std::uint16_t>((value >> 1) ^ 0x8408) : static_cast<std::uint16_t>(value >> 1);
  }
  return value;
}

std::uint16_t iso13239(const std::uint8_t* data, std::size_t size) {
  return static_cast<std::uint16_t>(~reflected16(data, size, 0xFFFF));
}

std::uint16_t iso14443A(const std::uint8_t* data, std::size_t size) {
  return reflected16(data, size, 0x6363);
}

void appendLowFirst(std::vector<std::uint8_t>& frame, std::uint16_t value) {
  frame.push_back(static_cast<std::uint8_t>(value & 0xFF));
  frame.push_back(static_cast<std::uint8_t>(value >> 8));
}

}  // namespace crc

std::string crc16Bytes(const std::uint8_t* data, std::size_t size) {
  const std::uint16_t value = crc::iso13239(data, size);
  return hex::byte(static_cast<std::uint8_t>(value & 0xFF)) + hex::byte(static_cast<std::uint8_t>(value >> 8));
}

std::string crc16Text(std::string_view frameText) {
  constexpr std::size_t kMaxBytes = 256;
  const auto bytes = hex::toBytesLenient(frameText.substr(0, kMaxBytes * 2));
  return crc16Bytes(bytes.data(), bytes.size());
}

CRC32::CRC32() {
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t entry = i;
    for (int bit = 0; bit < 8; ++bit) entry = (entry & 1) ? (entry >> 1) ^ kPolynomial : entry >> 1;
    table_[i] = entry;
  }
}

std::uint32_t CRC32::compute(const std::uint8_t* data, std::size_t size) const {
  std::uint32_t value = 0xFFFFFFFFu;
  for (std::size_t i = 0; i < size; ++i) value = table_[(value ^ data[i]) & 0xFF] ^ (value >> 8);
  return ~value;
}

std::uint32_t CRC32::CRC(const std::vector<std::uint8_t>& data) {
  last_ = compute(data.data(), data.size());
  return last_;
}

static std::string eightDigits(std::uint32_t value) {
  char text[9];
  std::snprintf(text, sizeof text, "%08X", value);
  return text;
}

std::string CRC32::Check() const {
  static constexpr std::uint8_t kText[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
  return eightDigits(compute(kText, sizeof kText));
}

std::string CRC32::Poly() const { return eightDigits(kPolynomial); }
