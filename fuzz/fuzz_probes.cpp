// The discovery tools judge answers from a board they do not control: any text in any
// status must go through the five probes, the radio-off step, the calibration search and
// the cycles' decisions without a crash, and the results must stay within their ranges.
// The input is cut at NUL bytes into answers, played in turn; the first byte of each
// piece picks its status (0, 1 or 5) and the probes' flags.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "discovery/Calibration.h"
#include "discovery/Cycles.h"
#include "discovery/Probes.h"
#include "discovery/TextCut.h"
#include "reader/Drivers.h"

namespace {

class Host final : public discovery::ProbeHost {
 public:
  Host() {
    for (int slot = 1; slot <= discovery::kSlotCount; ++slot) slots_[slot - 1] = discovery::slotCaption(slot);
  }
  reader::TraceLog& trace() override { return log_; }
  void showRequest(const std::string&) override {}
  std::string showAnswer(const std::string& text) override { return text; }
  std::string resultBox(discovery::ResultBox box) const override { return boxes_[static_cast<int>(box)]; }
  void setResultBox(discovery::ResultBox box, const std::string& text) override { boxes_[static_cast<int>(box)] = text; }
  std::string slotBox(int slot) const override { return slots_[slot - 1]; }
  void setSlotBox(int slot, const std::string& text) override { slots_[slot - 1] = text; }
  void yield() override {}
  const std::string& slot(int n) const { return slots_[n - 1]; }

 private:
  reader::TraceLog log_;
  std::string boxes_[4];
  std::string slots_[discovery::kSlotCount];
};

// The calibration on the same answers: each step takes the next one.
class Chip final : public discovery::CalibrationHost {
 public:
  explicit Chip(const std::vector<std::string>& answers) : answers_(answers) {}
  std::string runStep(int, int) override { return answers_.empty() ? std::string() : answers_[next_++ % answers_.size()]; }
  void logStep(const std::string&) override {}
  void showReason(const std::string&, discovery::MarkColour) override {}
  void clearResults() override {}
  void showBand(const discovery::CalibrationBand&) override {}
  void yield() override {}

 private:
  const std::vector<std::string>& answers_;
  std::size_t next_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> answers;
  std::vector<std::int32_t> statuses;
  std::string piece;
  for (std::size_t i = 0; i <= size; ++i) {
    if (i == size || data[i] == 0) {
      const std::uint8_t pick = piece.empty() ? 0 : static_cast<std::uint8_t>(piece[0]);
      statuses.push_back(pick % 7 == 1 ? 5 : pick % 7 == 2 ? 1 : 0);
      answers.push_back(piece.empty() ? piece : piece.substr(1));
      piece.clear();
    } else {
      piece += static_cast<char>(data[i]);
    }
  }
  if (answers.size() > 64) return 0;  // longer inputs only repeat the same calls

  reader::FakeDriver fake;
  std::size_t next = 0;
  fake.setHandler([&](reader::Op, const std::string&) -> reader::FakeDriver::Reply {
    const std::size_t at = next++ % answers.size();
    return {statuses[at], answers[at]};
  });
  Host host;
  const bool logIt = size > 0 && (data[0] & 1);
  const bool configure = size > 0 && (data[0] & 2);
  discovery::Probes probes(fake, host, {.resetSlotsAtStart = size > 1 && (data[1] & 1) != 0,
                                        .radioOffBefore14443A = size > 1 && (data[1] & 2) != 0});
  probes.rfOffAutoDetect();
  const int r15693 = probes.probeISO15693(logIt, configure);
  if (r15693 != 0 && r15693 != 1 && r15693 != 99) std::abort();
  for (int r : {probes.probeISO14443A(logIt, configure), probes.probeISO14443B(logIt, configure),
                probes.probeFelica(logIt, configure)})
    if (r != 0 && r != 1) std::abort();
  const int slots = probes.probeISO14443B_PDYxx(logIt, configure);
  if (slots < 0 || slots > discovery::kSlotCount) std::abort();
  for (int n = 1; n <= discovery::kSlotCount; ++n)
    if (host.slot(n).compare(0, 4, discovery::left(discovery::slotCaption(n), 4)) != 0) std::abort();

  Chip chip(answers);
  const discovery::CalibrationOutcome out = discovery::runCalibrationSearch(chip);
  if (out.steps < 1 || out.steps > 8) std::abort();
  if (out.band && (out.band->final < -1 || out.band->final > 62)) std::abort();

  discovery::ProtocolFlags keep{true, true, true, true, true};
  bool stop = false;
  discovery::decideNextPass(static_cast<discovery::LoopMode>(size % 4), r15693 == 1, {r15693, 0, 0, slots, 0}, keep, stop);
  (void)discovery::detectionResult({r15693, 0, slots, 0}, static_cast<int>(size % 6));
  for (const std::string& a : answers) {
    (void)discovery::byteFieldText(a);
    (void)discovery::inventoryUid(a);
    (void)discovery::inventoryCrc(a);
    (void)discovery::answerBody(a);
    (void)discovery::uidPart(a);
  }
  return 0;
}
