#include "iso15693/Iso15693Frames.h"

#include <algorithm>
#include <cctype>

#include "common/hex.h"
#include "reader/HexText.h"

namespace iso15693 {

namespace {
using F = Field;
constexpr F N = F::None;
}  // namespace

// The frames of the panel. Option and extension follow the rule of the row; the fields
// follow the code in the order given.
const std::array<CommandRow, static_cast<std::size_t>(Command::Count_)> kCommands{{
    {Command::ReadSingleBlock, "sendReadSingleBlock", "READ SINGLE BLOCK", "20", OptionRule::LockBits,
     ExtensionRule::Width, FlagRule::Addressed, {F::Uid, F::Block, N, N, N, N}},
    {Command::FastReadSingleBlock, "sendFastReadSingleBlock", "FAST READ SINGLE BLOCK", "C0", OptionRule::LockBits,
     ExtensionRule::Width, FlagRule::Addressed, {F::Mfg, F::Uid, F::Block, N, N, N}},
    {Command::ReadMultipleBlock, "sendReadMultipleBlock", "READ MULTIPLE BLOCK", "23", OptionRule::LockBits,
     ExtensionRule::Width, FlagRule::Addressed, {F::Uid, F::Block, F::Count, N, N, N}},
    {Command::FastReadMultipleBlock, "sendFastReadMultipleBlock", "FAST READ MULTIPLE BLOCK", "C3",
     OptionRule::LockBits, ExtensionRule::Width, FlagRule::Addressed, {F::Mfg, F::Uid, F::Block, F::Count, N, N}},
    {Command::WriteSingleBlock, "sendWriteSingleBlock", "WRITE SINGLE BLOCK", "21", OptionRule::LockBits,
     ExtensionRule::Width, FlagRule::Addressed, {F::Uid, F::Block, F::Data, N, N, N}},
    // The flags are computed and then replaced by "08": every Lock Block goes out so.
    {Command::LockBlock, "sendLockBlock", "LOCK", "22", OptionRule::Clear, ExtensionRule::Clear,
     FlagRule::LockBlock, {F::Uid, F::Block, N, N, N, N}},
    {Command::GetMultipleBlockSecurityStatus, "sendGetMultipleBlockSecurityStatus",
     "GET MULTIPLE BLOCK SECURITY STATUS", "2C", OptionRule::Clear, ExtensionRule::Width, FlagRule::Addressed,
     {F::Uid, F::Block, F::CountByWidth, N, N, N}},
    {Command::Select, "sendSelect", "SELECT", "25", OptionRule::Clear, ExtensionRule::Clear, FlagRule::Addressed,
     {F::UidAlways, N, N, N, N, N}},
    {Command::ResetToReady, "sendResetToReady", "RESET TO READY", "26", OptionRule::Clear, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Uid, N, N, N, N, N}},
    {Command::StayQuiet, "sendStayQuiet", "STAY QUIET", "02", OptionRule::Clear, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Uid, N, N, N, N, N}},
    {Command::WriteAFI, "sendWriteAFI", "WRITE AFI", "27", OptionRule::LockBits, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Uid, F::Data, N, N, N, N}},
    {Command::LockAFI, "sendLockAFI", "LOCK AFI", "28", OptionRule::LockBits, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Uid, N, N, N, N, N}},
    {Command::WriteDSFID, "sendWriteDSFID", "WRITE DSFID", "29", OptionRule::LockBits, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Uid, F::Data, N, N, N, N}},
    {Command::LockDSFID, "sendLockDSFID", "LOCK DSFID", "2A", OptionRule::LockBits, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Uid, N, N, N, N, N}},
    {Command::GetSystemInfo, "cmdGetSystemInfo", "GET SYSTEM INFO", "2B", OptionRule::Clear,
     ExtensionRule::ExtensionOption, FlagRule::Addressed, {F::Uid, N, N, N, N, N}},
    {Command::Initiate, "cmdInitiate", "INITIATE", "D2", OptionRule::Clear, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Mfg, N, N, N, N, N}},
    {Command::FastInitiate, "sendFastInitiate", "FAST INITIATE", "C2", OptionRule::Clear, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Mfg, N, N, N, N, N}},
    {Command::ReadEHConfig, "cmdReadEHconfig", "READ EH CONFIG", "A0", OptionRule::Clear, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Mfg, F::Uid, N, N, N, N}},
    {Command::CheckEHEnable, "cmdCheckEHenable", "CHECK EH ENABLE", "A3", OptionRule::Clear, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Mfg, F::Uid, N, N, N, N}},
    {Command::WriteEHConfig, "sendWriteEHConfig", "WRITE EH CONFIG", "A1", OptionRule::LockBits,
     ExtensionRule::Clear, FlagRule::Addressed, {F::Mfg, F::Uid, F::Data, N, N, N}},
    {Command::SetResetEHConfig, "sendSetResetEHConfig", "SET RESET EH CONFIG", "A2", OptionRule::LockBits,
     ExtensionRule::Clear, FlagRule::Addressed, {F::Mfg, F::Uid, F::Data, N, N, N}},
    {Command::WriteDOConfig, "sendWriteDOConfig", "WRITE DO CONFIG", "A4", OptionRule::LockBits,
     ExtensionRule::Clear, FlagRule::Addressed, {F::Mfg, F::Uid, F::Data, N, N, N}},
    // The kill password's number "00" stands in front of the UID ...
    {Command::WriteKill, "sendWriteKill", "WRITE KILL", "B1", OptionRule::LockBits, ExtensionRule::Clear,
     FlagRule::Addressed, {F::Mfg, F::KillNumber, F::Uid, F::Data, N, N}},
    {Command::Kill, "sendKill", "KILL", "A6", OptionRule::LockBits, ExtensionRule::Clear, FlagRule::Addressed,
     {F::Mfg, F::KillNumber, F::Uid, F::Data, N, N}},
    // ... while a sector password's number stands behind it.
    {Command::WriteSectorPassword, "sendWriteSectorPassword", "WRITE SECTOR PASSWORD", "B1", OptionRule::LockBits,
     ExtensionRule::Clear, FlagRule::Addressed, {F::Mfg, F::Uid, F::Password, F::Data, N, N}},
    {Command::PresentPassword, "sendPresentPassword", "PRESENT PASSWORD", "B3", OptionRule::LockBits,
     ExtensionRule::Clear, FlagRule::Addressed, {F::Mfg, F::Uid, F::Password, F::Data, N, N}},
    {Command::LockSectorPassword, "sendLockSectorPassword", "LOCK SECTOR PASSWORD", "B2", OptionRule::LockBits,
     ExtensionRule::Width, FlagRule::Addressed, {F::Mfg, F::Uid, F::Block, F::Data, N, N}},
}};

