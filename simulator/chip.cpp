#include "simulator/chip.h"

#include <algorithm>

#include "common/crc.h"
#include "simulator/tags/iso14443a.h"
#include "simulator/tags/iso15693.h"
#include "simulator/wakeup.h"

namespace sim {

namespace {

constexpr std::uint32_t counts(std::initializer_list<int> allowed) {
  std::uint32_t mask = 0;
  for (int n : allowed) mask |= 1u << n;
  return mask;
}

// Parameter bytes: byte 0 for every protocol; ISO 14443 may add the two AFDT bytes, FeliCa
// the slot counter byte.
constexpr ProtocolRow kProtocols[] = {
    {0x00, "Field OFF", std::nullopt, counts({0, 1}), false},
    {0x01, "ISO15693", Air::Iso15693, counts({1}), false},
    {0x02, "ISO14443-A", Air::Iso14443A, counts({1, 3}), true},
    {0x03, "ISO14443-B", Air::Iso14443B, counts({1, 3}), false},
    {0x04, "Felica", Air::Felica, counts({1, 2}), false},
    {0x12, "ISO14443A card", std::nullopt, counts({1}), false},
    {0x13, "ISO14443B card", std::nullopt, counts({1}), false},
    {0x14, "ISO18092 card", std::nullopt, counts({1}), false},
};

// Bits of the ISO 14443-A transmission flag byte.
constexpr std::uint8_t kFlagSignificantBits = 0x0F;
constexpr std::uint8_t kFlagAppendCrc = 0x20;
// Bit 0 of parameter byte 0 of the other reader protocols.
constexpr std::uint8_t kParameterAppendCrc = 0x01;

// An answer is at most 255 characters: "RRLL" and 125 bytes of data.
constexpr std::size_t kMaxAnswerData = (255 - 4) / 2;

constexpr std::uint8_t kPowerOnArcB = 0xD3;  // 95 % modulation depth, 27 dB receiver gain

std::string error(Result result) { return answerText(result); }

}  // namespace

std::string answerText(Result result, const hex::Bytes& data) {
  return hex::byte(static_cast<std::uint8_t>(result)) + hex::byte(static_cast<std::uint8_t>(data.size())) +
         hex::fromBytes(data);
}

const ProtocolRow* findProtocol(std::uint8_t code) {
  for (const ProtocolRow& row : kProtocols)
    if (row.code == code) return &row;
  return nullptr;
}

bool isCardProtocol(std::uint8_t code) {
  const ProtocolRow* row = findProtocol(code);
  return row && !row->air && row->code != Chip::kFieldOff;
}

const Chip::Command Chip::kCommands[] = {
    {0x01, "IDN", &Chip::idn},
    {0x02, "Protocol Select", &Chip::protocolSelect},
    {0x04, "SendRecv", &Chip::sendRecv},
    {0x08, "RdReg", &Chip::readRegisters},
    {0x09, "WrReg", &Chip::writeRegisters},
    {0x03, "PollField", &Chip::pollField},
    {0x05, "Listen", &Chip::listen},
    {0x06, "Send", &Chip::send},
    {0x07, "Idle", &Chip::idle},
    {0x0A, "BaudRate", &Chip::baudRate},
    {0x0B, "SubFreqRes", &Chip::subFrequency},
    {0x0D, "AcFilter", &Chip::acFilter},
    {0x0E, "TestMode", &Chip::testMode},
    {0x0F, "SleepMode", &Chip::sleepMode},
};

void Chip::reset() {
  registers_.fill(0);
  arc_.fill(0);
  arcB_.fill(kPowerOnArcB);
  protocol_ = kFieldOff;
  parameters_.clear();
  acFilter_.clear();
}

void Chip::powerOn(FieldContents& field) {
  reset();
  for (auto& tag : field.tags) tag->fieldOff();
}

void Chip::fieldOff(FieldContents& field) {
  protocol_ = kFieldOff;
  parameters_.clear();
  for (auto& tag : field.tags) tag->fieldOff();
}

std::string Chip::execute(const hex::Bytes& frame, FieldContents& field) {
  if (!frame.empty() && frame[0] == 0x55) return answerText(Result::Echo);
  // A frame is code, length and exactly that many data bytes.
  if (frame.size() < 2 || frame[1] != frame.size() - 2) return error(Result::InvalidLength);
  const hex::Bytes data(frame.begin() + 2, frame.end());
  for (const Command& command : kCommands)
    if (command.code == frame[0]) return (this->*command.run)(data, field);
  return error(Result::InvalidLength);
}

std::string Chip::idn(const hex::Bytes& data, FieldContents& field) {
  if (!data.empty()) return error(Result::InvalidLength);
  const std::string& name = field.board.chipName;
  // The chip closes its answer with the CRC of everything before it, low byte first.
  hex::Bytes answer;
  answer.reserve(name.size() + 4);
  answer.push_back(static_cast<std::uint8_t>(Result::Ok));
  answer.push_back(static_cast<std::uint8_t>(name.size() + 2));
  answer.insert(answer.end(), name.begin(), name.end());
  crc::appendLowFirst(answer, crc::iso13239(answer.data(), answer.size()));
  return hex::fromBytes(answer);
}

std::string Chip::protocolSelect(const hex::Bytes& data, FieldContents& field) {
  if (data.empty()) return error(Result::InvalidLength);
  const ProtocolRow* row = findProtocol(data[0]);
  if (!row) return error(Result::InvalidProtocol);
  const std::size_t parameterCount = data.size() - 1;
  if (parameterCount >= 32 || (row->parameterCounts & (1u << parameterCount)) == 0)
    return error(Result::InvalidLength);
  if (row->code == kFieldOff) {
    fieldOff(field);
  } else {
    protocol_ = row->code;
  }
  parameters_.assign(data.begin() + 1, data.end());
  return answerText(Result::Ok);
}

// Sends the frame on the air of the selected protocol and returns the tag's answer: the
// tag's bytes as they came (its CRC at the end), then the protocol result byte.
std::string Chip::sendRecv(const hex::Bytes& data, FieldContents& field) {
  const ProtocolRow* row = findProtocol(protocol_);
  if (!row || !row->air) return error(Result::NoTag);
  if (data.empty()) return error(Result::InvalidLength);
  const Air air = *row->air;
  // ISO 14443-A has a flag byte, 4-bit answers and a tail of its own (tags/iso14443a.cpp).
  if (air == Air::Iso14443A) return iso14443a::chipExchange(data, field);

  AirFrame frame{data};
  frame.parameters = parameters_;
  bool appendCrc = !parameters_.empty() && (parameters_[0] & kParameterAppendCrc) != 0;
  if (row->transmissionFlag) {
    const std::uint8_t flag = frame.bytes.back();
    frame.bytes.pop_back();
    const int bits = flag & kFlagSignificantBits;
    frame.lastByteBits = bits == 0 || bits > 8 ? 8 : bits;
    appendCrc = (flag & kFlagAppendCrc) != 0;
  }
  // A FeliCa frame travels behind its length byte, which counts itself; the chip adds it.
  if (air == Air::Felica) frame.bytes.insert(frame.bytes.begin(), static_cast<std::uint8_t>(frame.bytes.size() + 1));
  if (appendCrc) {
    const hex::Bytes check = airCrc(air, frame.bytes.data(), frame.bytes.size());
    frame.bytes.insert(frame.bytes.end(), check.begin(), check.end());
  }

  std::vector<hex::Bytes> replies;
  for (auto& tag : field.tags) {
    if (!tag->inField() || tag->air() != air) continue;
    if (auto reply = tag->receive(frame)) replies.push_back(std::move(*reply));
  }
  if (replies.empty()) return error(Result::NoTag);
  // Tags that answer the same bytes at the same time are one clean answer on the air.
  const bool allSame = std::all_of(replies.begin(), replies.end(), [&](const hex::Bytes& r) { return r == replies[0]; });
  // ISO 15693 readers hear colliding answers superposed and report them with the collision
  // mark; the other protocols stop at a communication error.
  if (!allSame && air != Air::Iso15693) return error(Result::CommunicationError);
  const hex::Bytes heard = allSame ? replies[0] : superposeIso15693(replies);

  hex::Bytes answer = heard;
  answer.push_back(static_cast<std::uint8_t>((allSame ? 0x00 : kTailCollision) |
                                             (airCrcMatches(air, heard) ? 0x00 : kTailCrcError)));
  if (answer.size() > kMaxAnswerData) return error(Result::BufferOverflow);
  return answerText(Result::TagAnswer, answer);
}

std::uint8_t Chip::readRegister(std::uint8_t address) const {
  return address == kArcData ? arc(registers_[kArcIndex]) : registers_[address];
}

void Chip::writeRegister(std::uint8_t address, std::uint8_t value) {
  if (address == kArcData && registers_[kArcIndex] == kArcB)
    arcB_[protocol_] = value;
  else if (address == kArcData)
    arc_[registers_[kArcIndex]] = value;
  else
    registers_[address] = value;
}

// Data: register address, size, a reserved byte.
std::string Chip::readRegisters(const hex::Bytes& data, FieldContents&) {
  if (data.size() != 3) return error(Result::InvalidLength);
  const std::size_t address = data[0];
  const std::size_t size = data[1];
  if (address + size > registers_.size() || size > kMaxAnswerData) return error(Result::InvalidLength);
  hex::Bytes values;
  for (std::size_t i = 0; i < size; ++i) values.push_back(readRegister(static_cast<std::uint8_t>(address + i)));
  return answerText(Result::Ok, values);
}

// Data: register address, flag, then the bytes to write. With flag bit 0 ("increment address
// after write") each byte goes to the next address, so "68 01 01 D1" selects ARC_B and
// writes D1 into it through 69; without it every byte goes to the same address.
std::string Chip::writeRegisters(const hex::Bytes& data, FieldContents&) {
  if (data.size() < 3) return error(Result::InvalidLength);
  const bool increment = (data[1] & 0x01) != 0;
  const std::size_t count = data.size() - 2;
  if (increment && data[0] + count > registers_.size()) return error(Result::InvalidLength);
  std::size_t address = data[0];
  for (std::size_t i = 2; i < data.size(); ++i) {
    writeRegister(static_cast<std::uint8_t>(address), data[i]);
    if (increment) ++address;
  }
  return answerText(Result::Ok);
}

// --- the commands beyond identification, selection, exchange and registers ----------------

// Poll Field looks for the field of an outside reader: none lies in front of the simulated
// antenna, so the answer is always "no field". Without data it looks once; with flags,
// prescaler and timer it waits for a field, which times out the same way.
std::string Chip::pollField(const hex::Bytes& data, FieldContents&) {
  if (!data.empty() && data.size() != 3) return error(Result::InvalidLength);
  return answerText(Result::Ok, {0x00});
}

// Listen needs a card protocol. Bit 3 of its parameter byte 0 says whether to wait for a
// reader's field; told not to, the chip finds no field and says so.
std::string Chip::listen(const hex::Bytes& data, FieldContents&) {
  if (!data.empty()) return error(Result::InvalidLength);
  if (!isCardProtocol(protocol_)) return error(Result::InvalidProtocol);
  constexpr std::uint8_t kWaitForField = 0x08;
  const bool waits = !parameters_.empty() && (parameters_[0] & kWaitForField) != 0;
  return waits ? answerText(Result::Ok) : error(Result::NoField);
}

// Send answers a reader in card mode: one byte at least, and a card protocol.
std::string Chip::send(const hex::Bytes& data, FieldContents&) {
  if (data.empty()) return error(Result::InvalidLength);
  if (!isCardProtocol(protocol_)) return error(Result::InvalidProtocol);
  return answerText(Result::Ok);
}

int Chip::detectorLevel(const FieldContents& field) { return detectorReading(field); }

// Idle: the chip sleeps until the tag detector, the time-out or a pulse wakes it
// (simulator/wakeup.h), in simulated time unless the field asks for real time. The field
// is off after Idle, and register 62 keeps the reason.
std::string Chip::idle(const hex::Bytes& data, FieldContents& field) {
  const std::optional<IdleSettings> settings = IdleSettings::fromData(data);
  if (!settings) return error(Result::InvalidLength);
  const WakeUp reason = sleepUntilWakeUp(*settings, field).reason;
  fieldOff(field);
  registers_[kWakeUpReason] = static_cast<std::uint8_t>(reason);
  return answerText(Result::Ok, {static_cast<std::uint8_t>(reason)});
}

// The UART's new rate takes effect after the answer, which is the pseudo-response 55 and
// no length; over SPI nothing else changes.
std::string Chip::baudRate(const hex::Bytes& data, FieldContents&) {
  if (data.size() != 1) return error(Result::InvalidLength);
  return answerText(Result::Echo);
}

// The subcarrier of the protocol in force, as the divider of 13.56 MHz: 32 (423.75 kHz)
// for ISO 15693, 16 (847.5 kHz) for ISO 14443, 0 where there is none (FeliCa, field off,
// card modes).
std::string Chip::subFrequency(const hex::Bytes& data, FieldContents&) {
  if (!data.empty()) return error(Result::InvalidLength);
  const ProtocolRow* row = findProtocol(protocol_);
  std::uint8_t divider = 0;
  if (row && row->air == Air::Iso15693) divider = 32;
  if (row && (row->air == Air::Iso14443A || row->air == Air::Iso14443B)) divider = 16;
  return answerText(Result::Ok, {divider});
}

// The anti-collision filter of the ISO 14443-A card emulation: no data turns it off;
// ATQA (2), SAK and a UID of one, two or three cascade levels (4 bytes each) turn it on.
std::string Chip::acFilter(const hex::Bytes& data, FieldContents&) {
  if (data.empty()) {
    acFilter_.clear();
    return answerText(Result::Ok);
  }
  if (data.size() != 7 && data.size() != 11 && data.size() != 15) return error(Result::InvalidLength);
  acFilter_ = data;
  return answerText(Result::Ok);
}

// Two bytes: the analogue test output and input, 00 off, 01 on.
std::string Chip::testMode(const hex::Bytes& data, FieldContents&) {
  if (data.size() != 2) return error(Result::InvalidLength);
  return answerText(Result::Ok);
}

// The wake-up source, and optionally a time interval.
std::string Chip::sleepMode(const hex::Bytes& data, FieldContents&) {
  if (data.size() != 1 && data.size() != 2) return error(Result::InvalidLength);
  return answerText(Result::Ok);
}

}  // namespace sim
