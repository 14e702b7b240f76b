// What the demo-kit toolbox knows without its window: one row per driver operation it
// offers (button, answer box, how the answer is read), the status rules of its calls, the
// free chip command, and the ISO 14443-A modulation depth and receiver gain value.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "reader/Exchange.h"
#include "reader/ReaderDriver.h"

namespace toolbox {

// How a row's call treats status 5.
enum class StatusRule {
  Reconnect,    // reconnect and repeat once on status 5
  NoReconnect,  // the USB buttons and the library revision: what comes back is shown
  McuRevision,  // 5 and 1 reconnect and repeat; 0 marks the board connected; else yield
};

// What the row does with a good answer.
enum class Decode {
  None,
  StatusNumber,  // the USB buttons: the box shows the status, there is no answer text
  DllRevision,   // copied to the revision box
  ChipName,      // the chip identification as characters
  McuRevision,   // the controller revision with points
  PinState,      // the sixth character picks one of three options
};

struct OperationRow {
  reader::Op op;
  const char* button;
  const char* caption;
  const char* answerBox;
  const char* decodedBox;  // nullptr: no decoded box
  StatusRule rule;
  Decode decode;
  bool needsRevision5;  // hidden with a library below revision 5
};

inline constexpr const char* kWindowTitle = "   DEMO-TL42RQ-A tool box";
inline constexpr const char* kLogViewName = "rtfDemoKitToolsLogEdit";
inline constexpr const char* kPinStateGroup = "OptPinState";

using reader::Op;
inline constexpr std::array<OperationRow, 12> kOperationRows{{
    {Op::USBhandlecheck, "cmd_USBhandlecheck", "DEMO-TL42RQ-A USB Handle Check", "txtUSBHandleCheckStatus", nullptr,
     StatusRule::NoReconnect, Decode::StatusNumber, false},
    {Op::USBconnect, "cmdDEMO_USB_Connect", "DEMO-TL42RQ-A USB Connect", "txtUSBConnectStatus", nullptr,
     StatusRule::NoReconnect, Decode::StatusNumber, true},
    {Op::Echo, "cmdEcho", "Echo", "txtEchoAnswer", nullptr, StatusRule::Reconnect, Decode::None, false},
    // The caption of this button was never fixed; it reads the chip's identification.
    {Op::Idn, "cmdGetIDn", "Get IDN", "txtIDnAnswer", "txtIDn", StatusRule::Reconnect, Decode::ChipName, false},
    {Op::FieldOff, "cmdFieldOff", "Field Off", "txtFieldOffAnswer", nullptr, StatusRule::Reconnect, Decode::None,
     false},
    {Op::ResetSPI, "cmdResetSPI", "Reset SPI", "txtResetSequenceAnswer", nullptr, StatusRule::Reconnect,
     Decode::None, false},
    {Op::SendIRQPulse, "cmdSendIRQPulse", "Negative pulse on IRQ in", "txtSendIRQPulseAnswer", nullptr,
     StatusRule::Reconnect, Decode::None, false},
    {Op::SendNSSPulse, "cmdNegativePulseOn_SPI_NSS", "Negative Pulse on SPI NSS", "txtNegPulse_SPI_NSS_Answer",
     nullptr, StatusRule::Reconnect, Decode::None, true},
    {Op::Polling_Reading, "cmdPollingReading", "Polling + reading", "txtPollingReadingAnswer", nullptr,
     StatusRule::Reconnect, Decode::None, true},
    {Op::GetDLLrev, "cmdGetDLLrevision", "Get DLL revision", "txtGetDLLrevisionAnswer", "txtDLLrevision",
     StatusRule::NoReconnect, Decode::DllRevision, false},
    {Op::getMCUrev, "cmdGetMCUrevision", "Get MCU revision", "txtGetMCUrevisionAnswer", "txtMCUrevision",
     StatusRule::McuRevision, Decode::McuRevision, false},
    {Op::getInterfacePinState, "cmdGetInterfacePinState", "Get interface pin state", "txtGetInterfacePinStateAnswer",
     nullptr, StatusRule::Reconnect, Decode::PinState, false},
}};

// The row of this button name, or nullptr.
const OperationRow* rowOfButton(const std::string& button);
// Rows that need library revision 5 are shown from 5 on.
bool rowVisible(const OperationRow& row, int dllRevision);

// The pause every toolbox button makes before its call.
inline constexpr int kYieldsBeforeCall = 1000;

// What the controller revision button does after its first call.
enum class McuStatusAction { ReconnectAndRepeat, MarkConnected, YieldOnly };
McuStatusAction mcuStatusAction(std::int32_t status);

// One call of a row with its status rule. `reconnect` is the toolbox's reconnect,
// `markConnected` turns NOT CONNECTED into CONNECTED, `yieldOnce` turns the event loop.
struct RowHooks {
  reader::Reconnect reconnect;
  std::function<void()> markConnected;
  std::function<void()> yieldOnce;
};
reader::Answer callRow(reader::ReaderDriver& d, const OperationRow& row, const RowHooks& hooks);

// The text the row's answer box shows: the status for the USB buttons, else the answer.
std::string answerBoxText(const OperationRow& row, const reader::Answer& a);
// True when the decoded box may be filled from this answer: status 0 and the good code
// ("00"; the library revision is dotted text and only needs status 0).
bool answerDecodable(const OperationRow& row, const reader::Answer& a);
// The option of the interface pin group that the sixth character selects, if any.
std::optional<int> pinStateOption(const std::string& answer);

// The free chip command of `txtAnyKQCmdRequest`.
inline constexpr const char* kFreeCommandLogWord = "TL42RQDll_KQCmd, ";
inline constexpr const char* kNoRequestFound = "Command not sent = no request found";
inline constexpr const char* kRequestFormatProblem = "Command not sent = request format problem";
struct FreeCommand {
  bool send = false;
  std::string request;        // "01" + the text without blanks, when sent
  std::string notSentAnswer;  // the answer word logged when nothing is sent
};
// The length is judged before the blanks go, as the box has always done.
FreeCommand freeCommand(const std::string& text);

// ISO 14443-A modulation depth and receiver gain.
inline constexpr std::array<const char*, 7> kModulationDepths{" 1 : 10% ", " 2 : 17% ", " 3 : 25% ", " 4 : 30% ",
                                                              " 5 : 33% ", " 6 : 36% ", " D : 95% "};
inline constexpr std::array<const char*, 5> kReceiverGains{" 0 : 34dB ", " 1 : 32dB ", " 3 : 27dB ", " 7 : 20dB ",
                                                           " F : 8dB "};
inline constexpr const char* kModulationWarning = "This value will be applied to all ISO14443-A protocol select.";
inline constexpr const char* kChangeRegisterCaption = "Change Modulation depth and Receiver Gain for ISO14443-A";
inline constexpr const char* kRegisterChangedLine =
    "ISO14443A Register Value Changed (Modulation Depth & Receiver Gain)";
inline constexpr const char* kRegisterChangeLogWord = "TL42RQDLL_KQCmd";

// The code of an entry: its second character (" D : 95% " gives 'D'); blank if none.
char entryCode(const std::string& entry);
// The two-character value of a depth entry and a gain entry.
std::string modulationGainValue(const std::string& depthEntry, const std::string& gainEntry);
// The index of the depth / gain entry whose code is this character, or -1.
int depthIndexOf(char code);
int gainIndexOf(char code);
// "01" + "0904680101" + value, as the register change sends it.
std::string registerChangeRequest(const std::string& value);
// The log entry of the register change: the toolbox form with the extra first line.
std::string registerChangeEntry(const std::string& date, const std::string& value, const std::string& answer);

}  // namespace toolbox
