#include "kit/HostProducts.h"

#include <functional>

#include "base/Text.h"
#include "packs/ProductConfiguration.h"
#include "packs/ProductUpdateRun.h"
#include "platform/modConfig.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit {
namespace {

using modProdTrelvManager::VersionNumber;

/// Calls `visit` with the version of each section that has a command of the side, in their order.
void forEachSection(Program& program, const std::string& configuration, Operation operation,
                    Side side, const std::function<void(const std::string&)>& visit) {
  if (configuration.empty()) {
    return;
  }
  const std::string kind = modProdTrelvLibrary::ConvertSetupUpdateToString(operation);
  const std::string command = modProdTrelvLibrary::ConvertClientServerToString(side) + twoDigits(1);
  for (int index = 1; index <= modProdTrelvManager::kMostSections; ++index) {
    const std::string section = kind + twoDigits(index);
    if (!modLibrary::ReadSetting(program, {configuration, section, command}).empty()) {
      visit(modLibrary::ReadSetting(program, {configuration, section, "version"}));
    }
  }
}

}  // namespace

std::string serverPathOf(const GivenPath& host) {
  std::string path = host.full();
  modLibrary::TrimFolder(path);
  return path;
}

std::vector<CatalogueEntry> walkedEntries(Program& program, const std::string& serverPath) {
  const std::string catalogue = hostPaths::catalogue(serverPath);
  std::vector<CatalogueEntry> entries;
  for (int index = 1; index <= modProdTrelvLibrary::kMostCatalogueEntries; ++index) {
    const std::string section = modProdTrelvLibrary::CatalogueSection(index);
    const std::string conf = modLibrary::ReadSetting(program, {catalogue, section, "conf"});
    if (conf.empty()) {
      break;
    }
    entries.push_back({index, modLibrary::ReadSetting(program, {catalogue, section, "id"}),
                       modLibrary::ReadSetting(program, {catalogue, section, "name"}), conf,
                       hostPaths::productConfiguration(serverPath, conf)});
  }
  return entries;
}

std::string versionRecord(Program& program, Side side, const std::string& serverPath) {
  if (side == Side::Server) {
    return hostPaths::serverVersionRecord(serverPath);
  }
  std::string clientFolder;
  modConfig::GetConfigPath(program, clientFolder);
  return clientFolder.empty() ? std::string() : hostPaths::clientVersionRecord(program);
}

std::string recordedVersion(Program& program, const std::string& record, const std::string& id) {
  return record.empty() || id.empty() ? std::string()
                                      : modLibrary::ReadSetting(program, {record, id, "version"});
}

std::string configuredVersion(Program& program, const std::string& configuration, Side side) {
  std::string highest;
  for (const Operation operation : {Operation::Setup, Operation::Update}) {
    forEachSection(program, configuration, operation, side,
                   [&highest](const std::string& version) -> void {
                     if (VersionNumber(version) > VersionNumber(highest)) {
                       highest = version;
                     }
                   });
  }
  return highest;
}

bool isWorkWaiting(Program& program, const std::string& configuration, Side side,
                   const std::string& recorded) {
  bool waiting = false;
  forEachSection(program, configuration, recorded.empty() ? Operation::Setup : Operation::Update,
                 side, [&](const std::string& version) -> void {
                   waiting = waiting || VersionNumber(version) > VersionNumber(recorded);
                 });
  return waiting;
}

}  // namespace trelv::kit
