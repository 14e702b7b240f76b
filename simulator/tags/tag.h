// A tag lying in the field in front of the antenna. The base class knows the air protocol
// the tag speaks, its entry of the field file and its memory; each tag family turns frames
// into answers by overriding receive(). A tag that does not answer stays silent, exactly
// like a real tag that did not understand the frame.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "common/hex.h"

namespace sim {

using Json = nlohmann::ordered_json;

// The air protocols of the chip's reader side. Topaz speaks ISO 14443-A, the PDY family
// ISO 14443-B.
enum class Air { Iso15693, Iso14443A, Iso14443B, Felica };

// What the reader put on the air: the bytes as they travel, the reader's CRC included when
// the chip appended one, and how many bits of the last byte were sent (7 for REQA).
struct AirFrame {
  hex::Bytes bytes;
  int lastByteBits = 8;
  // The Protocol Select parameters the chip sends and listens with (data rate and the like).
  hex::Bytes parameters{};
};

// The frame check that ends a frame on the air, in the order it travels: the ISO/IEC 13239
// CRC for ISO 15693 and ISO 14443-B, CRC_A for ISO 14443-A (both low byte first), and the
// CRC-16 of JIS X 6319-4 (polynomial 0x1021, start 0, high byte first) for FeliCa.
hex::Bytes airCrc(Air air, const std::uint8_t* data, std::size_t size);
// True when the last two bytes of the frame are the right check of the bytes before them.
bool airCrcMatches(Air air, const hex::Bytes& frame);

// Everything the field file says about one tag, checked and completed with defaults.
struct TagSetup {
  std::string type;     // the "type" of the entry
  Air air;
  Json entry;           // the entry, keys in a fixed order, defaults filled in
  int blockSize = 0;    // 0 for a tag without user memory
  int blockCount = 0;
  hex::Bytes memory;    // blockSize * blockCount bytes
};

class Tag {
 public:
  explicit Tag(TagSetup setup);
  virtual ~Tag() = default;
  Tag(const Tag&) = delete;
  Tag& operator=(const Tag&) = delete;

  const std::string& type() const { return type_; }
  Air air() const { return air_; }
  // A tag can be described in the file and still lie outside the field.
  bool inField() const;

  // One frame from the reader. Returns the tag's answer as it goes on the air, its own
  // CRC included when its protocol sends one; nullopt when the tag keeps silent.
  virtual std::optional<hex::Bytes> receive(const AirFrame& frame);
  // Bits sent of the last byte of the last answer: 8, or 4 for the ACK and NAK of an
  // ISO 14443-A tag, which the chip reports apart.
  virtual int lastReplyBits() const { return 8; }
  // The field went off: the tag loses power and forgets its volatile state.
  virtual void fieldOff() {}

  // The entry as the field file would hold it now, memory included.
  virtual Json toJson() const;

  const hex::Bytes& memory() const { return memory_; }
  int blockSize() const { return blockSize_; }
  int blockCount() const { return blockCount_; }

 protected:
  // Bytes of a hexadecimal key of the entry (already checked by the loader); empty when absent.
  hex::Bytes bytesOf(const char* key) const;
  const Json& entry() const { return entry_; }

  hex::Bytes memory_;

 private:
  std::string type_;
  Air air_;
  Json entry_;
  int blockSize_;
  int blockCount_;
};

}  // namespace sim
