#include "kit/Failure.h"

#include "base/RuntimeError.h"
#include "base/Text.h"

namespace trelv::kit {
namespace {

/// What a system code means, in Italian, without the path.
std::string reasonOf(SystemCode code) {
  // The failure's words end with what was worked on; here the path stands in front.
  constexpr const char* kSubject = "\x1F";
  const std::string text = failureFromSystemCode(code, kSubject).description();
  std::string reason = trim(text.substr(0, text.find(kSubject)));
  while (!reason.empty() && (reason.back() == ':' || reason.back() == '(')) {
    reason = trim(reason.substr(0, reason.size() - 1));
  }
  return reason;
}

}  // namespace

Failure::Failure(const std::string& path, SystemCode code) : Failure(path, reasonOf(code)) {}

}  // namespace trelv::kit
