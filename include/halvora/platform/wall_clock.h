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
  int year = 0;   ///< Such as 2026.
  int month = 0;  ///< 1 to 12.
  int day = 0;    ///< 1 to 31.
  friend bool operator==(const DayComponents&, const DayComponents&) = default;
};

/// What date it is.
class WallClock : public Need {
 public:
  /// The machine's own idea of it, which may be wrong and may be put back or forth.
  virtual Date now() const = 0;
};

/// Which day a date is for the user.
class Calendar : public Need {
 public:
  /// Where the user is now, summer time reckoned in; all 0 for a date that no calendar has.
  virtual DayComponents componentsOf(Date date) const = 0;
};

}  // namespace v0
}  // namespace halvora
