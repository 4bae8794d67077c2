#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/Codes.h"
#include "platform/Program.h"

/// Entry and run-mode dispatch.
namespace trelv::modMain {

/// Most arguments that are kept; what follows is dropped.
constexpr std::size_t kMostArguments = 20;

/// The program's only entry: finds out the facts of the machine, reads the command line and hands
/// over to one procedure, which runs to its end. Fills ProgramState::startup. Never raises: a
/// failure is shown in a box and logged.
void Main(Program& program);

/// The part of a whole command line after the program's own path (in quotes, or up to the first
/// blank or tab) and the blanks that follow it; empty when the path's quote is never closed.
std::string argumentsOf(const std::string& commandLine);

/// Splits raw arguments: blanks and tabs separate, double quotes group and are dropped, a quote
/// ends an argument like a blank does, empty quotes give none. At most kMostArguments. `args` has
/// argument 1 as element 0. True on success.
bool ParseCommandLine(const std::string& raw, std::uint8_t& count, std::vector<std::string>& args);

/// Run mode of a keyword (blanks round it and its case do not count); None when it is no keyword.
RunMode ConvertModeToNumber(const std::string& keyword);

}  // namespace trelv::modMain
