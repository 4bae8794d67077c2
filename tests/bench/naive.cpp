// The manager's peer that asks the platform for every value by itself, as its own code would with
// the profile functions: the same program, linked with these members instead of the real ones.
#include "platform/ConfigurationFiles.h"

namespace trelv {

struct ConfigurationFiles::Kept {};

ConfigurationFiles::ConfigurationFiles(machine::Machine& machine) : machine_(machine) {}
ConfigurationFiles::~ConfigurationFiles() = default;

std::string ConfigurationFiles::read(const IniAddress& address, std::uint32_t size) {
  return machine_.profiles.readValue(address.section, address.key, "", size, address.file);
}

bool ConfigurationFiles::holds(const IniAddress& /*address*/) { return false; }

void ConfigurationFiles::forget() {}
void ConfigurationFiles::forget(const std::string& /*file*/) {}
void ConfigurationFiles::written(const IniAddress& /*address*/, const std::string& /*value*/) {}

}  // namespace trelv
