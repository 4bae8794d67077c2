#pragma once

#include <string>

#include "machine/Locale.h"

namespace trelv::posix {

/// An Italian Windows's way of writing, code page 1252.
class PosixLocale : public machine::Locale {
 public:
  std::string shortDate(const machine::LocalTime& time) override;
  std::string longTime(const machine::LocalTime& time) override;
  std::string monthName(int month) override;
  std::string truthText(bool value) override;
  std::string upperCase(const std::string& text) override;
  std::string toAnsi(const std::string& text) override;
  std::string fromAnsi(const std::string& bytes) override;
};

/// UTF-16 bytes (low byte first) as UTF-8; an odd last byte is dropped.
std::string textOfWide(const std::string& bytes);

}  // namespace trelv::posix
