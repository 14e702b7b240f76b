// A simulated ISO/IEC 14443-3 type A tag with the page memory of an NFC Forum Type 2 tag,
// and what the chip makes of an ISO 14443-A Send Receive: its transmission flag, the
// CRC it appends, the 4-bit ACK and NAK answers and the three tail bytes with which it
// reports collisions and CRC errors.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/fieldfile.h"
#include "simulator/tags/tag.h"

namespace sim {

namespace iso14443a {

// The transmission flag, the last byte of every ISO 14443-A Send Receive frame.
inline constexpr std::uint8_t kFlagBits = 0x0F;       // bits sent of the last byte, 0 for 8
inline constexpr std::uint8_t kFlagAppendCrc = 0x20;  // the chip closes the frame with a CRC
inline constexpr std::uint8_t kFlagTopaz = 0x80;      // Topaz framing: the CRC is CRC_B

// Commands of ISO/IEC 14443-3 and of the NFC Forum Type 2 tag.
enum Code : std::uint8_t {
  kReqa = 0x26,  // short frames, 7 bits
  kWupa = 0x52,
  kHlta = 0x50,  // 50 00 and CRC_A
  kSel1 = 0x93,
  kSel2 = 0x95,
  kSel3 = 0x97,
  kRead = 0x30,
  kCompatibilityWrite = 0xA0,
  kWrite = 0xA2,
};
inline constexpr std::uint8_t kNvbSelect = 0x70;
inline constexpr std::uint8_t kCascadeTag = 0x88;
// SAK while cascade levels follow: "UID not complete".
inline constexpr std::uint8_t kSakCascade = 0x04;

// The 4-bit answers of a Type 2 tag.
inline constexpr std::uint8_t kAck = 0x0A;
inline constexpr std::uint8_t kNakInvalidArgument = 0x00;  // page out of range, read-only or locked
inline constexpr std::uint8_t kNakCrcError = 0x01;

// First tail byte of an answer: the bits received of the first byte in the low nibble,
// then the error marks.
inline constexpr std::uint8_t kStatusParityError = 0x10;
inline constexpr std::uint8_t kStatusCrcError = 0x20;
inline constexpr std::uint8_t kStatusCollision = 0x80;

// The result code of an answer of fewer than eight bits (ACK and NAK): "90", the number
// of valid bits, the bits.
inline constexpr std::uint8_t kShortAnswer = 0x90;

// The UID split into cascade levels, each four bytes and the check byte BCC (their XOR):
// a 4-byte UID is one level; 7 bytes are 88 u0 u1 u2 and u3..u6; 10 bytes are 88 u0 u1 u2,
// 88 u3 u4 u5 and u6..u9.
std::vector<hex::Bytes> cascadeLevels(const hex::Bytes& uid);

// One Send Receive while ISO 14443-A is selected: `data` is the tag frame followed by the
// transmission flag. Answers "8700" when no tag answers, "90" with the valid bits and the
// bits for a 4-bit answer, else "80", length, the bytes heard (their CRC included) and
// three tail bytes: status (bits of the first byte; parity 10, CRC 20, collision 80), the
// index from 0 of the first byte with a collision and the index (0 = least significant)
// of its first colliding bit, both 00 without a collision.
std::string chipExchange(const hex::Bytes& data, FieldContents& field);

}  // namespace iso14443a

class Iso14443ATag final : public Tag {
 public:
  enum class State { Idle, Ready, Active, Halt };

  explicit Iso14443ATag(TagSetup setup);

  std::optional<hex::Bytes> receive(const AirFrame& frame) override;
  void fieldOff() override;
  int lastReplyBits() const override { return lastReplyBits_; }

  State state() const { return state_; }
  // Cascade level (0 to 2) the tag answers anticollision and select at while ready.
  int cascadeLevel() const { return level_; }
  const hex::Bytes& uid() const { return uid_; }
  int pageCount() const { return static_cast<int>(memory_.size() / kPageSize); }

  static constexpr int kPageSize = 4;

 private:
  using Bytes = hex::Bytes;
  std::optional<Bytes> shortFrame(const AirFrame& frame);
  std::optional<Bytes> whileReady(const AirFrame& frame);
  std::optional<Bytes> whileActive(const AirFrame& frame);
  // A frame the state does not take: back to idle, or to halt for a tag woken from halt.
  std::optional<Bytes> leave();
  std::optional<Bytes> nak(std::uint8_t code);
  std::optional<Bytes> ack();
  Bytes withCrc(Bytes frame) const;
  bool pageLocked(int page) const;
  bool writePage(int page, const std::uint8_t* data);

  Bytes uid_;
  Bytes atqa_;
  std::uint8_t sak_ = 0;
  std::vector<Bytes> levels_;
  State state_ = State::Idle;
  int level_ = 0;
  bool fromHalt_ = false;
  int pendingWrite_ = -1;  // page of a compatibility write waiting for its data
  int lastReplyBits_ = 8;
};

std::unique_ptr<Tag> makeIso14443ATag(TagSetup setup);

}  // namespace sim
