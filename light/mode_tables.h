// SPDX-License-Identifier: Apache-2.0
// What every screen mode and every screen effect does to the light and to the gobo, and every torch
// mode to the torch: one row each, which carries its own number. All times are whole milliseconds
// that follow from the percentage speed p, 0 (fastest) to 100.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "text/rows.h"

namespace halvora {

enum class Paint : std::uint8_t { nothing, black, white, current, darker };

/// base + p × hundredths ÷ 100, in whole milliseconds.
struct LinearTime {
  int hundredths = 0;
  int base = 0;
  constexpr int at(int p) const { return p * hundredths / 100 + base; }
};

/// An exact time (`latest`), or one drawn from `earliest` to `latest`, both included.
struct Pause {
  LinearTime earliest;
  LinearTime latest;
  bool drawn = false;
};

constexpr Pause exactly(LinearTime time) { return {time, time, false}; }
constexpr Pause drawnBetween(LinearTime earliest, LinearTime latest) {
  return {earliest, latest, true};
}

/// The pause of most effects: 0 to 300 ms at the fastest, 0 to 5000 ms at the slowest.
inline constexpr Pause kRandomPause = drawnBetween({0, 0}, {4700, 300});

enum class Effect : std::uint8_t {
  none,
  flashBulb,
  paletteFlashBulb,
  whiteSparkle,
  whitePulse,
  colourPulse,
  colourCrossfade,
  colourCrossfadeRandom,
  paletteRandom,
  paletteCycle,
  shimmer,
  strobe,
  randomStrobe,
  strobeRandomRun,
};
inline constexpr std::size_t kEffectCount = 14;

/// The ways in which a step draws.
enum class Shape : std::uint8_t {
  nothing,
  /// Shows `first`.
  show,
  /// Shows `first`, and `second` again after a flash's length.
  flash,
  /// Shows `first` and `second` by turns.
  toggle,
  /// Runs the light to `first`, then to `second`.
  fadeThere,
  /// Bursts of fast toggling with dark pauses between them.
  burst,
};

/// When a step draws the palette's next colour.
enum class PaletteStep : std::uint8_t { never, before, between };

struct EffectRow {
  Effect effect = Effect::none;
  Shape shape = Shape::nothing;
  /// The only mode in which a step does anything; 0 for no such guard.
  std::uint8_t onlyInMode = 0;
  PaletteStep palette = PaletteStep::never;
  Paint first = Paint::nothing;
  Paint second = Paint::nothing;
  /// Of each of the two fades.
  LinearTime fade;
  /// Until the effect's next step.
  Pause next;
};

inline constexpr int kFlashLength = 90;
inline constexpr LinearTime kBurstStep{0, 50};
inline constexpr LinearTime kBurstLength{0, 150};
inline constexpr LinearTime kPulseFade{2400, 100};
inline constexpr LinearTime kCrossfadeFade{4800, 200};
inline constexpr LinearTime kGoboFade{4800, 200};

inline constexpr std::array<EffectRow, kEffectCount> kEffects = {{
    {},
    {Effect::flashBulb,
     Shape::flash,
     0,
     PaletteStep::never,
     Paint::current,
     Paint::black,
     {},
     kRandomPause},
    {Effect::paletteFlashBulb,
     Shape::flash,
     0,
     PaletteStep::before,
     Paint::current,
     Paint::black,
     {},
     kRandomPause},
    {Effect::whiteSparkle,
     Shape::flash,
     13,
     PaletteStep::never,
     Paint::white,
     Paint::current,
     {},
     kRandomPause},
    {Effect::whitePulse, Shape::fadeThere, 14, PaletteStep::never, Paint::white, Paint::current,
     kPulseFade, kRandomPause},
    {Effect::colourPulse, Shape::fadeThere, 16, PaletteStep::before, Paint::current, Paint::black,
     kPulseFade, kRandomPause},
    {Effect::colourCrossfade, Shape::fadeThere, 17, PaletteStep::between, Paint::current,
     Paint::current, kCrossfadeFade, exactly({4700, 300})},
    {Effect::colourCrossfadeRandom, Shape::fadeThere, 18, PaletteStep::between, Paint::current,
     Paint::current, kCrossfadeFade, drawnBetween({0, 200}, {4500, 500})},
    {Effect::paletteRandom,
     Shape::show,
     0,
     PaletteStep::before,
     Paint::current,
     Paint::nothing,
     {},
     kRandomPause},
    {Effect::paletteCycle,
     Shape::show,
     0,
     PaletteStep::before,
     Paint::current,
     Paint::nothing,
     {},
     exactly({4950, 50})},
    {Effect::shimmer,
     Shape::toggle,
     0,
     PaletteStep::never,
     Paint::current,
     Paint::darker,
     {},
     kRandomPause},
    {Effect::strobe,
     Shape::toggle,
     0,
     PaletteStep::never,
     Paint::current,
     Paint::black,
     {},
     exactly({190, 10})},
    // After a burst instead of a pause: kBurstLength.
    {Effect::randomStrobe,
     Shape::burst,
     0,
     PaletteStep::never,
     Paint::current,
     Paint::black,
     {},
     kRandomPause},
    {Effect::strobeRandomRun,
     Shape::toggle,
     0,
     PaletteStep::never,
     Paint::current,
     Paint::black,
     {},
     exactly(kBurstStep)},
}};
static_assert(areInOrder(kEffects, &EffectRow::effect));

/// What a change to a mode, or of its speed, does at once.
enum class Entry : std::uint8_t {
  /// Nothing: the stopped light keeps its colour.
  none,
  /// Starts the row's effect.
  effect,
  /// Flips the light between black and the current colour.
  toggle,
  /// Shows the seat's colour in the pixel map.
  seatColour,
  /// Black with the notice that a seat is missing.
  noSeat,
};

/// What every command in the mode shows again, changed or not, so that a change of colour alone
/// arrives.
enum class Again : std::uint8_t {
  never,
  /// The current colour; an effect that runs is ended.
  steadily,
  /// The current colour beside the running effect.
  always,
  /// The current colour, unless a palette is in force.
  withoutPalette,
  /// The current colour while the toggle is on.
  whileTurnedOn,
  /// The current colour, darker in the effect's on phase.
  darkerWhenOn,
  /// The current colour once, after kDelayedFlash.
  delayed,
};

/// What a look in the mode does to the gobo that it asks for.
enum class GoboRule : std::uint8_t {
  /// Nothing: the show is over.
  off,
  /// Shows it at once, and again whenever something has made it transparent.
  steady,
  /// Shows it at once.
  shown,
  fade,
  pulse,
  randomPulse,
  /// Takes it away until another mode is in force.
  hidden,
};

/// When the mode is entered for the first time: what the later steps paint anyway has no need of
/// it.
enum class Begins : std::uint8_t { withTheLaterSteps, withTheChange };

struct ModeRow {
  std::uint8_t number = 0;
  Begins begins = Begins::withTheLaterSteps;
  GoboRule gobo = GoboRule::off;
  Entry entry = Entry::none;
  Paint atOnce = Paint::nothing;
  Effect effect = Effect::none;
  Pause untilFirstStep;
  Again again = Again::never;
};

inline constexpr Pause kDelayedFlash = drawnBetween({950, 50}, {3900, 1100});

inline constexpr std::uint32_t kFrameRateMode = 9;
inline constexpr std::uint32_t kGoboPulseMode = 11;
inline constexpr std::uint32_t kGoboRandomPulseMode = 12;
inline constexpr std::uint32_t kPixelMapMode = 21;
inline constexpr std::uint32_t kNoSeatMode = 50;

namespace mode_rows {

constexpr ModeRow steady(std::uint8_t number, GoboRule gobo) {
  return {number,         Begins::withTheChange, gobo, Entry::none,
          Paint::nothing, Effect::none,          {},   Again::steadily};
}
constexpr ModeRow toggle(std::uint8_t number) {
  return {
      number, Begins::withTheChange, GoboRule::steady, Entry::toggle, Paint::nothing, Effect::none,
      {},     Again::whileTurnedOn};
}
constexpr ModeRow effect(std::uint8_t number, Paint atOnce, Effect effect,
                         Pause untilFirstStep = kRandomPause, Again again = Again::never) {
  const GoboRule gobo = number < 10 ? GoboRule::steady : GoboRule::shown;
  return {number, Begins::withTheChange, gobo, Entry::effect, atOnce,
          effect, untilFirstStep,        again};
}

}  // namespace mode_rows

/// Modes 0 to 21; 50 stands alone (modeRow), and the others leave the light stopped.
inline constexpr std::array<ModeRow, 22> kModes = {{
    {},
    {1,
     Begins::withTheLaterSteps,
     GoboRule::steady,
     Entry::none,
     Paint::nothing,
     Effect::none,
     {},
     Again::steadily},
    {2,
     Begins::withTheLaterSteps,
     GoboRule::steady,
     Entry::none,
     Paint::nothing,
     Effect::none,
     {},
     Again::delayed},
    mode_rows::effect(3, Paint::black, Effect::flashBulb),
    mode_rows::effect(4, Paint::current, Effect::shimmer, kRandomPause, Again::darkerWhenOn),
    mode_rows::effect(5, Paint::nothing, Effect::strobe, exactly({150, 50})),
    mode_rows::effect(6, Paint::black, Effect::randomStrobe),
    mode_rows::toggle(7),
    mode_rows::toggle(8),
    mode_rows::steady(9, GoboRule::steady),
    mode_rows::steady(10, GoboRule::fade),
    mode_rows::steady(11, GoboRule::pulse),
    mode_rows::steady(12, GoboRule::randomPulse),
    mode_rows::effect(13, Paint::current, Effect::whiteSparkle, kRandomPause, Again::always),
    mode_rows::effect(14, Paint::current, Effect::whitePulse),
    mode_rows::effect(15, Paint::black, Effect::paletteFlashBulb, kRandomPause,
                      Again::withoutPalette),
    mode_rows::effect(16, Paint::black, Effect::colourPulse, kRandomPause, Again::withoutPalette),
    mode_rows::effect(17, Paint::current, Effect::colourCrossfade, exactly({4700, 300}),
                      Again::withoutPalette),
    mode_rows::effect(18, Paint::current, Effect::colourCrossfadeRandom, kRandomPause,
                      Again::withoutPalette),
    mode_rows::effect(19, Paint::current, Effect::paletteRandom, kRandomPause,
                      Again::withoutPalette),
    mode_rows::effect(20, Paint::current, Effect::paletteCycle, exactly({1950, 50}),
                      Again::withoutPalette),
    {21,
     Begins::withTheChange,
     GoboRule::hidden,
     Entry::seatColour,
     Paint::nothing,
     Effect::none,
     {},
     Again::never},
}};
static_assert(areInOrder(kModes, &ModeRow::number));
inline constexpr ModeRow kNoSeatRow{
    50, Begins::withTheChange, GoboRule::hidden, Entry::noSeat, Paint::black, Effect::none,
    {}, Again::never};
inline constexpr ModeRow kUnknownMode{255,         Begins::withTheChange, GoboRule::shown,
                                      Entry::none, Paint::nothing,        Effect::none,
                                      {},          Again::never};

constexpr const ModeRow& modeRow(std::uint32_t mode) {
  if (mode == kNoSeatMode) return kNoSeatRow;
  return mode < kModes.size() ? kModes[mode] : kUnknownMode;
}
constexpr const EffectRow& effectRow(Effect effect) {
  return kEffects[static_cast<std::size_t>(effect)];
}

enum class TorchEffect : std::uint8_t {
  none,
  flashBulbLED,
  strobeLED,
  randomStrobeLED,
  strobeRandomRunLED,
};

/// What a change to a torch mode, or of its speed, does at once.
enum class TorchEntry : std::uint8_t {
  none,
  /// Off, and the row's effect begins.
  effect,
  toggle,
  /// White at the seat in the still picture is on.
  pixelMap,
};

/// What every command in the mode does again, changed or not. "Later" is after a pause that is
/// drawn.
enum class TorchAgain : std::uint8_t { never, off, on, offLater, onLater };

struct TorchModeRow {
  std::uint8_t number = 0;
  TorchAgain again = TorchAgain::never;
  TorchEntry entry = TorchEntry::none;
  TorchEffect effect = TorchEffect::none;
  Pause untilFirstStep;
};

inline constexpr int kPixelMapTorchMode = 9;
/// Of the strobe, from one change to the next.
inline constexpr Pause kTorchStrobePause = exactly({190, 10});

inline constexpr std::array<TorchModeRow, 10> kTorchModes = {{
    {0, TorchAgain::off, TorchEntry::none, TorchEffect::none, {}},
    {1, TorchAgain::on, TorchEntry::none, TorchEffect::none, {}},
    {2, TorchAgain::offLater, TorchEntry::none, TorchEffect::none, {}},
    {3, TorchAgain::onLater, TorchEntry::none, TorchEffect::none, {}},
    {4, TorchAgain::never, TorchEntry::effect, TorchEffect::flashBulbLED, kRandomPause},
    {5, TorchAgain::never, TorchEntry::effect, TorchEffect::strobeLED, exactly({150, 50})},
    {6, TorchAgain::never, TorchEntry::effect, TorchEffect::randomStrobeLED, kRandomPause},
    {7, TorchAgain::never, TorchEntry::toggle, TorchEffect::none, {}},
    {8, TorchAgain::never, TorchEntry::toggle, TorchEffect::none, {}},
    {kPixelMapTorchMode, TorchAgain::never, TorchEntry::pixelMap, TorchEffect::none, {}},
}};
static_assert(areInOrder(kTorchModes, &TorchModeRow::number));
inline constexpr TorchModeRow kUnknownTorchMode{
    255, TorchAgain::never, TorchEntry::none, TorchEffect::none, {}};

/// Modes from 10 on, and below 0, do nothing.
constexpr const TorchModeRow& torchModeRow(int mode) {
  const bool isKnown = mode >= 0 && mode < static_cast<int>(kTorchModes.size());
  return isKnown ? kTorchModes[static_cast<std::size_t>(mode)] : kUnknownTorchMode;
}

}  // namespace halvora
