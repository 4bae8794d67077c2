#pragma once

#include <string>

#include "kit/Verb.h"

namespace trelv::kit {

/// The verb "verify": what is recorded, configured and found of each product on both sides.
class Verify : public Verb {
 public:
  void declare(Syntax& syntax) override;
  Answer run(Workplace& workplace, Progress& progress) override;

 private:
  std::string host_;
};

}  // namespace trelv::kit
