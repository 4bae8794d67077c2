#pragma once

#include <cstdint>
#include <string>

#include "machine/Exclusion.h"
#include "machine/Files.h"
#include "machine/HostLibraries.h"
#include "machine/Locale.h"
#include "machine/Registry.h"
#include "machine/SystemFacts.h"

namespace trelv {

/// The configuration store of ours, used where the host's library does not stand beside the
/// program: HKEY_LOCAL_MACHINE "SOFTWARE\LUMO\Configurazione" names the schema file ("Schema") and
/// the XML file ("Config"), both full paths. Answers with the library's codes. The file is UTF-8
/// without document type, of at most 4 MB and 100 levels (else -3000); each write puts a new file
/// in its place in one step, with the rights list of the one before. One writer at a time, of all
/// sessions and computers: a write that cannot have its turn within 3 s answers -2000.
class XmlStore : public machine::ConfigurationLibrary {
 public:
  XmlStore(machine::Files& files, machine::Registry& registry, machine::Locale& locale,
           machine::SystemFacts& system, machine::Exclusion& exclusion);

  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override;
  std::int32_t setParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute, std::int32_t type,
                            const std::string& value) override;
  std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) override;

 private:
  machine::Files& files_;
  machine::Registry& registry_;
  machine::Locale& locale_;
  machine::SystemFacts& system_;
  machine::Exclusion& exclusion_;
};

}  // namespace trelv
