// SPDX-License-Identifier: Apache-2.0
// Any wishes of a show before the flash limiter: strobes, ramps, reds and their neighbours,
// backlight and torch against each other, at times that lie on the edges of a second. Whatever is
// wished, no second of what is emitted has more than three flashes, darkness comes at once, and
// what is left alone comes to what was wished.
#include <array>
#include <vector>

#include "light/flash_limiter.h"
#include "tests/fuzz/flash_judge.h"
#include "tests/fuzz/fuzz_targets.h"

namespace halvora {

namespace {

constexpr std::array<int, 32> kPauses = {
    0,      100,    500,    1000,   4000,   7000,   8333,   10000,  16667,  20000,  33333,
    41666,  50000,  62500,  71000,  83333,  100000, 111111, 125000, 142857, 166000, 166666,
    166667, 167000, 200000, 250000, 333333, 333334, 500000, 999000, 999999, 1000000};
constexpr Duration kFrame{8333};

constexpr std::array<Levels, 32> kColours = {{
    {0, 0, 0},
    {1, 1, 1},
    {1, 0, 0},
    {0, 1, 0},
    {0, 0, 1},
    {1, 1, 0},
    {0, 1, 1},
    {1, 0, 1},
    {0.35, 0.35, 0.35},
    {0.349, 0.349, 0.349},
    {0.5, 0.5, 0.5},
    {0.907, 0.907, 0.907},
    {0.95, 0.95, 0.95},
    {0.906, 0.906, 0.906},
    {1, 0.5, 0},
    {1, 0.535, 0},
    {1, 0.55, 0},
    {1, 0, 0.535},
    {1, 0.4, 0.4},
    {0.5, 0, 0},
    {0.02, 0, 0},
    {0.0002, 0, 0},
    {0.498, 0.498, 0.498},
    {0, 0.545, 0},
    {0.3, 0, 0},
    {0.2, 0.2, 0.2},
    {0.8, 0.8, 0.8},
    {0.1, 0.1, 0.1},
    {0.7, 0.2, 0.2},
    {1, 0.2, 0},
    {0.9, 0.3, 0.3},
    {0.6, 0.6, 0.6},
}};
static_assert(kColours.size() == 32);

Levels mixOf(const Levels& from, const Levels& to, double share) {
  const auto between = [share](double one, double other) { return one + (other - one) * share; };
  return {between(from.red, to.red), between(from.green, to.green), between(from.blue, to.blue)};
}

class Stage {
 public:
  // The clock of the loop may start anywhere.
  explicit Stage(Duration begin) : now_(begin) { show(); }

  void wait(Duration pause) {
    const Duration end = now_ + pause;
    hasHurried_ = hasHurried_ || pause < milliseconds(1);
    for (int tries = 0; retry_ && *retry_ <= end; ++tries) {
      require(tries < 2000, "what is held is not asked for without end");
      now_ = *retry_;
      show();
    }
    now_ = end;
  }

  void show() {
    const ShownLight shown = limiter_.decide({wanted_, isFading_}, now_);
    const Emission& out = shown.emission;
    require(shown.isAsWanted == (out == wanted_), "the limiter knows whether it held anything");
    require(wanted_.torch || !out.torch, "a torch goes off at once");
    if (screenLight(wanted_).isDark()) {
      require(screenLight(out).isDark(), "a screen goes black at once");
    }
    if (isFading_ && shown.screen == ShownScreen::held) {
      require(false, "what fades is never held");
    }
    const LinearLight light = screenLight(out);
    keep(emitted_, {{light.red, light.green, light.blue}, out.torch});
    turns_.push_back({now_, emitted_.back().light});
    const LinearLight wish = screenLight(wanted_);
    keep(wished_, {{wish.red, wish.green, wish.blue}, wanted_.torch});
    const auto pause = limiter_.retryAfter();
    require(pause.has_value() == !shown.isAsWanted, "only what is held waits");
    retry_ = pause ? std::optional(now_ + *pause) : std::nullopt;
  }

  Emission& wanted() { return wanted_; }
  void setFading(bool fades) { isFading_ = fades; }

