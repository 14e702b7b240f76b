// The serial line under the serial driver: the only place that knows how bytes reach the
// chip. The driver talks to the `Line` interface; `PosixLine` is the real port, tests put a
// scripted line in its place.
#pragma once

#include <string>

#include "common/hex.h"

namespace serialline {

enum class ReadResult {
  Data,      // bytes came and were appended
  TimedOut,  // nothing came in time
  HungUp,    // the port is gone (adapter unplugged, emulator closed): never waits
};

class Line {
 public:
  virtual ~Line() = default;
  // Opens the port afresh (closing it first when open); false when it cannot be opened.
  virtual bool open() = 0;
  virtual void close() = 0;
  virtual bool isOpen() const = 0;
  // Writes all bytes; false when the port is gone or they did not leave in time.
  virtual bool write(const hex::Bytes& bytes, int timeoutMs) = 0;
  // Waits at most `timeoutMs` for bytes and appends what came.
  virtual ReadResult read(hex::Bytes& out, int timeoutMs) = 0;
  // Drops whatever the chip sent that nobody read (late answers, noise).
  virtual void discardInput() = 0;
  // A low pulse on the chip's IRQ_IN, wired to the adapter's RTS output. False when the
  // port has no modem-control lines (a pseudo-terminal) and the pulse could not be sent.
  virtual bool pulseWakeUp() = 0;
};

// Port settings, from the environment: TL42RQ_SERIAL_PORT, TL42RQ_SERIAL_BAUD (57600),
// TL42RQ_SERIAL_STOPBITS (2), TL42RQ_SERIAL_TIMEOUT_MS (1000, the wait for an answer).
struct Settings {
  std::string port;
  int baud = 57600;
  int stopBits = 2;
  int timeoutMs = 1000;
  static Settings fromEnvironment();
};

// A serial port through the POSIX terminal interface: 8 data bits, no parity, no flow
// control, raw bytes, the given stop bits.
class PosixLine final : public Line {
 public:
  explicit PosixLine(Settings settings) : settings_(std::move(settings)) {}
  ~PosixLine() override { close(); }
  PosixLine(const PosixLine&) = delete;
  PosixLine& operator=(const PosixLine&) = delete;

  bool open() override;
  void close() override;
  bool isOpen() const override { return fd_ >= 0; }
  bool write(const hex::Bytes& bytes, int timeoutMs) override;
  ReadResult read(hex::Bytes& out, int timeoutMs) override;
  void discardInput() override;
  bool pulseWakeUp() override;

 private:
  bool setRts(bool asserted);
  Settings settings_;
  int fd_ = -1;
};

}  // namespace serialline
