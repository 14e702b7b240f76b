#include "iso14443b/Iso14443BFrames.h"

#include <algorithm>
#include <cmath>

#include "common/hex.h"
#include "reader/HexText.h"

namespace iso14443b {

std::string mid(std::string_view text, std::size_t position, std::size_t length) {
  if (position < 1 || position > text.size()) return {};
  return std::string(text.substr(position - 1, length));
}

std::string byteText(int value) { return hex::byte(static_cast<std::uint8_t>(value & 0xFF)); }

bool goodAnswer(std::string_view answer) {
  return answer.size() >= 2 && answer.substr(0, 2) == "80" && answer.substr(answer.size() - 2) == "00";
}

int bitOf(std::string_view box) { return box == "1" ? 1 : 0; }

std::string binaryBoxOnLeave(std::string_view box) {
  if (box.empty()) return "0";
  const auto value = hex::toNumber(box);
  return (value && (*value & 1u)) ? "1" : "0";
}

std::string hexBoxOnLeave(std::string_view box, int width) {
  const std::uint32_t value = hex::toNumber(box).value_or(0);
  return reader::hexPadWidth7(static_cast<std::int32_t>(value), static_cast<std::uint8_t>(width));
}

// --- REQB, WUPB, ATTRIB ----------------------------------------------------------------------

int slotParameter(const std::array<std::string, 3>& boxes) {
  int n = 0;
  for (int i = 2; i >= 0; --i) n = 2 * n + bitOf(boxes[static_cast<std::size_t>(i)]);
  return n;
}

// The chip's ISO 14443-B has no transmission flag byte: the frame ends with the parameter.
std::string reqbFrame(const std::string& afi, int n) { return "05" + afi + byteText(0xF0 | n); }
std::string wupbFrame(const std::string& afi, int n) { return "05" + afi + byteText(0xF8 | n); }

ReqbLabels reqbLabels(std::string_view a) {
  ReqbLabels l;
  if (!goodAnswer(a)) return l;
  l.answer += mid(a, 5, 32);
  l.firstByte += mid(a, 5, 2);
  l.pupi += mid(a, 7, 8);
  l.applicationData += mid(a, 15, 8);
  l.protocolInfo += mid(a, 23, 8);
  l.crc += mid(a, 31, 4);
  return l;
}

std::string pupiOf(std::string_view answer) { return mid(answer, 7, 8); }

std::string attribFrame(const AttribFields& f) {
  return "1D" + f.pupi + f.responseTime + f.maxFrameSize + f.compliant + f.cid;
}

AttribLabels attribLabels(std::string_view a) {
  AttribLabels l;
  if (!goodAnswer(a)) return l;
  l.mbliCid += mid(a, 5, 1) + " " + mid(a, 6, 1);
  l.crc += mid(a, 7, 2);
  return l;
}

// --- the family's commands -----------------------------------------------------------------

const std::array<FamilyRow, 7>& familyCommands() {
  static const std::array<FamilyRow, 7> rows{{
      {FamilyCommand::Initiate, "cmd_ISO14443B_Initiate", "Initiate", "0600", "INITIATE"},
      {FamilyCommand::Pcall16, "cmd_ISO14443B_Pcall16", "Pcall16", "0604", "PCALL16"},
      {FamilyCommand::SlotMarker, "cmd_ISO14443B_SlotMarker", "Slot Marker (SN)", "", "SLOT MARKER"},
      {FamilyCommand::Select, "cmd_ISO14443B_Select", "Select(Chip_Id)", "0E", "SELECT"},
      {FamilyCommand::Completion, "cmd_ISO14443B_Completion", "Completion", "0F", "COMPLETION"},
      {FamilyCommand::ResetToInventory, "cmd_ISO14443B_ResetToInventory", "Reset to Inventory", "0C",
       "RESET TO INVENTORY"},
      {FamilyCommand::GetUid, "cmd_ISO14443B_GetUID", "Get UID", "0B", "GET UID"},
  }};
  return rows;
}

const FamilyRow& familyRow(FamilyCommand c) {
  for (const FamilyRow& row : familyCommands())
    if (row.command == c) return row;
  return familyCommands()[0];
}

int slotNumber(const std::array<std::string, 4>& boxes) {
  int n = 0;
  for (int i = 3; i >= 0; --i) n = 2 * n + bitOf(boxes[static_cast<std::size_t>(i)]);
  return n;
}

std::string slotMarkerFrame(int slot) { return byteText(16 * slot + 6); }
std::string selectFrame(const std::string& chipId) { return "0E" + chipId; }
std::string chipIdOf(std::string_view answer) { return mid(answer, 5, 2); }

std::string reversedUid(std::string_view answer) {
  std::string uid;
  for (int i = 0; i < 8; ++i) uid += mid(answer, static_cast<std::size_t>(19 - 2 * i), 2);
  return uid;
}

// --- the slot inventory ---------------------------------------------------------------------

Cell cellOf(int k) { return {(k - 1) % kGridRows, (k - 1) / kGridRows}; }
std::string cellLabel(int k) { return std::to_string(k) + ": "; }
std::string slotMarkerTitle(int slot) { return "SLOT MARKER (" + std::to_string(slot) + ")"; }
std::string slotEntry(std::string_view answer) { return " ChipID = " + mid(answer, 5, 2) + " "; }

std::string chipIdOfEntry(std::string_view entry) {
  if (entry.size() < 3) return std::string(entry.substr(0, 2));
  return std::string(entry.substr(entry.size() - 3, 2));
}

// --- block memory ------------------------------------------------------------------------------

int addressWidth(long lastAddress) {
  if (lastAddress <= 1) return 1;
  const long bits = std::lround(std::log2(static_cast<double>(lastAddress)));
  return static_cast<int>((bits - 1) / 4 + 1);
}

long blockCount(long start, long end, long mask) {
  long count = end - start + 1;
  if (end < start) count += mask + 1;
  return count;
}

std::string addressText(long address, int addressBytes) {
  std::string out;
  for (int i = 0; i < std::max(addressBytes, 1); ++i) out += byteText(static_cast<int>((address >> (8 * i)) & 0xFF));
  return out;
}

std::string readFrame(long address, int addressBytes) { return "08" + addressText(address, addressBytes); }

std::string readRow(std::string_view answer, int pageSize) {
  if (!goodAnswer(answer)) return kReadError;
  std::string row;
  for (int i = 0; i < pageSize; ++i) row += mid(answer, static_cast<std::size_t>(5 + 2 * i), 2) + " ";
  return row;
}

std::string writeFrame(long address, int addressBytes, const std::string& data) {
  return "09" + addressText(address, addressBytes) + hex::withoutBlanks(data);
}

std::string writeRow(std::string_view answer) { return goodAnswer(answer) ? kWriteDone : kWriteError; }

}  // namespace iso14443b
