#pragma once

#include <cstdint>
#include <string>

#include "base/Patience.h"
#include "machine/Clock.h"
#include "machine/Files.h"
#include "machine/ProfileFiles.h"

namespace trelv {

/// The ini functions of a machine, with patience in writing: a file that a scanner or another
/// workstation has in hand for a moment does not cost a version its record. Reading is handed on:
/// the program reads files as a whole and leaves only odd ones to these functions.
class PatientProfileFiles : public machine::ProfileFiles {
 public:
  /// `files` tell why a value could not be written, which these functions do not.
  PatientProfileFiles(machine::ProfileFiles& profiles, machine::Files& files,
                      machine::Clock& clock);

  std::string readValue(const std::string& section, const std::string& key,
                        const std::string& defaultValue, std::uint32_t size,
                        const std::string& file) override;
  std::uint32_t writeValue(const std::string& section, const std::string& key,
                           const std::string& value, const std::string& file) override;

 private:
  bool mayBeInHand(const std::string& file);

  machine::ProfileFiles& profiles_;
  machine::Files& files_;
  Patience patience_;
};

}  // namespace trelv
