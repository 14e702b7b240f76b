// Padding and checking of the hexadecimal text that people type into the fields, and
// the rules the fields apply on every key.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace reader {

// Upper-case hexadecimal text of the value (negative values as their 32-bit pattern).
std::string hexText(std::int32_t value);
// Zeros in front up to four digits; a longer text comes back as it is.
std::string hexPad4(std::int32_t value);
// Zeros in front up to `width` digits, but only when one to seven are missing.
std::string hexPadWidth7(std::int32_t value, std::uint8_t width);
// As hexPadWidth7 with at most eight zeros.
std::string hexPadWidth8(std::int32_t value, std::uint8_t width);

struct HexMessage {
  const char* text;
  const char* title;
};
inline constexpr HexMessage kInvalidAddress{
    "Invalid Address: check for Hexadecimal format or Adress value", "Hexadecimal Data Required"};
inline constexpr HexMessage kInvalidData{"Invalid Data: check for Hexadecimal format or # of data",
                                         "Hexadecimal data required "};

// "&H" + text when every character is a hexadecimal digit; nullopt when the text is
// empty or at the first bad character (the caller shows kInvalidAddress once).
std::optional<std::string> checkHexAddress(std::string_view text);
// Mode 0 tests every character; any other mode reads groups of two digits and a
// separator and skips the separators. False when the caller must show kInvalidData.
bool checkHexData(std::string_view text, int mode);

// The kinds of field that filter their keys.
enum class FieldKind { Hexadecimal, Binary, Decimal };
// True when the typed character may enter a field of this kind. Control codes up to 31
// (backspace, return) always pass; anything else refused makes the field beep.
bool keyAllowed(FieldKind kind, char32_t key);
inline bool hexFieldKeyPress(char32_t key) { return keyAllowed(FieldKind::Hexadecimal, key); }

// The colour rule of the free frame fields: true for the normal colour, false for red.
// On a change of the text: whole bytes (non-empty, even length) are normal.
bool frameColourNormalOnChange(std::string_view text);
// On a key press of a digit the text does not hold it yet, so the sense is inverted;
// a key down of any other key applies the same test to the text as it stands.
bool frameColourNormalOnKey(std::string_view textBeforeKey);

}  // namespace reader
