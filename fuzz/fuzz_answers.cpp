// Answers come from a library the program does not control: any text (any length, no
// NUL, no hex) must go through the exchange, the detection's readers, the CRC and hex
// routines and the console's analyser without a crash. The first input byte picks the
// status and the command the answer belongs to; the rest is the answer as the library
// left it in the buffer.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "common/crc.h"
#include "common/hex.h"
#include "console/ResponseAnalyser.h"
#include "reader/Drivers.h"
#include "reader/Exchange.h"
#include "reader/Reconnect.h"
#include "reader/TraceLog.h"
#include "shell/DetectionParse.h"

namespace {

constexpr const char* kCommands[] = {"01", "02", "03", "04", "05", "06", "07", "08",
                                     "09", "0A", "0B", "0D", "0E", "0F", "55", "ZZ"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::uint8_t pick = data[0];
  const std::string raw(reinterpret_cast<const char*>(data + 1), size - 1);

  // Through the driver boundary: the library writes these bytes, whatever they are.
  reader::FakeDriver fake;
  fake.setRawAnswer(raw);
  fake.queue(reader::Op::Idn, pick & 1 ? 5 : 0, "");
  const reader::Answer a = reader::exchange(fake, reader::Op::Idn, {}, reader::reconnectWith(fake, reader::ReconnectKind::Plain));
  if (a.text.size() >= reader::kGuardedAnswerSize) std::abort();
  if (a.text.find('\0') != std::string::npos) std::abort();
  reader::TraceLog log;
  log.untitled(reader::logWord(reader::Op::Idn), a.text);

  // The board detection's readers.
  (void)shell::dllRevisionNumber(a.text);
  const std::string mcu = shell::mcuRevisionText(a.text);
  if (mcu.size() > 99 * 4) std::abort();  // at most 99 elements of up to three digits and a point
  const std::string name = shell::chipNameOfIdn(a.text);
  if (name.size() > a.text.size() / 2) std::abort();

  // Hex and CRC routines on answer text.
  (void)crc16Text(a.text);
  (void)hex::toBytes(a.text);
  (void)hex::toBytesLenient(a.text);
  (void)hex::toNumber(a.text);

  // The console's analyser, for each of its panels.
  const std::int32_t status = (pick >> 1) & 1 ? 0 : ((pick >> 2) & 7);
  const char* command = kCommands[(pick >> 4) & 15];
  for (console::SendPanel panel : {console::SendPanel::Generic, console::SendPanel::ProtocolSelect,
                                   console::SendPanel::Idle, console::SendPanel::Filter}) {
    const console::Explanation e = console::analyseAnswer(panel, command, status, a.text);
    if (e.lines.size() > console::explainBoxes(panel)) std::abort();
  }
  (void)console::answerLength(a.text);
  (void)console::answerByte(a.text, pick);
  return 0;
}
