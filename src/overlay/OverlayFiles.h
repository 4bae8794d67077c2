#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "machine/Files.h"
#include "overlay/Steps.h"
#include "overlay/Tree.h"

namespace trelv::overlay {

/// The file calls over a tree. Each change that is not refused is a step; those that have no kind
/// of step (attributes, rights, streams) are done without one.
class OverlayFiles : public machine::Files {
 public:
  OverlayFiles(Tree& tree, Steps& steps) : tree_(tree), steps_(steps) {}

  SystemCode look(const std::string& path, machine::FileFacts& facts) override;
  SystemCode identify(const std::string& path, machine::FileIdentity& identity) override;
  SystemCode read(const std::string& path, std::size_t limit, std::string& content) override;
  SystemCode readPart(const std::string& path, std::uint64_t offset, std::size_t size,
                      std::string& content) override;
  SystemCode write(const std::string& path, std::string_view bytes) override;
  SystemCode append(const std::string& path, std::string_view bytes) override;
  SystemCode removeFile(const std::string& path) override;
  SystemCode setReadOnly(const std::string& path, bool readOnly) override;
  SystemCode makeFolder(const std::string& path) override;
  SystemCode removeFolder(const std::string& path) override;
  SystemCode list(const std::string& folder, const std::string& ending,
                  std::vector<machine::FolderEntry>& entries) override;
  SystemCode copyFile(const std::string& source, const std::string& target) override;
  SystemCode replaceFile(const std::string& source, const std::string& target) override;
  SystemCode moveFile(const std::string& source, const std::string& target) override;
  SystemCode copyRights(const std::string& source, const std::string& target) override;
  SystemCode mayAddFile(const std::string& folder) override;
  SystemCode removeStream(const std::string& path, const std::string& stream) override;

 private:
  SystemCode refusalToTake(Place from);
  SystemCode refusalToRename(const Place& from, const Place& to);

  Tree& tree_;
  Steps& steps_;
};

}  // namespace trelv::overlay
