#include "kit/InstalledProducts.h"

#include <algorithm>
#include <array>

#include "base/Text.h"
#include "inventory/InstallationMode.h"
#include "kit/HostProducts.h"
#include "kit/OnWindows.h"
#include "packs/ProductUpdateRun.h"
#include "platform/modLibrary.h"
#include "startup/IntegrationRecord.h"

namespace trelv::kit {
namespace {

struct Known {
  const char* id;
  Product code;
};

/// The products that the machine can be searched for.
constexpr std::array kKnown{Known{"NERIO", Product::Nerio}, Known{"LUDA", Product::Luda},
                            Known{"ZB", Product::Zeltobilancio}, Known{"Q2", Product::Tarsena2},
                            Known{"ZM", Product::Zeltomodelli}};

/// What the machine has of one product.
struct Found {
  std::string serverVersion;
  std::string clientVersion;
  InstalledMode mode = InstalledMode::Absent;
};

/// Without a product report (none is begun) the checks write nothing.
Found searched(Program& program, const std::string& id) {
  const auto* const known = std::find_if(kKnown.begin(), kKnown.end(), [&id](const Known& product) {
    return equalNoCase(product.id, id);
  });
  if (known == kKnown.end()) {
    return {};
  }
  const bool standalone = modProdTrelvInfo::VerifyInstallationMode(program, known->code);
  const ProductInformation& record = program.state.inventory.product;
  Found found{record.serverVersion, record.clientVersion, InstalledMode::Absent};
  if (standalone) {
    found.mode = InstalledMode::Standalone;
  } else if (!found.serverVersion.empty() && !found.clientVersion.empty()) {
    found.mode = InstalledMode::Integrated;
  }
  return found;
}

/// On an integrated machine a start takes no product for one on its own, whatever its folders are.
bool countsAsStandalone(const InstalledSide& row, bool integrated) {
  return row.mode == InstalledMode::Standalone && (!integrated || row.recorded.empty());
}

ProductState compared(const InstalledSide& row) {
  const std::uint64_t recorded = modProdTrelvManager::VersionNumber(row.recorded);
  const std::uint64_t configured = modProdTrelvManager::VersionNumber(row.configured);
  if (recorded == configured) {
    return ProductState::Ok;
  }
  return recorded < configured ? ProductState::Older : ProductState::Newer;
}

ProductState stateOf(const InstalledSide& row, bool integrated) {
  if (countsAsStandalone(row, integrated)) {
    return ProductState::Standalone;
  }
  if (!row.recorded.empty()) {
    return compared(row);
  }
  if (!row.found.value_or("").empty()) {
    return ProductState::Unrecorded;
  }
  return row.configured.empty() ? ProductState::Absent : ProductState::Missing;
}

/// What is true of the whole machine.
struct Workstation {
  bool searchable = false;
  bool integrated = false;
};

void addProduct(Program& program, const std::string& serverPath, const Workstation& workstation,
                const CatalogueEntry& entry, std::vector<InstalledSide>& rows) {
  const Found found = workstation.searchable ? searched(program, entry.id) : Found();
  for (const Side side : {Side::Server, Side::Client}) {
    if (side == Side::Client && !workstation.searchable) {
      continue;
    }
    InstalledSide row;
    row.product = entry.id;
    row.side = side;
    row.recorded = recordedVersion(program, versionRecord(program, side, serverPath), entry.id);
    row.configured = configuredVersion(program, entry.configuration, side);
    if (workstation.searchable) {
      row.found = side == Side::Server ? found.serverVersion : found.clientVersion;
      row.mode = found.mode;
    }
    row.state = stateOf(row, workstation.integrated);
    rows.push_back(row);
  }
}

bool isListed(const std::vector<CatalogueEntry>& entries, const char* id) {
  return std::any_of(entries.begin(), entries.end(),
                     [id](const CatalogueEntry& entry) { return equalNoCase(entry.id, id); });
}

}  // namespace

std::vector<InstalledSide> installedProducts(Program& program, const std::string& serverPath) {
  std::string recordedPath;
  // Registry, store and the ini files of the Windows folder: only Windows has them.
  Workstation workstation{isWindows(program.machine.system), false};
  workstation.integrated = workstation.searchable && modMain::VerifyConfig(program, recordedPath);
  std::vector<CatalogueEntry> entries = walkedEntries(program, serverPath);
  for (const Known& known : kKnown) {
    if (!isListed(entries, known.id)) {
      entries.push_back({0, known.id, "", "", ""});
    }
  }
  std::vector<InstalledSide> rows;
  for (const CatalogueEntry& entry : entries) {
    addProduct(program, serverPath, workstation, entry, rows);
  }
  return rows;
}

std::string stateName(ProductState state) {
  static constexpr std::array kNames{"ok",         "missing",    "older", "newer",
                                     "unrecorded", "standalone", "absent"};
  return kNames.at(static_cast<std::size_t>(state));
}

std::string modeName(InstalledMode mode) {
  static constexpr std::array kNames{"absent", "integrated", "standalone"};
  return kNames.at(static_cast<std::size_t>(mode));
}

bool isGood(ProductState state) {
  return state == ProductState::Ok || state == ProductState::Absent;
}

}  // namespace trelv::kit
