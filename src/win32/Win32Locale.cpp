#include "win32/Win32Locale.h"

#include <windows.h>

#include <algorithm>
#include <array>

#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

struct TruthWords {
  WORD primaryLanguage;
  const char* yes;
  const char* no;
};

// The words of the automation library, which a start does not load for two lines of its log.
constexpr std::array<TruthWords, 4> kTruthWords{{
    {LANG_ITALIAN, "Vero", "Falso"},
    {LANG_GERMAN, "Wahr", "Falsch"},
    {LANG_FRENCH, "Vrai", "Faux"},
    {LANG_SPANISH, "Verdadero", "Falso"},
}};

SYSTEMTIME systemTime(const machine::LocalTime& time) {
  SYSTEMTIME result{};
  result.wYear = static_cast<WORD>(time.year);
  result.wMonth = static_cast<WORD>(time.month);
  result.wDay = static_cast<WORD>(time.day);
  result.wHour = static_cast<WORD>(time.hour);
  result.wMinute = static_cast<WORD>(time.minute);
  result.wSecond = static_cast<WORD>(time.second);
  return result;
}

/// Fetches a text of the locale, all of which are short; empty when the system refuses.
template <class Fetch>
std::string localeText(Fetch&& fetch) {
  std::array<wchar_t, 128> buffer{};
  return fetch(buffer.data(), static_cast<int>(buffer.size())) > 0 ? utf8(buffer.data())
                                                                   : std::string();
}

}  // namespace

std::string truthWord(std::uint16_t language, bool value) {
  const WORD primary = PRIMARYLANGID(language);
  const auto* const found =
      std::find_if(kTruthWords.begin(), kTruthWords.end(),
                   [primary](const TruthWords& row) { return row.primaryLanguage == primary; });
  if (found == kTruthWords.end()) {
    return value ? "True" : "False";
  }
  return value ? found->yes : found->no;
}

std::string Win32Locale::shortDate(const machine::LocalTime& time) {
  const SYSTEMTIME date = systemTime(time);
  return localeText([&date](wchar_t* buffer, int size) {
    return GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &date, nullptr, buffer, size);
  });
}

std::string Win32Locale::longTime(const machine::LocalTime& time) {
  const SYSTEMTIME moment = systemTime(time);
  return localeText([&moment](wchar_t* buffer, int size) {
    return GetTimeFormatW(LOCALE_USER_DEFAULT, 0, &moment, nullptr, buffer, size);
  });
}

std::string Win32Locale::monthName(int month) {
  if (month < 1 || month > 12) {
    return {};
  }
  const auto kind = static_cast<LCTYPE>(LOCALE_SMONTHNAME1 + month - 1);
  return localeText([kind](wchar_t* buffer, int size) {
    return GetLocaleInfoW(LOCALE_USER_DEFAULT, kind, buffer, size);
  });
}

std::string Win32Locale::truthText(bool value) {
  return truthWord(GetSystemDefaultLangID(), value);
}

std::string Win32Locale::upperCase(const std::string& text) {
  std::wstring upper = wide(text);
  const auto length = static_cast<int>(upper.size());
  // Without linguistic casing, so that no user's language changes what is the same path.
  const int mapped = LCMapStringW(LOCALE_SYSTEM_DEFAULT, LCMAP_UPPERCASE, wide(text).c_str(),
                                  length, upper.data(), length);
  return mapped == length ? utf8(upper) : text;
}

std::string Win32Locale::toAnsi(const std::string& text) { return ansi(text); }

std::string Win32Locale::fromAnsi(const std::string& bytes) { return win32::fromAnsi(bytes); }

}  // namespace trelv::win32
