// The simulated DEMO-TL42RQ-A board: USB link, controller, the TL42RQ chip and the RF
// field in front of its antenna. One instance per loaded library.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "simulator/chip.h"
#include "simulator/field.h"

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

// Status of an operation: the exchange took place, or the board could not be reached.
inline constexpr std::int32_t kStatusOk = 0;
inline constexpr std::int32_t kStatusNoBoard = 5;
// A control call that failed; TL42RQSim_LastError says why.
inline constexpr std::int32_t kStatusFailed = 1;

// The board: its USB link, the controller's fixed answers, the chip and the field. All of
// it sits behind one mutex, since tests may call the library from any thread. Time is
// simulated: nothing here sleeps or reads a clock.
//
// The USB link is open at power-on when the board is present. Unplugging closes it and
// takes the chip's power; after replugging, every operation but GetDLLrev answers 5 until
// USBconnect opens the link again.
class Board final : public BoardApi {
 public:
  // `fieldPath` is read at the first call and followed from then on.
  explicit Board(std::string fieldPath) : initialPath_(std::move(fieldPath)) {}

  std::int32_t usbConnect() override;
  std::int32_t usbHandleCheck() override;
  std::int32_t dllRevision(char* answer) override;
  std::int32_t mcuRevision(char* answer) override;
  std::int32_t idn(char* answer) override;
  std::int32_t echo(char* answer) override;
  std::int32_t select(const char* parameters, char* answer) override;
  std::int32_t sendReceive(const char* frame, char* answer) override;
  std::int32_t kqCmd(const char* frame, char* answer) override;
  std::int32_t fieldOff(char* answer) override;
  std::int32_t resetSpi(char* answer) override;
  std::int32_t irqPulse(char* answer) override;
  std::int32_t nssPulse(char* answer) override;
  std::int32_t pollingReading(char* answer) override;
  std::int32_t interfacePinState(char* answer) override;

  std::int32_t loadField(const char* jsonTextOrPath) override;
  std::int32_t dumpField(char* out, std::int32_t size) override;
  std::int32_t setBoardPresent(std::int32_t present) override;
  std::int32_t reset() override;
  const char* lastError() override;

  // loadField for text that must never be taken as a path (the fuzzers' input).
  std::int32_t loadFieldText(std::string_view json);

 private:
  // Runs `body` under the lock, after the field has been brought up to date; an exception
  // (only running out of memory can throw) becomes a failed call, never a crash.
  std::int32_t locked(const std::function<std::int32_t()>& body);
  // An operation that needs the open link: 5 and an empty answer without it. With the link,
  // an override of the field file for `op` and `request` answers in place of `body`.
  std::int32_t chipOperation(const char* op, const char* request, char* answer,
                             const std::function<std::string()>& body);
  std::int32_t chipOperation(const char* op, char* answer, const std::function<std::string()>& body) {
    return chipOperation(op, nullptr, answer, body);
  }
  // Loads the field with `loadIt`, which returns the error text; 0 on success.
  std::int32_t load(const std::function<std::string()>& loadIt);
  void refresh();
  void afterLoad(bool wasPresent, std::string error);
  void changePresence(bool wasPresent);
  void powerOn();
  bool present() const { return field_.contents().board.present; }
  std::string chipRequest(std::uint8_t command, const char* text);

  std::mutex mutex_;
  std::string initialPath_;
  bool started_ = false;
  Field field_;
  Chip chip_;
  bool linkOpen_ = false;
  std::string lastError_;
};

// The library's one board.
BoardApi& board();

}  // namespace sim
