// SPDX-License-Identifier: Apache-2.0
// What signed air promises, looked for in shows, replays, floods, restarts and clocks by chance.
#include <gtest/gtest.h>

#include "tests/engine/air_world.h"

namespace halvora {
namespace {

constexpr unsigned kSeeds = 40;
using Data = std::vector<std::uint8_t>;

/// A stranger who records all that is signed and says any of it again, five times a second: more
/// would be a flood once their tags have died; or floods with tags that are made up.
class SignedWorld {
 public:
  explicit SignedWorld(unsigned seed)
      : chance_(seed),
        show(chance_),
        bench(signedAir(Authentication::require,
                        chance_.isOnce(2) ? AirPolicy::exact : AirPolicy::guarded)) {
    bench.phone.bluetooth.log.isKept = false;
    bench.phone.wallClock.begin.secondsSince1970 += chance_.below(60);
  }

  void run(long long time) {
    for (const long long end = bench.now() + time; bench.now() < end; bench.runFor(20)) tick();
  }
  long long toNextMinute() const {
    const double seconds = bench.phone.wallClock.now().secondsSince1970;
    return 60'000 - static_cast<long long>(seconds * 1000) % 60'000;
  }
  bool showsTruth() const { return shownLook(bench) == heard; }

  Chance chance_;
  ChanceShow show;
  AirBench bench;
  bool isReplayed = false;
  bool isFlooded = false;
  /// What is replayed is as old as that at most, in milliseconds.
  long long oldest = 60'000;
  std::optional<int> heard;
  int wrong = 0;
  /// How often a stranger's packet changed what is shown.
  int moved = 0;
  /// By how many minutes the phone's clock is wrong.
  int clockError = 0;

 private:
  struct Recorded {
    long long time = 0;
    Data data;
  };

  void tick() {
    if (show.tick()) {
      const Data data = bench.signedData(show.packet(), -clockError);
      bench.hear(data);
      heard = show.look;
      wrong += showsTruth() ? 0 : 1;
      if (bench.now() - recorded() >= 200) recordings_.push_back({bench.now(), data});
    }
    if (isReplayed && chance_.isOnce(10)) strange(anyRecording());
    for (int at = 0; isFlooded && at < 3; ++at) strange(madeUp());
  }
  long long recorded() const { return recordings_.empty() ? -200 : recordings_.back().time; }
  Data anyRecording() {
    const auto young =
        std::ranges::lower_bound(recordings_, bench.now() - oldest, {}, &Recorded::time);
    const auto count = static_cast<int>(recordings_.end() - young);
    return count == 0 ? Data{} : (young + chance_.below(count))->data;
  }
  Data madeUp() {
    const auto sequence = static_cast<std::uint16_t>(chance_.below(65'536));
    return bench.signedData(numberedLook(kStrangers, sequence), 0, 2);
  }
  void strange(const Data& data) {
    if (data.empty()) return;
    const auto before = shownLook(bench);
    bench.hear(data);
    moved += shownLook(bench) == before ? 0 : 1;
  }

  std::vector<Recorded> recordings_;
};

TEST(SignedProperties, ReplaysChangeNothing) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    SignedWorld world(seed);
    world.isReplayed = true;
    world.run(20'000);
    world.oldest = 150'000;
    world.run(50'000);
    EXPECT_EQ(world.moved, 0) << seed;
    EXPECT_EQ(world.wrong, 0) << seed;
  }
}

// What is said again once a number has been used up by the show is of before; the show's next
// minute says so.
TEST(SignedProperties, AShowBegunAnewIsNotLostToWhatWasRecordedBefore) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    SignedWorld world(seed);
    world.show.sequence = static_cast<std::uint16_t>(world.chance_.oneOf({9000, 30'000, 50'000}));
    world.run(20'000);
    world.isReplayed = true;
    world.oldest = 120'000;
    world.show.isSilent = true;
    world.run(world.chance_.between(1000, 30'000));
    world.show.isSilent = false;
    world.show.sequence = 1;
    world.run(world.toNextMinute() + 4000);
    world.wrong = world.moved = 0;
    world.run(20'000);
    EXPECT_EQ(world.wrong, 0) << seed;
    EXPECT_EQ(world.moved, 0) << seed;
  }
}

// Likewise a phone that comes in then, and has heard nothing of before.
TEST(SignedProperties, APhoneThatComesInFindsTheShowAmongReplays) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    SignedWorld world(seed);
    world.show.sequence = 30'000;
    world.run(20'000);
    world.show.sequence = 1;
    world.isReplayed = true;
    world.oldest = 120'000;
    world.bench.engine().setAir(signedAir(Authentication::require));
    world.run(world.toNextMinute() + 4000);
    world.wrong = world.moved = 0;
    world.run(20'000);
    EXPECT_EQ(world.wrong, 0) << seed;
    EXPECT_EQ(world.moved, 0) << seed;
  }
}

TEST(SignedProperties, AFloodOfBadTagsNeverShutsTheShowOut) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    SignedWorld world(seed);
    world.run(5000);
    world.isFlooded = true;
    for (int round = 0; round < 10; ++round) {
      world.run(1000);
      const int before = *world.heard;
      world.run(2600);
      EXPECT_GE(shownLook(world.bench).value_or(0), before) << seed;
    }
    world.isFlooded = false;
    world.run(4000);
    world.wrong = 0;
    world.run(3000);
    EXPECT_EQ(world.wrong, 0) << seed;
  }
}

TEST(SignedProperties, AClockThatJumpsAndComesBackLosesNothing) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    SignedWorld world(seed);
    world.isReplayed = world.chance_.isOnce(2);
    world.run(5000);
    for (int round = 0; round < 4; ++round) {
      const int jump = world.chance_.oneOf({-600, -2, -1, 1, 2, 60, 5'000'000});
      world.clockError = jump;
      world.bench.phone.wallClock.begin.secondsSince1970 += 60.0 * jump;
      world.run(5000);
      world.clockError = 0;
      world.bench.phone.wallClock.begin.secondsSince1970 -= 60.0 * jump;
      // To a clock that is wrong the whole show is a flood of bad tags.
      world.run(2500);
      world.wrong = 0;
      world.run(5000);
      EXPECT_EQ(world.wrong, 0) << seed << ": " << jump;
    }
  }
}

}  // namespace
}  // namespace halvora
