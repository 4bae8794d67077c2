#pragma once

#include "machine/FinishedFiles.h"

namespace trelv::win32 {

class Win32FinishedFiles : public machine::FinishedFiles {
 public:
  SystemCode finish(const std::string& path, std::uint64_t modified) override;
  SystemCode moveFolder(const std::string& source, const std::string& target) override;
  SystemCode replaceFolder(const machine::FolderReplacement& replacement) override;
};

}  // namespace trelv::win32
