// The console's response analyser takes whatever text the board's library left in the
// answer buffer. Any text, for any panel, command and status, must give at most the
// panel's number of lines, never a line past the 128-character limit or after a failed
// call, and never read outside the answer. The console's other readers of typed or
// received text (the box normalisers, the list entries, the counted requests) get the
// same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "console/ChipCommands.h"
#include "console/ConsoleFrames.h"
#include "console/ProtocolSelect.h"
#include "console/ResponseAnalyser.h"

namespace {

constexpr console::SendPanel kPanels[] = {console::SendPanel::Generic, console::SendPanel::ProtocolSelect,
                                          console::SendPanel::Idle, console::SendPanel::Filter};
constexpr std::int32_t kStatuses[] = {0, 0, 0, 0, 1, 5, -1, 2};

void check(bool condition) {
  if (!condition) std::abort();
}

void analyse(console::SendPanel panel, std::string_view command, std::int32_t status, std::string_view answer) {
  const console::Explanation e = console::analyseAnswer(panel, command, status, answer);
  check(e.lines.size() <= console::explainBoxes(panel));
  if (answer.size() > console::kMaxExplainedAnswer) {
    check(e.answerBox == console::kNotCorrectData);
    check(e.lines.empty());
    return;
  }
  if (status != 0) {
    check(e.lines.empty());
    return;
  }
  check(e.answerBox == answer);
  // The longest line lists 255 bytes, each with a blank.
  for (const std::string& line : e.lines) check(line.size() <= 255 * 3 + 32);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::uint8_t pick = data[0];
  const std::int32_t status = kStatuses[data[1] % (sizeof kStatuses / sizeof kStatuses[0])];
  std::string answer(reinterpret_cast<const char*>(data + 2), size - 2);
  // The panel reads the buffer up to its first NUL.
  if (const auto nul = answer.find('\0'); nul != std::string::npos) answer.resize(nul);

  const console::SendPanel panel = kPanels[pick % 4];
  if (panel == console::SendPanel::Generic) {
    for (const chip::ChipCommand& c : chip::kCommands) analyse(panel, c.code, status, answer);
    analyse(panel, answer.substr(0, 2), status, answer);
  } else {
    analyse(panel, {}, status, answer);
  }

  // Pieces of the answer at any byte index, below the start and past the end.
  for (int n = -8; n < 300; n += 7) check(console::answerByte(answer, n).size() <= 2);
  if (const auto l = console::answerLength(answer)) check(*l >= 0 && *l <= 255);

  // The same bytes as typed into the console's boxes and lists.
  const std::string_view text(answer);
  const std::string byteBox = console::normaliseByteBox(text.substr(0, 8), "00");
  check(byteBox == text.substr(0, 8) || byteBox.size() == 2);
  const std::string bit = console::normaliseBitBox(text.substr(0, 4));
  check(bit == "0" || bit == "1");
  for (const console::ParameterList& l : console::kParameterLists) {
    const int value = console::entryValue(l, text);
    check(value >= -1 && value <= 99);
    console::Bits bits = console::bitsOf(pick);
    if (value >= 0) console::applyEntryValue(l, value, bits);
    (void)console::byteOf(bits);
  }
  const std::string even = console::evenData(text);
  check(even.size() % 2 == 0);
  (void)console::movedLength(text.substr(0, 4), pick & 1 ? 2 : -2);

  std::vector<std::string> boxes;
  for (std::size_t i = 0; i + 1 < text.size() && boxes.size() < console::kFilterFrameBoxes; i += 2)
    boxes.emplace_back(text.substr(i, 2));
  const std::string counted = console::countedRequest(boxes);
  check(counted.size() <= 3 + 2 * boxes.size());
  return 0;
}
