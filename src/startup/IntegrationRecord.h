#pragma once

#include <string>

#include "platform/Program.h"

/// The integration record says which server path this machine belongs to; it is written
/// once. The store keeps it for the product SYSTEM, as attribute "Path" of "Integration" in the
/// section "Complementary_Products".
namespace trelv::modMain {

/// Does the machine belong to a server? `path` receives the folder as it is stored, which may be
/// ""; it is "" too if the answer is no. No, with a log line, also on a machine without the suite,
/// and behind a failure that was reported. Never raises.
bool VerifyConfig(Program& program, std::string& path);

/// Joins the machine to the server whose folder is `path` (no trailing backslash). False if it
/// belongs to one already, which then stays, or behind a failure; true means that the store was
/// asked, not that it took the value. Never raises.
bool WriteIntegrationConfig(Program& program, const std::string& path);

}  // namespace trelv::modMain
