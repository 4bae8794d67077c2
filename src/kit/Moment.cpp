#include "kit/Moment.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace trelv::kit {
namespace {

constexpr Moment kSecondsPerDay = 86400;

std::chrono::year_month_day dateOf(Moment moment) {
  const Moment days =
      (moment - (((moment % kSecondsPerDay) + kSecondsPerDay) % kSecondsPerDay)) / kSecondsPerDay;
  return std::chrono::sys_days(std::chrono::days(static_cast<int>(days)));
}

}  // namespace

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

}  // namespace trelv::kit
