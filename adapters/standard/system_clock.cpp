// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/system_clock.h"

#include <chrono>
#include <cmath>
#include <ctime>

#include "text/numbers.h"

namespace halvora {

Date SystemWallClock::now() const {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration<double>(sinceEpoch).count()};
}

DayComponents SystemCalendar::componentsOf(Date date) const {
  const std::time_t seconds = wholeNumber(std::floor(date.secondsSince1970));
  // The user may have travelled since the last time.
  tzset();
  std::tm parts{};
  if (localtime_r(&seconds, &parts) == nullptr) return {};
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday};
}

}  // namespace halvora
