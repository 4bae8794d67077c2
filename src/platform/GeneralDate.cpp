#include "platform/GeneralDate.h"

namespace trelv {

std::string generalDate(machine::Locale& locale, const machine::LocalTime& time) {
  const std::string date = locale.shortDate(time);
  const bool midnight = time.hour == 0 && time.minute == 0 && time.second == 0;
  return midnight ? date : date + " " + locale.longTime(time);
}

}  // namespace trelv
