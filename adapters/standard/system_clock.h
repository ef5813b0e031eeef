// SPDX-License-Identifier: Apache-2.0
// The machine's civil clock and the user's calendar, in the time zone the process runs in. Any
// thread.
#pragma once

#include "halvora/platform/wall_clock.h"

namespace halvora {

class SystemWallClock final : public WallClock {
 public:
  Date now() const override;
};

class SystemCalendar final : public Calendar {
 public:
  DayComponents componentsOf(Date date) const override;
};

}  // namespace halvora
