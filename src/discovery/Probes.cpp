#include "discovery/Probes.h"

#include "common/crc.h"
#include "console/ChipFrames.h"
#include "discovery/TextCut.h"
#include "reader/HexText.h"
#include "reader/Reconnect.h"
#include "shell/GlobVariables.h"

namespace discovery {

using reader::Op;
using reader::ReconnectKind;

std::string slotCaption(int slot) { return std::to_string(slot) + " : "; }

std::string inventoryUid(const std::string& answer) {
  // Bytes 2 to 9 of the data (characters 9 to 24) hold the UID least significant byte
  // first; the box shows it as it is printed on the tag.
  std::string uid;
  for (int position = 23; position >= 9; position -= 2) uid += mid(answer, position, 2);
  return uid;
}

InventoryCrc inventoryCrc(const std::string& answer) {
  const long n = hexLength(answer);
  return {crc16Text(mid(answer, 5, n * 2 - 6)), mid(answer, n * 2 - 1, 4)};
}

std::string cascadeField(const std::string& answer) { return mid(answer, 5, 10); }

std::string uidPart(const std::string& answer) {
  return mid(answer, 5, 2) == "88" ? mid(answer, 7, 6) : mid(answer, 7, 8);
}

bool reqbAnswersTag(const std::string& answer) {
  return startsWith(answer, "80") && endsWith(answer, "00") && answer.size() > 10;
}

std::string answerBody(const std::string& answer) {
  return mid(answer, 5, static_cast<long>(answer.size()) - 10);
}

std::string slotMarkerFrame(int slot) { return reader::hexPadWidth7(slot * 16 + 6, 2); }

std::string slotMarkerTitle(int slot) { return text::kSlotMarkerTitle + std::to_string(slot) + ")"; }

reader::Answer Probes::call(Op op, const std::string& request, ReconnectKind kind, Retry retry) {
  host_.yield();
  reader::Answer a = reader::callOnce(driver_, op, request);
  if (a.status == reader::kStatusNoBoard) {
    reader::reconnectBoard(driver_, kind);
    if (retry == Retry::Repeat) a = reader::callOnce(driver_, op, request);
  }
  host_.yield();
  return a;
}

std::string Probes::titled(bool logIt, const std::string& title, Op op, const std::string& request,
                           ReconnectKind kind, Retry retry, reader::Answer* status) {
  const reader::Answer a = call(op, request, kind, retry);
  host_.showRequest(request);
  const std::string answer = host_.showAnswer(a.text);
  if (logIt) host_.trace().titled(title, reader::logWord(op), request, answer);
  if (status) *status = {a.status, answer};
  return answer;
}

std::string Probes::chipCommand(bool logIt, const std::string& title, const std::string& frame,
                                std::optional<ReconnectKind> kind) {
  reader::Answer a;
  if (kind) {
    a = call(Op::KQCmd, "01" + frame, *kind, Retry::Repeat);
  } else {
    host_.yield();
    a = reader::callOnce(driver_, Op::KQCmd, "01" + frame);
    host_.yield();
  }
  host_.showRequest("01 " + frame);
  const std::string answer = host_.showAnswer(a.text);
  if (logIt) host_.trace().titledChipCommand(title, frame, answer);
  return answer;
}

void Probes::skipConfiguration() {
  host_.showRequest("");
  host_.showAnswer("");
}

void Probes::rfOffAutoDetect() {
  titled(true, text::kRfOffTitle, Op::Select, text::kRfOffParameters, ReconnectKind::Plain, Retry::Repeat);
  host_.yield();
}

int Probes::probeISO15693(bool logIt, bool configure) {
  if (configure)
    titled(logIt, text::kIso15693ConfigTitle, Op::Select, text::kIso15693Select, ReconnectKind::Iso15693, Retry::None);
  else
    skipConfiguration();

  reader::Answer a;
  const std::string answer =
      titled(logIt, text::kInventoryTitle, Op::SendReceive, text::kInventoryFrame, ReconnectKind::Iso15693,
             Retry::Repeat, &a);
  if (!a.ok() || !startsWith(answer, "80")) {
    host_.setResultBox(ResultBox::Iso15693Tags, "");
    return kNoTag;
  }
  const long n = hexLength(answer);
  if (mid(answer, 2 * (n + 1) + 1, 2) == "00") {
    host_.setResultBox(ResultBox::Iso15693Tags, text::kUidPrefix + inventoryUid(answer));
    return kTagFound;
  }
  // The chip marked the reception; the tag's own CRC says whether the frame holds.
  const InventoryCrc crc = inventoryCrc(answer);
  if (crc.computed == crc.received) {
    host_.setResultBox(ResultBox::Iso15693Tags, text::kUidPrefix + inventoryUid(answer));
    if (logIt) host_.trace().appendRaw(std::string("  ") + text::kCrcOk);
    return kTagFound;
  }
  host_.setResultBox(ResultBox::Iso15693Tags, "");
  if (logIt) host_.trace().appendRaw(std::string("  ") + text::kCrcBadPrefix + crc.computed + ")");
  return kBadAnswer;
}

int Probes::probeISO14443A(bool logIt, bool configure) {
  if (options_.radioOffBefore14443A) rfOffAutoDetect();
  if (configure) {
    titled(logIt, text::kIso14443AConfigTitle, Op::Select, text::kIso14443ASelect, ReconnectKind::Iso14443A,
           Retry::Repeat);
    chipCommand(logIt, text::kTimerTitle, chip::kTimerConfiguration);
    chipCommand(logIt, text::kGainTitle, chip::iso14443AModulationGainFrame(glob::state().iso14443AModulationGain));
    chipCommand(logIt, text::kToleranceTitle, chip::kCodecConfiguration14443A);
  } else {
    skipConfiguration();
  }
  host_.setResultBox(ResultBox::Iso14443ATags, "");

  const auto send = [&](const char* title, const std::string& frame) {
    return titled(logIt, title, Op::SendReceive, frame, ReconnectKind::Iso14443A, Retry::Repeat);
  };
  if (!startsWith(send(text::kReqaTitle, text::kReqaFrame), "80")) return kNoTag;
  for (const CascadeLevel& level : kCascadeLevels) {
    const std::string anticollision = send(level.anticollisionTitle, level.anticollisionFrame);
    if (!startsWith(anticollision, "80")) return kNoTag;
    const std::string field = cascadeField(anticollision);
    host_.setResultBox(ResultBox::Iso14443ATags, host_.resultBox(ResultBox::Iso14443ATags) + uidPart(anticollision));
    const std::string select =
        std::string(level.selectCode) + (level.selectCarriesField ? field : std::string()) + "28";
    if (!startsWith(send(level.selectTitle, select), "80")) return kNoTag;
    if (!startsWith(field, "88")) break;  // the UID is complete at this level
  }
  return kTagFound;
}

void Probes::configure14443B(bool logIt) {
  titled(logIt, text::kIso14443BConfigTitle, Op::Select, text::kIso14443BSelect, ReconnectKind::Iso14443BTools,
         Retry::Repeat);
  // The gain write goes through KQCmd, but its repeat after a reconnect has always gone
  // through Select with the same text; boards answer that with an error and no harm.
  const std::string request = std::string("01") + chip::kModulationGain30;
  host_.yield();
  reader::Answer a = reader::callOnce(driver_, Op::KQCmd, request);
  if (a.status == reader::kStatusNoBoard) {
    reader::reconnectBoard(driver_, ReconnectKind::Iso14443BTools);
    a = reader::callOnce(driver_, Op::Select, request);
  }
  host_.yield();
  host_.showRequest(std::string("01 ") + chip::kModulationGain30);
  const std::string answer = host_.showAnswer(a.text);
  if (logIt) host_.trace().titledChipCommand(text::kDemoGainTitle, chip::kModulationGain30, answer);
}

int Probes::probeISO14443B(bool logIt, bool configure) {
  if (configure) configure14443B(logIt);
  else skipConfiguration();
  const std::string answer =
      titled(logIt, text::kReqbTitle, Op::SendReceive, text::kReqbFrame, ReconnectKind::Iso14443BTools, Retry::Repeat);
  if (reqbAnswersTag(answer)) {
    host_.setResultBox(ResultBox::Iso14443BReqb, answerBody(answer));
    return kTagFound;
  }
  host_.setResultBox(ResultBox::Iso14443BReqb, "");
  return kNoTag;
}

void Probes::resetSlots() {
  for (int slot = 1; slot <= kSlotCount; ++slot) host_.setSlotBox(slot, left(host_.slotBox(slot), 4));
}

int Probes::probeISO14443B_PDYxx(bool logIt, bool configure) {
  if (options_.resetSlotsAtStart) resetSlots();
  if (configure) configure14443B(logIt);
  else skipConfiguration();
  // Whatever the initiate brings, every slot is asked: a silent initiate may hide tags
  // that answer in their slot.
  titled(logIt, text::kInitiateTitle, Op::SendReceive, text::kInitiateFrame, ReconnectKind::Iso14443BTools,
         Retry::Repeat);
  int count = 0;
  for (int slot = 1; slot <= kSlotCount; ++slot) {
    const std::string answer = titled(logIt, slotMarkerTitle(slot), Op::SendReceive, slotMarkerFrame(slot),
                                      ReconnectKind::Iso14443BTools, Retry::Repeat);
    const std::string number = left(host_.slotBox(slot), 4);
    if (startsWith(answer, "80") && endsWith(answer, "00")) {
      host_.setSlotBox(slot, number + text::kChipIdPrefix + mid(answer, 5, 2));
      ++count;
    } else {
      host_.setSlotBox(slot, number);
    }
  }
  return count;
}

int Probes::probeFelica(bool logIt, bool configure) {
  if (configure) {
    titled(logIt, text::kFelicaConfigTitle, Op::Select, text::kFelicaSelect, ReconnectKind::Iso18092, Retry::Repeat);
    chipCommand(logIt, text::kIndexModGainTitle, chip::kModulationGain50, ReconnectKind::Iso18092);
    chipCommand(logIt, text::kAutoFDetTitle, chip::kCodecConfiguration18092, ReconnectKind::Iso18092);
  } else {
    skipConfiguration();
  }
  reader::Answer a;
  const std::string answer =
      titled(logIt, text::kReqcTitle, Op::SendReceive, text::kReqcFrame, ReconnectKind::Iso18092, Retry::Repeat, &a);
  if (a.ok() && startsWith(answer, "80") && answer.size() > 10) {
    host_.setResultBox(ResultBox::FelicaTags, answerBody(answer));
    return kTagFound;
  }
  host_.setResultBox(ResultBox::FelicaTags, "");
  return kNoTag;
}

int Probes::probe(int index, bool logIt, bool configure) {
  switch (index) {
    case kIso15693Index: return probeISO15693(logIt, configure);
    case kIso14443AIndex: return probeISO14443A(logIt, configure);
    case kIso14443BIndex: return probeISO14443B(logIt, configure);
    case kPdyxxIndex: return probeISO14443B_PDYxx(logIt, configure);
    case kFelicaIndex: return probeFelica(logIt, configure);
    default: return kNoTag;
  }
}

}  // namespace discovery
