#pragma once

#include <string>
#include <vector>

#include "kit/Finding.h"
#include "kit/GivenPath.h"
#include "kit/Progress.h"
#include "kit/Workplace.h"

namespace trelv::kit {

/// A folder beside a file or folder that is being built: there it is put together, judged and
/// proved before it gets its place. Removed with what is left in it, also behind a failure; one
/// that was ended by force goes with the next attempt.
class Making {
 public:
  /// `target` names what is built, as it was given; the folder is the same with ".making" behind
  /// it. Raises RuntimeError.
  Making(Workplace& workplace, const std::string& target);
  Making(const Making&) = delete;
  Making& operator=(const Making&) = delete;
  ~Making();

  /// Where the target is built, under its own last name: full path.
  std::string path() const { return side(name_); }
  /// Full path of something else that is needed meanwhile.
  std::string side(const std::string& name) const { return folder_ + "\\" + name; }

  /// What lint says of the file or folder of that name in here, told of the target. Raises Failure.
  std::vector<Finding> judge(const std::string& name, Progress& progress);
  std::vector<Finding> judge(Progress& progress) { return judge(name_, progress); }

  /// Gives the file that was built its place, in one step and in place of a file that stands there.
  void placeFile();
  /// The same for a folder; what stands there is put aside first and removed last.
  void placeFolder();
  /// Removes the folder; what was not placed is gone.
  void finish();

 private:
  void remove(const std::string& folder);
  void removeQuietly(const std::string& folder);

  Workplace& workplace_;
  GivenPath given_;
  std::string target_;
  std::string folder_;
  std::string name_;
  bool finished_ = false;
};

/// Does one of them say that a start would be harmed?
bool holdsError(const std::vector<Finding>& findings);

}  // namespace trelv::kit
