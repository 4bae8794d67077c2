#pragma once

#include <string>
#include <vector>

#include "base/Codes.h"
#include "kit/GivenPath.h"
#include "platform/Program.h"

/// What a host's catalogue, configuration files and version records say of its products: read as a
/// start reads them, nothing is written.
namespace trelv::kit {

/// One entry of the product catalogue.
struct CatalogueEntry {
  /// From 1.
  int index = 0;
  std::string id;
  std::string name;
  /// The configuration file: as the catalogue names it, and its full path; it may be missing.
  std::string conf;
  std::string configuration;
};

/// The host's server path as the manager joins paths to it: without backslash, a root's included.
std::string serverPathOf(const GivenPath& host);

/// The entries that a start walks through, in its order: those before the first without "conf".
std::vector<CatalogueEntry> walkedEntries(Program& program, const std::string& serverPath);

/// Full path of the version record of a side. Empty for the client's where no configuration store
/// tells its folder.
std::string versionRecord(Program& program, Side side, const std::string& serverPath);

/// A product's version in a record; "" where none is recorded, or where there is no record.
std::string recordedVersion(Program& program, const std::string& record, const std::string& id);

/// The highest version that set-ups and updates of a side lead to; "" where the side has none.
std::string configuredVersion(Program& program, const std::string& configuration, Side side);

/// Would a start run a command of this side, where this version is recorded?
bool isWorkWaiting(Program& program, const std::string& configuration, Side side,
                   const std::string& recorded);

}  // namespace trelv::kit
