// What the program knows of the TL42RQ chip: its commands with the frames the console
// starts from, the result and error codes with their exact wording, the protocol codes,
// the Idle frame, the register map and the analogue settings. One row per code; every
// panel that names a chip command or explains an answer reads it from here.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace chip {

// Which of the console's four frame panels edits a command.
enum class FramePanel {
  Generic,         // FraCommandCodeXX, driven by this table
  ProtocolSelect,  // FraCommandCode02
  Idle,            // FraCommandCode07
  Filter,          // FraCommandCode0D
};

// What the data box of the generic panel does for a command.
enum class DataBox {
  None,
  Free,      // 04, 06: any number of bytes; the length byte follows the text
  Register,  // 09: the register data, appended by the write options
};

// The frame beside the generic panel that a command brings with it.
enum class SideFrame {
  None,
  ReadRegister,   // fraCmd08SelectRegister and the register map
  WriteRegister,  // fraCmd09SelectRegister and the register map
  BaudRate,       // FraCommandCode0Abaudrate and the UART notice
  TimeInterval,   // chkCommandCode0FTimeIntervalOption: box 3 and the length follow it
};

inline constexpr std::size_t kGenericBoxes = 5;  // txtCodeXXFrame 0 to 4

struct ChipCommand {
  std::string_view code;        // two upper-case digits
  std::string_view listEntry;   // entry of cboTL42RQ_CommandList (empty: the list never names it)
  std::string_view title;       // lblCommandCodeXX and the other panels' titles
  bool inList;                  // offered by the command list
  std::string_view defaultFrame;  // bytes separated by blanks; the console's start text
  FramePanel panel;
  int shownBoxes;   // generic panel: boxes shown (and sent) on selection
  int storedBoxes;  // generic panel: boxes kept in the command's store
  DataBox data;
  std::string_view dataLabel;   // caption of the data box
  std::array<std::string_view, kGenericBoxes> boxLabels;  // lblCmdCodeXX 0 to 4
  SideFrame side = SideFrame::None;
  unsigned openBoxes = 0;  // bit n: box n open for editing (all others read-only)
};

inline constexpr std::string_view kCommandCode = "command code";
inline constexpr std::string_view kLengthOfData = "lenght of data";

