#include "overlay/PrivateFolder.h"

#include <charconv>
#include <string_view>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Text.h"

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

/// Number of the process behind the beginning of such a folder's name ("4711-1"); nothing in any
/// other name.
std::optional<std::uint32_t> processOf(std::string_view rest) {
  const char* const end = rest.data() + rest.size();
  std::uint32_t process = 0;
  std::uint32_t number = 0;
  const auto first = std::from_chars(rest.data(), end, process);
  if (first.ec != std::errc() || first.ptr == end || *first.ptr != '-') {
    return std::nullopt;
  }
  const auto second = std::from_chars(first.ptr + 1, end, number);
  return second.ec == std::errc() && second.ptr == end ? std::optional(process) : std::nullopt;
}

}  // namespace

PrivateFolder::PrivateFolder(machine::Files& files, machine::SystemFacts& system,
                             machine::Processes& processes, const std::string& parent)
    : files_(files) {
  // Several computers may have one folder of temporary files, and each counts its own processes.
  std::string computer;
  system.computerName(computer);
  const std::string beginning = "trelv-" + computer + "-";
  removeLeftovers(processes, parent, beginning);
  const std::string whose = parent + "\\" + beginning + std::to_string(system.processId());
  SystemCode code = system_code::kAlreadyExists;
  for (int number = 1; code == system_code::kAlreadyExists && number <= kMostTries; ++number) {
    path_ = whose + "-" + std::to_string(number);
    code = files_.makeFolder(path_);
  }
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path_);
  }
}

void PrivateFolder::removeLeftovers(machine::Processes& processes, const std::string& parent,
                                    const std::string& beginning) {
  std::vector<machine::FolderEntry> entries;
  files_.list(parent, "", entries);
  for (const machine::FolderEntry& entry : entries) {
    if (!entry.facts.folder || entry.facts.reparsePoint ||
        !equalNoCase(entry.name.substr(0, beginning.size()), beginning)) {
      continue;
    }
    const std::optional<std::uint32_t> process =
        processOf(std::string_view(entry.name).substr(beginning.size()));
    if (process && !processes.isRunning(*process)) {
      removeTree(files_, parent + "\\" + entry.name);
    }
  }
}

PrivateFolder::~PrivateFolder() { removeTree(files_, path_); }

}  // namespace trelv::overlay
