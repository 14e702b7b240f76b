#include "console/ProtocolSelect.h"

#include "common/hex.h"
#include "reader/HexText.h"

namespace console {

const ParameterList* findParameterList(std::string_view name) {
  for (const ParameterList& l : kParameterLists)
    if (l.name == name) return &l;
  return nullptr;
}

bool showsList(const ProtocolOption& option, std::string_view list) {
  for (std::string_view name : option.lists)
    if (!name.empty() && name == list) return true;
  return false;
}

int optionOfProtocolCode(int protocolCode) {
  for (std::size_t i = 0; i < kProtocolOptionRows.size(); ++i)
    if (kProtocolOptionRows[i].protocolCode == protocolCode) return static_cast<int>(i);
  return -1;
}

int entryValue(const ParameterList& list, std::string_view entry) {
  const std::size_t digits = list.read == EntryRead::TwoBits ? 2 : 1;
  if (entry.size() < 1 + digits) return -1;
  const std::string_view text = entry.substr(1, digits);
  int value = 0;
  for (char c : text) {
    if (list.read == EntryRead::HexBit || list.read == EntryRead::SlotCounter) {
      const int d = hex::digitValue(c);
      if (d < 0) return -1;
      value = value * 16 + d;
    } else {
      if (c < '0' || c > '9') return -1;
      value = value * 10 + (c - '0');
    }
  }
  return value;
}

void applyEntryValue(const ParameterList& list, int value, Bits& bits) {
  auto set = [&bits](int bit, int on) {
    if (bit >= 0 && bit < 8) bits[static_cast<std::size_t>(bit)] = on ? "1" : "0";
  };
  switch (list.read) {
    case EntryRead::Bit:
    case EntryRead::HexBit:
      set(list.lowBit, value & 1);
      break;
    case EntryRead::TwoBits:
      // The decimal numbers 10 and 11 have the bit patterns of their digits by construction.
      set(list.lowBit, value & 1);
      set(list.lowBit + 1, (value & 2) / 2);
      break;
    case EntryRead::SlotCounter:
      set(list.lowBit, value & 1);
      set(list.lowBit + 1, (value & 2) / 2);
      set(list.lowBit + 2, (value & 4) / 4);
      set(list.lowBit + 3, (value & 8) / 8);
      break;
  }
}

Bits bitsOf(std::uint8_t value) {
  Bits b;
  for (std::size_t n = 0; n < 8; ++n) b[n] = (value >> n) & 1 ? "1" : "0";
  return b;
}

std::uint8_t byteOf(const Bits& bits) {
  unsigned value = 0;
  for (int n = 7; n >= 0; --n) {
    const auto bit = hex::toNumber(bits[static_cast<std::size_t>(n)]);
    value = value * 2 + (bit ? (*bit & 1) : 0);
  }
  return static_cast<std::uint8_t>(value & 0xFF);
}

std::string_view appendCrcEntry(std::string_view bit0) {
  return bit0 == "0" ? kAppendCrcEntries[0] : kAppendCrcEntries[1];
}

std::string normaliseByteBox(std::string_view text, std::string_view emptyText) {
  if (text.empty()) return std::string(emptyText);
  const auto value = hex::toNumber(text);
  if (!value) return std::string(text);
  return reader::hexPadWidth7(static_cast<std::int32_t>(*value & 0xFF), 2);
}

std::string normaliseBitBox(std::string_view text) {
  if (text.empty()) return "0";
  const auto value = hex::toNumber(text);
  return value && (*value & 1) ? "1" : "0";
}

std::string movedLength(std::string_view box1, int delta) {
  const auto value = hex::toNumber(box1);
  const int moved = (value ? static_cast<int>(*value & 0xFF) : 0) + delta;
  return reader::hexPadWidth7(moved & 0xFF, 2);
}

}  // namespace console
