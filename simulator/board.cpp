// Placeholder until the board model lands: no board present.
#include "simulator/board.h"

namespace sim {
namespace {
class AbsentBoard final : public BoardApi {
 public:
  std::int32_t usbConnect() override { return 5; }
  std::int32_t usbHandleCheck() override { return 5; }
  std::int32_t dllRevision(char*) override { return 5; }
  std::int32_t mcuRevision(char*) override { return 5; }
  std::int32_t idn(char*) override { return 5; }
  std::int32_t echo(char*) override { return 5; }
  std::int32_t select(const char*, char*) override { return 5; }
  std::int32_t sendReceive(const char*, char*) override { return 5; }
  std::int32_t kqCmd(const char*, char*) override { return 5; }
  std::int32_t fieldOff(char*) override { return 5; }
  std::int32_t resetSpi(char*) override { return 5; }
  std::int32_t irqPulse(char*) override { return 5; }
  std::int32_t nssPulse(char*) override { return 5; }
  std::int32_t pollingReading(char*) override { return 5; }
  std::int32_t interfacePinState(char*) override { return 5; }
  std::int32_t loadField(const char*) override { return 1; }
  std::int32_t dumpField(char*, std::int32_t) override { return 0; }
  std::int32_t setBoardPresent(std::int32_t) override { return 0; }
  std::int32_t reset() override { return 0; }
  const char* lastError() override { return "not built"; }
};
}  // namespace
BoardApi& board() {
  static AbsentBoard b;
  return b;
}
}  // namespace sim
