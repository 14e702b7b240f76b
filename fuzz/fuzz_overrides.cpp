// Arbitrary bytes as answer overrides: the first line is a request text, the rest the
// field file's "answers" list. The loader must refuse or take the entries without
// crashing; taken, every operation must answer within its buffer with or without a
// matching entry, and the dump with the times left must load again.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "simulator/board.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t newline = input.find('\n');
  const std::string request(input.substr(0, newline == std::string_view::npos ? 0 : newline));
  const std::string_view answers = newline == std::string_view::npos ? input : input.substr(newline + 1);

  sim::Board board("/nonexistent/TL42RQ_field.json");
  const std::string field = R"({"tags": [{"type": "iso15693", "uid": "E0022A0012345678", "blockSize": 4,
      "blockCount": 4, "memory": "E1400001"}], "answers": )" + std::string(answers) + "}";
  if (board.loadFieldText(field) != 0) return 0;

  // The answer buffer is 256 characters; the guard behind it must stay untouched.
  char answer[256 + 8];
  const auto check = [&] {
    for (std::size_t i = 256; i < sizeof answer; ++i)
      if (answer[i] != '#') __builtin_trap();
    if (std::memchr(answer, '\0', 256) == nullptr) __builtin_trap();
  };
  const auto call = [&](auto op) {
    std::memset(answer, '#', sizeof answer);
    (void)op(answer);
    check();
  };
  for (int round = 0; round < 2; ++round) {
    (void)board.usbConnect();
    (void)board.usbHandleCheck();
    call([&](char* a) { return board.dllRevision(a); });
    call([&](char* a) { return board.mcuRevision(a); });
    call([&](char* a) { return board.idn(a); });
    call([&](char* a) { return board.echo(a); });
    call([&](char* a) { return board.select("010D", a); });
    call([&](char* a) { return board.select(request.c_str(), a); });
    call([&](char* a) { return board.sendReceive(request.c_str(), a); });
    call([&](char* a) { return board.sendReceive("260100", a); });
    call([&](char* a) { return board.kqCmd(request.c_str(), a); });
    call([&](char* a) { return board.fieldOff(a); });
    call([&](char* a) { return board.resetSpi(a); });
    call([&](char* a) { return board.irqPulse(a); });
    call([&](char* a) { return board.nssPulse(a); });
    call([&](char* a) { return board.pollingReading(a); });
    call([&](char* a) { return board.interfacePinState(a); });
    if (round == 0) (void)board.reset();
  }

  static char whole[1 << 20];
  const std::int32_t length = board.dumpField(whole, sizeof whole);
  if (length > 0 && static_cast<std::size_t>(length) < sizeof whole && board.loadFieldText(whole) != 0)
    __builtin_trap();
  return 0;
}
