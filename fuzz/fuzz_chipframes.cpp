// Arbitrary text as the requests of KQCmd, Select and SendReceive: every answer must be a
// short hexadecimal text, whatever comes in.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "simulator/board.h"

namespace {
void checkAnswer(const char* answer) {
  const std::size_t n = std::strlen(answer);
  if (n > 255 || n % 2 != 0) __builtin_trap();
  for (std::size_t i = 0; i < n; ++i)
    if (!std::strchr("0123456789ABCDEF", answer[i])) __builtin_trap();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The one board of the library, as the program sees it, with a field of every kind.
  static sim::Board& board = [] () -> sim::Board& {
    static sim::Board b("/nonexistent/TL42RQ_field.json");
    b.loadFieldText(R"({"tags": [
      {"type": "iso15693", "uid": "E0022A0012345678"},
      {"type": "iso14443a", "uid": "04A1B2C3D4E5F6", "atqa": "4400", "sak": "00"},
      {"type": "topaz", "uid": "5E7A1122334455"},
      {"type": "iso14443b", "pupi": "A1B2C3D4"},
      {"type": "pdy", "uid": "D002330012345678"},
      {"type": "felica", "idm": "012E4CD2A3B4C5D6", "pmm": "0120220427674EFF"}]})");
    return b;
  }();
  if (size == 0) return 0;
  // The first byte picks the operation; the rest is the request, NUL-terminated.
  const std::string request(reinterpret_cast<const char*>(data) + 1, size - 1);
  char answer[256];
  std::memset(answer, 0, sizeof answer);
  switch (data[0] % 4) {
    case 0: board.kqCmd(request.c_str(), answer); break;
    case 1: board.select(request.c_str(), answer); break;
    case 2: board.sendReceive(request.c_str(), answer); break;
    default: board.kqCmd(("01" + request).c_str(), answer); break;
  }
  checkAnswer(answer);
  if (data[0] == 0xFF) board.reset();
  return 0;
}
