#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Program.h"

/// What every procedure needs of the machine: programs to start, files, folders, paths, ini values.
/// Nothing here raises; who fails unexpectedly tells the user and answers false or "".
namespace trelv::modLibrary {

/// Starts a program (`commandLine` as machine::Processes wants it); with `wait` returns when it has
/// ended. Its window is hidden only where `visible` says false. False, one report and one log line
/// that tell why, if nothing was started; how the program ended has no part in the answer, a caller
/// that wants to know gives `exitCode` and waits.
bool Execute(Program& program, const std::string& commandLine, bool wait,
             std::optional<bool> visible = std::nullopt, std::uint32_t* exitCode = nullptr);

/// The same, shown and waited for, for a program that does a part of our own work: it ends with us,
/// however we end. `exitCode` stays as it was where there is none.
bool ExecuteBound(Program& program, const std::string& commandLine, std::uint32_t& exitCode);

/// The same, shown, for a program that the system or the site provides and that is named without a
/// folder: one of that name in the current folder is never taken.
bool ExecuteTool(Program& program, const std::string& commandLine, bool wait);

/// Starts such a program and returns once its window is ready for its user, after 5 s at most. What
/// it was started with may be removed then. False as for Execute.
bool ExecuteUntilReady(Program& program, const std::string& commandLine);

/// May the user change this machine? Yes too where nobody can tell.
bool IsAdmin(Program& program);

/// Where products look for a user's own ini files: on a Terminal Server "windows" in the profile.
std::string GetWinDir(Program& program);
/// The Windows folder of the machine, in lower case and without trailing backslash.
std::string WindowsFolder(Program& program);
/// Program Files, without trailing backslash.
std::string ProgramFilesFolder(Program& program);
/// The temporary folder that the suite names, letter by letter (most end with a backslash); "" if
/// there is no answer.
std::string GetTempDirectory(Program& program);
/// Where a run may put its own things: GetTempDirectory, on a Terminal Server the folder above it.
std::string WorkTempDirectory(Program& program);

/// Makes a folder and whatever is missing above it; each folder made has its log line, and so has
/// one that cannot be made.
void CreaCartella(Program& program, const std::string& folder);
/// The same for `folder` and for "kvar" in it.
void CreaKvarTemp(Program& program, const std::string& folder);

/// Did this call remove the file? Not when it was missing before.
bool DeleteFile(Program& program, const std::string& path);
/// Is no such folder there any more? One trailing backslash does not count. A read-only file, here
/// as for DeleteFile, stays and is reported: false.
bool DeleteFolder(Program& program, const std::string& path);

/// Does a file stand there? A folder is none.
bool FileExists(Program& program, const std::string& path);
/// Does a folder stand there?
bool FolderExists(Program& program, const std::string& path);

/// Do both texts name the same path, but for upper and lower case by the system's rule?
bool IsSamePath(Program& program, const std::string& left, const std::string& right);

/// The path without its last backslash and what follows; "" for a bare name.
std::string ParentPath(const std::string& path);
/// "zip" for "a.b.zip"; blanks round it are dropped. "" for a name without a point.
std::string Extension(const std::string& fileName);
/// What a C function would see of the text.
std::string CutAtNul(const std::string& text);
/// Takes the blanks round a folder's path away, then a backslash at its end.
void TrimFolder(std::string& folder);

/// An ini value, cut behind 510 ANSI characters; "" if there is none. ConfigurationFiles says when
/// the file is read.
std::string ReadSetting(Program& program, const IniAddress& address);
/// Has the platform's function write an ini value and gives its answer: 0 if it did not. Without a
/// section nobody is asked, 0 too.
std::uint32_t WriteSetting(Program& program, const IniAddress& address, const std::string& value);

/// "1.2" of a file's fixed version, with `full` "1.2.3.4"; "" for a file without one.
std::string FileVersionText(Program& program, const std::string& path, bool full);

}  // namespace trelv::modLibrary
