#pragma once

#include <string>

#include "machine/Clock.h"

namespace trelv::machine {

/// How the user's system writes dates, months and truth values, and its ANSI code page.
class Locale {
 public:
  virtual ~Locale() = default;

  /// Short date and long time in the user's format, for example 16/11/2026 and 01:02:03.
  virtual std::string shortDate(const LocalTime& time) = 0;
  virtual std::string longTime(const LocalTime& time) = 0;

  /// Full month name in the user's language; month from 1 to 12.
  virtual std::string monthName(int month) = 0;

  /// True or False in the system's language ("Vero", "Falso").
  virtual std::string truthText(bool value) = 0;

  /// Upper case of a text by the system's own rule for names of files.
  virtual std::string upperCase(const std::string& text) = 0;

  /// UTF-8 to bytes of the ANSI code page ("?" for what it lacks), and back.
  virtual std::string toAnsi(const std::string& text) = 0;
  virtual std::string fromAnsi(const std::string& bytes) = 0;
};

}  // namespace trelv::machine
