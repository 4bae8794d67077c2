#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Starts one program of a product for the host, without waiting for it. `programNumber` as of
/// ConvertProgramToNumber; `arguments` are appended to the program's command. Never raises.
void RunSingleProdottoComplementare(Program& program, const std::string& serverPath,
                                    const std::string& integrationPath,
                                    const std::string& programsPath, std::int32_t programNumber,
                                    const std::optional<std::string>& arguments);

}  // namespace trelv::modProdTrelvManager
