#include "startup/HostPaths.h"

#include <optional>

#include "platform/modConfig.h"

namespace trelv::hostPaths {
namespace {

/// Asked of the configuration store once: two paths of each product lead through it, and a store
/// that is missing is to be reported once, not for each of them.
const std::string& programsPath(Program& program) {
  std::optional<std::string>& path = program.state.startup.reportedProgramsPath;
  if (!path) {
    path = modConfig::DeterminaPathClient(program);
  }
  return *path;
}

}  // namespace

std::string topFolder(const std::string& serverPath) { return serverPath + "\\" + kTop; }

std::string setupFolder(const std::string& serverPath) { return serverPath + "\\" + kSetups; }

std::string clientCopyFolder(const std::string& serverPath) {
  return serverPath + "\\" + kClientCopy;
}

std::string copiesFolder(const std::string& serverPath) { return serverPath + "\\" + kCopies; }

std::string recordFolder(const std::string& serverPath) { return serverPath + "\\" + kRecords; }

std::string temporaryFolder(const std::string& serverPath) {
  return serverPath + "\\" + kTemporary;
}

std::string pluginFolder(const std::string& serverPath) { return serverPath + "\\" + kPlugin; }

std::string productsFolder(const std::string& root) { return root + "\\" + kProducts; }

std::string catalogue(const std::string& serverPath) {
  return setupFolder(serverPath) + "\\" + kCatalogueFile;
}

std::string productConfiguration(const std::string& serverPath, const std::string& conf) {
  return serverPath + "\\" + conf;
}

std::string serverVersionRecord(const std::string& serverPath) {
  return recordFolder(serverPath) + "\\agdvver.ini";
}

std::string clientVersionRecord(Program& program) {
  return programsPath(program) + "\\agdvver.ini";
}

std::string serverLock(const std::string& serverPath) {
  return temporaryFolder(serverPath) + "\\agdv.lck";
}

// Kept: no backslash between the programs path and the name, unlike the record above, so C:\Lumo
// gives C:\Lumoagdv.lck, beside the folder. Every workstation in use looks for the lock there.
std::string clientLock(Program& program) { return programsPath(program) + "agdv.lck"; }

std::string directClientLock(const std::string& root) { return root + "\\agdv.lck"; }

std::string dovraRelease(const std::string& serverPath) {
  return recordFolder(serverPath) + "\\dvrel";
}

}  // namespace trelv::hostPaths
