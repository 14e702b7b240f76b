#include "simulator/tags/iso15693.h"

#include <algorithm>
#include <array>
#include <functional>

#include "simulator/chip.h"

namespace sim {

namespace iso15693 {

namespace {
// Memory from the product file: density in kbit / 8 bytes, four bytes a block; the
// products above 8 kbit number their blocks with two bytes. The VAX and VAS50 families
// can be killed; the VAS60E, VAS70 and QLN families protect sectors with passwords, and
// their models ending in "E" harvest energy. All of them know Initiate and the fast forms.
constexpr std::array<Product, 9> kProducts{{
    {"VAX30", 64, 4, 1, 0x20, true, false, false},
    {"VAX40", 64, 4, 1, 0x21, true, false, false},
    {"VAS50", 128, 4, 1, 0x28, true, false, false},
    {"VAS60E", 2048, 4, 2, 0x5E, false, true, true},
    {"VAS70", 512, 4, 2, 0x4C, false, true, false},
    {"QLN41E", 128, 4, 1, 0x5A, false, true, true},
    {"QLN42E", 512, 4, 2, 0x5B, false, true, true},
    {"QLN43", 2048, 4, 2, 0x4D, false, true, false},
    {"QLN44E", 2048, 4, 2, 0x5C, false, true, true},
}};
}  // namespace

const Product* findProduct(const std::string& reference) {
  for (const Product& p : kProducts)
    if (reference == p.reference) return &p;
  return nullptr;
}

}  // namespace iso15693

using namespace iso15693;

namespace {
std::uint64_t littleEndian(const hex::Bytes& bytes, std::size_t from, std::size_t count) {
  std::uint64_t v = 0;
  for (std::size_t i = 0; i < count && from + i < bytes.size(); ++i) v |= std::uint64_t{bytes[from + i]} << (8 * i);
  return v;
}
std::uint64_t lowBits(int bits) { return bits >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << bits) - 1; }

// The AFI of a request selects a family (high digit), a sub-family (low digit), both, or
// with 00 every tag; a 0 digit in the request stands for any.
bool afiMatches(std::uint8_t requested, std::uint8_t own) {
  const int family = requested >> 4;
  const int subFamily = requested & 0x0F;
  return (family == 0 || family == own >> 4) && (subFamily == 0 || subFamily == (own & 0x0F));
}

bool jsonFlag(const Json& entry, const char* key) {
  const auto it = entry.find(key);
  return it != entry.end() && it->is_boolean() && it->get<bool>();
}
}  // namespace

Iso15693Tag::Iso15693Tag(TagSetup setup) : Tag(std::move(setup)) {
  // The file prints the UID most significant byte first; it travels the other way round.
  const Bytes printed = bytesOf("uid");
  uid_.assign(printed.rbegin(), printed.rend());
  uidValue_ = littleEndian(uid_, 0, 8);
  const Bytes dsfid = bytesOf("dsfid");
  const Bytes afi = bytesOf("afi");
  const Bytes ic = bytesOf("icReference");
  dsfid_ = dsfid.empty() ? 0 : dsfid[0];
  afi_ = afi.empty() ? 0 : afi[0];
  afiLocked_ = jsonFlag(entry(), "afiLocked");
  dsfidLocked_ = jsonFlag(entry(), "dsfidLocked");
  if (const auto it = entry().find("lockedBlocks"); it != entry().end() && it->is_array())
    for (const auto& b : *it)
      if (b.is_number_integer()) locked_.insert(b.get<int>());
  const auto product = entry().find("product");
  const Product* row = product != entry().end() && product->is_string() ? findProduct(product->get<std::string>()) : nullptr;
  addressBytes_ = row ? row->addressBytes : (blockCount() > 256 ? 2 : 1);
  product_ = row;
  icReference_ = !ic.empty() ? ic[0] : row ? row->icReference : 0;
}

void Iso15693Tag::fieldOff() {
  state_ = State::Ready;
  initiated_ = false;
  presented_ = {};
}

