#include "simulator/tags/felica.h"

#include <algorithm>

namespace sim {

namespace felica {

bool systemCodeMatches(std::uint8_t high, std::uint8_t low, const hex::Bytes& own) {
  if (own.size() < 2) return high == 0xFF && low == 0xFF;
  return (high == 0xFF || high == own[0]) && (low == 0xFF || low == own[1]);
}

}  // namespace felica

using namespace felica;

FelicaTag::FelicaTag(TagSetup setup) : Tag(std::move(setup)), draw_(iso14443b::seedOf(bytesOf("idm"))) {
  idm_ = bytesOf("idm");
  pmm_ = bytesOf("pmm");
  systemCode_ = bytesOf("systemCode");
}

FelicaTag::Bytes FelicaTag::framed(const Bytes& payload) const {
  Bytes frame{static_cast<std::uint8_t>(payload.size() + 1)};
  frame.insert(frame.end(), payload.begin(), payload.end());
  const Bytes crc = airCrc(Air::Felica, frame.data(), frame.size());
  frame.insert(frame.end(), crc.begin(), crc.end());
  return frame;
}

std::optional<hex::Bytes> FelicaTag::receive(const AirFrame& frame) {
  const Bytes& f = frame.bytes;
  // LEN counts itself and the payload; two CRC bytes follow.
  if (f.size() < 4 || f[0] != f.size() - 2 || !airCrcMatches(Air::Felica, f)) return std::nullopt;
  const Bytes payload(f.begin() + 1, f.end() - 2);

  switch (payload[0]) {
    case kPolling: {
      // 00, system code, request code, time slot number: slots 0 to TSN.
      if (payload.size() != 5 || !systemCodeMatches(payload[1], payload[2], systemCode_)) return std::nullopt;
      const std::uint32_t slots = static_cast<std::uint32_t>(payload[4]) + 1;
      lastSlot_ = static_cast<int>(draw_.next() % slots);
      Bytes answer{kPollingResponse};
      answer.insert(answer.end(), idm_.begin(), idm_.end());
      answer.insert(answer.end(), pmm_.begin(), pmm_.end());
      if (payload[3] == kRequestSystemCode) answer.insert(answer.end(), systemCode_.begin(), systemCode_.end());
      return framed(answer);
    }
    case kRequestResponse: {
      // 04, IDm: the card tells its mode, 0 outside any authentication.
      if (payload.size() != 9 || !std::equal(idm_.begin(), idm_.end(), payload.begin() + 1)) return std::nullopt;
      Bytes answer{kRequestResponseResponse};
      answer.insert(answer.end(), idm_.begin(), idm_.end());
      answer.push_back(0x00);
      return framed(answer);
    }
    default:
      return std::nullopt;
  }
}

std::unique_ptr<Tag> makeFelicaTag(TagSetup setup) { return std::make_unique<FelicaTag>(std::move(setup)); }

}  // namespace sim
