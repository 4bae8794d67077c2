#pragma once

#include <string>
#include <vector>

namespace trelv {

/// Names for a message box, each on a line of its own behind `lineEnd`. Of more than ten the first
/// ten and how many others there are: no box is higher than its screen.
std::string namesByLine(const std::vector<std::string>& names, const std::string& lineEnd);

}  // namespace trelv
