// The NDEF decoder of the ISO 14443-A panel: it walks the memory of a Type 2 style tag,
// given as hexadecimal text from its capability container on, with one forward cursor,
// and writes what it recognises as text. It is a display aid, not a validator: it trusts
// every length, never rewinds, and shows no error. Where it differs from the NFC Forum
// rules (the one skipped lock-control TLV, the record count that is set anew for each
// record, the "news://" prefix, inner records walked as records), it does so on purpose.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace ndef {

// The walk stops after this many records.
inline constexpr int kMaxRecords = 20;

// Names of the TLV types; the decoder compares these names, nothing displays them.
inline constexpr const char* kTlvPadding = "Used to Padding";
inline constexpr const char* kTlvLockControl = "Defines details of the lock bits";
inline constexpr const char* kTlvMemoryControl = "Identify reserved memory areas";
inline constexpr const char* kTlvNdefMessage = "Contains NDEF message";
inline constexpr const char* kTlvProprietary = "Tag proprietary information";
inline constexpr const char* kTlvTerminator = "Last TLV block in the data area";
inline constexpr const char* kTlvOther = "No Info";
// The name of a TLV type, given as its two hexadecimal digits.
const char* tlvName(std::string_view type);

// The URI prefix of a URI record's identifier code: the NFC Forum URI record type table,
// 01 to 23, with "news://" for 0F; 00 and codes above 23 have none.
const char* uriPrefix(int code);

// What the panel does while the decoder runs: the text of each record goes to the end
// of txtNDEFmessage, a URI shows lblDetectedUrl and lblInternetLink with this caption,
// and the decoder yields to the event loop after reading a type and after each record.
struct Events {
  std::function<void(const std::string& recordText)> recordDone;
  std::function<void(const std::string& link)> urlFound;
  std::function<void()> yield;
};

struct Result {
  std::string message;  // the record texts, one after the other, lines ending in CR LF
  int records = 0;
  bool urlShown = false;
  std::string link;     // the last caption of lblInternetLink
};

// Decodes the memory text: byte n is the two characters at 2n (the first byte is the
// capability container's magic number E1). Reads past the end of the text are made safe
// here: a byte past the end reads as 00 and gives no character, and a walk over bytes
// past the end is taken in one step, so that no declared length, however large, makes
// the decoder read outside the text or run long. The visible result is what walking
// byte by byte would give, since bytes past the end add nothing.
Result decodeNdefMessage(std::string_view memory, const Events& events = {});

}  // namespace ndef