inline constexpr std::array<ChipCommand, 15> kCommands{{
    {"01", " 01 : IDN ", "command code 01 : IDN", true, "01 00", FramePanel::Generic, 2, 2, DataBox::None, "",
     {kCommandCode, kLengthOfData, "", "", ""}},
    {"02", " 02 : Protocol Select ", "command code 02 : Protocol Select", true, "02 00 00 00",
     FramePanel::ProtocolSelect, 0, 0, DataBox::None, "", {}},
    {"03", " 03 : Poll Field ", "command code 03 : PollField", false, "03 00", FramePanel::Generic, 2, 2,
     DataBox::None, "", {kCommandCode, kLengthOfData, "", "", ""}},
    {"04", " 04 : SendRecv ", "command code 04 : SendRecv", true, "04 00", FramePanel::Generic, 2, 2, DataBox::Free,
     "<Data> : data to be sent", {kCommandCode, kLengthOfData, "", "", ""}},
    {"05", " 05 : Listen ", "command code 05 : Listen", false, "05 00", FramePanel::Generic, 2, 2, DataBox::None,
     "", {kCommandCode, kLengthOfData, "", "", ""}},
    {"06", " 06 : Send ", "command code 06 : Send", false, "06 00", FramePanel::Generic, 2, 2, DataBox::Free,
     "<Data> : data to be sent", {kCommandCode, kLengthOfData, "", "", ""}},
    {"07", " 07 : Idle ", "command code 07 : Idle", true, "07 0E 08 04 00 04 00 18 00 00 00 00 00 00 00 00",
     FramePanel::Idle, 0, 0, DataBox::None, "", {}},
    {"08", " 08 : RdReg ", "command code 08 : RdReg", true, "08 03 62 01 00", FramePanel::Generic, 5, 5,
     DataBox::None, "", {kCommandCode, kLengthOfData, "Register Address", "Register size", "KQ Reserved"},
     SideFrame::ReadRegister},
    {"09", " 09 : WrReg ", "command code 09 : WrReg", true, "09 03 68 00 01", FramePanel::Generic, 5, 5,
     DataBox::Register, "<RegData> : Registers DATA to be written",
     {kCommandCode, kLengthOfData, "Analog Register Configuration address index",
      "Flag increment address after write command", "Index"},
     SideFrame::WriteRegister},
    {"0A", " 0A : BaudRate ", "command code 0A : Set UART baud rate", true, "0A 01 00", FramePanel::Generic, 3, 3,
     DataBox::None, "", {kCommandCode, kLengthOfData, "<BaudRate>", "", ""}, SideFrame::BaudRate, 1u << 2},
    {"0B", " 0B : SubFreqRes ", "command code 0B : SubFreqReq", false, "0B 00", FramePanel::Generic, 2, 2,
     DataBox::None, "", {kCommandCode, kLengthOfData, "", "", ""}},
    {"0D", "", "command code 0D : Activate / Desactivate anti-collision filter", false, "0D 00", FramePanel::Filter,
     0, 0, DataBox::None, "", {}},
    {"0E", " 0E : TestMode ", "command code 0E : Activate / Desactivate test pins", false, "0E 02 00 00",
     FramePanel::Generic, 4, 4, DataBox::None, "",
     {kCommandCode, kLengthOfData, "<DigTestIn> : 00 disable / 01 AnaOut", "<DigTestIn> : 00 disable / 01 AnaIn",
      ""}},
    // Box 3 of the sleep command shows only with chkCommandCode0FTimeIntervalOption,
    // which also sets the length: "02" with it, "01" without.
    {"0F", " 0F : SleepMode ", "command code 0F : SleepMode", false, "0F 02 00 00", FramePanel::Generic, 3, 4,
     DataBox::None, "", {kCommandCode, kLengthOfData, "WU source", "TimeInterval", ""}, SideFrame::TimeInterval},
    {"55", " 55 : Echo-code ", "command code 55 : Echo-code", true, "55", FramePanel::Generic, 1, 1, DataBox::None,
     "", {kCommandCode, "", "", "", ""}},
}};

// The first entry of the command list, which selects nothing.
inline constexpr std::string_view kCommandListTitle = " TL42RQ Command List ";
// The header line of the generic panel.
inline constexpr std::string_view kGenericHeader = "command code 01 03 04 05 06 08 09 0A 0B 0E 0F";

const ChipCommand* findCommand(std::string_view code);
// The command an entry of the command list stands for: its two characters from position 2.
std::string entryKey(std::string_view entry);

// Result and error codes of answers. `commands` lists the command codes a row belongs
// to, separated by blanks. The Listen row of answer 8F begins with "83" on purpose.
struct ResultCode {
  std::string_view answer;
  std::string_view commands;
  std::string_view text;
};

inline constexpr std::array<ResultCode, 23> kResultCodes{{
    {"00", "01 02 03 08 0A 0B", "00 : Result code = OK"},
    {"00", "05", "00 : Result code = Confirm that the device now is in Listen mode"},
    {"00", "06 09", "00 : Result code = Data was successfully sent"},
    {"00", "07", "00 : Result code = Device exits from Idle mode"},
    {"00", "0D", "00 : Result code = Device is successfully Activated / Disactivated"},
    {"00", "0E 0F", "00 : Result code = Confirmation"},
    {"80", "04", "80 : Result code = OK"},
    {"90", "04", "90 : Error code = "},
    {"86", "04", "86 : Error code = Communication error"},
    {"87", "04", "87 : Error code = Frame wait time out or no TAG"},
    {"88", "04", "88 : Error code = Invalid SOF"},
    {"89", "04", "89 : Error code = Receive buffer overflow"},
    {"8A", "04", "8A : Error code = framing error (start bit=0, stop bit=1)"},
    {"8B", "04", "8B : Error code = EGT time out (for Iso14443-B)"},
    {"8C", "04", "8C : Error code = Invalid lenght. Used in Felica, when field Lenght < 3"},
    {"8D", "04", "8D : Error code = CRC error (used in Felica protocol)"},
    {"8E", "04", "8E : Error code = Reception lost without EOF received"},
    {"82", "05 06 07 08 09 0D 0F", "82 : Error code = Invalid command lenght"},
    {"83", "05", "83 : Error code = Invalid protocol or Listen is not supported by protocol"},
    {"8F", "05", "83 : Error code = No field. Command cannot be executed because there are no field"},
    {"83", "06", "83 : Error code = Invalid protocol previously selected by Select Protocol command"},
    {"55", "0A", "55 : Pseudo-response of 0x55"},
    // Written behind a second test for 82 in the sleep command's explanation, and so
    // never shown: code 83 of SleepMode goes to the catch-all.
    {"83", "0F", "83 : Error code = Invalid command"},
}};

