#include "iso14443a/NdefDecoder.h"

#include <array>
#include <cctype>
#include <cstdint>

namespace ndef {

namespace {

constexpr const char* kCrLf = "\r\n";

struct TlvRow {
  const char* type;
  const char* name;
};
constexpr std::array<TlvRow, 6> kTlvTypes{{
    {"00", kTlvPadding},
    {"01", kTlvLockControl},
    {"02", kTlvMemoryControl},
    {"03", kTlvNdefMessage},
    {"FD", kTlvProprietary},
    {"FE", kTlvTerminator},
}};

// NFC Forum URI Record Type Definition, table 3, by identifier code.
constexpr std::array<const char*, 0x24> kUriPrefixes{{
    "",                            // 00
    "http://www.",                 // 01
    "https://www.",                // 02
    "http://",                     // 03
    "https://",                    // 04
    "tel:",                        // 05
    "mailto:",                     // 06
    "ftp://anonymous:anonymous@",  // 07
    "ftp://ftp.",                  // 08
    "ftps://",                     // 09
    "sftp://",                     // 0A
    "smb://",                      // 0B
    "nfs://",                      // 0C
    "ftp://",                      // 0D
    "dav://",                      // 0E
    "news://",                     // 0F: the table has "news:"; the panel has always shown this
    "telnet://",                   // 10
    "imap:",                       // 11
    "rtsp://",                     // 12
    "urn:",                        // 13
    "pop:",                        // 14
    "sip:",                        // 15
    "sips:",                       // 16
    "tftp:",                       // 17
    "btspp://",                    // 18
    "btl2cap://",                  // 19
    "btgoep://",                   // 1A
    "tcpobex://",                  // 1B
    "irdaobex://",                 // 1C
    "file://",                     // 1D
    "urn:epc:id:",                 // 1E
    "urn:epc:tag:",                // 1F
    "urn:epc:pat:",                // 20
    "urn:epc:raw:",                // 21
    "urn:epc:",                    // 22
    "urn:nfc:",                    // 23
}};

// The record types of the well-known branch, as hexadecimal text of the type bytes.
constexpr const char* kTypeText = "54";            // "T"
constexpr const char* kTypeUri = "55";             // "U"
constexpr const char* kTypeSmartPoster = "5370";   // "Sp"
constexpr const char* kTypeAction = "616374";      // "act"

constexpr std::uint8_t kTnfMask = 0x03;
constexpr std::uint8_t kShortRecord = 0x10;
constexpr int kTnfWellKnown = 1;
constexpr int kTnfMime = 2;
constexpr int kTnfExternal = 3;
constexpr int kLanguageLengthMask = 0x3F;
constexpr int kCapabilityMagic = 0xE1;
constexpr int kTerminator = 0xFE;
constexpr int kCarriageReturn = 0x0D;
constexpr int kLineFeed = 0x0A;

bool startsWith(std::string_view s, std::string_view prefix) { return s.substr(0, prefix.size()) == prefix; }

int digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// The memory text as bytes, with the cursor and the count of bytes left in the TLV.
class Walker {
 public:
  explicit Walker(std::string_view text) : text_(text) {}

  // The two characters of byte n, fewer at the end of the text, none past it.
  std::string_view byteText(long long n) const {
    if (n < 0 || static_cast<unsigned long long>(n) * 2 >= text_.size()) return {};
    return text_.substr(static_cast<std::size_t>(n) * 2, 2);
  }
  bool present(long long n) const { return !byteText(n).empty(); }
  // The value of the byte's leading hexadecimal digits; 0 past the end or for no digit.
  int value(long long n) const {
    int v = 0;
    for (char c : byteText(n)) {
      const int d = digit(c);
      if (d < 0) break;
      v = v * 16 + d;
    }
    return v;
  }
  bool is(long long n, int byte) const { return present(n) && value(n) == byte; }
  // The byte as a character; a byte past the end gives none.
  void appendChar(long long n, std::string& out) const {
    if (present(n)) out += static_cast<char>(value(n));
  }

  long long cursor = 0;
  long long remaining = 0;

