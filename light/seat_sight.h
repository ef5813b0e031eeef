// SPDX-License-Identifier: Apache-2.0
// What screen and torch ask about the phone's seat while a pixel map is on the air: the one thing
// that the light has to know of what lies above it. Main thread.
#pragma once

#include <optional>

#include "halvora/colour.h"

namespace halvora {

/// What the pixel map has for this phone at present.
struct SeatLight {
  bool hasSeat = false;
  MaybeColour colour;
};

class SeatSight {
 public:
  virtual ~SeatSight() = default;
  virtual SeatLight seatLight() = 0;
  /// Whether the seat's point in the still picture of the frame in force is pure white; none when
  /// there is no such picture, which leaves the torch as it is.
  virtual std::optional<bool> seatIsWhite() = 0;
};

}  // namespace halvora
