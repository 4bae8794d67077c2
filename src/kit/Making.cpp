#include "kit/Making.h"

#include <algorithm>
#include <exception>

#include "base/RuntimeError.h"
#include "kit/Linting.h"
#include "platform/FileSystemObject.h"

namespace trelv::kit {
namespace {

constexpr const char* kMaking = ".making";
constexpr const char* kAside = ".old";

void require(SystemCode code, const std::string& path) {
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
}

}  // namespace

Making::Making(Workplace& workplace, const std::string& target)
    : workplace_(workplace),
      given_(workplace.paths, target),
      target_(given_.full()),
      folder_(target_ + kMaking),
      name_(target_.substr(target_.find_last_of('\\') + 1)) {
  remove(folder_);
  require(workplace_.machine.files.makeFolder(folder_), folder_);
}

Making::~Making() {
  if (!finished_) {
    finish();
  }
}

void Making::finish() {
  finished_ = true;
  removeQuietly(folder_);
}

void Making::removeQuietly(const std::string& folder) {
  try {
    remove(folder);
  } catch (const std::exception&) {
    // The next attempt removes it.
  }
}

void Making::remove(const std::string& folder) {
  FileSystemObject fileSystem(workplace_.machine.files);
  if (fileSystem.folderExists(folder)) {
    fileSystem.deleteFolder(folder, true);
  }
}

void Making::placeFile() {
  require(workplace_.machine.files.replaceFile(path(), target_), target_);
  finish();
}

void Making::placeFolder() {
  const std::string aside = target_ + kAside;
  remove(aside);
  machine::FileFacts facts;
  const bool replaces = !meansMissing(workplace_.machine.files.look(target_, facts));
  if (replaces) {
    require(workplace_.finished.moveFolder(target_, aside), target_);
  }
  const SystemCode code = workplace_.finished.moveFolder(path(), target_);
  if (code != system_code::kSuccess && replaces) {
    workplace_.finished.moveFolder(aside, target_);
  }
  require(code, target_);
  removeQuietly(aside);
  finish();
}

std::vector<Finding> Making::judge(const std::string& name, Progress& progress) {
  const std::string built = given_.given() + kMaking + workplace_.paths.separator() + name;
  const RuleChoice rules({}, {});
  std::vector<Finding> findings = Linting(workplace_, rules, progress).run({built});
  for (Finding& finding : findings) {
    if (finding.file.starts_with(built)) {
      finding.file = given_.given() + finding.file.substr(built.size());
    }
  }
  return findings;
}

bool holdsError(const std::vector<Finding>& findings) {
  return std::any_of(findings.begin(), findings.end(), [](const Finding& finding) -> bool {
    return finding.severity == Severity::Error;
  });
}

}  // namespace trelv::kit
