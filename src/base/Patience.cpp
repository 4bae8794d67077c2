#include "base/Patience.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/Text.h"

namespace trelv {
namespace {

/// In milliseconds, 3 s together. What lets go at once costs next to nothing; what takes longer is
/// not asked a hundred times over a network.
constexpr std::array<std::uint32_t, 10> kPauses{10, 20, 40, 80, 160, 320, 640, 640, 640, 450};

/// So many files or folders may cost 3 s each; a start that meets more of them goes on.
constexpr std::size_t kMostInVain = 5;

bool mayPass(SystemCode code) {
  // The last one is said of a file that goes when its user closes it; older systems say 5.
  constexpr SystemCode kLockViolation = 33;
  constexpr SystemCode kUserMappedFile = 1224;
  constexpr SystemCode kDeletePending = 303;
  return code == system_code::kAccessDenied || code == system_code::kSharingViolation ||
         code == kLockViolation || code == system_code::kDirectoryNotEmpty ||
         code == kUserMappedFile || code == kDeletePending;
}

std::string folderOf(const std::string& path) {
  const std::size_t last = path.find_last_of("\\/");
  return last == std::string::npos ? std::string() : path.substr(0, last + 1);
}

}  // namespace

Patience::Patience(Pause pause) : pause_(std::move(pause)) {}

SystemCode Patience::change(const std::string& path, const std::function<SystemCode()>& attempt,
                            const std::function<bool()>& lasts) {
  SystemCode code = attempt();
  if (mayPass(code) && !isWorthWaiting(code, path, lasts)) {
    return code;
  }
  for (auto pause = kPauses.begin(); mayPass(code) && pause != kPauses.end(); ++pause) {
    pause_(*pause);
    code = attempt();
  }
  if (mayPass(code)) {
    remember(code, path);
  } else if (code == system_code::kSuccess) {
    forget(path);
  }
  return code;
}

bool Patience::isWorthWaiting(SystemCode code, const std::string& path,
                              const std::function<bool()>& lasts) const {
  const bool denied = code == system_code::kAccessDenied;
  return inVain_.size() < kMostInVain && !wasInVain(path) && !(denied && wasDeniedBeside(path)) &&
         !(denied && lasts());
}

void Patience::remember(SystemCode code, const std::string& path) {
  inVain_.push_back({upperCase(path), code == system_code::kAccessDenied});
}

void Patience::forget(const std::string& path) {
  // Most starts never waited for anything.
  if (inVain_.empty()) {
    return;
  }
  std::erase_if(inVain_, [file = upperCase(path)](const Refusal& refusal) -> bool {
    return refusal.path == file || (refusal.denied && folderOf(refusal.path) == folderOf(file));
  });
}

bool Patience::wasInVain(const std::string& path) const {
  return !inVain_.empty() && std::any_of(inVain_.begin(), inVain_.end(),
                                         [file = upperCase(path)](const Refusal& refusal) -> bool {
                                           return refusal.path == file;
                                         });
}

bool Patience::wasDeniedBeside(const std::string& path) const {
  return !inVain_.empty() &&
         std::any_of(inVain_.begin(), inVain_.end(),
                     [folder = folderOf(upperCase(path))](const Refusal& refusal) -> bool {
                       return refusal.denied && folderOf(refusal.path) == folder;
                     });
}

void Patience::expectInVain(const std::string& path) {
  remember(system_code::kSharingViolation, path);
}

}  // namespace trelv
