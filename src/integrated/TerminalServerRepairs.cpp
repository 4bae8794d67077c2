#include "integrated/TerminalServerRepairs.h"

#include <array>
#include <memory>
#include <utility>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"
#include "platform/modPlatform.h"
#include "startup/HostPaths.h"

namespace trelv::modProdTrelvManager {
namespace {

constexpr const char* kHostIni = "\\lumow.ini";
constexpr const char* kNerioIni = "\\nerio.ini";
constexpr const char* kModelsIni = "\\zeltomodelli.ini";
constexpr const char* kLudaIni = "\\luda.ini";

/// One step of a repair, whose failure is told behind `failureLine`. False when it failed.
template <class Step>
bool orTell(Program& program, const char* failureLine, Step&& step) {
  return trap(
      [&]() -> bool {
        std::forward<Step>(step)();
        return true;
      },
      [&](const RuntimeError& failure) -> bool {
        program.log.WriteLog(failureLine + failure.description());
        return false;
      });
}

bool isTerminalSession(Program& program) { return program.state.startup.terminalServer; }

/// A folder as it was told; raises when it was not: paths below it would lead to a drive's root.
std::string known(const std::string& folder) {
  if (folder.empty()) {
    throw RuntimeError(runtime_number::kPathNotFound, "TrelvManager",
                       "Cartella di Windows non disponibile");
  }
  return folder;
}

std::string userFolder(Program& program) { return known(modLibrary::GetWinDir(program)); }
std::string systemFolder(Program& program) { return known(modLibrary::WindowsFolder(program)); }

/// Name of the folder that holds the session's profile, as the session was told it. Without that:
/// the user's name; a user of a domain whose name was taken when the profile was made has one that
/// carries the domain too.
std::string profileFolderName(Program& program, const std::string& profiles) {
  std::string profile;
  program.machine.environment.get("USERPROFILE", profile);
  modLibrary::TrimFolder(profile);
  if (profile.find('\\') != std::string::npos) {
    return profile.substr(profile.rfind('\\') + 1);
  }
  const std::string user = modPlatform::UserName(program);
  std::string domain;
  program.machine.environment.get("USERDOMAIN", domain);
  const std::string withDomain = user + "." + domain;
  return !domain.empty() && modLibrary::FolderExists(program, profiles + withDomain) ? withDomain
                                                                                     : user;
}

/// The Windows folder in the session's profile, without trailing backslash.
std::string profileWindowsFolder(Program& program) {
  const std::string profiles = userFolder(program) + "\\..\\..\\";
  return profiles + profileFolderName(program, profiles) + "\\windows";
}

/// Does nothing stand there? Raises when nobody can look: a file may be there then, and is no one's
/// to replace.
bool isFree(Program& program, const std::string& path) {
  machine::FileFacts facts;
  const SystemCode code = program.machine.files.look(path, facts);
  if (code != system_code::kSuccess && !meansMissing(code)) {
    throw failureFromSystemCode(code, path);
  }
  return code != system_code::kSuccess;
}

enum class Existing { Kept, Replaced };

/// Raises where a file must not be put in the place of `target`.
void requireFree(Program& program, const std::string& target, Existing existing) {
  if (existing == Existing::Replaced) {
    program.fileSystem.requireReplaceable(target);
  } else if (!isFree(program, target)) {
    throw failureFromSystemCode(system_code::kFileExists, target);
  }
}

/// Two starts of one user make the same copy under the same other name: one of them would put in
/// its place what the other one has only begun. A turn that is refused for another reason is no
/// hindrance: what hinders the copy too is told of that.
std::unique_ptr<machine::Mark> takeTurn(Program& program, const std::string& target) {
  constexpr std::uint32_t kLongestWait = 3000;
  std::unique_ptr<machine::Mark> turn;
  if (program.machine.exclusion.take(target + ".lck", "", kLongestWait, turn) ==
      system_code::kSharingViolation) {
    throw failureFromSystemCode(system_code::kSharingViolation, target);
  }
  return turn;
}

/// Makes a file under another name and puts it in its place in one step: half a file, which a start
/// that is ended by force would leave, would count as present for good.
template <class Make>
void makeWhole(Program& program, const std::string& target, Existing existing, Make&& make) {
  FileSystemObject& files = program.fileSystem;
  const std::unique_ptr<machine::Mark> turn = takeTurn(program, target);
  const std::string made = target + ".tmp";
  const auto discard = [&]() -> void {
    if (files.fileExists(made)) {
      files.deleteFile(made, true);
    }
  };
  discard();
  try {
    std::forward<Make>(make)(made);
    requireFree(program, target, existing);
    const SystemCode code = program.machine.files.replaceFile(made, target);
    if (code != system_code::kSuccess) {
      throw failureFromSystemCode(code, target);
    }
  } catch (const RuntimeError&) {
    // What failed first is told; what is left is discarded by the next start.
    resumeNext(discard, [](const RuntimeError&) -> void {});
    throw;
  }
  program.configurationFiles.forget(target);
}

void copyFile(Program& program, const std::string& source, const std::string& target,
              Existing existing) {
  makeWhole(program, target, existing,
            [&](const std::string& made) -> void { program.fileSystem.copyFile(source, made); });
}

void copyMissing(Program& program, const std::string& source, const std::string& target) {
  program.log.WriteLog("Gestione ProdTrelv - copia file ini mancante da: " + source +
                       " a: " + target);
  copyFile(program, source, target, Existing::Kept);
}

/// Where copies of one ini file lie, full paths.
struct Copies {
  /// In the product's folder.
  std::string master;
  std::string profile;
  std::string system;
};

Copies copiesOf(Program& program, const std::string& master, const char* ini) {
  return {master, profileWindowsFolder(program) + ini, systemFolder(program) + ini};
}

void putProfileCopy(Program& program, const Copies& copies) {
  if (modLibrary::FileExists(program, copies.master) && isFree(program, copies.profile)) {
    copyMissing(program, copies.master, copies.profile);
  }
}

void putSystemCopy(Program& program, const Copies& copies) {
  if (!isFree(program, copies.system)) {
    return;
  }
  program.log.WriteLog("Gestione ProdTrelv - Ricerca mancanza file: " + copies.system);
  if (!isFree(program, copies.profile)) {
    copyMissing(program, copies.profile, copies.system);
  } else if (modLibrary::FileExists(program, copies.master)) {
    copyMissing(program, copies.master, copies.system);
  }
}

void putMissingCopies(Program& program, const char* failureLine, const std::string& master,
                      const char* ini) {
  Copies copies;
  if (orTell(program, failureLine, [&]() -> void { copies = copiesOf(program, master, ini); })) {
    orTell(program, failureLine, [&]() -> void { putProfileCopy(program, copies); });
    orTell(program, failureLine, [&]() -> void { putSystemCopy(program, copies); });
  }
}

/// Has the user the ini file of a product that is installed in `folder`? Where it could not be made
/// this time the product's own must not take its place for good; a folder that nobody can look at
/// may have the product in it.
bool userHas(Program& program, const char* ini, const std::string& folder) {
  machine::FileFacts facts;
  const SystemCode code = program.machine.files.look(folder, facts);
  const bool mayBeInstalled = code == system_code::kSuccess ? facts.folder : !meansMissing(code);
  return modLibrary::FileExists(program, modLibrary::GetWinDir(program) + ini) || !mayBeInstalled;
}

struct Setting {
  const char* section;
  const char* key;
  std::string value;
};

RuntimeError refusedWriting(const std::string& file) {
  return {runtime_number::kPathAccess, "TrelvManager", "Impossibile scrivere il file: " + file};
}

/// Writes an ini value; raises when the file does not take it.
void write(Program& program, const std::string& file, const Setting& setting) {
  if (modLibrary::WriteSetting(program, {file, setting.section, setting.key}, setting.value) == 0) {
    throw refusedWriting(file);
  }
}

/// Makes an ini file that is missing, with all values or not at all.
template <class Settings>
void createIni(Program& program, const std::string& ini, const Settings& settings) {
  program.log.WriteLog("Gestione ProdTrelv - creazione file ini mancante : " + ini);
  makeWhole(program, ini, Existing::Kept, [&](const std::string& made) -> void {
    for (const Setting& setting : settings) {
      if (modLibrary::WriteSetting(program, {made, setting.section, setting.key}, setting.value) ==
          0) {
        throw refusedWriting(ini);
      }
    }
  });
}

// --- Nerio

constexpr const char* kNerioFailure = "Gestione ProdTrelv - Gestione anomalia Nerio: ";

void putUserCopy(Program& program, const std::string& master, const std::string& userCopy) {
  if (!isFree(program, userCopy)) {
    return;
  }
  program.log.WriteLog("Gestione ProdTrelv - copia file ini mancante da: " + master +
                       " a: " + userCopy);
  // Kept: the line stands there before Nerio is installed too, when there is nothing to copy yet.
  if (modLibrary::FileExists(program, master)) {
    copyFile(program, master, userCopy, Existing::Kept);
  }
}

// --- Zeltomodelli

constexpr const char* kModelsFailure = "Gestione ProdTrelv - Gestione anomalia ZeltoModelli: ";

/// Makes the user's ini file, or points one that names another place of the product at this one. A
/// models folder of the user's own choice stays.
void pointAtProduct(Program& program, const std::string& ini, const std::string& folder) {
  const Setting product{"Parametri", "PathModelli", folder};
  if (isFree(program, ini)) {
    createIni(program, ini, std::array{product});
    return;
  }
  const std::string models = modLibrary::ReadSetting(program, {ini, "Parametri", "PathModelli"});
  if (!equalNoCase(models, folder) && upperCase(models).find("\\MV\\ZM") != std::string::npos) {
    write(program, ini, product);
  }
}

/// Not by the service that reports its failures in a form: who may not delete on the share, or
/// finds the file in use, would see one at every start.
void deleteObsolete(Program& program, const std::string& file) {
  if (!modLibrary::FileExists(program, file)) {
    return;
  }
  program.fileSystem.deleteFile(file, false);
  program.log.WriteLog("Cancellazione file: " + file + " effettuata con successo");
}

void repairModels(Program& program, const std::string& folder) {
  orTell(program, kModelsFailure,
         [&]() -> void { pointAtProduct(program, userFolder(program) + kModelsIni, folder); });
  orTell(program, kModelsFailure,
         [&]() -> void { deleteObsolete(program, folder + "\\Dovra2010.ini"); });
  const std::string master = folder + kModelsIni;
  program.log.WriteLog("Gestione ProdTrelv - Ricerca esistenza file: " + master);
  if (userHas(program, kModelsIni, folder)) {
    putMissingCopies(program, kModelsFailure, master, kModelsIni);
  }
}

// --- Luda

constexpr const char* kLudaFailure = "Gestione ProdTrelv - Gestione anomalia Luda: ";

void createLudaIni(Program& program, const std::string& ini, const std::string& integrationPath,
                   const std::string& version) {
  const std::string folder = hostPaths::productsFolder(integrationPath) + "\\luda2003";
  createIni(
      program, ini,
      std::array{Setting{"PathNames", "Homedir", folder},
                 Setting{"PathNames", "DataBase", folder + "\\database"},
                 Setting{"PathNames", "Exec", folder},
                 Setting{"PathNames", "FileDir", folder + "\\AscFile"},
                 Setting{"PathNames", "CrittaDir", folder + "\\critta"},
                 Setting{"LUDA", "Versione", version}, Setting{"LUDA", "Aggiornamento", version},
                 Setting{"Drive", "Floppy", "A:"}, Setting{"ConfigViste", "Vista", "0"}});
}

std::string ludaVersion(Program& program, const std::string& folder) {
  return modLibrary::FileVersionText(program, folder + "\\LUDA2003.exe", true);
}

void createMissingLudaIni(Program& program, const std::string& integrationPath,
                          const std::string& folder) {
  const std::string ini = userFolder(program) + kLudaIni;
  if (modLibrary::FolderExists(program, folder) && isFree(program, ini)) {
    createLudaIni(program, ini, integrationPath, ludaVersion(program, folder));
  }
}

/// Looks before it writes: an equal value needs no opening for writing on the share, where every
/// workstation comes by.
void keepMasterVersion(Program& program, const std::string& folder, const std::string& master) {
  if (!modLibrary::FileExists(program, master)) {
    return;
  }
  const std::string version = ludaVersion(program, folder);
  if (!version.empty() &&
      modLibrary::ReadSetting(program, {master, "LUDA", "Versione"}) != version) {
    write(program, master, {"LUDA", "Versione", version});
  }
}

}  // namespace

bool RiparaCorvelTS(Program& program) {
  program.log.WriteLog("Gestione ProdTrelv - Inizio gestione anomalia Corvel");
  if (!isTerminalSession(program)) {
    program.log.WriteLog(
        "Gestione ProdTrelv - Ambiente Terminal Server non rilevato, nessuna gestione anomalia TS "
        "Corvel");
    return false;
  }
  bool copied = false;
  orTell(program, "Gestione ProdTrelv - Gestione anomalia Corvel: ", [&]() -> void {
    const std::string target = profileWindowsFolder(program) + kHostIni;
    if (!modLibrary::ReadSetting(program, {target, "Archivi", "Path"}).empty()) {
      return;
    }
    const std::string source = systemFolder(program) + kHostIni;
    program.log.WriteLog("Gestione ProdTrelv - Inizio copia da: " + source + " a: " + target);
    copyFile(program, source, target, Existing::Replaced);
    copied = true;
  });
  return copied;
}

void RiparaNerioTS(Program& program, const std::string& integrationPath) {
  program.log.WriteLog("Gestione ProdTrelv - Inizio Gestione Anomalia Nerio");
  const std::string master = hostPaths::productsFolder(integrationPath) + "\\nerio" + kNerioIni;
  orTell(program, kNerioFailure,
         [&]() -> void { putUserCopy(program, master, userFolder(program) + kNerioIni); });
  if (!isTerminalSession(program)) {
    program.log.WriteLog(
        "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Nerio");
    return;
  }
  putMissingCopies(program, kNerioFailure, master, kNerioIni);
}

void RiparaZeltomodelliTS(Program& program, const std::string& integrationPath) {
  program.log.WriteLog("Gestione ProdTrelv - Inizio Gestione anomalia ZeltoModelli");
  if (!isTerminalSession(program)) {
    program.log.WriteLog(
        "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia ZM");
    return;
  }
  const std::string folder = hostPaths::productsFolder(integrationPath) + "\\ZM";
  if (modLibrary::FolderExists(program, folder)) {
    repairModels(program, folder);
  }
}

void RiparaLudaTS(Program& program, const std::string& integrationPath) {
  program.log.WriteLog("Gestione ProdTrelv - Inizio Gestione anomalia Luda");
  const std::string folder = hostPaths::productsFolder(integrationPath) + "\\LUDA2003";
  const std::string master = folder + "\\Luda.ini";
  orTell(program, kLudaFailure,
         [&]() -> void { createMissingLudaIni(program, integrationPath, folder); });
  orTell(program, kLudaFailure, [&]() -> void { keepMasterVersion(program, folder, master); });
  if (!isTerminalSession(program)) {
    program.log.WriteLog(
        "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Luda");
    return;
  }
  if (userHas(program, kLudaIni, folder)) {
    putMissingCopies(program, kLudaFailure, master, kLudaIni);
  }
}

}  // namespace trelv::modProdTrelvManager
