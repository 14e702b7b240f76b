#include "simulator/tags/kinds.h"

#include <array>

#include "simulator/tags/felica.h"
#include "simulator/tags/iso14443b.h"
#include "simulator/tags/iso14443a.h"
#include "simulator/tags/iso15693.h"
#include "simulator/tags/topaz.h"
#include "simulator/tags/pdyfamily.h"

namespace sim {

namespace {

constexpr KeySpec hexKey(const char* name, long bytes, const char* fallback = nullptr) {
  return {.name = name, .kind = ValueKind::Hex, .min = bytes, .max = bytes, .fallback = fallback,
          .required = fallback == nullptr};
}
constexpr std::uint32_t byteCounts(std::initializer_list<int> counts) {
  std::uint32_t mask = 0;
  for (int n : counts) mask |= 1u << n;
  return mask;
}

// User memory: blockSize bytes a block, blockCount blocks. The loader pads a short memory
// text with zeros up to blockSize * blockCount bytes.
constexpr KeySpec blockSize(const char* fallback) {
  return {.name = "blockSize", .kind = ValueKind::Integer, .min = 1, .max = 32, .fallback = fallback};
}
constexpr KeySpec blockCount(const char* fallback) {
  return {.name = "blockCount", .kind = ValueKind::Integer, .min = 1, .max = 65536, .fallback = fallback};
}
constexpr KeySpec kMemory{.name = "memory", .kind = ValueKind::HexMemory, .fallback = ""};
constexpr KeySpec kLockedBlocks{.name = "lockedBlocks", .kind = ValueKind::IndexList, .fallback = "[]"};

constexpr KeySpec kIso15693[] = {
    hexKey("uid", 8), hexKey("dsfid", 1, "00"), hexKey("afi", 1, "00"),
    blockSize("4"), blockCount("64"), kMemory, kLockedBlocks,
    // Written only when set, so that a plain entry dumps as it was loaded.
    {.name = "afiLocked", .kind = ValueKind::Bool},
    {.name = "dsfidLocked", .kind = ValueKind::Bool},
    {.name = "icReference", .kind = ValueKind::Hex, .min = 1, .max = 1},
};
constexpr KeySpec kIso14443A[] = {
    {.name = "uid", .kind = ValueKind::Hex, .required = true, .sizes = byteCounts({4, 7, 10})},
    hexKey("atqa", 2), hexKey("sak", 1),
    blockSize("4"), blockCount("16"), kMemory,
};
constexpr KeySpec kTopaz[] = {
    {.name = "uid", .kind = ValueKind::Hex, .required = true, .sizes = byteCounts({4, 7})},
    hexKey("hr0", 1, "11"), hexKey("hr1", 1, "48"), hexKey("atqa", 2, "0C00"),
    blockSize("8"), blockCount("15"), kMemory,
};
constexpr KeySpec kIso14443B[] = {
    hexKey("pupi", 4), hexKey("applicationData", 4, "00000000"), hexKey("protocolInfo", 3, "008171"),
    hexKey("afi", 1, "00"),
    blockSize("4"), blockCount("64"), kMemory,
};
constexpr KeySpec kPdy[] = {
    hexKey("uid", 8),
    blockSize("4"), blockCount("128"), kMemory, kLockedBlocks,
    // Fixes the chip identifier that Initiate and Pcall16 draw; without it they draw from
    // a sequence seeded by the UID.
    {.name = "chipId", .kind = ValueKind::Hex, .min = 1, .max = 1},
};
constexpr KeySpec kFelica[] = {
    hexKey("idm", 8), hexKey("pmm", 8), hexKey("systemCode", 2, "12FC"),
    blockSize("16"), blockCount("14"), kMemory,
};

constexpr std::array kKinds{
    TagKind{"iso15693", Air::Iso15693, kIso15693, makeIso15693Tag},
    TagKind{"iso14443a", Air::Iso14443A, kIso14443A, makeIso14443ATag},
    TagKind{"topaz", Air::Iso14443A, kTopaz, makeTopazTag},
    TagKind{"iso14443b", Air::Iso14443B, kIso14443B, makeIso14443BTag},
    TagKind{"pdy", Air::Iso14443B, kPdy, makePdyTag},
    TagKind{"felica", Air::Felica, kFelica, makeFelicaTag},
};

}  // namespace

std::span<const TagKind> tagKinds() { return kKinds; }

const TagKind* findTagKind(std::string_view type) {
  for (const TagKind& kind : kKinds)
    if (type == kind.type) return &kind;
  return nullptr;
}

}  // namespace sim
