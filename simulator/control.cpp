#include "simulator/control.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "simulator/board.h"

namespace sim {

void writeAnswer(char* answer, std::string_view text) {
  if (!answer) return;
  const std::size_t n = std::min(text.size(), kAnswerCapacity);
  std::memcpy(answer, text.data(), n);
  answer[n] = '\0';
}

bool isFieldText(std::string_view textOrPath) {
  const std::size_t first = textOrPath.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && textOrPath[first] == '{';
}

std::int32_t copyOut(std::string_view text, char* out, std::int32_t size) {
  if (out && size > 0) {
    const std::size_t n = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    std::memcpy(out, text.data(), n);
    out[n] = '\0';
  }
  return static_cast<std::int32_t>(std::min<std::size_t>(text.size(), std::numeric_limits<std::int32_t>::max()));
}

// A load changes the field and the board's settings but not the chip: a tag put into the
// field finds the protocol selected before. Whether the board is present follows the new
// field like a plug or an unplug. A load that fails leaves an empty field and the board's
// defaults, so that what the board does never depends on a half-read file.
std::int32_t Board::load(const std::function<std::string()>& loadIt) {
  return locked([&] {
    const bool wasPresent = present();
    afterLoad(wasPresent, loadIt());
    return lastError_.empty() ? kStatusOk : kStatusFailed;
  });
}

std::int32_t Board::loadField(const char* jsonTextOrPath) {
  if (!jsonTextOrPath)
    return load([&] {
      field_.loadText("{}");
      return std::string("TL42RQSim_LoadField: no field text or path given");
    });
  const std::string argument = jsonTextOrPath;
  if (isFieldText(argument)) return load([&] { return field_.loadText(argument); });
  return load([&] { return field_.loadFile(argument); });
}

std::int32_t Board::loadFieldText(std::string_view json) {
  return load([&] { return field_.loadText(json); });
}

std::int32_t Board::dumpField(char* out, std::int32_t size) {
  copyOut("", out, size);
  return locked([&] { return copyOut(fieldToJson(field_.contents()), out, size); });
}

std::int32_t Board::setBoardPresent(std::int32_t isPresent) {
  return locked([&] {
    const bool wasPresent = present();
    field_.contents().board.present = isPresent != 0;
    changePresence(wasPresent);
    return kStatusOk;
  });
}

std::int32_t Board::reset() {
  return locked([&] {
    powerOn();
    restoreTimes(field_.contents().answers);
    return kStatusOk;
  });
}

const char* Board::lastError() {
  const char* text = "";
  locked([&] {
    text = lastError_.c_str();
    return kStatusOk;
  });
  return text;
}

}  // namespace sim
