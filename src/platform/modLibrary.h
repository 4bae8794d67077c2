#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Program.h"

/// Process launching, files, folders, paths and ini values. No operation stops the program: an
/// unexpected failure is reported and the operation answers false or empty text.
namespace trelv::modLibrary {

/// Starts a command line (see machine::Processes) and waits for its end when `wait`. `visible`
/// false starts its window hidden; left out is visible. False, after one report, when it could not
/// be started. The exit code does not matter; `exitCode`, where given, receives it after a wait.
bool Execute(Program& program, const std::string& commandLine, bool wait,
             std::optional<bool> visible = std::nullopt, std::uint32_t* exitCode = nullptr);

/// Does the current user have administrator rights? An unknown answer counts as yes.
bool IsAdmin(Program& program);

/// Windows folder for per-user files: below the user's profile on a Terminal Server.
std::string GetWinDir(Program& program);
/// The system's Windows folder, lower case, without trailing backslash.
std::string WindowsFolder(Program& program);
/// Program Files, without trailing backslash.
std::string ProgramFilesFolder(Program& program);
/// The host suite's temporary folder as it is reported (usually with trailing backslash); empty
/// when it cannot be had.
std::string GetTempDirectory(Program& program);
/// The folder in which the manager unpacks and works.
std::string WorkTempDirectory(Program& program);

/// Makes a folder with all missing levels, one log line per level made. A failure is logged.
void CreaCartella(Program& program, const std::string& folder);
/// Makes each level of the path and a sub-folder "kvar".
void CreaKvarTemp(Program& program, const std::string& folder);

/// True when the file was there and is gone; a missing file answers false.
bool DeleteFile(Program& program, const std::string& path);
/// True when the folder is gone (or was not there); one trailing backslash is dropped. Read-only
/// content is not deleted: false after a report, as for DeleteFile.
bool DeleteFolder(Program& program, const std::string& path);

/// True when the path is an existing file (not a folder).
bool FileExists(Program& program, const std::string& path);
/// True when the path is an existing folder.
bool FolderExists(Program& program, const std::string& path);

/// Text before the last backslash; empty when there is none.
std::string ParentPath(const std::string& path);
/// Trimmed text after the last point; empty when there is none.
std::string Extension(const std::string& fileName);
/// Text before the first NUL, or all of it.
std::string CutAtNul(const std::string& text);
/// Trims the folder and removes one trailing backslash.
void TrimFolder(std::string& folder);

/// Value of an ini key, at most 510 ANSI characters; empty when missing. Reads each file once, see
/// ConfigurationFiles.
std::string ReadSetting(Program& program, const std::string& section, const std::string& key,
                        const std::string& file);
/// Writes an ini key with the platform's function; non-zero = written. With an empty section
/// nothing is written and the answer is 0.
std::uint32_t WriteSetting(Program& program, const std::string& section, const std::string& key,
                           const std::string& file, const std::string& value);

/// File version as decimal numbers joined by ".": major and minor, and with `full` build and
/// revision too. Empty when the file has no version resource.
std::string FileVersionText(Program& program, const std::string& path, bool full);

}  // namespace trelv::modLibrary
