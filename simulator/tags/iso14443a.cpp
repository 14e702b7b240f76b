#include "simulator/tags/iso14443a.h"

#include <algorithm>

#include "simulator/chip.h"

namespace sim {

namespace iso14443a {

namespace {
// An answer is at most 255 characters: "80", length and 125 bytes.
constexpr std::size_t kMaxAnswerData = (255 - 4) / 2;

std::uint8_t bcc(const hex::Bytes& b, std::size_t from) {
  return static_cast<std::uint8_t>(b[from] ^ b[from + 1] ^ b[from + 2] ^ b[from + 3]);
}

struct Heard {
  hex::Bytes bytes;
  bool collision = false;
  std::size_t collisionByte = 0;
  int collisionBit = 0;
};

// Answers that come at once: where tags send different bits the reader hears both (a 1
// wins) and notes the first such bit; bytes only one tag sends are heard clean.
Heard superpose(const std::vector<hex::Bytes>& replies) {
  Heard h;
  for (const hex::Bytes& r : replies) {
    if (r.size() > h.bytes.size()) h.bytes.resize(r.size(), 0);
    for (std::size_t i = 0; i < r.size(); ++i) h.bytes[i] |= r[i];
  }
  for (std::size_t i = 0; i < h.bytes.size() && !h.collision; ++i) {
    std::uint8_t ones = 0;
    std::uint8_t zeros = 0;
    for (const hex::Bytes& r : replies) {
      if (i >= r.size()) continue;
      ones |= r[i];
      zeros |= static_cast<std::uint8_t>(~r[i]);
    }
    const std::uint8_t both = ones & zeros;
    for (int bit = 0; bit < 8; ++bit)
      if (both & (1u << bit)) {
        h.collision = true;
        h.collisionByte = i;
        h.collisionBit = bit;
        break;
      }
  }
  return h;
}
}  // namespace

std::vector<hex::Bytes> cascadeLevels(const hex::Bytes& uid) {
  std::vector<hex::Bytes> levels;
  hex::Bytes rest;
  switch (uid.size()) {
    case 4:
      rest = uid;
      break;
    case 7:
      levels.push_back({kCascadeTag, uid[0], uid[1], uid[2]});
      rest.assign(uid.begin() + 3, uid.end());
      break;
    case 10:
      levels.push_back({kCascadeTag, uid[0], uid[1], uid[2]});
      levels.push_back({kCascadeTag, uid[3], uid[4], uid[5]});
      rest.assign(uid.begin() + 6, uid.end());
      break;
    default:
      return levels;
  }
  levels.push_back(rest);
  for (hex::Bytes& level : levels) level.push_back(bcc(level, 0));
  return levels;
}

std::string chipExchange(const hex::Bytes& data, FieldContents& field) {
  AirFrame frame{data};
  const std::uint8_t flag = frame.bytes.back();
  frame.bytes.pop_back();
  const int bits = flag & kFlagBits;
  frame.lastByteBits = bits == 0 || bits > 8 ? 8 : bits;
  const bool crcWanted = (flag & kFlagAppendCrc) != 0;
  // Topaz frames close with CRC_B, the other ISO 14443-A frames with CRC_A.
  const Air crcAir = (flag & kFlagTopaz) ? Air::Iso14443B : Air::Iso14443A;
  // A frame of several bytes whose last byte is cut short is a bit-oriented anticollision
  // frame: the answer completes that byte, so its first byte carries the remaining bits.
  const bool split = frame.lastByteBits < 8 && frame.bytes.size() >= 2;
  if (crcWanted) {
    const hex::Bytes check = airCrc(crcAir, frame.bytes.data(), frame.bytes.size());
    frame.bytes.insert(frame.bytes.end(), check.begin(), check.end());
  }

  std::vector<hex::Bytes> replies;
  bool allShort = true;
  for (auto& tag : field.tags) {
    if (!tag->inField() || tag->air() != Air::Iso14443A) continue;
    if (auto reply = tag->receive(frame)) {
      allShort = allShort && tag->lastReplyBits() < 8 && reply->size() == 1;
      replies.push_back(std::move(*reply));
    }
  }
  if (replies.empty()) return answerText(Result::NoTag);

  const Heard heard = superpose(replies);
  if (allShort) return hex::byte(kShortAnswer) + hex::byte(4) + hex::byte(heard.bytes[0] & 0x0F);

  std::uint8_t status = static_cast<std::uint8_t>(split ? 8 - frame.lastByteBits : 8);
  if (crcWanted && !airCrcMatches(crcAir, heard.bytes)) status |= kStatusCrcError;
  if (heard.collision) status |= kStatusCollision;
  hex::Bytes answer = heard.bytes;
  answer.push_back(status);
  answer.push_back(heard.collision ? static_cast<std::uint8_t>(heard.collisionByte) : 0);
  answer.push_back(heard.collision ? static_cast<std::uint8_t>(heard.collisionBit) : 0);
  if (answer.size() > kMaxAnswerData) return answerText(Result::BufferOverflow);
  return answerText(Result::TagAnswer, answer);
}

}  // namespace iso14443a

using namespace iso14443a;

Iso14443ATag::Iso14443ATag(TagSetup setup) : Tag(std::move(setup)) {
  uid_ = bytesOf("uid");
  atqa_ = bytesOf("atqa");
  const Bytes sak = bytesOf("sak");
  sak_ = sak.empty() ? 0 : sak[0];
  levels_ = cascadeLevels(uid_);
  // A 7-byte UID stands in the first pages of a Type 2 memory as the tag reports it:
  // u0 u1 u2 BCC0, u3 u4 u5 u6, BCC1; the rest of page 2 is the tag's own.
  if (uid_.size() == 7 && memory_.size() >= 9) {
    std::copy(levels_[0].begin() + 1, levels_[0].end(), memory_.begin());
    memory_[3] = static_cast<std::uint8_t>(kCascadeTag ^ uid_[0] ^ uid_[1] ^ uid_[2]);
    std::copy(levels_[1].begin(), levels_[1].end(), memory_.begin() + 4);
  }
}

void Iso14443ATag::fieldOff() {
  state_ = State::Idle;
  level_ = 0;
  fromHalt_ = false;
  pendingWrite_ = -1;
}

std::optional<hex::Bytes> Iso14443ATag::receive(const AirFrame& frame) {
  lastReplyBits_ = 8;
  if (frame.bytes.empty()) return std::nullopt;
  if (frame.bytes.size() == 1 && frame.lastByteBits == 7) return shortFrame(frame);
  switch (state_) {
    case State::Idle:
    case State::Halt:
      return std::nullopt;
    case State::Ready:
      return whileReady(frame);
    case State::Active:
      return whileActive(frame);
  }
  return std::nullopt;
}

std::optional<hex::Bytes> Iso14443ATag::shortFrame(const AirFrame& frame) {
  const std::uint8_t code = frame.bytes[0];
  const bool wakes = (code == kReqa && state_ == State::Idle) ||
                     (code == kWupa && (state_ == State::Idle || state_ == State::Halt));
  if (!wakes) {
    // REQA in halt keeps the tag asleep; in ready and active every short frame is a
    // command those states do not take.
    if (state_ == State::Halt) return std::nullopt;
    return leave();
  }
  fromHalt_ = state_ == State::Halt;
  state_ = State::Ready;
  level_ = 0;
  pendingWrite_ = -1;
  return atqa_;
}

std::optional<hex::Bytes> Iso14443ATag::leave() {
  state_ = fromHalt_ ? State::Halt : State::Idle;
  level_ = 0;
  pendingWrite_ = -1;
  return std::nullopt;
}

hex::Bytes Iso14443ATag::withCrc(Bytes frame) const {
  const Bytes check = airCrc(Air::Iso14443A, frame.data(), frame.size());
  frame.insert(frame.end(), check.begin(), check.end());
  return frame;
}

// Anticollision and select of the tag's cascade level. The level is the tag's own state:
// any of the three select codes is taken as a command of the level it stands at, so that
// a reader that repeats 93 at the third level is answered with the third level's bytes.
std::optional<hex::Bytes> Iso14443ATag::whileReady(const AirFrame& frame) {
  const Bytes& b = frame.bytes;
  if (b.size() < 2 || (b[0] != kSel1 && b[0] != kSel2 && b[0] != kSel3) || levels_.empty()) return leave();
  const Bytes& level = levels_[static_cast<std::size_t>(level_)];
  const std::uint8_t nvb = b[1];
  if (nvb == kNvbSelect) {
    if (b.size() != 9 || !airCrcMatches(Air::Iso14443A, b)) return leave();
    // Another tag's UID: this one stays ready and silent.
    if (!std::equal(level.begin(), level.end(), b.begin() + 2)) return std::nullopt;
    if (level_ + 1 < static_cast<int>(levels_.size())) {
      ++level_;
      return withCrc({kSakCascade});
    }
    state_ = State::Active;
    return withCrc({sak_});
  }
  // NVB: bytes sent so far (select code and NVB included) in the high digit, bits of the
  // next byte in the low one.
  const int byteCount = nvb >> 4;
  const int bitCount = nvb & 0x0F;
  if (byteCount < 2 || byteCount > 6 || bitCount > 7) return leave();
  const std::size_t known = static_cast<std::size_t>(byteCount - 2);
  if (b.size() != 2 + known + (bitCount > 0 ? 1 : 0)) return leave();
  if (frame.lastByteBits != (bitCount > 0 ? bitCount : 8)) return leave();
  // The UID bits the reader already knows: only a tag whose bits match answers.
  if (!std::equal(level.begin(), level.begin() + static_cast<long>(known), b.begin() + 2)) return std::nullopt;
  const std::uint8_t lowBits = static_cast<std::uint8_t>((1u << bitCount) - 1);
  if (bitCount > 0 && ((b[2 + known] ^ level[known]) & lowBits) != 0) return std::nullopt;
  Bytes reply(level.begin() + static_cast<long>(known), level.end());
  reply[0] &= static_cast<std::uint8_t>(~lowBits);
  return reply;
}

std::optional<hex::Bytes> Iso14443ATag::nak(std::uint8_t code) {
  leave();
  lastReplyBits_ = 4;
  return Bytes{code};
}

std::optional<hex::Bytes> Iso14443ATag::ack() {
  lastReplyBits_ = 4;
  return Bytes{kAck};
}

// Static lock bits of a Type 2 tag: page 2 byte 2 bits 3 to 7 lock pages 3 to 7, byte 3
// locks pages 8 to 15. Pages 0 and 1 (the UID) are read-only.
bool Iso14443ATag::pageLocked(int page) const {
  if (page < 2) return true;
  if (memory_.size() < 12) return false;
  if (page >= 3 && page <= 7) return (memory_[10] >> page) & 1;
  if (page >= 8 && page <= 15) return (memory_[11] >> (page - 8)) & 1;
  return false;
}

bool Iso14443ATag::writePage(int page, const std::uint8_t* data) {
  if (page < 0 || page >= pageCount() || pageLocked(page)) return false;
  std::uint8_t* target = memory_.data() + static_cast<std::size_t>(page) * kPageSize;
  if (page == 2) {
    // The serial check byte and the internal byte stay; lock bits can only be set.
    target[2] |= data[2];
    target[3] |= data[3];
  } else if (page == 3) {
    // The capability container is one-time programmable: bits can only be set.
    for (int i = 0; i < kPageSize; ++i) target[i] |= data[i];
  } else {
    std::copy(data, data + kPageSize, target);
  }
  return true;
}

std::optional<hex::Bytes> Iso14443ATag::whileActive(const AirFrame& frame) {
  const Bytes& b = frame.bytes;
  if (pendingWrite_ >= 0) {
    // The second frame of a compatibility write: sixteen bytes of which the first four
    // are written.
    const int page = pendingWrite_;
    pendingWrite_ = -1;
    if (b.size() != 18) return leave();
    if (!airCrcMatches(Air::Iso14443A, b)) return nak(kNakCrcError);
    return writePage(page, b.data()) ? ack() : nak(kNakInvalidArgument);
  }
  const std::uint8_t code = b[0];
  const bool crcOk = airCrcMatches(Air::Iso14443A, b);
  if (code == kRead && b.size() == 4) {
    if (!crcOk) return nak(kNakCrcError);
    const int page = b[1];
    if (page >= pageCount()) return nak(kNakInvalidArgument);
    // Sixteen bytes from the page; past the last page the read rolls over to page 0.
    Bytes data;
    for (int i = 0; i < 4 * kPageSize; ++i)
      data.push_back(memory_[static_cast<std::size_t>((page * kPageSize + i) % static_cast<int>(memory_.size()))]);
    return withCrc(data);
  }
  if (code == kWrite && b.size() == 8) {
    if (!crcOk) return nak(kNakCrcError);
    return writePage(b[1], b.data() + 2) ? ack() : nak(kNakInvalidArgument);
  }
  if (code == kCompatibilityWrite && b.size() == 4) {
    if (!crcOk) return nak(kNakCrcError);
    const int page = b[1];
    if (page >= pageCount() || pageLocked(page)) return nak(kNakInvalidArgument);
    pendingWrite_ = page;
    return ack();
  }
  if (code == kHlta && b.size() == 4 && b[1] == 0x00 && crcOk) {
    state_ = State::Halt;
    level_ = 0;
    return std::nullopt;
  }
  return leave();
}

std::unique_ptr<Tag> makeIso14443ATag(TagSetup setup) { return std::make_unique<Iso14443ATag>(std::move(setup)); }

}  // namespace sim
