// The chip's sleep and wake-up: how long an Idle command keeps the chip asleep and why it
// wakes. The tag detector measures the antenna's load once every wake-up period; a tag in
// front of the antenna lowers the reading, and a reading outside the band of DAC levels
// [DacDataL, DacDataH] of the Idle frame wakes the chip with reason 02. Without that, the
// time-out wakes it with reason 01 after its maximum number of periods.
//
// Time is simulated: the model says how long the chip slept and the library returns at
// once, unless the field file asks for real-time pacing.
#pragma once

#include <cstdint>
#include <optional>

#include "common/hex.h"
#include "simulator/chip.h"
#include "simulator/fieldfile.h"
#include "simulator/tags/tag.h"

namespace sim {

// The fourteen data bytes of an Idle frame (frame bytes 2 to 15).
struct IdleSettings {
  std::uint8_t wakeUpSources = 0;  // <WFUFlags>: sources in bits 0-4, LFO frequency in bits 6-7
  std::uint8_t enterCtrlL = 0, enterCtrlH = 0;
  std::uint8_t wuCtrlL = 0, wuCtrlH = 0;
  std::uint8_t leaveCtrlL = 0, leaveCtrlH = 0;
  std::uint8_t wuPeriod = 0;    // <WUPeriod>
  std::uint8_t oscStart = 0;    // <OscStart>
  std::uint8_t dacStart = 0;    // <DacStart>
  std::uint8_t dacDataL = 0;    // <DacDataL>: low edge of the band
  std::uint8_t dacDataH = 0;    // <DacDataH>: high edge of the band
  std::uint8_t swingsCount = 0; // <SwingsCnt>
  std::uint8_t maxSleep = 0;    // <MaxSleep>: periods before the time-out, minus one

  static constexpr std::size_t kDataSize = 14;
  // nullopt unless there are exactly fourteen bytes.
  static std::optional<IdleSettings> fromData(const hex::Bytes& data);
};

namespace wakeup {
// A wake-up source's bit in the flags byte is the reason it gives.
constexpr std::uint8_t sourceBit(WakeUp source) { return static_cast<std::uint8_t>(source); }
// How much a tag lowers the detector's reading, by the entry's "distance".
inline constexpr int kNearShift = 16;
inline constexpr int kFarShift = 4;
}  // namespace wakeup

// The shift of one tag: its "loadShift" when given, else that of its "distance" ("near" by
// default); 0 for a tag outside the field.
int tagLoadShift(const Tag& tag);
// What the detector reads: the antenna's level with no tag ("detectLevel") lowered by every
// tag in the field, kept within 0 to 255.
int detectorReading(const FieldContents& field);

// The LFO frequency in Hz from bits 6 and 7 of the flags: 4, 8, 16 or 32 kHz.
int lfoFrequency(std::uint8_t wakeUpSources);
// The time between two measurements of the detector: 256 LFO cycles times (WUPeriod + 2).
std::uint64_t wakeUpPeriodMicroseconds(const IdleSettings& idle);

struct WakeUpEvent {
  WakeUp reason = WakeUp::IrqIn;
  std::uint64_t asleepMicroseconds = 0;
};

// Why and after how long the chip wakes from this Idle frame in this field:
// - tag detection is a source and the reading lies outside [DacDataL, DacDataH]: reason 02
//   at the first measurement, one period after falling asleep;
// - else the time-out is a source: reason 01 after MaxSleep + 1 periods;
// - else nothing in the chip wakes it, and the board's controller brings it back after as
//   long with a pulse on IRQ_IN (reason 08), or on SPI_SS (10) when that is the only source.
WakeUpEvent wakeUpFrom(const IdleSettings& idle, const FieldContents& field);

// The same, and when the field file asks for real-time pacing ("realTimeIdle"), the call
// takes the time the chip sleeps, ten seconds at most.
WakeUpEvent sleepUntilWakeUp(const IdleSettings& idle, const FieldContents& field);

}  // namespace sim
