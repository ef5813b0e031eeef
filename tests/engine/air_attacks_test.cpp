// SPDX-License-Identifier: Apache-2.0
// Attackers of every kind against guarded air, by chance: whoever cannot silence the show does not
// get it, and when they give up it goes on.
#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/engine/air_bench.h"
#include "tests/engine/allocation_count.h"

namespace halvora {
namespace {

using B = Broadcast;

constexpr int kRogueMode = 9;

/// A show of two modes in turn, and a stranger who knows all of it.
class Attack {
 public:
  explicit Attack(unsigned seed) : chance_(seed) {
    kind_ = below(8);
    rate_ = 1 + below(12);
  }

  /// So long, with or without the attacker.
  void run(long long time, bool isAttacked) {
    for (const long long end = bench.now() + time; bench.now() < end; bench.runFor(20)) {
      if (++tick_ % 5 == 0) hearTrue();
      if (isAttacked && below(25) < rate_) bench.hear(crafted());
      watch();
    }
  }
  bool showsTruth() { return bench.mode() == static_cast<unsigned>(mode()); }

  AirBench bench{guardedAir()};
  /// The longest that the stranger's look was to be seen at a stretch.
  long long longest = 0;
  bool wasTorchOnInContest = false;

 private:
  int below(int bound) { return static_cast<int>(chance_() % static_cast<unsigned>(bound)); }
  int mode() const { return 3 + sequence_ % 2; }

  void hearTrue() {
    if (tick_ % 50 == 0) ++sequence_;
    bench.hear(trueLook(sequence_, mode(), {{&B::ledMode, 1}}));
  }

