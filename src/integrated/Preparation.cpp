#include "integrated/Preparation.h"

#include <vector>

#include "base/Codes.h"
#include "integrated/LoggedStep.h"
#include "inventory/RegisteredComponent.h"
#include "packs/Deregistration.h"
#include "platform/modLibrary.h"
#include "platform/modRegistry.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

constexpr const char* kProgramsKey = "SOFTWARE\\LUMO\\Programmi";

/// What differs between Zeltobilancio and Tarsena2.
struct ServerPreparation {
  Product versionOf;
  const char* startLine;
  const char* iniLine;
};

struct ClientPreparation {
  Product versionOf;
  const char* startLine;
  const char* iniLine;
  const char* keyLine;
  const char* valueLine;
  const char* windowsFilesLine;
  std::vector<const char*> windowsFiles;
};

std::string truthWord(bool value) { return value ? "True" : "False"; }

bool isRecorded(Program& program, Product product, const std::string& record) {
  const std::string id = modProdTrelvLibrary::ConvertNumberToProduct(product);
  return !modLibrary::ReadSetting(program, {record, id, "version"}).empty();
}

/// lumow.ini learns where the archives are. The platform's answer is put behind `line`.
void pointToServer(Program& program, const std::string& serverPath, const std::string& line) {
  const std::string windows = modLibrary::WindowsFolder(program);
  // Without the folder, which was reported, the name alone would lie in the root of a drive.
  const std::uint32_t written =
      windows.empty() ? 0
                      : modLibrary::WriteSetting(
                            program, {windows + "\\Lumow.ini", "Archivi", "Path"}, serverPath);
  program.log.WriteLog(line + std::to_string(written));
}

void registerLocalPath(Program& program, const std::string& programsPath,
                       const ClientPreparation& preparation) {
  const bool made = modRegistry::CreateKey(program, kProgramsKey, machine::Hive::LocalMachine);
  program.log.WriteLog(preparation.keyLine + truthWord(made));
  const bool set =
      modRegistry::SetKeyValue(program, machine::Hive::LocalMachine, kProgramsKey, "PathLocale",
                               programsPath + "\\dovra\\bilancio", machine::value_type::kText);
  program.log.WriteLog(preparation.valueLine + truthWord(set));
}

/// A bare file name: the platform puts the file into the Windows folder, on a Terminal Server into
/// the user's own.
void writeWindowsValue(Program& program, const IniAddress& address, const std::string& value) {
  orGoOn(program, [&]() -> void {
    if (modLibrary::WriteSetting(program, address, value) == 0) {
      throw RuntimeError(runtime_number::kPathAccess, "TrelvManager",
                         "Impossibile scrivere " + address.section + "/" + address.key +
                             " nel file: " + address.file);
    }
  });
}

void writeWindowsFiles(Program& program, const ClientPreparation& preparation) {
  program.log.WriteLog(preparation.windowsFilesLine);
  const std::string windows = modLibrary::WindowsFolder(program);
  for (const char* const file : preparation.windowsFiles) {
    writeWindowsValue(program, {file, "TipoInstallazione", "Tipo"}, "Client");
    writeWindowsValue(program, {file, "Parametri", "PathCheck"}, windows);
  }
}

void prepareServer(Program& program, const std::string& serverPath,
                   const ServerPreparation& preparation) {
  if (isRecorded(program, preparation.versionOf, hostPaths::serverVersionRecord(serverPath))) {
    return;
  }
  program.log.WriteLog(preparation.startLine);
  pointToServer(program, serverPath, preparation.iniLine);
}

void prepareClient(Program& program, const InstallationPaths& paths,
                   const ClientPreparation& preparation) {
  if (isRecorded(program, preparation.versionOf, hostPaths::clientVersionRecord(program))) {
    return;
  }
  program.log.WriteLog(preparation.startLine);
  pointToServer(program, paths.server, preparation.iniLine);
  registerLocalPath(program, paths.programs, preparation);
  if (program.state.startup.pluginProduct != PluginProduct::Dovra) {
    writeWindowsFiles(program, preparation);
  }
}

