// A panel's exchanges with the board as a pcapng capture: the chip's framing unwrapped so
// that each packet is what went over the air. ISO 14443-A and -B travel on interface 0
// with link type 264 (LINKTYPE_ISO_14443) and its four-byte pseudo-header; ISO 15693,
// FeliCa and every call that only talks to the chip travel on interface 1 with link type
// 147 (LINKTYPE_USER0) and the eight-byte header described in docs/pcapng.md.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "export/Pcapng.h"
#include "reader/ExchangeRecord.h"

namespace capture {

using Bytes = pcapng::Bytes;

inline constexpr std::uint32_t kIso14443Interface = 0;
inline constexpr std::uint32_t kOtherInterface = 1;

// Events of the pseudo-headers; the ISO 14443 ones as LINKTYPE_ISO_14443 defines them.
enum class Event : std::uint8_t {
  DriverCall = 0xF0,       // a call into the driver library (interface 1 only)
  DriverReturn = 0xF1,     // what the call returned (interface 1 only)
  ReaderToCardNoCrc = 0xFA,  // the chip appended the CRC: its bytes were not captured
  CardToReaderNoCrc = 0xFB,
  FieldOn = 0xFC,
  FieldOff = 0xFD,
  ReaderToCard = 0xFE,
  CardToReader = 0xFF,
};

// Protocol codes of the chip's Protocol Select, as the second header carries them.
inline constexpr std::uint8_t kFieldOffCode = 0x00;
inline constexpr std::uint8_t kIso15693Code = 0x01;
inline constexpr std::uint8_t kIso14443ACode = 0x02;
inline constexpr std::uint8_t kIso14443BCode = 0x03;
inline constexpr std::uint8_t kFelicaCode = 0x04;

// Flags of the second header.
inline constexpr std::uint8_t kFlagText = 0x01;  // the data is the text as it came, not hex bytes

struct Packet {
  std::uint32_t interfaceId = kIso14443Interface;
  std::int64_t timeUs = 0;
  Bytes data;           // pseudo-header and frame
  std::string comment;  // what the frame itself cannot say (valid bits, chip result)
};

// The pseudo-header of LINKTYPE_ISO_14443 and the frame behind it.
Bytes iso14443Packet(Event e, const Bytes& frame);
// The header of interface 1 and the data behind it.
Bytes otherPacket(Event e, std::uint8_t protocol, std::uint8_t operation, std::uint8_t status, std::uint8_t flags,
                  const Bytes& data);

// Turns records into packets, one record after the other, keeping the chip's state (the
// selected protocol and its parameter byte) between them, so that a capture can be
// written as it runs. Time stamps come out strictly increasing.
class Converter {
 public:
  std::vector<Packet> packets(const reader::ExchangeRecord& r);

 private:
  void select(const reader::ExchangeRecord& r, const std::string& selectData, std::vector<Packet>& out);
  void fieldOff(std::vector<Packet>& out);
  void sendReceive(const reader::ExchangeRecord& r, const std::string& frameText, std::vector<Packet>& out);
  void driverCall(const reader::ExchangeRecord& r, std::vector<Packet>& out);
  void push(std::vector<Packet>& out, std::uint32_t interfaceId, Bytes data, std::string comment = {});

  std::uint8_t protocol_ = kFieldOffCode;
  std::uint8_t parameter0_ = 0;
  std::int64_t lastUs_ = 0;
  std::int64_t nowUs_ = 0;
};

// The file's head: section header and the two interfaces.
Bytes fileHeader();
Bytes encode(const Packet& p);
// A whole file of these records.
Bytes pcapngFile(const std::deque<reader::ExchangeRecord>& records);

// A capture written as the calls happen: the file's head at once, then each call's packets,
// flushed, so that a run stopped at any point leaves a file that reads to its last call.
class StreamWriter final : public reader::ExchangeObserver {
 public:
  // `sink` receives the bytes to append; it returns false when they could not be written.
  using Sink = std::function<bool(const Bytes&)>;
  explicit StreamWriter(Sink sink);
  void exchanged(const reader::ExchangeRecord& r) override;
  bool failed() const { return failed_; }

 private:
  Sink sink_;
  Converter converter_;
  std::int64_t lastUs_ = 0;
  bool failed_ = false;
};

}  // namespace capture
