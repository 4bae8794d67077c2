#pragma once

#include <string>

namespace trelv::kit {

/// The archive library takes time zone and character set from the process. While this lives local
/// time is universal time and texts are UTF-8, so that the same files give the same bytes anywhere.
class ArchiveSurroundings {
 public:
  ArchiveSurroundings();
  ArchiveSurroundings(const ArchiveSurroundings&) = delete;
  ArchiveSurroundings& operator=(const ArchiveSurroundings&) = delete;
  ~ArchiveSurroundings();

 private:
  std::string zone_;
  bool hadZone_;
  std::string characters_;
};

}  // namespace trelv::kit
