#include "sim/SimProfileFiles.h"

#include <optional>

#include "sim/SimIniText.h"
#include "sim/SimText.h"

namespace trelv::sim {
namespace {

using namespace system_code;

std::string throughAnsi(const std::string& text) { return textOfAnsi(ansiOf(text)); }

bool isBareName(const std::string& file) { return file.find_first_of("\\/:") == std::string::npos; }

}  // namespace

SimProfileFiles::SimProfileFiles(SimFiles& files, SimSystem& system, SimCalls& calls)
    : files_(files), system_(system), calls_(calls) {}

std::string SimProfileFiles::placeOf(const std::string& file) const {
  if (!isBareName(file)) {
    return file;
  }
  const std::string& folder =
      privateWindowsFolder_.empty() ? system_.windowsFolder() : privateWindowsFolder_;
  return folder + (folder.back() == '\\' ? "" : "\\") + file;
}

std::string SimProfileFiles::readValue(const std::string& section, const std::string& key,
                                       const std::string& defaultValue, std::uint32_t size,
                                       const std::string& file) {
  const auto injected = calls_.enter(CallKind::ProfileRead, "profiles.readValue", placeOf(file), "",
                                     "[" + section + "] " + key);
  if (injected) {
    return iniValue(nullptr, section, key, defaultValue, size);
  }
  return quietRead(section, key, defaultValue, size, file);
}

std::string SimProfileFiles::quietRead(const std::string& section, const std::string& key,
                                       const std::string& defaultValue, std::uint32_t size,
                                       const std::string& file) {
  std::string bytes;
  const bool read = files_.quietRead(placeOf(throughAnsi(file)), bytes) == kSuccess;
  return iniValue(read ? &bytes : nullptr, section, key, defaultValue, size);
}

std::uint32_t SimProfileFiles::writeValue(const std::string& section, const std::string& key,
                                          const std::string& value, const std::string& file) {
  const auto injected = calls_.enter(CallKind::ProfileWrite, "profiles.writeValue", placeOf(file),
                                     "", "[" + section + "] " + key + "=" + value);
  return injected ? 0 : quietWrite(section, key, value, file);
}

std::uint32_t SimProfileFiles::quietWrite(const std::string& section, const std::string& key,
                                          const std::string& value, const std::string& file) {
  const std::string path = placeOf(throughAnsi(file));
  std::string bytes;
  const SystemCode readCode = files_.quietRead(path, bytes);
  SimVolumes::Place place;
  const bool reachable = readCode == kSuccess || readCode == kFileNotFound;
  if (!reachable || files_.writable(path, place) != kSuccess) {
    return 0;
  }
  const std::optional<std::string> written = withIniValue(bytes, section, key, value);
  return !written || files_.quietWrite(path, *written) == kSuccess ? 1 : 0;
}

}  // namespace trelv::sim
