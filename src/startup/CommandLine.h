#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/Codes.h"

/// The text of a command line, taken apart.
namespace trelv::modMain {

/// Most arguments that are kept; what follows is dropped.
constexpr std::size_t kMostArguments = 20;

/// The part of a whole command line after the program's own path and the blanks that follow it. The
/// path stands in quotes (empty when they are never closed), or is one of `ownPaths`, with or
/// without its ".exe", or ends at the first blank or tab.
std::string argumentsOf(const std::string& commandLine,
                        const std::vector<std::string>& ownPaths = {});

/// Takes raw arguments apart at blanks, tabs and quotes; between two quotes blanks belong to the
/// argument. No quote is kept, and empty ones leave no argument behind. Stops at kMostArguments.
/// `args` has argument 1 as element 0. True on success.
bool ParseCommandLine(const std::string& raw, std::uint8_t& count, std::vector<std::string>& args);

/// Run mode of a keyword (blanks round it and its case do not count); None when it is no keyword.
RunMode ConvertModeToNumber(const std::string& keyword);

}  // namespace trelv::modMain
