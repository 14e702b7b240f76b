#include "simulator/board.h"

#include "common/chipframe.h"
#include "simulator/control.h"
#include "simulator/tags/iso15693.h"

namespace sim {

namespace {

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
  const auto frame = chipframe::commandFrame(command, text);
  if (!frame) return answerText(Result::InvalidLength);
  return chip_.execute(*frame, field_.contents());
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
  return chipOperation("TL42RQDll_Idn", answer,
                       [&] { return chip_.execute(chipframe::idnFrame(), field_.contents()); });
}

std::int32_t Board::echo(char* answer) {
  return chipOperation("TL42RQDll_Echo", answer,
                       [&] { return chip_.execute(chipframe::echoFrame(), field_.contents()); });
}

std::int32_t Board::select(const char* parameters, char* answer) {
  return chipOperation("TL42RQDll_Select", parameters, answer,
                       [&] { return chipRequest(chipframe::kProtocolSelect, parameters); });
}

std::int32_t Board::sendReceive(const char* frame, char* answer) {
  return chipOperation("TL42RQDll_SendReceive", frame, answer,
                       [&] { return chipRequest(chipframe::kSendRecv, frame); });
}

// The mode field "01" hands the rest to the chip as it stands. "02" marks the controller's
// own ISO 15693 anticollision; the controller has no commands of its own yet, so it too
// goes to the chip.
std::int32_t Board::kqCmd(const char* frame, char* answer) {
  return chipOperation("TL42RQDll_KQCmd", frame, answer, [&] {
    const chipframe::KQRequest request = chipframe::kqRequest(frame);
    if (request.mode == chipframe::KQRequest::Mode::Bad) return answerText(Result::InvalidLength);
    // Mode 02 addresses the board's controller rather than the chip: its ISO 15693
    // anticollision (A0) runs the slot sequence itself and answers the tags it found.
    if (request.mode == chipframe::KQRequest::Mode::Controller)
      return iso15693ControllerCommand(request.frame, chip_.protocol(), field_.contents());
    return chip_.execute(request.frame, field_.contents());
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
