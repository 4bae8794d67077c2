#pragma once

#include <string>
#include <vector>

namespace trelv::kit {

/// Rows of equally many texts as lines with aligned columns, two blanks between them.
std::string textTable(const std::vector<std::vector<std::string>>& rows);

}  // namespace trelv::kit
