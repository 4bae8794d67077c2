#pragma once

#include <cstdint>
#include <string>

#include "machine/ProfileFiles.h"
#include "sim/SimFiles.h"
#include "sim/SimSystem.h"

namespace trelv::sim {

/// The ini functions of one machine, over its files. Every call reads the file anew.
class SimProfileFiles : public machine::ProfileFiles {
 public:
  SimProfileFiles(SimFiles& files, SimSystem& system, SimCalls& calls);

  std::string readValue(const std::string& section, const std::string& key,
                        const std::string& defaultValue, std::uint32_t size,
                        const std::string& file) override;
  std::uint32_t writeValue(const std::string& section, const std::string& key,
                           const std::string& value, const std::string& file) override;

  // The same without a trace in the calls, as another program on the machine would.
  std::string quietRead(const std::string& section, const std::string& key,
                        const std::string& defaultValue, std::uint32_t size,
                        const std::string& file);
  std::uint32_t quietWrite(const std::string& section, const std::string& key,
                           const std::string& value, const std::string& file);

  /// Bare names go to this folder; empty: to the Windows folder.
  void setPrivateWindowsFolder(const std::string& folder) { privateWindowsFolder_ = folder; }
  /// Full path of the file that a name means.
  std::string placeOf(const std::string& file) const;

 private:
  SimFiles& files_;
  SimSystem& system_;
  SimCalls& calls_;
  std::string privateWindowsFolder_;
};

}  // namespace trelv::sim
