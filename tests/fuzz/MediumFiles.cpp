// The files of a medium are read as a second, simpler reader does it; a folder counts as one of the
// medium's only where the system finds it there.
#include "records/MediumFiles.h"

#include "base/Text.h"
#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "platform/FileSystemObject.h"
#include "sim/SimMachine.h"

namespace trelv::fuzz {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* kFile = "C:\\a.cmf";
const Lines kMarkers = {"#PRIMA_LISTA#", "#SECONDA_LISTA#", "#TERZA_LISTA#", "#QUARTA_LISTA#"};

sim::SimMachine& machine() {
  static sim::SimMachine made;
  return made;
}

Lines linesByProgram(std::string_view bytes) {
  machine().putFile(kFile, bytes);
  FileSystemObject files(machine().files());
  Lines lines = files.readLines(kFile);
  machine().callLog().clear();
  return lines;
}

Lines linesByRule(std::string_view bytes) {
  Lines lines;
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\n');
    std::string line(bytes.substr(0, end));
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    if (end != std::string_view::npos && line.ends_with('\r')) {
      line.pop_back();
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

Lines fieldsOf(const std::string& text) {
  Lines fields(1);
  for (const char c : text) {
    if (c == '|') {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  return fields;
}

std::string fieldAt(const Lines& fields, std::size_t index) {
  return index < fields.size() ? trim(fields[index]) : "";
}

/// One entry in a line: its fields and its commands that are not empty.
std::string told(const Lines& fields) {
  std::string text = fieldAt(fields, 2) + "\n" + fieldAt(fields, 0) + "\n" + fieldAt(fields, 1);
  for (std::size_t i = 3; i < fields.size(); ++i) {
    text += fieldAt(fields, i).empty() ? "" : "\n" + fieldAt(fields, i);
  }
  return text;
}

std::string told(const OfferedProduct& entry) {
  std::string text = entry.identifier + "\n" + entry.caption + "\n" + entry.packFolder;
  for (const std::string& command : entry.commands) {
    text += "\n" + command;
  }
  return text;
}

void checkPage(const Lines& lines, std::size_t page, const MenuPage& read) {
  std::string caption;
  Lines entries;
  for (std::size_t i = 2; i < lines.size(); ++i) {
    if (!lines[i].starts_with(kMarkers[page])) {
      continue;
    }
    const Lines fields = fieldsOf(lines[i].substr(kMarkers[page].size()));
    if (fields.size() == 1) {
      caption = fieldAt(fields, 0);
    } else {
      entries.push_back(told(fields));
    }
  }
  require(read.caption == caption, "a line of one field names the list", {read.caption, caption});
  require(read.entries.size() == entries.size(), "each line of several fields is an entry");
  for (std::size_t i = 0; i < entries.size(); ++i) {
    require(told(read.entries[i]) == entries[i], "an entry has the fields of its line",
            {told(read.entries[i]), entries[i]});
  }
}

void checkSetup(const Lines& lines) {
  const mediumFiles::SetupFile setup = mediumFiles::readSetup(lines);
  require(setup.headerTemplate == (lines.empty() ? "" : lines.front()), "line 1 is the header");
  bool shows = false;
  for (std::size_t i = 2; i < lines.size(); ++i) {
    shows = shows || lines[i].find("%SHOW_PATH_INTEGRATION%") != std::string::npos;
  }
  require(setup.showIntegrationPath == shows, "the option counts from line 3 on");
  for (std::size_t page = 0; page < kMenuPages; ++page) {
    checkPage(lines, page, setup.menu.at(page));
  }
}

void checkProducts(const Lines& lines) {
  const std::vector<ListedProduct> products = mediumFiles::readProducts(lines);
  std::size_t at = 0;
  for (const std::string& line : lines) {
    if (line.find_first_not_of(' ') == std::string::npos) {
      continue;
    }
    const Lines fields = fieldsOf(line);
    require(at < products.size(), "each line is a product", {line});
    require(products[at].identifier == fields[0] &&
                products[at].description == (fields.size() > 1 ? fields[1] : ""),
            "a product has the fields of its line", {line});
    ++at;
  }
  require(at == products.size(), "there are no other products");
}

/// A folder that lies on the medium is found below its root at each of its levels: those that may
/// lead elsewhere, and the last.
void checkFolder(std::string_view folder) {
  if (!mediumFiles::liesOnMedium(folder)) {
    return;
  }
  const std::string root = "M:\\supporto";
  for (std::size_t at = 0; at <= folder.size();) {
    const std::size_t end = std::min(folder.find_first_of("\\/", at), folder.size());
    if (end == folder.size() || folder.substr(at, end - at).find('.') != std::string_view::npos) {
      const std::string path = root + "\\" + std::string(folder.substr(0, end));
      const std::string full = machine().volumes().fullPath(path);
      require(full == root || full.starts_with(root + "\\"),
              "a folder of the medium leads nowhere else", {folder, full});
    }
    at = end + 1;
  }
}

}  // namespace

void checkMediumFiles(std::string_view bytes) {
  const Lines lines = linesByProgram(bytes);
  require(lines == linesByRule(bytes), "the lines are those of a second reader", {bytes});
  for (const std::string& line : lines) {
    const bool control = std::any_of(line.begin(), line.end(), [](char c) -> bool {
      return static_cast<unsigned char>(c) < 0x20 && c != '\t';
    });
    require(!control || !mediumFiles::isPlainLine(line), "control characters are no text", {line});
    checkFolder(line);
  }
  checkSetup(lines);
  checkProducts(lines);
}

}  // namespace trelv::fuzz
