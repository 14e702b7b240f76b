#include "serial/driver.h"

#include <chrono>
#include <optional>

#include "common/chipframe.h"
#include "serial/frames.h"
#include "simulator/chip.h"
#include "simulator/control.h"

namespace serialline {

namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

bool SerialDriver::ready() {
  if (!line_.isOpen() && !everOpened_) {
    everOpened_ = true;
    line_.open();
  }
  return line_.isOpen();
}

SerialDriver::Reply SerialDriver::exchange(const hex::Bytes& frame) {
  Reply reply;
  if (!ready()) return reply;
  line_.discardInput();
  const int timeoutMs = answerTimeoutMs(frame, timeoutMs_);
  if (!line_.write(frame, timeoutMs_)) {
    line_.close();
    return reply;
  }
  AnswerParser parser(frame[0]);
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) break;  // silent chip or half an answer: the caller reconnects
    hex::Bytes bytes;
    const ReadResult r = line_.read(bytes, static_cast<int>(left));
    if (r == ReadResult::HungUp) {
      line_.close();
      break;
    }
    if (r == ReadResult::TimedOut) break;
    const std::size_t before = parser.skipped();
    const auto answer = parser.feed(bytes.data(), bytes.size());
    noise_ += parser.skipped() - before;
    if (answer) {
      reply.status = kStatusOk;
      reply.text = answerText(*answer);
      break;
    }
  }
  return reply;
}

std::int32_t SerialDriver::chipOperation(char* answer, const std::optional<hex::Bytes>& frame) {
  sim::writeAnswer(answer, "");
  std::lock_guard lock(mutex_);
  // A frame that is not whole would leave the chip waiting for bytes that never come,
  // or take the rest for a second command.
  if (!frame || !chipframe::isWholeFrame(*frame)) {
    if (!ready()) return kStatusNoChip;
    sim::writeAnswer(answer, sim::answerText(sim::Result::InvalidLength));
    return kStatusOk;
  }
  const Reply reply = exchange(*frame);
  sim::writeAnswer(answer, reply.text);
  return reply.status;
}

bool SerialDriver::chipAnswersEcho() {
  const Reply reply = exchange(chipframe::echoFrame());
  return reply.status == kStatusOk && reply.text == sim::answerText(sim::Result::Echo);
}

// Opens the port afresh (after a replug the old one is gone), wakes the chip and asks it
// for the echo: 0 only when the chip answers.
std::int32_t SerialDriver::usbConnect() {
  std::lock_guard lock(mutex_);
  everOpened_ = true;
  if (!line_.open()) return kStatusNoChip;
  line_.pulseWakeUp();
  return chipAnswersEcho() ? kStatusOk : kStatusNoChip;
}

std::int32_t SerialDriver::usbHandleCheck() {
  std::lock_guard lock(mutex_);
  if (!line_.isOpen()) return kStatusNoChip;
  return chipAnswersEcho() ? kStatusOk : kStatusNoChip;
}

std::int32_t SerialDriver::dllRevision(char* answer) {
  sim::writeAnswer(answer, kRevision);
  return kStatusOk;
}

std::int32_t SerialDriver::fixedAnswer(char* answer, const char* text, bool wakeUp) {
  sim::writeAnswer(answer, "");
  std::lock_guard lock(mutex_);
  if (!ready()) return kStatusNoChip;
  if (wakeUp) line_.pulseWakeUp();
  sim::writeAnswer(answer, text);
  return kStatusOk;
}

std::int32_t SerialDriver::notOnUart(char* answer) {
  sim::writeAnswer(answer, "");
  return kStatusNotOnUart;
}

std::int32_t SerialDriver::mcuRevision(char* answer) { return fixedAnswer(answer, kNoControllerRevision); }

std::int32_t SerialDriver::idn(char* answer) { return chipOperation(answer, chipframe::idnFrame()); }

std::int32_t SerialDriver::echo(char* answer) { return chipOperation(answer, chipframe::echoFrame()); }

std::int32_t SerialDriver::select(const char* parameters, char* answer) {
  return chipOperation(answer, chipframe::commandFrame(chipframe::kProtocolSelect, parameters));
}

std::int32_t SerialDriver::sendReceive(const char* frame, char* answer) {
  return chipOperation(answer, chipframe::commandFrame(chipframe::kSendRecv, frame));
}

// Mode 01 goes to the chip. Mode 02 is the board controller's own ISO 15693 anticollision;
// there is no controller on a serial line, so it is answered like any command the line
// cannot carry.
std::int32_t SerialDriver::kqCmd(const char* frame, char* answer) {
  const chipframe::KQRequest request = chipframe::kqRequest(frame);
  if (request.mode != chipframe::KQRequest::Mode::Chip) return chipOperation(answer, std::nullopt);
  return chipOperation(answer, request.frame);
}

// The field goes off with Protocol Select 00.
std::int32_t SerialDriver::fieldOff(char* answer) {
  return chipOperation(answer, chipframe::commandFrame(chipframe::kProtocolSelect, "00"));
}

std::int32_t SerialDriver::resetSpi(char* answer) { return notOnUart(answer); }
std::int32_t SerialDriver::nssPulse(char* answer) { return notOnUart(answer); }
std::int32_t SerialDriver::pollingReading(char* answer) { return notOnUart(answer); }

// The pulse on IRQ_IN (the adapter's RTS). A port without modem-control lines (the
// emulator's pseudo-terminal) has nowhere to send it; the chip there is always awake.
std::int32_t SerialDriver::irqPulse(char* answer) { return fixedAnswer(answer, "0000", true); }

std::int32_t SerialDriver::interfacePinState(char* answer) { return fixedAnswer(answer, kUartPinState); }

}  // namespace serialline
