// SPDX-License-Identifier: Apache-2.0
// The two notices over the light: that a part of the show needs a seat, and that a dark screen is
// still a running show. Owned by the engine; main thread.
#pragma once

#include "light/show_parts.h"
#include "light/show_state.h"
#include "light/view_stack.h"

namespace halvora {

class Notices final : public NoticesPart {
 public:
  Notices(const ScreenState& screen, ViewStack& views, const TimerSet& timers)
      : screen_(screen), views_(views), timers_(timers) {}

  /// Gives the two labels their texts.
  void build(SharedText noSeatText, SharedText lowLightText);

  void showMapNoSeatOverlay() override;
  void hideMapNoSeatOverlay() override;
  void showLowLightHintOverlay();
  void hideLowLightHintOverlayImmediate(bool immediate);
  /// Whether the light, as set, is all but black: each channel below 15 of 255.
  bool isDisplayedLightNearBlack() const;
  void updateLowLightHintState() override;

  bool lowLightHintIsVisible() const { return lowLightHintIsVisible_; }

 private:
  const ScreenState& screen_;
  ViewStack& views_;
  const TimerSet& timers_;
  bool lowLightHintIsVisible_ = false;
  /// When the dark stretch began, on the media clock; zero while it is not dark.
  Duration lowLightDarkStartTime_{};
};

}  // namespace halvora
