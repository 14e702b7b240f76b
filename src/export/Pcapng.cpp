#include "export/Pcapng.h"

namespace pcapng {

namespace {

constexpr std::uint16_t kOptEnd = 0;
constexpr std::uint16_t kOptComment = 1;
constexpr std::uint16_t kShbUserAppl = 4;
constexpr std::uint16_t kIfName = 2;
constexpr std::uint16_t kIfTsresol = 9;

void put16(Bytes& b, std::uint16_t v) {
  b.push_back(static_cast<std::uint8_t>(v));
  b.push_back(static_cast<std::uint8_t>(v >> 8));
}
void put32(Bytes& b, std::uint32_t v) {
  put16(b, static_cast<std::uint16_t>(v));
  put16(b, static_cast<std::uint16_t>(v >> 16));
}
void pad4(Bytes& b) {
  while (b.size() % 4 != 0) b.push_back(0);
}
void option(Bytes& b, std::uint16_t code, const std::uint8_t* value, std::size_t size) {
  put16(b, code);
  put16(b, static_cast<std::uint16_t>(size));
  b.insert(b.end(), value, value + size);
  pad4(b);
}
void option(Bytes& b, std::uint16_t code, const std::string& text) {
  // An option's length field is 16 bits; longer texts are cut rather than corrupting the file.
  const std::size_t size = text.size() > 0xFFF0 ? 0xFFF0 : text.size();
  option(b, code, reinterpret_cast<const std::uint8_t*>(text.data()), size);
}
void endOfOptions(Bytes& b) {
  put16(b, kOptEnd);
  put16(b, 0);
}

// Type, total length, body (already padded), total length again.
Bytes block(std::uint32_t type, const Bytes& body) {
  const std::uint32_t total = static_cast<std::uint32_t>(12 + body.size());
  Bytes b;
  b.reserve(total);
  put32(b, type);
  put32(b, total);
  b.insert(b.end(), body.begin(), body.end());
  put32(b, total);
  return b;
}

}  // namespace

Bytes sectionHeader(const std::string& application) {
  Bytes body;
  put32(body, kByteOrderMagic);
  put16(body, 1);  // major version
  put16(body, 0);  // minor version
  put32(body, 0xFFFFFFFF);  // section length: not given (64 bits of all ones)
  put32(body, 0xFFFFFFFF);
  if (!application.empty()) {
    option(body, kShbUserAppl, application);
    endOfOptions(body);
  }
  return block(kSectionHeaderType, body);
}

Bytes interfaceDescription(std::uint16_t linkType, const std::string& name) {
  Bytes body;
  put16(body, linkType);
  put16(body, 0);  // reserved
  put32(body, 0);  // snapshot length: no limit
  if (!name.empty()) option(body, kIfName, name);
  const std::uint8_t microseconds = 6;
  option(body, kIfTsresol, &microseconds, 1);
  endOfOptions(body);
  return block(kInterfaceDescriptionType, body);
}

Bytes enhancedPacket(std::uint32_t interfaceId, std::int64_t timeUs, const Bytes& data, const std::string& comment) {
  const auto t = static_cast<std::uint64_t>(timeUs < 0 ? 0 : timeUs);
  Bytes body;
  body.reserve(20 + data.size() + 8 + comment.size());
  put32(body, interfaceId);
  put32(body, static_cast<std::uint32_t>(t >> 32));
  put32(body, static_cast<std::uint32_t>(t));
  put32(body, static_cast<std::uint32_t>(data.size()));  // captured length
  put32(body, static_cast<std::uint32_t>(data.size()));  // original length
  body.insert(body.end(), data.begin(), data.end());
  pad4(body);
  if (!comment.empty()) {
    option(body, kOptComment, comment);
    endOfOptions(body);
  }
  return block(kEnhancedPacketType, body);
}

}  // namespace pcapng
