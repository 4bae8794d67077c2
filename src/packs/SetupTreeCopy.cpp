#include "packs/SetupTreeCopy.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "packs/ZipProtection.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::modProdTrelvManager {
namespace {

constexpr const char* kTemporaryBeginning = "TrelvManager-";
constexpr const char* kTemporaryEnding = ".tmp";
/// Another workstation that copies to the same folder takes our temporary file for one that was
/// left behind; it looks there once.
constexpr int kMostRounds = 3;

/// When a file has its turn. Configuration files and catalogue name versions and the set-ups that
/// bring them.
enum class Turn { InSubFolder, IniInSubFolder, Own, OwnIni, Catalogue };

struct TreeFile {
  /// Below the tree's folder, with leading backslash.
  std::string path;
  Turn turn;
};

Turn turnOf(const std::string& folder, const std::string& name) {
  const bool ini = equalNoCase(modLibrary::Extension(name), "ini");
  if (!folder.empty()) {
    return ini ? Turn::IniInSubFolder : Turn::InSubFolder;
  }
  if (equalNoCase(name, hostPaths::kCatalogueFile)) {
    return Turn::Catalogue;
  }
  return ini ? Turn::OwnIni : Turn::Own;
}

void require(SystemCode code, const std::string& path) {
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
}

/// Of this computer, session and process: two copies never meet in one file.
std::string temporaryName(Program& program) {
  machine::SystemFacts& system = program.machine.system;
  std::string computer;
  if (system.computerName(computer) != system_code::kSuccess) {
    computer.clear();
  }
  return kTemporaryBeginning + computer + "-" + std::to_string(system.sessionId()) + "-" +
         std::to_string(system.processId()) + kTemporaryEnding;
}

bool isTemporary(const machine::FolderEntry& entry) {
  const std::string name = upperCase(entry.name);
  return !entry.facts.folder && name.starts_with(upperCase(kTemporaryBeginning)) &&
         name.ends_with(upperCase(kTemporaryEnding));
}

void removeQuietly(machine::Files& files, const std::string& path, bool readOnly) {
  if (readOnly) {
    files.setReadOnly(path, false);
  }
  files.removeFile(path);
}

/// Whoever is at work with one of them has it open, or makes it again.
void removeTemporaries(machine::Files& files, const std::string& folder) {
  std::vector<machine::FolderEntry> entries;
  if (files.list(folder, kTemporaryEnding, entries) != system_code::kSuccess) {
    return;
  }
  for (const machine::FolderEntry& entry : entries) {
    if (isTemporary(entry)) {
      removeQuietly(files, folder + "\\" + entry.name, entry.facts.readOnly);
    }
  }
}

/// One copy of one tree.
class SetupTreeCopy {
 public:
  SetupTreeCopy(Program& program, std::string source, std::string target)
      : files_(program.machine.files),
        source_(std::move(source)),
        target_(std::move(target)),
        temporaryName_(temporaryName(program)) {}

  void run();

 private:
  void gather(const std::string& folder, int level);
  void makeFolder(const std::string& folder);
  void put(const std::string& path);
  SystemCode putOnce(const std::string& from, const std::string& made, const std::string& to);
  SystemCode rename(const std::string& made, const std::string& to);
  SystemCode renameOntoReadOnly(const std::string& made, const std::string& to);
  bool haveSameContent(const std::string& left, const std::string& right);
  RuntimeError failureOf(SystemCode code, const std::string& from, const std::string& to);

