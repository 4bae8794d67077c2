#pragma once

#include <cstdint>
#include <string>

#include "machine/Files.h"
#include "machine/Locale.h"
#include "machine/ProfileFiles.h"
#include "machine/SystemFacts.h"
#include "overlay/PrivateFolder.h"
#include "overlay/Steps.h"
#include "overlay/Tree.h"

namespace trelv::overlay {

/// The platform's ini functions over a tree. They do their work for real on a private copy of the
/// file, which stands in its place from then on: no second reader or writer of ini files. A value
/// that stands there already is no step.
class OverlayProfileFiles : public machine::ProfileFiles {
 public:
  OverlayProfileFiles(machine::ProfileFiles& below, machine::Files& files,
                      machine::SystemFacts& system, machine::Locale& locale, Tree& tree,
                      PrivateFolder& privateFolder, Steps& steps)
      : below_(below),
        files_(files),
        system_(system),
        locale_(locale),
        tree_(tree),
        privateFolder_(privateFolder),
        steps_(steps) {}

  std::string readValue(const std::string& section, const std::string& key,
                        const std::string& defaultValue, std::uint32_t size,
                        const std::string& file) override;
  std::uint32_t writeValue(const std::string& section, const std::string& key,
                           const std::string& value, const std::string& file) override;

 private:
  std::string placeOf(const std::string& file);
  std::string windowsFolder();

  machine::ProfileFiles& below_;
  /// Below, for the private copies.
  machine::Files& files_;
  machine::SystemFacts& system_;
  machine::Locale& locale_;
  Tree& tree_;
  PrivateFolder& privateFolder_;
  Steps& steps_;
};

}  // namespace trelv::overlay
