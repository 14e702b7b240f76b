// Arbitrary bytes as a field file: the loader must refuse or take them without crashing,
// and the board must go on answering whatever field it was left with.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "simulator/board.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  // A board of its own for each input, with no file to read at its first call.
  sim::Board board("/nonexistent/TL42RQ_field.json");
  board.loadFieldText(text);
  (void)board.lastError();

  char answer[256];
  board.idn(answer);
  board.mcuRevision(answer);
  board.dllRevision(answer);
  board.interfacePinState(answer);
  board.select("010D", answer);
  board.sendReceive("260100", answer);
  board.select("02000180", answer);
  board.sendReceive("2607", answer);
  board.select("03010180", answer);
  board.sendReceive("050000", answer);
  board.select("0451", answer);
  board.sendReceive("00FFFF0000", answer);

  char small[64];
  board.dumpField(small, sizeof small);
  // What was dumped must load again.
  static char whole[1 << 20];
  const std::int32_t length = board.dumpField(whole, sizeof whole);
  if (length > 0 && static_cast<std::size_t>(length) < sizeof whole && board.loadFieldText(whole) != 0)
    __builtin_trap();
  return 0;
}