  Broadcast crafted() {
    Broadcast rogue = trueLook(sequence_ + step(), kRogueMode, {{&B::ledMode, 1}});
    if (kind_ == 5) rogue.transmitter = static_cast<std::uint8_t>(60 + below(4));
    if (kind_ == 6) rogue.applicationId = static_cast<std::uint16_t>(900 + below(3));
    if (kind_ == 7) rogue.venueId = static_cast<std::uint8_t>(below(4));
    return rogue;
  }
  int step() {
    switch (kind_) {
      case 0:
        return 20'000;
      case 1:
        return below(60'000) - 30'000;
      case 2:
        return below(2048) - 1024;
      case 3:
        return below(3);
      case 4:
        return 1000;
      default:
        return below(20);
    }
  }

  void watch() {
    since_ = bench.mode() == kRogueMode ? since_ + 20 : 0;
    longest = std::max(longest, since_);
    wasTorchOnInContest |= bench.trust() == AirTrust::contested && bench.phone.torch.isOn;
  }

  std::mt19937 chance_;
  int kind_;
  int rate_;
  int tick_ = 0;
  int sequence_ = 500;
  long long since_ = 0;
};

TEST(AirAttacks, NobodyWhoCannotSilenceTheShowGetsIt) {
  for (unsigned seed = 1; seed <= 64; ++seed) {
    Attack attack(seed);
    attack.run(5000, false);
    ASSERT_TRUE(attack.showsTruth()) << seed;
    attack.run(20'000, true);
    EXPECT_LE(attack.longest, 2000) << seed;
    EXPECT_FALSE(attack.wasTorchOnInContest) << seed;
    attack.run(4500, false);
    EXPECT_TRUE(attack.showsTruth()) << seed << ": four seconds after the end of it";
  }
}

// Two say the show's numbers with different looks, one a moment after the other. Whether the show
// is the first or the second is the same to whoever hears them: a rule that followed one of them
// would lose the hall to a stranger who is the other.
TEST(AirAttacks, OfTwoWhoSayTheSameNumbersNeitherIsFollowed) {
  const auto hearBoth = [](AirBench& bench, int first, int second) {
    bench.repeat(trueLook(10, 3), 5000);
    int seconds = 0;
    for (int sequence = 11; sequence < 21; ++sequence) {
      for (int again = 0; again < 5; ++again) {
        bench.hear(trueLook(sequence, first));
        bench.runFor(20);
        bench.hear(trueLook(sequence, second));
        bench.runFor(80);
        seconds += bench.mode() == 3 ? 0 : 100;
      }
    }
    return seconds;
  };
  AirBench guarded(guardedAir());
  EXPECT_LE(hearBoth(guarded, 4, kRogueMode), 500);
  EXPECT_EQ(guarded.trust(), AirTrust::contested);
  AirBench turned(guardedAir());
  EXPECT_LE(hearBoth(turned, kRogueMode, 4), 500) << "and the stranger's no longer than that";
  AirBench exact(AirOptions{});
  EXPECT_EQ(hearBoth(exact, kRogueMode, 4), 5000) << "whoever speaks first";
  EXPECT_EQ(exact.mode(), kRogueMode);
}

/// Two transmitters say the same; then the first says that again for twenty seconds, while the
/// other goes on by a step a second. How long the other one's looks were to be seen, signed or not.
long long goneOnWith(AirBench& bench, bool isSigned) {
  const auto say = [&](const Broadcast& fields) {
    if (isSigned) return bench.hearSigned(fields);
    bench.hear(fields);
  };
  const std::vector<std::uint8_t> first = bench.signedData(trueLook(10, 3));
  long long seen = 0;
  for (int round = 0; round < 250; ++round) {
    const bool goesOn = round >= 50;
    // As its controller has it: not signed anew.
    if (isSigned) bench.hear(first);
    if (!isSigned) bench.hear(trueLook(10, 3));
    bench.runFor(20);
    say(trueLook(goesOn ? 6 + round / 10 : 10, goesOn ? 4 : 3, {{&B::transmitter, 8}}));
    bench.runFor(80);
    seen += bench.mode() == 4 ? 100 : 0;
  }
  return seen;
}

// Whether the first hangs while its backup goes on, or the show rests on a look while a stranger
// goes on who repeated it, is the same to whoever hears them: a rule that left the first would lose
// a hall in each quiet minute to whoever waits for one. With a key it is not the same.
TEST(AirAttacks, OfTwoOfWhichOneStandsStillThatOneIsFollowedWithoutAKey) {
  AirBench guarded(guardedAir());
  EXPECT_LE(goneOnWith(guarded, false), 700);
  EXPECT_EQ(guarded.mode(), 3U);
  guarded.repeat(trueLook(31, 4, {{&B::transmitter, 8}}), 3500);
  EXPECT_EQ(guarded.mode(), 4U) << "once the first has been silent";
  AirBench exact(AirOptions{});
  EXPECT_EQ(goneOnWith(exact, false), 20'000);
  AirBench proven(signedAir(Authentication::require, AirPolicy::guarded));
  EXPECT_EQ(goneOnWith(proven, true), 20'000);
}

TEST(AirAttacks, BadTagsTakeNoRoomAndNotTheShow) {
  if (!countsAllocations()) GTEST_SKIP() << "a sanitizer owns the heap";
  AirBench bench(signedAir(Authentication::require, AirPolicy::guarded));
  bench.phone.bluetooth.log.isKept = false;
  std::mt19937 chance(1);
  bench.hearSigned(trueLook(1, 3));
  auto garbage = bench.signedData(trueLook(2, kRogueMode), 0, 2);
  std::uint64_t allocations = 0;
  for (int second = 0; second < 3; ++second) {
    {
      const AllocationCount count;
      for (int at = 0; at < 10'000; ++at) {
        for (std::size_t byte = 2; byte + 1 < garbage.size(); ++byte) {
          garbage[byte] = static_cast<std::uint8_t>(chance());
        }
        bench.phone.bluetooth.advertise(Advertisement{std::span<const std::uint8_t>(garbage)});
      }
      allocations += count.allocations();
    }
    bench.runFor(1000);
  }
  EXPECT_EQ(allocations, 0U);
  EXPECT_EQ(bench.doubts(AirDoubt::badTag), 30'000U);
  bench.hearSigned(trueLook(2, 4));
  bench.hearSigned(trueLook(3, 4));
  EXPECT_EQ(bench.mode(), 4U);
}

TEST(AirAttacks, StrangersTakeNoRoom) {
  if (!countsAllocations()) GTEST_SKIP() << "a sanitizer owns the heap";
  AirBench bench{guardedAir()};
  bench.phone.bluetooth.log.isKept = false;
  bench.repeat(trueLook(10, 3), 4000);
  std::mt19937 chance(1);
  std::uint64_t allocations = 0;
  for (int round = 0; round < 20; ++round) {
    BroadcastBytes data =
        encodeBroadcast(trueLook(static_cast<int>(chance() % 30'000) + 20'000, kRogueMode));
    {
      const AllocationCount count;
      for (int at = 0; at < 1000; ++at) {
        data[2] = static_cast<std::uint8_t>(chance());
        data[5] = static_cast<std::uint8_t>(chance());
        data.back() = static_cast<std::uint8_t>(chance());
        bench.phone.bluetooth.advertise(Advertisement{std::span<const std::uint8_t>(data)});
      }
      allocations += count.allocations();
    }
    bench.repeat(trueLook(10, 3), 100);
  }
  EXPECT_EQ(allocations, 0U);
  EXPECT_EQ(bench.mode(), 3U);
}

}  // namespace
}  // namespace halvora
