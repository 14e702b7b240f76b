#include "discovery/Calibration.h"

#include "discovery/TextCut.h"

namespace discovery {

namespace {
std::string field(const std::string& text) { return twoDigits(static_cast<long>(hexFieldValue(text))); }

std::string parameterTail(const IdleParameters& p) { return field(p.wuPeriod) + field(p.oscStart) + field(p.dacStart); }

constexpr int kMaxCode = 255;  // the highest level tried: (255 * 4) and FF gives FC
}  // namespace

std::string idleCalibrationRequest(bool wakeOnBoth, const IdleParameters& p, int dacLowCode, int dacHighCode) {
  return std::string("01 ") + "070E" + (wakeOnBoth ? "03" : "02") + "A100" + "F801" + "1800" + parameterTail(p) +
         twoDigits(static_cast<long>(dacLowCode) * 4) + twoDigits((static_cast<long>(dacHighCode) * 4) & 0xFF) +
         field(p.swingsCnt) + field(p.timeOut);
}

std::string idleDetectionRequest(bool wakeCycleEnd, const IdleParameters& p, long dacLow, long dacHigh) {
  return std::string("01 ") + "070E" + (wakeCycleEnd ? "0B" : "0A") + "2100" + "7901" + "1800" + parameterTail(p) +
         twoDigits(dacLow) + twoDigits(dacHigh) + field(p.swingsCnt) + field(p.timeOut);
}

std::string withoutBlanks(const std::string& request) {
  std::string out;
  for (char c : request)
    if (c != ' ') out += c;
  return out;
}

std::string stepLine(const std::string& words, const reader::DateTime& when) {
  return std::string(reader::kNewLine) + reader::kNewLine + reader::traceDate(when) + " " + reader::traceTime(when) +
         "\t>>> " + words;
}

std::string searchStepWords(int counter, int code) {
  return "-> " + std::to_string(counter) + (counter == 3 ? text::kThirdStepWords : text::kOtherStepWords) +
         twoDigits(code & 0xFF);
}

CalibrationBand calibrationBand(int final) {
  CalibrationBand b;
  b.final = final;
  b.low = final - 2;
  b.high = final + 2;
  if (b.low < 2) {
    b.lowCaption = "DacDataL = 0x00";
    b.lowBox = "00";
  } else {
    b.lowCaption = "DacDataL = 0x" + twoDigits(b.low);
    b.lowBox = twoDigits(static_cast<long>(b.low) * 4);
  }
  // The test is on the low level, as it always was; it cannot be reached, since the low
  // level is at most 61.
  if (b.low > 250) {
    b.highCaption = "DacDataH = 0xFC";
    b.highBox = "FC";
  } else {
    b.highCaption = "DacDataH = 0x" + twoDigits(b.high);
    b.highBox = twoDigits(static_cast<long>(b.high) * 4);
  }
  return b;
}

CalibrationOutcome runCalibrationSearch(CalibrationHost& host) {
  CalibrationOutcome out;
  const auto stop = [&](const char* line) {
    host.logStep(line);
    out.stopLine = line;
    return out;
  };
  const auto step = [&](int low, int high) {
    ++out.steps;
    return wakeUpReason(host.runStep(low, high));
  };

  int position = 64;
  int stepSize = 64;

  host.logStep(text::kFirstStep);
  std::string reason = step(0, 0);
  if (reason == kReasonTimeOut) return stop(text::kNoDetectionAtMin);
  if (reason != kReasonTagDetect) return stop(text::kReadRegisterProblem);

  host.yield();
  host.yield();
  host.logStep(text::kSecondStep);
  reason = step(0, kMaxCode);
  if (reason == kReasonTagDetect) return stop(text::kDetectionAtMax);
  if (reason != kReasonTimeOut) return stop(text::kReadRegisterProblem);

  host.yield();
  host.clearResults();
  int counter = 2;
  int code = 0;
  do {
    ++counter;
    stepSize /= 2;  // 32, 16, 8, 4, 2, 1: always an exact half
    if (reason == kReasonTimeOut) position -= stepSize;
    else if (reason == kReasonTagDetect) position += stepSize;
    else return stop(text::kReadRegisterProblem);
    code = (position - 1) & 0xFF;
    host.logStep(searchStepWords(counter, code));
    reason = step(0, code);
    host.yield();
    if (reason == kReasonTimeOut) {
      host.showReason(reason, MarkColour::Face);
    } else if (reason == kReasonTagDetect) {
      host.showReason(reason, MarkColour::Green);
    } else {
      host.showReason(reason, MarkColour::Red);
      return stop(text::kReadRegisterProblem);
    }
  } while (stepSize > 1);

  // The last level with a detection is the answer: a time-out at this code puts the
  // threshold one code below it. The subtraction is signed: code 0 gives -1.
  const int final = reason == kReasonTimeOut ? code - 1 : code;
  out.band = calibrationBand(final);
  host.showBand(*out.band);
  host.logStep(text::kResult + out.band->lowCaption + " / " + out.band->highCaption);
  return out;
}

}  // namespace discovery
