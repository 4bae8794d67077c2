#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/SystemCode.h"

namespace trelv {

/// Patience with files that somebody else has in hand for a moment: a scanner that reads what was
/// just written, an index, another workstation. What the system refuses with 5, 32, 33, 145, 303 or
/// 1224 is tried again for 3 s, after pauses that grow; only then is it refused.
///
/// Whom it was refused to for all of that time does not wait again: a file in use counts for
/// itself, a refused right (5) for the whole folder, until something there can be changed. So who
/// may not write somewhere loses 3 s there once, not with each call. Where five files or folders
/// were waited for in vain nothing more is: the user has lost 15 s, and it is no scanner that
/// passes by.
class Patience {
 public:
  using Pause = std::function<void(std::uint32_t milliseconds)>;

  /// `pause` lets so much time pass.
  explicit Patience(Pause pause);

  /// Makes `attempt`, which changes, reads or starts what stands at `path` ("\" or "/" between its
  /// levels), and makes it again as said above. `lasts` is asked once, when the first answer was 5:
  /// true where that is sure to stay so. Gives the last answer.
  SystemCode change(const std::string& path, const std::function<SystemCode()>& attempt,
                    const std::function<bool()>& lasts);

  /// Was a change of just this file waited for in vain?
  bool wasInVain(const std::string& path) const;
  /// From now on no change of this file is waited for, as if one had been in vain.
  void expectInVain(const std::string& path);

 private:
  struct Refusal {
    /// In upper case.
    std::string path;
    /// A refused right, which others in the same folder will meet too.
    bool denied = false;
  };

  bool isWorthWaiting(SystemCode code, const std::string& path,
                      const std::function<bool()>& lasts) const;
  bool wasDeniedBeside(const std::string& path) const;
  void remember(SystemCode code, const std::string& path);
  void forget(const std::string& path);

  Pause pause_;
  std::vector<Refusal> inVain_;
};

}  // namespace trelv
