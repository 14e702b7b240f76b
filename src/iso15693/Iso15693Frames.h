// ISO 15693 request frames as the panel sends them: the flags byte, the command table
// (code, trace title, which flags each command takes, the order of its fields), the
// block address text and the UID order. Plain text in, plain text out, no state.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace iso15693 {

// Bits of the ISO 15693 request flags byte.
enum Flag : std::uint8_t {
  kTwoSubcarriers = 0x01,
  kHighDataRate = 0x02,
  kInventory = 0x04,
  kProtocolExtension = 0x08,
  kSelect = 0x10,      // AFI in an inventory
  kAddress = 0x20,     // one slot in an inventory
  kOption = 0x40,
};

// The manufacturer code that every custom command carries behind its code.
inline constexpr const char* kManufacturerCode = "02";
// Lock Block always goes out with these flags, whatever the controls say.
inline constexpr const char* kLockBlockFlags = "08";

// The four choices of optDataRate, in the order of the option array.
inline constexpr std::array<const char*, 4> kDataRateCaptions{"Low", "High", "Low two SC", "High two SC"};
inline constexpr int kDefaultDataRate = 1;

// The data rate and sub-carrier bits of optDataRate index 0 to 3; nullopt for anything
// else (no option chosen), which the panel treats as broken.
std::optional<std::uint8_t> dataRateBits(int dataRateIndex);

// What the panel's controls say about the flags of one request.
struct FlagControls {
  std::uint8_t base = 0;  // iso15693RequestFlags
  bool select = false;    // chk_Select_Address_flag index 0
  bool address = false;   // chk_Select_Address_flag index 1
  bool lockBits = false;  // chkLockBits
  int dataRate = kDefaultDataRate;
  bool extensionOption1 = false;  // optExtensionFlag index 1 (Get System Info only)
};

// Which fields a command puts behind its code, in this order.
enum class Field : std::uint8_t {
  None,
  Mfg,          // "02"
  KillNumber,   // "00", the kill password's number, in front of the UID
  Uid,          // transponderUIDFrame when the Address box is on
  UidAlways,    // transponderUIDFrame whatever the Address box says
  Block,        // one or two bytes by the address width, low byte first
  Count,        // count-1 as one byte
  CountByWidth, // count-1, two bytes low first when the address width is not 1
  Password,     // the password number as two digits
  Data,         // text handed over by the caller (grid, box)
};

// How a command sets the Option flag (0x40).
enum class OptionRule : std::uint8_t { LockBits, Clear };
// How a command sets the protocol extension flag (0x08).
enum class ExtensionRule : std::uint8_t {
  Width,           // set when the address width is not 1
  Clear,           // never
  ExtensionOption, // set when optExtensionFlag index 0 is off (Get System Info)
};
// Which of the panel's boxes take part at all.
enum class FlagRule : std::uint8_t {
  Addressed,  // Select and Address from their boxes, then Option and extension
  LockBlock,  // computed as Addressed and then replaced by "08"
};

enum class Command : std::uint8_t {
  ReadSingleBlock,
  FastReadSingleBlock,
  ReadMultipleBlock,
  FastReadMultipleBlock,
  WriteSingleBlock,
  LockBlock,
  GetMultipleBlockSecurityStatus,
  Select,
  ResetToReady,
  StayQuiet,
  WriteAFI,
  LockAFI,
  WriteDSFID,
  LockDSFID,
  GetSystemInfo,
  Initiate,
  FastInitiate,
  ReadEHConfig,
  CheckEHEnable,
  WriteEHConfig,
  SetResetEHConfig,
  WriteDOConfig,
  WriteKill,
  Kill,
  WriteSectorPassword,
  PresentPassword,
  LockSectorPassword,
  Count_
};

struct CommandRow {
  Command command;
  const char* routine;  // the panel's routine that sends it
  const char* title;    // its trace title
  const char* code;
  OptionRule option;
  ExtensionRule extension;
  FlagRule flags;
  std::array<Field, 6> fields;
};

// One row per command, in the order of the enum.
extern const std::array<CommandRow, static_cast<std::size_t>(Command::Count_)> kCommands;
const CommandRow& commandRow(Command c);

// What a frame needs besides the flags.
struct FrameFields {
  std::string uidFrame;   // transponderUIDFrame
  std::uint32_t block = 0;
  int width = 1;          // the address width handed to the routine
  std::uint32_t count = 1;
  int passwordNumber = 1;
  std::string data;
};

// The flags byte of a command, in the order of evaluation: base, Select, Address,
// Option, extension, data rate. nullopt when no data rate option is on.
std::optional<std::uint8_t> commandFlags(Command c, const FlagControls& f, int width);
// The flags as two digits, "08" for Lock Block.
std::optional<std::string> commandFlagsText(Command c, const FlagControls& f, int width);
// The whole frame, blanks removed; nullopt when no data rate option is on.
std::optional<std::string> buildFrame(Command c, const FlagControls& f, const FrameFields& fields);
// The frame with flags already computed (the routines compute them once for a walk).
std::string buildFrameWithFlags(Command c, const std::string& flagsText, bool addressFlag,
                                const FrameFields& fields);

