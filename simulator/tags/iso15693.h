// A simulated ISO/IEC 15693 vicinity tag (ISO/IEC 15693-3 command set) and the board
// controller's ISO 15693 anticollision. The tag keeps its state (ready, selected, quiet),
// its AFI and DSFID with their locks, and its memory with locked blocks; it checks the
// reader's CRC and closes every answer with its own.
#pragma once

#include <array>
#include <cstdint>
#include <map>
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
  // Custom commands of the catalogue's families, behind the manufacturer code.
  kReadEhConfig = 0xA0,
  kWriteEhConfig = 0xA1,
  kSetResetEhEnable = 0xA2,
  kCheckEhEnable = 0xA3,
  kWriteDoConfig = 0xA4,
  kKill = 0xA6,
  kWritePassword = 0xB1,      // password number 00 is the kill password
  kLockSectorPassword = 0xB2,
  kPresentPassword = 0xB3,
  kFastReadSingleBlock = 0xC0,
  kFastInventoryInitiated = 0xC1,
  kFastInitiate = 0xC2,
  kFastReadMultipleBlocks = 0xC3,
  kInventoryInitiated = 0xD1,
  kInitiate = 0xD2,
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
  kReadProtected = 0x15,
};

// Blocks of one sector of the password-protected families.
inline constexpr int kSectorBlocks = 32;
// Sector security status byte of Lock Sector Password: bit 0 protects the sector, bits 1-2
// say what the password opens, bits 3-4 name the password (1 to 3).
inline constexpr std::uint8_t kSectorProtected = 0x01;

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
  std::uint8_t icReference;  // answered by Get System Info when the entry gives none
  bool kill;                 // Write Kill and Kill
  bool sectorPasswords;      // Write, Lock and Present Sector Password
  bool energyHarvesting;     // EH and data-out configuration
};
const Product* findProduct(const std::string& reference);

}  // namespace iso15693

class Iso15693Tag final : public Tag {
 public:
  enum class State { Ready, Selected, Quiet };

  explicit Iso15693Tag(TagSetup setup);

  std::optional<hex::Bytes> receive(const AirFrame& frame) override;
  // Power gone: the state, the initiation and the presented passwords are forgotten; the
  // passwords, the configuration bytes and a kill are not.
  void fieldOff() override;
  Json toJson() const override;

  State state() const { return state_; }
  // The UID as it travels: least significant byte (the last of the printed UID) first.
  const hex::Bytes& uid() const { return uid_; }
  std::uint8_t dsfid() const { return dsfid_; }
  bool blockLocked(int block) const { return locked_.count(block) != 0; }
  // Bytes of the block count field of Get System Info: 2 for the two-byte products.
  int addressBytes() const { return addressBytes_; }
  bool initiated() const { return initiated_; }
  bool killed() const { return killed_; }
  // Configuration byte of the energy-harvesting models: bits 0-2 energy harvesting, bit 3
  // data out. The EH enable byte is the control register's bit 0.
  std::uint8_t configuration() const { return configuration_; }
  std::uint8_t ehEnable() const { return ehEnable_; }
  // The sector security status byte written by Lock Sector Password (0: unprotected).
  std::uint8_t sectorStatus(int sector) const;

 private:
  using Bytes = hex::Bytes;
  std::optional<Bytes> inventory(const Bytes& body);
  std::optional<Bytes> command(const Bytes& body, bool doubleRate);
  std::optional<Bytes> custom(std::uint8_t code, std::uint8_t flags, const Bytes& body, std::size_t pos);
  bool canRead(int block) const;
  bool canWrite(int block) const;
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
  const iso15693::Product* product_ = nullptr;
  bool doubleRate_ = false;  // the chip listens at the double data rate of the fast commands
  bool initiated_ = false;
  bool killed_ = false;
  Bytes killPassword_ = Bytes(4, 0);
  std::array<Bytes, 3> passwords_{Bytes(4, 0), Bytes(4, 0), Bytes(4, 0)};
  std::array<bool, 3> presented_{};
  std::map<int, std::uint8_t> sectorStatus_;
  std::uint8_t configuration_ = 0;
  std::uint8_t ehEnable_ = 0;
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
