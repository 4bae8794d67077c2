#include "kit/GeneralDateText.h"

#include <algorithm>
#include <array>
#include <vector>

#include "base/Text.h"

namespace trelv::kit {
namespace {

/// The numbers of a text in their order, and whether it names the second half of the day.
struct Numbers {
  std::vector<int> values;
  std::string words;
};

Numbers numbersOf(const std::string& text) {
  constexpr int kMost = 100000;
  Numbers found;
  bool inNumber = false;
  for (const char c : text) {
    if (c >= '0' && c <= '9') {
      if (!inNumber) {
        found.values.push_back(0);
      }
      found.values.back() = std::min(found.values.back() * 10 + (c - '0'), kMost);
      inNumber = true;
    } else {
      inNumber = false;
      if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) {
        found.words += c;
      }
    }
  }
  return found;
}

enum Part { kYear, kMonth, kDay };
using Order = std::array<Part, 3>;

/// A day whose numbers cannot be mistaken for each other.
constexpr machine::LocalTime kProbe{2033, 11, 22, 21, 44, 55};

Order orderOf(machine::Locale& locale) {
  Order order{kDay, kMonth, kYear};
  const std::vector<int> shown = numbersOf(locale.shortDate(kProbe)).values;
  if (shown.size() != order.size()) {
    return order;
  }
  std::transform(shown.begin(), shown.end(), order.begin(), [](int number) -> Part {
    return number == kProbe.month ? kMonth : number == kProbe.day ? kDay : kYear;
  });
  return order;
}

/// What the system writes behind the hours of the afternoon, empty where it counts to 24.
std::string afternoonWord(machine::Locale& locale) {
  return numbersOf(locale.longTime(kProbe)).words;
}

bool isDate(const machine::LocalTime& time) {
  return time.year >= 1980 && time.year < 10000 && time.month >= 1 && time.month <= 12 &&
         time.day >= 1 && time.day <= 31 && time.hour < 24 && time.minute < 60 && time.second < 60;
}

machine::LocalTime dateIn(const Order& order, const std::vector<int>& values) {
  constexpr int kCentury = 2000;
  machine::LocalTime time;
  for (std::size_t i = 0; i < order.size(); ++i) {
    const int value = values[i];
    switch (order[i]) {
      case kYear:
        time.year = value < 100 ? kCentury + value : value;
        break;
      case kMonth:
        time.month = value;
        break;
      case kDay:
        time.day = value;
        break;
    }
  }
  return time;
}

void putTime(machine::LocalTime& time, const Numbers& found, const std::string& afternoon) {
  constexpr int kHalfDay = 12;
  const std::vector<int>& values = found.values;
  if (values.size() < 6) {
    return;
  }
  time.hour = values[3];
  time.minute = values[4];
  time.second = values[5];
  if (found.words.empty()) {
    return;
  }
  const bool late = equalNoCase(found.words, afternoon) || equalNoCase(found.words, "PM");
  time.hour = time.hour % kHalfDay + (late ? kHalfDay : 0);
}

/// Days since 1970-01-01 in the Gregorian calendar.
std::int64_t dayNumber(const machine::LocalTime& time) {
  // A year begins in March here: the day that comes and goes is then its last.
  const std::int64_t year = time.month > 2 ? time.year : time.year - 1;
  const std::int64_t month = (time.month + 9) % 12;
  constexpr std::int64_t kBefore1970 = 719468;
  return 365 * year + year / 4 - year / 100 + year / 400 + (153 * month + 2) / 5 + time.day - 1 -
         kBefore1970;
}

std::int64_t secondNumber(const machine::LocalTime& time) {
  return ((dayNumber(time) * 24 + time.hour) * 60 + time.minute) * 60 + time.second;
}

}  // namespace

std::optional<machine::LocalTime> readGeneralDate(machine::Locale& locale,
                                                  const std::string& text) {
  const Numbers found = numbersOf(text);
  if (found.values.size() != 3 && found.values.size() != 6) {
    return std::nullopt;
  }
  const std::string afternoon = afternoonWord(locale);
  // A lock of another workstation, whose user writes dates in another order.
  for (const Order& order : {orderOf(locale), Order{kDay, kMonth, kYear}}) {
    machine::LocalTime time = dateIn(order, found.values);
    putTime(time, found, afternoon);
    if (isDate(time)) {
      return time;
    }
  }
  return std::nullopt;
}

std::int64_t secondsBetween(const machine::LocalTime& earlier, const machine::LocalTime& later) {
  return std::max<std::int64_t>(0, secondNumber(later) - secondNumber(earlier));
}

}  // namespace trelv::kit
