// What the ISO 14443-B panel knows without its window: the frames of REQB, WUPB and
// ATTRIB and of the PDX51 to PDY55 family's commands, the cutting of their answers into
// labels, the slot inventory's cells, and the block read and write of the family. Texts
// stand here exactly as the panel shows and logs them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace iso14443b {

// --- opening -------------------------------------------------------------------------------

inline constexpr const char* kWindowTitle = "ISO14443-B user interface : ";
// Protocol Select 03 (ISO 14443-B) with its three parameter bytes.
inline constexpr const char* kSelectParameters = "03010180";
inline constexpr const char* kSelectTitle = "TL42RQ CONFIGURATION : ISO14443-B protocol";
inline constexpr const char* kGainTitle = "TL42RQ CONFIGURATION : INCREASE DEMOD GAIN";
// The product that shows the standard face; every other shows the family's.
inline constexpr const char* kStandardReference = "ISO14443-B";
inline constexpr const char* kStandardTitle = "ISO14443-B user interface : ";
inline constexpr const char* kFamilyTitle = "ISO14443-B Cards user interface (PDYxxx) :";
inline bool standardFace(std::string_view reference) { return reference == kStandardReference; }

// --- text helpers ----------------------------------------------------------------------------

// Characters of a text counted from 1, at most `length` of them; nothing past the end.
std::string mid(std::string_view text, std::size_t position, std::size_t length);
// Two upper-case hexadecimal digits of the low byte.
std::string byteText(int value);
// A Send Receive answer the panel reads: "80" at its start and "00" (the protocol
// result) at its end. Anything else, an "80" with another tail included, is a failure.
bool goodAnswer(std::string_view answer);

// The value of a one-character binary box: 1 for "1", else 0.
int bitOf(std::string_view box);
// A binary box on leaving: one digit, the lowest bit of its hexadecimal value; empty "0".
std::string binaryBoxOnLeave(std::string_view box);
// A hexadecimal box on leaving: its value padded to `width` digits.
std::string hexBoxOnLeave(std::string_view box, int width);

// --- REQB, WUPB, ATTRIB --------------------------------------------------------------------

inline constexpr const char* kReqbTitle = "REQB";
inline constexpr const char* kWupbTitle = "WUPB";
inline constexpr const char* kAttribTitle = "ATTRIB";
inline constexpr const char* kSendFrameTitle = "SEND FRAME";
inline constexpr const char* kEmptyPupi = "00000000";

// N from the three boxes txt_ISO14443B_ReqB_SN, index 2 the high bit.
int slotParameter(const std::array<std::string, 3>& boxes);
// "05" + AFI + the parameter byte: F0 OR N for REQB, F8 OR N for WUPB.
std::string reqbFrame(const std::string& afi, int n);
std::string wupbFrame(const std::string& afi, int n);

struct ReqbLabels {
  std::string answer = "Answer : ";
  std::string firstByte = "First Byte : ";
  std::string pupi = "Pupi : ";
  std::string applicationData = "Application data : ";
  std::string protocolInfo = "Protocol Info : ";
  std::string crc = "Crc : ";
  bool operator==(const ReqbLabels&) const = default;
};
// The six labels of a good answer, each its caption and its piece of the answer. The
// protocol info is cut eight characters long, and the CRC starts behind it.
ReqbLabels reqbLabels(std::string_view answer);
// The PUPI that REQB copies into the ATTRIB box: eight characters from position 7.
std::string pupiOf(std::string_view answer);

struct AttribFields {
  std::string pupi = kEmptyPupi;
  std::string responseTime = "00";
  std::string maxFrameSize = "07";
  std::string compliant = "01";
  std::string cid = "00";
};
// "1D" and the fields as they stand, unchecked.
std::string attribFrame(const AttribFields& f);

inline constexpr const char* kMbliCidCaption = "MBLI(4 bits) CID(4 bits) : ";
inline constexpr const char* kAttribCrcCaption = "CRC : ";
struct AttribLabels {
  std::string mbliCid = kMbliCidCaption;
  std::string crc = kAttribCrcCaption;
  bool operator==(const AttribLabels&) const = default;
};
// A good answer: the characters at 5 and 6 apart, and one CRC byte from position 7.
AttribLabels attribLabels(std::string_view answer);

// --- the family's commands -----------------------------------------------------------------

enum class FamilyCommand { Initiate, Pcall16, SlotMarker, Select, Completion, ResetToInventory, GetUid };
struct FamilyRow {
  FamilyCommand command;
  const char* control;
  const char* caption;
  const char* frame;  // the fixed frame; Slot Marker and Select build theirs
  const char* title;
};
const std::array<FamilyRow, 7>& familyCommands();
const FamilyRow& familyRow(FamilyCommand c);

// The slot number from the four boxes txt_ISO14443B_SN, index 3 the high bit.
int slotNumber(const std::array<std::string, 4>& boxes);
// 16 times the slot plus 6: slot 5 "56", slot 15 "F6", slot 0 "06".
std::string slotMarkerFrame(int slot);
// "0E" and the chip identifier as it stands.
std::string selectFrame(const std::string& chipId);
// Initiate's chip identifier: two characters from position 5.
std::string chipIdOf(std::string_view answer);
// Get UID: the bytes at positions 19, 17, ..., 5, the last on the air first; pieces
// past the end of a short answer are empty.
std::string reversedUid(std::string_view answer);

// --- the slot inventory ---------------------------------------------------------------------

inline constexpr int kSlots = 15;
inline constexpr int kGridRows = 3;
inline constexpr int kGridColumns = 5;
inline constexpr int kColumnTwips = 1250;
// Cell k (1 to 15) of the grid.
struct Cell {
  int row;
  int column;
};
Cell cellOf(int k);
// "1: " up to "15: ".
std::string cellLabel(int k);
// The title of a slot's trace entry: "SLOT MARKER (" + slot + ")".
std::string slotMarkerTitle(int slot);
// The entry of a slot that answered: " ChipID = " + two characters from position 5 + " ".
std::string slotEntry(std::string_view answer);
// Back from an entry: its last three characters, of which the first two.
std::string chipIdOfEntry(std::string_view entry);

// --- block memory ------------------------------------------------------------------------------

inline constexpr const char* kReadTitle = "READ";
inline constexpr const char* kWriteTitle = "WRITE";
inline constexpr const char* kReadError = "error code returned";
inline constexpr const char* kWriteDone = "(00) No error during Prog sequence";
inline constexpr const char* kWriteError = "Error code";
inline constexpr int kBlockBytes = 4;
inline constexpr const char* kWriteCaption = "Write Single Block";

// Digits of the address boxes: enough for the product's last address.
int addressWidth(long lastAddress);
// Blocks from start to end; an end before the start wraps through the last block.
long blockCount(long start, long end, long blockAddressMask);
// The address on the air: two digits a byte, low byte first.
std::string addressText(long address, int addressBytes);
// "08" + address.
std::string readFrame(long address, int addressBytes);
// The buffer row of a read: the block's bytes from position 5, each with a blank behind,
// or the error words.
std::string readRow(std::string_view answer, int pageSize);
// "09" + address + data, blanks removed.
std::string writeFrame(long address, int addressBytes, const std::string& data);
std::string writeRow(std::string_view answer);

}  // namespace iso14443b
