#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/SystemCode.h"

namespace trelv {

/// Patience with files that somebody else has in hand for a moment: a scanner that reads what was
/// just written, an index, another workstation. A change that the system refuses with 5, 32 or 145
/// is tried again for 3 s, after pauses that grow; only then is it refused.
///
/// Whom it was refused to for all of that time does not wait again: a refused right (5) counts for
/// the whole folder, a file in use (32, 145) for itself, until something there can be changed. So
/// who may not write somewhere loses 3 s there once, not with each call.
class Patience {
 public:
  using Pause = std::function<void(std::uint32_t milliseconds)>;

  /// `pause` lets so much time pass.
  explicit Patience(Pause pause);

  /// Makes `attempt`, a change of what stands at `path` ("\" or "/" between its levels), and makes
  /// it again as said above. `lasts` is asked once, when the first answer was 5: true where that is
  /// sure to stay so. Gives the last answer.
  SystemCode change(const std::string& path, const std::function<SystemCode()>& attempt,
                    const std::function<bool()>& lasts);

 private:
  bool isWorthWaiting(SystemCode code, const std::string& path,
                      const std::function<bool()>& lasts) const;
  void remember(SystemCode code, const std::string& path);
  void forget(const std::string& path);
  bool wasInVain(const std::string& path) const;

  Pause pause_;
  /// Upper case: files, and folders that something was refused in.
  std::vector<std::string> inVain_;
};

}  // namespace trelv
