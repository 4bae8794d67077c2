#pragma once

#include <array>
#include <string>

#include "platform/Program.h"

/// Where the host's files lie: the one place that knows. Paths are given and answered without
/// trailing backslash; results are joined texts, nothing is tested.
namespace trelv::hostPaths {

constexpr const char* kTop = "prg";
constexpr const char* kSetups = "prg\\com\\setup\\aggdovra";
constexpr const char* kCopies = "prg\\com\\bin\\cpy";
constexpr const char* kClientCopy = "prg\\com\\bin\\cpy\\client";
constexpr const char* kRecords = "prg\\etc";
constexpr const char* kTemporary = "prg\\tempterm";
constexpr const char* kPlugin = "prg\\com\\dovra\\plugin";
constexpr const char* kProducts = "mv";

/// Folders below a server path that many products share.
inline constexpr std::array kSharedFolders{kTop,        "prg\\com", "prg\\com\\setup", kSetups,
                                           kClientCopy, kRecords,   kTemporary,        kProducts};

/// Top of the host's own tree; a pack's content has the same below the folder it is unpacked into.
std::string topFolder(const std::string& serverPath);
/// Where set-ups and packs wait, on the server or below the folder that a pack is unpacked into.
std::string setupFolder(const std::string& serverPath);
/// What the host hands out to its workstations: the manager's client copy.
std::string clientCopyFolder(const std::string& serverPath);
/// Holds that folder; who may write there may write to the client copy, and nothing of it is handed
/// out.
std::string copiesFolder(const std::string& serverPath);
/// The server's version record and the environment file.
std::string recordFolder(const std::string& serverPath);
/// What is under way: locks, files on their way to their place.
std::string temporaryFolder(const std::string& serverPath);
/// There when the host is Dovra.
std::string pluginFolder(const std::string& serverPath);
/// The products' programs, below the integration path or any other root of an installation.
std::string productsFolder(const std::string& root);

/// Name of the product catalogue, which lies in the set-up folder.
constexpr const char* kCatalogueFile = "agdvcomp.ini";
/// Product catalogue, full path.
std::string catalogue(const std::string& serverPath);
/// Configuration file of a product: `conf` is the catalogue's value, relative to the server path.
std::string productConfiguration(const std::string& serverPath, const std::string& conf);
/// Version record of the server side and of this workstation, full paths.
std::string serverVersionRecord(const std::string& serverPath);
std::string clientVersionRecord(Program& program);
/// Update lock of the server side and of this workstation, full paths.
std::string serverLock(const std::string& serverPath);
std::string clientLock(Program& program);
/// The workstation's lock of a direct set-up from `root` where no host suite is: full path.
std::string directClientLock(const std::string& root);
/// File whose first line tells the release of Dovra, full path.
std::string dovraRelease(const std::string& serverPath);
/// Name of the host's environment file, which lies in the record folder.
constexpr const char* kEnvironmentFile = "ambver";

}  // namespace trelv::hostPaths
