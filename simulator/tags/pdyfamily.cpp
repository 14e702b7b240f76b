#include "simulator/tags/pdyfamily.h"

#include <algorithm>

namespace sim {

namespace pdy {

namespace {
// PDX51 and PDT52 hold 64 bytes; the others their density in kbit / 8.
constexpr Product kProducts[] = {
    {"PDX51", 16}, {"PDT52", 16}, {"PDX53", 128}, {"PDX54", 128}, {"PDY55", 256},
};
}  // namespace

const Product* findProduct(const std::string& reference) {
  for (const Product& p : kProducts)
    if (reference == p.reference) return &p;
  return nullptr;
}

}  // namespace pdy

using namespace pdy;

PdyTag::PdyTag(TagSetup setup) : Tag(std::move(setup)), draw_(iso14443b::seedOf(bytesOf("uid"))) {
  const Bytes printed = bytesOf("uid");
  uid_.assign(printed.rbegin(), printed.rend());
  const Bytes fixed = bytesOf("chipId");
  if (!fixed.empty()) fixedChipId_ = fixed[0];
  // A known product answers only inside its own memory, whatever the file gives it.
  usableBlocks_ = blockCount();
  if (const auto it = entry().find("product"); it != entry().end() && it->is_string())
    if (const Product* p = findProduct(it->get<std::string>())) usableBlocks_ = std::min(usableBlocks_, p->blockCount);
  if (const auto it = entry().find("lockedBlocks"); it != entry().end() && it->is_array())
    for (const auto& b : *it)
      if (b.is_number_integer()) locked_.insert(b.get<int>());
}

Json PdyTag::toJson() const {
  Json out = Tag::toJson();
  out["lockedBlocks"] = Json::array();
  for (int b : locked_) out["lockedBlocks"].push_back(b);
  return out;
}

PdyTag::Bytes PdyTag::withCrc(Bytes frame) const {
  const Bytes crc = airCrc(Air::Iso14443B, frame.data(), frame.size());
  frame.insert(frame.end(), crc.begin(), crc.end());
  return frame;
}

void PdyTag::drawChipId() {
  chipId_ = fixedChipId_ ? *fixedChipId_ : static_cast<std::uint8_t>(draw_.next() >> 24);
}

std::optional<hex::Bytes> PdyTag::receive(const AirFrame& frame) {
  if (frame.bytes.size() < 3 || !airCrcMatches(Air::Iso14443B, frame.bytes)) return std::nullopt;
  const Bytes body(frame.bytes.begin(), frame.bytes.end() - 2);
  if (state_ == State::Deactivated) return std::nullopt;
  const std::uint8_t code = body[0];

  // Initiate and Pcall16: 06 and one parameter byte.
  if (code == kInitiateOrPcall && body.size() == 2) {
    if (body[1] == kInitiateParameter && (state_ == State::Ready || state_ == State::Inventory)) {
      drawChipId();
      state_ = State::Inventory;
      return withCrc({chipId_});
    }
    if (body[1] == kPcall16Parameter && state_ == State::Inventory) {
      drawChipId();
      if (slot() == 0) return withCrc({chipId_});
    }
    return std::nullopt;
  }
  // Slot Marker: the slot in the high four bits, 6 in the low ones.
  if (body.size() == 1 && (code & 0x0F) == kInitiateOrPcall) {
    if (state_ == State::Inventory && (code >> 4) == slot()) return withCrc({chipId_});
    return std::nullopt;
  }

  switch (code) {
    case kSelect:
      if (body.size() != 2 || state_ == State::Ready) return std::nullopt;
      if (body[1] == chipId_) {
        state_ = State::Selected;
        return withCrc({chipId_});
      }
      if (state_ == State::Selected) state_ = State::Deselected;
      return std::nullopt;
    case kCompletion:
      if (body.size() == 1 && state_ == State::Selected) state_ = State::Deactivated;
      return std::nullopt;
    case kResetToInventory:
      if (body.size() == 1 && state_ == State::Selected) state_ = State::Inventory;
      return std::nullopt;
    case kGetUid:
      if (body.size() != 1 || state_ != State::Selected) return std::nullopt;
      return withCrc(uid_);
    case kReadBlock: {
      if (body.size() != 2 || state_ != State::Selected || body[1] >= usableBlocks_) return std::nullopt;
      const auto from = memory_.begin() + static_cast<long>(body[1]) * blockSize();
      return withCrc(Bytes(from, from + blockSize()));
    }
    case kWriteBlock: {
      // 09, block, four bytes; a write is never answered, and a locked block keeps its bytes.
      if (body.size() != 2 + static_cast<std::size_t>(blockSize()) || state_ != State::Selected ||
          body[1] >= usableBlocks_ || locked_.count(body[1]))
        return std::nullopt;
      std::copy(body.begin() + 2, body.end(), memory_.begin() + static_cast<long>(body[1]) * blockSize());
      return std::nullopt;
    }
    default:
      return std::nullopt;
  }
}

std::unique_ptr<Tag> makePdyTag(TagSetup setup) { return std::make_unique<PdyTag>(std::move(setup)); }

}  // namespace sim
