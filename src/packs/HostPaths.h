#pragma once

#include <string>

#include "platform/Program.h"

/// Where the host's files lie. Server paths are given without trailing backslash; results are
/// joined texts, nothing is tested.
namespace trelv::hostPaths {

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
/// Folder in which set-ups and packs wait, without trailing backslash.
std::string setupFolder(const std::string& serverPath);
/// File whose first line tells the release of Dovra, full path.
std::string dovraRelease(const std::string& serverPath);

}  // namespace trelv::hostPaths
