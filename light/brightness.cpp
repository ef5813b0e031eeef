// SPDX-License-Identifier: Apache-2.0
#include "light/brightness.h"

namespace halvora {

namespace {

constexpr double kStep = 0.01;
constexpr Duration kPause = milliseconds(10);

}  // namespace

void BrightnessRamps::fullScreenBrightness() {
  const double present = screen_.brightness();
  if (!(colour_.currentMaster > present)) return;
  screen_.setBrightness(present + kStep);
  timers_.after(kPause, [this] { fullScreenBrightness(); });
}

void BrightnessRamps::originalScreenBrightness() {
  const double present = screen_.brightness();
  if (!(present > originalBrightness_)) return;
  screen_.setBrightness(present - kStep);
  timers_.after(kPause, [this] { originalScreenBrightness(); });
}

}  // namespace halvora
