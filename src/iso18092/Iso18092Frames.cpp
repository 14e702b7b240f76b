#include "iso18092/Iso18092Frames.h"

#include "console/ChipFrames.h"

namespace iso18092 {

std::vector<ChipWrite> openingWrites() {
  return {{kGainTitle, chip::kModulationGain50}, {kAutoFDetTitle, chip::kCodecConfiguration18092}};
}

std::string mid(std::string_view text, std::size_t position, std::size_t length) {
  if (position < 1 || position > text.size()) return {};
  return std::string(text.substr(position - 1, length));
}

bool goodAnswer(std::string_view answer) {
  return answer.size() >= 2 && answer.substr(0, 2) == "80" && answer.substr(answer.size() - 2) == "00";
}

ReqcLabels reqcLabels(std::string_view answer) {
  ReqcLabels labels;
  if (!goodAnswer(answer)) return labels;
  // Position 5 serves the answer and the manufacturer field alike.
  labels.answer += mid(answer, 5, 32);
  labels.manufId += mid(answer, 5, 2);
  labels.manufParameter += mid(answer, 7, 8);
  return labels;
}

}  // namespace iso18092
