// The fifteen driver operations on a chip wired to a serial line. Each chip operation
// sends one frame and waits for the one answer, then gives it in the same text form as
// the simulated board, so that every panel works unchanged.
//
// Status 0: the chip answered. Status 5: the chip could not be reached: the port is not
// open, it went away (adapter unplugged), or no whole answer came in time. A time-out or a
// hang-up never waits longer than the exchange's time-out; a hang-up returns at once.
// Status 1: an SPI operation, which has no meaning on a UART.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "common/hex.h"
#include "serial/line.h"

namespace serialline {

inline constexpr std::int32_t kStatusOk = 0;
inline constexpr std::int32_t kStatusNotOnUart = 1;
inline constexpr std::int32_t kStatusNoChip = 5;

// The library's own revision: 1.0.0, read as 10 by the detection (5 or more: the full path).
inline constexpr const char* kRevision = "1.0.0";
// No board controller sits between the line and the chip: its revision has no elements.
inline constexpr const char* kNoControllerRevision = "0000";
// "00", length 01, pin state 2: the interface pin selects the UART.
inline constexpr const char* kUartPinState = "000102";

class SerialDriver {
 public:
  SerialDriver(Line& line, int timeoutMs) : line_(line), timeoutMs_(timeoutMs) {}

  std::int32_t usbConnect();
  std::int32_t usbHandleCheck();
  std::int32_t dllRevision(char* answer);
  std::int32_t mcuRevision(char* answer);
  std::int32_t idn(char* answer);
  std::int32_t echo(char* answer);
  std::int32_t select(const char* parameters, char* answer);
  std::int32_t sendReceive(const char* frame, char* answer);
  std::int32_t kqCmd(const char* frame, char* answer);
  std::int32_t fieldOff(char* answer);
  std::int32_t resetSpi(char* answer);
  std::int32_t irqPulse(char* answer);
  std::int32_t nssPulse(char* answer);
  std::int32_t pollingReading(char* answer);
  std::int32_t interfacePinState(char* answer);

  // Noise bytes skipped in answers since the start: for tests and diagnostics.
  std::size_t noiseSkipped() const { return noise_; }

 private:
  struct Reply {
    std::int32_t status = kStatusNoChip;
    std::string text;
  };
  // One frame out, one answer back.
  Reply exchange(const hex::Bytes& frame);
  // The port, opened the first time it is needed; false when it is not open.
  bool ready();
  // A text the line gives without asking the chip, once the port is open; `wakeUp` pulses
  // IRQ_IN first.
  std::int32_t fixedAnswer(char* answer, const char* text, bool wakeUp = false);
  // The SPI operations: no meaning on a UART.
  std::int32_t notOnUart(char* answer);
  // Runs `frame` and writes the answer; a request that cannot be a frame is answered
  // "8200" without touching the line, as the simulated board answers it.
  std::int32_t chipOperation(char* answer, const std::optional<hex::Bytes>& frame);
  bool chipAnswersEcho();

  std::mutex mutex_;
  Line& line_;
  int timeoutMs_;
  bool everOpened_ = false;
  std::size_t noise_ = 0;
};

}  // namespace serialline
