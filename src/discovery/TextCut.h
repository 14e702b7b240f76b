// Cutting answers by character positions counted from 1, as the discovery tools read
// them. Positions and lengths outside the text give what lies inside it (possibly
// nothing), never a failure: answers from a board can be of any length.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace discovery {

// `length` characters from `position` (counted from 1).
std::string mid(std::string_view text, long position, long length);
std::string left(std::string_view text, long length);
bool startsWith(std::string_view text, std::string_view prefix);
bool endsWith(std::string_view text, std::string_view suffix);
// Characters 3 and 4 of an answer read as a hexadecimal number; 0 when they are none.
long hexLength(std::string_view answer);
// The leading hexadecimal digits of a field's text as a number, as "&h" in front of it
// reads: "1F" is 31, "1G" is 1, "" and "G" are 0. Too many digits keep the low 32 bits.
std::uint32_t hexFieldValue(std::string_view text);
// A byte field's text after a key: a non-empty text cut to 8 bits as two digits; an
// empty text stays empty.
std::string byteFieldText(std::string_view text);
// Two hexadecimal digits at least: 5 gives "05", 256 gives "100"; below zero gives the
// 32-bit pattern, as the padding routine does.
std::string twoDigits(long value);
// The wake-up reason of an Idle answer or of a read of register 62: characters 5 to 6.
std::string wakeUpReason(std::string_view answer);
inline constexpr const char* kReasonTimeOut = "01";
inline constexpr const char* kReasonTagDetect = "02";

}  // namespace discovery
