// The chip's sleep and wake-up model: the detector's reading with tags near and far, the
// band of the Idle frame, the time-out after the frame's periods in simulated time, the
// fallback sources, real-time pacing, and the field file keys behind them.
#include <gtest/gtest.h>

#include <chrono>

#include "simulator/chip.h"
#include "simulator/fieldfile.h"
#include "simulator/wakeup.h"

namespace {

using sim::IdleSettings;
using sim::WakeUpEvent;

sim::FieldContents field(const std::string& json) {
  sim::ParseOutcome out = sim::parseField(json, "f.json");
  EXPECT_EQ(out.error, "");
  return std::move(out.contents);
}

// An Idle frame's data with these sources, band and the calibration's other bytes
// (WUPeriod 20, MaxSleep 01).
IdleSettings idle(std::uint8_t sources, std::uint8_t low, std::uint8_t high, std::uint8_t wuPeriod = 0x20,
                  std::uint8_t maxSleep = 0x01) {
  return *IdleSettings::fromData(
      {sources, 0xA1, 0x00, 0xF8, 0x01, 0x18, 0x00, wuPeriod, 0x60, 0x60, low, high, 0x3F, maxSleep});
}

const char* kOneNearTag = R"({"tags": [{"type": "felica", "idm": "0102030405060708", "pmm": "1112131415161718"}]})";

TEST(WakeUp, IdleDataIsFourteenBytesInFrameOrder) {
  const auto s = IdleSettings::fromData({0x0B, 0x21, 0x00, 0x79, 0x01, 0x18, 0x00, 0x20, 0x60, 0x61, 0x14, 0x24, 0x3F, 0x08});
  ASSERT_TRUE(s.has_value());
  EXPECT_EQ(s->wakeUpSources, 0x0B);
  EXPECT_EQ(s->wuPeriod, 0x20);
  EXPECT_EQ(s->dacStart, 0x61);
  EXPECT_EQ(s->dacDataL, 0x14);
  EXPECT_EQ(s->dacDataH, 0x24);
  EXPECT_EQ(s->maxSleep, 0x08);
  EXPECT_FALSE(IdleSettings::fromData(hex::Bytes(13, 0)).has_value());
  EXPECT_FALSE(IdleSettings::fromData(hex::Bytes(15, 0)).has_value());
}

TEST(WakeUp, EmptyAntennaReadsItsLevel) {
  EXPECT_EQ(sim::detectorReading(field(R"({"antenna": {"detectLevel": 31}})")), 31);
  EXPECT_EQ(sim::detectorReading(field("{}")), 31);  // the default level
}

TEST(WakeUp, TagsNearAndFarLowerTheReading) {
  EXPECT_EQ(sim::detectorReading(field(kOneNearTag)), 15);
  EXPECT_EQ(sim::detectorReading(field(R"({"tags": [{"type": "felica", "distance": "far",
      "idm": "0102030405060708", "pmm": "1112131415161718"}]})")), 27);
  EXPECT_EQ(sim::detectorReading(field(R"({"tags": [{"type": "felica", "distance": "near",
      "idm": "0102030405060708", "pmm": "1112131415161718"}]})")), 15);
}

TEST(WakeUp, LoadShiftOverridesTheDistanceAndTheReadingStaysInRange) {
  EXPECT_EQ(sim::detectorReading(field(R"({"tags": [{"type": "felica", "distance": "far", "loadShift": 10,
      "idm": "0102030405060708", "pmm": "1112131415161718"}]})")), 21);
  // A tag that detunes the antenna the other way raises the reading.
  EXPECT_EQ(sim::detectorReading(field(R"({"antenna": {"detectLevel": 250}, "tags": [{"type": "felica",
      "loadShift": -20, "idm": "0102030405060708", "pmm": "1112131415161718"}]})")), 255);
  EXPECT_EQ(sim::detectorReading(field(R"({"tags": [
      {"type": "felica", "idm": "0102030405060708", "pmm": "1112131415161718"},
      {"type": "iso15693", "uid": "E002000000000001"}]})")), 0);
}

TEST(WakeUp, TagOutsideTheFieldDoesNotLoadTheAntenna) {
  const sim::FieldContents f = field(R"({"tags": [{"type": "felica", "inField": false,
      "idm": "0102030405060708", "pmm": "1112131415161718"}]})");
  EXPECT_EQ(sim::tagLoadShift(*f.tags[0]), 0);
  EXPECT_EQ(sim::detectorReading(f), 31);
}

