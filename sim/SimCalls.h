#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/SystemCode.h"

namespace trelv::sim {

/// What the program asks of the machine. The clock, the locale, the command line, the active form
/// and the pumping of messages cannot fail and are not among them.
enum class CallKind {
  FileLook,
  FileRead,
  FileWrite,
  FileAppend,
  FileRemove,
  FileSetReadOnly,
  FolderMake,
  FolderRemove,
  FolderList,
  FileCopy,
  FileReplace,
  FileMove,
  FileRights,
  FileStreamRemove,
  FolderProbe,
  ProfileRead,
  ProfileWrite,
  RegistryOpen,
  RegistryCreate,
  RegistryDescribe,
  RegistryRead,
  RegistryWrite,
  RegistryEnumerate,
  ProcessStart,
  ProcessWait,
  ProcessReady,
  ProcessExitCode,
  ProcessLookUp,
  EnvironmentGet,
  EnvironmentSet,
  VersionQuery,
  SuiteTest,
  KernelFunctionQuery,
  Wow64Query,
  AdministratorQuery,
  UserNameQuery,
  WindowsFolderQuery,
  ShellFolderQuery,
  TemporaryFolderQuery,
  FileVersionRead,
  ConfigurationGet,
  ConfigurationSet,
  ConfigurationPath,
  SupportAdministrator,
  SupportTemporaryPath,
  BoxShow,
  FormShow,
  PictureShow,
  InputShow,
  AutomationCall,
  DriveTypeQuery,
  ConnectionNameQuery,
  DeviceNamesQuery,
  ComputerNameQuery,
  MarkTake
};

/// How far a call had come when the program was killed in it.
enum class Unfinished {
  NotBegun,
  /// The file was opened, and with that made or emptied (not by appending).
  Empty,
  /// The first half of the bytes was written.
  Half
};

/// Thrown by the call in which the program is killed. No std::exception: the traps of the program
/// let it pass, the test that killed the program catches it.
class Killed {
 public:
  explicit Killed(Unfinished left) : left_(left) {}

  Unfinished left() const { return left_; }

 private:
  Unfinished left_;
};

/// One call that reached the machine.
struct SimCall {
  /// Position among all calls, from 1.
  std::size_t number;
  CallKind kind;
  /// Subject and method, a blank, and what it was about: "files.read S:\prg\com\agdvcomp.ini".
  std::string text;
  /// The path (or key, command line, ...) as it was passed; `target` of a copy or replacement.
  std::string path;
  std::string target;
};

/// How often files at or below a path were opened, and in which way.
struct Openings {
  std::size_t reads = 0;
  std::size_t writes = 0;
  std::size_t appends = 0;
  std::size_t profileReads = 0;
  std::size_t profileWrites = 0;
  /// Copies and replacements whose source or target lies there.
  std::size_t copies = 0;
  /// Folder openings.
  std::size_t lists = 0;
  /// Looks at a path without opening it.
  std::size_t looks = 0;

  /// All openings of files; folder openings and looks left out.
  std::size_t files() const {
    return reads + writes + appends + profileReads + profileWrites + copies;
  }
};

/// Everything that was asked of one machine, in order, and the place where tests step between two
/// calls.
class SimCalls {
 public:
  using Hook = std::function<void()>;
  /// Looks at a call before it is carried out; a code makes it fail with that code, or in the way
  /// that its interface has for failing.
  using Injector = std::function<std::optional<SystemCode>(const SimCall&)>;
  /// Runs before each call is carried out. Where programs run at once others may have their turn
  /// meanwhile.
  using Turns = std::function<void(const SimCall&)>;

  /// Records a call and runs the hooks that wait for it. `detail` only adds to its text. The
  /// injected code, or nothing.
  std::optional<SystemCode> enter(CallKind kind, const std::string& method, const std::string& path,
                                  const std::string& target = "", const std::string& detail = "");

  std::size_t count() const { return calls_.size(); }
  const std::vector<SimCall>& all() const { return calls_; }
  /// The texts of all calls.
  std::vector<std::string> texts() const;
  /// How many calls have a text that begins like this (no regard to case).
  std::size_t countOf(const std::string& beginning) const;
  /// Openings at or below a path (no regard to case): "S:\", "S:\prg\com", "\\server\share".
  Openings openings(const std::string& prefix) const;
  /// Forgets the calls so far; counting starts at 1 again. Hooks by number count anew as well.
  void clear() { calls_.clear(); }

  /// Runs `hook` once, just before the call of this number (from 1) is carried out.
  void onCall(std::size_t number, Hook hook);
  /// Runs `hook` once, just before the next call whose text begins like this (no regard to case).
  void onCall(const std::string& beginning, Hook hook);
  /// Null takes it away.
  void setTurns(Turns turns) { turns_ = std::move(turns); }
  /// Null takes it away.
  void setInjector(Injector injector) { injector_ = std::move(injector); }

  /// The program was killed: whatever it still asks is refused with code 5 and leaves no trace.
  void setDead(bool dead) { dead_ = dead; }
  bool dead() const { return dead_; }

 private:
  void runHooks(const SimCall& call);

  std::vector<SimCall> calls_;
  std::multimap<std::size_t, Hook> numberHooks_;
  std::vector<std::pair<std::string, Hook>> textHooks_;
  Turns turns_;
  Injector injector_;
  bool dead_ = false;
};

}  // namespace trelv::sim
