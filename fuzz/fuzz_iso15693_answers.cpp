// The ISO 15693 panel reads answers that come from the board and texts that come from
// its boxes. Any bytes must go through the cut of an answer, the tag error tables, the
// block rows, the inventory and anticollision lists, the UID and mask box rules, the
// frame builders and the page view's model without a crash, and every result must keep
// the bounds the panel relies on. The first input byte picks the options; the rest is
// the text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "iso15693/BlockRange.h"
#include "iso15693/Iso15693Answers.h"
#include "iso15693/Iso15693Frames.h"
#include "iso15693/PageView.h"

using namespace iso15693;

namespace {
std::string piece(const std::string& text, std::size_t at, std::size_t n) {
  return at < text.size() ? text.substr(at, n) : std::string();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::uint8_t pick = data[0];
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  const bool lockBits = (pick & 1) != 0;
  const int pageSize = 1 + (pick >> 1 & 0x1F);
  const long count = 1 + (pick >> 4);

  // The cut: the response is a piece of the answer, or the previous one.
  const std::string previous = "00AA";
  const Cut cut = cutAnswer(pick & 0x80 ? 5 : 0, text, previous);
  if (!cut.taken && cut.response != previous) std::abort();
  if (cut.taken && cut.response.size() > text.size()) std::abort();
  if (!cut.traceNote.empty() && cut.traceNote.rfind("  ", 0) != 0) std::abort();

  // Judging the response, whatever it holds.
  const std::string& r = cut.response;
  (void)iso15693ErrorText(responseErrorCode(r));
  (void)systemInfoErrorText(responseErrorCode(text));
  (void)readSingleBlockRow(r, lockBits, pageSize);
  if (readMultipleBlockRows(text, lockBits, pageSize, count).size() != static_cast<std::size_t>(count)) std::abort();
  if (securityStatusRows(text, count).size() != static_cast<std::size_t>(count)) std::abort();
  (void)judgeWriteSingleBlock(text);
  (void)judgeStateCommand(text);
  const InventoryEntry e = inventoryEntry(text);
  if (e.uid.size() > 16 || e.dsfid.size() > 2) std::abort();
  (void)transponderRow(hex2(pick), e);

  // The controller's anticollision reply: at most 255 records, each with a short UID.
  const auto entries = anticollisionEntries(0, text);
  if (entries.size() > 255) std::abort();
  for (const InventoryEntry& a : entries)
    if (a.uid.size() > 16) std::abort();

  // Boxes the user types or pastes into.
  if (uidOfListRow(text).size() > 16) std::abort();
  const UidBoxResult uid = leaveUidBox(text);
  if (uid.frame == UidBoxResult::Frame::Rebuilt && uid.uidFrame.size() != 16) std::abort();
  (void)uidFrameFromLabelClick(text);
  if (byteBoxOnLeave(text).size() > 2) std::abort();
  if (maskLengthOnLeave(text).size() > 2) std::abort();
  (void)controllerHasAnticollision(text);

  // Frames built from pasted texts.
  InventoryControls c;
  c.maskLength = text.substr(0, 2);
  c.afi = text.substr(0, 2);
  c.afiOption = lockBits;
  c.dataRate = pick % 5;  // 4: no option, the broken panel
  for (std::size_t i = 0; i < 8; ++i) c.maskValues[i] = piece(text, 2 * i, 2);
  (void)inventoryFrame(c, InventoryCommand::FastInventoryInitiated);
  (void)anticollisionFrame(c);
  FlagControls f;
  f.dataRate = pick % 5;
  f.address = lockBits;
  FrameFields fields;
  fields.uidFrame = text.substr(0, 16);
  fields.data = text;
  fields.block = static_cast<std::uint32_t>(pick) << 8 | static_cast<std::uint32_t>(size & 0xFF);
  fields.width = 1 + (pick & 1);
  fields.count = static_cast<std::uint32_t>(count);
  for (const CommandRow& row : kCommands) (void)buildFrame(row.command, f, fields);

  // The page view's model on rows of any text.
  std::vector<std::string> buffer;
  for (std::size_t i = 0; i < text.size() && buffer.size() < 40; i += 3) buffer.push_back(piece(text, i, 5));
  const long mask = (1L << (pick & 0x0F)) - 1;
  const pageview::Shown shown = pageview::showReadRows(buffer, count * 3, pick, mask, 1 + (pick & 3));
  if (shown.rows.size() > pageview::kVisibleRows) std::abort();
  const long base = pageview::addressBase(text, shown.firstShownRow);
  const auto o = pageview::keyDown(pageview::keyOfCode(pick), shown.firstShownRow, pick & 0x0F,
                                   static_cast<long>(buffer.size()));
  if (pageview::refill(buffer, o.firstShownRow, base, mask, 2).size() > pageview::kVisibleRows) std::abort();
  (void)pageview::fillTexts(text.substr(0, 2), pageSize, 4);
  (void)pageview::pageGrid(pageSize, 4, pageview::Variant::Iso15693);
  (void)rangeCount(pick, static_cast<long>(size & 0xFF), mask);
  return 0;
}
