// The script language's keywords: one table that the interpreter dispatches on and that
// the help window is drawn from, so the two cannot drift apart.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "reader/ReaderDriver.h"

namespace script {

// Plain keywords take no argument, data keywords exactly one of hexadecimal text;
// special ones check their line themselves.
enum class Kind { Special, Plain, Data };

// What a keyword does once its checks passed.
enum class Action {
  Rem,               // a comment, logged as it stands
  Wait,              // turns of the event loop
  UsbConnect,        // status only, logged with a fixed text
  UsbHandleCheck,    // status only, logged with a fixed text
  Call,              // one driver operation, logged as an exchange
  CallKQCmd,         // the same, with the first-byte rule and the split request text
  PinState,          // an exchange that always ends the script
  PdyInitiate,       // keeps the Chip_Id of the answer
  PdySelect,         // selects with the kept Chip_Id
  AnticolSelect123,  // the one-line ISO 14443-A activation
};

// Which reconnect runs on status 5. The script never repeats the call.
enum class ScriptReconnect {
  None,
  Script,           // DEMO_TL42RQ_A_reconnect_script
  Script14443A,     // DEMO_TL42RQ_A_reconnect_script_iso14443A
  Script14443B,     // DEMO_TL42RQ_A_reconnect_script_iso14443B
};

enum class HelpGroup { None, Available, Custom };

struct Keyword {
  std::string_view word;     // as a cleaned line holds it: capitals, no blanks
  Kind kind;
  Action action;
  reader::Op op;             // the driver operation, where the action calls one
  ScriptReconnect reconnect;
  std::string_view logWord;  // the word the trace shows for this keyword
  // The keyword's row in the help window; aliases have none.
  HelpGroup group;
  int helpRow;               // -1 for no row
  std::string_view helpLeft;
  std::string_view helpRight;
};

using reader::Op;

inline constexpr std::array<Keyword, 22> kKeywords{{
    {"REM", Kind::Special, Action::Rem, Op::Echo, ScriptReconnect::None, "REM", HelpGroup::Available, 0,
     "Comment :", "REM, note"},
    {"WAIT", Kind::Special, Action::Wait, Op::Echo, ScriptReconnect::None, "WAIT", HelpGroup::Available, 11,
     "Wait (max 9999999) :", "WAIT, 1000"},
    {"TL42RQDLL_USB_CONNECT", Kind::Plain, Action::UsbConnect, Op::USBconnect, ScriptReconnect::None,
     "TL42RQDLL_USB_CONNECT", HelpGroup::Available, 18, "DEMO-TL42RQ-A USB Connect :", "TL42RQDLL_USB_CONNECT"},
    {"TL42RQDLL_USB_HANDLE_CHECK", Kind::Plain, Action::UsbHandleCheck, Op::USBhandlecheck, ScriptReconnect::None,
     "TL42RQDLL_USB_HANDLE_CHECK", HelpGroup::Available, 14, "DEMO-TL42RQ-A USB Handle check :",
     "TL42RQDLL_USB_HANDLE_CHECK"},
    {"TL42RQDLL_ECHO", Kind::Plain, Action::Call, Op::Echo, ScriptReconnect::Script, "TL42RQDLL_ECHO",
     HelpGroup::Available, 1, "Echo to TL42RQ :", "TL42RQDLL_ECHO"},
    {"TL42RQDLL_IDN", Kind::Plain, Action::Call, Op::Idn, ScriptReconnect::Script, "TL42RQDLL_IDN",
     HelpGroup::Available, 2, "Send IDN request :", "TL42RQDLL_IDN"},
    {"TL42RQDLL_SELECT", Kind::Data, Action::Call, Op::Select, ScriptReconnect::Script, "TL42RQDLL_SELECT",
     HelpGroup::Available, 3, "Send select request :", "TL42RQDLL_SELECT, data*"},
    // Both spellings of Send Receive log the long word.
    {"TL42RQDLL_SENDRECV", Kind::Data, Action::Call, Op::SendReceive, ScriptReconnect::Script,
     "TL42RQDLL_SENDRECEIVE", HelpGroup::Available, 4, "Send Send/Receive request :", "TL42RQDLL_SENDRECV, data*"},
    {"TL42RQDLL_SENDRECEIVE", Kind::Data, Action::Call, Op::SendReceive, ScriptReconnect::Script,
     "TL42RQDLL_SENDRECEIVE", HelpGroup::None, -1, "", ""},
    {"TL42RQDLL_KQCMD", Kind::Data, Action::CallKQCmd, Op::KQCmd, ScriptReconnect::Script, "TL42RQDLL_KQCMD",
     HelpGroup::Available, 5, "Send transparent command :", "TL42RQDLL_KQCMD, 01 + data*"},
    {"TL42RQDLL_FIELDOFF", Kind::Plain, Action::Call, Op::FieldOff, ScriptReconnect::Script, "TL42RQDLL_FIELDOFF",
     HelpGroup::Available, 6, "TL42RQ Field Off :", "TL42RQDLL_FIELDOFF"},
    // The library's revision needs no board, so there is nothing to reconnect.
    {"TL42RQDLL_GETDLLREV", Kind::Plain, Action::Call, Op::GetDLLrev, ScriptReconnect::None,
     "TL42RQDLL_GETDLLREV", HelpGroup::Available, 7, "Get Dll revision :", "TL42RQDLL_GETDLLREV"},
    {"TL42RQDLL_PULSE_IRQ_IN", Kind::Plain, Action::Call, Op::SendIRQPulse, ScriptReconnect::Script,
     "TL42RQDLL_PULSE_IRQ_IN", HelpGroup::Available, 12, "Send Pulse IRQ in :", "TL42RQDLL_PULSE_IRQ_IN"},
    {"TL42RQDLL_NSS_PULSE", Kind::Plain, Action::Call, Op::SendNSSPulse, ScriptReconnect::Script,
     "TL42RQDLL_NSS_PULSE", HelpGroup::Available, 16, "Send NSS Pulse :", "TL42RQDLL_NSS_PULSE"},
    {"TL42RQDLL_POLLING_READING", Kind::Plain, Action::Call, Op::Polling_Reading, ScriptReconnect::Script,
     "TL42RQDLL_POLLING_READING", HelpGroup::Available, 17, "TL42RQ Polling + Reading :",
     "TL42RQDLL_POLLING_READING"},
    // Both spellings of the controller's revision log the short word.
    {"TL42RQDLL_GETMCUREV", Kind::Plain, Action::Call, Op::getMCUrev, ScriptReconnect::Script, "TL42RQDLL_MCUREV",
     HelpGroup::Available, 9, "Get MCU revision :", "TL42RQDLL_GETMCUREV"},
    {"TL42RQDLL_MCUREV", Kind::Plain, Action::Call, Op::getMCUrev, ScriptReconnect::Script, "TL42RQDLL_MCUREV",
     HelpGroup::None, -1, "", ""},
    {"TL42RQDLL_RESET_SPI", Kind::Plain, Action::Call, Op::ResetSPI, ScriptReconnect::Script, "TL42RQDLL_RESET_SPI",
     HelpGroup::Available, 13, "Reset SPI :", "TL42RQDLL_RESET_SPI"},
    {"TL42RQDLL_GET_INTERFACE_PIN_STATE", Kind::Plain, Action::PinState, Op::getInterfacePinState,
     ScriptReconnect::Script, "TL42RQDLL_GET_INTERFACE_PIN_STATE", HelpGroup::Available, 15,
     "Get Interface Pin State :", "TL42RQDLL_GET_INTERFACE_PIN_STATE"},
    {"TL42RQ_PDYXX_INITIATE", Kind::Plain, Action::PdyInitiate, Op::SendReceive, ScriptReconnect::Script14443B,
     "TL42RQ_PDYXX_INITIATE", HelpGroup::Custom, 19, "Initiate for PDYxx (save Chip_Id value) :",
     "TL42RQ_PDYxx_Initiate"},
    {"TL42RQ_PDYXX_SELECT", Kind::Plain, Action::PdySelect, Op::SendReceive, ScriptReconnect::Script14443B,
     "TL42RQ_PDYXX_SELECT", HelpGroup::Custom, 20, "Select for PDYxx with Chip_Id :", "TL42RQ_PDYxx_Select"},
    {"TL42RQ_ISO14443-A_ANTICOLSELECT123", Kind::Plain, Action::AnticolSelect123, Op::SendReceive,
     ScriptReconnect::Script14443A, "TL42RQDLL_ANTICOLSELECT123", HelpGroup::Custom, 21,
     "Anticolision  ISO14443-A :", "TL42RQ_ISO14443-A_AnticolSelect123"},
}};

// The keyword a cleaned first token names, or nullptr.
const Keyword* findKeyword(std::string_view token);

// The help window's rows that are notes rather than keywords.
struct HelpNote {
  HelpGroup group;
  int helpRow;
  std::string_view text;
};
inline constexpr std::array<HelpNote, 2> kHelpNotes{{
    {HelpGroup::Available, 8, "*data = hexadecimal formated value "},
    {HelpGroup::Custom, 10, "by default, Chip_Id_data = 0x00"},
}};

// Rows 16 to 18 are shown only for a library revision of 5 or more.
inline constexpr int kNewLibraryRevision = 5;
bool helpRowShown(int row, int dllRevision);

// The column where a help row's right text begins, counted from 1.
inline constexpr std::size_t kHelpColumn = 45;
// Left text, blanks up to the help column, right text; a note alone stands as it is.
std::string helpLine(std::string_view left, std::string_view right);

struct HelpRow {
  int row;
  std::string text;
};
// The rows of a group in the order the window shows them: keywords by row, the
// keyword-free notes where they belong, and only the rows this library revision has.
std::vector<HelpRow> helpRows(HelpGroup group, int dllRevision);

inline constexpr const char* kHelpTitleAvailable = "Available commands on Script tool ";
inline constexpr const char* kHelpTitleCustom = "Custom commands on Script tool ";
inline constexpr const char* kHelpTitleExample = " Script example";
inline constexpr std::array<const char*, 4> kHelpExample{
    "REM, send ECHO request", "TL42RQDLL_ECHO", "REM, send IDN request with KQCMD request", "TL42RQDLL_KQCMD, 010100"};

}  // namespace script
