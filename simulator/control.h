// The control interface of the simulated board (TL42RQSim_*): loading and dumping the
// field, unplugging the board, power-on reset. The helpers here are shared with the
// operations that fill a caller's buffer.
#pragma once

#include <cstdint>
#include <string_view>

namespace sim {

// The caller's answer buffer holds 256 characters: 255 and the NUL.
inline constexpr std::size_t kAnswerCapacity = 255;

// Writes the text, cut to kAnswerCapacity, and a NUL; nothing when `answer` is null.
void writeAnswer(char* answer, std::string_view text);
// Text that begins with '{' after blanks is a field in JSON; anything else names a file.
bool isFieldText(std::string_view textOrPath);
// Copies the text into `out` of `size` characters, NUL included, cut if needed, and
// returns the full length of the text.
std::int32_t copyOut(std::string_view text, char* out, std::int32_t size);

}  // namespace sim
