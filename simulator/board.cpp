#include "simulator/board.h"

#include "simulator/control.h"
#include "simulator/tags/iso15693.h"

namespace sim {

namespace {

std::optional<hex::Bytes> requestBytes(const char* text) {
  return hex::toBytes(hex::withoutBlanks(text ? text : ""));
}

// What the controller answers for the operations it carries out itself.
std::string done() { return answerText(Result::Ok); }

}  // namespace

BoardApi& board() {
  static Board instance(defaultFieldPath());
  return instance;
}

std::int32_t Board::locked(const std::function<std::int32_t()>& body) {
  std::lock_guard lock(mutex_);
  try {
    refresh();
    return body();
  } catch (const std::exception& e) {
    lastError_ = std::string("simulated board: ") + e.what();
    return kStatusFailed;
  }
}

// An unplugged board, or one whose link is closed, answers 5 whatever the overrides say:
// an override stands for an answer of the board, and a board that cannot be reached gives
// none. An entry with status 5 makes a present board look lost instead.
std::int32_t Board::chipOperation(const char* op, const char* request, char* answer,
                                  const std::function<std::string()>& body) {
  writeAnswer(answer, "");
  return locked([&] {
    if (!present() || !linkOpen_) return kStatusNoBoard;
    if (auto given = takeOverride(field_.contents().answers, op, request)) {
      writeAnswer(answer, given->answer);
      return given->status;
    }
    writeAnswer(answer, body());
    return kStatusOk;
  });
}

// The first call reads the field file and powers the board on; later calls only look
// whether the file changed.
void Board::refresh() {
  if (!started_) {
    started_ = true;
    lastError_ = field_.loadFile(initialPath_);
    powerOn();
    return;
  }
  const bool wasPresent = present();
  std::string error;
  if (field_.reloadIfChanged(error)) afterLoad(wasPresent, std::move(error));
}

void Board::afterLoad(bool wasPresent, std::string error) {
  lastError_ = std::move(error);
  changePresence(wasPresent);
}

void Board::changePresence(bool wasPresent) {
  if (wasPresent && !present())
    linkOpen_ = false;  // unplugged: the link is gone with the board
  else if (!wasPresent && present())
    chip_.powerOn(field_.contents());  // plugged in again: power is back, the link waits for USBconnect
}

void Board::powerOn() {
  chip_.powerOn(field_.contents());
  linkOpen_ = present();
}

std::string Board::chipRequest(std::uint8_t command, const char* text) {
  const auto bytes = requestBytes(text);
  if (!bytes || bytes->size() > 0xFF) return answerText(Result::InvalidLength);
  hex::Bytes frame;
  frame.reserve(2 + bytes->size());
  frame.push_back(command);
  frame.push_back(static_cast<std::uint8_t>(bytes->size()));
  frame.insert(frame.end(), bytes->begin(), bytes->end());
  return chip_.execute(frame, field_.contents());
}

// An overridden connect leaves the link as it was: a status 0 that opens nothing lets a
// test play a board that says yes and still does not answer.
std::int32_t Board::usbConnect() {
  return locked([&] {
    if (!present()) return kStatusNoBoard;
    if (auto given = takeOverride(field_.contents().answers, "TL42RQDLL_USBconnect", nullptr)) return given->status;
    linkOpen_ = true;
    return kStatusOk;
  });
}

std::int32_t Board::usbHandleCheck() {
  return locked([&] {
    if (!present() || !linkOpen_) return kStatusNoBoard;
    if (auto given = takeOverride(field_.contents().answers, "TL42RQDLL_USBhandlecheck", nullptr))
      return given->status;
    return kStatusOk;
  });
}

// The library's own revision: it needs no board, so neither does its override.
std::int32_t Board::dllRevision(char* answer) {
  writeAnswer(answer, "");
  return locked([&] {
    if (auto given = takeOverride(field_.contents().answers, "TL42RQDll_GetDLLrev", nullptr)) {
      writeAnswer(answer, given->answer);
      return given->status;
    }
    writeAnswer(answer, field_.contents().board.dllRevision);
    return kStatusOk;
  });
}

std::int32_t Board::mcuRevision(char* answer) {
  return chipOperation("TL42RQDLL_getMCUrev", answer, [&] { return answerText(Result::Ok, field_.contents().board.mcuRevision); });
}

std::int32_t Board::idn(char* answer) {
  return chipOperation("TL42RQDll_Idn", answer, [&] { return chip_.execute({0x01, 0x00}, field_.contents()); });
}

std::int32_t Board::echo(char* answer) {
  return chipOperation("TL42RQDll_Echo", answer, [&] { return chip_.execute({0x55}, field_.contents()); });
}

std::int32_t Board::select(const char* parameters, char* answer) {
  return chipOperation("TL42RQDll_Select", parameters, answer, [&] { return chipRequest(0x02, parameters); });
}

std::int32_t Board::sendReceive(const char* frame, char* answer) {
  return chipOperation("TL42RQDll_SendReceive", frame, answer, [&] { return chipRequest(0x04, frame); });
}

// The mode field "01" hands the rest to the chip as it stands. "02" marks the controller's
// own ISO 15693 anticollision; the controller has no commands of its own yet, so it too
// goes to the chip.
std::int32_t Board::kqCmd(const char* frame, char* answer) {
  return chipOperation("TL42RQDll_KQCmd", frame, answer, [&] {
    const std::string text = hex::withoutBlanks(frame ? frame : "");
    const std::string_view mode = std::string_view(text).substr(0, 2);
    if (mode != "01" && mode != "02") return answerText(Result::InvalidLength);
    const auto bytes = hex::toBytes(std::string_view(text).substr(2));
    if (!bytes) return answerText(Result::InvalidLength);
    // Mode 02 addresses the board's controller rather than the chip: its ISO 15693
    // anticollision (A0) runs the slot sequence itself and answers the tags it found.
    if (mode == "02") return iso15693ControllerCommand(*bytes, chip_.protocol(), field_.contents());
    return chip_.execute(*bytes, field_.contents());
  });
}

std::int32_t Board::fieldOff(char* answer) {
  return chipOperation("TL42RQDll_FieldOff", answer, [&] {
    chip_.fieldOff(field_.contents());
    return done();
  });
}

// The SPI reset sequence puts the chip back to its power-on state; the field stays.
std::int32_t Board::resetSpi(char* answer) {
  return chipOperation("TL42RQDll_ResetSPI", answer, [&] {
    chip_.powerOn(field_.contents());
    return done();
  });
}

std::int32_t Board::irqPulse(char* answer) { return chipOperation("TL42RQDll_SendIRQPulse", answer, done); }

std::int32_t Board::nssPulse(char* answer) { return chipOperation("TL42RQDll_SendNSSPulse", answer, done); }

// A polling read finds the chip with nothing pending: the chip answers every command at
// once, so no answer ever waits to be fetched.
std::int32_t Board::pollingReading(char* answer) { return chipOperation("TL42RQDll_Polling_Reading", answer, done); }

// "00", length 01, and the interface the pin selects: 0, 1 or 2.
std::int32_t Board::interfacePinState(char* answer) {
  return chipOperation("TL42RQDLL_getInterfacePinState", answer, [&] {
    return answerText(Result::Ok, {static_cast<std::uint8_t>(field_.contents().board.interfacePin)});
  });
}

}  // namespace sim
