// Which commands the ISO 15693 panel offers for each product of the catalogue. The test
// is on the product's reference, row by row, and the first row that matches decides.
#pragma once

#include <optional>
#include <string_view>

namespace iso15693 {

// How the two Extension Flag options stand for a product.
enum class ExtensionChoice {
  AsDesigned,     // both shown, index 0 on
  Index0Hidden,   // index 0 on, both hidden
  Index0Shown,    // index 0 on, both shown
  Index1Hidden,   // index 1 on, both hidden: Get System Info always with the flag
};

// Visible or hidden, for the controls the table of products names; the rest of the
// panel stays as designed (visible).
struct PanelLayout {
  bool afiAndDsfid = true;         // FraAFI, FraDSFID
  bool kill = true;                // FraKill
  bool lockBlock = true;           // cmdLockBlock
  bool securityStatus = true;      // cmdGetMultipleBlockSecurityStatus
  bool password = true;            // FraPasswordRF
  bool readUser = true;            // cmdReadUser
  bool readMultipleBlock = true;   // cmdReadMultipleBlock
  bool fastReadSingleBlock = true; // cmdFastReadSingleBlock
  bool fastReadMultipleBlock = true;
  bool initiate = true;            // cmdInitiate
  bool inventoryInitiated = true;  // cmdInventoryInitiated
  bool fastInitiate = true;        // cmdFastInitiate
  bool fastInventoryInitiated = true;
  ExtensionChoice extension = ExtensionChoice::AsDesigned;
  bool energyHarvesting = true;    // FraEnergyHarvesting
  bool pageSize = true;            // lblNbData, cboPageSize
};

// The layout of a reference; nullopt for a reference that no row matches, which the
// panel cannot serve.
std::optional<PanelLayout> panelLayoutFor(std::string_view reference);

}  // namespace iso15693
