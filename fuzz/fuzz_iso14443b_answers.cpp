// The ISO 14443-B and ISO 18092 panels cut answers that come from the board and read
// texts that come from their boxes. Any bytes must go through the answer labels of REQB,
// WUPB, ATTRIB and REQC, the family's chip identifier and UID reversal, the slot
// inventory's entries, the block rows and the box rules without a crash, and every
// result must keep the bounds the panels rely on. The first input byte picks the
// numbers; the rest is the text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "iso14443b/Iso14443BFrames.h"
#include "iso18092/Iso18092Frames.h"

namespace {
void check(bool condition) {
  if (!condition) std::abort();
}
bool startsWith(const std::string& text, std::string_view head) { return text.compare(0, head.size(), head) == 0; }
// A label is its caption and at most `n` characters of the answer.
void label(const std::string& l, std::string_view caption, std::size_t n) {
  check(startsWith(l, caption));
  check(l.size() <= caption.size() + n);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::uint8_t pick = data[0];
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);

  using namespace iso14443b;
  const bool good = goodAnswer(text);
  check(good == (text.size() >= 2 && startsWith(text, "80") && text.compare(text.size() - 2, 2, "00") == 0));

  const ReqbLabels bare;
  const ReqbLabels r = reqbLabels(text);
  if (!good) check(r == bare);
  label(r.answer, bare.answer, 32);
  label(r.firstByte, bare.firstByte, 2);
  label(r.pupi, bare.pupi, 8);
  label(r.applicationData, bare.applicationData, 8);
  label(r.protocolInfo, bare.protocolInfo, 8);
  label(r.crc, bare.crc, 4);
  check(pupiOf(text).size() <= 8);

  const AttribLabels a = attribLabels(text);
  if (!good) check(a == AttribLabels{});
  label(a.mbliCid, kMbliCidCaption, 3);
  label(a.crc, kAttribCrcCaption, 2);

  check(chipIdOf(text).size() <= 2);
  check(reversedUid(text).size() <= 16);
  const std::string entry = slotEntry(text);
  check(startsWith(entry, " ChipID = ") && entry.size() <= 13);
  check(chipIdOfEntry(entry).size() <= 2);
  check(chipIdOfEntry(text).size() <= 2);

  const int pageSize = pick % 9;
  const std::string row = readRow(text, pageSize);
  check(good ? row.size() <= static_cast<std::size_t>(3 * pageSize) : row == kReadError);
  const std::string written = writeRow(text);
  check(written == (good ? kWriteDone : kWriteError));

  // Box texts: the rules on leaving always give what the boxes hold.
  const std::string bit = binaryBoxOnLeave(text);
  check(bit == "0" || bit == "1");
  const int width = (pick & 1) ? 8 : 2;
  const std::string padded = hexBoxOnLeave(text, width);
  check(padded.size() >= static_cast<std::size_t>(width) && padded.size() <= 8);
  check(bitOf(text) == (text == "1" ? 1 : 0));

  // Frames built from whatever the boxes hold.
  const std::string afi = text.substr(0, 2);
  const int n = pick & 7;
  check(reqbFrame(afi, n) == "05" + afi + byteText(0xF0 | n));
  check(wupbFrame(afi, n) == "05" + afi + byteText(0xF8 | n));
  check(selectFrame(text) == "0E" + text);
  check(slotMarkerFrame(pick & 15).size() == 2);
  const long mask = (1L << (pick % 12)) - 1;
  const long start = static_cast<long>(text.size()) & mask;
  const long end = static_cast<long>(pick) & mask;
  const long count = blockCount(start, end, mask);
  check(count >= 1 && count <= mask + 1);
  check(writeFrame(start, 1 + (pick & 1), text).size() <= 4 + 2 + text.size());

  const iso18092::ReqcLabels c = iso18092::reqcLabels(text);
  if (!iso18092::goodAnswer(text)) check(c == iso18092::ReqcLabels{});
  label(c.answer, iso18092::kAnswerCaption, 32);
  label(c.manufId, iso18092::kManufIdCaption, 2);
  label(c.manufParameter, iso18092::kManufParameterCaption, 8);
  return 0;
}
