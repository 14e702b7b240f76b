// The console's frame panels as data: the Idle examples, the register read and write
// options, the anti-collision filter options, the per-command stores of the generic
// panel, and how each panel's boxes become the request text sent through KQCmd.
#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "console/ChipCommands.h"
#include "console/ProtocolSelect.h"

namespace console {

// Splits "07 0E 08" into its bytes.
std::vector<std::string> frameBytes(std::string_view spaced);

// --- Idle (07) ----------------------------------------------------------------------------
struct IdleExample {
  std::string_view caption;  // optIDLEframe
  std::string_view frame;    // sixteen bytes, separated by blanks
};
inline constexpr std::array<IdleExample, 6> kIdleExamples{{
    {"from Ready state to Hibernate state (wake up event : IRQ In)", "07 0E 08 04 00 04 00 18 00 00 00 00 00 00 00 00"},
    {"from Ready state to Sleep state (wake up event : IRQ in pin)", "07 0E 08 01 00 38 00 18 00 00 60 00 00 00 00 00"},
    {"from Ready state to Sleep state (wake up event : NSS pin)", "07 0E 10 01 00 38 00 18 00 00 60 00 00 00 00 00"},
    {"from Ready state to Sleep state, back to Ready state after time out (7 sec)",
     "07 0E 01 21 00 38 00 18 00 60 60 00 00 00 00 08"},
    {"wake up by Tag Detector or IRQ in pin", "07 0E 0A 21 00 79 01 18 00 20 60 60 64 74 3F 08"},
    {"basic IDLE command used during the Tag Detection Calibration process",
     "07 0E 03 A1 00 F8 01 18 00 20 60 60 00 00 3F 01"},
}};
inline constexpr std::string_view kIdleExamplesHeading = "  IDLE frame examples  (see datasheet or AN7741)  ";
inline constexpr std::string_view kIdleDacHint = "(cf datasheet or AN7741 for DacDataH values)";
// Tool tips of the Idle captions that once opened the bit panel.
inline constexpr std::string_view kCtrlHBitsTip = "Click to access to CtrlH bits";
inline constexpr std::string_view kCtrlLBitsTip = "Click to access to CtrlL bits";
inline constexpr std::string_view kWfuFlagsBitsTip = "Click to access to <WFUFlags> bits";
std::string_view idleCaptionTip(std::size_t byte);
// The lists of the Idle bit panel (FraCmd07ByteBits), which no control opens.
inline constexpr std::array<std::string_view, 4> kLfoPrescalerEntries{
    " 00 : LFO prescaler 4 kHz ", " 01 : LFO prescaler 8 kHz ", " 10 : LFO prescaler 16 kHz ",
    " 11 : LFO prescaler 32 kHz "};
inline constexpr std::array<std::string_view, 4> kCardClkSelEntries{" 00 : CardClkSel ", " 01 : CardClkSel ",
                                                                     " 10 : CardClkSel ", " 11 : CardClkSel "};
// Each writes bits 6 and 7 of the panel's bit boxes txtCommand07Bits (bits 0, 1 of its value).
inline constexpr std::array<ParameterList, 2> kIdleBitLists{{
    {"cboWUflagsLFOprescaler", 0, 6, EntryRead::TwoBits, kLfoPrescalerEntries, 0},
    {"cboCtrlHCardClkSel", 0, 6, EntryRead::TwoBits, kCardClkSelEntries, 0},
}};

// --- Read Register (08) -------------------------------------------------------------------
struct ReadRegisterOption {
  std::string_view caption;  // optCmd08ReadRegister
  std::string_view box2;
  std::string_view label2;
  std::array<std::string_view, 3> hints;
};
inline constexpr std::string_view kReadRegisterTitle = "Select register";
inline constexpr std::array<ReadRegisterOption, 2> kReadRegisterOptions{{
    {"0x62 : Wake-up event register", "62", "Register address for Wake-Up event register",
     {"-> answer = 01 : wake-up by timeout", "-> answer = 02 : wake-up by tag detect", ""}},
    {"0x69 : ARC_B register", "69", "Register address for ARC_B register",
     {"-> answer = XY : ", "where : X = Depth", "where : Y = Gain"}},
}};

// --- Write Register (09) ------------------------------------------------------------------
enum class WriteData {
  Hidden,  // no data: the frame ends at box 4, the data box is hidden and closed
  ArcB,    // the kept ARC_B value, open for editing
  Fixed,   // a fixed byte, closed
};
struct WriteRegisterOption {
  std::string_view caption;  // optCmd09WriteRegister
  std::array<std::string_view, 4> boxes;  // boxes 1 to 4
  WriteData data;
  std::string_view fixedData;
};
inline constexpr std::string_view kWriteRegisterTitle = "Write register command";
inline constexpr std::string_view kValueLabel = "value";
inline constexpr std::array<WriteRegisterOption, 4> kWriteRegisterOptions{{
    {"Set analog register index to 0x01 (ARC_B)", {"03", "68", "00", "01"}, WriteData::Hidden, ""},
    {"Update ARC_B value (with value = XY)", {"04", "68", "01", "01"}, WriteData::ArcB, ""},
    {"Set HFO to RF", {"04", "68", "01", "07"}, WriteData::Fixed, "00"},
    {"Reset HFO to RF", {"04", "68", "01", "07"}, WriteData::Fixed, "10"},
}};
inline constexpr int kWriteArcBOption = 1;
// The length box of the sleep command follows chkCommandCode0FTimeIntervalOption.
inline constexpr std::string_view kSleepLengthWithInterval = "02";
inline constexpr std::string_view kSleepLengthWithoutInterval = "01";
inline constexpr std::string_view kTimeIntervalCaption = "Enable Time Interval option byte";

// --- Anti-collision filter (0D) -----------------------------------------------------------
inline constexpr std::size_t kFilterFrameBoxes = 17;  // txtCode0DFrame 0 to 16
struct FilterOption {
  std::string_view caption;  // OptCommad0D
  std::string_view box1;
  int lastBox;      // boxes 2 up to this one are shown; 1 for none
  int levels;       // UID cascade levels shown
  std::string_view box4;  // written into box 4 (the SAK's place); empty: untouched
  std::string_view box8;  // written into box 8 (the last byte of level 1)
};
// With two and three levels the cascade tag 88 lands in box 4, where the SAK stands, and
// with three levels also in box 8. The boxes stay open: the user may change them.
inline constexpr std::array<FilterOption, 4> kFilterOptions{{
    {"Desactivate", "00", 1, 0, "", ""},
    {"Activate for 1-cascade level filcter", "07", 8, 1, "00", ""},
    {"Activate for 2-cascade level filcter", "0B", 12, 2, "88", ""},
    {"Activate for 3-cascade level filcter", "0F", 16, 3, "88", "88"},
}};
inline constexpr std::string_view kAtqaLabel = "<ATQA> ";
inline constexpr std::string_view kSakLabel = "<SAK>";
inline constexpr std::array<std::string_view, 3> kUidLevelLabels{"UID for cascade level 1", "UID for cascade level 2",
                                                                  "UID for cascade level 3"};
// First box of each cascade level of the UID.
inline constexpr std::array<int, 3> kUidLevelFirstBox{5, 9, 13};

// --- The generic panel's stores -------------------------------------------------------------
// The edited frame of one command of the generic panel, kept while the console lives.
struct CommandStore {
  std::array<std::string, chip::kGenericBoxes> boxes;
  std::string data;
};
// One store for each command of the generic panel, filled with its default frame. The
// write command keeps the data "00".
std::map<std::string, CommandStore> defaultStores();

// --- Requests -------------------------------------------------------------------------------
// Every console request starts with the mode field and a blank; the request box shows the
// text from its third character on, and the blanks go before the call.
inline constexpr std::string_view kModeField = "01 ";
std::string requestBoxText(std::string_view request);
std::string kqCmdText(std::string_view request);

struct GenericFrame {
  std::array<std::string, chip::kGenericBoxes> boxes;
  std::string data;
  int writeOption = 0;       // the option of optCmd09WriteRegister that is on
  bool timeInterval = false;  // chkCommandCode0FTimeIntervalOption
};
// What the generic panel sends, chosen by the text of box 0.
std::string genericRequest(const GenericFrame& frame);
// The Protocol Select and filter panels: boxes 0 and 1, then as many boxes from box 2 on
// as box 1 says when read as hexadecimal (no more than the panel has).
std::string countedRequest(const std::vector<std::string>& boxes);
// The Idle panel: all sixteen boxes.
std::string idleRequest(const std::vector<std::string>& boxes);

// --- Data box ---------------------------------------------------------------------------
// Key-up of the data box: an odd number of digits gets a "0" in front.
std::string evenData(std::string_view text);
// The length byte of a data command: number of digits / 2, two digits.
std::string dataLength(std::string_view evenText);

}  // namespace console
