#pragma once

#include <string>

#include "platform/Program.h"

/// The integration record: the host server folder that this machine was told, once.
namespace trelv::modMain {

/// Is an integration recorded? `path` receives the recorded folder (no change of its text), else
/// "". False too when the host suite is not found or on a reported failure.
bool VerifyConfig(Program& program, std::string& path);

/// Writes the record on a machine that has none. False when one exists (it is left untouched) or a
/// run-time failure ended it.
bool WriteIntegrationConfig(Program& program, const std::string& path);

}  // namespace trelv::modMain
