#include "iso15693/Iso15693Products.h"

#include <string>

namespace iso15693 {

namespace {
bool beginsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }
}  // namespace

std::optional<PanelLayout> panelLayoutFor(std::string_view reference) {
  PanelLayout l;
  if (beginsWith(reference, "VAX30") || beginsWith(reference, "VAX40")) {
    l.password = false;
    l.extension = ExtensionChoice::Index0Hidden;
    l.energyHarvesting = false;
    return l;
  }
  if (beginsWith(reference, "VAS50")) {
    l.password = false;
    l.readMultipleBlock = false;
    l.extension = ExtensionChoice::Index0Hidden;
    l.energyHarvesting = false;
    return l;
  }
  // The family word is looked for once; its first place decides.
  const auto horizon = reference.find("HORIZON");
  if (horizon == 0 || horizon == 6) {
    l.afiAndDsfid = false;
    l.kill = false;
    l.lockBlock = false;
    l.securityStatus = false;
    l.password = false;
    l.initiate = l.inventoryInitiated = l.fastInitiate = l.fastInventoryInitiated = false;
    l.fastReadSingleBlock = l.fastReadMultipleBlock = false;
    l.energyHarvesting = false;
    l.pageSize = false;
    return l;
  }
  if (beginsWith(reference, "VAS60E") || beginsWith(reference, "VAS70") || beginsWith(reference, "QLN")) {
    l.kill = false;
    l.lockBlock = false;
    l.pageSize = false;
    // The energy-harvesting models are the references that end in "E".
    const bool harvesting = !reference.empty() && reference.back() == 'E';
    l.energyHarvesting = harvesting;
    l.extension = harvesting ? ExtensionChoice::Index0Shown : ExtensionChoice::Index1Hidden;
    return l;
  }
  return std::nullopt;
}

}  // namespace iso15693