  void judgeAll() const {
    judgeOne(emitted_);
    // Of two turns within a millisecond no eye sees the first; the clever count, and who reads
    // every turn, may then be one change ahead.
    if (hasHurried_) return;
    judgeOne(turns_);
    PhoneMeter meter;
    for (const JudgedLight& one : turns_) meter.add(one.time, one.light);
    require(meter.worst().areHarmless(), "the meter finds no more, either");
  }
  static void judgeOne(const std::vector<JudgedLight>& lights) {
    const JudgedFlashes worst = judge(lights);
    require(worst.general <= 3, "no second has more than three general flashes");
    require(worst.red <= 3, "no second has more than three red flashes");
  }
  void comesToRest() {
    isFading_ = false;
    show();
    wait(milliseconds(8000));
    require(limiter_.last() == wanted_, "what is left alone is shown in the end");
  }
  bool isAsWished() const {
    return std::equal(emitted_.begin(), emitted_.end(), wished_.begin(), wished_.end(),
                      [](const JudgedLight& one, const JudgedLight& other) {
                        return one.time == other.time && one.light == other.light;
                      });
  }
  const std::vector<JudgedLight>& wished() const { return wished_; }

 private:
  // Of one instant the last counts: the others were never to be seen.
  void keep(std::vector<JudgedLight>& lights, const PhoneLight& light) const {
    if (!lights.empty() && lights.back().time == now_) lights.pop_back();
    lights.push_back({now_, light});
  }

  Emission wanted_{{}, 1, false};
  bool isFading_ = false;
  FlashLimiter limiter_{wanted_};
  Duration now_;
  std::optional<Duration> retry_;
  std::vector<JudgedLight> emitted_;
  std::vector<JudgedLight> turns_;
  bool hasHurried_ = false;
  std::vector<JudgedLight> wished_;
};

void ramp(Stage& stage, const Levels& to, int frames) {
  const Levels from = stage.wanted().screen;
  stage.setFading(to == Levels{});
  for (int frame = 1; frame <= frames; ++frame) {
    stage.wait(kFrame);
    stage.wanted().screen = mixOf(from, to, static_cast<double>(frame) / frames);
    stage.show();
  }
  stage.setFading(false);
}

void act(Stage& stage, std::uint8_t what, std::uint8_t value) {
  switch (what % 8) {
    case 0:
    case 1:
      stage.wanted().screen = kColours[value % 32];
      break;
    case 2:
      stage.wanted().backlight = value / 255.0;
      break;
    case 3:
      stage.wanted().torch = value % 2 == 1;
      break;
    case 4:
      return ramp(stage, kColours[value % 32], 1 + value / 32 * 4);
    case 5:
      stage.wanted().torch = !stage.wanted().torch;
      stage.wanted().screen = kColours[value % 32];
      break;
    case 6:
      stage.wanted().screen = stage.wanted().screen == Levels{} ? kColours[value % 32] : Levels{};
      break;
    default:
      stage.wanted().backlight = value % 2 == 0 ? 1 : 0.3;
      stage.wanted().screen = kColours[value / 2 % 32];
      break;
  }
  stage.show();
}

// A light by turns with darkness, of the torch or the screen: what leaves room for darkness is left
// alone. None of these lights lies near a threshold, where the limiter is a little stricter.
void playStrobe(Stage& stage, FuzzBytes bytes) {
  const bool isTorch = bytes[0] % 4 == 1;
  const Levels bright = kColours[1 + bytes[0] / 4 % 7];
  for (std::size_t at = 1; at < bytes.size(); ++at) {
    stage.wait(Duration{kPauses[1 + bytes[at] % 31]});
    if (isTorch) {
      stage.wanted().torch = !stage.wanted().torch;
    } else {
      stage.wanted().screen = stage.wanted().screen == Levels{} ? bright : Levels{};
    }
    stage.show();
  }
  if (keepWithRoom(stage.wished())) {
    require(stage.isAsWished(), "what keeps to three flashes is emitted as it is");
  }
}

}  // namespace

int fuzzFlashes(FuzzBytes bytes) {
  if (bytes.size() < 2) return 0;
  // A minute's worth of beginnings, to the microsecond.
  Stage stage(Duration{(bytes[0] * 256 + bytes[1]) * 917});
  const FuzzBytes rest = bytes.subspan(1);
  if (bytes[0] % 4 == 0) {
    playStrobe(stage, rest);
  } else {
    for (std::size_t at = 0; at + 2 < rest.size(); at += 3) {
      stage.wait(Duration{kPauses[rest[at] % 32]});
      act(stage, rest[at + 1], rest[at + 2]);
    }
  }
  stage.judgeAll();
  stage.comesToRest();
  stage.judgeAll();
  return 0;
}

}  // namespace halvora
