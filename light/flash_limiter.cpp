// SPDX-License-Identifier: Apache-2.0
#include "light/flash_limiter.h"

#include <algorithm>
#include <array>

namespace halvora {

namespace {

// Where nothing tells when there will be room.
constexpr Duration kLookAgain = milliseconds(10);

// What may be held of the last emission, the least first: a torch that is not lit yet, a backlight
// that does not rise yet, a picture that does not come yet.
struct Held {
  bool torch;
  bool backlight;
  bool screen;
};
constexpr std::array<Held, 7> kHeld = {{{true, false, false},
                                        {false, true, false},
                                        {true, true, false},
                                        {false, false, true},
                                        {true, false, true},
                                        {false, true, true},
                                        {true, true, true}}};

}  // namespace

void FlashLimiter::tick(Duration now) {
  // Begins with the loop's, whose milliseconds are those that are read elsewhere.
  clock_ = loop_ ? clock_ + std::max(now - *loop_, Duration::zero()) : now;
  loop_ = now;
}

// What was held comes a millisecond later than it could, so that there is room for darkness in that
// same millisecond; a show that was never held keeps its own times.
bool FlashLimiter::mayEmit(const Emission& emission) const {
  using Darkness = FlashLedger::Darkness;
  const auto darkness = isHolding_ ? Darkness::inTheSameMillisecond : Darkness::aMicrosecondLater;
  return emission == last_ || ledger_.mayEmit(emission, clock_, darkness);
}

ShownLight FlashLimiter::decide(const WantedLight& wanted, Duration now) {
  tick(now);
  const ShownLight shown = choose(wanted);
  if (shown.emission != last_) {
    ledger_.add(shown.emission, clock_);
    last_ = shown.emission;
  }
  retryAfter_.reset();
  isHolding_ = !shown.isAsWanted;
  if (isHolding_) {
    const auto room = ledger_.nextRoom(clock_);
    retryAfter_ = room ? std::max(*room - clock_, Duration{1}) : kLookAgain;
  }
  return shown;
}

ShownLight FlashLimiter::choose(const WantedLight& wanted) const {
  if (mayEmit(wanted.emission)) return {ShownScreen::wanted, wanted.emission, true};
  const bool isFading = wanted.isFading || screenLight(wanted.emission).isDark();
  for (const Held& held : kHeld) {
    // Darkness is never held back.
    if (held.torch && !wanted.emission.torch) continue;
    if (held.screen && isFading) continue;
    if (held.backlight && wanted.emission.backlight < last_.backlight) continue;
    Emission emission = wanted.emission;
    if (held.torch) emission.torch = last_.torch;
    if (held.backlight) emission.backlight = last_.backlight;
    if (held.screen) emission.screen = last_.screen;
    if (mayEmit(emission)) {
      return {held.screen ? ShownScreen::held : ShownScreen::wanted, emission, false};
    }
  }
  // Always: room for it has been kept.
  Emission dark = darkness(wanted.emission);
  dark.torch = last_.torch && wanted.emission.torch;
  return {ShownScreen::dark, dark, dark == wanted.emission};
}

}  // namespace halvora