  machine::Files& files_;
  const std::string source_;
  const std::string target_;
  const std::string temporaryName_;
  /// Below the tree's folder, each behind the one that holds it.
  std::vector<std::string> folders_;
  std::vector<TreeFile> treeFiles_;
};

void SetupTreeCopy::run() {
  gather("", 0);
  for (const std::string& folder : folders_) {
    makeFolder(target_ + folder);
  }
  std::stable_sort(
      treeFiles_.begin(), treeFiles_.end(),
      [](const TreeFile& left, const TreeFile& right) -> bool { return left.turn < right.turn; });
  for (const TreeFile& file : treeFiles_) {
    put(file.path);
  }
}

void SetupTreeCopy::gather(const std::string& folder, int level) {
  if (level > kMostPackLevels) {
    throw RuntimeError(runtime_number::kPathAccess, "TrelvManager",
                       "Troppi livelli di cartelle: " + source_ + folder);
  }
  std::vector<machine::FolderEntry> entries;
  require(files_.list(source_ + folder, "", entries), source_ + folder);
  folders_.push_back(folder);
  for (const machine::FolderEntry& entry : entries) {
    const std::string path = folder + "\\" + entry.name;
    // What a link points to was not in the pack.
    if (entry.facts.reparsePoint) {
      throw RuntimeError(runtime_number::kPathAccess, "TrelvManager",
                         "Collegamento non copiato: " + source_ + path);
    }
    if (entry.facts.folder) {
      gather(path, level + 1);
    } else {
      treeFiles_.push_back({path, turnOf(folder, entry.name)});
    }
  }
}

/// Makes a folder of the target unless it is there, and clears one that is there of temporaries.
void SetupTreeCopy::makeFolder(const std::string& folder) {
  const SystemCode code = files_.makeFolder(folder);
  if (code != system_code::kAlreadyExists) {
    require(code, folder);
    return;
  }
  machine::FileFacts facts;
  require(files_.look(folder, facts), folder);
  if (!facts.folder) {
    throw failureFromSystemCode(system_code::kFileExists, folder);
  }
  removeTemporaries(files_, folder);
}

void SetupTreeCopy::put(const std::string& path) {
  const std::string from = source_ + path;
  const std::string to = target_ + path;
  const std::string made = modLibrary::ParentPath(to) + "\\" + temporaryName_;
  SystemCode code = system_code::kFileNotFound;
  for (int round = 0; round < kMostRounds && meansMissing(code); ++round) {
    code = putOnce(from, made, to);
  }
  if (code == system_code::kSuccess) {
    return;
  }
  // Which file it was is asked before the temporary one goes.
  RuntimeError failure = failureOf(code, from, to);
  machine::FileFacts facts;
  if (files_.look(made, facts) == system_code::kSuccess) {
    removeQuietly(files_, made, facts.readOnly);
  }
  throw RuntimeError(std::move(failure));
}

SystemCode SetupTreeCopy::putOnce(const std::string& from, const std::string& made,
                                  const std::string& to) {
  const SystemCode code = files_.copyFile(from, made);
  return code == system_code::kSuccess ? rename(made, to) : code;
}

SystemCode SetupTreeCopy::rename(const std::string& made, const std::string& to) {
  SystemCode code = files_.replaceFile(made, to);
  if (code != system_code::kAccessDenied && code != system_code::kSharingViolation) {
    return code;
  }
  machine::FileFacts facts;
  if (files_.look(to, facts) != system_code::kSuccess || facts.folder) {
    return code;
  }
  code = facts.readOnly ? renameOntoReadOnly(made, to) : system_code::kSharingViolation;
  // The same pack's file, put there by an earlier copy: somebody has begun to work with it.
  if (code == system_code::kSharingViolation && haveSameContent(made, to)) {
    files_.look(made, facts);
    removeQuietly(files_, made, facts.readOnly);
    return system_code::kSuccess;
  }
  return code;
}

// The system says "denied" of a file that is open, too. This user has just made a file beside it,
// so that is what it means but for rights of the file's own.
SystemCode SetupTreeCopy::renameOntoReadOnly(const std::string& made, const std::string& to) {
  SystemCode code = files_.setReadOnly(to, false);
  if (code != system_code::kSuccess) {
    return code;
  }
  code = files_.replaceFile(made, to);
  if (code != system_code::kSuccess) {
    files_.setReadOnly(to, true);
  }
  return code == system_code::kAccessDenied ? system_code::kSharingViolation : code;
}

bool SetupTreeCopy::haveSameContent(const std::string& left, const std::string& right) {
  machine::FileFacts leftFacts;
  machine::FileFacts rightFacts;
  if (files_.look(left, leftFacts) != system_code::kSuccess ||
      files_.look(right, rightFacts) != system_code::kSuccess ||
      leftFacts.size != rightFacts.size) {
    return false;
  }
  constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
  std::string leftBytes;
  std::string rightBytes;
  return files_.read(left, kAll, leftBytes) == system_code::kSuccess &&
         files_.read(right, kAll, rightBytes) == system_code::kSuccess && leftBytes == rightBytes;
}

RuntimeError SetupTreeCopy::failureOf(SystemCode code, const std::string& from,
                                      const std::string& to) {
  machine::FileFacts facts;
  const bool sourceIsGone = meansMissing(code) && meansMissing(files_.look(from, facts));
  return failureFromSystemCode(code, sourceIsGone ? from : to);
}

/// The folders of the tree, its own first; those that cannot be listed have none, and deeper ones
/// than a copy has are not looked at.
void removeTemporariesBelow(machine::Files& files, const std::string& source,
                            const std::string& target, int level) {
  if (level > kMostPackLevels) {
    return;
  }
  removeTemporaries(files, target);
  std::vector<machine::FolderEntry> entries;
  files.list(source, "", entries);
  for (const machine::FolderEntry& entry : entries) {
    if (entry.facts.folder && !entry.facts.reparsePoint) {
      removeTemporariesBelow(files, source + "\\" + entry.name, target + "\\" + entry.name,
                             level + 1);
    }
  }
}

}  // namespace

void CopySetupTree(Program& program, const std::string& source, const std::string& target) {
  SetupTreeCopy(program, source, target).run();
}

void RemoveCopiesUnderWay(Program& program, const std::string& source, const std::string& target) {
  removeTemporariesBelow(program.machine.files, source, target, 0);
}

}  // namespace trelv::modProdTrelvManager
