// A simulated ISO/IEC 14443-B proximity card, type B activation of ISO/IEC 14443-3: REQB
// and WUPB with AFI and the slot count N, Slot-MARKER, ATQB, ATTRIB, HLTB, and the
// S(DESELECT) of ISO/IEC 14443-4 that ends an activation. Every frame carries CRC_B; a
// frame whose CRC does not hold is not heard.
#pragma once

#include <cstdint>
#include <optional>

#include "simulator/tags/tag.h"

namespace sim {

namespace iso14443b {

// Anticollision prefix byte of REQB/WUPB (APf) and, with the slot in its high nibble, of
// Slot-MARKER (APn).
inline constexpr std::uint8_t kApf = 0x05;
inline constexpr std::uint8_t kAtqbFirstByte = 0x50;
inline constexpr std::uint8_t kAttrib = 0x1D;
inline constexpr std::uint8_t kHltb = 0x50;
// PARAM of REQB/WUPB: bit 3 asks for WUPB, bits 0-2 code N.
inline constexpr std::uint8_t kParamWupb = 0x08;
inline constexpr std::uint8_t kParamSlots = 0x07;
// S(DESELECT) PCBs, without and with a CID byte.
inline constexpr std::uint8_t kDeselect = 0xC2;
inline constexpr std::uint8_t kDeselectCid = 0xCA;

// Slots a PARAM asks for: 1, 2, 4, 8 or 16; 0 for the codes the standard reserves.
int slotCount(std::uint8_t param);
// The AFI rule: 00 reaches every card; a 0 digit in the request stands for any family
// (high digit) or sub-family (low digit).
bool afiMatches(std::uint8_t requested, std::uint8_t own);

// A small deterministic sequence, so that the simulated board's "random" draws repeat
// from one run to the next.
class Draw {
 public:
  explicit Draw(std::uint32_t seed) : state_(seed ? seed : 0x9E3779B9u) {}
  std::uint32_t next();

 private:
  std::uint32_t state_;
};
// A seed from identity bytes (PUPI, UID, IDm).
std::uint32_t seedOf(const hex::Bytes& bytes);

}  // namespace iso14443b

class Iso14443BTag final : public Tag {
 public:
  enum class State { Idle, ReadyRequested, ReadyDeclared, Active, Halt };

  explicit Iso14443BTag(TagSetup setup);

  std::optional<hex::Bytes> receive(const AirFrame& frame) override;
  void fieldOff() override;

  State state() const { return state_; }
  const hex::Bytes& pupi() const { return pupi_; }
  // The slot the card chose at the last REQB/WUPB (1 when N was 1).
  int slot() const { return slot_; }
  // The CID given by ATTRIB when the card supports one.
  std::uint8_t cid() const { return cid_; }

 private:
  using Bytes = hex::Bytes;
  Bytes atqb() const;
  Bytes withCrc(Bytes frame) const;
  std::optional<Bytes> request(std::uint8_t afi, std::uint8_t param);
  bool cidSupported() const;

  Bytes pupi_;
  Bytes applicationData_;
  Bytes protocolInfo_;
  std::uint8_t afi_ = 0;
  std::uint8_t cid_ = 0;
  int slot_ = 1;
  State state_ = State::Idle;
  iso14443b::Draw draw_;
};

std::unique_ptr<Tag> makeIso14443BTag(TagSetup setup);

}  // namespace sim
