// SPDX-License-Identifier: Apache-2.0
// Decides what of a show leaves the phone, so that no second contains more than three flashes: what
// the show wants where that may be, else what was there before, and darkness whenever it is wanted.
// Knows neither devices nor timers. Owned by the light's guard; main thread.
#pragma once

#include <optional>

#include "halvora/platform/time.h"
#include "light/emission.h"
#include "light/flash_ledger.h"

namespace halvora {

/// What the show wants to emit at a moment.
struct WantedLight {
  Emission emission;
  /// The screen is on its way to black, or there: nothing brighter may stay on it for longer.
  bool isFading = false;
};

enum class ShownScreen : unsigned char { wanted, held, dark };

struct ShownLight {
  ShownScreen screen = ShownScreen::wanted;
  /// With the levels of the screen and of the backlight as decided.
  Emission emission;
  bool isAsWanted = true;
};

class FlashLimiter {
 public:
  /// `present` is what the phone emits when it begins.
  explicit FlashLimiter(const Emission& present) : last_(present) { ledger_.add(present, clock_); }

  /// At the loop's time `now`; what is decided counts as emitted from then on. A clock that goes
  /// back stands still here, until it goes forward again.
  ShownLight decide(const WantedLight& wanted, Duration now);
  /// How long until something that was held may change, as far as can be told; none where nothing
  /// was held.
  std::optional<Duration> retryAfter() const { return retryAfter_; }
  const Emission& last() const { return last_; }

 private:
  bool mayEmit(const Emission& emission) const;
  ShownLight choose(const WantedLight& wanted) const;
  void tick(Duration now);

  FlashLedger ledger_;
  Emission last_;
  /// The ledger's time, and the loop's when it was last asked for.
  Duration clock_{};
  std::optional<Duration> loop_;
  std::optional<Duration> retryAfter_;
  bool isHolding_ = false;
};

}  // namespace halvora
