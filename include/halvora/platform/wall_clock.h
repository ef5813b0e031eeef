// SPDX-License-Identifier: Apache-2.0
// Civil time: what date it is, and which day that is in the user's own calendar and time zone. Main
// thread.
#pragma once

#include "halvora/platform/need.h"
#include "halvora/platform/time.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// A day as people name it: months and days count from 1.
struct DayComponents {
  int year = 0;
  int month = 0;
  int day = 0;
  friend bool operator==(const DayComponents&, const DayComponents&) = default;
};

/// What date it is.
class WallClock : public Need {
 public:
  virtual Date now() const = 0;
};

/// Which day a date is for the user.
class Calendar : public Need {
 public:
  virtual DayComponents componentsOf(Date date) const = 0;
};

}  // namespace v0
}  // namespace halvora