std::uint8_t Iso15693Tag::sectorStatus(int sector) const {
  const auto it = sectorStatus_.find(sector);
  return it == sectorStatus_.end() ? 0 : it->second;
}

// Bits 1-2 of the sector status: 00 writes need the password, 01 reads and writes need
// it, 10 reads need it and writes are refused, 11 reads are free and writes refused.
bool Iso15693Tag::canRead(int block) const {
  const std::uint8_t s = sectorStatus(block / kSectorBlocks);
  if (!(s & kSectorProtected)) return true;
  const int access = (s >> 1) & 0x03;
  if (access == 0 || access == 3) return true;
  const int number = (s >> 3) & 0x03;
  return number != 0 && presented_[static_cast<std::size_t>(number - 1)];
}

bool Iso15693Tag::canWrite(int block) const {
  const std::uint8_t s = sectorStatus(block / kSectorBlocks);
  if (!(s & kSectorProtected)) return true;
  const int access = (s >> 1) & 0x03;
  if (access >= 2) return false;
  const int number = (s >> 3) & 0x03;
  return number != 0 && presented_[static_cast<std::size_t>(number - 1)];
}

Json Iso15693Tag::toJson() const {
  Json out = Tag::toJson();
  out["dsfid"] = hex::byte(dsfid_);
  out["afi"] = hex::byte(afi_);
  if (afiLocked_ || out.contains("afiLocked")) out["afiLocked"] = afiLocked_;
  if (dsfidLocked_ || out.contains("dsfidLocked")) out["dsfidLocked"] = dsfidLocked_;
  out["lockedBlocks"] = Json::array();
  for (int b : locked_) out["lockedBlocks"].push_back(b);
  return out;
}

Iso15693Tag::Bytes Iso15693Tag::withCrc(Bytes frame) const {
  const Bytes crc = airCrc(Air::Iso15693, frame.data(), frame.size());
  frame.insert(frame.end(), crc.begin(), crc.end());
  return frame;
}

Iso15693Tag::Bytes Iso15693Tag::ok(const Bytes& data) const {
  Bytes frame{0x00};
  frame.insert(frame.end(), data.begin(), data.end());
  return withCrc(std::move(frame));
}

Iso15693Tag::Bytes Iso15693Tag::error(std::uint8_t code) const { return withCrc({0x01, code}); }

std::optional<hex::Bytes> Iso15693Tag::receive(const AirFrame& frame) {
  // A frame that is cut short or whose CRC does not hold is not heard at all.
  // A killed tag never answers again.
  if (killed_) return std::nullopt;
  if (frame.bytes.size() < 4 || !airCrcMatches(Air::Iso15693, frame.bytes)) return std::nullopt;
  const Bytes body(frame.bytes.begin(), frame.bytes.end() - 2);
  // Parameter bits 4-5 of Protocol Select 01 give the rate the chip listens at: 01 is the
  // double data rate (52 kbit/s) the fast commands answer at ("011D"); at any other rate
  // ("010D") the reader cannot take a fast answer, so it is lost.
  doubleRate_ = !frame.parameters.empty() && ((frame.parameters[0] >> 4) & 0x03) == 0x01;
  if (body[0] & kInventory) return inventory(body);
  return command(body, doubleRate_);
}

