#include "platform/modLibrary.h"

#include <memory>
#include <utility>

#include "base/Text.h"
#include "base/Trap.h"

namespace trelv::modLibrary {
namespace {

constexpr const char* kModule = "modLibrary";

/// Length of the buffer that the support library fills with the temporary folder.
constexpr std::size_t kTempPathLength = 100;
/// Size of the buffer for an ini value, its closing NUL included.
constexpr std::uint32_t kSettingSize = 511;

/// Runs an operation under the module's trap; a failure is reported and logged with `message`,
/// which its description follows, and answers `onFailure`.
template <class Result, class Body>
Result guarded(Program& program, const char* procedure, const std::string& message,
               Result onFailure, Body&& body) {
  return loggedTrap(program.log, program.errors, kModule, procedure, message, std::move(onFailure),
                    std::forward<Body>(body));
}

/// Hands on what a system call gave, or raises for it.
std::string required(SystemCode code, std::string text, const std::string& subject) {
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, subject);
  }
  return text;
}

/// Position after the part of a path that no one can make: the drive, or server and share.
std::size_t endOfRoot(const std::string& path) {
  if (path.rfind("\\\\", 0) != 0) {
    return path.find('\\') == std::string::npos ? path.size() : path.find('\\') + 1;
  }
  const std::size_t share = path.find('\\', 2);
  const std::size_t end = share == std::string::npos ? share : path.find('\\', share + 1);
  return end == std::string::npos ? path.size() : end + 1;
}

bool administrator(Program& program) {
  switch (program.machine.support.isAdministrator()) {
    case machine::SupportAnswer::Yes:
      return true;
    case machine::SupportAnswer::No:
      return false;
    case machine::SupportAnswer::Absent: {
      bool member = false;
      const SystemCode code = program.machine.system.isAdministrator(member);
      if (code == system_code::kSuccess) {
        return member;
      }
      throw failureFromSystemCode(code, "IsAdministrator");
    }
    case machine::SupportAnswer::Failed:
      break;
  }
  throw RuntimeError(runtime_number::kApplicationDefined, "TrelvManager", "IsAdministrator");
}

std::string startMessage(const std::string& commandLine) {
  return "Errore in esecuzione programma: " + commandLine;
}

/// The report comes first, so that it still shows the line before as its trace.
void tellNotStarted(Program& program, const std::string& commandLine, SystemCode code) {
  const RuntimeError failure = failureToStart(code);
  const std::string message = startMessage(commandLine);
  program.errors.VisualizzaErrore(kModule, "Execute", message, ReportKind::ProgramError, failure);
  program.log.WriteLog("Gestione ProdTrelv - " + message + " (" + std::to_string(failure.number()) +
                       " " + failure.description() + ")");
}

/// Which of the machine's ways of starting a program.
using Start = SystemCode (machine::Processes::*)(const std::string&, bool,
                                                 std::unique_ptr<machine::RunningProcess>&);

/// Starts a program; null, after it was told why, when it could not be started.
std::unique_ptr<machine::RunningProcess> startProgram(Program& program,
                                                      const std::string& commandLine, bool visible,
                                                      Start start) {
  std::unique_ptr<machine::RunningProcess> process;
  const SystemCode code = (program.machine.processes.*start)(commandLine, visible, process);
  if (code != system_code::kSuccess) {
    tellNotStarted(program, commandLine, code);
  }
  return process;
}

/// A program that ran may have written any of the ini files and registered components elsewhere.
void forgetWhatProgramsChange(Program& program) {
  program.configurationFiles.forget();
  program.state.inventory.componentFolder.reset();
}

/// True once a started program has done what the caller waits for.
bool letRun(Program& program, machine::RunningProcess& process, bool wait,
            std::uint32_t* exitCode) {
  if (wait) {
    // A wait that fails answers true as well: kept, the program was started.
    process.wait();
    if (exitCode != nullptr) {
      process.exitCode(*exitCode);
    }
  }
  forgetWhatProgramsChange(program);
  return true;
}

/// The first NUL ends the text, but one in the first place counts as none.
std::string reportedTempPath(const std::string& buffer) {
  const std::size_t end = buffer.find('\0');
  return end == std::string::npos ? std::string() : buffer.substr(0, end);
}

}  // namespace

bool Execute(Program& program, const std::string& commandLine, bool wait,
             std::optional<bool> visible, std::uint32_t* exitCode) {
  return guarded(program, "Execute", startMessage(commandLine), false, [&]() -> bool {
    const std::unique_ptr<machine::RunningProcess> process =
        startProgram(program, commandLine, visible.value_or(true), &machine::Processes::start);
    return process != nullptr && letRun(program, *process, wait, exitCode);
  });
}

