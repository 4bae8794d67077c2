#pragma once

#include <string>
#include <vector>

#include "base/Codes.h"
#include "base/InstallationPaths.h"
#include "base/ProductOnSide.h"
#include "platform/Program.h"

/// What the maintenance form shows and runs again. `serverPath` has no trailing backslash.
namespace trelv::modProdTrelvManager {

/// One section of a product's configuration file that brings the product to a version.
struct RepairVersion {
  /// Name of the section: kind and index, "Setup01".
  std::string section;
  Operation kind{};
  /// From 1 to 100.
  int index = 0;
  /// As the file has it, "09.93.00.00"; not empty.
  std::string version;
};

/// Identifiers of the catalogue's products in its order; entries without one are left out. Empty
/// without a catalogue.
std::vector<std::string> CatalogueProducts(Program& program, const std::string& serverPath);

/// The versions of the product's configuration file: every section of a kind and an index that has
/// a "version", set-ups before updates, each in the order of their indexes. Removals are not among
/// them. Empty for a product that the catalogue does not have.
std::vector<RepairVersion> ProductVersions(Program& program, const std::string& serverPath,
                                           const std::string& productId);

/// Does once more what a section of the product's configuration file has for the side, one command
/// after the other; no record changes. True if any command was started. Never raises: a run-time
/// failure ends it with one log line.
bool RepairProduct(Program& program, const InstallationPaths& paths, const ProductOnSide& product,
                   const std::string& section);

}  // namespace trelv::modProdTrelvManager
