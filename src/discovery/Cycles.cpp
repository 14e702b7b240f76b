#include "discovery/Cycles.h"

#include <numeric>

#include "discovery/Probes.h"

namespace discovery {

bool autoDetectHit(int index, int result) { return index == kPdyxxIndex ? result > 0 : result == kTagFound; }

std::string autoDetectWords(int index, int result) {
  if (!autoDetectHit(index, result)) return {};
  switch (index) {
    case kIso15693Index: return "1 ISO15693 ";
    case kIso14443AIndex: return "1 ISO14443-A ";
    case kIso14443BIndex: return "1 ISO14443-B ";
    case kPdyxxIndex: return std::to_string(result) + " ISO14443-B ";
    case kFelicaIndex: return "1 FELICA";
    default: return {};
  }
}

void decideNextPass(LoopMode mode, bool tagFound, const ProtocolResults& results, ProtocolFlags& keep,
                    bool& stopFlag) {
  switch (mode) {
    case LoopMode::NoLoop:
      stopFlag = true;
      break;
    case LoopMode::Infinite:
      break;
    case LoopMode::UntilFound:
      if (tagFound) stopFlag = true;
      break;
    case LoopMode::UntilFoundThenFollow: {
      if (!tagFound) break;  // the protocol followed stopped answering: the flags stay
      keep.fill(false);
      const int total = std::accumulate(results.begin(), results.end(), 0);
      if (total == 1) {
        for (int i = 0; i < kProtocolCount; ++i)
          if (results[static_cast<std::size_t>(i)] == 1) {
            keep[static_cast<std::size_t>(i)] = true;
            break;
          }
      } else {
        stopFlag = true;
      }
      break;
    }
  }
}

DetectionResult detectionResult(const DetectionCounts& counts, int protocolCount) {
  DetectionResult r;
  if (counts.iso15693 == 1) {
    r.label += "1 ISO15693 ";
    r.marked = true;
  }
  if (counts.iso14443A == 1) {
    r.label += "1 ISO14443-A ";
    r.marked = true;
  }
  if (counts.iso14443B > 0) {
    r.label += std::to_string(counts.iso14443B) + " ISO14443-B ";
    r.marked = true;
  }
  if (counts.felica == 1) {
    r.label += "1 FELICA";
    r.marked = true;
  }
  if (protocolCount == 0) r.marked = true;
  return r;
}

}  // namespace discovery