// Inventory: flags, 01, AFI when flag 0x10, mask length in bits, the mask bytes (least
// significant first). One slot (flag 0x20): every tag that matches answers. Sixteen
// slots: a tag answers in the slot numbered by the four UID bits above the mask; the
// single request is slot 0, so only the tags of slot 0 answer it.
std::optional<hex::Bytes> Iso15693Tag::inventory(const Bytes& body) {
  if (state_ == State::Quiet) return std::nullopt;
  std::size_t pos = 2;
  if (body[1] == kInventoryInitiated || body[1] == kFastInventoryInitiated) {
    // Only a tag of a known family that was initiated answers the initiated inventory.
    if (!product_ || !initiated_ || body.size() < 3 || body[2] != kManufacturerCode) return std::nullopt;
    if (body[1] == kFastInventoryInitiated && !doubleRate_) return std::nullopt;
    pos = 3;
  } else if (body[1] != kInventoryCode) {
    return std::nullopt;
  }
  if (body[0] & kSelect) {
    if (pos >= body.size() || !afiMatches(body[pos], afi_)) return std::nullopt;
    ++pos;
  }
  if (pos >= body.size()) return std::nullopt;
  const int maskLength = body[pos++];
  const bool oneSlot = (body[0] & kAddress) != 0;
  if (maskLength > (oneSlot ? 64 : 60)) return std::nullopt;
  const std::size_t maskBytes = static_cast<std::size_t>((maskLength + 7) / 8);
  if (body.size() != pos + maskBytes) return std::nullopt;
  const std::uint64_t mask = littleEndian(body, pos, maskBytes) & lowBits(maskLength);
  if ((uidValue_ & lowBits(maskLength)) != mask) return std::nullopt;
  if (!oneSlot && ((uidValue_ >> maskLength) & 0x0F) != 0) return std::nullopt;
  Bytes data{dsfid_};
  data.insert(data.end(), uid_.begin(), uid_.end());
  return ok(data);
}

