// Arbitrary memory text through the NDEF decoder, and arbitrary answers through the ISO
// 14443-A panel's cuts (the answer analysis, the TOPAZ boxes, the memory rows and the NDEF
// block text). The decoder gets the input twice: as it stands, and as hexadecimal text of
// its bytes, so that the fuzzer reaches deep into records and vCards; the decoder must
// neither read outside the text nor run long on any declared length.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "iso14443a/Iso14443AFrames.h"
#include "iso14443a/NdefDecoder.h"

namespace {

std::string hexOf(const std::uint8_t* data, std::size_t size) {
  static const char* digits = "0123456789ABCDEF";
  // Behind a capability container, so that every input is a memory the decoder walks.
  std::string out = "E1100600";
  for (std::size_t i = 0; i < size; ++i) {
    out += digits[data[i] >> 4];
    out += digits[data[i] & 0x0F];
  }
  return out;
}

void consume(const std::string& s) {
  // Touch every character so that a bad string would show under the sanitizers.
  volatile char sink = 0;
  for (char c : s) sink = static_cast<char>(sink ^ c);
  (void)sink;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view raw(reinterpret_cast<const char*>(data), size);

  int events = 0;
  ndef::Events e;
  e.recordDone = [&](const std::string& t) { consume(t), ++events; };
  e.urlFound = [&](const std::string& t) { consume(t), ++events; };
  e.yield = [&] { ++events; };
  consume(ndef::decodeNdefMessage(raw, e).message);
  const ndef::Result r = ndef::decodeNdefMessage(hexOf(data, size), e);
  consume(r.message);
  consume(r.link);
  if (r.records > ndef::kMaxRecords) __builtin_trap();

  const iso14443a::Analysis a = iso14443a::analyseAnswer(raw);
  for (const std::string& f : a.fields) consume(f);
  for (const std::string& f : iso14443a::topazAnalysis(raw)) consume(f);
  const iso14443a::RidBoxes boxes = iso14443a::ridBoxes(raw);
  consume(boxes.hr0 + boxes.hr1 + boxes.uid);
  for (const std::string& row : iso14443a::readRows(raw, 4)) consume(row);
  consume(iso14443a::ndefBlockText(raw));
  consume(iso14443a::topazReadRow(raw));
  consume(iso14443a::uidPartOf(raw) + iso14443a::uidSegmentOf(raw));
  return 0;
}