  // Consumes the next byte of the record.
  long long next() {
    ++cursor;
    --remaining;
    return cursor;
  }
  // Consumes n bytes and appends them as characters (to one or two texts).
  void takeChars(long long n, std::string& out, std::string* also = nullptr) {
    for (long long k = 0; k < n; ++k) {
      if (!present(cursor + 1)) {
        // Nothing but the end of the text lies ahead: the rest is consumed at once.
        skip(n - k);
        return;
      }
      next();
      appendChar(cursor, out);
      if (also) appendChar(cursor, *also);
    }
  }
  void skip(long long n) {
    if (n <= 0) return;
    cursor += n;
    remaining -= n;
  }
  bool pastEnd() const { return !present(cursor); }

 private:
  std::string_view text_;
};

struct Decoding {
  Walker w;
  const Events& events;
  Result result;
  bool endMark = false;
  std::string record;

  void yield() const {
    if (events.yield) events.yield();
  }
  void showUrl(const std::string& caption) {
    result.urlShown = true;
    result.link = caption;
    if (events.urlFound) events.urlFound(caption);
  }
};

void wellKnown(Decoding& d, const std::string& type, long long payloadLength) {
  Walker& w = d.w;
  if (type == kTypeText) {
    const int languageLength = w.value(w.next()) & kLanguageLengthMask;
    w.skip(languageLength);
    // From the language length up to the payload length minus 2.
    d.w.takeChars(payloadLength - 1 - languageLength, d.record);
  } else if (type == kTypeUri) {
    const std::string prefix = uriPrefix(w.value(w.next()));
    d.record += " " + prefix;
    std::string link = prefix;
    w.takeChars(payloadLength - 1, d.record, &link);
    d.showUrl(link);
  } else if (type == kTypeSmartPoster) {
    // The payload is not skipped: the next records read are the poster's own.
    d.record += std::string("SMART POSTER record : ") + kCrLf;
  } else if (type == kTypeAction) {
    d.record += std::string("ACTION : ") + kCrLf + "type : 'act'" + kCrLf;
    switch (w.value(w.next())) {
      case 0:
        d.record += "- do the action";
        break;
      case 1:
        d.record += "- save the action for later";
        break;
      case 2:
        d.record += "- open the action";
        break;
      default:
        break;
    }
    d.record += kCrLf;
  }
  // The smart poster's inner records ac, Hc, Hr and Hs, and every other type: nothing,
  // and the payload is not skipped, so the walk goes on from the byte after the type.
}

// A vCard: its lines get labels by their first letters; the walk ends with the card.
void vCard(Decoding& d, const std::string& type) {
  Walker& w = d.w;
  std::string begin;
  for (int i = 0; i < 11; ++i) {
    w.next();
    w.appendChar(w.cursor, begin);
  }
  if (begin != "BEGIN:VCARD") return;
  d.record += "type:MIME:" + type + kCrLf + kCrLf;
  w.next();
  std::string line;
  for (;;) {
    if (w.is(w.cursor, kTerminator) || w.remaining <= 0 || w.pastEnd()) {
      // Past the end of the text every byte would be added to a line that never ends:
      // the remaining count would run out with nothing shown.
      d.endMark = true;
      return;
    }
    if (!w.is(w.cursor, kCarriageReturn) && !w.is(w.cursor + 1, kLineFeed)) {
      w.appendChar(w.cursor, line);
      w.next();
      continue;
    }
    // A line end. A quoted-printable soft break keeps the line going; its line feed then
    // joins the line.
    std::string before;
    for (long long i = w.cursor - 7; i < w.cursor; ++i) w.appendChar(i, before);
    if (before == "=0D=0A=") {
      w.next();
      continue;
    }
    if (line.empty()) {
      w.next();
      w.next();
      continue;
    }
    auto label = [&](const char* start, const char* text) {
      if (startsWith(line, start)) d.record += std::string(kCrLf) + text;
    };
    label("N", "NAME : ");
    label("FN", "FORMATED NAME : ");
    label("ORG", "ORGANISTION : ");
    label("TITLE", "TITLE : ");
    if (startsWith(line, "TEL"))
      d.record += std::string(kCrLf) + (line.find("FAX") != std::string::npos ? "FAX : " : "TEL : ");
    label("ADR", "ADDRESS : ");
    label("LABEL", "LABEL : ");
    label("URL", "URL : ");
    label("EMAIL", "EMAIL : ");
    if (!startsWith(line, "ORG"))
      for (char& c : line)
        if (c == ';') c = ' ';
    const std::size_t colon = line.find(':');
    std::string value = colon == std::string::npos ? line : line.substr(colon + 1);
    if (value.find("=0D=0A") != std::string::npos) {
      const std::string softBreak = "=0D=0A=\n";
      for (std::size_t at = value.find(softBreak); at != std::string::npos; at = value.find(softBreak, at + 2))
        value.replace(at, softBreak.size(), "\n\t");
    }
    d.record += value;
    if (startsWith(line, "URL")) d.showUrl(value);
    line.clear();
    w.next();
    w.next();
  }
}

void mime(Decoding& d, long long typeLength, long long payloadLength) {
  Walker& w = d.w;
  std::string type;
  for (long long i = 0; i < typeLength; ++i) {
    w.next();
    if (w.present(w.cursor)) type += static_cast<char>(std::tolower(static_cast<unsigned char>(w.value(w.cursor))));
  }
  d.yield();
  if (startsWith(type, "text/x-vcard")) return vCard(d, type);
  // Every other media type ends the walk the same way; the kinds are named apart all
  // the same, as the panel has always had them.
  const auto showMedia = [&] {
    d.record += "type:MIME:" + type + kCrLf + kCrLf + type + kCrLf;
    w.takeChars(payloadLength, d.record);
    d.endMark = true;
  };
  if (startsWith(type, "application/")) showMedia();
  else if (startsWith(type, "text/")) showMedia();
  else if (startsWith(type, "image/")) showMedia();
  else if (startsWith(type, "audio/")) showMedia();
  else if (startsWith(type, "video/")) showMedia();
  else showMedia();
}

void decodeRecord(Decoding& d, long long tlvLength) {
  Walker& w = d.w;
  ++w.cursor;
  w.remaining = tlvLength - 1;
  const int header = w.value(w.cursor);
  const bool shortRecord = (header & kShortRecord) == kShortRecord;
  const int format = header & kTnfMask;
  if (format == kTnfWellKnown || format == kTnfExternal || format == kTnfMime) {
    const long long typeLength = w.value(w.next());
    long long payloadLength = 0;
    if (shortRecord) {
      payloadLength = w.value(w.next());
    } else {
      for (int i = 0; i < 4; ++i) payloadLength = payloadLength * 256 + w.value(w.next());
    }
    if (format == kTnfMime) {
      mime(d, typeLength, payloadLength);
    } else {
      std::string type;
      for (long long i = 0; i < typeLength; ++i) type += std::string(w.byteText(w.next()));
      d.yield();
      wellKnown(d, type, payloadLength);
    }
  }
  // End of the record.
  ++d.result.records;
  d.result.message += d.record;
  if (d.events.recordDone) d.events.recordDone(d.record);
  if (w.is(w.cursor + 1, kTerminator)) d.endMark = true;
  d.record.clear();
  d.yield();
}

}  // namespace

const char* tlvName(std::string_view type) {
  for (const TlvRow& row : kTlvTypes)
    if (type == row.type) return row.name;
  return kTlvOther;
}

const char* uriPrefix(int code) {
  return code >= 0 && code < static_cast<int>(kUriPrefixes.size()) ? kUriPrefixes[static_cast<std::size_t>(code)] : "";
}

Result decodeNdefMessage(std::string_view memory, const Events& events) {
  Decoding d{Walker(memory), events, {}, false, {}};
  Walker& w = d.w;
  // Capability container: the magic number; version, size and access are not looked at.
  if (!w.is(0, kCapabilityMagic)) return d.result;
  w.cursor = 4;
  std::string name = tlvName(w.byteText(w.cursor));
  // One lock-control TLV is stepped over, and only that one type, once.
  if (name == kTlvLockControl) {
    ++w.cursor;
    w.cursor += w.value(w.cursor);
    ++w.cursor;
    name = tlvName(w.byteText(w.cursor));
  }
  if (name != kTlvNdefMessage) return d.result;
  ++w.cursor;
  long long length = 0;
  if (w.byteText(w.cursor) == "FF") {
    length = w.value(w.cursor + 1) * 256 + w.value(w.cursor + 2);
    w.cursor += 2;
  } else {
    length = w.value(w.cursor);
  }
  w.remaining = length;
  while (w.remaining > 0 && d.result.records < kMaxRecords && !d.endMark) decodeRecord(d, length);
  return d.result;
}

}  // namespace ndef
