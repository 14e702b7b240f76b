#include "export/Capture.h"

#include <array>
#include <optional>

#include "common/chipframe.h"
#include "common/hex.h"

namespace capture {

namespace {

// What the chip appends behind a tag's frame in an answer with code 80: ISO 14443-A gets
// its status byte and the collision byte and bit; the other protocols one result byte.
struct AirRow {
  std::uint8_t protocol;
  std::uint32_t interfaceId;
  std::size_t tailBytes;
  bool lengthByteAdded;  // FeliCa: the chip puts the length byte in front of the frame
};

constexpr std::array<AirRow, 4> kAir{{
    {kIso15693Code, kOtherInterface, 1, false},
    {kIso14443ACode, kIso14443Interface, 3, false},
    {kIso14443BCode, kIso14443Interface, 1, false},
    {kFelicaCode, kOtherInterface, 1, true},
}};

const AirRow* airOf(std::uint8_t protocol) {
  for (const AirRow& row : kAir)
    if (row.protocol == protocol) return &row;
  return nullptr;
}

// The ISO 14443-A transmission flag, the last byte of a Send Receive frame.
constexpr std::uint8_t kFlagBits = 0x0F;
constexpr std::uint8_t kFlagAppendCrc = 0x20;
// Bit 0 of parameter byte 0 of the other reader protocols.
constexpr std::uint8_t kParameterAppendCrc = 0x01;
// The ISO 14443-A status byte of the tail, and the result byte of the others.
constexpr std::uint8_t kAStatusParity = 0x10;
constexpr std::uint8_t kAStatusCrc = 0x20;
constexpr std::uint8_t kAStatusCollision = 0x80;
constexpr std::uint8_t kResultCollision = 0x01;
constexpr std::uint8_t kResultCrc = 0x02;

void put16be(Bytes& b, std::size_t v) {
  const std::size_t n = v > 0xFFFF ? 0xFFFF : v;
  b.push_back(static_cast<std::uint8_t>(n >> 8));
  b.push_back(static_cast<std::uint8_t>(n));
}

std::optional<std::uint8_t> byteAt(const std::string& text, std::size_t index) {
  if (text.size() < 2 * index + 2) return std::nullopt;
  const auto b = hex::toBytes(std::string_view(text).substr(2 * index, 2));
  if (!b) return std::nullopt;
  return (*b)[0];
}

std::string validBits(int bits) { return std::to_string(bits) + " valid bits in the last byte"; }

std::string aStatusWords(std::uint8_t status) {
  std::string w;
  auto add = [&w](const char* s) { w += w.empty() ? s : std::string(", ") + s; };
  if (status & kAStatusCollision) add("collision");
  if (status & kAStatusCrc) add("CRC error");
  if (status & kAStatusParity) add("parity error");
  return w;
}

std::string resultWords(std::uint8_t result) {
  std::string w;
  if (result & kResultCollision) w = "collision";
  if (result & kResultCrc) w += w.empty() ? "CRC error" : ", CRC error";
  return w;
}

}  // namespace

Bytes iso14443Packet(Event e, const Bytes& frame) {
  Bytes b{0x00, static_cast<std::uint8_t>(e)};
  put16be(b, frame.size());
  b.insert(b.end(), frame.begin(), frame.end());
  return b;
}

Bytes otherPacket(Event e, std::uint8_t protocol, std::uint8_t operation, std::uint8_t status, std::uint8_t flags,
                  const Bytes& data) {
  Bytes b{0x00, static_cast<std::uint8_t>(e), protocol, operation, status, flags};
  put16be(b, data.size());
  b.insert(b.end(), data.begin(), data.end());
  return b;
}

void Converter::push(std::vector<Packet>& out, std::uint32_t interfaceId, Bytes data, std::string comment) {
  const std::int64_t t = nowUs_ > lastUs_ ? nowUs_ : lastUs_ + 1;
  lastUs_ = t;
  out.push_back(Packet{interfaceId, t, std::move(data), std::move(comment)});
}

std::vector<Packet> Converter::packets(const reader::ExchangeRecord& r) {
  nowUs_ = r.timeUs;
  std::vector<Packet> out;
  const bool answered = r.status == reader::kStatusOk;
  switch (r.op) {
    case reader::Op::Select:
      if (answered) {
        select(r, r.request, out);
        return out;
      }
      break;
    case reader::Op::FieldOff:
      if (answered) {
        fieldOff(out);
        return out;
      }
      break;
    case reader::Op::SendReceive:
      if (answered && airOf(protocol_)) {
        sendReceive(r, r.request, out);
        return out;
      }
      break;
    case reader::Op::KQCmd: {
      // "01" or "02", then code, length and data of a chip frame.
      const std::string frame = r.request.size() >= 2 ? r.request.substr(2) : std::string();
      const auto code = byteAt(frame, 0);
      if (answered && code == chipframe::kProtocolSelect && frame.size() >= 4) {
        select(r, frame.substr(4), out);
        return out;
      }
      if (answered && code == chipframe::kSendRecv && frame.size() >= 4 && airOf(protocol_)) {
        sendReceive(r, frame.substr(4), out);
        return out;
      }
      break;
    }
    default:
      break;
  }
  driverCall(r, out);
  return out;
}

// A successful Protocol Select turns the field on in the chosen protocol, or off.
void Converter::select(const reader::ExchangeRecord& r, const std::string& selectData, std::vector<Packet>& out) {
  const auto protocol = byteAt(selectData, 0);
  if (!protocol || r.answer.compare(0, 2, "00") != 0) {
    driverCall(r, out);
    return;
  }
  if (*protocol == kFieldOffCode) {
    fieldOff(out);
    return;
  }
  const AirRow* air = airOf(*protocol);
  if (!air) {
    // A card protocol: the chip listens, the reader side of the field is not ours.
    driverCall(r, out);
    protocol_ = *protocol;
    parameter0_ = 0;
    return;
  }
  protocol_ = *protocol;
  parameter0_ = byteAt(selectData, 1).value_or(0);
  if (air->interfaceId == kIso14443Interface)
    push(out, kIso14443Interface, iso14443Packet(Event::FieldOn, {}));
  else
    push(out, kOtherInterface, otherPacket(Event::FieldOn, protocol_, 0xFF, 0, 0, {}));
}

void Converter::fieldOff(std::vector<Packet>& out) {
  const AirRow* air = airOf(protocol_);
  if (air && air->interfaceId == kIso14443Interface)
    push(out, kIso14443Interface, iso14443Packet(Event::FieldOff, {}));
  else
    push(out, kOtherInterface, otherPacket(Event::FieldOff, air ? protocol_ : kFieldOffCode, 0xFF, 0, 0, {}));
  protocol_ = kFieldOffCode;
  parameter0_ = 0;
}

void Converter::sendReceive(const reader::ExchangeRecord& r, const std::string& frameText, std::vector<Packet>& out) {
  const AirRow& air = *airOf(protocol_);
  Bytes request = hex::toBytesLenient(frameText);
  bool crcAppended = (parameter0_ & kParameterAppendCrc) != 0;
  std::string requestComment;
  if (air.protocol == kIso14443ACode && !request.empty()) {
    const std::uint8_t flag = request.back();
    request.pop_back();
    crcAppended = (flag & kFlagAppendCrc) != 0;
    const int bits = flag & kFlagBits;
    if (bits >= 1 && bits <= 7) requestComment = validBits(bits);
  }
  if (air.lengthByteAdded) request.insert(request.begin(), static_cast<std::uint8_t>(request.size() + 1));

  auto packet = [&](Event e, const Bytes& frame) {
    return air.interfaceId == kIso14443Interface ? iso14443Packet(e, frame)
                                                 : otherPacket(e, air.protocol, 0xFF, 0, 0, frame);
  };
  const Event sent = crcAppended ? Event::ReaderToCardNoCrc : Event::ReaderToCard;

  const std::string code = r.answer.substr(0, 2);
  if (code == "80") {
    const Bytes data = hex::toBytesLenient(r.answer.substr(r.answer.size() >= 4 ? 4 : r.answer.size()));
    push(out, air.interfaceId, packet(sent, request), requestComment);
    if (data.size() < air.tailBytes) return;
    const Bytes frame(data.begin(), data.end() - static_cast<std::ptrdiff_t>(air.tailBytes));
    const std::uint8_t tail0 = data[data.size() - air.tailBytes];
    std::string comment = air.protocol == kIso14443ACode ? aStatusWords(tail0) : resultWords(tail0);
    if (!comment.empty()) comment = "chip reports " + comment;
    push(out, air.interfaceId, packet(Event::CardToReader, frame), comment);
    return;
  }
  if (code == "90") {
    // A short frame: characters 3 to 4 are its valid bits, 5 to 6 the frame.
    push(out, air.interfaceId, packet(sent, request), requestComment);
    const auto bits = byteAt(r.answer, 1);
    const auto reply = byteAt(r.answer, 2);
    if (!reply) return;
    const int n = bits && *bits >= 1 && *bits <= 8 ? *bits : 8;
    push(out, air.interfaceId, packet(Event::CardToReader, Bytes{*reply}), n < 8 ? validBits(n) : std::string());
    return;
  }
  // No tag frame came back: the chip's result says why.
  std::string why = "no answer, chip result " + (code.empty() ? std::string("empty") : code);
  push(out, air.interfaceId, packet(sent, request), requestComment.empty() ? why : requestComment + "; " + why);
}

void Converter::driverCall(const reader::ExchangeRecord& r, std::vector<Packet>& out) {
  const auto operation = static_cast<std::uint8_t>(r.op);
  auto body = [](const std::string& text, std::uint8_t& flags) {
    const std::string compact = hex::withoutBlanks(text);
    if (auto b = hex::toBytes(compact)) return *b;
    flags = kFlagText;
    return Bytes(text.begin(), text.end());
  };
  std::uint8_t callFlags = 0;
  std::uint8_t returnFlags = 0;
  const Bytes request = body(r.request, callFlags);
  const Bytes answer = body(r.answer, returnFlags);
  push(out, kOtherInterface, otherPacket(Event::DriverCall, 0, operation, 0, callFlags, request));
  push(out, kOtherInterface,
       otherPacket(Event::DriverReturn, 0, operation, static_cast<std::uint8_t>(r.status), returnFlags, answer));
}

Bytes fileHeader() {
  Bytes b = pcapng::sectionHeader("TL42RQ Development Software");
  const Bytes a = pcapng::interfaceDescription(pcapng::kLinkTypeIso14443, "TL42RQ ISO 14443");
  const Bytes o = pcapng::interfaceDescription(pcapng::kLinkTypeUser0, "TL42RQ chip and other protocols");
  b.insert(b.end(), a.begin(), a.end());
  b.insert(b.end(), o.begin(), o.end());
  return b;
}

Bytes encode(const Packet& p) { return pcapng::enhancedPacket(p.interfaceId, p.timeUs, p.data, p.comment); }

Bytes pcapngFile(const std::deque<reader::ExchangeRecord>& records) {
  Bytes file = fileHeader();
  Converter c;
  for (const reader::ExchangeRecord& r : records)
    for (const Packet& p : c.packets(r)) {
      const Bytes b = encode(p);
      file.insert(file.end(), b.begin(), b.end());
    }
  return file;
}

StreamWriter::StreamWriter(Sink sink) : sink_(std::move(sink)) { failed_ = !sink_(fileHeader()); }

void StreamWriter::exchanged(const reader::ExchangeRecord& r) {
  if (failed_) return;
  reader::ExchangeRecord stamped = r;
  if (stamped.timeUs <= lastUs_) stamped.timeUs = lastUs_ + 1;
  lastUs_ = stamped.timeUs;
  Bytes out;
  for (const Packet& p : converter_.packets(stamped)) {
    const Bytes b = encode(p);
    out.insert(out.end(), b.begin(), b.end());
  }
  if (!out.empty() && !sink_(out)) failed_ = true;
}

}  // namespace capture
