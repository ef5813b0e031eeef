// SPDX-License-Identifier: Apache-2.0
// A show, a phone that hears some of it, and a stranger with a radio, all by chance from one seed:
// what properties of guarded and signed air are looked for in. A test owns one.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "tests/engine/air_bench.h"

namespace halvora {

/// Looks are told apart by their colour: the show's are numbered, and the stranger's are above.
inline constexpr int kStrangers = 0x80'0000;

inline Broadcast numberedLook(int look, std::uint16_t sequence) {
  return trueLook(sequence, 1,
                  {{&Broadcast::red, look >> 16 & 255},
                   {&Broadcast::green, look >> 8 & 255},
                   {&Broadcast::blue, look & 255},
                   {&Broadcast::ledMode, 1}});
}

class Chance {
 public:
  explicit Chance(unsigned seed) : random_(seed) {}
  int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }
  int between(int least, int most) { return least + below(most - least + 1); }
  bool isOnce(int times) { return below(times) == 0; }
  int oneOf(std::initializer_list<int> values) {
    return *(values.begin() + below(static_cast<int>(values.size())));
  }

 private:
  std::mt19937 random_;
};

/// A show whose transmitter is heard every so often, with gaps.
class ChanceShow {
 public:
  explicit ChanceShow(Chance& chance)
      : sequence(static_cast<std::uint16_t>(chance.oneOf({1, 500, 65'500, 40'000}))),
        chance_(chance),
        period_(chance.oneOf({40, 100, 200})),
        pace_(chance.oneOf({1, 4, 20})),
        loss_(chance.oneOf({0, 10, 30})) {}

  /// Goes on by a tick of 20 ms; whether a packet is heard.
  bool tick() {
    time_ += 20;
    if (isSilent || time_ % period_ != 0) return false;
    if (chance_.isOnce(pace_)) next();
    return chance_.below(100) >= loss_;
  }
  void next() {
    ++sequence;
    // Most often another look.
    if (!chance_.isOnce(3)) ++look;
  }
  Broadcast packet() const { return numberedLook(look, sequence); }

  std::uint16_t sequence;
  int look = 1;
  bool isSilent = false;

 private:
  Chance& chance_;
  int time_ = 0;
  int period_;
  int pace_;
  int loss_;
};

/// The look in force; none where there is none.
inline std::optional<int> shownLook(const AirBench& bench) {
  const PresenceState& presence = bench.state().presence;
  if (!presence.hasCurrentBroadcast || bench.state().screen.currentMode == 0) return std::nullopt;
  const auto& look = presence.currentBroadcast;
  return look[8] << 16 | look[9] << 8 | look[10];
}
inline bool isStrangers(const std::optional<int>& look) { return look && *look >= kStrangers; }

}  // namespace halvora
