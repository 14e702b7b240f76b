// The fifteen operations of the board's driver library as the program sees them.
// Nothing above this folder knows how the board is reached: a loaded library, a stand-in
// when none loads, or a fake in the tests.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace reader {

// The answer buffer the library fills, as the library's contract states it.
inline constexpr std::size_t kAnswerSize = 256;
// What the program really hands over: room to spare and a final NUL of its own, so that a
// library that writes past the agreed size or forgets the NUL is shown, not obeyed.
inline constexpr std::size_t kGuardedAnswerSize = 4096;
inline constexpr std::int32_t kStatusOk = 0;
inline constexpr std::int32_t kStatusNoBoard = 5;

enum class Op {
  USBconnect,
  USBhandlecheck,
  GetDLLrev,
  getMCUrev,
  Idn,
  Echo,
  Select,
  SendReceive,
  KQCmd,
  FieldOff,
  ResetSPI,
  SendIRQPulse,
  SendNSSPulse,
  Polling_Reading,
  getInterfacePinState,
};

enum class Shape {
  StatusOnly,         // f(void)
  AnswerOnly,         // f(char* answer)
  RequestAndAnswer,   // f(const char* request, char* answer)
};

struct OpInfo {
  Op op;
  const char* symbol;   // exported name, exactly as the library has it, with its mixed Dll and DLL
  const char* logWord;  // the word trace entries show for the call
  Shape shape;
};

inline constexpr std::array<OpInfo, 15> kOperations{{
    {Op::USBconnect, "TL42RQDLL_USBconnect", "TL42RQDLL_USB_CONNECT", Shape::StatusOnly},
    {Op::USBhandlecheck, "TL42RQDLL_USBhandlecheck", "TL42RQDLL_USB_HANDLE_CHECK", Shape::StatusOnly},
    {Op::GetDLLrev, "TL42RQDll_GetDLLrev", "TL42RQDLL_GETDLLREV", Shape::AnswerOnly},
    {Op::getMCUrev, "TL42RQDLL_getMCUrev", "TL42RQDLL_GETMCUREV", Shape::AnswerOnly},
    {Op::Idn, "TL42RQDll_Idn", "TL42RQDLL_IDN", Shape::AnswerOnly},
    {Op::Echo, "TL42RQDll_Echo", "TL42RQDLL_ECHO", Shape::AnswerOnly},
    {Op::Select, "TL42RQDll_Select", "TL42RQDLL_SELECT", Shape::RequestAndAnswer},
    {Op::SendReceive, "TL42RQDll_SendReceive", "TL42RQDLL_SENDRECV", Shape::RequestAndAnswer},
    {Op::KQCmd, "TL42RQDll_KQCmd", "TL42RQDLL_KQCMD", Shape::RequestAndAnswer},
    {Op::FieldOff, "TL42RQDll_FieldOff", "TL42RQDLL_FIELDOFF", Shape::AnswerOnly},
    {Op::ResetSPI, "TL42RQDll_ResetSPI", "TL42RQDLL_RESET_SPI", Shape::AnswerOnly},
    {Op::SendIRQPulse, "TL42RQDll_SendIRQPulse", "TL42RQDLL_PULSE_IRQ_IN", Shape::AnswerOnly},
    {Op::SendNSSPulse, "TL42RQDll_SendNSSPulse", "TL42RQDLL_NSS_PULSE", Shape::AnswerOnly},
    {Op::Polling_Reading, "TL42RQDll_Polling_Reading", "TL42RQDLL_POLLING_READING", Shape::AnswerOnly},
    {Op::getInterfacePinState, "TL42RQDLL_getInterfacePinState", "TL42RQDLL_GET_INTERFACE_PIN_STATE",
     Shape::AnswerOnly},
}};

constexpr const OpInfo& info(Op op) { return kOperations[static_cast<std::size_t>(op)]; }
inline const char* logWord(Op op) { return info(op).logWord; }

// One driver: a loaded library, the stand-in for a missing one, or a test fake.
class ReaderDriver {
 public:
  virtual ~ReaderDriver() = default;
  // Calls one operation. `request` is read only for operations that take one; `answer`
  // points at a zero-filled buffer of at least kAnswerSize characters (callers give more
  // room and a final NUL so that a library that overruns cannot take the program down).
  virtual std::int32_t call(Op op, const char* request, char* answer) = 0;
  // What the status bar's second panel says about this driver.
  virtual std::string description() const = 0;
  // True for the simulated board (it exports the TL42RQSim_ control interface).
  virtual bool isSimulated() const { return false; }
};

}  // namespace reader