std::optional<hex::Bytes> Iso15693Tag::command(const Bytes& body, bool doubleRate) {
  const std::uint8_t flags = body[0];
  std::uint8_t code = body[1];
  std::size_t pos = 2;
  if (isCustomCode(code)) {
    if (pos >= body.size() || body[pos] != kManufacturerCode) return std::nullopt;
    ++pos;
  }
  // Select names its tag whatever the flags say; the others by the Address flag.
  if (flags & kAddress || code == kSelectCode) {
    if (body.size() < pos + 8) return std::nullopt;
    const bool mine = std::equal(uid_.begin(), uid_.end(), body.begin() + static_cast<long>(pos));
    pos += 8;
    if (code == kSelectCode) {
      if (!mine) {
        if (state_ == State::Selected) state_ = State::Ready;
        return std::nullopt;
      }
      state_ = State::Selected;
      return ok();
    }
    if (!mine) return std::nullopt;
  } else if (flags & kSelect) {
    if (state_ != State::Selected) return std::nullopt;
  } else if (state_ == State::Quiet) {
    return std::nullopt;  // a quiet tag hears only addressed requests
  }

  const bool extension = (flags & kProtocolExtension) != 0;
  const bool option = (flags & kOption) != 0;
  // Two-byte block numbers need the protocol extension flag; a tag that numbers its blocks
  // with one byte has no extended format and takes the flag as reserved.
  const std::size_t numberBytes = extension && addressBytes_ == 2 ? 2 : 1;
  const auto blockNumber = [&](std::size_t at) -> std::optional<int> {
    if (body.size() < at + numberBytes) return std::nullopt;
    return static_cast<int>(littleEndian(body, at, numberBytes));
  };
  const auto status = [&](int b) -> std::uint8_t { return blockLocked(b) ? 0x01 : 0x00; };

  if (isCustomCode(code)) {
    if (!product_) return error(kNotSupported);
    // The fast forms are the plain commands answered at the double data rate.
    const bool fast = code == kFastReadSingleBlock || code == kFastReadMultipleBlocks || code == kFastInitiate;
    if (fast && !doubleRate) return std::nullopt;
    if (code == kFastReadSingleBlock) code = kReadSingleBlock;
    else if (code == kFastReadMultipleBlocks) code = kReadMultipleBlocks;
    else if (code == kFastInitiate) code = kInitiate;
    if (code != kReadSingleBlock && code != kReadMultipleBlocks) return custom(code, flags, body, pos);
  }

  switch (code) {
    case kStayQuiet:
      if (!(flags & kAddress)) return std::nullopt;
      state_ = State::Quiet;
      return std::nullopt;  // Stay Quiet has no answer
    case kResetToReady:
      state_ = State::Ready;
      return ok();
    case kReadSingleBlock: {
      const auto b = blockNumber(pos);
      if (!b || body.size() != pos + numberBytes) return error(kNotRecognized);
      if (*b >= blockCount()) return error(kBlockNotAvailable);
      if (!canRead(*b)) return error(kReadProtected);
      Bytes data;
      if (option) data.push_back(status(*b));
      data.insert(data.end(), block(*b), block(*b) + blockSize());
      return ok(data);
    }
    case kWriteSingleBlock: {
      const auto b = blockNumber(pos);
      if (!b) return error(kNotRecognized);
      if (*b >= blockCount()) return error(kBlockNotAvailable);
      if (body.size() != pos + numberBytes + static_cast<std::size_t>(blockSize())) return error(kUnknownError);
      if (blockLocked(*b) || !canWrite(*b)) return error(kLockedContent);
      std::copy(body.begin() + static_cast<long>(pos + numberBytes), body.end(),
                memory_.begin() + static_cast<long>(*b) * blockSize());
      return ok();
    }
    case kLockBlock: {
      const auto b = blockNumber(pos);
      if (!b || body.size() != pos + numberBytes) return error(kNotRecognized);
      if (*b >= blockCount()) return error(kBlockNotAvailable);
      if (blockLocked(*b)) return error(kAlreadyLocked);
      locked_.insert(*b);
      return ok();
    }
    case kReadMultipleBlocks: {
      const auto first = blockNumber(pos);
      if (!first || body.size() != pos + numberBytes + 1) return error(kNotRecognized);
      const int count = body[pos + numberBytes] + 1;
      if (*first + count > blockCount()) return error(kBlockNotAvailable);
      for (int b = *first; b < *first + count; ++b)
        if (!canRead(b)) return error(kReadProtected);
      Bytes data;
      for (int b = *first; b < *first + count; ++b) {
        if (option) data.push_back(status(b));
        data.insert(data.end(), block(b), block(b) + blockSize());
      }
      return ok(data);
    }
    case kGetMultipleBlockSecurityStatus: {
      const auto first = blockNumber(pos);
      const auto last = blockNumber(pos + numberBytes);
      if (!first || !last || body.size() != pos + 2 * numberBytes) return error(kNotRecognized);
      const int count = *last + 1;
      if (*first + count > blockCount()) return error(kBlockNotAvailable);
      Bytes data;
      for (int b = *first; b < *first + count; ++b) data.push_back(status(b));
      return ok(data);
    }
    case kWriteAfi:
    case kWriteDsfid: {
      if (body.size() != pos + 1) return error(kNotRecognized);
      bool& lockedFlag = code == kWriteAfi ? afiLocked_ : dsfidLocked_;
      if (lockedFlag) return error(kLockedContent);
      (code == kWriteAfi ? afi_ : dsfid_) = body[pos];
      return ok();
    }
    case kLockAfi:
    case kLockDsfid: {
      bool& lockedFlag = code == kLockAfi ? afiLocked_ : dsfidLocked_;
      if (lockedFlag) return error(kAlreadyLocked);
      lockedFlag = true;
      return ok();
    }
    case kGetSystemInfo: {
      // Information flags: DSFID, AFI, memory size and IC reference are present. The
      // two-byte products give their memory size only in the extended format: asked
      // without the protocol extension flag they answer "0B", without it.
      if (addressBytes_ == 2 && !extension) {
        Bytes data{0x0B};
        data.insert(data.end(), uid_.begin(), uid_.end());
        data.push_back(dsfid_);
        data.push_back(afi_);
        data.push_back(icReference_);
        return ok(data);
      }
      Bytes data{0x0F};
      data.insert(data.end(), uid_.begin(), uid_.end());
      data.push_back(dsfid_);
      data.push_back(afi_);
      const int last = blockCount() - 1;
      data.push_back(static_cast<std::uint8_t>(last & 0xFF));
      if (addressBytes_ == 2) data.push_back(static_cast<std::uint8_t>(last >> 8));
      data.push_back(static_cast<std::uint8_t>((blockSize() - 1) & 0x1F));
      data.push_back(icReference_);
      return ok(data);
    }
    default:
      return error(kNotSupported);
  }
}