void deregisterOldNerio(Program& program) {
  program.log.WriteLog(
      "Gestione ProdTrelv - Preparazione installazione Nerio. Verifica se esistono componenti "
      "registrate preesistenti");
  const std::string folder = modProdTrelvInfo::NerioComponentFolder(program);
  if (folder.empty()) {
    return;
  }
  program.log.WriteLog(
      "Gestione ProdTrelv - Preparazione installazione Nerio.Deregistrazione componenti esistenti "
      "su altro path " +
      folder);
  DeregisterOcxInFolder(program, folder + "\\setup");
}

/// `record`: that of the side.
void PreparaInstNerio(Program& program, const std::string& serverPath, const std::string& record) {
  if (isRecorded(program, Product::Nerio, record)) {
    return;
  }
  program.log.WriteLog("Gestione ProdTrelv - Preparazione installazione server/client Nerio");
  if (!modLibrary::FileExists(program,
                              hostPaths::productsFolder(serverPath) + "\\nerio\\nerio.exe")) {
    deregisterOldNerio(program);
  }
}

void PreparaInstSrvTarsena2(Program& program, const std::string& serverPath) {
  prepareServer(
      program, serverPath,
      {Product::Tarsena2, "Gestione ProdTrelv - Preparazione installazione server Tarsena2",
       "Gestione ProdTrelv - PreparaInstSrvTarsena2 WritePrivateProfileString Byte scritti = "});
}

void PreparaInstSrvBilancio(Program& program, const std::string& serverPath) {
  prepareServer(program, serverPath,
                {Product::Zeltobilancio,
                 "Gestione ProdTrelv - Preparazione installazione server Zeltobilancio",
                 "Gestione ProdTrelv - PreparaInstSrvBilancio WritePrivateProfileString Byte "
                 "scritti = "});
}

void PreparaInstClientTarsena2(Program& program, const InstallationPaths& paths) {
  // Kept: asks for Zeltobilancio's version, not its own. Where Zeltobilancio is recorded on the
  // client its preparation has already done all this but the ini files of Tarsena2.
  prepareClient(
      program, paths,
      {Product::Zeltobilancio,
       "Gestione ProdTrelv - Preparazione installazione client Tarsena2",
       "Gestione ProdTrelv - PreparaInstClientTarsena2 WritePrivateProfileString Byte scritti = ",
       "Gestione ProdTrelv - PreparaInstClientTarsena2 CreateKey SOFTWARE\\LUMO\\Programmi  ",
       "Gestione ProdTrelv - PreparaInstClientTarsena2 SetKeyValue SOFTWARE\\LUMO\\Programmi "
       "PathLocale   ",
       "Aggiornamento ini della windir caso installazione Tarsena Client",
       {"rating.ini", "valutazione.ini", "RatingValutazione.ini"}});
}

void PreparaInstClientBilancio(Program& program, const InstallationPaths& paths) {
  prepareClient(
      program, paths,
      {Product::Zeltobilancio,
       "Gestione ProdTrelv - Preparazione installazione client Zeltobilancio",
       "Gestione ProdTrelv - PreparaInstClientBilancio WritePrivateProfileString Byte scritti = ",
       "Gestione ProdTrelv - PreparaInstClientBilancio CreateKey SOFTWARE\\LUMO\\Programmi  ",
       "Gestione ProdTrelv - PreparaInstClientBilancio SetKeyValue SOFTWARE\\LUMO\\Programmi "
       "PathLocale   ",
       "Aggiornamento ini della windir caso installazione Bilancio Client",
       {"zeltobilancio.ini", "bilancioconsolidato.ini", "calcoloimposte.ini", "BilancioIas.ini",
        "ConsolidatoIas.ini", "Cooperative.ini", "EntiFinanziari.ini"}});
}

}  // namespace

void PreparaInstSrvAll(Program& program, const std::string& serverPath) {
  PreparaInstSrvTarsena2(program, serverPath);
  PreparaInstSrvBilancio(program, serverPath);
  PreparaInstNerio(program, serverPath, hostPaths::serverVersionRecord(serverPath));
}

void PreparaInstClientAll(Program& program, const InstallationPaths& paths) {
  PreparaInstClientTarsena2(program, paths);
  PreparaInstClientBilancio(program, paths);
  PreparaInstNerio(program, paths.server, hostPaths::clientVersionRecord(program));
}

}  // namespace trelv::modProdTrelvManager
