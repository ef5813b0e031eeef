// SPDX-License-Identifier: Apache-2.0
#include "light/notices.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace halvora {

namespace {

constexpr Duration kNoSeatFadeIn = milliseconds(160);
constexpr Duration kNoSeatFadeOut = milliseconds(120);
constexpr Duration kHintFadeIn = milliseconds(500);
constexpr Duration kHintFadeOut = milliseconds(450);
constexpr Duration kDarkUntilHint = milliseconds(5000);
constexpr double kVisibleAlpha = 0.01;
constexpr float kNearBlack = 15;

}  // namespace

void Notices::build(SharedText noSeatText, SharedText lowLightText) {
  views_.setText(ViewId::mapNoSeatOverlayLabel, std::move(noSeatText));
  views_.setText(ViewId::lowLightHintLabel, std::move(lowLightText));
}

void Notices::showMapNoSeatOverlay() {
  if (!views_.isHidden(ViewId::mapNoSeatOverlayView)) return;
  views_.setHidden(ViewId::mapNoSeatOverlayView, false);
  views_.setAlpha(ViewId::mapNoSeatOverlayView, 0);
  views_.animateAlpha({{ViewId::mapNoSeatOverlayView, 1}}, {.duration = kNoSeatFadeIn});
}

void Notices::hideMapNoSeatOverlay() {
  if (views_.isHidden(ViewId::mapNoSeatOverlayView)) return;
  views_.animateAlpha({{ViewId::mapNoSeatOverlayView, 0}}, {.duration = kNoSeatFadeOut},
                      [this](bool) { views_.setHidden(ViewId::mapNoSeatOverlayView, true); });
}

void Notices::showLowLightHintOverlay() {
  if (lowLightHintIsVisible_) return;
  lowLightHintIsVisible_ = true;
  views_.setHidden(ViewId::lowLightHintLabel, false);
  views_.animateAlpha({{ViewId::lowLightHintLabel, 1}}, {.duration = kHintFadeIn});
}

void Notices::hideLowLightHintOverlayImmediate(bool immediate) {
  if (!lowLightHintIsVisible_) return;
  lowLightHintIsVisible_ = false;
  if (immediate) {
    views_.setAlpha(ViewId::lowLightHintLabel, 0);
    views_.setHidden(ViewId::lowLightHintLabel, true);
    return;
  }
  views_.animateAlpha({{ViewId::lowLightHintLabel, 0}}, {.duration = kHintFadeOut},
                      [this](bool) { views_.setHidden(ViewId::lowLightHintLabel, true); });
}

bool Notices::isDisplayedLightNearBlack() const {
  const MaybeColour& light = views_.lightColour();
  if (!light) return true;
  return std::max({std::nearbyint(light->red * 255), std::nearbyint(light->green * 255),
                   std::nearbyint(light->blue * 255)}) < kNearBlack;
}

void Notices::updateLowLightHintState() {
  const bool noSeatIsVisible = !views_.isHidden(ViewId::mapNoSeatOverlayView) &&
                               views_.alpha(ViewId::mapNoSeatOverlayView) > kVisibleAlpha;
  if (screen_.currentMode == 0 || noSeatIsVisible || !isDisplayedLightNearBlack()) {
    lowLightDarkStartTime_ = {};
    hideLowLightHintOverlayImmediate(true);
    return;
  }
  if (lowLightDarkStartTime_ <= Duration::zero()) lowLightDarkStartTime_ = timers_.now();
  if (timers_.now() - lowLightDarkStartTime_ >= kDarkUntilHint) showLowLightHintOverlay();
}

}  // namespace halvora
