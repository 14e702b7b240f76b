// Arbitrary bytes on the serial line, both ways: as the chip's answers to the serial
// driver (in pieces, with hang-ups and silences), and as the host's commands to the
// emulated chip. No answer text may be anything but short hexadecimal text, and no frame
// the emulator cuts may be anything but a whole command.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>

#include "serial/driver.h"
#include "serial/emulator/emulatedchip.h"
#include "serial/frames.h"

namespace {

void checkAnswer(const char* answer) {
  const std::size_t n = std::strlen(answer);
  if (n > 255 || n % 2 != 0) __builtin_trap();
  for (std::size_t i = 0; i < n; ++i)
    if (!std::strchr("0123456789ABCDEF", answer[i])) __builtin_trap();
}

// Plays the input as what the chip sends: each read takes the next piece, whose size is
// given by one byte of the input; 0 is a silence, FF a hang-up.
class FuzzLine final : public serialline::Line {
 public:
  FuzzLine(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool open() override { return open_ = at_ < size_; }
  void close() override { open_ = false; }
  bool isOpen() const override { return open_; }
  bool write(const hex::Bytes&, int) override { return open_; }
  serialline::ReadResult read(hex::Bytes& out, int) override {
    if (at_ >= size_) return serialline::ReadResult::TimedOut;
    const std::uint8_t n = data_[at_++];
    if (n == 0) return serialline::ReadResult::TimedOut;
    if (n == 0xFF) {
      open_ = false;
      return serialline::ReadResult::HungUp;
    }
    const std::size_t take = std::min<std::size_t>(n, size_ - at_);
    out.insert(out.end(), data_ + at_, data_ + at_ + take);
    at_ += take;
    return serialline::ReadResult::Data;
  }
  void discardInput() override {}
  bool pulseWakeUp() override { return false; }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
  bool open_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzLine line(data, size);
  serialline::SerialDriver driver(line, 1);
  char answer[256];
  for (int round = 0; round < 4; ++round) {
    std::memset(answer, 0, sizeof answer);
    driver.sendReceive("260100", answer);
    checkAnswer(answer);
    std::memset(answer, 0, sizeof answer);
    driver.echo(answer);
    checkAnswer(answer);
    std::memset(answer, 0, sizeof answer);
    driver.kqCmd("010803620100", answer);
    checkAnswer(answer);
    driver.usbConnect();
  }

  static serialline::EmulatedChip chip("/nonexistent/TL42RQ_field.json");
  serialline::CommandParser commands;
  for (std::size_t i = 0; i < size; ++i) {
    const auto frame = commands.feed(data[i]);
    if (!frame) continue;
    if (!((*frame)[0] == 0x55 && frame->size() == 1) && (frame->size() < 2 || (*frame)[1] != frame->size() - 2))
      __builtin_trap();
    const hex::Bytes reply = chip.answer(*frame);
    if (reply.empty()) __builtin_trap();
  }
  return 0;
}
