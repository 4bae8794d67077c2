#include "integrated/DovraCorrection.h"

#include <array>

#include "base/Text.h"
#include "integrated/LoggedStep.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::modProdTrelvManager {
namespace {

struct Correction {
  const char* section;
  const char* version;
};

/// In the order of writing.
constexpr std::array<Correction, 5> kCorrections{{{"Q2", "02.92.00.00"},
                                                  {"LUDA", "07.10.00.00"},
                                                  {"ZB", "09.93.00.00"},
                                                  {"NERIO", "03.20.30.00"},
                                                  {"ZM", "06.50.30.00"}}};

/// Characters of a release ("10.70.00") and of the start of a version.
constexpr std::size_t kReleaseLength = 8;
/// More than any first line is long.
constexpr std::size_t kReadLimit = 4096;

std::string firstLine(Program& program, const std::string& path) {
  std::string bytes;
  const SystemCode code = program.machine.files.read(path, kReadLimit, bytes);
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
  if (bytes.empty()) {
    throw RuntimeError(runtime_number::kPastEndOfFile, "TrelvManager",
                       "Lettura oltre la fine del file: " + path);
  }
  return program.machine.locale.fromAnsi(bytes.substr(0, bytes.find_first_of("\r\n")));
}

void correctRecord(Program& program, const std::string& record, const std::string& startLine) {
  const std::string recorded = modLibrary::ReadSetting(program, {record, "ZB", "version"});
  if (firstCharacters(recorded, kReleaseLength) == "09.93.00") {
    return;
  }
  program.log.WriteLog(startLine);
  bool allWritten = true;
  for (const Correction& correction : kCorrections) {
    allWritten = modLibrary::WriteSetting(program, {record, correction.section, "version"},
                                          correction.version) != 0 &&
                 allWritten;
  }
  if (!allWritten) {
    throw RuntimeError(runtime_number::kPathAccess, "TrelvManager",
                       "Impossibile correggere le versioni nel file: " + record);
  }
}

}  // namespace

void CorrectDovraBefore11(Program& program, const std::string& serverPath) {
  const std::string releaseFile = hostPaths::dovraRelease(serverPath);
  std::string release;
  orGoOn(program, [&]() -> void {
    release = firstCharacters(firstLine(program, releaseFile), kReleaseLength);
  });
  program.log.WriteLog("Gestione ProdTrelv - Prodotto Dovra riconosciuto");
  program.log.WriteLog("Gestione ProdTrelv - Verifica del valore del file: " + releaseFile);
  program.log.WriteLog("Gestione ProdTrelv - Release rilevata: " + release);
  if (release != "10.70.00") {
    return;
  }
  // Kept: 10.70.00 was found, and the line says otherwise. Who reads the log knows it so.
  program.log.WriteLog("Gestione ProdTrelv - Riconosciuta versione Dovra 05.70.00");
  orGoOn(program, [&]() -> void {
    correctRecord(program, hostPaths::serverVersionRecord(serverPath),
                  "Gestione ProdTrelv - Inizio correzione file di versione server per Dovra");
  });
  orGoOn(program, [&]() -> void {
    correctRecord(program, hostPaths::clientVersionRecord(program),
                  "Gestione ProdTrelv - Inizio correzione file di versione client per Dovra");
  });
}

}  // namespace trelv::modProdTrelvManager
