#pragma once

#include <string>

#include "base/InstallationPaths.h"
#include "platform/Program.h"

/// Which folder a removal may delete behind a removal command. Nothing here raises.
namespace trelv::modProdTrelvManager {

/// Folder of the program that a command line (placeholders resolved) names, without quotes,
/// arguments and trailing backslash. Of an unquoted command with blanks the program is found as the
/// system finds it: the shortest beginning that is a file; where none is, the only beginning that
/// ends like a program. Empty when the folder cannot be told, also for a bare name.
std::string FolderOfCommand(Program& program, const std::string& command);

/// May this folder be deleted with everything in it? Never: an empty or relative path, a root of a
/// drive or share, the Windows folder and what lies in it, Program Files, the server path and its
/// folders prg, prg\com, prg\com\setup, prg\com\setup\aggdovra, prg\com\bin\cpy\client, prg\etc,
/// prg\tempterm and mv, the manager's own folder, the client folder, the integration path and its
/// mv, the temporary folder, profiles and the folder that has them, the common data and common
/// files folders, and whatever holds one of these. Compared as the system reads paths: any case,
/// "/" for
/// "\", ".." and trailing blanks, points and backslashes. Other names of these folders (a mapped
/// drive and its share, a link, a short name) are known by the folder that they lead to, those of
/// the server's by the files in them too; a short name that may stand for a long one counts as it,
/// without being looked up. Administrative shares and device paths are never deleted, nor anything
/// while the Windows folder or Program Files cannot be told, nor a folder that cannot be looked at.
bool IsRemovableSetupFolder(Program& program, const InstallationPaths& paths,
                            const std::string& folder);

}  // namespace trelv::modProdTrelvManager
