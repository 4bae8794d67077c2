#pragma once

#include <string>
#include <vector>

#include "kit/Verb.h"

namespace trelv::kit {

/// The verb "lint": looks for known traps in host folders, media, packs and configuration files.
class Lint : public Verb {
 public:
  void declare(Syntax& syntax) override;
  Answer run(Workplace& workplace, Progress& progress) override;

 private:
  std::vector<std::string> paths_;
  std::vector<std::string> only_;
  std::vector<std::string> ignored_;
};

}  // namespace trelv::kit
