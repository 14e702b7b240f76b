// The chip's frames as bytes on a serial line, in both directions, with no line code: what
// the serial driver sends and how it cuts the chip's byte stream into answers, and how the
// chip emulator cuts the host's byte stream into commands. Pure and tested.
//
// On the line a command is code, length, data; the echo is the single byte 55. An answer is
// result code, length, data, with two exceptions: the pseudo-response 55 (to the echo and to
// the baud rate command) is that one byte alone, and the answer 90 carries the valid-bit
// count of the tag's short reply where the length would stand, then that one reply byte.
// The driver libraries give every answer as text "RRLL" + data, so 55 reads as "5500".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/hex.h"

namespace serialline {

inline constexpr std::uint8_t kShortReply = 0x90;  // valid bits and one reply byte, no length

// The bytes the chip puts on the line for an answer in text form ("RRLL" + data). Text that
// is no answer (not hexadecimal, shorter than code and length) gives no bytes.
hex::Bytes answerToLine(std::string_view text);
// The text form of an answer as it came off the line.
std::string answerText(const hex::Bytes& line);

// The result codes that can open the chip's answer to a command with this code; a byte
// that opens no answer to the command in flight is noise on the line and is skipped.
bool opensAnswerTo(std::uint8_t command, std::uint8_t resultCode);

// Cuts the chip's byte stream into the answer to one command. Bytes before a result code
// that fits the command are skipped as noise; a half answer stays pending until the rest
// comes (or the exchange times out and the driver drops it with the parser).
class AnswerParser {
 public:
  explicit AnswerParser(std::uint8_t command) : command_(command) {}
  // Feeds bytes; returns the whole answer once it is complete. Bytes behind a complete
  // answer are not part of it and are dropped (the driver clears the line before each
  // command anyway).
  std::optional<hex::Bytes> feed(const std::uint8_t* data, std::size_t size);
  std::size_t skipped() const { return skipped_; }   // noise bytes skipped so far
  bool pending() const { return !frame_.empty(); }   // a started answer waits for its rest

 private:
  std::size_t wanted() const;  // bytes the started answer needs in all; 0 while unknown
  std::uint8_t command_;
  hex::Bytes frame_;
  std::size_t skipped_ = 0;
};

// Cuts the host's byte stream into command frames, as the chip reads its receive line:
// the echo byte alone, else code and length and that many data bytes.
class CommandParser {
 public:
  // Feeds one byte; returns a whole frame when this byte completes one.
  std::optional<hex::Bytes> feed(std::uint8_t byte);
  bool pending() const { return !frame_.empty(); }
  void clear() { frame_.clear(); }

 private:
  hex::Bytes frame_;
};

// How long to wait for the answer to this frame: `base` milliseconds, and for Idle also the
// longest the chip may sleep (its maximum sleep, in wake-up periods of its LFO clock).
int answerTimeoutMs(const hex::Bytes& frame, int baseMs);

}  // namespace serialline
