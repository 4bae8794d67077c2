#pragma once

#include "machine/SystemFacts.h"

namespace trelv::win32 {

/// What Windows tells of itself, its user and this process.
class Win32SystemFacts : public machine::SystemFacts {
 public:
  bool queryVersion(VersionRecord& record) override;
  bool suiteIncludes(std::uint16_t mask) override;
  bool hasKernelFunction(const std::string& name) override;
  bool isWow64() override;
  SystemCode isAdministrator(bool& member) override;
  SystemCode userName(std::uint32_t size, std::string& name) override;
  SystemCode systemWindowsFolder(std::string& folder) override;
  SystemCode shellFolder(int number, std::string& folder) override;
  SystemCode temporaryFolder(std::string& folder) override;
  std::uint32_t driveType(const std::string& root) override;
  SystemCode connectionName(const std::string& drive, std::uint32_t size,
                            std::string& name) override;
  SystemCode deviceNames(const std::string& drive, std::uint32_t size, std::string& names) override;
  SystemCode computerName(std::string& name) override;
  std::uint32_t processId() override;
  std::uint32_t sessionId() override;
  std::string executablePath() override;
  std::string startedPath() override;
  std::string commandLine() override;
};

}  // namespace trelv::win32
