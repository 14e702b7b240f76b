// A simulated Topaz tag, an NFC Forum Type 1 tag: it wakes on REQA or WUPA with its own
// ATQA, takes no anticollision, and answers the Type 1 commands RID, RALL, READ, WRITE-E
// and WRITE-NE. Every command but RID carries the first four UID bytes; all frames close
// with CRC_B.
#pragma once

#include <cstdint>
#include <optional>

#include "simulator/tags/tag.h"

namespace sim {

namespace topaz {
enum Code : std::uint8_t {
  kRall = 0x00,
  kRead = 0x01,
  kWriteNoErase = 0x1A,
  kWriteErase = 0x53,
  kRid = 0x78,
};
// Static memory: blocks of eight bytes, the byte address ADD = block * 8 + byte.
inline constexpr int kBlockSize = 8;
// The lock bytes LOCK-0 and LOCK-1 (block E, bytes 0 and 1): bit n locks block n.
inline constexpr int kLock0 = 0x70;
inline constexpr int kLock1 = 0x71;
}  // namespace topaz

class TopazTag final : public Tag {
 public:
  enum class State { Idle, Ready };

  explicit TopazTag(TagSetup setup);

  std::optional<hex::Bytes> receive(const AirFrame& frame) override;
  void fieldOff() override { state_ = State::Idle; }

  State state() const { return state_; }
  const hex::Bytes& uid() const { return uid_; }

 private:
  using Bytes = hex::Bytes;
  Bytes withCrc(Bytes frame) const;
  bool writable(int address) const;

  Bytes uid_;
  Bytes atqa_;
  std::uint8_t hr0_ = 0;
  std::uint8_t hr1_ = 0;
  State state_ = State::Idle;
};

std::unique_ptr<Tag> makeTopazTag(TagSetup setup);

}  // namespace sim
