// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/system_clock.h"

#include <chrono>
#include <cmath>
#include <ctime>

#include "text/numbers.h"

namespace halvora {

namespace {

// The user may have travelled since the last time.
bool localTime(std::time_t seconds, std::tm& parts) {
#ifdef _WIN32
  _tzset();
  return localtime_s(&parts, &seconds) == 0;
#else
  tzset();
  return localtime_r(&seconds, &parts) != nullptr;
#endif
}

}  // namespace

Date SystemWallClock::now() const {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration<double>(sinceEpoch).count()};
}

DayComponents SystemCalendar::componentsOf(Date date) const {
  const std::time_t seconds = wholeNumber(std::floor(date.secondsSince1970));
  std::tm parts{};
  if (!localTime(seconds, parts)) return {};
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday};
}

}  // namespace halvora
