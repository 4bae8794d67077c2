#pragma once

#include <string>

#include "kit/Verb.h"

namespace trelv::kit {

/// The verb "explain": why a product was not brought up to date, or its program not started, by the
/// newest integrated start in a run log.
class Explain : public Verb {
 public:
  void declare(Syntax& syntax) override;
  Answer run(Workplace& workplace, Progress& progress) override;

 private:
  std::string product_;
  std::string host_;
  std::string log_;
};

}  // namespace trelv::kit
