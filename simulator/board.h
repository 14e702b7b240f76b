// The simulated DEMO-TL42RQ-A board: USB link, controller, the TL42RQ chip and the RF
// field in front of its antenna. One instance per loaded library.
#pragma once

#include <cstdint>
#include <string>

namespace sim {

// Every entry point of the library comes here; the exported C functions only forward.
class BoardApi {
 public:
  virtual ~BoardApi() = default;
  virtual std::int32_t usbConnect() = 0;
  virtual std::int32_t usbHandleCheck() = 0;
  virtual std::int32_t dllRevision(char* answer) = 0;
  virtual std::int32_t mcuRevision(char* answer) = 0;
  virtual std::int32_t idn(char* answer) = 0;
  virtual std::int32_t echo(char* answer) = 0;
  virtual std::int32_t select(const char* parameters, char* answer) = 0;
  virtual std::int32_t sendReceive(const char* frame, char* answer) = 0;
  virtual std::int32_t kqCmd(const char* frame, char* answer) = 0;
  virtual std::int32_t fieldOff(char* answer) = 0;
  virtual std::int32_t resetSpi(char* answer) = 0;
  virtual std::int32_t irqPulse(char* answer) = 0;
  virtual std::int32_t nssPulse(char* answer) = 0;
  virtual std::int32_t pollingReading(char* answer) = 0;
  virtual std::int32_t interfacePinState(char* answer) = 0;

  virtual std::int32_t loadField(const char* jsonTextOrPath) = 0;
  virtual std::int32_t dumpField(char* out, std::int32_t size) = 0;
  virtual std::int32_t setBoardPresent(std::int32_t present) = 0;
  virtual std::int32_t reset() = 0;
  virtual const char* lastError() = 0;
};

// The library's one board.
BoardApi& board();

}  // namespace sim
