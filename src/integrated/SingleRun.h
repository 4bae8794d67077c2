#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/InstallationPaths.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Starts one program of a product for the host, without waiting for it. `programNumber` as of
/// ConvertProgramToNumber; `arguments` (no leading blanks) follow the program's command after one
/// blank, which stands there without arguments too. A program that is not configured or not on disk
/// is told in a box. Never raises: a run-time failure is logged and reported.
void RunSingleProdottoComplementare(Program& program, const InstallationPaths& paths,
                                    std::int32_t programNumber,
                                    const std::optional<std::string>& arguments);

}  // namespace trelv::modProdTrelvManager
