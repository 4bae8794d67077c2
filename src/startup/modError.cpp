#include "startup/modError.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/GeneralDate.h"
#include "platform/SiteFile.h"
#include "platform/modLibrary.h"
#include "platform/modPlatform.h"
#include "startup/HarmlessReports.h"
#include "startup/frmError.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modError {
namespace {

constexpr const char* kProgramErrorHeadline =
    "Si è verificato un errore non previsto durante l'esecuzione del programma. Riportare la "
    "segnalazione al servizio di assistenza.";
constexpr const char* kConfigurationFileHeadline =
    "Si è verificato un errore non previsto durante la gestione del file di configurazione. "
    "Riportare la segnalazione al servizio di assistenza.";

constexpr std::size_t kDebugCharacters = 200;

/// Only the first line of a tool's error file counts, bytes.
constexpr std::size_t kMostReportBytes = 65536;

/// With trailing backslash, as the system gives it.
std::string temporaryFolder(Program& program) {
  std::string folder;
  const SystemCode code = program.machine.system.temporaryFolder(folder);
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, "cartella temporanea");
  }
  return folder;
}

/// Name of the running program without folder and extension.
std::string executableName(Program& program) {
  const std::string path = program.machine.system.executablePath();
  const std::string name = path.substr(path.find_last_of('\\') + 1);
  return name.substr(0, name.find_last_of('.'));
}

/// A folder on the way to the file is missing, the file's own included.
bool folderIsMissing(SystemCode code) {
  return code == system_code::kPathNotFound || code == system_code::kBadNetPath;
}

ErrorRecord recordOf(Program& program, const std::string& module, const std::string& procedure,
                     const std::string& message, const RuntimeError& failure) {
  return {.label = kProgramErrorHeadline,
          .project = executableName(program),
          .module = module,
          .procedure = procedure,
          .source = failure.source(),
          .code = std::to_string(failure.number()),
          .description = failure.description(),
          .internalDescription = message,
          .trace = program.state.runLog.lastLine};
}

void showForm(Program& program, ErrorRecord record) {
  frmError form(program, std::move(record));
  program.machine.desktop.showModal(form);
}

/// An auxiliary tool and the file in which it leaves its failure.
struct Tool {
  const char* program = "";
  std::string errorFile;
};

Tool toolOf(ReportKind kind, const std::string& logFolder) {
  if (kind == ReportKind::ComponentsTool) {
    return {"componenti.exe", logFolder + "\\componenti.err"};
  }
  if (kind == ReportKind::UpdateTool) {
    return {"compupd.exe", logFolder + "\\compupd.err"};
  }
  return {};
}

/// First line of a tool's error file; raises when it cannot be read or has none.
std::string firstLineOf(Program& program, const std::string& errorFile) {
  std::string bytes;
  const SystemCode code = program.machine.files.read(errorFile, kMostReportBytes, bytes);
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, errorFile);
  }
  if (bytes.empty()) {
    throw RuntimeError(runtime_number::kPastEndOfFile, "TrelvManager", "File vuoto: " + errorFile);
  }
  return program.machine.locale.fromAnsi(bytes.substr(0, bytes.find_first_of("\r\n")));
}

template <class Names>
bool containsOneOf(const std::string& text, const Names& names) {
  return std::any_of(names.begin(), names.end(), [&text](std::string_view name) {
    return !name.empty() && text.find(name) != std::string::npos;
  });
}

bool systemBringsItsLibraries(Program& program) {
  return modPlatform::IsWinVista(program) || modPlatform::IsWinVistaServer(program) ||
         modPlatform::IsWin2008Server(program) || modPlatform::IsWinSeven(program);
}

bool isHarmless(Program& program, const std::string& report) {
  const std::string text = upperCase(report);
  return containsOneOf(text, siteFile::Names(program).harmlessLibraries) ||
         text.find(harmlessReports::kMarkerFile) != std::string::npos ||
         (containsOneOf(text, harmlessReports::kSystemLibraries) &&
          systemBringsItsLibraries(program));
}

/// Fills the record of a tool's report before the probes of isHarmless() write log lines of their
/// own: the trace shows the line before the report.
void reportTool(Program& program, ErrorRecord record, ReportKind kind) {
  const Tool tool = toolOf(kind, program.state.runLog.logFolder);
  record.label = kConfigurationFileHeadline;
  record.source = tool.program;
  record.description = firstLineOf(program, tool.errorFile);
  if (!isHarmless(program, record.description)) {
    showForm(program, std::move(record));
  }
}

void ignore(const RuntimeError& /*failure*/) {}

}  // namespace

void LogAndReporter::WriteLog(const std::string& text) {
  if (program_ != nullptr) {
    resumeNext([&] { writeLine(text); }, ignore);
  }
}

void LogAndReporter::WriteLog(const std::string& text, const std::string& logFile) {
  if (program_ != nullptr) {
    program_->state.runLog.logFile = logFile;
    WriteLog(text);
  }
}

