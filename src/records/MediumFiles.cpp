#include "records/MediumFiles.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/Text.h"

namespace trelv::mediumFiles {
namespace {

constexpr char kSeparator = '|';
/// Header and a line that is free.
constexpr std::size_t kLinesBeforeOptions = 2;

constexpr std::array<std::string_view, kMenuPages> kMarkers{"#PRIMA_LISTA#", "#SECONDA_LISTA#",
                                                            "#TERZA_LISTA#", "#QUARTA_LISTA#"};

/// Marks that editors put before text in UTF-8 and UTF-16.
constexpr std::array<std::string_view, 3> kEncodingMarks{"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"};

/// Where the values of an entry stand.
enum Value : std::size_t { kCaption, kPackFolder, kIdentifier, kFirstCommand };

std::vector<std::string> split(std::string_view text) {
  std::vector<std::string> values;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(kSeparator, at), text.size());
    values.emplace_back(text.substr(at, end - at));
    at = end + 1;
  }
  return values;
}

std::string valueAt(const std::vector<std::string>& values, std::size_t index) {
  return index < values.size() ? values[index] : std::string();
}

OfferedProduct entryOf(const std::vector<std::string>& values) {
  OfferedProduct entry{valueAt(values, kIdentifier), valueAt(values, kCaption),
                       valueAt(values, kPackFolder)};
  for (std::size_t i = kFirstCommand; i < values.size(); ++i) {
    if (!values[i].empty()) {
      entry.commands.push_back(values[i]);
    }
  }
  return entry;
}

/// One value names the page, more are an entry of it.
void readMenuLine(std::string_view text, MenuPage& page) {
  std::vector<std::string> values = split(text);
  for (std::string& value : values) {
    value = trim(value);
  }
  if (values.size() == 1) {
    page.caption = std::move(values.front());
  } else {
    page.entries.push_back(entryOf(values));
  }
}

void readOptions(const std::string& line, SetupFile& setup) {
  if (line.find("%SHOW_PATH_INTEGRATION%") != std::string::npos) {
    setup.showIntegrationPath = true;
  }
  for (std::size_t page = 0; page < kMenuPages; ++page) {
    const std::string_view marker = kMarkers.at(page);
    if (line.starts_with(marker)) {
      readMenuLine(std::string_view(line).substr(marker.size()), setup.menu.at(page));
    }
  }
}

bool isSlash(char c) { return c == '\\' || c == '/'; }

/// ".." as the system reads it: it drops blanks and points at the end of a name.
bool leadsUp(std::string_view level) {
  return level.starts_with("..") && level.find_first_not_of(" .") == std::string_view::npos;
}

}  // namespace

bool isPlainLine(std::string_view bytes) {
  constexpr unsigned char kFirstPrintable = 0x20;
  const bool marked =
      std::any_of(kEncodingMarks.begin(), kEncodingMarks.end(),
                  [&](std::string_view mark) -> bool { return bytes.starts_with(mark); });
  return !marked && std::none_of(bytes.begin(), bytes.end(), [](char c) -> bool {
    return static_cast<unsigned char>(c) < kFirstPrintable && c != '\t';
  });
}

SetupFile readSetup(const std::vector<std::string>& lines) {
  SetupFile setup;
  if (!lines.empty()) {
    setup.headerTemplate = lines.front();
  }
  for (std::size_t i = kLinesBeforeOptions; i < lines.size(); ++i) {
    readOptions(lines[i], setup);
  }
  return setup;
}

std::vector<ListedProduct> readProducts(const std::vector<std::string>& lines) {
  std::vector<ListedProduct> products;
  for (const std::string& line : lines) {
    if (!trim(line).empty()) {
      const std::vector<std::string> values = split(line);
      products.push_back({valueAt(values, 0), valueAt(values, 1)});
    }
  }
  return products;
}

bool liesOnMedium(std::string_view folder) {
  if ((!folder.empty() && isSlash(folder.front())) || folder.find(':') != std::string_view::npos) {
    return false;
  }
  int depth = 0;
  for (std::size_t at = 0; at <= folder.size();) {
    const std::size_t end = std::min(folder.find_first_of("\\/", at), folder.size());
    const std::string_view level = folder.substr(at, end - at);
    if (leadsUp(level)) {
      --depth;
    } else if (level.find_first_not_of(" .") != std::string_view::npos) {
      ++depth;
    }
    if (depth < 0) {
      return false;
    }
    at = end + 1;
  }
  return true;
}

}  // namespace trelv::mediumFiles
