#include "kit/Moment.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace trelv::kit {
namespace {

constexpr std::int64_t kSecondsTo1970 = 11644473600;
constexpr std::uint64_t kTicksPerSecond = 10000000;
constexpr Moment kSecondsPerDay = 86400;

/// Has the text the letters of the pattern, with digits in the place of its zeros?
bool fits(const std::string& text, const std::string& pattern) {
  if (text.size() != pattern.size()) {
    return false;
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool digit = text[i] >= '0' && text[i] <= '9';
    if (pattern[i] == '0' ? !digit : text[i] != pattern[i]) {
      return false;
    }
  }
  return true;
}

unsigned number(const std::string& text, std::size_t at, std::size_t length) {
  return static_cast<unsigned>(std::stoul(text.substr(at, length)));
}

std::chrono::year_month_day dateOf(Moment moment) {
  const Moment days =
      (moment - (((moment % kSecondsPerDay) + kSecondsPerDay) % kSecondsPerDay)) / kSecondsPerDay;
  return std::chrono::sys_days(std::chrono::days(static_cast<int>(days)));
}

}  // namespace

std::optional<Moment> momentOf(const std::string& text) {
  const bool withTime = fits(text, "0000-00-00 00:00:00");
  if (!withTime && !fits(text, "0000-00-00")) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(number(text, 0, 4))),
                                         std::chrono::month(number(text, 5, 2)),
                                         std::chrono::day(number(text, 8, 2))};
  const unsigned hour = withTime ? number(text, 11, 2) : 0;
  const unsigned minute = withTime ? number(text, 14, 2) : 0;
  const unsigned second = withTime ? number(text, 17, 2) : 0;
  if (!date.ok() || hour > 23 || minute > 59 || second > 59) {
    return std::nullopt;
  }
  const Moment days = std::chrono::sys_days(date).time_since_epoch().count();
  return days * kSecondsPerDay + static_cast<Moment>(hour * 3600 + minute * 60 + second);
}

std::string dayText(Moment moment) {
  const std::chrono::year_month_day date = dateOf(moment);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return text.data();
}

std::string momentText(Moment moment) {
  const auto seconds =
      static_cast<int>(((moment % kSecondsPerDay) + kSecondsPerDay) % kSecondsPerDay);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), " %02d:%02d:%02d", seconds / 3600, seconds / 60 % 60,
                seconds % 60);
  return dayText(moment) + text.data();
}

std::uint64_t fileTimeOf(Moment moment) {
  return static_cast<std::uint64_t>(moment + kSecondsTo1970) * kTicksPerSecond;
}

}  // namespace trelv::kit
