// A name of a pack's entry that is accepted names one place below the output folder, to Windows
// too.
#include "decoder/EntryName.h"

#include "base/Text.h"
#include "decoder/WideText.h"
#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "sim/SimFiles.h"

namespace trelv::fuzz {
namespace {

const std::string kOutput = "C:\\out";

std::size_t wideLength(const std::string& text) {
  std::size_t length = 0;
  for (const wchar_t letter : decoder::wideOf(text)) {
    length += static_cast<std::uint32_t>(letter) > 0xFFFFU ? 2 : 1;
  }
  return length;
}

/// Names of devices in any folder, whatever extension they have.
bool namesDevice(std::string_view level) {
  const std::string name = upperCase(trim(level.substr(0, level.find('.'))));
  for (const char* const device : {"CON", "PRN", "AUX", "NUL"}) {
    if (name == device) {
      return true;
    }
  }
  const bool port = name.starts_with("COM") || name.starts_with("LPT");
  return port && name.size() == 4 && name[3] >= '0' && name[3] <= '9';
}

/// The system takes the path as it is written: nothing in it means another place.
void checkPlace(const std::string& path) {
  const std::string full = kOutput + "\\" + replaceAll(path, "/", "\\");
  require(sim::SimVolumes().fullPath(full) == full, "the system changes nothing in the path",
          {full});
  require(path.find_first_of("\\:*?\"<>|") == std::string::npos, "no letter with a meaning",
          {path});
  for (std::size_t at = 0; at <= path.size();) {
    const std::size_t end = std::min(path.find('/', at), path.size());
    const std::string level = path.substr(at, end - at);
    require(!level.empty() && level != "." && level != "..", "each level has a name", {path});
    require(!namesDevice(level), "no level is a device", {path});
    require(!level.ends_with(' ') && !level.ends_with('.'), "no level loses its end", {path});
    at = end + 1;
  }
}

}  // namespace

void checkEntryName(std::string_view bytes) {
  const decoder::EntryName name = decoder::readEntryName(bytes);
  if (name.refusal != nullptr) {
    require(name.path.empty(), "a refused name names nothing", {bytes});
    return;
  }
  require(name.length == wideLength(name.path), "the length is that of Windows", {name.path});
  const decoder::EntryName again = decoder::readEntryName(name.path);
  require(again.refusal == nullptr && again.path == name.path, "an accepted name stays accepted",
          {bytes, name.path});
  if (!name.path.empty()) {
    checkPlace(name.path);
  }
}

}  // namespace trelv::fuzz
