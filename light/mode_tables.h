// SPDX-License-Identifier: Apache-2.0
// What every screen mode and every screen effect does to the light, one row each; what the modes do
// to the gobo is in the gobo's step of command processing. All times are whole milliseconds that
// follow from the percentage speed p, 0 (fastest) to 100.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

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
    // flashBulb
    {Shape::flash, 0, PaletteStep::never, Paint::current, Paint::black, {}, kRandomPause},
    // paletteFlashBulb
    {Shape::flash, 0, PaletteStep::before, Paint::current, Paint::black, {}, kRandomPause},
    // whiteSparkle
    {Shape::flash, 13, PaletteStep::never, Paint::white, Paint::current, {}, kRandomPause},
    // whitePulse
    {Shape::fadeThere, 14, PaletteStep::never, Paint::white, Paint::current, kPulseFade,
     kRandomPause},
    // colourPulse
    {Shape::fadeThere, 16, PaletteStep::before, Paint::current, Paint::black, kPulseFade,
     kRandomPause},
    // colourCrossfade
    {Shape::fadeThere, 17, PaletteStep::between, Paint::current, Paint::current, kCrossfadeFade,
     exactly({4700, 300})},
    // colourCrossfadeRandom
    {Shape::fadeThere, 18, PaletteStep::between, Paint::current, Paint::current, kCrossfadeFade,
     drawnBetween({0, 200}, {4500, 500})},
    // paletteRandom
    {Shape::show, 0, PaletteStep::before, Paint::current, Paint::nothing, {}, kRandomPause},
    // paletteCycle
    {Shape::show, 0, PaletteStep::before, Paint::current, Paint::nothing, {}, exactly({4950, 50})},
    // shimmer
    {Shape::toggle, 0, PaletteStep::never, Paint::current, Paint::darker, {}, kRandomPause},
    // strobe
    {Shape::toggle, 0, PaletteStep::never, Paint::current, Paint::black, {}, exactly({190, 10})},
    // randomStrobe; after a burst instead of a pause: kBurstLength
    {Shape::burst, 0, PaletteStep::never, Paint::current, Paint::black, {}, kRandomPause},
    // strobeRandomRun
    {Shape::toggle, 0, PaletteStep::never, Paint::current, Paint::black, {}, exactly(kBurstStep)},
}};

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

struct ModeRow {
  Entry entry = Entry::none;
  Paint atOnce = Paint::nothing;
  Effect effect = Effect::none;
  Pause untilFirstStep;
  Again again = Again::never;
};

inline constexpr Pause kDelayedFlash = drawnBetween({950, 50}, {3900, 1100});

inline constexpr std::uint32_t kFrameRateMode = 9;
inline constexpr std::uint32_t kGoboFadeMode = 10;
inline constexpr std::uint32_t kGoboPulseMode = 11;
inline constexpr std::uint32_t kGoboRandomPulseMode = 12;
inline constexpr std::uint32_t kPixelMapMode = 21;
inline constexpr std::uint32_t kNoSeatMode = 50;

namespace mode_rows {

inline constexpr ModeRow kSteady{Entry::none, Paint::nothing, Effect::none, {}, Again::steadily};
inline constexpr ModeRow kToggle{
    Entry::toggle, Paint::nothing, Effect::none, {}, Again::whileTurnedOn};

constexpr ModeRow effect(Paint atOnce, Effect effect, Pause untilFirstStep = kRandomPause,
                         Again again = Again::never) {
  return {Entry::effect, atOnce, effect, untilFirstStep, again};
}

}  // namespace mode_rows

/// Modes 0 to 21; 50 stands alone (modeRow), and the others leave the light stopped.
inline constexpr std::array<ModeRow, 22> kModes = {{
    {},
    mode_rows::kSteady,
    {Entry::none, Paint::nothing, Effect::none, {}, Again::delayed},
    mode_rows::effect(Paint::black, Effect::flashBulb),
    mode_rows::effect(Paint::current, Effect::shimmer, kRandomPause, Again::darkerWhenOn),
    mode_rows::effect(Paint::nothing, Effect::strobe, exactly({150, 50})),
    mode_rows::effect(Paint::black, Effect::randomStrobe),
    mode_rows::kToggle,
    mode_rows::kToggle,
    mode_rows::kSteady,
    mode_rows::kSteady,
    mode_rows::kSteady,
    mode_rows::kSteady,
    mode_rows::effect(Paint::current, Effect::whiteSparkle, kRandomPause, Again::always),
    mode_rows::effect(Paint::current, Effect::whitePulse),
    mode_rows::effect(Paint::black, Effect::paletteFlashBulb, kRandomPause, Again::withoutPalette),
    mode_rows::effect(Paint::black, Effect::colourPulse, kRandomPause, Again::withoutPalette),
    mode_rows::effect(Paint::current, Effect::colourCrossfade, exactly({4700, 300}),
                      Again::withoutPalette),
    mode_rows::effect(Paint::current, Effect::colourCrossfadeRandom, kRandomPause,
                      Again::withoutPalette),
    mode_rows::effect(Paint::current, Effect::paletteRandom, kRandomPause, Again::withoutPalette),
    mode_rows::effect(Paint::current, Effect::paletteCycle, exactly({1950, 50}),
                      Again::withoutPalette),
    {Entry::seatColour, Paint::nothing, Effect::none, {}, Again::never},
}};
inline constexpr ModeRow kNoSeatRow{Entry::noSeat, Paint::black, Effect::none, {}, Again::never};
inline constexpr ModeRow kUnknownMode{};

constexpr const ModeRow& modeRow(std::uint32_t mode) {
  if (mode == kNoSeatMode) return kNoSeatRow;
  return mode < kModes.size() ? kModes[mode] : kUnknownMode;
}
constexpr const EffectRow& effectRow(Effect effect) {
  return kEffects[static_cast<std::size_t>(effect)];
}

}  // namespace halvora