// Commands whose unlisted answer codes get no catch-all line.
inline constexpr std::string_view kNoCatchAll = "01 02 04 0D";
// The catch-all: the two digits, then this.
inline constexpr std::string_view kCatchAllSuffix = " : Error code ";

// The text of an answer code for a command, when the table has one.
std::optional<std::string_view> resultText(std::string_view command, std::string_view answer);
bool belongsTo(std::string_view commandList, std::string_view command);

// Good answers of the driver's operations (compared with the first characters).
inline constexpr std::string_view kGoodChipAnswer = "00";
inline constexpr std::string_view kGoodSendReceive = "80";
inline constexpr std::string_view kGoodEcho = "5500";
inline constexpr std::string_view kEchoFrame = "55";

// Protocol codes of Protocol Select (command 02).
enum class Side { Reader, Card };
struct ProtocolCode {
  std::string_view code;
  std::string_view name;
  Side side;
};
inline constexpr std::array<ProtocolCode, 8> kProtocolCodes{{
    {"00", "00 : Field OFF", Side::Reader},
    {"01", "01 : ISO15693", Side::Reader},
    {"02", "02 : ISO14443-A", Side::Reader},
    {"03", "03 : ISO14443-B", Side::Reader},
    {"04", "04 : Felica", Side::Reader},
    {"12", "12 : ISO14443A", Side::Card},
    {"13", "13 : ISO14443B", Side::Card},
    {"14", "14 : ISO18092", Side::Card},
}};

// The tail a Send Receive answer (code 80) carries behind the tag's frame.
inline constexpr int kSendReceiveTailBytes = 3;
inline constexpr std::string_view kTagAnswerWords = ": Tag answer";
inline constexpr std::string_view kCrcWords = " : CRC";
inline constexpr std::string_view kProtocolResultWords = " : Protocol result";
// Short replies in an answer with code 90 (characters 3 to 4 are the valid bits).
inline constexpr std::string_view kAckReply = "0A";
inline constexpr std::array<std::string_view, 2> kNakReplies{"01", "04"};

// The Idle frame (command 07): sixteen bytes, with the caption of each.
inline constexpr std::size_t kIdleFrameBytes = 16;
inline constexpr std::array<std::string_view, kIdleFrameBytes> kIdleCaptions{
    "command code", "lenght of data", "<WFUFlags>", "EnterCrlL",  "EnterCrlH",  "WUCtrlL",
    "WUCtrlH",      "LeaveCtrlL",     "LeaveCtrlH", "<WUPeriod>", "<OscStart>", "<DacStart>",
    "<DacDataL>",   "<DacDataH>",     "<SwingsCnt>", "<MaxSleep>"};

