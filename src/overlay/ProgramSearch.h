#pragma once

#include <string>

#include "base/SystemCode.h"
#include "machine/Environment.h"
#include "machine/Files.h"
#include "machine/SystemFacts.h"

namespace trelv::overlay {

/// Which program a command line means to the system, and whether it is one: looked up in files that
/// may be on top only, without starting it. Not known: whether it needs elevation, or a newer or
/// another kind of Windows.
class ProgramSearch {
 public:
  ProgramSearch(machine::Files& files, machine::SystemFacts& system,
                machine::Environment& environment)
      : files_(files), system_(system), environment_(environment) {}

  /// As starting the command line would answer; `program` is set on success.
  SystemCode find(const std::string& commandLine, std::string& program);
  /// The same for a program that is looked for in the folders of the system and the site only.
  SystemCode findTool(const std::string& commandLine, std::string& program);

 private:
  SystemCode findQuoted(const std::string& commandLine, std::string& program);
  SystemCode findByCuts(const std::string& commandLine, std::string& program);
  SystemCode candidate(const std::string& name, std::string& program);
  std::string search(const std::string& name, bool currentFolder);
  std::string existing(const std::string& path);

  machine::Files& files_;
  machine::SystemFacts& system_;
  machine::Environment& environment_;
};

}  // namespace trelv::overlay
