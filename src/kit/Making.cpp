#include "kit/Making.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "kit/Failure.h"
#include "kit/Linting.h"
#include "platform/FileSystemObject.h"

namespace trelv::kit {
namespace {

constexpr const char* kMaking = ".costruzione.trelv";
constexpr const char* kMark = ".lck";

}  // namespace

Making::Making(Workplace& workplace, const std::string& target)
    : workplace_(workplace),
      given_(workplace.paths, target),
      work_(workplace.paths, given_.given() + kMaking),
      target_(given_.full()),
      folder_(target_ + kMaking),
      name_(target_.substr(target_.find_last_of('\\') + 1)) {
  requireName();
  try {
    makeParents();
    claim();
    putRight();
    require(workplace_.machine.files.makeFolder(folder_));
    require(workplace_.machine.files.makeFolder(side("nuovo")));
  } catch (...) {
    finish();
    throw;
  }
}

Making::~Making() { finish(); }

void Making::require(SystemCode code) const {
  if (code != system_code::kSuccess) {
    throw Failure(given_.given(), code);
  }
}

/// Beside "." or a root there is no place for the folder.
void Making::requireName() const {
  if (FileSystemObject::isRoot(target_) || !equalNoCase(work_.full(), folder_)) {
    throw Failure(given_.given(), "non finisce con il nome di ciò che si costruisce");
  }
}

bool Making::stands(const std::string& path) {
  machine::FileFacts facts;
  return !meansMissing(workplace_.machine.files.look(path, facts));
}

void Making::makeParents() {
  std::vector<std::string> missing;
  for (std::string folder = FileSystemObject::parentFolderName(target_);
       !folder.empty() && !stands(folder); folder = FileSystemObject::parentFolderName(folder)) {
    missing.push_back(folder);
  }
  std::reverse(missing.begin(), missing.end());
  for (const std::string& folder : missing) {
    require(workplace_.machine.files.makeFolder(folder));
    parents_.insert(parents_.begin(), folder);
  }
}

/// The mark lies beside the folder, so that it outlives it.
void Making::claim() {
  const SystemCode code = workplace_.machine.exclusion.take(folder_ + kMark, "", 0, mark_);
  if (code == system_code::kSharingViolation) {
    throw Failure(given_.given(), "lo sta costruendo un altro programma");
  }
  require(code);
}

/// One that was ended between two renames had put aside what stood there.
void Making::putRight() {
  if (stands(aside()) && !stands(target_)) {
    require(workplace_.finished.moveFolder(aside(), target_));
  }
  FileSystemObject fileSystem(workplace_.machine.files);
  if (fileSystem.folderExists(folder_)) {
    try {
      fileSystem.deleteFolder(folder_, true);
    } catch (const RuntimeError& failure) {
      throw Failure(work_.given(), failure.description());
    }
  }
}

void Making::finish() {
  if (mark_ != nullptr) {
    removeQuietly();
    mark_.reset();
  }
  // Those that hold something by now stay.
  for (const std::string& folder : std::exchange(parents_, {})) {
    workplace_.machine.files.removeFolder(folder);
  }
}

void Making::removeQuietly() {
  FileSystemObject fileSystem(workplace_.machine.files);
  try {
    // What was put aside and could not be brought back is all that there is.
    if (fileSystem.folderExists(folder_) && (stands(target_) || !stands(aside()))) {
      fileSystem.deleteFolder(folder_, true);
    }
  } catch (const std::exception&) {
    // The next attempt removes it.
  }
}

void Making::placeFile() {
  require(workplace_.machine.files.replaceFile(path(), target_));
  finish();
}

void Making::placeFolder() {
  require(stands(target_) ? workplace_.finished.replaceFolder({path(), target_, aside()})
                          : workplace_.finished.moveFolder(path(), target_));
  finish();
}

std::vector<Finding> Making::judge(const std::string& built, const RuleChoice& rules,
                                   Progress& progress) {
  const std::string shown = work_.shown(built);
  std::vector<Finding> findings = Linting(workplace_, rules, progress).run({shown});
  for (Finding& finding : findings) {
    if (finding.file.starts_with(shown)) {
      finding.file = given_.given() + finding.file.substr(shown.size());
    }
  }
  return findings;
}

Answer toldOf(const std::string& output, const std::function<Answer()>& work) {
  try {
    return work();
  } catch (const RuntimeError& failure) {
    throw Failure(output, failure.description());
  }
}

bool holdsError(const std::vector<Finding>& findings) {
  return std::any_of(findings.begin(), findings.end(), [](const Finding& finding) -> bool {
    return finding.severity == Severity::Error;
  });
}

}  // namespace trelv::kit
