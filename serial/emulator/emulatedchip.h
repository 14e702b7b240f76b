// The chip behind the emulator's serial line: the simulated chip and field of the simulated
// board, fed with whole command frames and giving the bytes the chip puts on the line.
#pragma once

#include <string>

#include "common/hex.h"
#include "simulator/chip.h"
#include "simulator/field.h"

namespace serialline {

class EmulatedChip {
 public:
  // Reads the field file (the simulated board's keys) and follows it: a changed file is
  // read again before the next command. An empty path takes the simulated board's default.
  explicit EmulatedChip(const std::string& fieldPath);
  // The answer to one command frame, as bytes on the line.
  hex::Bytes answer(const hex::Bytes& frame);
  // Why the field file could not be read; empty when it was.
  const std::string& fieldError() const { return fieldError_; }

 private:
  sim::Field field_;
  sim::Chip chip_;
  std::string fieldError_;
};

}  // namespace serialline
