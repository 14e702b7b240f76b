#include "simulator/tags/iso14443b.h"

#include <algorithm>

namespace sim {

namespace iso14443b {

int slotCount(std::uint8_t param) {
  const int code = param & kParamSlots;
  return code <= 4 ? 1 << code : 0;
}

bool afiMatches(std::uint8_t requested, std::uint8_t own) {
  const int family = requested >> 4;
  const int subFamily = requested & 0x0F;
  return (family == 0 || family == own >> 4) && (subFamily == 0 || subFamily == (own & 0x0F));
}

std::uint32_t Draw::next() {
  // xorshift32
  state_ ^= state_ << 13;
  state_ ^= state_ >> 17;
  state_ ^= state_ << 5;
  return state_;
}

std::uint32_t seedOf(const hex::Bytes& bytes) {
  std::uint32_t h = 2166136261u;  // FNV-1a
  for (std::uint8_t b : bytes) h = (h ^ b) * 16777619u;
  return h;
}

}  // namespace iso14443b

using namespace iso14443b;

Iso14443BTag::Iso14443BTag(TagSetup setup)
    : Tag(std::move(setup)), draw_(iso14443b::seedOf(bytesOf("pupi"))) {
  pupi_ = bytesOf("pupi");
  applicationData_ = bytesOf("applicationData");
  protocolInfo_ = bytesOf("protocolInfo");
  const Bytes afi = bytesOf("afi");
  afi_ = afi.empty() ? 0 : afi[0];
}

void Iso14443BTag::fieldOff() {
  state_ = State::Idle;
  slot_ = 1;
  cid_ = 0;
}

Iso14443BTag::Bytes Iso14443BTag::withCrc(Bytes frame) const {
  const Bytes crc = airCrc(Air::Iso14443B, frame.data(), frame.size());
  frame.insert(frame.end(), crc.begin(), crc.end());
  return frame;
}

// ATQB: 50, PUPI, application data, protocol info, CRC_B.
Iso14443BTag::Bytes Iso14443BTag::atqb() const {
  Bytes frame{kAtqbFirstByte};
  frame.insert(frame.end(), pupi_.begin(), pupi_.end());
  frame.insert(frame.end(), applicationData_.begin(), applicationData_.end());
  frame.insert(frame.end(), protocolInfo_.begin(), protocolInfo_.end());
  return withCrc(std::move(frame));
}

// Protocol info byte 3: FWI, ADC, FO; bit 0 of FO says the card takes a CID.
bool Iso14443BTag::cidSupported() const { return protocolInfo_.size() >= 3 && (protocolInfo_[2] & 0x01) != 0; }

// REQB is heard in IDLE and READY; WUPB also wakes a halted card. With N slots the card
// draws one: slot 1 answers at once, any other waits for its Slot-MARKER.
std::optional<hex::Bytes> Iso14443BTag::request(std::uint8_t afi, std::uint8_t param) {
  const bool wakeUp = (param & kParamWupb) != 0;
  if (state_ == State::Active || (state_ == State::Halt && !wakeUp)) return std::nullopt;
  const int slots = slotCount(param);
  if (slots == 0 || !afiMatches(afi, afi_)) return std::nullopt;
  slot_ = slots == 1 ? 1 : static_cast<int>(draw_.next() % static_cast<std::uint32_t>(slots)) + 1;
  if (slot_ != 1) {
    state_ = State::ReadyRequested;
    return std::nullopt;
  }
  state_ = State::ReadyDeclared;
  return atqb();
}

std::optional<hex::Bytes> Iso14443BTag::receive(const AirFrame& frame) {
  if (frame.bytes.size() < 3 || !airCrcMatches(Air::Iso14443B, frame.bytes)) return std::nullopt;
  const Bytes body(frame.bytes.begin(), frame.bytes.end() - 2);
  const auto pupiAt = [&](std::size_t from) {
    return body.size() >= from + 4 && std::equal(pupi_.begin(), pupi_.end(), body.begin() + static_cast<long>(from));
  };

  if (state_ == State::Active) {
    // Only the end of the activation is simulated above layer 3.
    if ((body.size() == 1 && body[0] == kDeselect) ||
        (body.size() == 2 && body[0] == kDeselectCid && (body[1] & 0x0F) == cid_)) {
      state_ = State::Halt;
      return withCrc(body);
    }
    return std::nullopt;
  }

  switch (body[0]) {
    case kApf:
      if (body.size() != 3) return std::nullopt;
      return request(body[1], body[2]);
    case kAttrib:
      // 1D, PUPI, Param 1 to 4, higher-layer INF (ignored). Only a card that answered
      // the last REQB/WUPB takes it.
      if (state_ != State::ReadyDeclared || body.size() < 9 || !pupiAt(1)) return std::nullopt;
      cid_ = cidSupported() ? static_cast<std::uint8_t>(body[8] & 0x0F) : 0;
      state_ = State::Active;
      // MBLI 0: the card tells nothing of its buffer.
      return withCrc({cid_});
    case kHltb:
      if (body.size() != 5 || !pupiAt(1) || state_ != State::ReadyDeclared) return std::nullopt;
      state_ = State::Halt;
      return withCrc({0x00});
    default:
      break;
  }
  // Slot-MARKER: APn = (n - 1) << 4 | 5 for the slots 2 to 16.
  if (body.size() == 1 && (body[0] & 0x0F) == kApf && state_ == State::ReadyRequested) {
    const int slot = (body[0] >> 4) + 1;
    if (slot != slot_) return std::nullopt;
    state_ = State::ReadyDeclared;
    return atqb();
  }
  return std::nullopt;
}

std::unique_ptr<Tag> makeIso14443BTag(TagSetup setup) { return std::make_unique<Iso14443BTag>(std::move(setup)); }

}  // namespace sim
