#pragma once

#include "machine/HostLibraries.h"
#include "win32/HostLibraryFile.h"

namespace trelv::win32 {

/// What the suite's `tovrautil.dll` answers.
class Win32SupportLibrary : public machine::SupportLibrary {
 public:
  explicit Win32SupportLibrary(const LibraryFolders& folders);

  machine::SupportAnswer isAdministrator() override;
  machine::SupportAnswer temporaryPath(std::string& buffer) override;

 private:
  HostLibraryFile library_;
};

}  // namespace trelv::win32
