#include "simulator/tags/tag.h"

#include "common/crc.h"

namespace sim {

namespace {
// JIS X 6319-4 (FeliCa): CRC-16 with polynomial 0x1021, start 0, not reflected.
std::uint16_t felicaCrc(const std::uint8_t* data, std::size_t size) {
  std::uint16_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    value ^= static_cast<std::uint16_t>(data[i] << 8);
    for (int bit = 0; bit < 8; ++bit)
      value = (value & 0x8000) ? static_cast<std::uint16_t>((value << 1) ^ 0x1021)
                               : static_cast<std::uint16_t>(value << 1);
  }
  return value;
}
}  // namespace

hex::Bytes airCrc(Air air, const std::uint8_t* data, std::size_t size) {
  hex::Bytes out;
  switch (air) {
    case Air::Iso15693:
    case Air::Iso14443B:
      crc::appendLowFirst(out, crc::iso13239(data, size));
      break;
    case Air::Iso14443A:
      crc::appendLowFirst(out, crc::iso14443A(data, size));
      break;
    case Air::Felica: {
      const std::uint16_t value = felicaCrc(data, size);
      out = {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value & 0xFF)};
      break;
    }
  }
  return out;
}

bool airCrcMatches(Air air, const hex::Bytes& frame) {
  if (frame.size() < 2) return false;
  const std::size_t body = frame.size() - 2;
  const hex::Bytes expected = airCrc(air, frame.data(), body);
  return expected[0] == frame[body] && expected[1] == frame[body + 1];
}

Tag::Tag(TagSetup setup)
    : memory_(std::move(setup.memory)),
      type_(std::move(setup.type)),
      air_(setup.air),
      entry_(std::move(setup.entry)),
      blockSize_(setup.blockSize),
      blockCount_(setup.blockCount) {}

bool Tag::inField() const {
  const auto it = entry_.find("inField");
  return it == entry_.end() || !it->is_boolean() || it->get<bool>();
}

std::optional<hex::Bytes> Tag::receive(const AirFrame&) { return std::nullopt; }

Json Tag::toJson() const {
  Json out = entry_;
  if (blockSize_ > 0) out["memory"] = hex::fromBytes(memory_);
  return out;
}

hex::Bytes Tag::bytesOf(const char* key) const {
  const auto it = entry_.find(key);
  if (it == entry_.end() || !it->is_string()) return {};
  return hex::toBytes(it->get<std::string>()).value_or(hex::Bytes{});
}

}  // namespace sim
