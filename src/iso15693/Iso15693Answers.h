// What the reader hands back for an ISO 15693 frame, and what the panel makes of it:
// the cut into tag response and tail byte with its CRC judgement, the two tables of tag
// error texts, the rows of block reads, and the inventory and anticollision lists.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace iso15693 {

// --- cutting an answer -----------------------------------------------------------------------

struct Cut {
  bool taken = false;        // the tag response was replaced
  std::string response;      // the tag response after the cut (the previous one when not taken)
  std::string traceNote;     // "  TT -> CRC OK" or "  TT -> CRC HS (expected=XXXX)", or empty
};

// The reader's reply: "80", LL, then LL bytes of which the last is the chip's tail byte
// and the two before it the tag's CRC, low byte first. Only status 0 with "80" is cut.
// Tail "00": the chip saw no fault and the CRC is not looked at. Any other tail: the
// CRC decides whether the response is taken.
Cut cutAnswer(std::int32_t status, std::string_view answer, const std::string& previousResponse);

// --- tag errors ------------------------------------------------------------------------------

struct ErrorRow {
  const char* code;
  const char* text;
};
inline constexpr std::array<ErrorRow, 10> kTagErrors{{
    {"00", "No Error"},
    {"02", "(02) Command is not recognized"},
    {"03", "(03) Option is not supported"},
    {"0F", "(0F) Error with no information given"},
    {"10", "(10) Block address not available"},
    {"11", "(11) Block is already locked"},
    {"12", "(12) Block is locked, content cannot be changed"},
    {"13", "(13) Block was not successfully programmed"},
    {"14", "(14) Block was not successfully locked"},
    {"15", "(15) Block is read-protected"},
}};
// The second table, for Get System Info alone.
inline constexpr std::array<ErrorRow, 8> kSystemInfoErrors{{
    {"00", "No Error"},
    {"03", "error code 03 : cmd option not supported"},
    {"0F", "error code 0F : other error"},
    {"10", "error code 10 : block address not available"},
    {"11", "error code 11 : block is already locked"},
    {"12", "error code 12 : block is locked"},
    {"13", "error code 13 : block not successfully programmed"},
    {"14", "error code 14 : block not successfully locked"},
}};

// The tag error text of a two-digit code; "(" code ") Unknown error code" otherwise.
std::string iso15693ErrorText(std::string_view code);
// The system information error text; code + " : unknown error code" otherwise.
std::string systemInfoErrorText(std::string_view code);

// Words of the judgements.
inline constexpr const char* kNoDetectedAnswer = "No detected answer";
inline constexpr const char* kNoDetectedAnswerLower = "no detected answer";
inline constexpr const char* kNoTagAnswer = "no Tag answer";
inline constexpr const char* kProgrammed = "(00) No error during Prog sequence";
inline constexpr const char* kUnknownErrorCode = " : unknown error code";
inline std::string answerFormatProblem(std::string_view flags) { return "(" + std::string(flags) + ") Answer format problemz"; }

// The response flags (its first byte) and the error code (its second byte).
std::string responseFlags(std::string_view response);
std::string responseErrorCode(std::string_view response);

// --- block reads -------------------------------------------------------------------------------

// The row of one Read Single Block response. With the lock bits the security status
// byte leads, followed by three blanks; every data byte is followed by one blank.
std::string readSingleBlockRow(std::string_view response, bool lockBits, int pageSize);
// The rows of one Read Multiple Block response for `count` blocks. Every row carries
// the status of the first block of the reply, as the panel always showed it.
std::vector<std::string> readMultipleBlockRows(std::string_view response, bool lockBits, int pageSize, long count);
// The rows of one Get Multiple Block Security Status response: one status byte a block.
std::vector<std::string> securityStatusRows(std::string_view response, long count);

// What a write or a tag-state command shows in lblWriteTime and adds to the buffer.
struct WriteJudgement {
  bool setsLabel = false;
  std::string label;     // "OK", "HS" or "<code> : unknown error code"
  bool addsRow = false;
  std::string row;
};
WriteJudgement judgeWriteSingleBlock(std::string_view response);
// Lock, Select, Reset to Ready, Stay Quiet, the AFI and DSFID writes and locks, the EH
// writes, data out, kill and passwords.
WriteJudgement judgeStateCommand(std::string_view response);

// --- system information ----------------------------------------------------------------------

// The rows of lstSystemInfo for a Get System Info tag response. "000F": UID, DSFID, AFI,
// then memory size, block size and IC reference with the field widths of the product
// (rfAddressBytes), not of the tag's information flags. "000B": the same three rows, then
// "N.A." for memory and block size and the IC reference from the next byte. Anything
// else: one row of the system information error table. No rows for an empty response.
std::vector<std::string> systemInfoRows(std::string_view response, int rfAddressBytes);

// What an EH read (Read E.H. status, Check EH enable) writes into its status box: byte 1
// of the response for flags "00", "XX" for any other flags, nothing for no response.
std::optional<std::string> ehStatusText(std::string_view response);

// --- inventory and anticollision -----------------------------------------------------------------

inline constexpr const char* kListHeader = "\tUID\t\t\tDSFID";

struct InventoryEntry {
  std::string uid;    // most significant byte first
  std::string dsfid;
};
// A row of lstTransponderUID: blank, two-digit number, TAB, UID, two TABs, DSFID.
std::string transponderRow(std::string_view number, const InventoryEntry& e);
// An inventory response "00" DSFID UID(LSB first) as an entry.
InventoryEntry inventoryEntry(std::string_view response);

// The board controller's anticollision reply: "80", LL, count N, then N records of
// DSFID and UID least significant byte first. N is 0 unless the status is 0, the answer
// begins "80" and LL is not 1.
long anticollisionCount(std::int32_t status, std::string_view answer);
std::vector<InventoryEntry> anticollisionEntries(std::int32_t status, std::string_view answer);

// The 16 characters from position 5 of a clicked row of the list.
std::string uidOfListRow(std::string_view row);

}  // namespace iso15693