bool ExecuteBound(Program& program, const std::string& commandLine, std::uint32_t& exitCode) {
  return guarded(program, "Execute", startMessage(commandLine), false, [&]() -> bool {
    const std::unique_ptr<machine::RunningProcess> process =
        startProgram(program, commandLine, true, &machine::Processes::startBound);
    return process != nullptr && letRun(program, *process, true, &exitCode);
  });
}

bool ExecuteTool(Program& program, const std::string& commandLine, bool wait) {
  return guarded(program, "Execute", startMessage(commandLine), false, [&]() -> bool {
    const std::unique_ptr<machine::RunningProcess> process =
        startProgram(program, commandLine, true, &machine::Processes::startTool);
    return process != nullptr && letRun(program, *process, wait, nullptr);
  });
}

bool ExecuteUntilReady(Program& program, const std::string& commandLine) {
  constexpr std::uint32_t kLongest = 5000;
  return guarded(program, "Execute", startMessage(commandLine), false, [&]() -> bool {
    const std::unique_ptr<machine::RunningProcess> process =
        startProgram(program, commandLine, true, &machine::Processes::startTool);
    if (process == nullptr) {
      return false;
    }
    // One that is not ready in time has had its chance.
    process->waitUntilReady(kLongest);
    forgetWhatProgramsChange(program);
    return true;
  });
}

bool IsAdmin(Program& program) {
  return trap([&]() -> bool { return administrator(program); },
              [&](const RuntimeError&) -> bool {
                // Kept: who cannot be judged may go on, or a missing library would stop every user.
                program.log.WriteLog(
                    "Errore in esecuzione verifica di diritti di amministratore, forzato "
                    "IsAdmin=TRUE");
                return true;
              });
}

std::string GetWinDir(Program& program) {
  if (!program.state.startup.terminalServer) {
    return WindowsFolder(program);
  }
  std::string profile;
  if (!program.machine.environment.get("USERPROFILE", profile)) {
    profile.clear();
  }
  return profile + "\\windows";
}

std::string WindowsFolder(Program& program) {
  return guarded(
      program, "WindowsFolder", "Errore in lettura cartella di Windows: ", std::string(),
      [&]() -> std::string {
        std::string reported;
        const SystemCode code = program.machine.system.systemWindowsFolder(reported);
        const std::string folder = lowerCase(CutAtNul(required(code, reported, "Windows")));
        const std::size_t system = folder.find("system");
        return system == std::string::npos ? folder : ParentPath(folder.substr(0, system));
      });
}

std::string ProgramFilesFolder(Program& program) {
  return guarded(program, "ProgramFilesFolder",
                 "Errore in lettura cartella dei programmi: ", std::string(), [&]() -> std::string {
                   std::string folder;
                   const SystemCode code =
                       program.machine.system.shellFolder(machine::kProgramFilesFolder, folder);
                   return CutAtNul(required(code, folder, "Program Files"));
                 });
}

std::string GetTempDirectory(Program& program) {
  const std::string message = "Errore in lettura cartella temporanea: ";
  return trap(
      [&]() -> std::string {
        std::string buffer(kTempPathLength, ' ');
        if (program.machine.support.temporaryPath(buffer) == machine::SupportAnswer::Yes) {
          return reportedTempPath(buffer);
        }
        std::string folder;
        const SystemCode code = program.machine.system.temporaryFolder(folder);
        return CutAtNul(required(code, folder, "Temp"));
      },
      [&](const RuntimeError& failure) -> std::string {
        // Asked again and again in a start, with the same answer.
        if (!std::exchange(program.state.runLog.temporaryFolderReported, true)) {
          program.errors.VisualizzaErrore(kModule, "GetTempDirectory", message,
                                          ReportKind::ProgramError, failure);
        }
        program.log.WriteLog("Gestione ProdTrelv - " + message + failure.description());
        return {};
      });
}

// Without a temporary folder a Terminal Server gets "\": kept as the join gives it, no one unpacks
// there because an empty temporary folder is tested first.
std::string WorkTempDirectory(Program& program) {
  const std::string folder = GetTempDirectory(program);
  return program.state.startup.terminalServer ? FileSystemObject::parentFolderName(folder) + "\\"
                                              : folder;
}

