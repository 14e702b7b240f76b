// The chip's tag detector: the Idle frames of the calibration and of the detection, and
// the search for the band of DAC levels [DacDataL, DacDataH] inside which an empty field
// keeps the chip asleep.
//
// The search works on a code from 0 to 63; the frame carries the code times four. It
// first checks that the chip wakes at the lowest level and stays asleep at the highest,
// then halves its step six times around the threshold, and puts a band four codes wide
// around the last level at which the chip still detected.
#pragma once

#include <optional>
#include <string>

#include "reader/TraceLog.h"

namespace discovery {

// The Idle parameter fields of the tag-detection tool, as their text stands.
struct IdleParameters {
  std::string wuPeriod = "20";   // txtWUPeriod, <WUPeriod>
  std::string oscStart = "60";   // txtOscStart, <OscStart>
  std::string dacStart = "60";   // txtDacStart, <DacStart>
  std::string swingsCnt = "3F";  // txtSwingsCnt, <SwingsCnt>
  std::string timeOut = "01";    // txtTimeOut, <MaxSleep>
};

// The requests of the tag-detection tool, with the mode field and its blank in front, as
// the request box and the trace show them; the blanks go before the call.
// Calibration: wake-up flags 03 (time-out and tag detection) or 02, the levels as codes.
std::string idleCalibrationRequest(bool wakeOnBoth, const IdleParameters& p, int dacLowCode, int dacHighCode);
// Detection: wake-up flags 0B or 0A, the levels as bytes, as typed.
std::string idleDetectionRequest(bool wakeCycleEnd, const IdleParameters& p, long dacLow, long dacHigh);
inline constexpr const char* kReadWakeUpRegisterRequest = "01 0803620100";
inline constexpr const char* kTagDetectorSetupRequest = "01 090460011800";
// The word of these exchanges in the trace, followed by the request.
inline constexpr const char* kKQCmdTraceWord = "TL42RQDll_KQCmd, ";
std::string withoutBlanks(const std::string& request);

// A step line of the calibration's trace: two line ends, date, time, ">>> " and the words.
std::string stepLine(const std::string& words, const reader::DateTime& when);

namespace text {
inline constexpr const char* kFirstStep = "-> 1st step : VERIFY detection with DacDataH=0x00 (min value)";
inline constexpr const char* kSecondStep = "-> 2nd step : VERIFY no detection with DacDataH=0xFC (max value)";
inline constexpr const char* kNoDetectionAtMin =
    "-> Calibration process stopped : no detection observed with DacDataH=0x00";
inline constexpr const char* kDetectionAtMax = "-> Calibration process stopped : detection observed with DacDataH=0xFC";
inline constexpr const char* kReadRegisterProblem = "-> Calibration process stopped : read register value problem";
inline constexpr const char* kThirdStepWords = "rd step : Calibration with DacDataH=0x";
inline constexpr const char* kOtherStepWords = "th step : Calibration with DacDataH=0x";
inline constexpr const char* kResult = " ---> Calibration result : ";
}  // namespace text

// "-> 3rd step : Calibration with DacDataH=0x1F" and the like.
std::string searchStepWords(int counter, int code);

// The colour of a reason mark.
enum class MarkColour { Face, Green, Red };

// The band put around the final level.
struct CalibrationBand {
  int final = 0;
  int low = 0;
  int high = 0;
  std::string lowCaption;   // "DacDataL = 0x" and the code
  std::string lowBox;       // the byte: the code times four
  std::string highCaption;
  std::string highBox;
};
CalibrationBand calibrationBand(int final);

// What the search needs from the tool.
class CalibrationHost {
 public:
  virtual ~CalibrationHost() = default;
  // Puts the chip to sleep with these levels (codes) and returns the answer whose
  // characters 5 to 6 say why it woke.
  virtual std::string runStep(int dacLowCode, int dacHighCode) = 0;
  virtual void logStep(const std::string& words) = 0;
  virtual void showReason(const std::string& reason, MarkColour colour) = 0;
  virtual void clearResults() = 0;
  virtual void showBand(const CalibrationBand& band) = 0;
  virtual void yield() = 0;
};

struct CalibrationOutcome {
  std::optional<CalibrationBand> band;  // empty when the search stopped
  std::string stopLine;                 // the line it stopped with
  int steps = 0;                        // Idle steps run
};

// Steps 3 to 12 of the calibration: both guards, the six search steps, the band.
CalibrationOutcome runCalibrationSearch(CalibrationHost& host);

}  // namespace discovery
