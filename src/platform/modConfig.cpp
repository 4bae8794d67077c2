#include "platform/modConfig.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/SiteFile.h"
#include "platform/modLibrary.h"
#include "platform/modRegistry.h"

namespace trelv::modConfig {
namespace {

constexpr const char* kModule = "modConfig";

/// Length of the buffer that receives a value or a path.
constexpr std::size_t kBufferLength = 1000;
/// A read that finds an empty document meets a writer at work: it is tried this often.
constexpr int kMostReads = 3;
/// Kind of the configuration path.
constexpr std::int32_t kPathKind = 1;

namespace code {
constexpr std::int32_t kDone = 0;
constexpr std::int32_t kDocumentEmpty = -1000;
constexpr std::int32_t kFirstNotFound = -3001;
constexpr std::int32_t kLastNotFound = -3999;
constexpr std::int32_t kNoSchemaPointer = -4001;
constexpr std::int32_t kNoConfigPointer = -4002;
constexpr std::int32_t kNoSchemaFile = -4011;
constexpr std::int32_t kNoConfigFile = -4012;
constexpr std::int32_t kNoClientFile = -4013;
constexpr std::int32_t kLibraryFailed = -9999;
}  // namespace code

struct Product {
  std::int32_t code;
  const char* name;
};

/// The names that the suite itself gives. Those of its other products are the site's.
constexpr std::array<Product, 6> kSuiteProducts{{
    {1, "PELAN"},
    {11, "LUMO770"},
    {kProductDovra, "DOVRA"},
    {17, "TRAVOLIN"},
    {18, "DVSTUDIO"},
    {kProductSystem, "SYSTEM"},
}};

/// Product whose settings tell where the suite Travolin lies.
constexpr std::int32_t kProductOfTravolinPaths = 10;

struct Meaning {
  std::int32_t code;
  const char* text;
};

constexpr std::array<Meaning, 26> kMeanings{{
    {0, "No Errors"},
    {-1000, "Document Empty"},
    {-1010, "Node Not Found"},
    {-1020, "End Of Node Reached"},
    {-1030, "Child Node Not Found"},
    {-1040, "Node Attribute Not Found"},
    {-2000, "Insert Node Failed"},
    {-3000, "Navigate Generic Error"},
    {-3001, "Product Not Found"},
    {-3002, "Section Not Found"},
    {-3003, "Key Not Found"},
    {-3004, "Attribute Not Found"},
    {-3005, "Attribute Value Not Found"},
    {-4001, "Registry Key Schema Not Found"},
    {-4002, "Registry Key Config Not Found"},
    {-4011, "Schema File Not Found"},
    {-4012, "Config File Not Found"},
    {-4013, "Config File Client Not Found"},
    {-5000, "Schema Validation Failed"},
    {-5001, "Product Param Invalid"},
    {-5002, "Section Param Invalid"},
    {-5003, "Key Param Invalid"},
    {-5004, "Attribute Param Invalid"},
    {-5005, "Attribute Value Invalid"},
    {-6000, "Attribute Type Invalid"},
    {-9999, ""},
}};

template <class Result, class Body>
Result guarded(Program& program, const char* procedure, const std::string& message,
               Result onFailure, Body&& body) {
  return loggedTrap(program.log, program.errors, kModule, procedure, message, std::move(onFailure),
                    std::forward<Body>(body));
}

/// Done, or an answer that every caller can live with: nothing is found, or this workstation has no
/// client configuration.
bool isSilent(std::int32_t answer) {
  return answer == code::kDone || answer == code::kNoClientFile ||
         (answer <= code::kFirstNotFound && answer >= code::kLastNotFound);
}

bool hasNoPath(std::int32_t answer) {
  return answer == code::kNoSchemaPointer || answer == code::kNoConfigPointer ||
         answer == code::kNoSchemaFile || answer == code::kNoConfigFile;
}

/// Text before the first NUL of a buffer that a library filled; raises when there is none, since
/// the text may have been cut.
std::string received(const std::string& buffer) {
  const std::size_t end = buffer.find('\0');
  if (end == std::string::npos) {
    throw RuntimeError(runtime_number::kInvalidCall, "TrelvManager", "Valore troppo lungo");
  }
  return buffer.substr(0, end);
}

std::string failureText(Program& program, const std::string& what, std::int32_t answer,
                        const SettingAddress& address) {
  return what + ErrorText(answer) + kCrLf + "Sezione: " + address.section + kCrLf +
         "Chiave: " + address.key + kCrLf + "Prodotto: " + ProductName(program, address.product);
}

/// The configuration path and the library's answer; raises when the library cannot be called.
std::int32_t readConfigPath(Program& program, std::string& path) {
  path.clear();
  std::string buffer(kBufferLength, '\0');
  const std::int32_t answer = program.machine.configuration.getConfigPath(kPathKind, buffer);
  if (hasNoPath(answer)) {
    return answer;
  }
  path = received(buffer);
  return code::kDone;
}

/// The folder that tells of the suite Travolin, from the store or else from its ini file; may be
/// empty.
std::string travolinFolder(Program& program) {
  constexpr auto kSize = static_cast<std::int32_t>(kBufferLength);
  std::string folder;
  GetParameterXML(program, {kProductOfTravolinPaths, "Client", "PathPelan", "default"},
                  kDefaultValue, kSize, folder);
  if (folder == kDefaultValue) {
    GetParameterXML(program, {kProductOfTravolinPaths, "Server", "Path", "default"}, kDefaultValue,
                    kSize, folder);
  }
  if (folder == kDefaultValue) {
    folder = modLibrary::ReadSetting(
        program, {siteFile::Names(program).travolinIniFile, "Parametri", "PathPelan"});
  }
  return folder;
}

}  // namespace

std::string ProductName(Program& program, std::int32_t code) {
  const auto* const given = std::find_if(kSuiteProducts.begin(), kSuiteProducts.end(),
                                         [code](const Product& p) { return p.code == code; });
  if (given != kSuiteProducts.end()) return given->name;
  const auto& names = siteFile::Names(program).storeProducts;
  const auto found = names.find(code);
  return found != names.end() ? found->second : "";
}

std::int32_t ProductCode(Program& program, const std::string& name) {
  const std::string wanted = upperCase(name);
  const auto* const given = std::find_if(kSuiteProducts.begin(), kSuiteProducts.end(),
                                         [&wanted](const Product& p) { return wanted == p.name; });
  if (given != kSuiteProducts.end()) return given->code;
  const auto& names = siteFile::Names(program).storeProducts;
  const auto found = std::find_if(names.begin(), names.end(),
                                  [&wanted](const auto& entry) { return wanted == entry.second; });
  return found != names.end() ? found->first : 0;
}

bool GetParameterXML(Program& program, const SettingAddress& address,
                     const std::string& defaultValue, std::int32_t bufferSize, std::string& value) {
  const std::string what = "Errore in lettura chiave da file di configurazione: ";
  value.clear();
  return guarded(program, "GetParameterXML", what, false, [&]() -> bool {
    const std::size_t length =
        std::max(kBufferLength, static_cast<std::size_t>(std::max(bufferSize, 0)));
    std::string buffer;
    std::int32_t answer = code::kDocumentEmpty;
    for (int reads = 0; answer == code::kDocumentEmpty && reads < kMostReads; ++reads) {
      buffer.assign(length, '\0');
      answer = program.machine.configuration.getParameter(
          ProductName(program, address.product), address.section, address.key, address.attribute,
          defaultValue, bufferSize, buffer);
    }
    value = received(buffer);
    if (isSilent(answer)) {
      return true;
    }
    program.errors.VisualizzaErrore(kModule, "GetParameterXML",
                                    failureText(program, what, answer, address),
                                    ReportKind::ConfigurationFile, RuntimeError());
    return false;
  });
}

bool SetParameterXML(Program& program, const SettingAddress& address, std::int32_t attributeType,
                     const std::string& value) {
  const std::string what = "Errore in scrittura chiave da file di configurazione: ";
  return guarded(program, "SetParameterXML", what, false, [&]() -> bool {
    const std::int32_t answer = program.machine.configuration.setParameter(
        ProductName(program, address.product), address.section, address.key, address.attribute,
        attributeType, value);
    if (isSilent(answer)) {
      return true;
    }
    program.errors.VisualizzaErrore(kModule, "SetParameterXML",
                                    failureText(program, what, answer, address),
                                    ReportKind::ProgramError, RuntimeError());
    return false;
  });
}

std::int32_t GetConfigPath(Program& program, std::string& path) {
  return guarded(program, "GetConfigPath",
                 "Errore in lettura percorso di configurazione: ", code::kLibraryFailed,
                 [&]() { return readConfigPath(program, path); });
}

std::string ErrorText(std::int32_t code) {
  const auto* const found = std::find_if(kMeanings.begin(), kMeanings.end(),
                                         [code](const Meaning& m) { return m.code == code; });
  return found != kMeanings.end() ? found->text : "Unknown Error";
}

std::string DeterminaPathClient(Program& program) {
  std::string path;
  const auto report = [&](const RuntimeError& failure) -> std::string {
    program.errors.VisualizzaErrore(
        kModule, "DeterminaPathClient",
        std::string("Verificare i seguenti parametri: ") + kCrLf + "sPathProgrammi: " + path,
        ReportKind::ProgramError, failure);
    return {};
  };
  return trap(
      [&]() -> std::string {
        return readConfigPath(program, path) == code::kDone ? path : report(RuntimeError());
      },
      report);
}

bool EsisteSuiteFerax(Program& program) {
  modRegistry::Variant value;
  const bool found = modRegistry::QueryValue(program, machine::Hive::LocalMachine,
                                             "Software\\FerPrg", "sistema", value);
  const auto* const text = std::get_if<std::string>(&value);
  return found && text != nullptr && *text == "0";
}

bool EsisteSuiteTravolin(Program& program) {
  program.log.WriteLog("Gestione ProdTrelv - Verifica Esistenza Travolin");
  std::string path;
  const std::int32_t answer = GetConfigPath(program, path);
  if (answer != code::kDone) {
    program.log.WriteLog("Suite Lumo non trovata in registro: Errore riscontrato " +
                         std::to_string(answer));
    return false;
  }
  const std::string folder = travolinFolder(program);
  if (folder.empty()) {
    program.log.WriteLog("Suite travolin non trovata ");
    return false;
  }
  program.log.WriteLog("Suite travolin trovata cartella : " + folder);
  return true;
}

}  // namespace trelv::modConfig
