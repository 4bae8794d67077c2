#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "machine/Console.h"
#include "machine/GivenPaths.h"

namespace trelv::win32 {

/// The process's standard streams. A console window gets whole characters, whatever its code page.
class Win32Console : public machine::Console {
 public:
  void print(std::string_view text) override;
  void complain(std::string_view text) override;
  bool errorIsTerminal() override;
  bool inputIsTerminal() override;
  std::optional<std::string> readLine() override;
};

class Win32GivenPaths : public machine::GivenPaths {
 public:
  SystemCode fullPath(const std::string& given, std::string& full) override;
  SystemCode room(const std::string& full, std::uint64_t& bytes) override;
  char separator() const override { return '\\'; }
};

}  // namespace trelv::win32