const CommandRow& commandRow(Command c) { return kCommands[static_cast<std::size_t>(c)]; }

std::optional<std::uint8_t> dataRateBits(int index) {
  switch (index) {
    case 0:
      return 0x00;
    case 1:
      return kHighDataRate;
    case 2:
      return kTwoSubcarriers;
    case 3:
      return kTwoSubcarriers | kHighDataRate;
    default:
      return std::nullopt;
  }
}

std::optional<std::uint8_t> commandFlags(Command c, const FlagControls& f, int width) {
  const CommandRow& row = commandRow(c);
  std::uint8_t flags = f.base;
  if (f.select) flags |= kSelect;
  if (f.address) flags |= kAddress;
  if (row.option == OptionRule::LockBits && f.lockBits) flags |= kOption;
  switch (row.extension) {
    case ExtensionRule::Width:
      if (width != 1) flags |= kProtocolExtension;
      break;
    case ExtensionRule::ExtensionOption:
      if (f.extensionOption1) flags |= kProtocolExtension;
      break;
    case ExtensionRule::Clear:
      break;
  }
  const auto rate = dataRateBits(f.dataRate);
  if (!rate) return std::nullopt;
  return static_cast<std::uint8_t>(flags | *rate);
}

std::optional<std::string> commandFlagsText(Command c, const FlagControls& f, int width) {
  const auto flags = commandFlags(c, f, width);
  if (!flags) return std::nullopt;
  if (commandRow(c).flags == FlagRule::LockBlock) return std::string(kLockBlockFlags);
  return hex::byte(*flags);
}

std::string hex2(std::uint32_t value) { return reader::hexPadWidth7(static_cast<std::int32_t>(value), 2); }

std::string blockText(std::uint32_t block, int width) {
  if (width == 1) return hex2(block);
  return hex2(block & 0xFF) + hex2(block / 256);
}

std::string buildFrameWithFlags(Command c, const std::string& flagsText, bool addressFlag,
                                const FrameFields& fields) {
  const CommandRow& row = commandRow(c);
  std::string frame = flagsText + row.code;
  for (Field field : row.fields) {
    switch (field) {
      case Field::None:
        break;
      case Field::Mfg:
        frame += kManufacturerCode;
        break;
      case Field::KillNumber:
        frame += "00";
        break;
      case Field::Uid:
        if (addressFlag) frame += fields.uidFrame;
        break;
      case Field::UidAlways:
        frame += fields.uidFrame;
        break;
      case Field::Block:
        frame += blockText(fields.block, fields.width);
        break;
      case Field::Count:
        frame += hex2(fields.count - 1);
        break;
      case Field::CountByWidth:
        frame += blockText(fields.count - 1, fields.width);
        break;
      case Field::Password:
        frame += hex2(static_cast<std::uint32_t>(fields.passwordNumber));
        break;
      case Field::Data:
        frame += fields.data;
        break;
    }
  }
  return hex::withoutBlanks(frame);
}

