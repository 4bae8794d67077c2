#include "inventory/PresenceChecks.h"

#include <string>
#include <variant>
#include <vector>

#include "base/Codes.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "inventory/ProductReport.h"
#include "inventory/RegisteredComponent.h"
#include "platform/modLibrary.h"
#include "platform/modRegistry.h"
#include "startup/HostPaths.h"
#include "startup/IntegrationRecord.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvInfo {
namespace {

// Ini files without a folder: those of the Windows folder.
constexpr const char* kNerioIni = "NERIO.INI";
constexpr const char* kLudaIni = "LUDA.INI";
constexpr const char* kHostIni = "LUMOW.INI";
constexpr const char* kModelsIni = "Zeltomodelli.INI";

constexpr const char* kHyphens = "----------------------------------------------";

void reportBanner(Program& program, const std::string& word) {
  WriteProductReport(program,
                     std::string(kHyphens) + " VERIFICA PRESENZA " + word + " " + kHyphens);
}

/// A record as every check starts it: not found.
ProductInformation notFound(Product code, Side side) {
  ProductInformation record;
  record.productCode = code;
  record.productName = modProdTrelvLibrary::ConvertNumberToProduct(code);
  record.kind = Operation::Setup;
  record.side = side;
  return record;
}

/// A text value below HKEY_LOCAL_MACHINE; false, and empty text, when it cannot be read.
bool readMachineValue(Program& program, const std::string& keyPath, const std::string& name,
                      std::string& text) {
  modRegistry::Variant value;
  const bool read =
      modRegistry::QueryValue(program, machine::Hive::LocalMachine, keyPath, name, value);
  const auto* const number = std::get_if<std::int32_t>(&value);
  text = number != nullptr ? std::to_string(*number) : std::get<std::string>(value);
  return read;
}

// --- Nerio

std::string versionOfRegisteredNerio(Program& program, const std::string& folder) {
  if (folder.empty()) {
    WriteProductReport(program, "Nessuna componente registrata");
    return {};
  }
  WriteProductReport(program, "Componenti registrate in " + folder);
  const std::string ini = folder + "\\" + kNerioIni;
  if (!modLibrary::FileExists(program, ini)) {
    WriteProductReport(program, "File nerio.ini assente in " + folder);
    return {};
  }
  WriteProductReport(program, "File nerio.ini presente in " + folder);
  return modLibrary::ReadSetting(program, {ini, "NERIO", "Versione"});
}

ProductInformation checkNerio(Program& program) {
  reportBanner(program, "NERIO");
  ProductInformation record = notFound(Product::Nerio, Side::Server);
  record.clientFolder = modLibrary::ReadSetting(program, {kNerioIni, "Pathnames", "Homedir"});
  record.clientVersion = modLibrary::ReadSetting(program, {kNerioIni, "NERIO", "Versione"});
  if (record.clientVersion.empty()) {
    program.log.WriteLog("Gestione ProdTrelv - File Ini Nerio locale non presente");
    WriteProductReport(program, "File Nerio.ini locale ASSENTE");
  } else {
    WriteProductReport(program, "File Nerio.ini locale PRESENTE");
  }
  WriteProductReport(program, "Verifica componenti registrate");
  record.serverFolder = NerioComponentFolder(program);
  program.log.WriteLog(
      "Gestione ProdTrelv - Determino path Server di Nerio da componenti registrate");
  record.serverVersion = versionOfRegisteredNerio(program, record.serverFolder);
  if (!record.serverVersion.empty() || !record.clientVersion.empty()) {
    record.kind = Operation::Update;
  }
  return record;
}

// --- Luda

ProductInformation checkLuda(Program& program) {
  reportBanner(program, "LUDA");
  ProductInformation record = notFound(Product::Luda, Side::Server);
  const std::string folder = modLibrary::ReadSetting(program, {kLudaIni, "PathNames", "HomeDir"});
  std::string version = modLibrary::FileVersionText(program, folder + "\\luda2003.exe", true);
  if (version.empty()) {
    version = modLibrary::ReadSetting(program, {kLudaIni, "LUDA", "Versione"});
  }
  if (version.empty()) {
    WriteProductReport(program, "File ini locale ASSENTE");
  } else {
    record.kind = Operation::Update;
    WriteProductReport(program, "File ini locale PRESENTE");
  }
  record.serverVersion = version;
  record.clientVersion = version;
  record.serverFolder = folder;
  record.clientFolder = folder;
  return record;
}

// --- Bilancio and Tarsena2, which are laid out alike

/// Where the two differ. Kept: the report's lines differ in a blank and a capital, support staff
/// know each by its own.
struct Twin {
  Product code;
  const char* word;
  /// Below the products' folder of an installation, and the ini file in it.
  const char* folder;
  const char* ini;
  const char* serverIniLine;
  const char* serverIniFound;
  const char* serverIniMissing;
};

constexpr Twin kBilancio{
    Product::Zeltobilancio, "BILANCIO",          "bilancio", "mvanbil.ini", "Lettura ini Server :",
    "Ini server PRESENTE",  "Ini server ASSENTE"};
constexpr Twin kTarsena2{
    Product::Tarsena2,   "Q2", "q2", "mvq2.ini", "Lettura ini Server: ", "Ini Server PRESENTE",
    "Ini Server ASSENTE"};

constexpr const char* kProgramsKey = "Software\\Lumo\\Programmi";

/// `path`: root of an installation, as an ini file or the registry has it.
std::string folderOf(const Twin& twin, const std::string& path) {
  return hostPaths::productsFolder(trim(path)) + "\\" + twin.folder;
}

std::string installedRelease(Program& program, const std::string& ini) {
  return modLibrary::ReadSetting(program, {ini, "AMBIENTE", "VRINST"});
}

void checkTwinOnServer(Program& program, const Twin& twin, ProductInformation& record) {
  WriteProductReport(program, "Lettura informazioni installazioni server");
  const std::string path = modLibrary::ReadSetting(program, {kHostIni, "ARCHIVI", "Path"});
  if (path.empty()) {
    WriteProductReport(program, "File configurazione lumow.ini ASSENTE");
    return;
  }
  WriteProductReport(program, "File configurazione lumow.ini PRESENTE");
  const std::string folder = folderOf(twin, path);
  const std::string ini = folder + "\\" + twin.ini;
  WriteProductReport(program, twin.serverIniLine + ini);
  record.serverVersion = installedRelease(program, ini);
  if (record.serverVersion.empty()) {
    WriteProductReport(program, twin.serverIniMissing);
  } else {
    record.serverFolder = folder;
    WriteProductReport(program, twin.serverIniFound);
  }
  // Kept: the host's archives alone count as an installation on the server, whatever stands there.
  // So the product's set-up runs as an update.
  record.kind = Operation::Update;
  record.side = Side::Server;
}

void checkTwinOnClient(Program& program, const Twin& twin, ProductInformation& record) {
  WriteProductReport(program, "Lettura informazioni installazioni client");
  std::string path;
  readMachineValue(program, kProgramsKey, "PathLocale", path);
  if (path.empty()) {
    WriteProductReport(program,
                       "Lettura in HKEY_LOCAL_MACHINE\\Software\\lumo\\programmi della chiave "
                       "'PathLocale' eseguita senza successo.");
    return;
  }
  WriteProductReport(program,
                     "Lettura in HKEY_LOCAL_MACHINE\\Software\\lumo\\programmi della chiave "
                     "'PathLocale' eseguita con successo. Risultato: " +
                         path);
  const std::string folder = folderOf(twin, path);
  const std::string ini = folder + "\\" + twin.ini;
  WriteProductReport(program, "Lettura ini Client: " + ini);
  record.clientVersion = installedRelease(program, ini);
  if (record.clientVersion.empty()) {
    WriteProductReport(program, "Ini Client ASSENTE");
    return;
  }
  WriteProductReport(program, "Ini Client PRESENTE");
  record.clientFolder = folder;
  record.kind = Operation::Update;
  record.side = record.side == Side::Server ? Side::ClientServer : Side::Client;
}

ProductInformation checkTwin(Program& program, const Twin& twin) {
  ProductInformation record = notFound(twin.code, Side::None);
  reportBanner(program, twin.word);
  checkTwinOnServer(program, twin, record);
  checkTwinOnClient(program, twin, record);
  if (record.side == Side::None) {
    record.side = Side::ClientServer;
  }
  return record;
}

// --- Zeltomodelli

constexpr const char* kModelsKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe";

/// Is Zeltomodelli registered as a program of this machine?
bool modelsAreRegistered(Program& program) {
  reportBanner(program, "ZELTOMODELLI");
  WriteProductReport(program, "Verifica Chiave registro per individuazione componente installata");
  std::string path;
  if (!readMachineValue(program, kModelsKey, "Path", path)) {
    WriteProductReport(program,
                       "Lettura in HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\"
                       "CurrentVersion\\App Paths\\ZeltoMod.exe della chiave 'Path' eseguita senza "
                       "successo");
    return false;
  }
  WriteProductReport(program,
                     "Lettura in HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\"
                     "CurrentVersion\\App Paths\\ZeltoMod.exe della chiave 'Path' eseguita con "
                     "successo. Risultato " +
                         path);
  WriteProductReport(program, "Lettura Informazioni da File Ini: Zeltomodelli.INI");
  return true;
}

/// First line of a version file; an empty file has an empty one.
std::string firstLine(Program& program, const std::string& path) {
  const std::vector<std::string> lines = program.fileSystem.readLines(path);
  return lines.empty() ? std::string() : program.machine.locale.fromAnsi(lines.front());
}

void readModelsVersion(Program& program, ProductInformation& record) {
  const std::string file = trim(record.serverFolder) + "\\vers.ini";
  WriteProductReport(program, "Lettura informazioni da file " + file);
  if (!modLibrary::FileExists(program, file)) {
    return;
  }
  // A version file that cannot be read must not hide the folder that was found.
  resumeNext(
      [&]() -> void {
        record.serverVersion = firstLine(program, file);
        record.side = Side::Server;
        record.kind = Operation::Update;
      },
      [&program](const RuntimeError& failure) -> void {
        program.log.WriteLog("Gestione ProdTrelv - Errore in lettura file: " +
                             failure.description());
      });
}

void checkModelsFolder(Program& program, ProductInformation& record) {
  record.serverFolder = modLibrary::ReadSetting(program, {kModelsIni, "Parametri", "PathModelli"});
  if (record.serverFolder.empty()) {
    WriteProductReport(program, "File Ini Zeltomodelli.INI ASSENTE");
    return;
  }
  WriteProductReport(program, "File Ini PRESENTE");
  readModelsVersion(program, record);
}

ProductInformation checkZeltomodelli(Program& program) {
  ProductInformation record = notFound(Product::Zeltomodelli, Side::None);
  std::string integration;
  // Kept: on an integrated machine the report has neither banner nor registry lines.
  if (modMain::VerifyConfig(program, integration) || modelsAreRegistered(program)) {
    checkModelsFolder(program, record);
  }
  if (record.side == Side::None) {
    record.side = Side::Server;
  }
  record.clientVersion = record.serverVersion;
  record.clientFolder = record.serverFolder;
  return record;
}

/// Products that nobody looks for.
ProductInformation unchecked(Product code) {
  ProductInformation record;
  record.productCode = code;
  record.kind = Operation::Setup;
  return record;
}

}  // namespace

void CheckProduct(Program& program, Product productCode) {
  ProductInformation& record = program.state.inventory.product;
  switch (productCode) {
    case Product::Nerio:
      record = checkNerio(program);
      break;
    case Product::Luda:
      record = checkLuda(program);
      break;
    case Product::Zeltobilancio:
      record = checkTwin(program, kBilancio);
      break;
    case Product::Tarsena2:
      record = checkTwin(program, kTarsena2);
      break;
    case Product::Zeltomodelli:
      record = checkZeltomodelli(program);
      break;
    case Product::Kxk:
    case Product::Rr:
      record = unchecked(productCode);
      break;
    case Product::Veltra:
    case Product::Undefined:
      break;
  }
}

}  // namespace trelv::modProdTrelvInfo
