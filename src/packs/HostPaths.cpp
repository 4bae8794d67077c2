#include "packs/HostPaths.h"

#include <optional>

#include "platform/modConfig.h"

namespace trelv::hostPaths {
namespace {

/// Asked of the configuration store once: two paths of each product lead through it, and a store
/// that is missing is to be reported once, not for each of them.
const std::string& clientFolder(Program& program) {
  std::optional<std::string>& folder = program.state.startup.clientFolder;
  if (!folder) {
    folder = modConfig::DeterminaPathClient(program);
  }
  return *folder;
}

}  // namespace

std::string catalogue(const std::string& serverPath) {
  return serverPath + "\\prg\\com\\setup\\aggdovra\\agdvcomp.ini";
}

std::string productConfiguration(const std::string& serverPath, const std::string& conf) {
  return serverPath + "\\" + conf;
}

std::string serverVersionRecord(const std::string& serverPath) {
  return serverPath + "\\prg\\etc\\agdvver.ini";
}

std::string clientVersionRecord(Program& program) {
  return clientFolder(program) + "\\agdvver.ini";
}

std::string serverLock(const std::string& serverPath) {
  return serverPath + "\\prg\\tempterm\\agdv.lck";
}

// Kept: no backslash between the client folder and the name, unlike the record above, so C:\Lumo
// gives C:\Lumoagdv.lck, beside the folder. Every workstation in use looks for the lock there.
std::string clientLock(Program& program) { return clientFolder(program) + "agdv.lck"; }

std::string setupFolder(const std::string& serverPath) {
  return serverPath + "\\prg\\com\\setup\\aggdovra";
}

std::string dovraRelease(const std::string& serverPath) { return serverPath + "\\prg\\etc\\dvrel"; }

}  // namespace trelv::hostPaths