void CreaCartella(Program& program, const std::string& folder) {
  resumeNext(
      [&] {
        if (FolderExists(program, folder)) {
          return;
        }
        if (folder.size() > endOfRoot(folder)) {
          CreaCartella(program, FileSystemObject::parentFolderName(folder));
        }
        program.fileSystem.createFolder(folder);
        program.log.WriteLog("Creazione path avvenuta correttamente:" + folder);
      },
      [&](const RuntimeError&) {
        program.log.WriteLog("modLibrary - CreaCartella, errore in creazione cartella: " + folder);
      });
}

void CreaKvarTemp(Program& program, const std::string& folder) {
  std::string done;
  trap(
      [&]() -> void {
        for (std::size_t end = endOfRoot(folder); end <= folder.size();) {
          done = folder.substr(0, end);
          if (done.empty() || done.back() != '\\') {
            break;
          }
          CreaCartella(program, done);
          const std::size_t next = folder.find('\\', end);
          end = next == std::string::npos ? folder.size() + 1 : next + 1;
        }
        done = folder;
        if (done.empty() || done.back() != '\\') {
          done += '\\';
        }
        done += "kvar";
        CreaCartella(program, done);
      },
      [&](const RuntimeError& failure) -> void {
        const std::string message = std::string("Verificare percorsi: ") + kCrLf +
                                    "vsPathTemp: " + folder + kCrLf + "sPathComodo: " + done;
        program.errors.VisualizzaErrore(kModule, "CreaKvarTemp", message, ReportKind::ProgramError,
                                        failure);
      });
}

bool DeleteFile(Program& program, const std::string& path) {
  return guarded(program, "DeleteFile", "Errore in cancellazione file: ", false, [&]() -> bool {
    // Another session may delete it between the look and the deletion.
    if (!FileExists(program, path) || !program.fileSystem.deleteFileIfThere(path, false) ||
        FileExists(program, path)) {
      return false;
    }
    program.log.WriteLog("Cancellazione file: " + path + " effettuata con successo");
    return true;
  });
}

bool DeleteFolder(Program& program, const std::string& path) {
  return guarded(program, "DeleteFolder", "Errore in cancellazione cartella: ", false,
                 [&]() -> bool {
                   std::string folder = path;
                   if (!folder.empty() && folder.back() == '\\') {
                     folder.pop_back();
                   }
                   if (FolderExists(program, folder)) {
                     program.fileSystem.deleteFolder(folder, false);
                   }
                   return !FolderExists(program, folder);
                 });
}

bool FileExists(Program& program, const std::string& path) {
  return program.fileSystem.fileExists(path);
}

bool FolderExists(Program& program, const std::string& path) {
  return program.fileSystem.folderExists(path);
}

bool IsSamePath(Program& program, const std::string& left, const std::string& right) {
  machine::Locale& locale = program.machine.locale;
  return locale.upperCase(left) == locale.upperCase(right);
}

std::string ParentPath(const std::string& path) {
  const std::size_t last = path.rfind('\\');
  return last == std::string::npos ? std::string() : path.substr(0, last);
}

std::string Extension(const std::string& fileName) {
  const std::size_t last = fileName.rfind('.');
  return last == std::string::npos ? std::string() : trim(fileName.substr(last + 1));
}

std::string CutAtNul(const std::string& text) { return text.substr(0, text.find('\0')); }

void TrimFolder(std::string& folder) {
  folder = trim(folder);
  if (!folder.empty() && folder.back() == '\\') {
    folder.pop_back();
  }
}

std::string ReadSetting(Program& program, const IniAddress& address) {
  return guarded(
      program, "ReadSetting", "Errore in lettura file: ", std::string(),
      [&]() -> std::string { return program.configurationFiles.read(address, kSettingSize); });
}

std::uint32_t WriteSetting(Program& program, const IniAddress& address, const std::string& value) {
  return guarded(program, "WriteSetting", "Errore in scrittura file: ", std::uint32_t{0},
                 [&]() -> std::uint32_t {
                   if (address.section.empty()) {
                     return 0;
                   }
                   const std::uint32_t written = program.machine.profiles.writeValue(
                       address.section, address.key, value, address.file);
                   program.configurationFiles.written(address, value);
                   return written;
                 });
}

std::string FileVersionText(Program& program, const std::string& path, bool full) {
  return guarded(program, "FileVersionText", "Errore in lettura versione: ", std::string(),
                 [&]() -> std::string {
                   machine::FileVersion version{};
                   if (program.machine.versions.read(path, version) != system_code::kSuccess) {
                     return {};
                   }
                   std::string text = std::to_string(version[0]) + "." + std::to_string(version[1]);
                   if (full) {
                     text += "." + std::to_string(version[2]) + "." + std::to_string(version[3]);
                   }
                   return text;
                 });
}

}  // namespace trelv::modLibrary