// Why the chip left Idle: characters 5 to 6 of the Idle answer or of a read of register 62.
struct WakeUpReason {
  std::string_view code;
  std::string_view text;
};
inline constexpr std::array<WakeUpReason, 2> kWakeUpReasons{{
    {"01", "wake-up by timeout"},
    {"02", "wake-up by tag detect"},
}};
inline constexpr std::uint8_t kWakeUpRegister = 0x62;
// Register 68 selects which analogue register stands behind register 69.
inline constexpr std::uint8_t kAnalogIndexRegister = 0x68;
inline constexpr std::uint8_t kAnalogDataRegister = 0x69;
inline constexpr std::uint8_t kArcBIndex = 0x01;
inline constexpr std::string_view kAnalogIndexCaption = "Analog Register Configuration address index";
inline constexpr std::string_view kIncrementFlagCaption = "Flag increment address after write command";
inline constexpr std::string_view kReservedCaption = "KQ Reserved";

// The register map the console presents, in full.
struct RegisterBlock {
  std::uint8_t first;
  std::uint8_t last;
  std::string_view block;
};
inline constexpr std::array<RegisterBlock, 16> kRegisterMap{{
    {0x00, 0x1F, "Codec"},
    {0x20, 0x23, "CLK Generator"},
    {0x24, 0x27, "TWI loader"},
    {0x28, 0x2B, "Watch-Dog timer"},
    {0x2C, 0x2F, "External pin control"},
    {0x30, 0x33, "8-bit timer A"},
    {0x34, 0x37, "8-bit timer B"},
    {0x38, 0x3B, "16-bit timer"},
    {0x40, 0x47, "CRC generator"},
    {0x48, 0x4B, "Baud rate calculator"},
    {0x4C, 0x4F, "Test index configurator"},
    {0x50, 0x53, "Concentrator"},
    {0x54, 0x57, "TWI Slave"},
    {0x58, 0x5B, "UART"},
    {0x60, 0x67, "Standalone mode controller"},
    {0x68, 0x6F, "AFE analogue configuration"},
}};
// "0x00 - 0x1F"
std::string registerRange(const RegisterBlock& b);
// The block a register address falls in, if any.
const RegisterBlock* registerBlock(std::uint8_t address);

// ARC_B value XY: X the modulation depth, Y the receiver gain. These are all the rows
// the console shows; other digits have no name.
struct AnalogSetting {
  char digit;
  std::string_view text;
};
inline constexpr std::array<AnalogSetting, 7> kModulationDepths{{
    {'1', "10%"}, {'2', "17%"}, {'3', "25%"}, {'4', "30%"}, {'5', "33%"}, {'6', "36%"}, {'D', "95%"},
}};
inline constexpr std::array<AnalogSetting, 5> kReceiverGains{{
    {'0', "34 dB"}, {'1', "32 dB"}, {'3', "27 dB"}, {'7', "20 dB"}, {'F', "8 dB"},
}};
inline constexpr std::string_view kModulationDepthTitle = "Modulation depth";
inline constexpr std::string_view kReceiverGainTitle = "Receiver gain";
std::optional<std::string_view> modulationDepth(char x);
std::optional<std::string_view> receiverGain(char y);

// Baud rate command (0A): the byte sets a divider of 13.56 MHz.
inline constexpr std::string_view kBaudRateRule = "New baud rate = <BaudRate>*2+2";
struct BaudRateRow {
  int value;            // <BaudRate>
  int divider;          // 0 for the reserved values
  std::string_view rate;  // the rate as the panel rounds it
};
inline constexpr std::array<BaudRateRow, 6> kBaudRates{{
    {0, 0, "RFU"},
    {1, 0, "RFU"},
    {2, 6, "2.26 Mbps"},
    {117, 236, "57.7 Kbps"},
    {254, 510, "26.59 Kbps"},
    {255, 512, "26.48 Kbps"},
}};
constexpr int baudRateDivider(int value) { return value * 2 + 2; }
// One line of the baud rate panel: "<BaudRate> = 2 : 13.56 MHz / 6 = 2.26 Mbps".
std::string baudRateLine(const BaudRateRow& row);
inline constexpr std::string_view kUartNotice =
    " * IMPORTANT : DEMO-TL42RQ-A delivered in SPI version (please contact KQ to switch it to UART mode)";

}  // namespace chip
