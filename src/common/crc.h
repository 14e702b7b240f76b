// Frame checks used on the air: the ISO/IEC 13239 CRC of ISO 15693 and ISO 14443-B,
// the CRC_A of ISO 14443-A, and CRC-32. The program and the simulated board share them,
// so that both sides of every frame agree by construction.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// ISO 15693 CRC of the bytes of a hexadecimal text (at most 256 bytes; an odd last digit
// is dropped), as four digits with the low byte first, as the frame carries it.
std::string crc16Text(std::string_view frameText);
// The same on bytes.
std::string crc16Bytes(const std::uint8_t* data, std::size_t size);
inline std::string crc16Bytes(const std::vector<std::uint8_t>& b) {
  return crc16Bytes(b.data(), b.size());
}

namespace crc {
// Reflected CRC-16 with polynomial 0x8408, given start value, no final complement.
std::uint16_t reflected16(const std::uint8_t* data, std::size_t size, std::uint16_t start);
// ISO 15693 and ISO 14443-B (CRC_B): start 0xFFFF, complemented.
std::uint16_t iso13239(const std::uint8_t* data, std::size_t size);
// ISO 14443-A (CRC_A): start 0x6363, not complemented.
std::uint16_t iso14443A(const std::uint8_t* data, std::size_t size);
// Appends the CRC low byte first.
void appendLowFirst(std::vector<std::uint8_t>& frame, std::uint16_t crc);
}  // namespace crc

// CRC-32 of IEEE 802.3 with its table built at creation; the last checksum is kept.
class CRC32 {
 public:
  CRC32();
  std::string Check() const;             // CRC of "123456789", eight digits
  std::uint32_t CheckSum() const { return last_; }
  std::string Poly() const;              // the reflected polynomial, eight digits
  std::uint32_t CRC(const std::vector<std::uint8_t>& data);

 private:
  std::uint32_t compute(const std::uint8_t* data, std::size_t size) const;
  static constexpr std::uint32_t kPolynomial = 0xEDB88320u;
  std::array<std::uint32_t, 256> table_{};
  std::uint32_t last_ = 0;
};