std::optional<std::string> buildFrame(Command c, const FlagControls& f, const FrameFields& fields) {
  const auto flags = commandFlagsText(c, f, fields.width);
  if (!flags) return std::nullopt;
  return buildFrameWithFlags(c, *flags, f.address, fields);
}

// --- inventory ---------------------------------------------------------------------------

namespace {
// Leading hexadecimal digits as a number, wrapping beyond 32 bits; 0 when there are none.
std::uint32_t leadingHex(std::string_view text) {
  std::uint32_t v = 0;
  for (char ch : text) {
    const int d = hex::digitValue(ch);
    if (d < 0) break;
    v = v << 4 | static_cast<std::uint32_t>(d);
  }
  return v;
}
}  // namespace

int maskByteCount(std::uint32_t bits) { return bits > 0 ? static_cast<int>((bits - 1) / 8 + 1) : 0; }

std::uint32_t maskLengthValue(std::string_view text) { return leadingHex(text); }

std::optional<std::uint8_t> inventoryFlags(const InventoryControls& c) {
  std::uint8_t flags = c.base | kInventory;
  if (c.afiOption) flags |= kSelect;
  if (c.oneSlot) flags |= kAddress;
  const auto rate = dataRateBits(c.dataRate);
  if (!rate) return std::nullopt;
  return static_cast<std::uint8_t>(flags | *rate);
}

std::optional<std::string> inventoryFrame(const InventoryControls& c, std::string_view code, bool manufacturer) {
  const auto flags = inventoryFlags(c);
  if (!flags) return std::nullopt;
  std::string frame = hex::byte(*flags) + std::string(code);
  if (manufacturer) frame += kManufacturerCode;
  if (c.afiOption) frame += c.afi;
  frame += c.maskLength;
  // Mask bytes as typed: the unused bits of the last one travel as they stand. A length
  // beyond 64 bits can only come from a pasted text; the boxes stop at eight.
  const int n = std::min(maskByteCount(maskLengthValue(c.maskLength)), 8);
  for (int i = 0; i < n; ++i) frame += c.maskValues[static_cast<std::size_t>(i)];
  return hex::withoutBlanks(frame);
}

std::optional<std::string> anticollisionFrame(const InventoryControls& c) {
  std::uint8_t flags = c.base | kInventory;
  if (c.oneSlot) flags |= kAddress;
  const auto rate = dataRateBits(c.dataRate);
  if (!rate) return std::nullopt;
  return "02A001" + hex::byte(static_cast<std::uint8_t>(flags | *rate));
}

std::string inventoryRowNumber(const InventoryControls& c) {
  // The number is what the walk over the mask boxes left behind, not a count of tags.
  const int n = maskByteCount(maskLengthValue(c.maskLength));
  return n > 0 ? hex2(static_cast<std::uint32_t>(n + 1)) : "00";
}

// --- UID order ------------------------------------------------------------------------------

std::string uidFrameFromBox(std::string_view box) {
  std::string out;
  // Pairs at positions 15, 13, ..., 1 (counted from 1).
  for (int p = 15; p >= 1; p -= 2) {
    const std::size_t at = static_cast<std::size_t>(p - 1);
    if (at < box.size()) out += box.substr(at, 2);
  }
  return out;
}

UidBoxResult leaveUidBox(std::string_view text) {
  UidBoxResult r;
  r.boxText = hex::upper(text);
  if (r.boxText.empty()) {
    r.red = true;
    r.frame = UidBoxResult::Frame::Emptied;
  } else if (r.boxText.size() == 16) {
    r.frame = UidBoxResult::Frame::Rebuilt;
    r.uidFrame = uidFrameFromBox(r.boxText);
  } else if (r.boxText == "TRANSPONDER UID") {
    r.frame = UidBoxResult::Frame::Kept;
  } else {
    r.red = true;
    r.frame = UidBoxResult::Frame::Emptied;
  }
  return r;
}

std::string uidFrameFromLabelClick(std::string_view box) {
  for (char ch : box)
    if (!hex::isDigit(ch)) return {};
  return uidFrameFromBox(box);
}

std::string byteBoxOnLeave(std::string_view text) {
  if (text.empty()) return {};
  return hex2(leadingHex(text) & 0xFF);
}

std::string maskLengthOnLeave(std::string_view text) {
  if (text.empty()) return {};
  const std::uint32_t v = leadingHex(text) & 0x7F;
  return v > 0x40 ? "00" : hex2(v);
}

long leadingNumber(std::string_view text) {
  long v = 0;
  std::size_t i = 0;
  while (i < text.size() && text[i] == ' ') ++i;
  for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
    if (v > 100000000L) break;
    v = v * 10 + (text[i] - '0');
  }
  return v;
}

bool controllerHasAnticollision(std::string_view mcuRevisionText) {
  std::string digits;
  for (char ch : mcuRevisionText)
    if (ch != '.') digits += ch;
  return leadingNumber(digits) >= 141;
}

}  // namespace iso15693
