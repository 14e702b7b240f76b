#include "iso15693/Iso15693Answers.h"

#include "common/crc.h"
#include "common/hex.h"
#include "iso15693/Iso15693Frames.h"

namespace iso15693 {

namespace {
// Characters from a 1-based position, as many as there are (none past the end).
std::string mid(std::string_view text, long position, long length) {
  if (position < 1 || length <= 0) return {};
  const auto at = static_cast<std::size_t>(position - 1);
  if (at >= text.size()) return {};
  return std::string(text.substr(at, static_cast<std::size_t>(length)));
}

std::uint32_t leadingHex(std::string_view text) {
  std::uint32_t v = 0;
  for (char ch : text) {
    const int d = hex::digitValue(ch);
    if (d < 0) break;
    v = v << 4 | static_cast<std::uint32_t>(d);
  }
  return v;
}

std::string lookUp(const ErrorRow* begin, const ErrorRow* end, std::string_view code) {
  for (const ErrorRow* r = begin; r != end; ++r)
    if (code == r->code) return r->text;
  return {};
}
}  // namespace

Cut cutAnswer(std::int32_t status, std::string_view answer, const std::string& previousResponse) {
  Cut cut;
  cut.response = previousResponse;
  if (status != 0 || answer.substr(0, 2) != "80") return cut;
  const long ll = static_cast<long>(leadingHex(mid(answer, 3, 2)));
  const std::string tail = mid(answer, 2 * (ll + 1) + 1, 2);
  const std::string tagFrame = mid(answer, 5, 2 * ll - 6);
  if (tail != "00") {
    // The chip flagged the reply: the CRC is the only judgement left.
    const std::string expected = crc16Text(tagFrame);
    const std::string received = mid(answer, 2 * ll - 1, 4);
    if (expected != received) {
      cut.traceNote = "  " + tail + " -> CRC HS (expected=" + expected + ")";
      return cut;
    }
    cut.traceNote = "  " + tail + " -> CRC OK";
  }
  cut.taken = true;
  cut.response = tagFrame;
  return cut;
}

std::string iso15693ErrorText(std::string_view code) {
  std::string t = lookUp(kTagErrors.data(), kTagErrors.data() + kTagErrors.size(), code);
  return t.empty() ? "(" + std::string(code) + ") Unknown error code" : t;
}

std::string systemInfoErrorText(std::string_view code) {
  std::string t = lookUp(kSystemInfoErrors.data(), kSystemInfoErrors.data() + kSystemInfoErrors.size(), code);
  return t.empty() ? std::string(code) + kUnknownErrorCode : t;
}

std::string responseFlags(std::string_view response) { return mid(response, 1, 2); }
std::string responseErrorCode(std::string_view response) { return mid(response, 3, 2); }

namespace {
std::string bytesAt(std::string_view text, long firstPosition, int count) {
  std::string row;
  for (int i = 0; i < count; ++i) {
    const std::string piece = mid(text, firstPosition + 2L * i, 2);
    if (piece.empty()) break;  // a block size beyond the reply: what the text gives
    row += piece + " ";
  }
  return row;
}
}  // namespace

std::string readSingleBlockRow(std::string_view response, bool lockBits, int pageSize) {
  const std::string rest = mid(response, 3, static_cast<long>(response.size()));
  if (lockBits) return mid(rest, 1, 2) + "   " + bytesAt(rest, 3, pageSize);
  return bytesAt(rest, 1, pageSize);
}

std::vector<std::string> readMultipleBlockRows(std::string_view response, bool lockBits, int pageSize, long count) {
  const std::string rest = mid(response, 3, static_cast<long>(response.size()));
  std::vector<std::string> rows;
  for (long j = 0; j < count; ++j) {
    if (lockBits) {
      // The status of the first block of the reply stands on every row.
      rows.push_back(mid(rest, 1, 2) + "   " + bytesAt(rest, 2 * j * (pageSize + 1) + 3, pageSize));
    } else {
      rows.push_back(bytesAt(rest, 2 * j * pageSize + 1, pageSize));
    }
  }
  return rows;
}

std::vector<std::string> securityStatusRows(std::string_view response, long count) {
  const std::string rest = mid(response, 3, static_cast<long>(response.size()));
  std::vector<std::string> rows;
  for (long i = 0; i < count; ++i) rows.push_back(mid(rest, 2 * i + 1, 2));
  return rows;
}

WriteJudgement judgeWriteSingleBlock(std::string_view response) {
  WriteJudgement j;
  j.addsRow = true;
  if (response.empty()) {
    j.row = kNoDetectedAnswer;
    return j;
  }
  const std::string flags = responseFlags(response);
  if (flags == "00") {
    j.setsLabel = true;
    j.label = "OK";
    j.row = kProgrammed;
  } else if (flags == "01") {
    j.setsLabel = true;
    j.label = "HS";
    j.row = iso15693ErrorText(responseErrorCode(response));
  } else {
    j.row = answerFormatProblem(flags);
  }
  return j;
}

WriteJudgement judgeStateCommand(std::string_view response) {
  WriteJudgement j;
  const std::string flags = responseFlags(response);
  if (flags == "00") {
    j.setsLabel = true;
    j.label = "OK";
  } else if (flags == "01") {
    j.setsLabel = true;
    j.label = responseErrorCode(response) + kUnknownErrorCode;
  }
  return j;
}

std::vector<std::string> systemInfoRows(std::string_view response, int rfAddressBytes) {
  std::vector<std::string> rows;
  if (response.empty()) return rows;
  const std::string_view start = response.substr(0, 4);
  if (start != "000F" && start != "000B") {
    rows.push_back(systemInfoErrorText(responseErrorCode(response)));
    return rows;
  }
  // Positions count from the information flags: the response without its first byte.
  const std::string info = mid(response, 3, static_cast<long>(response.size()));
  std::string uid;
  for (long p = 17; p >= 3; p -= 2) uid += mid(info, p, 2);
  rows.push_back(" UID : \t\t" + uid);
  rows.push_back(" DSFID : \t\t" + mid(info, 19, 2) + "h");
  rows.push_back(" AFI : \t\t" + mid(info, 21, 2) + "h");
  const bool known = rfAddressBytes == 1 || rfAddressBytes == 2;
  if (!known) {
    // A width the panel does not know: the labels stand alone.
    rows.push_back(" Memory size : ");
    rows.push_back(" Block size : ");
    rows.push_back(" IC reference : ");
    return rows;
  }
  if (start == "000B") {
    rows.push_back(" Memory size : \tN.A.");
    rows.push_back(" Block size : \tN.A.");
    rows.push_back(" IC reference : \t" + mid(info, 23, 2) + "h");
    return rows;
  }
  if (rfAddressBytes == 2) {
    // Two bytes of block count, high byte first on the screen; the rest shifts by one.
    rows.push_back(" Memory size : \t" + mid(info, 25, 2) + mid(info, 23, 2) + "h");
    rows.push_back(" Block size : \t" + mid(info, 27, 2) + "h");
    rows.push_back(" IC reference : \t" + mid(info, 29, 2) + "h");
  } else {
    rows.push_back(" Memory size : \t" + mid(info, 23, 2) + "h");
    rows.push_back(" Block size : \t" + mid(info, 25, 2) + "h");
    rows.push_back(" IC reference : \t" + mid(info, 27, 2) + "h");
  }
  return rows;
}

std::optional<std::string> ehStatusText(std::string_view response) {
  if (response.empty()) return std::nullopt;
  if (responseFlags(response) == "00") return mid(response, 3, 2);
  // Whatever the error, the box says only "XX"; the code stays in the trace.
  return std::string("XX");
}

std::string transponderRow(std::string_view number, const InventoryEntry& e) {
  return " " + std::string(number) + "\t" + e.uid + "\t\t" + e.dsfid;
}

InventoryEntry inventoryEntry(std::string_view response) {
  InventoryEntry e;
  e.dsfid = mid(response, 3, 2);
  for (long p = 19; p >= 5; p -= 2) e.uid += mid(response, p, 2);
  return e;
}

long anticollisionCount(std::int32_t status, std::string_view answer) {
  if (status != 0 || answer.substr(0, 2) != "80") return 0;
  if (leadingHex(mid(answer, 3, 2)) == 1) return 0;
  return static_cast<long>(leadingHex(mid(answer, 5, 2)));
}

std::vector<InventoryEntry> anticollisionEntries(std::int32_t status, std::string_view answer) {
  std::vector<InventoryEntry> entries;
  const long n = anticollisionCount(status, answer);
  for (long k = 1; k <= n; ++k) {
    const long o = 18 * (k - 1);
    InventoryEntry e;
    e.dsfid = mid(answer, 7 + o, 2);
    for (long p = 9 + o + 14; p >= 9 + o; p -= 2) e.uid += mid(answer, p, 2);
    entries.push_back(std::move(e));
  }
  return entries;
}

std::string uidOfListRow(std::string_view row) { return mid(row, 5, 16); }

}  // namespace iso15693
