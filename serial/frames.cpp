#include "serial/frames.h"

#include <algorithm>

#include "common/chipframe.h"
#include "simulator/chip.h"
#include "simulator/wakeup.h"

namespace serialline {

namespace {

// Error codes of the chip: 82 to 8F.
bool isErrorCode(std::uint8_t code) { return code >= 0x82 && code <= 0x8F; }

constexpr auto kOk = static_cast<std::uint8_t>(sim::Result::Ok);
constexpr auto kTagAnswer = static_cast<std::uint8_t>(sim::Result::TagAnswer);

}  // namespace

hex::Bytes answerToLine(std::string_view text) {
  const auto bytes = hex::toBytes(text);
  if (!bytes || bytes->size() < 2) return {};
  if ((*bytes)[0] == chipframe::kEcho) return {chipframe::kEcho};
  return *bytes;
}

std::string answerText(const hex::Bytes& line) {
  if (line.size() == 1 && line[0] == chipframe::kEcho) return sim::answerText(sim::Result::Echo);
  return hex::fromBytes(line);
}

bool opensAnswerTo(std::uint8_t command, std::uint8_t resultCode) {
  switch (command) {
    case chipframe::kEcho: return resultCode == chipframe::kEcho;
    case chipframe::kBaudRate: return resultCode == chipframe::kEcho || isErrorCode(resultCode);
    case chipframe::kSendRecv: return resultCode == kTagAnswer || resultCode == kShortReply || isErrorCode(resultCode);
    default: return resultCode == kOk || isErrorCode(resultCode);
  }
}

std::size_t AnswerParser::wanted() const {
  if (frame_.empty()) return 0;
  if (frame_[0] == chipframe::kEcho) return 1;
  if (frame_[0] == kShortReply) return 3;
  return frame_.size() >= 2 ? 2 + std::size_t{frame_[1]} : 0;
}

std::optional<hex::Bytes> AnswerParser::feed(const std::uint8_t* data, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    if (frame_.empty() && !opensAnswerTo(command_, data[i])) {
      ++skipped_;
      continue;
    }
    frame_.push_back(data[i]);
    if (frame_.size() == wanted()) {
      hex::Bytes done;
      done.swap(frame_);
      return done;
    }
  }
  return std::nullopt;
}

std::optional<hex::Bytes> CommandParser::feed(std::uint8_t byte) {
  frame_.push_back(byte);
  if (!chipframe::isWholeFrame(frame_)) return std::nullopt;
  hex::Bytes done;
  done.swap(frame_);
  return done;
}

int answerTimeoutMs(const hex::Bytes& frame, int baseMs) {
  if (frame.size() < 2 || frame[0] != chipframe::kIdle) return baseMs;
  const auto idle = sim::IdleSettings::fromData(hex::Bytes(frame.begin() + 2, frame.end()));
  if (!idle) return baseMs;
  const std::uint64_t sleepUs = (std::uint64_t{idle->maxSleep} + 1) * sim::wakeUpPeriodMicroseconds(*idle);
  const std::uint64_t total = std::uint64_t(std::max(baseMs, 0)) + (sleepUs + 999) / 1000;
  return static_cast<int>(std::min<std::uint64_t>(total, 3'600'000));
}

}  // namespace serialline