// The custom commands of the families; the manufacturer code and the address are read.
std::optional<hex::Bytes> Iso15693Tag::custom(std::uint8_t code, std::uint8_t flags, const Bytes& body,
                                              std::size_t pos) {
  const std::size_t left = body.size() - pos;
  const auto password = [&](std::size_t at) { return Bytes(body.begin() + static_cast<long>(at), body.end()); };
  switch (code) {
    case kInitiate: {
      if (left != 0) return error(kNotRecognized);
      initiated_ = true;
      Bytes data{dsfid_};
      data.insert(data.end(), uid_.begin(), uid_.end());
      return ok(data);
    }
    case kReadEhConfig:
    case kCheckEhEnable:
      if (!product_->energyHarvesting) return error(kNotSupported);
      if (left != 0) return error(kNotRecognized);
      return ok({code == kReadEhConfig ? configuration_ : ehEnable_});
    case kWriteEhConfig:
    case kWriteDoConfig:
    case kSetResetEhEnable: {
      if (!product_->energyHarvesting) return error(kNotSupported);
      if (left != 1) return error(kNotRecognized);
      const std::uint8_t v = body[pos];
      if (code == kWriteEhConfig) configuration_ = static_cast<std::uint8_t>((configuration_ & 0x08) | (v & 0x07));
      else if (code == kWriteDoConfig) configuration_ = static_cast<std::uint8_t>((configuration_ & 0x07) | ((v & 0x01) << 3));
      else ehEnable_ = v & 0x01;
      return ok();
    }
    case kKill: {
      // Kill access 00, then the kill password. A kill password still at zero kills nothing.
      if (!product_->kill) return error(kNotSupported);
      if (left != 5 || body[pos] != 0x00) return error(kNotRecognized);
      const Bytes given = password(pos + 1);
      if (given != killPassword_ || killPassword_ == Bytes(4, 0)) return error(kUnknownError);
      killed_ = true;
      return ok();
    }
    case kWritePassword: {
      if (left != 5) return error(kNotRecognized);
      const int number = body[pos];
      if (number == 0) {
        if (!product_->kill) return error(kNotSupported);
        killPassword_ = password(pos + 1);
        return ok();
      }
      if (!product_->sectorPasswords) return error(kNotSupported);
      if (number > 3) return error(kUnknownError);
      // A password is changed only after it was presented; the new one must be presented anew.
      auto& presented = presented_[static_cast<std::size_t>(number - 1)];
      if (!presented) return error(kUnknownError);
      passwords_[static_cast<std::size_t>(number - 1)] = password(pos + 1);
      presented = false;
      return ok();
    }
    case kPresentPassword: {
      if (!product_->sectorPasswords) return error(kNotSupported);
      if (left != 5) return error(kNotRecognized);
      const int number = body[pos];
      if (number < 1 || number > 3) return error(kUnknownError);
      if (password(pos + 1) != passwords_[static_cast<std::size_t>(number - 1)]) {
        // A wrong password closes every sector again.
        presented_ = {};
        return error(kUnknownError);
      }
      presented_[static_cast<std::size_t>(number - 1)] = true;
      return ok();
    }
    case kLockSectorPassword: {
      // The sector number, two bytes low first with the protocol extension flag on the
      // two-byte products, then the sector security status.
      if (!product_->sectorPasswords) return error(kNotSupported);
      const std::size_t numberBytes = (flags & kProtocolExtension) && addressBytes_ == 2 ? 2 : 1;
      if (left != numberBytes + 1) return error(kNotRecognized);
      const int sector = static_cast<int>(littleEndian(body, pos, numberBytes));
      if (sector * kSectorBlocks >= blockCount()) return error(kBlockNotAvailable);
      if (sectorStatus(sector) & kSectorProtected) return error(kAlreadyLocked);
      sectorStatus_[sector] = body[pos + numberBytes] & 0x1F;
      return ok();
    }
    default:
      return error(kNotSupported);
  }
}

std::unique_ptr<Tag> makeIso15693Tag(TagSetup setup) { return std::make_unique<Iso15693Tag>(std::move(setup)); }

