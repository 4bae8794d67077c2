#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "machine/HostLibraries.h"
#include "machine/Locale.h"
#include "overlay/Steps.h"

namespace trelv::overlay {

/// A configuration store that keeps its settings where this program cannot look, the host's: what
/// is set stays on top. A store that cannot be read counts as one that cannot be written.
class OverlayStore : public machine::ConfigurationLibrary {
 public:
  OverlayStore(machine::ConfigurationLibrary& below, machine::Locale& locale, Steps& steps)
      : below_(below), locale_(locale), steps_(steps) {}

  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override;
  std::int32_t setParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute, std::int32_t type,
                            const std::string& value) override;
  std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) override;

 private:
  machine::ConfigurationLibrary& below_;
  machine::Locale& locale_;
  Steps& steps_;
  /// By upper-case names.
  std::map<std::array<std::string, 4>, std::string> set_;
};

/// A configuration store that works on the overlay's own files: the step is what was stored, not
/// how the file was written.
class StoreOverFiles : public machine::ConfigurationLibrary {
 public:
  StoreOverFiles(machine::ConfigurationLibrary& store, Steps& steps)
      : store_(store), steps_(steps) {}

  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override;
  std::int32_t setParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute, std::int32_t type,
                            const std::string& value) override;
  std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) override;

 private:
  machine::ConfigurationLibrary& store_;
  Steps& steps_;
};

}  // namespace trelv::overlay
