#include "console/ChipCommands.h"

#include "common/hex.h"

namespace chip {

const ChipCommand* findCommand(std::string_view code) {
  const std::string key = hex::upper(code);
  for (const ChipCommand& c : kCommands)
    if (c.code == key) return &c;
  return nullptr;
}

std::string entryKey(std::string_view entry) { return entry.size() > 1 ? std::string(entry.substr(1, 2)) : ""; }

bool belongsTo(std::string_view commandList, std::string_view command) {
  if (command.size() != 2) return false;
  for (std::size_t at = 0; at + 2 <= commandList.size(); at += 3)
    if (commandList.substr(at, 2) == command) return true;
  return false;
}

std::optional<std::string_view> resultText(std::string_view command, std::string_view answer) {
  for (const ResultCode& r : kResultCodes)
    if (r.answer == answer && belongsTo(r.commands, command)) return r.text;
  return std::nullopt;
}

std::string registerRange(const RegisterBlock& b) { return "0x" + hex::byte(b.first) + " - 0x" + hex::byte(b.last); }

const RegisterBlock* registerBlock(std::uint8_t address) {
  for (const RegisterBlock& b : kRegisterMap)
    if (address >= b.first && address <= b.last) return &b;
  return nullptr;
}

namespace {
template <std::size_t N>
std::optional<std::string_view> setting(const std::array<AnalogSetting, N>& rows, char digit) {
  const char d = digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
  for (const AnalogSetting& s : rows)
    if (s.digit == d) return s.text;
  return std::nullopt;
}
}  // namespace

std::optional<std::string_view> modulationDepth(char x) { return setting(kModulationDepths, x); }
std::optional<std::string_view> receiverGain(char y) { return setting(kReceiverGains, y); }

std::string baudRateLine(const BaudRateRow& row) {
  std::string line = "<BaudRate> = " + std::to_string(row.value) + " : ";
  if (row.divider == 0) return line + std::string(row.rate);
  return line + "13.56 MHz / " + std::to_string(row.divider) + " = " + std::string(row.rate);
}

}  // namespace chip
