#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "machine/Console.h"
#include "machine/GivenPaths.h"
#include "win32/Owned.h"

namespace trelv::win32 {

/// The process's standard streams. A console window gets whole characters, whatever its code page.
/// The system hands a program of the console the streams of the one that starts it; those that are
/// started while one of these lives get none: what they write is lost, and there is nothing to
/// read.
class Win32Console : public machine::Console {
 public:
  Win32Console();
  Win32Console(const Win32Console&) = delete;
  Win32Console& operator=(const Win32Console&) = delete;
  ~Win32Console() override;

  SystemCode print(std::string_view text) override;
  void complain(std::string_view text) override;
  bool errorIsTerminal() override;
  bool inputIsTerminal() override;
  std::optional<std::string> readLine() override;

 private:
  void handToPrograms(HANDLE input, HANDLE output, HANDLE errors);

  HANDLE input_;
  HANDLE output_;
  HANDLE errors_;
  OwnedFile nothing_;
};

class Win32GivenPaths : public machine::GivenPaths {
 public:
  SystemCode fullPath(const std::string& given, std::string& full) override;
  SystemCode room(const std::string& full, std::uint64_t& bytes) override;
  char separator() const override { return '\\'; }
};

}  // namespace trelv::win32
