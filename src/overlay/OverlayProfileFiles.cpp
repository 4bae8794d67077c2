#include "overlay/OverlayProfileFiles.h"

#include <limits>

namespace trelv::overlay {
namespace {

constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
constexpr std::uint16_t kTerminalSuite = 0x10;
constexpr std::uint16_t kSingleUserSuite = 0x100;

bool isBareName(const std::string& file) { return file.find_first_of("\\/:") == std::string::npos; }

}  // namespace

/// A terminal server gives each user a Windows folder of his own, in his profile.
std::string OverlayProfileFiles::windowsFolder() {
  std::string folder;
  if (system_.suiteIncludes(kTerminalSuite) && !system_.suiteIncludes(kSingleUserSuite)) {
    system_.shellFolder(machine::kUserProfileFolder, folder);
    return joined(folder, "windows");
  }
  system_.systemWindowsFolder(folder);
  return folder;
}

/// The platform takes names in the ANSI code page only.
std::string OverlayProfileFiles::placeOf(const std::string& file) {
  const std::string name = locale_.fromAnsi(locale_.toAnsi(file));
  return isBareName(name) ? joined(windowsFolder(), name) : name;
}

std::string OverlayProfileFiles::readValue(const std::string& section, const std::string& key,
                                           const std::string& defaultValue, std::uint32_t size,
                                           const std::string& file) {
  const std::string place = placeOf(file);
  const Place found = tree_.find(place);
  const bool unchanged = found.entry == nullptr && !found.below.empty();
  return below_.readValue(section, key, defaultValue, size,
                          unchanged ? file : tree_.realPath(place));
}

std::uint32_t OverlayProfileFiles::writeValue(const std::string& section, const std::string& key,
                                              const std::string& value, const std::string& file) {
  const Place place = tree_.find(placeOf(file));
  if (tree_.refusalToWrite(place) != system_code::kSuccess) {
    return 0;
  }
  const std::string copy = privateFolder_.newPath() + ".ini";
  std::string before;
  if (place.isThere()) {
    tree_.read(placeOf(file), 0, kAll, before);
    files_.write(copy, before);
  }
  const std::uint32_t written = below_.writeValue(section, key, value, copy);
  std::string after;
  if (written == 0 || files_.read(copy, kAll, after) != system_code::kSuccess) {
    return written;
  }
  if (place.isThere() && after == before) {
    files_.removeFile(copy);
    return written;
  }
  machine::FileFacts facts = place.facts;
  const machine::FileFacts now = tree_.writtenNow(after.size());
  facts.size = now.size;
  facts.modified = now.modified;
  tree_.putFile(place, facts).source = copy;
  steps_.add(
      {.kind = StepKind::Ini, .subject = file, .section = section, .name = key, .value = value});
  return written;
}

}  // namespace trelv::overlay
