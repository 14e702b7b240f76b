#include "common/chipframe.h"

#include <string_view>

namespace chipframe {

std::optional<hex::Bytes> commandFrame(std::uint8_t command, const char* text) {
  const auto bytes = hex::toBytes(hex::withoutBlanks(text ? text : ""));
  if (!bytes || bytes->size() > 0xFF) return std::nullopt;
  hex::Bytes frame;
  frame.reserve(2 + bytes->size());
  frame.push_back(command);
  frame.push_back(static_cast<std::uint8_t>(bytes->size()));
  frame.insert(frame.end(), bytes->begin(), bytes->end());
  return frame;
}

bool isWholeFrame(const hex::Bytes& frame) {
  if (frame.size() == 1 && frame[0] == kEcho) return true;
  return frame.size() >= 2 && frame[1] == frame.size() - 2;
}

hex::Bytes idnFrame() { return {kIdn, 0x00}; }

hex::Bytes echoFrame() { return {kEcho}; }

KQRequest kqRequest(const char* text) {
  const std::string whole = hex::withoutBlanks(text ? text : "");
  const std::string_view mode = std::string_view(whole).substr(0, 2);
  KQRequest request;
  if (mode != "01" && mode != "02") return request;
  auto bytes = hex::toBytes(std::string_view(whole).substr(2));
  if (!bytes) return request;
  request.mode = mode == "01" ? KQRequest::Mode::Chip : KQRequest::Mode::Controller;
  request.frame = std::move(*bytes);
  return request;
}

}  // namespace chipframe
