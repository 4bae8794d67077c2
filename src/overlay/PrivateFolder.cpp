#include "overlay/PrivateFolder.h"

#include <vector>

#include "base/RuntimeError.h"

namespace trelv::overlay {
namespace {

/// What an earlier process of the same number left makes it count on.
constexpr int kMostTries = 100;

void removeTree(machine::Files& files, const std::string& folder) {
  std::vector<machine::FolderEntry> entries;
  files.list(folder, "", entries);
  for (const machine::FolderEntry& entry : entries) {
    const std::string path = folder + "\\" + entry.name;
    if (entry.facts.readOnly) {
      files.setReadOnly(path, false);
    }
    if (entry.facts.folder && !entry.facts.reparsePoint) {
      removeTree(files, path);
    } else if (entry.facts.folder) {
      files.removeFolder(path);
    } else {
      files.removeFile(path);
    }
  }
  files.removeFolder(folder);
}

}  // namespace

PrivateFolder::PrivateFolder(machine::Files& files, machine::SystemFacts& system,
                             const std::string& parent)
    : files_(files) {
  const std::string whose = parent + "\\trelv-" + std::to_string(system.sessionId()) + "-" +
                            std::to_string(system.processId());
  SystemCode code = system_code::kAlreadyExists;
  for (int number = 1; code == system_code::kAlreadyExists && number <= kMostTries; ++number) {
    path_ = whose + "-" + std::to_string(number);
    code = files_.makeFolder(path_);
  }
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path_);
  }
}

PrivateFolder::~PrivateFolder() { removeTree(files_, path_); }

}  // namespace trelv::overlay
