#pragma once

#include <string>

#include "kit/Verb.h"

namespace trelv::kit {

struct UpdateLock;

/// The verb "locks": the update locks of a host and of this workstation, and what waits for them;
/// removes those that nobody has open, where it is told to.
class Locks : public Verb {
 public:
  void declare(Syntax& syntax) override;
  Answer run(Workplace& workplace, Progress& progress) override;

 private:
  bool mayRemove(Workplace& workplace, const std::string& shownPath, const UpdateLock& lock) const;

  std::string host_;
  bool remove_ = false;
  bool yes_ = false;
};

}  // namespace trelv::kit
