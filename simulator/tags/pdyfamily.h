// A simulated tag of the PDX51 to PDY55 family: ISO/IEC 14443-B air and frames with
// CRC_B, but the family's own inventory instead of the standard's activation. A tag
// wakes up READY; Initiate draws its 8-bit chip identifier and puts it in INVENTORY;
// Pcall16 draws afresh and answers when the identifier's low four bits are 0, a Slot
// Marker when they are its slot; Select with the identifier SELECTs it (another
// identifier DESELECTs a selected tag); in SELECTED it reads and writes its 4-byte blocks
// and tells its UID; Reset to Inventory takes it back to INVENTORY and Completion
// DEACTIVATEs it until the field goes off.
#pragma once

#include <cstdint>
#include <optional>
#include <set>

#include "simulator/tags/iso14443b.h"
#include "simulator/tags/tag.h"

namespace sim {

namespace pdy {

enum Code : std::uint8_t {
  kInitiateOrPcall = 0x06,  // 06 00 Initiate, 06 04 Pcall16; 06 alone and x6 are Slot Markers
  kReadBlock = 0x08,
  kWriteBlock = 0x09,
  kGetUid = 0x0B,
  kResetToInventory = 0x0C,
  kSelect = 0x0E,
  kCompletion = 0x0F,
};
inline constexpr std::uint8_t kInitiateParameter = 0x00;
inline constexpr std::uint8_t kPcall16Parameter = 0x04;

// The family's products and their memory in 4-byte blocks.
struct Product {
  const char* reference;
  int blockCount;
};
const Product* findProduct(const std::string& reference);

}  // namespace pdy

class PdyTag final : public Tag {
 public:
  enum class State { Ready, Inventory, Selected, Deselected, Deactivated };

  explicit PdyTag(TagSetup setup);

  std::optional<hex::Bytes> receive(const AirFrame& frame) override;
  void fieldOff() override { state_ = State::Ready; }
  Json toJson() const override;

  State state() const { return state_; }
  std::uint8_t chipId() const { return chipId_; }
  int slot() const { return chipId_ & 0x0F; }
  // The UID as it travels: least significant byte (the last of the printed UID) first.
  const hex::Bytes& uid() const { return uid_; }
  // Blocks that Read Block and Write Block reach: the product's, at most the file's.
  int usableBlocks() const { return usableBlocks_; }

 private:
  using Bytes = hex::Bytes;
  Bytes withCrc(Bytes frame) const;
  void drawChipId();

  Bytes uid_;
  std::optional<std::uint8_t> fixedChipId_;
  std::uint8_t chipId_ = 0;
  std::set<int> locked_;
  int usableBlocks_ = 0;
  State state_ = State::Ready;
  iso14443b::Draw draw_;
};

std::unique_ptr<Tag> makePdyTag(TagSetup setup);

}  // namespace sim
