#include "serial/emulator/emulatedchip.h"

#include "serial/frames.h"

namespace serialline {

EmulatedChip::EmulatedChip(const std::string& fieldPath) {
  fieldError_ = field_.loadFile(fieldPath.empty() ? sim::defaultFieldPath() : fieldPath);
  chip_.powerOn(field_.contents());
}

hex::Bytes EmulatedChip::answer(const hex::Bytes& frame) {
  std::string error;
  if (field_.reloadIfChanged(error)) fieldError_ = std::move(error);
  return answerToLine(chip_.execute(frame, field_.contents()));
}

}  // namespace serialline
