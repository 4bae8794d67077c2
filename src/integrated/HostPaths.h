#pragma once

#include <string>

#include "platform/Program.h"

/// Where the host's files lie. Server paths are given without trailing backslash.
namespace trelv::hostPaths {

/// Product catalogue, full path.
std::string catalogue(const std::string& serverPath);
/// Version record of the server side and of this workstation, full paths.
std::string serverVersionRecord(const std::string& serverPath);
std::string clientVersionRecord(Program& program);
/// Folder in which set-ups and packs wait, without trailing backslash.
std::string setupFolder(const std::string& serverPath);

}  // namespace trelv::hostPaths
