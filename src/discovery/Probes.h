// The protocol probes: is there a tag of this protocol in the field? Each one configures
// the chip (when asked), sends the protocol's wake-up frame, judges the answer and writes
// what it found into a result box of the panel that runs it. Both discovery tools run the
// same code; where the tag-detection tool differs, that is an option of ProbeOptions.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "reader/Exchange.h"
#include "reader/Reconnect.h"
#include "reader/ReaderDriver.h"
#include "reader/TraceLog.h"

namespace discovery {

// The probes' result boxes, the same in both tools.
enum class ResultBox {
  Iso15693Tags,   // txtISO15693DetectTags
  Iso14443ATags,  // txtISO14443ADetectTags
  Iso14443BReqb,  // txt_ISO14443B_REQB_result
  FelicaTags,     // txtFelicaDetectTags
};

// The PDYxx probe walks this many slots; its result boxes carry the captions "1 : " to
// "15 : ", of which a probe keeps the first four characters.
inline constexpr int kSlotCount = 15;
std::string slotCaption(int slot);  // "1 : " .. "15 : "

// What a probe needs from the panel that runs it: its request, answer and result boxes,
// its trace, and the turn of the event loop around each call.
class ProbeHost {
 public:
  virtual ~ProbeHost() = default;
  virtual reader::TraceLog& trace() = 0;
  virtual void showRequest(const std::string& text) = 0;
  // Puts the answer into the answer box and gives it back as the box holds it.
  virtual std::string showAnswer(const std::string& text) = 0;
  virtual std::string resultBox(ResultBox box) const = 0;
  virtual void setResultBox(ResultBox box, const std::string& text) = 0;
  // The result box of slot 1 to 15.
  virtual std::string slotBox(int slot) const = 0;
  virtual void setSlotBox(int slot, const std::string& text) = 0;
  virtual void yield() = 0;
};

struct ProbeOptions {
  // The tag-detection tool's PDYxx probe cuts its slot boxes back to their numbers at its
  // start; the auto-detection cycle does that once before its first pass instead.
  bool resetSlotsAtStart = false;
  // The tag-detection tool's ISO 14443-A probe switches the radio off first.
  bool radioOffBefore14443A = false;
};

// The probes' results.
inline constexpr int kNoTag = 0;
inline constexpr int kTagFound = 1;
inline constexpr int kBadAnswer = 99;  // the ISO 15693 probe: something answered, its CRC failed

// Literal texts of the probes, as the trace shows them.
namespace text {
inline constexpr const char* kRfOffTitle = "TL42RQ RF OFF";
inline constexpr const char* kRfOffParameters = "0000";
inline constexpr const char* kIso15693ConfigTitle = "TL42RQ CONFIGURATION : ISO15693 High Datarate One Subcarrier";
inline constexpr const char* kIso15693Select = "010D";
inline constexpr const char* kInventoryFrame = "260100";
inline constexpr const char* kInventoryTitle = "INVENTORY";
inline constexpr const char* kUidPrefix = "UID = ";
inline constexpr const char* kCrcOk = " -> CRC OK";
inline constexpr const char* kCrcBadPrefix = " -> CRC HS (expected=";
inline constexpr const char* kIso14443AConfigTitle = "TL42RQ CONFIGURATION : ISO14443-A protocol";
inline constexpr const char* kIso14443ASelect = "02000180";
inline constexpr const char* kTimerTitle = "TL42RQ CONFIGURATION : ";
inline constexpr const char* kGainTitle = "TL42RQ INCREASE DEMO GAIN : ";
inline constexpr const char* kToleranceTitle = "TL42RQ INCREASE DEC TOLERANCE : ";
inline constexpr const char* kReqaFrame = "2607";
inline constexpr const char* kReqaTitle = "ISO14443-A REQA";
inline constexpr const char* kIso14443BConfigTitle = "TL42RQ CONFIGURATION : ISO14443-B protocol";
inline constexpr const char* kIso14443BSelect = "03010180";
inline constexpr const char* kDemoGainTitle = "TL42RQ CONFIGURATION : DEMO GAIN";
inline constexpr const char* kReqbFrame = "0500F0";
inline constexpr const char* kReqbTitle = "REQB";
inline constexpr const char* kInitiateFrame = "0600";
inline constexpr const char* kInitiateTitle = "INITIATE";
inline constexpr const char* kSlotMarkerTitle = "SLOT MARKER (";
inline constexpr const char* kChipIdPrefix = "Chip ID = ";
inline constexpr const char* kFelicaConfigTitle = "TL42RQ CONFIGURATION : FELICA mode";
inline constexpr const char* kFelicaSelect = "0451";
inline constexpr const char* kIndexModGainTitle = "TL42RQ CONFIGURATION : IndexMod & Gain";
inline constexpr const char* kAutoFDetTitle = "TL42RQ CONFIGURATION : Auto FDet";
inline constexpr const char* kReqcFrame = "00FFFF0000";
inline constexpr const char* kReqcTitle = "REQC";
}  // namespace text

// The frames of the ISO 14443-A activation at one cascade level. Level 3 keeps the level-1
// code 93 and a select without the UID field, as the anticollision command always did.
struct CascadeLevel {
  const char* anticollisionFrame;
  const char* anticollisionTitle;
  const char* selectCode;  // the select frame is this, the level's field, and "28"
  bool selectCarriesField;
  const char* selectTitle;
};
inline constexpr std::array<CascadeLevel, 3> kCascadeLevels{{
    {"932008", "ISO14443-A ANTICOL 1", "9370", true, "ISO14443-A SELECT 1"},
    {"952008", "ISO14443-A ANTICOL 2", "9570", true, "ISO14443-A SELECT 2"},
    {"932008", "ISO14443-A ANTICOL 3", "9370", false, "ISO14443-A SELECT 3"},
}};

// The pure judgements of the answers, as functions of the answer text.
// ISO 15693: the UID from the answer's bytes 2 to 9, most significant byte first.
std::string inventoryUid(const std::string& answer);
// The CRC computed over the tag's frame (characters 5 on, 2N-6 long) and the one received.
struct InventoryCrc {
  std::string computed;
  std::string received;
};
InventoryCrc inventoryCrc(const std::string& answer);
// ISO 14443-A: the five-byte field of an anticollision answer, and the part of the UID it
// reports (behind the cascade tag 88, or from its second byte on: the check byte included).
std::string cascadeField(const std::string& answer);
std::string uidPart(const std::string& answer);
// REQB and REQC: the answer without its header and three tail bytes when it is longer than
// ten characters; nullopt-like empty result when the probe finds no tag.
bool reqbAnswersTag(const std::string& answer);
std::string answerBody(const std::string& answer);  // length - 10 characters from position 5
// The slot marker frame of slot n: one byte, n * 16 + 6.
std::string slotMarkerFrame(int slot);
std::string slotMarkerTitle(int slot);

// The five probes and the radio-off step, on one driver, writing into one host.
class Probes {
 public:
  Probes(reader::ReaderDriver& driver, ProbeHost& host, ProbeOptions options = {})
      : driver_(driver), host_(host), options_(options) {}

