#pragma once

#include "machine/FinishedFiles.h"

namespace trelv::posix {

class PosixFinishedFiles : public machine::FinishedFiles {
 public:
  SystemCode finish(const std::string& path, std::uint64_t modified) override;
  SystemCode moveFolder(const std::string& source, const std::string& target) override;
  SystemCode replaceFolder(const machine::FolderReplacement& replacement) override;

 private:
  SystemCode replaceInTwoSteps(const machine::FolderReplacement& replacement);
};

}  // namespace trelv::posix
