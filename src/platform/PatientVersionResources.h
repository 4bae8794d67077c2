#pragma once

#include <string>

#include "base/Patience.h"
#include "machine/Clock.h"
#include "machine/VersionResources.h"

namespace trelv {

/// The version resources of a machine, with patience: a program that a scanner has in hand for a
/// moment is not one without a version. A refused right keeps nobody waiting.
class PatientVersionResources : public machine::VersionResources {
 public:
  PatientVersionResources(machine::VersionResources& versions, machine::Clock& clock)
      : versions_(versions),
        patience_([&clock](std::uint32_t milliseconds) -> void { clock.pause(milliseconds); }) {}

  SystemCode read(const std::string& path, machine::FileVersion& version) override {
    return patience_.change(
        path, [&]() -> SystemCode { return versions_.read(path, version); },
        []() -> bool { return true; });
  }

 private:
  machine::VersionResources& versions_;
  Patience patience_;
};

}  // namespace trelv
