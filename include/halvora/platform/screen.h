// SPDX-License-Identifier: Apache-2.0
// The phone's main screen. Main thread.
#pragma once

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Points of the screen, origin at the top left.
struct Size {
  double width = 0;   ///< Points.
  double height = 0;  ///< Points.
  friend bool operator==(const Size&, const Size&) = default;
};

/// A part of the screen, by its upper left corner and its size.
struct Rect {
  double x = 0;       ///< Points from the left.
  double y = 0;       ///< Points from the top.
  double width = 0;   ///< Points.
  double height = 0;  ///< Points.
  friend bool operator==(const Rect&, const Rect&) = default;
};

/// What a show asks and changes of the screen.
class Screen : public Need {
 public:
  /// Of the whole screen, as it is held at present.
  virtual Size bounds() const = 0;
  /// The backlight's level, 0 to 1.
  virtual double brightness() const = 0;
  /// Levels outside 0 to 1 are clamped; a screen without this control ignores it.
  virtual void setBrightness(double level) = 0;
  /// How far above ordinary white the screen can go at present; 1 where it cannot.
  virtual float currentEDRHeadroom() const = 0;
};

}  // namespace v0
}  // namespace halvora
