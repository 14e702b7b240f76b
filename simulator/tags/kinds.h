// The kinds of tag the field file may hold: one row each, with the air protocol, the keys
// of its entry and the class that answers for it.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "simulator/fieldfile.h"
#include "simulator/tags/tag.h"

namespace sim {

struct TagKind {
  const char* type;
  Air air;
  std::span<const KeySpec> keys;  // the kind's own keys in the order a dump writes them
  std::unique_ptr<Tag> (*make)(TagSetup setup);
};

std::span<const TagKind> tagKinds();
const TagKind* findTagKind(std::string_view type);

}  // namespace sim
