// What the ISO 14443-A panel knows without its widgets: the two variants and their
// opening, the single activation commands with their flags, frames and trace titles, the
// cut of an answer into the analysis boxes, the stages of the anticollision process, the
// TOPAZ commands, and the frames and view rows of memory reads and writes.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "reader/Reconnect.h"

namespace iso14443a {

inline constexpr const char* kWindowTitle = "ISO14443-A : ";

// Characters of a text counted from 1, as the answers are read: only the characters that
// exist are taken, so a position before the start or past the end, or a negative length,
// gives less or nothing instead of reading outside the text.
std::string mid(std::string_view text, long long position, long long length);

// --- variants and opening ------------------------------------------------------------------

enum class Variant { Normal, Topaz };
// TOPAZ only for the reference "TOPAZ" itself.
Variant variantOf(std::string_view reference);

struct VariantTexts {
  const char* title;               // lbl_title_ISO14443A index 2
  const char* protocolText;        // TL42RQDll_Select
  const char* configurationTitle;  // the trace title of the select
  std::array<const char*, 3> writeTitles;
  reader::ReconnectKind reconnect;
};
const VariantTexts& variantTexts(Variant v);

// The three register writes of the opening and of both reconnects, with the trace title
// of the variant: timer, modulation and gain (the global value), decoder tolerance.
struct ConfigWrite {
  std::string title;
  std::string frame;  // the chip command; "01" goes in front of it on the call
};
std::vector<ConfigWrite> openingWrites(Variant v, const std::string& modulationGain);
// The log word of these writes, in this case.
inline constexpr const char* kKQCmdLogWord = "TL42RQDLL_KQCmd";

// --- single commands -------------------------------------------------------------------------

enum class Single { Reqa, Wupa, Halt, Anticol, Select };
// The transmission flag each command shows before it sends.
const char* singleFlag(Single c);
// The frame: REQA, WUPA and HALT are literals; Anticol and Select (index 0 to 2) take
// the flag as the box holds it after the command showed its own.
std::string singleFrame(Single c, int index, const std::string& flagBox, const std::string& anticolArgument,
                        const std::string& selectData);
// The trace title; HALT has WUPA's, and the indexed commands show the zero-based index.
std::string singleTitle(Single c, int index);

inline constexpr const char* kSendFrameTitle = "SEND FRAME";
inline constexpr const char* kReadTitle = "ISO14443-A READ";

// --- transmission flag and answer analysis -----------------------------------------------

// Box i shows bit i of the flag text read as a hexadecimal number.
std::array<bool, 8> flagBits(std::string_view flagText);
// The flag box on leaving: its value as two hexadecimal digits; an empty box stays.
std::string flagBoxOnLeave(std::string_view text);

struct Analysis {
  std::array<std::string, 6> fields;  // lblAnswerAnalysis 0 to 5
  std::array<bool, 8> flags{};        // chk_respflag 0 to 7: bits of the error status
};
// fillAnswerAnalysis: code, length, data without the three tail bytes, then error status,
// index of the first colliding byte and bit.
Analysis analyseAnswer(std::string_view answer);
// The TOPAZ cut: code, length and all the rest; there is no tail there.
std::array<std::string, 3> topazAnalysis(std::string_view answer);

// --- anticollision process ---------------------------------------------------------------------

enum class Stage { Reqa, Anticol1, Select1, Anticol2, Select2, Anticol3, Select3 };
inline constexpr int kStages = 7;
struct StageRow {
  int row;            // of fgAnticolProcess
  const char* label;  // column 0
  const char* flag;
  const char* title;
};
const StageRow& stageRow(Stage s);
// The frame of a stage. REQA has its literal flag; the others take the flag back from the
// box. Level 3 repeats the code 93 and its Select carries no UID.
std::string stageFrame(Stage s, const std::string& flagBox, const std::string& anticolArgument,
                       const std::string& uidSegment);
// The four UID bytes and the check byte of an anticollision answer.
std::string uidSegmentOf(std::string_view answer);
// The UID part of an anticollision answer: the three bytes after a cascade tag 88, else
// the four UID bytes.
std::string uidPartOf(std::string_view answer);

// --- TOPAZ -----------------------------------------------------------------------------------------

inline constexpr const char* kTopazFlag = "A8";
inline constexpr const char* kTopazReqaTitle = "ISO14443-A TOPAZ REQA";
inline constexpr const char* kTopazRidTitle = "ISO14443-A TOPAZ RID";
inline constexpr const char* kTopazReadTitle = "ISO14443-A TOPAZ READ";
inline constexpr const char* kTopazWriteETitle = "ISO14443-A TOPAZ WRITE_E";
inline constexpr const char* kTopazWriteNETitle = "ISO14443-A TOPAZ WRITE_NE";
inline constexpr const char* kTopazReqaFrame = "2607";
std::string topazRidFrame();
struct RidBoxes {
  std::string hr0, hr1, uid;
};
RidBoxes ridBoxes(std::string_view answer);
std::string topazReadFrame(long address, const std::string& uid);
std::string topazWriteFrame(bool erase, long address, const std::string& data, const std::string& uid);
// The view row of a one-byte read: the byte and a blank, or "error".
std::string topazReadRow(std::string_view answer);

// --- memory ------------------------------------------------------------------------------------------

// Write modes of the panel.
inline constexpr int kModeWrite = 8;
inline constexpr int kModeCompatibilityWrite = 9;
inline constexpr int kModeTopazWriteE = 10;
inline constexpr int kModeTopazWriteNE = 11;

// The address in a frame: two hexadecimal digits a byte, the low byte first.
std::string frameAddress(long address, int addressBytes);
// Pages a read fetches rows for: end + 3 - start + 1, through the top of the memory when
// the end lies before the start.
long readPageCount(long start, long end, long blockAddressMask);
std::string readFrame(long address, int addressBytes);
// The four view rows of one read answer.
std::vector<std::string> readRows(std::string_view answer, int pageSize);
std::string writeFrame(long address, const std::string& data, int addressBytes);
// The two frames of a compatibility write.
std::array<std::string, 2> compatibilityWriteFrames(long address, const std::string& data, int addressBytes);
inline constexpr const char* kWriteTitle = "ISO14443-A WRITE";
inline constexpr const char* kCompatibilityWriteTitle = "ISO14443-A COMPATIBILITY WRITE";
// "80" at the start and "00" at the end.
bool goodWriteAnswer(std::string_view answer);
inline constexpr const char* kWriteDone = "(00) No error during Prog sequence";
inline constexpr const char* kWriteError = "Error code";

// --- NDEF reads ------------------------------------------------------------------------------------

// The pages read for the decoder; the fifth read repeats the fourth.
inline constexpr std::array<int, 5> kNdefPages{3, 7, 11, 15, 15};
std::string ndefReadFrame(int page);
// readNdefBlock's result: sixteen bytes each with a blank, "error detected " when the
// tail is not 00, "error" for an answer that is no tag answer.
std::string ndefBlockText(std::string_view answer);

}  // namespace iso14443a