void LogAndReporter::writeLine(const std::string& text) {
  prepareLog();
  append(text);
  program_->state.runLog.lastLine = text;
  showDebugBox(text);
  modProdTrelvLibrary::ShowProgress(program_->machine.desktop, text);
}

void LogAndReporter::prepareLog() {
  RunLogState& log = program_->state.runLog;
  if (log.logFolder.empty()) {
    log.logFolder = temporaryFolder(*program_) + "log";
  }
  if (log.logFile.empty()) {
    startLogFile();
  } else if (!folderAsked_) {
    askForLogFolder();
  }
}

// The one look at the old log's size also tells whether the log folder is there. The log file is
// named before it is deleted: the line about the deletion is the first of the new log.
void LogAndReporter::startLogFile() {
  folderAsked_ = true;
  RunLogState& log = program_->state.runLog;
  log.logFile = log.logFolder + "\\" + executableName(*program_) + ".log";
  machine::FileFacts facts;
  const SystemCode code = program_->machine.files.look(log.logFile, facts);
  if (folderIsMissing(code)) {
    makeLogFolder();
  } else if (code == system_code::kSuccess && facts.size > kMostLogBytes) {
    modLibrary::DeleteFile(*program_, log.logFile);
  }
}

// A caller named the log file: the log folder is wanted all the same, the auxiliary tools leave
// their reports in it.
void LogAndReporter::askForLogFolder() {
  folderAsked_ = true;
  if (!modLibrary::FolderExists(*program_, temporaryFolder(*program_) + "log")) {
    makeLogFolder();
  }
}

void LogAndReporter::makeLogFolder() {
  makingFolder_ = true;
  const auto make = [&] {
    const std::string folder = temporaryFolder(*program_);
    bool& reported = program_->state.runLog.temporaryFolderReported;
    if (!modLibrary::FolderExists(*program_, folder) && !std::exchange(reported, true)) {
      program_->errors.VisualizzaErrore(
          "modError", "WriteLog",
          std::string("Verificare percorsi: ") + kCrLf + "vsPathTemp: " + folder,
          ReportKind::ProgramError, RuntimeError());
    }
    modLibrary::CreaCartella(*program_, folder + "log");
  };
  resumeNext(make, ignore);
  makingFolder_ = false;
}

// Making the folder writes lines itself. Those find it missing too and must not make it again:
// where it cannot be made, that would never end.
void LogAndReporter::append(const std::string& text) {
  const std::string& logFile = program_->state.runLog.logFile;
  const std::string bytes = program_->machine.locale.toAnsi(dateText() + " -- " + text + kCrLf);
  SystemCode code = program_->machine.files.append(logFile, bytes);
  if (folderIsMissing(code) && !makingFolder_) {
    makeLogFolder();
    code = program_->machine.files.append(logFile, bytes);
  }
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, logFile);
  }
}

const std::string& LogAndReporter::dateText() {
  const machine::LocalTime now = program_->machine.clock.now();
  if (dateText_.empty() || now != datedTime_) {
    dateText_ = generalDate(program_->machine.locale, now);
    datedTime_ = now;
  }
  return dateText_;
}

void LogAndReporter::showDebugBox(const std::string& text) {
  bool& debugSwitch = program_->state.runLog.debugSwitch;
  if (debugSwitch && program_->machine.desktop.messageBox(
                         "Informazioni di debug",
                         firstCharacters(text, kDebugCharacters) + kCrLf + kCrLf +
                             "Continuare a visualizzare informazioni di debug?",
                         machine::BoxIcon::Information,
                         machine::BoxButtons::OkCancel) == machine::BoxAnswer::Cancel) {
    debugSwitch = false;
  }
}

std::int16_t LogAndReporter::VisualizzaErrore(const std::string& module,
                                              const std::string& procedure,
                                              const std::string& message, ReportKind kind,
                                              const RuntimeError& failure) {
  if (program_ == nullptr) {
    return 0;
  }
  const auto report = [&] {
    if (kind != ReportKind::ProgramError && kind != ReportKind::ConfigurationFile) {
      VisualizzaErroreCustom(module, procedure, message, kind, failure);
      return;
    }
    ErrorRecord record = recordOf(*program_, module, procedure, message, failure);
    if (kind == ReportKind::ConfigurationFile) {
      record.label = kConfigurationFileHeadline;
    }
    showForm(*program_, std::move(record));
  };
  resumeNext(report, ignore);
  return program_->state.runLog.reporterChoice;
}

void LogAndReporter::VisualizzaErroreCustom(const std::string& module, const std::string& procedure,
                                            const std::string& message, ReportKind kind,
                                            const RuntimeError& failure) {
  if (program_ == nullptr) {
    return;
  }
  resumeNext(
      [&] {
        reportTool(*program_, recordOf(*program_, module, procedure, message, failure), kind);
      },
      [&](const RuntimeError& unread) {
        const std::string text = "Errore in apertura file di log: " + unread.description();
        VisualizzaErrore("modError", "VisualizzaErroreCustom", text, ReportKind::ProgramError,
                         unread);
        WriteLog(text);
      });
}

}  // namespace trelv::modError
