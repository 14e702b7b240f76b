// A host for the probes that keeps its boxes as strings, and the trace texts the probes'
// tests compare with, at a fixed time.
#pragma once

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/crc.h"
#include "discovery/Probes.h"
#include "reader/Drivers.h"
#include "reader/TraceLog.h"

namespace probetest {

using discovery::ResultBox;
using reader::FakeDriver;
using reader::Op;

class FakeHost final : public discovery::ProbeHost {
 public:
  FakeHost() {
    for (int slot = 1; slot <= discovery::kSlotCount; ++slot) slots[static_cast<std::size_t>(slot - 1)] = discovery::slotCaption(slot);
  }
  reader::TraceLog& trace() override { return log; }
  void showRequest(const std::string& text) override { request = text; }
  std::string showAnswer(const std::string& text) override { return answer = text; }
  std::string resultBox(ResultBox box) const override {
    const auto it = boxes.find(box);
    return it == boxes.end() ? std::string() : it->second;
  }
  void setResultBox(ResultBox box, const std::string& text) override { boxes[box] = text; }
  std::string slotBox(int slot) const override { return slots[static_cast<std::size_t>(slot - 1)]; }
  void setSlotBox(int slot, const std::string& text) override { slots[static_cast<std::size_t>(slot - 1)] = text; }
  void yield() override { ++yields; }

  reader::TraceLog log;
  std::string request = "old request";
  std::string answer = "old answer";
  std::map<ResultBox, std::string> boxes;
  std::array<std::string, discovery::kSlotCount> slots;
  int yields = 0;
};

// The trace clock fixed at 11-21-2026 10:20:30 for the life of the object.
struct FixedClock {
  FixedClock() { reader::setClock(std::make_shared<reader::FixedClock>(reader::DateTime{2026, 11, 21, 10, 20, 30})); }
  ~FixedClock() { reader::setClock(nullptr); }
};

inline constexpr const char* kStamp = "\r\n11-21-2026 10:20:30\t";

inline std::string titled(const std::string& title, const std::string& word, const std::string& request,
                          const std::string& answer) {
  return kStamp + title + "\r\n\t\t\t>>> " + word + ", " + request + "\r\n\t\t\t<<< " + answer;
}
inline std::string sendRecv(const std::string& title, const std::string& frame, const std::string& answer) {
  return titled(title, "TL42RQDLL_SENDRECV", frame, answer);
}
inline std::string select(const std::string& title, const std::string& parameters, const std::string& answer) {
  return titled(title, "TL42RQDLL_SELECT", parameters, answer);
}
inline std::string chipCommand(const std::string& title, const std::string& frame, const std::string& answer) {
  return titled(title, "TL42RQDLL_KQCMD", "01 " + frame, answer);
}

inline std::string byteText(std::size_t n) {
  char t[3];
  std::snprintf(t, sizeof t, "%02X", static_cast<unsigned>(n));
  return t;
}

// A Send Receive answer: "80", length, the tag's frame, its CRC (as given, or the right one
// of ISO/IEC 13239), and the chip's result byte.
inline std::string tagAnswer(const std::string& frame, const std::string& tail = "00", std::string crc = "") {
  if (crc.empty()) crc = crc16Text(frame);
  return "80" + byteText(frame.size() / 2 + 3) + frame + crc + tail;
}

// Every call as "op request", in order.
inline std::vector<std::string> calls(const FakeDriver& d) {
  std::vector<std::string> out;
  for (const auto& c : d.calls()) out.push_back(std::string(reader::info(c.op).symbol) + " " + c.request);
  return out;
}

}  // namespace probetest
