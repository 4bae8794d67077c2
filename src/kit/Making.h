#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kit/Finding.h"
#include "kit/GivenPath.h"
#include "kit/LintRules.h"
#include "kit/Progress.h"
#include "kit/Verb.h"
#include "kit/Workplace.h"

namespace trelv::kit {

/// A folder beside a file or folder that is being built: there it is put together, judged and
/// proved before it gets its place. Removed with what is left in it, also behind a failure; what
/// one leaves that was ended by force is put right by the next attempt. Its methods raise Failure
/// with the path of what is built.
class Making {
 public:
  /// `target` names what is built, as it was given; the folder is the same with
  /// ".costruzione.trelv" behind it. Folders above that are missing are made; they go again where
  /// nothing is placed. Only one program at a time builds something: a second one is refused.
  Making(Workplace& workplace, const std::string& target);
  Making(const Making&) = delete;
  Making& operator=(const Making&) = delete;
  ~Making();

  /// Where the target is built, under its own last name: full path.
  std::string path() const { return side("nuovo") + "\\" + name_; }
  /// Full path of something else that is needed meanwhile.
  std::string side(const std::string& name) const { return folder_ + "\\" + name; }

  /// What lint says of the file or folder at `built` (full path in here), told of the target.
  std::vector<Finding> judge(const std::string& built, const RuleChoice& rules, Progress& progress);

  /// Gives the file that was built its place, in one step and in place of a file that stands there.
  void placeFile();
  /// The same for a folder.
  void placeFolder();
  /// Removes the folder; what was not placed is gone.
  void finish();

 private:
  std::string aside() const { return side("precedente"); }
  bool stands(const std::string& path);
  void require(SystemCode code) const;
  void requireName() const;
  void makeParents();
  void claim();
  void putRight();
  void removeQuietly();

  Workplace& workplace_;
  GivenPath given_;
  GivenPath work_;
  std::string target_;
  std::string folder_;
  std::string name_;
  /// Folders above that were made, from below.
  std::vector<std::string> parents_;
  std::unique_ptr<machine::Mark> mark_;
};

/// Runs `work`, which builds `output` (as it was given). What it raises as RuntimeError is raised
/// as the Failure of that path.
Answer toldOf(const std::string& output, const std::function<Answer()>& work);

/// Does one of them say that a start would be harmed?
bool holdsError(const std::vector<Finding>& findings);

}  // namespace trelv::kit
