// SPDX-License-Identifier: Apache-2.0
// What guarded air promises, looked for in shows, gaps, restarts and strangers by chance.
#include <string>

#include <gtest/gtest.h>

#include "tests/engine/air_world.h"

namespace halvora {
namespace {

using B = Broadcast;

constexpr unsigned kSeeds = 150;

class GuardedWorld {
 public:
  explicit GuardedWorld(unsigned seed)
      : chance_(seed), show(chance_), kind_(chance_.below(12)), rate_(1 + chance_.below(15)) {
    bench.phone.bluetooth.log.isKept = false;
  }

  void run(long long time) {
    for (const long long end = bench.now() + time; bench.now() < end; bench.runFor(20)) tick();
  }
  void lookAnew() { longest = since_ = wrong = 0; }
  std::string name() const { return std::to_string(kind_) + " at " + std::to_string(rate_); }
  /// What was heard last of the show is in force.
  bool showsTruth() const { return shownLook(bench) == heard; }

  Chance chance_;
  ChanceShow show;
  AirBench bench{guardedAir()};
  bool isAttacked = false;
  std::optional<int> heard;
  /// How often the show was heard and something else was in force.
  int wrong = 0;
  /// The longest that a stranger's look was to be seen at a stretch.
  long long longest = 0;
  bool wasTorchOnInContest = false;

 private:
  void tick() {
    const bool isPredicted = isAttacked && kind_ == 8 && chance_.isOnce(3);
    if (isPredicted) bench.hear(crafted());
    if (show.tick()) {
      bench.hear(show.packet());
      heard = show.look;
      wrong += showsTruth() ? 0 : 1;
    }
    if (isAttacked && !isPredicted && chance_.below(25) < rate_) bench.hear(crafted());
    since_ = isStrangers(shownLook(bench)) ? since_ + 20 : 0;
    longest = std::max(longest, since_);
    wasTorchOnInContest |= bench.trust() == AirTrust::contested && bench.phone.torch.isOn;
  }

  Broadcast crafted() {
    ++sent_;
    Broadcast rogue = numberedLook(kStrangers + (chance_.isOnce(2) ? 1 : sent_),
                                   static_cast<std::uint16_t>(show.sequence + step()));
    if (kind_ == 5 || kind_ == 9) {
      rogue.transmitter = static_cast<std::uint8_t>(60 + chance_.below(kind_ == 5 ? 4 : 1));
    }
    if (kind_ == 6) rogue.applicationId = static_cast<std::uint16_t>(900 + chance_.below(3));
    if (kind_ == 7) rogue.venueId = static_cast<std::uint8_t>(chance_.below(4));
    return rogue;
  }
  int step() {
    switch (kind_) {
      case 0:
        return 20'000;
      case 1:
        return chance_.between(-30'000, 30'000);
      case 2:
        return chance_.between(-1024, 1024);
      case 3:
        return chance_.below(3);
      case 4:
        return 1000;
      case 8:
        return 1;
      case 9:
        return 100 + sent_ % 1000;
      case 10:
        return 20'000 + sent_;
      case 11:
        return -(sent_ % 200);
      default:
        return chance_.below(20);
    }
  }

  int kind_;
  int rate_;
  int sent_ = 0;
  long long since_ = 0;
};

TEST(GuardedProperties, AShowAloneIsShownAsItIsHeard) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    GuardedWorld world(seed);
    world.run(30'000);
    EXPECT_EQ(world.wrong, 0) << seed;
    // Numbers that nobody heard, as of a transmitter that went on from its journal.
    world.show.sequence = static_cast<std::uint16_t>(world.show.sequence + 900);
    world.show.next();
    world.run(10'000);
    EXPECT_EQ(world.wrong, 0) << seed;
    EXPECT_EQ(world.bench.trust(), AirTrust::trusted) << seed;
  }
}

TEST(GuardedProperties, ARestartIsFollowedWithinFourSeconds) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    GuardedWorld world(seed);
    world.run(world.chance_.between(4000, 12'000));
    world.show.isSilent = true;
    world.run(world.chance_.between(0, 6000));
    world.show.isSilent = false;
    world.show.sequence =
        static_cast<std::uint16_t>(world.chance_.oneOf({1, 1, 1, 7, world.chance_.below(65'536)}));
    world.run(4000);
    world.lookAnew();
    world.run(5000);
    EXPECT_EQ(world.wrong, 0) << seed;
  }
}

TEST(GuardedProperties, NobodyWhoCannotSilenceTheShowGetsIt) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    GuardedWorld world(seed);
    world.run(6000);
    ASSERT_EQ(world.wrong, 0) << seed;
    world.isAttacked = true;
    world.run(15'000);
    EXPECT_LE(world.longest, 2500) << seed << ": " << world.name();
    EXPECT_FALSE(world.wasTorchOnInContest) << seed;
    world.isAttacked = false;
    world.run(4500);
    world.lookAnew();
    world.run(3000);
    EXPECT_EQ(world.wrong, 0) << seed << ": the show is back";
  }
}

// Somebody stands before the transmitter for a while, and the stranger does not: what is heard
// alone for three seconds may be the show that went on. Once it is silent the show is back.
TEST(GuardedProperties, WhoWasHeardAloneHasNoMoreThanItsOwnTime) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    GuardedWorld world(seed);
    world.run(6000);
    world.isAttacked = true;
    world.show.isSilent = true;
    world.run(world.chance_.between(3000, 9000));
    world.show.isSilent = false;
    world.run(world.chance_.between(0, 9000));
    world.isAttacked = false;
    world.run(4500);
    world.lookAnew();
    world.run(3000);
    EXPECT_EQ(world.wrong, 0) << seed << ": " << world.name();
  }
}

}  // namespace
}  // namespace halvora