hex::Bytes superposeIso15693(const std::vector<hex::Bytes>& replies) {
  hex::Bytes out;
  for (const hex::Bytes& r : replies) {
    if (r.size() > out.size()) out.resize(r.size(), 0);
    for (std::size_t i = 0; i < r.size(); ++i) out[i] |= r[i];
  }
  return out;
}

// --- the controller's anticollision -------------------------------------------------------------

namespace {
constexpr std::uint8_t kControllerAnticollision = 0xA0;
// The reply must fit the 255 characters of an answer: "80", length, count, 9 bytes a tag.
constexpr std::size_t kMaxTags = (255 - 6) / 18;

struct Found {
  std::uint8_t dsfid;
  hex::Bytes uid;
};

class Anticollision {
 public:
  Anticollision(std::uint8_t flags, FieldContents& field) : flags_(flags), field_(field) {}

  std::vector<Found> run() {
    search(0, 0);
    return found_;
  }

 private:
  // The tags that answer a one-slot inventory with this mask.
  std::vector<hex::Bytes> ask(int maskLength, std::uint64_t mask) {
    hex::Bytes request{static_cast<std::uint8_t>((flags_ & (kSubCarrier | kDataRate)) | kInventory | kAddress),
                       kInventoryCode, static_cast<std::uint8_t>(maskLength)};
    for (int i = 0; i < (maskLength + 7) / 8; ++i) request.push_back(static_cast<std::uint8_t>(mask >> (8 * i)));
    const hex::Bytes crc = airCrc(Air::Iso15693, request.data(), request.size());
    request.insert(request.end(), crc.begin(), crc.end());
    std::vector<hex::Bytes> replies;
    for (auto& tag : field_.tags) {
      if (!tag->inField() || tag->air() != Air::Iso15693) continue;
      if (auto r = tag->receive(AirFrame{request})) {
        if (std::find(replies.begin(), replies.end(), *r) == replies.end()) replies.push_back(std::move(*r));
      }
    }
    return replies;
  }

  // One slot: the mask as it is. Sixteen slots: the mask and four more bits, slot by slot.
  // A slot where several answer is searched again with the longer mask.
  void search(int maskLength, std::uint64_t mask) {
    const bool sixteen = (flags_ & kAddress) == 0;
    const int step = sixteen ? 4 : 1;
    if (sixteen) {
      if (maskLength + step > 64) return;
      for (std::uint64_t slot = 0; slot < 16; ++slot) probe(maskLength + step, mask | slot << maskLength);
    } else {
      probe(maskLength, mask);
    }
  }

  void probe(int maskLength, std::uint64_t mask) {
    if (found_.size() >= kMaxTags) return;
    const std::vector<hex::Bytes> replies = ask(maskLength, mask);
    if (replies.empty()) return;
    if (replies.size() == 1) {
      const hex::Bytes& r = replies[0];
      if (r.size() >= 12) found_.push_back({r[1], hex::Bytes(r.begin() + 2, r.begin() + 10)});
      return;
    }
    const bool sixteen = (flags_ & kAddress) == 0;
    if (sixteen) {
      search(maskLength, mask);
    } else if (maskLength < 64) {
      probe(maskLength + 1, mask);
      probe(maskLength + 1, mask | std::uint64_t{1} << maskLength);
    }
  }

  std::uint8_t flags_;
  FieldContents& field_;
  std::vector<Found> found_;
};
}  // namespace

std::string iso15693ControllerCommand(const hex::Bytes& command, std::uint8_t chipProtocol, FieldContents& field) {
  if (command.size() != 3 || command[0] != kControllerAnticollision || command[1] != 1)
    return answerText(Result::InvalidLength);
  if (chipProtocol != 0x01) return answerText(Result::NoTag);
  hex::Bytes data{0};
  for (const Found& f : Anticollision(command[2], field).run()) {
    data.push_back(f.dsfid);
    data.insert(data.end(), f.uid.begin(), f.uid.end());
    ++data[0];
  }
  return answerText(Result::TagAnswer, data);
}

}  // namespace sim
