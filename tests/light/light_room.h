// SPDX-License-Identifier: Apache-2.0
// A dark room with one light in it: the screen modes on a virtual run loop, and a list of
// everything that was to be seen, one line an event, each beginning with its time in milliseconds.
// Every test makes its own.
#pragma once

#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "light/screen_modes.h"

namespace halvora {

inline constexpr Colour kOrange{1, 0.8F, 0.2F, 1};
/// Orange with 0.6 less of each.
inline constexpr Colour kDarkOrange{0.4F, 0.2F, 0, 1};
inline constexpr Colour kRed{1, 0, 0, 1};
inline constexpr Colour kGreen{0, 1, 0, 1};
inline constexpr Colour kBlue{0, 0, 1, 1};

using Events = std::vector<std::string>;
using Rule = ScriptedRandom::Rule;

inline bool isNear(const Colour& left, const Colour& right) {
  constexpr float kNear = 1e-6F;
  return std::fabs(left.red - right.red) < kNear && std::fabs(left.green - right.green) < kNear &&
         std::fabs(left.blue - right.blue) < kNear && std::fabs(left.alpha - right.alpha) < kNear;
}

inline std::string nameOf(const MaybeColour& colour) {
  static const std::vector<std::pair<Colour, std::string>> kNames = {
      {kBlack, "black"}, {kWhite, "white"}, {kOrange, "orange"}, {kDarkOrange, "darkOrange"},
      {kRed, "red"},     {kGreen, "green"}, {kBlue, "blue"},
  };
  if (!colour) return "none";
  for (const auto& [known, name] : kNames) {
    if (isNear(*colour, known)) return name;
  }
  return std::to_string(colour->red) + "/" + std::to_string(colour->green) + "/" +
         std::to_string(colour->blue) + "/" + std::to_string(colour->alpha);
}

/// Milliseconds with as many decimals as needed: "150", "0.1".
inline std::string textOf(Duration time) {
  char text[40];
  std::snprintf(text, sizeof text, "%.10g", static_cast<double>(time.count()) / 1000.0);
  return text;
}

/// A speed byte whose percentage is p; only for the values that these tests use.
constexpr int speedOf(int p) { return p == 0 ? 255 : p == 33 ? 171 : p == 50 ? 128 : 0; }

class LightRoom final : public ViewObserver, public NoticesPart, public SeatSight {
 public:
  explicit LightRoom(Rule rule = Rule::least, std::vector<std::uint32_t> firstDraws = {})
      : random(rule, std::move(firstDraws)) {
    views.setObserver(this);
    colour.currentColour = kOrange;
  }

  /// What the engine does before every change of mode, then the change.
  void change(std::uint32_t mode, int speed) {
    modes.stopEffect();
    views.removeLightAnimations();
    modes.processMode(mode, speed);
  }

  /// One step of an effect that runs in the mode, as slow as p says.
  void step(Effect effect, std::uint32_t mode, int p) {
    state.runEffectAnimation = true;
    state.currentMode = mode;
    state.currentPerc = p;
    modes.step(effect);
  }

  /// A palette of red, green and blue, of which red was drawn last.
  void activatePalette() {
    colour.currentPaletteId = 1;
    colour.colorsArray = &palette;
    colour.currentPaletteIndex = 0;
    colour.currentColour = kRed;
  }

  Events runFor(long long ms) {
    loop.runFor(milliseconds(ms));
    return std::exchange(events, {});
  }

  void lightChanged(const MaybeColour& to) override { note(nameOf(to)); }
  void lightAnimationStarted(const MaybeColour& to, Duration duration) override {
    // The start of an animation reports the set value too; one line says both.
    if (!events.empty() && events.back() == textOf(loop.now()) + " " + nameOf(to)) {
      events.pop_back();
    }
    note("to " + nameOf(to) + " in " + textOf(duration));
  }
  void lightAnimationEnded(bool finished) override { note(finished ? "there" : "removed"); }

  void showMapNoSeatOverlay() override { note("notice"); }
  void hideMapNoSeatOverlay() override {
    if (notesHiding) note("no notice");
  }
  void updateLowLightHintState() override {}
  SeatLight seatLight() override { return seat; }
  std::optional<bool> seatIsWhite() override { return std::nullopt; }

  VirtualRunLoop loop;
  TimerSet timers{loop};
  ViewStack views{timers};
  ScreenState state;
  ColourState colour;
  ScriptedRandom random;
  SeatLight seat;
  std::vector<Colour> palette{kRed, kGreen, kBlue};
  ScreenModes modes{state, colour, views, timers, random, *this, *this};
  bool notesHiding = false;
  Events events;

 private:
  void note(const std::string& what) { events.push_back(textOf(loop.now()) + " " + what); }
};

}  // namespace halvora
