#include "console/ConsoleFrames.h"

#include <algorithm>

#include "common/hex.h"
#include "reader/HexText.h"

namespace console {

std::vector<std::string> frameBytes(std::string_view spaced) {
  std::vector<std::string> out;
  std::size_t at = 0;
  while (at < spaced.size()) {
    const std::size_t blank = spaced.find(' ', at);
    const std::size_t end = blank == std::string_view::npos ? spaced.size() : blank;
    if (end > at) out.emplace_back(spaced.substr(at, end - at));
    at = end + 1;
  }
  return out;
}

std::string_view idleCaptionTip(std::size_t byte) {
  switch (byte) {
    case 2:
      return kWfuFlagsBitsTip;
    case 3:
    case 5:
    case 7:
      return kCtrlLBitsTip;
    case 4:
    case 6:
    case 8:
      return kCtrlHBitsTip;
    default:
      return {};
  }
}

std::map<std::string, CommandStore> defaultStores() {
  std::map<std::string, CommandStore> stores;
  for (const chip::ChipCommand& c : chip::kCommands) {
    if (c.panel != chip::FramePanel::Generic) continue;
    CommandStore s;
    const auto bytes = frameBytes(c.defaultFrame);
    for (std::size_t i = 0; i < s.boxes.size() && i < bytes.size(); ++i) s.boxes[i] = bytes[i];
    if (c.data == chip::DataBox::Register) s.data = "00";
    stores.emplace(std::string(c.code), std::move(s));
  }
  return stores;
}

std::string requestBoxText(std::string_view request) {
  return request.size() > 2 ? std::string(request.substr(2)) : std::string();
}

std::string kqCmdText(std::string_view request) { return hex::withoutBlanks(request); }

std::string genericRequest(const GenericFrame& frame) {
  std::string request(kModeField);
  const chip::ChipCommand* command = nullptr;
  for (const chip::ChipCommand& c : chip::kCommands)
    if (c.panel == chip::FramePanel::Generic && c.code == frame.boxes[0]) command = &c;
  if (!command) return request;
  int boxes = command->shownBoxes;
  if (command->code == "0F" && frame.timeInterval) ++boxes;
  for (int i = 0; i < boxes && i < static_cast<int>(frame.boxes.size()); ++i)
    request += frame.boxes[static_cast<std::size_t>(i)];
  if (command->data == chip::DataBox::Free || (command->data == chip::DataBox::Register && frame.writeOption != 0))
    request += frame.data;
  return request;
}

std::string countedRequest(const std::vector<std::string>& boxes) {
  std::string request(kModeField);
  for (std::size_t i = 0; i < 2 && i < boxes.size(); ++i) request += boxes[i];
  const auto count = boxes.size() > 1 ? hex::toNumber(boxes[1]) : std::nullopt;
  const std::size_t further = count ? *count : 0;
  for (std::size_t i = 2; i < boxes.size() && i - 2 < further; ++i) request += boxes[i];
  return request;
}

std::string idleRequest(const std::vector<std::string>& boxes) {
  std::string request(kModeField);
  for (std::size_t i = 0; i < boxes.size() && i < chip::kIdleFrameBytes; ++i) request += boxes[i];
  return request;
}

std::string evenData(std::string_view text) {
  return text.size() % 2 ? "0" + std::string(text) : std::string(text);
}

std::string dataLength(std::string_view evenText) {
  return reader::hexPadWidth7(static_cast<std::int32_t>(evenText.size() / 2), 2);
}

}  // namespace console
