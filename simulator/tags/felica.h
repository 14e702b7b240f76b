// A simulated FeliCa card (JIS X 6319-4, the 212 kbit/s passive mode of ISO/IEC 18092).
// Frames on the air are the length byte (counting itself), the payload and the CRC-16;
// a frame whose length or CRC does not hold is not heard. The card answers Polling with
// its IDm and PMm, and the system code when asked, in a time slot it draws among those
// the request opens; and Request Response with its mode.
#pragma once

#include <cstdint>
#include <optional>

#include "simulator/tags/iso14443b.h"
#include "simulator/tags/tag.h"

namespace sim {

namespace felica {

enum Code : std::uint8_t {
  kPolling = 0x00,
  kPollingResponse = 0x01,
  kRequestResponse = 0x04,
  kRequestResponseResponse = 0x05,
};
// Request codes of Polling: 01 asks for the system code behind IDm and PMm.
inline constexpr std::uint8_t kRequestSystemCode = 0x01;
// A system code byte FF in a Polling stands for any.
bool systemCodeMatches(std::uint8_t high, std::uint8_t low, const hex::Bytes& own);

}  // namespace felica

class FelicaTag final : public Tag {
 public:
  explicit FelicaTag(TagSetup setup);

  std::optional<hex::Bytes> receive(const AirFrame& frame) override;
  void fieldOff() override { lastSlot_ = -1; }

  const hex::Bytes& idm() const { return idm_; }
  // The time slot of the last Polling answer, from 0; -1 before any.
  int lastSlot() const { return lastSlot_; }

 private:
  using Bytes = hex::Bytes;
  // Length byte in front, CRC behind.
  Bytes framed(const Bytes& payload) const;

  Bytes idm_;
  Bytes pmm_;
  Bytes systemCode_;
  int lastSlot_ = -1;
  iso14443b::Draw draw_;
};

std::unique_ptr<Tag> makeFelicaTag(TagSetup setup);

}  // namespace sim
