// SPDX-License-Identifier: Apache-2.0
#include "light/brightness.h"

namespace halvora {

namespace {

constexpr double kStep = 0.01;
constexpr Duration kPause = milliseconds(10);

}  // namespace

void BrightnessRamps::climb(int inVain) {
  const double present = screen_.brightness();
  if (!(colour_.currentMaster > present)) return;
  screen_.setBrightness(present + kStep);
  inVain = screen_.brightness() > present ? 0 : inVain + 1;
  if (inVain < kMostInVain) timers_.after(kPause, [this, inVain] { climb(inVain); });
}

void BrightnessRamps::fall(int inVain) {
  const double present = screen_.brightness();
  if (!(present > originalBrightness_)) return;
  screen_.setBrightness(present - kStep);
  inVain = screen_.brightness() < present ? 0 : inVain + 1;
  if (inVain < kMostInVain) timers_.after(kPause, [this, inVain] { fall(inVain); });
}

}  // namespace halvora
