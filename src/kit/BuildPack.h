#pragma once

#include <string>
#include <vector>

#include "kit/Verb.h"

namespace trelv::kit {

/// The verb "pack": builds packs from their description.
class BuildPack : public Verb {
 public:
  void declare(Syntax& syntax) override;
  Answer run(Workplace& workplace, Progress& progress) override;

 private:
  std::string description_;
  std::string output_;
  std::vector<std::string> ignored_;
};

}  // namespace trelv::kit
