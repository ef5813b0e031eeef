// SPDX-License-Identifier: Apache-2.0
// The account that the flash limiter keeps of what a phone has emitted: every change of light that
// may be half of a flash, for an eye that sees the screen, the torch, or both. It counts
// what a second that begins anywhere would count, so a rise or fall that is still going on when the
// second begins belongs to it too, and never less than the true number. A value of fixed size:
// copies are trials. Any thread.
#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "halvora/platform/time.h"
#include "light/emission.h"

namespace halvora {

/// When the latest changes happened that count: of a change that takes time, when it last went on.
class ChangeTimes {
 public:
  void add(Duration time);
  /// The latest change goes on; nothing before the first.
  void goOn(Duration time);
  /// How many there are from that time on; never fewer than there are if that is below kKept.
  int since(Duration first) const;
  /// The earliest of those from that time on.
  std::optional<Duration> earliestSince(Duration first) const;

 private:
  static constexpr std::size_t kKept = 16;

  std::array<Duration, kKept> times_{};
  std::size_t count_ = 0;
};

/// Rises and falls of luminance by turns.
class LuminanceChanges {
 public:
  void add(double luminance, Duration time);
  const ChangeTimes& times() const { return times_; }

 private:
  enum class Way : unsigned char { none, up, down };

  bool isFall(double from, double to) const;
  void turn(Way way, double luminance, Duration time);

  Way way_ = Way::none;
  bool hasBegun_ = false;
  /// Of the present run.
  double lowest_ = 0;
  double highest_ = 0;
  ChangeTimes times_;
};

/// Changes to a saturated red and away from one by turns. A change goes on for as long as the
/// colour moves on its new side.
class RedChanges {
 public:
  void add(const LinearLight& light, Duration time);
  const ChangeTimes& times() const { return times_; }

 private:
  /// The part of the diagram that holds some colours, and whether darkness is one of them.
  struct Seen {
    bool isAny = false;
    bool isDark = false;
    Chromaticity least;
    Chromaticity most;

    void add(const Chromaticity& colour, bool dark);
    bool hasFarFrom(const Chromaticity& colour, bool dark) const;
  };
  enum class Side : unsigned char { none, red, other };

  Side side_ = Side::none;
  /// Where the light was when the last change was counted or went on.
  Chromaticity reached_;
  /// In the present run.
  Seen reds_;
  Seen others_;
  ChangeTimes times_;
};

class FlashLedger {
 public:
  /// Three flashes, and a change that has no other half yet.
  static constexpr int kMostChanges = 7;

  /// The clock is the caller's, and never goes back.
  void add(const Emission& emission, Duration now);
  /// When darkness may come after an emission at the earliest.
  enum class Darkness : unsigned char { aMicrosecondLater, inTheSameMillisecond };
  /// Whether that may be emitted now: no second has more than kMostChanges by it, nor by darkness
  /// at any time after it.
  bool mayEmit(const Emission& emission, Duration now, Darkness darkness) const;
  /// When the earliest change falls out of a second that is full, for whoever reads whole
  /// milliseconds too; none where none is.
  std::optional<Duration> nextRoom(Duration now) const;

 private:
  int mostSince(Duration first) const;
  template <class Visit>
  void eachTimes(const Visit& visit) const;

  LuminanceChanges screen_;
  LuminanceChanges torch_;
  LuminanceChanges both_;
  RedChanges redOfScreen_;
  RedChanges redOfBoth_;
};

}  // namespace halvora