TEST(WakeUp, ReadingOutsideTheBandWakesByTagDetectAfterOnePeriod) {
  const sim::FieldContents empty = field("{}");
  const WakeUpEvent below = sim::wakeUpFrom(idle(0x03, 0x00, 0x00), empty);  // 31 above 00..00
  EXPECT_EQ(below.reason, sim::WakeUp::TagDetect);
  EXPECT_EQ(below.asleepMicroseconds, 2176000u);  // 256 x 34 cycles of 4 kHz
  const WakeUpEvent low = sim::wakeUpFrom(idle(0x03, 0x20, 0x40), empty);      // 31 below 20..40
  EXPECT_EQ(low.reason, sim::WakeUp::TagDetect);
}

TEST(WakeUp, ReadingInsideTheBandWakesByTimeOutAfterMaxSleepPlusOnePeriods) {
  const sim::FieldContents empty = field("{}");
  const WakeUpEvent e = sim::wakeUpFrom(idle(0x03, 0x00, 0xFC), empty);
  EXPECT_EQ(e.reason, sim::WakeUp::TimeOut);
  EXPECT_EQ(e.asleepMicroseconds, 2u * 2176000u);
  // The band's edges belong to it.
  EXPECT_EQ(sim::wakeUpFrom(idle(0x03, 0x1F, 0x1F), empty).reason, sim::WakeUp::TimeOut);
  EXPECT_EQ(sim::wakeUpFrom(idle(0x03, 0x1F, 0x1E), empty).reason, sim::WakeUp::TagDetect);
  EXPECT_EQ(sim::wakeUpFrom(idle(0x01, 0x00, 0x00, 0x00, 0x08), empty).asleepMicroseconds, 9u * 128000u);
}

TEST(WakeUp, CalibratedBandKeepsAnEmptyFieldAsleepAndANearTagWakesIt) {
  // The band that calibration finds around 31: codes 5 to 9, bytes 14 to 24.
  EXPECT_EQ(sim::wakeUpFrom(idle(0x0B, 0x14, 0x24), field("{}")).reason, sim::WakeUp::TimeOut);
  EXPECT_EQ(sim::wakeUpFrom(idle(0x0B, 0x14, 0x24), field(kOneNearTag)).reason, sim::WakeUp::TagDetect);
  // A far tag lowers the reading to 27, inside the band: the chip sleeps on.
  EXPECT_EQ(sim::wakeUpFrom(idle(0x0B, 0x14, 0x24), field(R"({"tags": [{"type": "felica", "distance": "far",
      "idm": "0102030405060708", "pmm": "1112131415161718"}]})")).reason, sim::WakeUp::TimeOut);
}

TEST(WakeUp, WithoutTagDetectionATagDoesNotWakeTheChip) {
  EXPECT_EQ(sim::wakeUpFrom(idle(0x01, 0x14, 0x24), field(kOneNearTag)).reason, sim::WakeUp::TimeOut);
}

TEST(WakeUp, LfoFrequencyComesFromBitsSixAndSeven) {
  EXPECT_EQ(sim::lfoFrequency(0x03), 4000);
  EXPECT_EQ(sim::lfoFrequency(0x43), 8000);
  EXPECT_EQ(sim::lfoFrequency(0x83), 16000);
  EXPECT_EQ(sim::lfoFrequency(0xC3), 32000);
  EXPECT_EQ(sim::wakeUpPeriodMicroseconds(idle(0xC3, 0, 0, 0x00)), 16000u);
  EXPECT_EQ(sim::wakeUpPeriodMicroseconds(idle(0x03, 0, 0, 0xFF)), 16448000u);
}

TEST(WakeUp, WithoutAnAutomaticSourceTheControllerPulsesTheChipAwake) {
  const sim::FieldContents empty = field("{}");
  EXPECT_EQ(sim::wakeUpFrom(idle(0x08, 0x00, 0xFF), empty).reason, sim::WakeUp::IrqIn);
  EXPECT_EQ(sim::wakeUpFrom(idle(0x0A, 0x00, 0xFF), empty).reason, sim::WakeUp::IrqIn);
  EXPECT_EQ(sim::wakeUpFrom(idle(0x10, 0x00, 0xFF), empty).reason, sim::WakeUp::SpiNss);
  EXPECT_EQ(sim::wakeUpFrom(idle(0x18, 0x00, 0xFF), empty).reason, sim::WakeUp::IrqIn);
  EXPECT_EQ(sim::wakeUpFrom(idle(0x00, 0x00, 0xFF), empty).reason, sim::WakeUp::IrqIn);
}

