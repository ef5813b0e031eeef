// SPDX-License-Identifier: Apache-2.0
// What one step of a screen effect costs, with all its timers and animations, at the fastest speed:
// by the effect tables on the virtual run loop ("engine") and by the plain reference ("plain").
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "bench/heap_count.h"
#include "bench/plain_effects.h"
#include "bench/require.h"
#include "light/notices.h"
#include "light/screen_modes.h"

namespace halvora {

namespace {

constexpr int kFastest = 255;
constexpr int kSteps = 50;
const std::vector<Colour> kPalette = {colourOfBytes(255, 45, 85), colourOfBytes(255, 204, 0),
                                      colourOfBytes(0, 122, 255), colourOfBytes(175, 82, 222)};

struct EffectCase {
  const char* name;
  std::uint32_t mode;
  void (PlainEffects::*startPlain)();
  /// From one step to the next where every draw is the greatest.
  Duration period;
};
constexpr EffectCase kStrobe{"StrobeStep", 5, &PlainEffects::startStrobe, milliseconds(10)};
constexpr EffectCase kFlashBulb{"FlashBulbStep", 3, &PlainEffects::startFlashBulb,
                                milliseconds(300)};
constexpr EffectCase kCrossfade{"CrossfadeStep", 17, &PlainEffects::startCrossfade,
                                milliseconds(700)};

/// A colour of the light, and when it was set.
using Shown = std::pair<Duration, MaybeColour>;

class NoSeat final : public SeatSight {
  SeatLight seatLight() override { return {}; }
  std::optional<bool> seatIsWhite() override { return std::nullopt; }
};

class EngineEffects : private ViewObserver {
 public:
  explicit EngineEffects(const EffectCase& effect) {
    random_.log.isKept = false;
    colour_.currentPaletteId = 1;
    colour_.colorsArray = &kPalette;
    colour_.currentColour = kPalette[0];
    modes_.processMode(effect.mode, kFastest);
  }
  void runFor(Duration span) { loop_.runFor(span); }
  void stop() { modes_.stopEffect(); }
  const MaybeColour& light() const { return views_.lightColour(); }

  std::vector<Shown> shownIn(Duration span) {
    views_.setObserver(this);
    runFor(span);
    views_.setObserver(nullptr);
    return std::exchange(shown_, {});
  }

 private:
  void lightChanged(const MaybeColour& colour) override {
    shown_.emplace_back(loop_.now(), colour);
  }

  VirtualRunLoop loop_;
  TimerSet timers_{loop_};
  ViewStack views_{timers_};
  ScreenState screen_;
  ColourState colour_;
  ScriptedRandom random_{ScriptedRandom::Rule::greatest};
  Notices notices_{screen_, views_, timers_};
  NoSeat seat_;
  ScreenModes modes_{screen_, colour_, views_, timers_, random_, notices_, seat_};
  std::vector<Shown> shown_;
};

class ReferenceEffects {
 public:
  explicit ReferenceEffects(const EffectCase& effect) {
    random_.log.isKept = false;
    (effects_.*effect.startPlain)();
  }
  void runFor(Duration span) { effects_.runFor(span); }
  void stop() { effects_.stop(); }
  const MaybeColour& light() const { return effects_.light(); }

  std::vector<Shown> shownIn(Duration span) {
    std::vector<Shown> shown;
    effects_.lightChanged = [&](const MaybeColour& colour) {
      shown.emplace_back(effects_.now(), colour);
    };
    runFor(span);
    effects_.lightChanged = nullptr;
    return shown;
  }

 private:
  ScriptedRandom random_{ScriptedRandom::Rule::greatest};
  PlainEffects effects_{random_, kPalette};
};

/// The lights of fifty steps, and of the time after the effect was stopped.
template <class Effects>
std::vector<Shown> wholeRun(const EffectCase& effect) {
  Effects effects(effect);
  std::vector<Shown> shown = effects.shownIn(effect.period * kSteps);
  effects.stop();
  const std::vector<Shown> rest = effects.shownIn(effect.period * kSteps);
  shown.insert(shown.end(), rest.begin(), rest.end());
  return shown;
}

void requireSameLight(const EffectCase& effect) {
  const std::string name = effect.name;
  const auto ours = wholeRun<EngineEffects>(effect);
  require(ours.size() >= kSteps - 5, name + ": the effect does not run");
  require(ours.back().first <= effect.period * (kSteps + 1), name + ": the effect does not stop");
  require(ours == wholeRun<ReferenceEffects>(effect),
          name + ": engine and reference show different lights");
}

template <class Effects>
void step(benchmark::State& state, const EffectCase& effect) {
  requireSameLight(effect);
  Effects effects(effect);
  effects.runFor(effect.period * 100);
  const AllocationsAnIteration allocations(state);
  for (auto _ : state) {
    effects.runFor(effect.period);
    benchmark::DoNotOptimize(effects.light());
  }
}

bool addAll() {
  for (const EffectCase* effect : {&kStrobe, &kFlashBulb, &kCrossfade}) {
    const std::string name = effect->name;
    benchmark::RegisterBenchmark((name + "/engine").c_str(), step<EngineEffects>, *effect);
    benchmark::RegisterBenchmark((name + "/plain").c_str(), step<ReferenceEffects>, *effect);
  }
  return true;
}

[[maybe_unused]] const bool kAdded = addAll();

}  // namespace

}  // namespace halvora
