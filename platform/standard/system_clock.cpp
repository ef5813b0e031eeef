// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/system_clock.h"

#include <chrono>
#include <cmath>
#include <ctime>

namespace halvora {

Date SystemWallClock::now() const {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration<double>(sinceEpoch).count()};
}

DayComponents SystemCalendar::componentsOf(Date date) const {
  const auto seconds = static_cast<std::time_t>(std::floor(date.secondsSince1970));
  // One thread only ever asks, so the shared result of localtime is not overwritten under our
  // hands.
  const std::tm* parts = std::localtime(&seconds);  // NOLINT(concurrency-mt-unsafe)
  if (parts == nullptr) return {};
  return {parts->tm_year + 1900, parts->tm_mon + 1, parts->tm_mday};
}

}  // namespace halvora
