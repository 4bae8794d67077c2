#include "inventory/InstallationMode.h"

#include "base/Text.h"
#include "base/Trap.h"
#include "inventory/PresenceChecks.h"
#include "inventory/ProductReport.h"
#include "platform/modLibrary.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvInfo {
namespace {

/// Characters of the buffers that names are asked with.
constexpr std::uint32_t kConnectionNameSize = 255;
constexpr std::uint32_t kDeviceNamesSize = 256;
/// More than all devices of a machine take.
constexpr std::uint32_t kMostDeviceNames = 1U << 20U;
/// The two NULs that close the list of device names.
constexpr std::size_t kClosingNuls = 2;

/// Device behind a drive ("S:"); empty when the system does not tell it.
std::string deviceName(Program& program, const std::string& drive) {
  std::string names;
  SystemCode code = system_code::kInsufficientBuffer;
  for (std::uint32_t size = kDeviceNamesSize;
       code == system_code::kInsufficientBuffer && size <= kMostDeviceNames; size *= 2) {
    code = program.machine.system.deviceNames(drive, size, names);
  }
  if (code != system_code::kSuccess || names.size() < kClosingNuls) {
    return {};
  }
  names.resize(names.size() - kClosingNuls);
  return modLibrary::CutAtNul(names);
}

/// What a network drive ("S:") leads to: its share, or the device where no share is told.
std::string targetOf(Program& program, const std::string& drive) {
  std::string name;
  const SystemCode code = program.machine.system.connectionName(drive, kConnectionNameSize, name);
  return code == system_code::kSuccess ? name : deviceName(program, drive);
}

bool clientIsThere(Program& program, const std::string& name) {
  if (program.state.inventory.product.clientFolder.empty()) {
    return false;
  }
  program.log.WriteLog("Gestione ProdTrelv - Esiste il file ini locale di " + name);
  WriteProductReport(program, "Rilevata la presenza del prodotto " + name +
                                  " installato in modalità Standard. Rilevata presenza componenti "
                                  "client");
  return true;
}

bool serverIsThisMachine(Program& program, const std::string& name) {
  std::string folder = program.state.inventory.product.serverFolder;
  if (folder.empty()) {
    return false;
  }
  program.log.WriteLog("Gestione ProdTrelv - Controllo cartella installazione server di " + name);
  if (IsServerPathRemote(program, folder)) {
    return false;
  }
  program.log.WriteLog(
      "Gestione ProdTrelv - Il path del server è una unità connessa sulla macchina " + name);
  WriteProductReport(program, "Rilevata la presenza del prodotto " + name +
                                  " installato in modalità Standard. Rilevata presenza componenti "
                                  "server");
  return true;
}

/// Kept: of an integrated product both sides are expected; one alone is told like none.
void tellOtherMode(Program& program, const std::string& name) {
  const ProductInformation& record = program.state.inventory.product;
  if (!record.serverVersion.empty() && !record.clientVersion.empty()) {
    program.log.WriteLog("Gestione ProdTrelv - " + name + " NON è in modalità standalone");
    WriteProductReport(program, "Il prodotto " + name + " installato in modalità integrata.");
  } else {
    program.log.WriteLog("Gestione ProdTrelv - " + name + " NON è installato");
    WriteProductReport(program, "Il prodotto " + name + " non è installato.");
  }
}

bool isStandalone(Program& program, Product productCode) {
  const std::string name = modProdTrelvLibrary::ConvertNumberToProduct(productCode);
  program.log.WriteLog("Gestione ProdTrelv - Verifica modalità installazione " + name);
  CheckProduct(program, productCode);
  if (clientIsThere(program, name) || serverIsThisMachine(program, name)) {
    program.log.WriteLog("Gestione ProdTrelv - " + name + " è in modalità standalone");
    return true;
  }
  tellOtherMode(program, name);
  return false;
}

}  // namespace

bool VerifyInstallationMode(Program& program, Product productCode) {
  return trap(
      [&]() -> bool { return isStandalone(program, productCode); },
      [&](const RuntimeError& failure) -> bool {
        // Unknown codes tell their number in the source.
        program.log.WriteLog("Gestione ProdTrelv - Errore in verifica modalità installazione: " +
                             failure.source() + " " + failure.description());
        return false;
      });
}

bool IsServerPathRemote(Program& program, std::string& path) {
  if (path.size() > 1 && path[1] == ':') {
    const std::string drive = path.substr(0, 2);
    if (program.machine.system.driveType(drive + "\\") != machine::drive_type::kNetwork) {
      return false;
    }
    path = targetOf(program, drive) + path.substr(2);
  }
  std::string computer;
  if (program.machine.system.computerName(computer) != system_code::kSuccess) {
    // Kept: without a name every share counts as one of this computer.
    computer.clear();
  }
  return upperCase(path).find("\\" + upperCase(computer) + "\\") == std::string::npos;
}

}  // namespace trelv::modProdTrelvInfo
