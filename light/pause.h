// SPDX-License-Identifier: Apache-2.0
// How long an effect waits: a row's pause at a given slowness, drawn where it is left to chance.
// Main thread.
#pragma once

#include "halvora/platform/time.h"
#include "light/mode_tables.h"
#include "light/random_number.h"

namespace halvora {

/// The pause at percentage speed `perc`; only a drawn one asks `random`.
inline Duration drawPause(const Pause& pause, int perc, Random& random) {
  const int latest = pause.latest.at(perc);
  if (!pause.drawn) return milliseconds(latest);
  return milliseconds(randomNumberBetween(random, pause.earliest.at(perc), latest));
}

}  // namespace halvora
