// The tag detector's frames and the calibration search on scripted chips: the guards, the
// six halving steps with their trace lines, the final level and the band around it.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "discovery/Calibration.h"
#include "discovery/TextCut.h"

using namespace discovery;

namespace {

const reader::DateTime kWhen{2026, 11, 21, 10, 20, 30};

// A chip on the script's terms: `reason` says why it woke for a high level code.
class ScriptedChip final : public CalibrationHost {
 public:
  explicit ScriptedChip(std::function<std::string(int)> reason) : reason_(std::move(reason)) {}
  std::string runStep(int low, int high) override {
    steps.push_back({low, high});
    return "0001" + reason_(high);
  }
  void logStep(const std::string& words) override { lines.push_back(words); }
  void showReason(const std::string& reason, MarkColour colour) override { reasons.push_back({reason, colour}); }
  void clearResults() override { ++clears; }
  void showBand(const CalibrationBand& b) override { band = b; }
  void yield() override { ++yields; }

  std::vector<std::pair<int, int>> steps;
  std::vector<std::string> lines;
  std::vector<std::pair<std::string, MarkColour>> reasons;
  CalibrationBand band;
  int clears = 0;
  int yields = 0;

 private:
  std::function<std::string(int)> reason_;
};

// A chip that detects while its level lies above the high level: detection up to code
// `threshold`, time-out above it and at the highest level (the second guard).
std::function<std::string(int)> thresholdAt(int threshold) {
  return [threshold](int code) {
    if (code == 255) return std::string("01");
    return code <= threshold ? std::string("02") : std::string("01");
  };
}

std::vector<int> highCodes(const ScriptedChip& chip) {
  std::vector<int> out;
  for (const auto& s : chip.steps) out.push_back(s.second);
  return out;
}

TEST(CalibrationFrames, CalibrationFrameWithTheStartFieldsIsTheExampleFrame) {
  EXPECT_EQ(idleCalibrationRequest(true, IdleParameters{}, 0, 0), "01 070E03A100F801180020606000003F01");
  EXPECT_EQ(idleCalibrationRequest(false, IdleParameters{}, 0, 0), "01 070E02A100F801180020606000003F01");
}

TEST(CalibrationFrames, LevelsAreCodesTimesFourAndTheHighOneIsMasked) {
  // Code 31 goes out as 7C; code 255 as (255 * 4) and FF = FC.
  EXPECT_EQ(idleCalibrationRequest(true, IdleParameters{}, 0, 31), "01 070E03A100F8011800206060007C3F01");
  EXPECT_EQ(idleCalibrationRequest(true, IdleParameters{}, 0, 255), "01 070E03A100F801180020606000FC3F01");
  EXPECT_EQ(idleCalibrationRequest(true, IdleParameters{}, 5, 9), "01 070E03A100F80118002060601424" "3F01");
}

TEST(CalibrationFrames, ParameterFieldsAreReadAsHexadecimalAndWrittenAsTwoDigits) {
  IdleParameters p;
  p.wuPeriod = "a";
  p.oscStart = "";
  p.dacStart = "7";
  p.swingsCnt = "3f";
  p.timeOut = "08";
  EXPECT_EQ(idleCalibrationRequest(true, p, 0, 1), "01 070E03A100F80118000A000700043F08");
}

TEST(CalibrationFrames, DetectionFrameCarriesTheLevelBytesAsTyped) {
  EXPECT_EQ(idleDetectionRequest(true, IdleParameters{}, 0x10, 0x20), "01 070E0B21007901180020606010203F01");
  EXPECT_EQ(idleDetectionRequest(false, IdleParameters{}, 0x10, 0x20), "01 070E0A21007901180020606010203F01");
  // FF stays FF: no times-four here.
  EXPECT_EQ(idleDetectionRequest(true, IdleParameters{}, 0x00, 0xFF), "01 070E0B210079011800206060" "00FF" "3F01");
  EXPECT_EQ(withoutBlanks("01 070E0B2100"), "01070E0B2100");
  EXPECT_EQ(std::string(kReadWakeUpRegisterRequest), "01 0803620100");
  EXPECT_EQ(std::string(kTagDetectorSetupRequest), "01 090460011800");
}

TEST(CalibrationFrames, StepLineForm) {
  EXPECT_EQ(stepLine(text::kFirstStep, kWhen),
            "\r\n\r\n11-21-2026 10:20:30\t>>> -> 1st step : VERIFY detection with DacDataH=0x00 (min value)");
  EXPECT_EQ(searchStepWords(3, 0x1F), "-> 3rd step : Calibration with DacDataH=0x1F");
  EXPECT_EQ(searchStepWords(4, 0x0F), "-> 4th step : Calibration with DacDataH=0x0F");
  EXPECT_EQ(searchStepWords(8, 0x3E), "-> 8th step : Calibration with DacDataH=0x3E");
}

TEST(CalibrationSearch, ThresholdAtCode31) {
  // The first search step is code 31 (a frame with 7C): detection there sends the search up
  // to 47, a time-out down to 15.
  ScriptedChip up(thresholdAt(31));
  runCalibrationSearch(up);
  ASSERT_GE(up.steps.size(), 4u);
  EXPECT_EQ(up.steps[2].second, 31);
  EXPECT_EQ(up.steps[3].second, 47);
  EXPECT_EQ(up.band.final, 31);

  ScriptedChip down(thresholdAt(30));
  runCalibrationSearch(down);
  EXPECT_EQ(down.steps[2].second, 31);
  EXPECT_EQ(down.steps[3].second, 15);
  EXPECT_EQ(down.band.final, 30);
}

TEST(CalibrationSearch, FullRunLogsEveryStepAndTheBand) {
  // Level 31 of the simulated antenna compared with bytes: detection while 31 > 4 x code,
  // that is up to code 7.
  ScriptedChip chip([](int code) { return 31 > ((code * 4) & 0xFF) ? std::string("02") : std::string("01"); });
  const CalibrationOutcome out = runCalibrationSearch(chip);
  ASSERT_TRUE(out.band.has_value());
  EXPECT_EQ(out.steps, 8);
  EXPECT_EQ(highCodes(chip), (std::vector<int>{0, 255, 31, 15, 7, 11, 9, 8}));
  EXPECT_EQ(chip.lines, (std::vector<std::string>{
                            "-> 1st step : VERIFY detection with DacDataH=0x00 (min value)",
                            "-> 2nd step : VERIFY no detection with DacDataH=0xFC (max value)",
                            "-> 3rd step : Calibration with DacDataH=0x1F",
                            "-> 4th step : Calibration with DacDataH=0x0F",
                            "-> 5th step : Calibration with DacDataH=0x07",
                            "-> 6th step : Calibration with DacDataH=0x0B",
                            "-> 7th step : Calibration with DacDataH=0x09",
                            "-> 8th step : Calibration with DacDataH=0x08",
                            " ---> Calibration result : DacDataL = 0x05 / DacDataH = 0x09"}));
  EXPECT_EQ(chip.band.final, 7);
  EXPECT_EQ(chip.band.lowBox, "14");
  EXPECT_EQ(chip.band.highBox, "24");
  EXPECT_EQ(chip.clears, 1);
  ASSERT_EQ(chip.reasons.size(), 6u);
  EXPECT_EQ(chip.reasons[2], std::make_pair(std::string("02"), MarkColour::Green));
  EXPECT_EQ(chip.reasons[5], std::make_pair(std::string("01"), MarkColour::Face));
  for (const auto& s : chip.steps) EXPECT_EQ(s.first, 0);
}

TEST(CalibrationSearch, ChipThatTimesOutAtEveryLevelAfterTheGuardsEndsAtMinusOne) {
  // Only the lowest level detects: the search walks down to position 1, code 0, and the
  // final level is -1 (signed): low result 00, high 0x01 with the byte 04.
  int calls = 0;
  ScriptedChip guarded([&calls](int) { return ++calls == 1 ? std::string("02") : std::string("01"); });
  const CalibrationOutcome out = runCalibrationSearch(guarded);
  ASSERT_TRUE(out.band.has_value());
  EXPECT_EQ(highCodes(guarded), (std::vector<int>{0, 255, 31, 15, 7, 3, 1, 0}));
  EXPECT_EQ(out.band->final, -1);
  EXPECT_EQ(out.band->lowCaption, "DacDataL = 0x00");
  EXPECT_EQ(out.band->lowBox, "00");
  EXPECT_EQ(out.band->highCaption, "DacDataH = 0x01");
  EXPECT_EQ(out.band->highBox, "04");
  EXPECT_EQ(guarded.lines.back(), " ---> Calibration result : DacDataL = 0x00 / DacDataH = 0x01");
}

TEST(CalibrationSearch, FinalLevelsTwoFourAndSixtyTwo) {
  ScriptedChip two(thresholdAt(2));
  runCalibrationSearch(two);
  EXPECT_EQ(two.band.final, 2);
  EXPECT_EQ(two.band.lowCaption, "DacDataL = 0x00");
  EXPECT_EQ(two.band.lowBox, "00");
  EXPECT_EQ(two.band.highCaption, "DacDataH = 0x04");
  EXPECT_EQ(two.band.highBox, "10");

  ScriptedChip four(thresholdAt(4));
  runCalibrationSearch(four);
  EXPECT_EQ(four.band.final, 4);
  EXPECT_EQ(four.band.lowCaption, "DacDataL = 0x02");  // the caption shows the code,
  EXPECT_EQ(four.band.lowBox, "08");                   // the box the byte

  ScriptedChip top(thresholdAt(300));
  runCalibrationSearch(top);
  EXPECT_EQ(highCodes(top), (std::vector<int>{0, 255, 31, 47, 55, 59, 61, 62}));
  EXPECT_EQ(top.band.final, 62);
  EXPECT_EQ(top.band.lowCaption, "DacDataL = 0x3C");
  EXPECT_EQ(top.band.lowBox, "F0");
  EXPECT_EQ(top.band.highCaption, "DacDataH = 0x40");
  EXPECT_EQ(top.band.highBox, "100");  // three digits: no cut
}

TEST(CalibrationSearch, NoDetectionAtTheLowestLevelStops) {
  ScriptedChip chip([](int) { return std::string("01"); });
  const CalibrationOutcome out = runCalibrationSearch(chip);
  EXPECT_FALSE(out.band.has_value());
  EXPECT_EQ(out.steps, 1);
  EXPECT_EQ(chip.lines, (std::vector<std::string>{
                            "-> 1st step : VERIFY detection with DacDataH=0x00 (min value)",
                            "-> Calibration process stopped : no detection observed with DacDataH=0x00"}));
  EXPECT_EQ(chip.clears, 0);
}

TEST(CalibrationSearch, DetectionAtTheHighestLevelStops) {
  ScriptedChip chip([](int) { return std::string("02"); });
  const CalibrationOutcome out = runCalibrationSearch(chip);
  EXPECT_FALSE(out.band.has_value());
  EXPECT_EQ(out.steps, 2);
  EXPECT_EQ(chip.lines.back(), "-> Calibration process stopped : detection observed with DacDataH=0xFC");
  EXPECT_EQ(chip.yields, 2);
}

TEST(CalibrationSearch, AnyOtherReasonIsAReadRegisterProblem) {
  ScriptedChip first([](int) { return std::string(""); });
  runCalibrationSearch(first);
  EXPECT_EQ(first.lines.back(), "-> Calibration process stopped : read register value problem");

  ScriptedChip second([](int code) { return code == 0 ? std::string("02") : std::string("08"); });
  runCalibrationSearch(second);
  EXPECT_EQ(second.lines.back(), "-> Calibration process stopped : read register value problem");
  EXPECT_EQ(second.steps.size(), 2u);

  // In the search: the mark turns red and the run stops; the result boxes stay empty.
  int n = 0;
  ScriptedChip third([&n](int) { ++n; return n == 1 ? std::string("02") : n == 2 ? std::string("01") : std::string("82"); });
  const CalibrationOutcome out = runCalibrationSearch(third);
  EXPECT_FALSE(out.band.has_value());
  EXPECT_EQ(third.reasons, (std::vector<std::pair<std::string, MarkColour>>{{"82", MarkColour::Red}}));
  EXPECT_EQ(third.lines.back(), "-> Calibration process stopped : read register value problem");
  EXPECT_EQ(third.clears, 1);
}

TEST(CalibrationSearch, ReasonIsReadAtCharactersFiveAndSix) {
  EXPECT_EQ(wakeUpReason("000102"), "02");
  EXPECT_EQ(wakeUpReason("0001"), "");
  EXPECT_EQ(wakeUpReason(""), "");
}

TEST(CalibrationBandTest, BandArithmetic) {
  const CalibrationBand b = calibrationBand(31);
  EXPECT_EQ(b.low, 29);
  EXPECT_EQ(b.high, 33);
  EXPECT_EQ(b.lowCaption, "DacDataL = 0x1D");
  EXPECT_EQ(b.lowBox, "74");
  EXPECT_EQ(b.highCaption, "DacDataH = 0x21");
  EXPECT_EQ(b.highBox, "84");
  EXPECT_EQ(calibrationBand(3).lowCaption, "DacDataL = 0x00");  // low 1, below 2
}

TEST(ByteFields, KeyUpRule) {
  EXPECT_EQ(byteFieldText(""), "");
  EXPECT_EQ(byteFieldText("a"), "0A");
  EXPECT_EQ(byteFieldText("1FF"), "FF");
  EXPECT_EQ(byteFieldText("100"), "00");
  EXPECT_EQ(hexFieldValue("100"), 256u);
  EXPECT_EQ(hexFieldValue("g1"), 0u);
  EXPECT_EQ(twoDigits(5), "05");
  EXPECT_EQ(twoDigits(256), "100");
}

}  // namespace
