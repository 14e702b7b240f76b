#include "simulator/wakeup.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace sim {

std::optional<IdleSettings> IdleSettings::fromData(const hex::Bytes& d) {
  if (d.size() != kDataSize) return std::nullopt;
  IdleSettings s;
  s.wakeUpSources = d[0];
  s.enterCtrlL = d[1];
  s.enterCtrlH = d[2];
  s.wuCtrlL = d[3];
  s.wuCtrlH = d[4];
  s.leaveCtrlL = d[5];
  s.leaveCtrlH = d[6];
  s.wuPeriod = d[7];
  s.oscStart = d[8];
  s.dacStart = d[9];
  s.dacDataL = d[10];
  s.dacDataH = d[11];
  s.swingsCount = d[12];
  s.maxSleep = d[13];
  return s;
}

int tagLoadShift(const Tag& tag) {
  if (!tag.inField()) return 0;
  // The entry as loaded, with what the loader checked: "loadShift" is a whole number,
  // "distance" is "near" or "far".
  const Json entry = tag.toJson();
  if (const auto shift = entry.find("loadShift"); shift != entry.end() && shift->is_number_integer())
    return shift->get<int>();
  if (const auto distance = entry.find("distance"); distance != entry.end() && *distance == "far")
    return wakeup::kFarShift;
  return wakeup::kNearShift;
}

int detectorReading(const FieldContents& field) {
  int level = field.antenna.detectLevel;
  for (const auto& tag : field.tags) level -= tagLoadShift(*tag);
  return std::clamp(level, 0, 255);
}

int lfoFrequency(std::uint8_t wakeUpSources) { return 4000 << ((wakeUpSources >> 6) & 0x03); }

std::uint64_t wakeUpPeriodMicroseconds(const IdleSettings& idle) {
  return 256ull * (idle.wuPeriod + 2u) * 1000000ull / static_cast<std::uint64_t>(lfoFrequency(idle.wakeUpSources));
}

WakeUpEvent wakeUpFrom(const IdleSettings& idle, const FieldContents& field) {
  const auto has = [&](WakeUp source) { return (idle.wakeUpSources & wakeup::sourceBit(source)) != 0; };
  const std::uint64_t period = wakeUpPeriodMicroseconds(idle);
  const std::uint64_t timeOut = period * (idle.maxSleep + 1u);
  const int reading = detectorReading(field);
  if (has(WakeUp::TagDetect) && (reading < idle.dacDataL || reading > idle.dacDataH)) return {WakeUp::TagDetect, period};
  if (has(WakeUp::TimeOut)) return {WakeUp::TimeOut, timeOut};
  if (has(WakeUp::SpiNss) && !has(WakeUp::IrqIn)) return {WakeUp::SpiNss, timeOut};
  return {WakeUp::IrqIn, timeOut};
}

WakeUpEvent sleepUntilWakeUp(const IdleSettings& idle, const FieldContents& field) {
  const WakeUpEvent event = wakeUpFrom(idle, field);
  // The longest frame sleeps more than an hour; paced for a person watching, the call
  // returns after ten seconds at most, so that the program never looks dead.
  constexpr std::uint64_t kLongestRealSleep = 10'000'000;
  if (field.board.realTimeIdle)
    std::this_thread::sleep_for(std::chrono::microseconds(std::min(event.asleepMicroseconds, kLongestRealSleep)));
  return event;
}

}  // namespace sim