// Two upper-case digits of the low byte; values above 0xFF keep their extra digits,
// as a block address of a walk through the end of memory does.
std::string hex2(std::uint32_t value);
// Block address: two digits for width 1; otherwise the low byte, then value / 256.
std::string blockText(std::uint32_t block, int width);

// --- inventory -------------------------------------------------------------------------

struct InventoryControls {
  std::uint8_t base = 0;
  bool afiOption = false;       // chkInventoryAFIOptions
  bool oneSlot = true;          // optInventorySlot index 0
  int dataRate = kDefaultDataRate;
  std::string afi = "00";       // txtInventoryOptionalAFI
  std::string maskLength = "00";  // txtInventoryMaskLenght
  std::array<std::string, 8> maskValues{"00", "00", "00", "00", "00", "00", "00", "00"};
};

// The inventory family: the same fields behind different codes.
enum class InventoryCommand : std::uint8_t { Inventory, InventoryInitiated, FastInventoryInitiated, Count_ };
struct InventoryRow {
  InventoryCommand command;
  const char* routine;
  const char* title;
  const char* code;
  bool manufacturer;  // "02" behind the code
};
inline constexpr std::array<InventoryRow, static_cast<std::size_t>(InventoryCommand::Count_)> kInventoryCommands{{
    {InventoryCommand::Inventory, "cmdInventory", "INVENTORY", "01", false},
    {InventoryCommand::InventoryInitiated, "cmdInventoryInitiated", "INVENTORY INITIATED", "D1", true},
    // The short title is the one the trace has always shown.
    {InventoryCommand::FastInventoryInitiated, "sendFastInventoryInitiated", "FAST INVENTORY INITIATE", "C1", true},
}};
inline const InventoryRow& inventoryRow(InventoryCommand c) { return kInventoryCommands[static_cast<std::size_t>(c)]; }

// Number of mask bytes a mask length (read as hexadecimal) asks for: (L-1)\8+1, or 0.
int maskByteCount(std::uint32_t maskLengthBits);
// The mask length text read as hexadecimal; 0 when it is not a number.
std::uint32_t maskLengthValue(std::string_view text);

// Flags of Inventory and its initiated forms: base, 0x04, AFI, one slot, data rate.
std::optional<std::uint8_t> inventoryFlags(const InventoryControls& c);
// flags, code (with "02" behind for the custom forms), AFI if any, mask length, mask bytes.
std::optional<std::string> inventoryFrame(const InventoryControls& c, std::string_view code = "01",
                                          bool manufacturer = false);
inline std::optional<std::string> inventoryFrame(const InventoryControls& c, InventoryCommand command) {
  const InventoryRow& row = inventoryRow(command);
  return inventoryFrame(c, row.code, row.manufacturer);
}
// The board controller's anticollision command: "02" + "A0" + "01" + flags, where the
// flags are base, 0x04, one slot and data rate; AFI and mask play no part.
std::optional<std::string> anticollisionFrame(const InventoryControls& c);
// The row number cmdInventory writes: "00" with no mask, else mask bytes + 1.
std::string inventoryRowNumber(const InventoryControls& c);

// --- UID order ---------------------------------------------------------------------------

// The box's 16 digits with their eight byte pairs in reverse order (frame order).
std::string uidFrameFromBox(std::string_view box16);

// What leaving txtTransponderUID does.
struct UidBoxResult {
  std::string boxText;     // written back upper case
  bool red = false;
  enum class Frame { Rebuilt, Emptied, Kept } frame = Frame::Kept;
  std::string uidFrame;    // when Rebuilt
};
UidBoxResult leaveUidBox(std::string_view text);
// The click on lblChoosenTag: the frame when every character is a hexadecimal digit
// (rebuilt from the box, whatever its length), else empty.
std::string uidFrameFromLabelClick(std::string_view box);

// The field rule of the AFI and mask boxes on leaving: empty stays empty, else the value
// ANDed with 0xFF as two digits.
std::string byteBoxOnLeave(std::string_view text);
// The mask length box on leaving: empty stays empty; else ANDed with 0x7F, and "00" when
// the result is above 0x40.
std::string maskLengthOnLeave(std::string_view text);

// Leading digits of a text read as a decimal number, as a lenient reader would; 0 when
// there are none. Used for the controller's revision text with its points removed.
long leadingNumber(std::string_view text);
// The anticollision button is shown from controller revision 1.4.1 on.
bool controllerHasAnticollision(std::string_view mcuRevisionText);

}  // namespace iso15693
