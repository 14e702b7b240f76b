// What the ISO 18092 (FeliCa) panel knows without its window: the configuration it sends
// when it opens, the REQC frame, and how a REQC answer is cut into the three answer
// labels. Texts stand here exactly as the panel shows and logs them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "reader/ReaderDriver.h"

namespace iso18092 {

inline constexpr const char* kWindowTitle = "   ISO18092  user interface  ";

// Protocol Select 04 (FeliCa) with parameter 51, and the two register writes after it.
inline constexpr const char* kSelectParameters = "0451";
inline constexpr const char* kSelectTitle = "TL42RQ CONFIGURATION : ISO18092 protocol";
inline constexpr const char* kGainTitle = "TL42RQ CONFIGURATION : Index modulation & Gain adjust";
inline constexpr const char* kAutoFDetTitle = "TL42RQ CONFIGURATION : Auto FDet";

// A register write the panel sends through KQCmd when it opens: its title and the chip
// frame (sent behind the mode field "01").
struct ChipWrite {
  const char* title;
  const char* frame;
};
// The two writes in the order they go out.
std::vector<ChipWrite> openingWrites();

// Polling with system code FFFF (every system), no request data, one time slot.
inline constexpr const char* kReqcFrame = "00FFFF0000";
inline constexpr const char* kReqcTitle = "REQC";
inline constexpr const char* kSendFrameTitle = "SEND FRAME";

// Captions of the three answer labels, bare.
inline constexpr const char* kAnswerCaption = "Answer : ";
inline constexpr const char* kManufIdCaption = "Manuf ID : ";
inline constexpr const char* kManufParameterCaption = "Manuf Parameter : ";

// Characters of a text counted from 1, at most `length` of them; nothing past the end.
std::string mid(std::string_view text, std::size_t position, std::size_t length);

// A Send Receive answer that the panel reads: "80" at its start and the protocol result
// "00" at its end.
bool goodAnswer(std::string_view answer);

struct ReqcLabels {
  std::string answer = kAnswerCaption;
  std::string manufId = kManufIdCaption;
  std::string manufParameter = kManufParameterCaption;
  bool operator==(const ReqcLabels&) const = default;
};
// The labels after a REQC answer: 32 characters from position 5, 2 from position 5 and
// 8 from position 7 behind their captions; bare captions for any other answer.
ReqcLabels reqcLabels(std::string_view answer);

}  // namespace iso18092
