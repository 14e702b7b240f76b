// Reading the three answers of the board detection.
#pragma once

#include <string>

namespace shell {

// "0.5.0" -> 5, "1.2" -> 12: the first three characters without the point, as a number;
// 0 when they are no number.
int dllRevisionNumber(const std::string& answer);
// "0002010A" -> "1.10": the count at characters 3-4 read as decimal (as the board has
// always been read), then each element in decimal, joined by points.
std::string mcuRevisionText(const std::string& answer);
// The chip's name from its identification answer: the bytes from the fifth character
// on, without the two trailing CRC bytes, as characters.
std::string chipNameOfIdn(const std::string& answer);

}  // namespace shell
