// SPDX-License-Identifier: Apache-2.0
// The whole state of one engine, grouped by concern. Owned by the show engine; main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "engine/scanner.h"
#include "halvora/air.h"
#include "halvora/platform/user_defaults.h"
#include "light/palettes.h"
#include "light/show_state.h"

namespace halvora {

/// The seat as the engine last read it from the defaults, and the pixel map of the look in force.
struct SeatState {
  int currentVenueId = 0;
  int currentPixelMapId = 0;
  /// The pixel-map frame in force: the cue token of a look that used one.
  int currentVideoMinutes = 0;
  std::int64_t currentXPos = 0;
  std::int64_t currentYPos = 0;

  bool hasPosition() const { return currentXPos >= 0 && currentYPos >= 0; }
};

/// Whether the user has chosen a seat's section, or a standing area.
bool hasSelectedSection(const UserDefaults& defaults);

struct EngineState {
  ScreenState screen;
  ColourState colour;
  TorchState torch;
  GoboState gobo;
  VideoState video;
  PresenceState presence;
  SeatState seat;
  int currentVibrate = 0;
  bool isStatusBarHidden = false;
  /// The step, from 1, that the last look was cut short in; 0 for none. The next look does it as if
  /// nothing of it were in force.
  std::uint8_t unfinishedStep = 0;
};

/// What the host wants to be told; either may be absent, and may destroy the engine.
struct ShowCallbacks {
  explicit ShowCallbacks(std::uint64_t& count) : failures(count) {}

  std::function<void()> lightShowStarted;
  std::function<void()> lightShowStopped;
  /// Told how far the air can be believed.
  std::function<void(AirTrust)> airTrust;
  /// Told that the phone may have come or gone, each for as long as its owner keeps it.
  std::vector<std::weak_ptr<const std::function<void()>>> presence;
  /// How many calls of any ended by an exception, which ends here: the show goes on.
  std::uint64_t& failures;
};

}  // namespace halvora
