// The TL42RQ transceiver: its command set, registers and the reader side of its RF field.
// A command frame is code, length, data (the echo is the single byte 55); every answer is
// result code, length, data as hexadecimal text. Commands are rows of one table keyed by
// their code, so a new command is one row and one member function.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "common/hex.h"
#include "simulator/fieldfile.h"
#include "simulator/tags/tag.h"

namespace sim {

// Result codes at the head of the chip's answers.
enum class Result : std::uint8_t {
  Ok = 0x00,
  Echo = 0x55,
  TagAnswer = 0x80,
  InvalidLength = 0x82,    // also: a frame that is no whole number of bytes, an unknown command
  InvalidProtocol = 0x83,  // Protocol Select with a code the chip does not have
  CommunicationError = 0x86,
  NoTag = 0x87,            // frame wait time-out: no tag answered, or no reader protocol is on
  BufferOverflow = 0x89,   // the tag's answer would not fit the answer buffer
  NoField = 0x8F,          // Listen in a card protocol that must not wait for a reader's field
};

// The answer "RRLL" + data: result code, length, data.
std::string answerText(Result result, const hex::Bytes& data = {});

// Last byte of a Send Receive answer ("protocol result"): 00 for a good reception.
inline constexpr std::uint8_t kTailCrcError = 0x02;  // the tag's CRC does not match its frame
// ISO 15693 tags that answered different bytes in one slot: the chip passes on what it
// heard, their bits on top of each other, with this mark (their CRC then fails too).
inline constexpr std::uint8_t kTailCollision = 0x01;

// Reader and card protocols of command 02.
struct ProtocolRow {
  std::uint8_t code;
  const char* name;
  std::optional<Air> air;         // the air a reader protocol speaks; none for field off and card modes
  std::uint32_t parameterCounts;  // allowed numbers of parameter bytes, bit n for n bytes
  bool transmissionFlag;          // Send Receive frames end in the transmission flag byte
};
const ProtocolRow* findProtocol(std::uint8_t code);
// The card (listening) protocols: ISO 14443-A, ISO 14443-B and ISO 18092 card emulation.
bool isCardProtocol(std::uint8_t code);

// Why the chip left Idle, as its answer and register 62 give it.
enum class WakeUp : std::uint8_t {
  TimeOut = 0x01,
  TagDetect = 0x02,
  IrqIn = 0x08,  // a low pulse on IRQ_IN
  SpiNss = 0x10, // a low pulse on SPI_SS
};

class Chip {
 public:
  static constexpr std::uint8_t kFieldOff = 0x00;
  static constexpr std::uint8_t kWakeUpReason = 0x62;  // why the chip left Idle: 01 time-out, 02 tag detect
  static constexpr std::uint8_t kArcIndex = 0x68;      // selects the analogue register behind 0x69
  static constexpr std::uint8_t kArcData = 0x69;
  static constexpr std::uint8_t kArcB = 0x01;          // modulation depth (high digit) and receiver gain

  Chip() { reset(); }

  // Power-on state: field off, registers at their power-on values; the tags lose power.
  void powerOn(FieldContents& field);
  // Runs one command frame and returns the answer text.
  std::string execute(const hex::Bytes& frame, FieldContents& field);
  // Switches the RF field off (protocol 00).
  void fieldOff(FieldContents& field);

  std::uint8_t protocol() const { return protocol_; }
  const hex::Bytes& protocolParameters() const { return parameters_; }
  std::uint8_t readRegister(std::uint8_t address) const;
  // ATQA, SAK and UID of the anti-collision filter (command 0D); empty while it is off.
  const hex::Bytes& antiCollisionFilter() const { return acFilter_; }
  std::uint8_t arc(std::uint8_t index) const { return index == kArcB ? arcB_[protocol_] : arc_[index]; }
  // What the tag detector reads: the antenna's level without a tag, lowered by every tag
  // that lies in the field (simulator/wakeup.h).
  static int detectorLevel(const FieldContents& field);

 private:
  struct Command {
    std::uint8_t code;
    const char* name;
    std::string (Chip::*run)(const hex::Bytes& data, FieldContents& field);
  };
  static const Command kCommands[];

  void reset();
  void writeRegister(std::uint8_t address, std::uint8_t value);
  std::string idn(const hex::Bytes& data, FieldContents& field);
  std::string protocolSelect(const hex::Bytes& data, FieldContents& field);
  std::string sendRecv(const hex::Bytes& data, FieldContents& field);
  std::string readRegisters(const hex::Bytes& data, FieldContents& field);
  std::string writeRegisters(const hex::Bytes& data, FieldContents& field);
  std::string pollField(const hex::Bytes& data, FieldContents& field);
  std::string listen(const hex::Bytes& data, FieldContents& field);
  std::string send(const hex::Bytes& data, FieldContents& field);
  std::string idle(const hex::Bytes& data, FieldContents& field);
  std::string baudRate(const hex::Bytes& data, FieldContents& field);
  std::string subFrequency(const hex::Bytes& data, FieldContents& field);
  std::string acFilter(const hex::Bytes& data, FieldContents& field);
  std::string testMode(const hex::Bytes& data, FieldContents& field);
  std::string sleepMode(const hex::Bytes& data, FieldContents& field);

  std::array<std::uint8_t, 256> registers_{};
  std::array<std::uint8_t, 256> arc_{};  // analogue registers, by the index in 0x68
  // ARC_B is kept for each protocol: a Protocol Select brings back the value that
  // protocol had, and a write changes it for the protocol in force only.
  std::array<std::uint8_t, 256> arcB_{};
  hex::Bytes acFilter_;  // ATQA, SAK and UID the card emulation answers with; empty: off
  std::uint8_t protocol_ = kFieldOff;
  hex::Bytes parameters_;
};

}  // namespace sim
