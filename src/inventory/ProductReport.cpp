#include "inventory/ProductReport.h"

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/GeneralDate.h"
#include "platform/modLibrary.h"

namespace trelv::modProdTrelvInfo {
namespace {

constexpr const char* kFileName = "ProdInfo.txt";

/// One step on the report, whose failure is told in one log line.
template <class Step>
void orTell(Program& program, Step&& step) {
  resumeNext(std::forward<Step>(step), [&program](const RuntimeError& failure) -> void {
    program.log.WriteLog("Gestione ProdTrelv - Errore in scrittura file informazioni: " +
                         failure.description());
  });
}

void require(SystemCode code, const std::string& path) {
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
}

/// The log folder, which is the run log's too: whoever comes first fills it.
const std::string& logFolder(Program& program, const std::string& temporaryFolder) {
  std::string& folder = program.state.runLog.logFolder;
  if (folder.empty() && !temporaryFolder.empty()) {
    folder = temporaryFolder + "log";
  }
  return folder;
}

/// The log folder may lie elsewhere: the temporary folder is made all the same.
void makeFolders(Program& program, std::string temporaryFolder, const std::string& folder) {
  modLibrary::TrimFolder(temporaryFolder);
  if (!temporaryFolder.empty()) {
    modLibrary::CreaCartella(program, temporaryFolder);
  }
  modLibrary::CreaCartella(program, folder);
}

}  // namespace

void CreateProductReport(Program& program) {
  orTell(program, [&]() -> void {
    const std::string temporaryFolder = modLibrary::GetTempDirectory(program);
    const std::string& folder = logFolder(program, temporaryFolder);
    if (folder.empty()) {
      throw RuntimeError(runtime_number::kPathNotFound, "TrelvManager",
                         "Cartella temporanea non disponibile");
    }
    program.state.inventory.reportFile = folder + "\\" + kFileName;
    if (!modLibrary::FolderExists(program, temporaryFolder + "\\log")) {
      makeFolders(program, temporaryFolder, folder);
    }
    const std::string& report = program.state.inventory.reportFile;
    require(program.machine.files.write(report, ""), report);
  });
}

void WriteProductReport(Program& program, const std::string& text) {
  const std::string& report = program.state.inventory.reportFile;
  if (report.empty() || !modLibrary::FileExists(program, report)) {
    return;
  }
  orTell(program, [&]() -> void {
    const std::string date = generalDate(program.machine.locale, program.machine.clock.now());
    const std::string line = "[" + date + "] - " + text + kCrLf;
    require(program.machine.files.append(report, program.machine.locale.toAnsi(line)), report);
  });
}

}  // namespace trelv::modProdTrelvInfo
