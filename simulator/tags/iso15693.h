// A simulated ISO/IEC 15693 vicinity tag (ISO/IEC 15693-3 command set) and the board
// controller's ISO 15693 anticollision. The tag keeps its state (ready, selected, quiet),
// its AFI and DSFID with their locks, and its memory with locked blocks; it checks the
// reader's CRC and closes every answer with its own.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "simulator/fieldfile.h"
#include "simulator/tags/tag.h"

namespace sim {

namespace iso15693 {

// Request flags (ISO/IEC 15693-3, table 3 and 4).
enum Flag : std::uint8_t {
  kSubCarrier = 0x01,
  kDataRate = 0x02,
  kInventory = 0x04,
  kProtocolExtension = 0x08,
  kSelect = 0x10,       // inventory: AFI present
  kAddress = 0x20,      // inventory: one slot
  kOption = 0x40,
};

// Command codes the tag knows.
enum Code : std::uint8_t {
  kInventoryCode = 0x01,
  kStayQuiet = 0x02,
  kReadSingleBlock = 0x20,
  kWriteSingleBlock = 0x21,
  kLockBlock = 0x22,
  kReadMultipleBlocks = 0x23,
  kSelectCode = 0x25,
  kResetToReady = 0x26,
  kWriteAfi = 0x27,
  kLockAfi = 0x28,
  kWriteDsfid = 0x29,
  kLockDsfid = 0x2A,
  kGetSystemInfo = 0x2B,
  kGetMultipleBlockSecurityStatus = 0x2C,
};

// Error codes of an answer with the error flag.
enum Error : std::uint8_t {
  kNotSupported = 0x01,
  kNotRecognized = 0x02,
  kOptionNotSupported = 0x03,
  kUnknownError = 0x0F,
  kBlockNotAvailable = 0x10,
  kAlreadyLocked = 0x11,
  kLockedContent = 0x12,
};

inline constexpr std::uint8_t kManufacturerCode = 0x02;
// Custom and proprietary commands carry the manufacturer code behind their code.
inline bool isCustomCode(std::uint8_t code) { return code >= 0xA0 && code <= 0xDF; }

// The products of the catalogue that are ISO 15693 tags: their memory and how wide their
// block numbers are on the air.
struct Product {
  const char* reference;
  int blockCount;
  int blockSize;
  int addressBytes;
};
const Product* findProduct(const std::string& reference);

}  // namespace iso15693

class Iso15693Tag final : public Tag {
 public:
  enum class State { Ready, Selected, Quiet };

  explicit Iso15693Tag(TagSetup setup);

  std::optional<hex::Bytes> receive(const AirFrame& frame) override;
  void fieldOff() override { state_ = State::Ready; }
  Json toJson() const override;

  State state() const { return state_; }
  // The UID as it travels: least significant byte (the last of the printed UID) first.
  const hex::Bytes& uid() const { return uid_; }
  std::uint8_t dsfid() const { return dsfid_; }
  bool blockLocked(int block) const { return locked_.count(block) != 0; }
  // Bytes of the block count field of Get System Info: 2 for the two-byte products.
  int addressBytes() const { return addressBytes_; }

 private:
  using Bytes = hex::Bytes;
  std::optional<Bytes> inventory(const Bytes& body);
  std::optional<Bytes> command(const Bytes& body);
  Bytes ok(const Bytes& data = {}) const;
  Bytes error(std::uint8_t code) const;
  Bytes withCrc(Bytes frame) const;
  const std::uint8_t* block(int number) const { return memory_.data() + static_cast<std::size_t>(number) * blockSize(); }

  Bytes uid_;
  std::uint64_t uidValue_ = 0;
  std::uint8_t dsfid_ = 0;
  std::uint8_t afi_ = 0;
  bool afiLocked_ = false;
  bool dsfidLocked_ = false;
  std::uint8_t icReference_ = 0;
  int addressBytes_ = 1;
  std::set<int> locked_;
  State state_ = State::Ready;
};

std::unique_ptr<Tag> makeIso15693Tag(TagSetup setup);

// ISO 15693 tags that answer different bytes in the same slot: the reader hears their
// bits on top of each other (a 1 wins), as long as the longest of them.
hex::Bytes superposeIso15693(const std::vector<hex::Bytes>& replies);

// A command of the board's controller (KQCmd mode "02"): A0 01 flags runs the whole ISO
// 15693 anticollision over the slots and answers "80", length, the number of tags, then
// DSFID and UID (least significant byte first) of each. Needs ISO 15693 selected on the
// chip (`chipProtocol` 01), else no tag is reached.
std::string iso15693ControllerCommand(const hex::Bytes& command, std::uint8_t chipProtocol, FieldContents& field);

}  // namespace sim
