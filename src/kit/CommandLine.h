#pragma once

#include <string>
#include <vector>

#include "kit/Verbs.h"
#include "kit/Workplace.h"

namespace trelv::kit {

/// The whole program: reads the arguments (UTF-8, without the program's own name), runs the verb
/// that they name and prints what it hands back. Answers the exit code. Never raises.
int run(const std::vector<std::string>& arguments, Workplace& workplace,
        const std::vector<VerbRow>& table = verbs());

}  // namespace trelv::kit
