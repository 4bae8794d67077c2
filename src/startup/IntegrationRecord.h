#pragma once

#include <string>

#include "platform/Program.h"

/// The integration record: the host server folder that this machine was told, once. It is one value
/// of the configuration store: product SYSTEM, section "Complementary_Products", key "Integration",
/// attribute "Path".
namespace trelv::modMain {

/// Is an integration recorded? `path` receives the recorded folder as it is stored (an empty text
/// counts as recorded), else "". False too, with a log line, when the host suite is not found, and
/// when a run-time failure was reported. Never raises.
bool VerifyConfig(Program& program, std::string& path);

/// Writes the record (`path`: host server folder, without trailing backslash) on a machine that has
/// none. False when one exists, which is left untouched, or when a run-time failure ended it; true
/// does not mean that the store took the value. Never raises.
bool WriteIntegrationConfig(Program& program, const std::string& path);

}  // namespace trelv::modMain
