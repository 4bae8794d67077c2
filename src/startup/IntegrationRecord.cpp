#include "startup/IntegrationRecord.h"

#include <cstdint>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modConfig.h"

namespace trelv::modMain {
namespace {

/// Where the record stands in the configuration store.
modConfig::SettingAddress recordAddress() {
  return {modConfig::kProductSystem, "Complementary_Products", "Integration", "Path"};
}
/// Characters that the store may fill when the record is read.
constexpr std::int32_t kRecordSize = 1000;
/// Type of the attribute when the record is written.
constexpr std::int32_t kAttributeType = 1;

bool hostSuiteIsThere(Program& program) {
  std::string configurationPath;
  const std::int32_t status = modConfig::GetConfigPath(program, configurationPath);
  if (status == 0 && !trim(configurationPath).empty()) {
    return true;
  }
  program.log.WriteLog("Suite Lumo non trovata in registro: Errore riscontrato " +
                       std::to_string(status));
  return false;
}

bool readRecord(Program& program, std::string& path) {
  std::string value;
  // The answer is not looked at: after a reported failure the value is empty, and an empty value
  // counts as recorded. So a machine whose store cannot be read is refused, never integrated anew.
  modConfig::GetParameterXML(program, recordAddress(), modConfig::kDefaultValue, kRecordSize,
                             value);
  if (value == modConfig::kDefaultValue) {
    program.log.WriteLog("Gestione ProdTrelv - Integrazione Dovra SP non rilevata");
    return false;
  }
  path = value;
  program.log.WriteLog("Gestione ProdTrelv - Integrazione Dovra SP rilevata con: " + value);
  return true;
}

bool reportFailure(Program& program, const RuntimeError& failure) {
  program.errors.VisualizzaErrore("modMain", "VerifyConfig",
                                  "Errore in Determinazione configurazione",
                                  ReportKind::ProgramError, failure);
  program.log.WriteLog("Gestione ProdTrelv - Errore in Determinazione configurazione: " +
                       failure.description());
  return false;
}

}  // namespace

bool VerifyConfig(Program& program, std::string& path) {
  return trap(
      [&]() -> bool {
        program.log.WriteLog("Gestione ProdTrelv - Verifica integrazione con Dovra SP");
        path.clear();
        return hostSuiteIsThere(program) && readRecord(program, path);
      },
      [&](const RuntimeError& failure) -> bool { return reportFailure(program, failure); });
}

bool WriteIntegrationConfig(Program& program, const std::string& path) {
  return trap(
      [&]() -> bool {
        std::string recorded;
        if (VerifyConfig(program, recorded)) {
          return false;
        }
        program.log.WriteLog("Gestione ProdTrelv - scrittura integrazione su macchina: " + path);
        // Kept: true although the store may have refused the value, of which it has told the user
        // then; the next start finds no record and writes again.
        modConfig::SetParameterXML(program, recordAddress(), kAttributeType, path);
        return true;
      },
      [](const RuntimeError&) -> bool { return false; });
}

}  // namespace trelv::modMain