TEST(WakeUp, SimulatedTimeDoesNotWaitButRealTimePacingDoes) {
  // 32 kHz, WUPeriod 0: a period of 16 ms; the time-out after two.
  const IdleSettings quick = idle(0xC1, 0x00, 0xFF, 0x00, 0x01);
  using Clock = std::chrono::steady_clock;
  const sim::FieldContents simulated = field("{}");
  EXPECT_FALSE(simulated.board.realTimeIdle);
  const sim::FieldContents paced = field(R"({"board": {"realTimeIdle": true}})");
  EXPECT_TRUE(paced.board.realTimeIdle);
  const auto start = Clock::now();
  const WakeUpEvent e = sim::sleepUntilWakeUp(quick, paced);
  const auto slept = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
  EXPECT_EQ(e.reason, sim::WakeUp::TimeOut);
  EXPECT_EQ(e.asleepMicroseconds, 32000u);
  EXPECT_GE(slept.count(), 32000);
  // Simulated: the longest frame (more than an hour of chip time) returns at once.
  const auto before = Clock::now();
  const WakeUpEvent longest = sim::sleepUntilWakeUp(idle(0x01, 0x00, 0xFF, 0xFF, 0xFF), simulated);
  EXPECT_EQ(longest.asleepMicroseconds, 16448000ull * 256u);
  EXPECT_LT(std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - before).count(), 5);
}

TEST(WakeUpChip, IdleCommandAnswersTheReasonAndRegister62KeepsIt) {
  // The detection frame with the band calibration finds around 31.
  const hex::Bytes frame = *hex::toBytes("070E0B21007901180020606014243F01");
  sim::Chip chip;
  sim::FieldContents far = field(R"({"tags": [{"type": "felica", "distance": "far",
      "idm": "0102030405060708", "pmm": "1112131415161718"}]})");
  chip.powerOn(far);
  EXPECT_EQ(chip.execute(frame, far), "000101");
  EXPECT_EQ(chip.readRegister(0x62), 0x01);
  sim::FieldContents nearTag = field(kOneNearTag);
  EXPECT_EQ(chip.execute(frame, nearTag), "000102");
  EXPECT_EQ(chip.readRegister(0x62), 0x02);
  EXPECT_EQ(chip.execute(*hex::toBytes("0803620100"), nearTag), "000102");
  EXPECT_EQ(chip.execute(*hex::toBytes("070D0B21007901180020606014243F"), nearTag), "8200");
}

TEST(WakeUpFieldFile, DistanceMustBeNearOrFar) {
  const sim::ParseOutcome out = sim::parseField(
      R"({"tags": [{"type": "felica", "distance": "close", "idm": "0102030405060708", "pmm": "1112131415161718"}]})",
      "f.json");
  EXPECT_EQ(out.error, "f.json: line 1, column 42: tags[0].distance: \"near\" or \"far\" is needed, found the text \"close\"");
  EXPECT_TRUE(out.contents.tags.empty());
}

TEST(WakeUpFieldFile, LoadShiftIsAWholeNumberWithinAByte) {
  const sim::ParseOutcome out = sim::parseField(
      R"({"tags": [{"type": "felica", "loadShift": 300, "idm": "0102030405060708", "pmm": "1112131415161718"}]})",
      "f.json");
  EXPECT_EQ(out.error,
            "f.json: line 1, column 43: tags[0].loadShift: a whole number from -255 to 255 is needed, found the number 300");
}

TEST(WakeUpFieldFile, DumpKeepsTheKeysGivenAndOnlyThose) {
  const sim::FieldContents f = field(R"({"board": {"realTimeIdle": true}, "tags": [
      {"type": "felica", "distance": "far", "loadShift": 7, "idm": "0102030405060708", "pmm": "1112131415161718"},
      {"type": "felica", "idm": "0102030405060709", "pmm": "1112131415161718"}]})");
  const std::string dump = sim::fieldToJson(f);
  EXPECT_NE(dump.find("\"realTimeIdle\": true"), std::string::npos);
  EXPECT_NE(dump.find("\"distance\": \"far\""), std::string::npos);
  EXPECT_NE(dump.find("\"loadShift\": 7"), std::string::npos);
  EXPECT_EQ(dump.find("distance"), dump.rfind("distance"));  // the second tag has none
  const sim::ParseOutcome again = sim::parseField(dump, "dump");
  EXPECT_EQ(again.error, "");
  EXPECT_EQ(sim::detectorReading(again.contents), 31 - 7 - 16);
  EXPECT_TRUE(again.contents.board.realTimeIdle);
  EXPECT_EQ(sim::fieldToJson(field("{}")).find("realTimeIdle"), std::string::npos);
}

}  // namespace
