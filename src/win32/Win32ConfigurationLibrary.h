#pragma once

#include "machine/HostLibraries.h"
#include "win32/HostLibraryFile.h"

namespace trelv::win32 {

/// The store as the suite's own `mviconf.dll` keeps it.
class Win32ConfigurationLibrary : public machine::ConfigurationLibrary {
 public:
  explicit Win32ConfigurationLibrary(const LibraryFolders& folders);

  /// Does the library stand in one of its places? It is not loaded for this.
  bool stands() const { return !library_.path().empty(); }

  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override;
  std::int32_t setParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute, std::int32_t type,
                            const std::string& value) override;
  std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) override;

 private:
  template <class Function>
  Function* entry(const char* name);

  HostLibraryFile library_;
};

}  // namespace trelv::win32
