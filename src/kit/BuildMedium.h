#pragma once

#include <string>
#include <vector>

#include "kit/Verb.h"

namespace trelv::kit {

/// The verb "medium": builds an installation medium from its description, as a folder or as the
/// image of a disk.
class BuildMedium : public Verb {
 public:
  void declare(Syntax& syntax) override;
  Answer run(Workplace& workplace, Progress& progress) override;

 private:
  std::string description_;
  std::string output_;
  std::vector<std::string> ignored_;
  bool iso_ = false;
};

}  // namespace trelv::kit
