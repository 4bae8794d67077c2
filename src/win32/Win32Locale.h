#pragma once

#include <cstdint>

#include "machine/Locale.h"

namespace trelv::win32 {

/// True or False as a language writes them; `language` is a Windows language identifier, whose
/// primary part counts. Languages that our users do not speak get the English words.
std::string truthWord(std::uint16_t language, bool value);

/// The user's formats of date and time, the system's language and its ANSI code page.
class Win32Locale : public machine::Locale {
 public:
  std::string shortDate(const machine::LocalTime& time) override;
  std::string longTime(const machine::LocalTime& time) override;
  std::string monthName(int month) override;
  std::string truthText(bool value) override;
  std::string upperCase(const std::string& text) override;
  std::string toAnsi(const std::string& text) override;
  std::string fromAnsi(const std::string& bytes) override;
};

}  // namespace trelv::win32
