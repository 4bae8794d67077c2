#pragma once

#include <string>

#include "platform/Program.h"

/// Opening of product packs: zip packs with 7-Zip, "gz" packs with the decoder, whose output holds
/// zip packs; both programs lie in the manager's own folder. A file's extension is compared
/// exactly, "zip" or "gz" in lower case. Folders are given without trailing backslash. All is
/// unpacked in the suite's temporary folder first; where there is none, no pack is opened and one
/// log line says so.
namespace trelv::modProdTrelvManager {

/// Opens every zip pack of `folder`, in the file system's order, into the temporary folder. With
/// `removePacks` an opened pack is deleted and, when the temporary folder is another folder than
/// `target`, the set-up tree that it held is copied into the set-up folder of `target`. A pack that
/// could not be opened is told in a box, once per process, and kept. In the end the unpacked tree
/// is removed when the folders differ. Always true; raises what the file system answers: a folder
/// that is missing, a copy that failed. The kept ini files are forgotten when a pack was opened.
bool OpenZipPacksInFolder(Program& program, const std::string& folder, const std::string& target,
                          bool removePacks);

/// Opens one zip pack (full path) into `destination` and deletes it with `removePackAfterwards`.
/// Always true, also when it could not be opened: only a box tells that.
bool OpenZipPack(Program& program, const std::string& zipPath, const std::string& destination,
                 bool removePackAfterwards);

/// OpenSinglePacks for the gz packs of `folder`, one after the other, up to the first failure,
/// which is reported. Never raises.
void OpenFolderPacks(Program& program, const std::string& folder, const std::string& target);

/// Opens one gz pack (full path): the decoder writes it to the temporary folder, then the zip packs
/// that it held are opened into `target` and removed. A decoder that fails is not told. Never
/// raises; a failure is reported.
void OpenSinglePacks(Program& program, const std::string& packPath, const std::string& target);

}  // namespace trelv::modProdTrelvManager
