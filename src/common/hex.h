// Hexadecimal text, two digits a byte, as every frame travels. Shared by the program
// and the simulated board; no Qt here.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hex {

using Bytes = std::vector<std::uint8_t>;

bool isDigit(char c);
int digitValue(char c);  // -1 when c is no hexadecimal digit

// Upper-case text of the bytes, no separators.
std::string fromBytes(const std::uint8_t* data, std::size_t size);
inline std::string fromBytes(const Bytes& b) { return fromBytes(b.data(), b.size()); }
std::string byte(std::uint8_t value);  // two upper-case digits

// Bytes of the text when every character is a digit and the count is even.
std::optional<Bytes> toBytes(std::string_view text);
// Bytes of the leading pairs of digits; an odd last digit is dropped and a pair with a
// non-digit in it counts as 0. Used where a frame is taken as it stands.
Bytes toBytesLenient(std::string_view text);

// Value of the text as an unsigned hexadecimal number; nullopt when empty, not hex,
// or too long for 32 bits.
std::optional<std::uint32_t> toNumber(std::string_view text);

std::string upper(std::string_view text);
std::string withoutBlanks(std::string_view text);

}  // namespace hex
