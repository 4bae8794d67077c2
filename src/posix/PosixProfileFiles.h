#pragma once

#include <cstdint>
#include <string>

#include "machine/Files.h"
#include "machine/Locale.h"
#include "machine/ProfileFiles.h"

namespace trelv::posix {

/// Reads values of ini files as the platform's private-profile functions do, for the files that the
/// program's own reader leaves to them: UTF-16 and UTF-8 with their marks, NULs, lone CRs, names
/// beyond ASCII. There is no Windows folder, so a bare name is missing. Nothing is written.
class PosixProfileFiles : public machine::ProfileFiles {
 public:
  PosixProfileFiles(machine::Files& files, machine::Locale& locale)
      : files_(files), locale_(locale) {}

  std::string readValue(const std::string& section, const std::string& key,
                        const std::string& defaultValue, std::uint32_t size,
                        const std::string& file) override;
  /// Answers 0.
  std::uint32_t writeValue(const std::string& section, const std::string& key,
                           const std::string& value, const std::string& file) override;

 private:
  std::string textOf(const std::string& file);

  machine::Files& files_;
  machine::Locale& locale_;
};

}  // namespace trelv::posix
