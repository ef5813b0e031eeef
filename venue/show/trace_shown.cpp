// SPDX-License-Identifier: Apache-2.0
#include "venue/show/trace_shown.h"

#include <chrono>
#include <cmath>
#include <string>
#include <utility>

namespace halvora {

namespace {

constexpr std::int64_t kLooksPerSecond = 120;
// A thousandth, and a little less for what binary fractions lose.
constexpr double kLeastChange = 0.001 - 1e-9;

// The first of the looks after that time, which lie at whole multiples of 1/120 s.
Duration nextLook(Duration now) {
  constexpr std::int64_t kSecond = std::int64_t{1'000'000};
  const auto timeOf = [](std::int64_t k) {
    return Duration((k * kSecond + kLooksPerSecond / 2) / kLooksPerSecond);
  };
  std::int64_t k = now.count() * kLooksPerSecond / kSecond;
  while (timeOf(k) <= now) ++k;
  return timeOf(k);
}

bool differs(double one, double other) { return std::abs(one - other) >= kLeastChange; }

}  // namespace

EmissionWatch::EmissionWatch(VirtualPhone& phone, ShowEngine& engine, Seen seen)
    : phone_(phone), engine_(engine), seen_(std::move(seen)) {}

// The turn of the timer is one at whose end is looked, so it has nothing to do itself.
void EmissionWatch::lookAgain() {
  VirtualRunLoop& loop = phone_.loop;
  if (next_.isValid()) return;
  next_ = Timer(loop, loop.after(nextLook(loop.now()) - loop.now(), [] {}));
}

void EmissionWatch::turnEnded() {
  const Levels screen = engine_.shownScreen();
  seen_(phone_.loop.now(), {screen, phone_.screen.brightness(), phone_.torch.isOn});
  const LightFilter* const filter = engine_.views().filter();
  if (engine_.views().isAnimating() || (filter != nullptr && filter->isMoving())) lookAgain();
}

PhoneLight phoneLightOf(const Emission& emission) {
  const auto lightOfLevel = [&](double level) { return linearOfLevel(level) * emission.backlight; };
  const Levels& screen = emission.screen;
  return {{lightOfLevel(screen.red), lightOfLevel(screen.green), lightOfLevel(screen.blue)},
          emission.torch};
}

void ShownWriter::add(Duration time, const Emission& emission) {
  const Levels& now = emission.screen;
  const Levels& then = written_.screen;
  const bool isNew = differs(now.red, then.red) || differs(now.green, then.green) ||
                     differs(now.blue, then.blue) ||
                     differs(emission.backlight, written_.backlight) ||
                     emission.torch != written_.torch;
  if (!isNew) return;
  written_ = emission;
  const auto t = std::chrono::floor<std::chrono::milliseconds>(time);
  const std::string shown = "{\"screen\":[" + levelText(now.red) + "," + levelText(now.green) +
                            "," + levelText(now.blue) +
                            "],\"backlight\":" + levelText(emission.backlight) +
                            ",\"torch\":" + (emission.torch ? "true" : "false") + "}";
  write_(line_.begin().add("t", std::int64_t{t.count()}).addRaw("shown", shown).end());
}

}  // namespace halvora
