#pragma once

#include <memory>
#include <string>

#include "base/RuntimeError.h"
#include "machine/Exclusion.h"
#include "platform/Program.h"

/// The user's temporary folder as packs pass through it, which other starts of the same user share.
namespace trelv::modProdTrelvManager {

/// Path of the work folder without trailing backslash; empty when there is none.
std::string WorkFolderPath(Program& program);

/// The right to work in the work folder, one process at a time in all sessions: two processes that
/// unpack there would copy and delete each other's content. Kept by a file in the folder itself, so
/// that the folder is one by whatever name, and free when the process ends, however it does.
class WorkFolder {
 public:
  /// Takes the folder (made when missing). While another process has it this waits 120 s at most
  /// and shows nothing; not again in a process that has waited in vain. A folder that could not be
  /// had is told in one log line, once per process. A link or junction in its place is not
  /// followed: such a folder cannot be had. This process may take it again meanwhile.
  WorkFolder(Program& program, std::string path);
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  ~WorkFolder();

  /// Otherwise nothing may be opened, copied or deleted there.
  bool isOurs() const { return refusal_.empty(); }
  /// False where the folder or one of the four levels of its set-up tree is a link or junction, or
  /// cannot be looked at: what is unpacked, copied or removed there would be somewhere else. It is
  /// not ours then, and one log line tells it, once per process. Asked right before each use: who
  /// may write there may put a link there at any time.
  bool isFreeOfLinks();
  /// Why it could not be had, for the user: which other session has it, a link, or what the system
  /// says.
  const std::string& refusal() const { return refusal_; }

  /// Is this folder (full path, may be missing) the work folder, by whatever name: case, drive and
  /// share, link, short name, "\\?\"? Only while it is ours. Raises where that cannot be told.
  bool isAlso(const std::string& folder);

 private:
  SystemCode take();
  void refuse(SystemCode code);
  void refuse(const std::string& why);
  std::string holder();

  Program& program_;
  const std::string path_;
  const std::string markPath_;
  std::string refusal_;
  std::unique_ptr<machine::Mark> mark_;
};

/// Why the set-up tree of a folder cannot be trusted to lie in it: the first link or junction among
/// the folder and the four levels of the tree, or what the system says of one that cannot be looked
/// at. Empty where nothing speaks against it, a missing level neither. A root is no link.
std::string LinkOnTheWay(Program& program, const std::string& folder);

/// Does any unpacked tree, or a file in its place, stand in the work folder?
bool IsUnpacked(Program& program, const std::string& workFolder);

/// Is a host installed in this folder? Its "prg" is no unpacked tree then. Raises where the files
/// that tell it cannot be looked at.
bool IsInstallation(Program& program, const std::string& folder);

/// The log line for what cannot be removed from there.
void TellUnpackedStays(Program& program, const std::string& path, const RuntimeError& failure);

/// Removes it with everything in it; nothing where nothing stands. Raises what the file system
/// answers, and where it is no unpacked tree but a host's installation.
void DeleteUnpacked(Program& program, const std::string& workFolder);

/// The same, but false, after one log line, when it stays. Never raises.
bool RemoveUnpacked(Program& program, const std::string& workFolder);

}  // namespace trelv::modProdTrelvManager
