#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/ProgramState.h"

/// The text files in the root of an installation medium, as formats only. Lines are UTF-8 and have
/// no ends.
namespace trelv::mediumFiles {

/// What "Setup.cmf" says.
struct SetupFile {
  /// Line 1; each "%V%" stands for the medium's version.
  std::string headerTemplate;
  bool showIntegrationPath = false;
  std::array<MenuPage, kMenuPages> menu;
};

/// No line of a medium's file is longer (bytes): more than a command line can be.
constexpr std::size_t kLongestLine = 32'767;

/// True for a line of plain text in the system's code page: no control character but the tab, and
/// no mark of another encoding at its beginning. `bytes` as they stand in the file.
bool isPlainLine(std::string_view bytes);

/// Reads the lines of "Setup.cmf". Options and menu lines count from line 3 on, in any order; all
/// else there is passed over. An entry that lacks values has empty ones; empty commands are passed
/// over.
SetupFile readSetup(const std::vector<std::string>& lines);

/// Reads the lines of "Products.cmf", in order. Values are taken as they stand; lines of blanks are
/// no products.
std::vector<ListedProduct> readProducts(const std::vector<std::string>& lines);

/// True when a folder that is named relative to the medium's root lies on the medium: no drive, no
/// share, no way up beyond the root. Told from the text.
bool liesOnMedium(std::string_view folder);

}  // namespace trelv::mediumFiles
