// The field file, TL42RQ_field.json: the board's settings and the tags in front of the
// antenna. Every key is described by a row of a table (here for the board and the antenna,
// in tags/kinds.cpp for the tags), so that checking, defaults and the error texts come from
// one place. docs/field-file.md documents the keys.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/hex.h"
#include "simulator/answers.h"
#include "simulator/tags/tag.h"

namespace sim {

enum class ValueKind {
  Bool,
  Text,       // printable ASCII, min..max characters
  Integer,    // a whole number, min..max
  ByteList,   // a list of at most max numbers from 0 to 255
  IndexList,  // a list of block numbers (checked against the tag's block count)
  Hex,        // hexadecimal text of min..max bytes, or of the byte counts in `sizes`
  HexMemory,  // hexadecimal text of any whole number of bytes
  AnyText,    // any text of min..max characters, control characters included
};

struct KeySpec {
  const char* name;
  ValueKind kind;
  long min = 0;
  long max = 0;
  // The default: the text itself for Text and Hex keys, JSON for the others; nullptr: none.
  const char* fallback = nullptr;
  bool required = false;
  std::uint32_t sizes = 0;         // Hex: allowed byte counts, bit n for n bytes
};

struct BoardSettings {
  bool present = true;
  std::string dllRevision;
  hex::Bytes mcuRevision;
  std::string chipName;
  int interfacePin = 1;
  bool realTimeIdle = false;  // Idle takes real time instead of simulated time
};

struct AntennaSettings {
  int detectLevel = 0;
};

struct FieldContents {
  BoardSettings board;
  AntennaSettings antenna;
  std::vector<std::unique_ptr<Tag>> tags;
  std::vector<AnswerOverride> answers;  // in file order: the first that matches answers
};

// More than any hand-written field; it keeps a mistaken path (a disk image) from being read.
inline constexpr std::size_t kMaxFieldFileSize = 16u << 20;

struct ParseOutcome {
  FieldContents contents;  // the defaults and no tag when the text was refused
  std::string error;       // empty when the text was taken
};

// Reads a field file's text. `sourceName` starts every error text, which then gives the
// line and column of the fault: "TL42RQ_field.json: line 3, column 7: ...".
ParseOutcome parseField(std::string_view text, std::string_view sourceName);
// The board's defaults and an empty field.
FieldContents defaultField();
// The field as the file would hold it now, pretty-printed, memories included.
std::string fieldToJson(const FieldContents& field);

}  // namespace sim