  // Each returns the probe's result; `logIt` false writes no trace entry, `configure`
  // false skips the configuration and clears the request and answer boxes instead.
  int probeISO15693(bool logIt, bool configure);
  int probeISO14443A(bool logIt, bool configure);
  int probeISO14443B(bool logIt, bool configure);
  int probeISO14443B_PDYxx(bool logIt, bool configure);
  int probeFelica(bool logIt, bool configure);
  // Switches the field off: Select "0000", always traced, then a yield.
  void rfOffAutoDetect();

  // The probe of a protocol box, index 0 to 4 in the tools' order.
  int probe(int index, bool logIt, bool configure);

 private:
  enum class Retry { None, Repeat };
  // One call with the yields around it; on status 5 the reconnect of `kind` runs and,
  // with Retry::Repeat, the call is made once more.
  reader::Answer call(reader::Op op, const std::string& request, reader::ReconnectKind kind, Retry retry);
  // A titled exchange: the request shown, the call, the answer shown and traced.
  std::string titled(bool logIt, const std::string& title, reader::Op op, const std::string& request,
                     reader::ReconnectKind kind, Retry retry, reader::Answer* status = nullptr);
  // A chip command through KQCmd with the mode field "01"; the trace shows "01 " + frame.
  // The ISO 14443-A configuration writes go out once, without reconnect (each step of it
  // but the select is sent that way); the FeliCa ones follow the common rule of `kind`.
  std::string chipCommand(bool logIt, const std::string& title, const std::string& frame,
                          std::optional<reader::ReconnectKind> kind = std::nullopt);
  void skipConfiguration();
  void configure14443B(bool logIt);
  void resetSlots();

  reader::ReaderDriver& driver_;
  ProbeHost& host_;
  ProbeOptions options_;
};

// The protocol boxes of both tools, index 0 to 4.
inline constexpr std::array<const char*, 5> kProtocolCaptions{
    {"iso15693", "iso14443-A", "iso14443-B", "iso14443-B (PDYxx)", "iso18092"}};
inline constexpr int kIso15693Index = 0;
inline constexpr int kIso14443AIndex = 1;
inline constexpr int kIso14443BIndex = 2;
inline constexpr int kPdyxxIndex = 3;
inline constexpr int kFelicaIndex = 4;

}  // namespace discovery
