#include "simulator/tags/topaz.h"

#include <algorithm>

#include "simulator/tags/iso14443a.h"

namespace sim {

using namespace topaz;

TopazTag::TopazTag(TagSetup setup) : Tag(std::move(setup)) {
  uid_ = bytesOf("uid");
  atqa_ = bytesOf("atqa");
  const Bytes hr0 = bytesOf("hr0");
  const Bytes hr1 = bytesOf("hr1");
  hr0_ = hr0.empty() ? 0 : hr0[0];
  hr1_ = hr1.empty() ? 0 : hr1[0];
  // Block 0 holds the UID, UID0 first.
  std::copy_n(uid_.begin(), std::min(uid_.size(), memory_.size()), memory_.begin());
}

hex::Bytes TopazTag::withCrc(Bytes frame) const {
  const Bytes check = airCrc(Air::Iso14443B, frame.data(), frame.size());
  frame.insert(frame.end(), check.begin(), check.end());
  return frame;
}

// Block 0 (the UID) is read-only; the lock bytes lock whole blocks.
bool TopazTag::writable(int address) const {
  const int block = address / kBlockSize;
  if (block == 0) return false;
  if (block < 8 && static_cast<int>(memory_.size()) > kLock0) return ((memory_[kLock0] >> block) & 1) == 0;
  if (block >= 8 && block < 16 && static_cast<int>(memory_.size()) > kLock1)
    return ((memory_[kLock1] >> (block - 8)) & 1) == 0;
  return true;
}

std::optional<hex::Bytes> TopazTag::receive(const AirFrame& frame) {
  const Bytes& b = frame.bytes;
  if (b.size() == 1 && frame.lastByteBits == 7) {
    if (b[0] != iso14443a::kReqa && b[0] != iso14443a::kWupa) return std::nullopt;
    state_ = State::Ready;
    return atqa_;
  }
  // Commands: code, address, data, four UID bytes, CRC_B. Anything else goes unheard,
  // ISO 14443-A anticollision frames included.
  if (state_ != State::Ready || b.size() != 9 || !airCrcMatches(Air::Iso14443B, b)) return std::nullopt;
  const std::uint8_t code = b[0];
  const int address = b[1];
  const std::uint8_t data = b[2];
  if (code == kRid) return withCrc({hr0_, hr1_, uid_[0], uid_[1], uid_[2], uid_[3]});
  if (!std::equal(uid_.begin(), uid_.begin() + 4, b.begin() + 3)) return std::nullopt;
  switch (code) {
    case kRall: {
      Bytes reply{hr0_, hr1_};
      reply.insert(reply.end(), memory_.begin(), memory_.end());
      return withCrc(reply);
    }
    case kRead:
      if (address >= static_cast<int>(memory_.size())) return std::nullopt;
      return withCrc({static_cast<std::uint8_t>(address), memory_[static_cast<std::size_t>(address)]});
    case kWriteErase:
    case kWriteNoErase: {
      if (address >= static_cast<int>(memory_.size()) || !writable(address)) return std::nullopt;
      std::uint8_t& target = memory_[static_cast<std::size_t>(address)];
      target = code == kWriteErase ? data : static_cast<std::uint8_t>(target | data);
      return withCrc({static_cast<std::uint8_t>(address), target});
    }
    default:
      return std::nullopt;
  }
}

std::unique_ptr<Tag> makeTopazTag(TagSetup setup) { return std::make_unique<TopazTag>(std::move(setup)); }

}  // namespace sim
