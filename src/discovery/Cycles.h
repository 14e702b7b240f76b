// The decisions of the two discovery cycles, as functions of the probes' results: what the
// result label says, whether a pass found a tag, and how the auto-detection loop goes on.
#pragma once

#include <array>
#include <string>

namespace discovery {

inline constexpr int kProtocolCount = 5;
using ProtocolResults = std::array<int, kProtocolCount>;
using ProtocolFlags = std::array<bool, kProtocolCount>;

inline constexpr const char* kDetectedTag = "Detected Tag";
inline constexpr const char* kNoDetectedTag = "No Detected Tag";

// The auto-detection cycle's loop modes, the index of optLoopAutoDetectionTool.
enum class LoopMode { NoLoop = 0, Infinite = 1, UntilFound = 2, UntilFoundThenFollow = 3 };
inline constexpr std::array<const char*, 4> kLoopModeCaptions{
    {"no loop", "infinite loop on all selected protocols", "loop on all selected protocols until a tag is found",
     "loop on all selected protocols until a tag is found, then loop on this tag only"}};

// True when the probe of box `index` found a tag: a result of 1, for the PDYxx probe any
// count above 0. The ISO 15693 probe's 99 (a bad answer) is no hit.
bool autoDetectHit(int index, int result);
// What a hit appends to the result label: "1 ISO15693 ", "1 ISO14443-A ", "1 ISO14443-B ",
// the PDYxx count and " ISO14443-B ", "1 FELICA".
std::string autoDetectWords(int index, int result);

// Step 10 of a pass: the stop flag and the keep-flags after it. Mode 3 narrows the probing
// to the one protocol whose result is 1 when the results add up to exactly 1, and stops
// the run when they add up to more (two tags, or a bad ISO 15693 answer).
void decideNextPass(LoopMode mode, bool tagFound, const ProtocolResults& results, ProtocolFlags& keep,
                    bool& stopFlag);

// The wake-up detection's result after a tag woke the chip: the label and whether the cycle
// counts as detected. A count counts only when it is 1, except ISO 14443-B, which names any
// number of tags; with no protocol selected the wake-up itself is the result.
struct DetectionCounts {
  int iso15693 = 0;
  int iso14443A = 0;
  int iso14443B = 0;  // the plain probe's, or the PDYxx probe's when its box is on
  int felica = 0;
};
struct DetectionResult {
  std::string label;
  bool marked = false;
};
DetectionResult detectionResult(const DetectionCounts& counts, int protocolCount);

}  // namespace discovery
