#pragma once

#include <string>
#include <vector>

#include "kit/Verb.h"

namespace trelv::kit {

/// The verb "publish": puts packs on the share of a host, takes them back, lists what was
/// published.
class Publish : public Verb {
 public:
  void declare(Syntax& syntax) override;
  Answer run(Workplace& workplace, Progress& progress) override;

 private:
  Answer runOn(Workplace& workplace, Progress& progress);

  std::string host_;
  std::vector<std::string> rest_;
  bool undo_ = false;
  bool list_ = false;
};

}  // namespace trelv::kit
