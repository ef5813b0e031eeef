// SPDX-License-Identifier: Apache-2.0
// Judges what a phone has emitted by brute force: every second that begins with a change is looked
// at by itself, from the light just before it on, with every colour of it remembered. Slow, and too
// plain to be wrong in the way that a clever count could be. Values; any thread.
#pragma once

#include <vector>

#include "halvora/platform/time.h"
#include "venue/show/flash_meter.h"

namespace halvora {

struct JudgedLight {
  Duration time{};
  PhoneLight light;
};

/// The most flashes in any second of one eye's colours, general and red; both ends belong to it.
struct JudgedFlashes {
  int general = 0;
  int red = 0;
};

/// Of the worst of the three eyes.
JudgedFlashes judge(const std::vector<JudgedLight>& lights);

/// Whether the lights keep to three flashes in every second, its ends cut to whole milliseconds,
/// and would if darkness came a microsecond after any of them.
bool keepWithRoom(const std::vector<JudgedLight>& lights);

}  // namespace halvora
