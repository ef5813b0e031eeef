// SPDX-License-Identifier: Apache-2.0
// What an engine in guarded air obeys: it follows one show, and nobody who cannot silence it takes
// its place.
#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "tests/engine/air_bench.h"

namespace halvora {
namespace {

using B = Broadcast;

class GuardedAir : public testing::Test {
 protected:
  AirBench bench_{guardedAir()};
};

TEST_F(GuardedAir, ObeysTheFirstPacketAtOnce) {
  bench_.hear(trueLook(1, 3));
  EXPECT_EQ(bench_.mode(), 3U);
  EXPECT_EQ(bench_.trust(), AirTrust::unproven);
}

TEST_F(GuardedAir, TakesStepsForwardUpTo1024) {
  bench_.hear(trueLook(10, 3));
  bench_.hear(trueLook(10 + 1024, 4));
  EXPECT_EQ(bench_.mode(), 4U);
  bench_.hear(trueLook(10 + 1024 + 1025, 5));
  EXPECT_EQ(bench_.mode(), 4U);
  EXPECT_EQ(bench_.doubts(AirDoubt::outOfStep), 1U);
  bench_.hear(trueLook(10 + 1024 + 1, 6));
  EXPECT_EQ(bench_.mode(), 6U) << "the show goes on";
}

TEST_F(GuardedAir, GoesRoundWithTheNumbers) {
  bench_.hear(trueLook(65535, 3));
  bench_.hear(trueLook(0, 4));
  EXPECT_EQ(bench_.mode(), 4U);
  bench_.hear(trueLook(5, 5));
  EXPECT_EQ(bench_.mode(), 5U);
}

TEST_F(GuardedAir, TakesAFarNumberOnlyOnceTheShowWasSilentAndTheOtherSteady) {
  bench_.repeat(trueLook(10, 3), 4000);
  const long long silentFrom = bench_.now() - 100;
  long long takenAt = 0;
  while (takenAt == 0 && bench_.now() < silentFrom + 6000) {
    bench_.hear(trueLook(30000, 5));
    if (bench_.mode() == 5) takenAt = bench_.now();
    bench_.runFor(100);
  }
  EXPECT_GE(takenAt, silentFrom + 3000);
  EXPECT_LE(takenAt, silentFrom + 4000);
}

TEST_F(GuardedAir, FollowsATransmitterThatBeginsAnewWithinFourSeconds) {
  for (const int before : {12, 40, 900, 5000, 60000}) {
    AirBench bench{guardedAir()};
    bench.repeat(trueLook(before, 3), 4000);
    const long long restart = bench.now();
    long long followed = 0;
    for (int sequence = 1; bench.now() < restart + 6000; bench.runFor(100)) {
      bench.hear(trueLook(sequence, 5));
      if (bench.now() - restart >= 1000 * sequence) ++sequence;
      if (followed == 0 && bench.mode() == 5) followed = bench.now() - restart;
    }
    EXPECT_GT(followed, 0) << before;
    EXPECT_LE(followed, 4000) << before;
    EXPECT_EQ(bench.mode(), 5U) << before;
  }
}

TEST_F(GuardedAir, OneFarPacketChangesNothing) {
  bench_.repeat(trueLook(10, 3), 4000);
  bench_.hear(trueLook(40000, 5));
  bench_.hear(trueLook(9, 5));
  EXPECT_EQ(bench_.mode(), 3U);
  bench_.hear(trueLook(11, 4));
  EXPECT_EQ(bench_.mode(), 4U);
}

TEST_F(GuardedAir, WhatWasRecordedAMomentAgoChangesNothing) {
  for (const long long behind : {2, 5, 20}) {
    AirBench bench{guardedAir()};
    std::vector<Broadcast> recorded;
    for (int round = 0; round < 120; ++round) {
      const Broadcast now = trueLook(10 + round / 10, 3 + round / 10 % 2);
      recorded.push_back(now);
      bench.hear(now);
      const auto old = static_cast<std::size_t>(10 * behind);
      if (recorded.size() > old && round > 40) bench.hear(recorded[recorded.size() - old]);
      EXPECT_EQ(bench.mode(), now.mode) << behind << ": " << round;
      bench.runFor(100);
    }
    EXPECT_EQ(bench.trust(), AirTrust::trusted);
  }
}

TEST_F(GuardedAir, AFarStreamBesideTheShowNeverWins) {
  bench_.repeat(trueLook(10, 3), 4000);
  int sequence = 10;
  for (int round = 0; round < 20; ++round) {
    bench_.repeat(trueLook(++sequence, 3 + round % 2), 1000, [&] {
      bench_.hear(trueLook(40000 + round, 9));
      EXPECT_NE(bench_.mode(), 9U);
    });
    EXPECT_EQ(bench_.mode(), 3U + static_cast<unsigned>(round % 2)) << "and the show goes on";
  }
  EXPECT_EQ(bench_.trust(), AirTrust::trusted);
}

TEST_F(GuardedAir, LearnsApplicationAndVenueByWhatAgrees) {
  bench_.repeat(trueLook(10, 3), 4000);
  bench_.hear(trueLook(11, 5, {{&B::applicationId, 999}}));
  bench_.hear(trueLook(11, 5, {{&B::venueId, 8}}));
  EXPECT_EQ(bench_.mode(), 3U);
  EXPECT_EQ(bench_.doubts(AirDoubt::otherShow), 2U);
  EXPECT_EQ(bench_.trust(), AirTrust::trusted);
}

TEST_F(GuardedAir, KnowsWhatTheHostHasPinned) {
  AirOptions options = guardedAir();
  options.applicationId = 258;
  options.venueId = 7;
  AirBench bench(options);
  bench.hear(trueLook(1, 5, {{&B::applicationId, 999}}));
  bench.hear(trueLook(1, 5, {{&B::venueId, 8}}));
  EXPECT_EQ(bench.mode(), 0U);
  EXPECT_EQ(bench.doubts(AirDoubt::otherShow), 2U);
  bench.hear(trueLook(1, 3));
  EXPECT_EQ(bench.mode(), 3U);
}

TEST_F(GuardedAir, TrustsWhatWasHeardForThreeSecondsUndisputed) {
  std::vector<AirTrust> told;
  bench_.engine().airTrustCallback() = [&](AirTrust trust) { told.push_back(trust); };
  bench_.repeat(trueLook(10, 3), 2900);
  EXPECT_EQ(bench_.trust(), AirTrust::unproven);
  bench_.repeat(trueLook(10, 3), 300);
  EXPECT_EQ(bench_.trust(), AirTrust::trusted);
  EXPECT_EQ(told, std::vector{AirTrust::trusted});
}

// An attacker who copies the key and goes on from where the show is: nobody can tell who is who.
TEST_F(GuardedAir, HoldsALookThatTwoStreamsUnderOneKeyContest) {
  std::vector<AirTrust> told;
  bench_.engine().airTrustCallback() = [&](AirTrust trust) { told.push_back(trust); };
  bench_.repeat(trueLook(10, 3, {{&B::ledMode, 1}}), 5000);
  ASSERT_TRUE(bench_.phone.torch.isOn);
  int sequence = 10;
  for (int round = 0; round < 10; ++round) {
    ++sequence;
    bench_.repeat(trueLook(sequence, 4, {{&B::ledMode, 1}}), 500, [&] {
      bench_.hear(trueLook(sequence + 500, 9, {{&B::ledMode, 1}}));
    });
    if (round < 3) continue;
    EXPECT_EQ(bench_.trust(), AirTrust::contested);
    EXPECT_EQ(bench_.mode(), 3U) << "what nobody disputed is held";
    EXPECT_FALSE(bench_.phone.torch.isOn);
  }
  EXPECT_TRUE(bench_.engine().isInsideVenue());
  EXPECT_EQ(bench_.air().contests, 1U);
  EXPECT_GT(bench_.doubts(AirDoubt::contested), 10U);
  // The attacker gives up.
  bench_.repeat(trueLook(sequence, 4, {{&B::ledMode, 1}}), 4000);
  EXPECT_EQ(bench_.mode(), 4U) << "and the true look is back";
  EXPECT_TRUE(bench_.phone.torch.isOn);
  EXPECT_EQ(bench_.trust(), AirTrust::trusted);
  EXPECT_EQ(told, (std::vector{AirTrust::trusted, AirTrust::contested, AirTrust::trusted}));
}

// A system that tells of a transmitter once a scan lets each be heard a little more than once a
// second.
TEST_F(GuardedAir, HoldsALookWherePacketsAreHeardFarApart) {
  for (const int pause : {500, 750, 800, 900}) {
    AirBench bench{guardedAir()};
    const auto hearBoth = [&](int rounds, bool isAttacked) {
      long long longest = 0;
      for (int round = 0; round < rounds; ++round) {
        if (isAttacked) bench.hear(trueLook(12, 9));
        bench.runFor(20);
        if (bench.mode() == 9) longest = std::max(longest, bench.now());
        bench.hear(trueLook(10, 3));
        bench.runFor(pause - 20);
      }
      return longest;
    };
    hearBoth(10, false);
    ASSERT_EQ(bench.trust(), AirTrust::trusted) << pause;
    const long long begun = bench.now();
    EXPECT_LE(hearBoth(20, true) - begun, 4 * pause + 20) << pause << ": four packets of each";
    EXPECT_EQ(bench.trust(), AirTrust::contested) << pause;
    EXPECT_EQ(bench.mode(), 3U) << pause;
    hearBoth(6, false);
    EXPECT_EQ(bench.trust(), AirTrust::trusted) << pause;
    EXPECT_EQ(bench.mode(), 3U) << pause;
  }
}

TEST_F(GuardedAir, HoldsALookWhereTheSameNumberSaysTwoThings) {
  bench_.repeat(trueLook(10, 3), 5000);
  bench_.repeat(trueLook(11, 4), 3000, [&] { bench_.hear(trueLook(11, 9)); });
  EXPECT_EQ(bench_.trust(), AirTrust::contested);
  EXPECT_EQ(bench_.mode(), 3U);
}

// One packet of a stranger that fits is shown, but not for long: the show goes on from before it.
TEST_F(GuardedAir, AStrangersOneStepIsTakenBackWithinASecond) {
  for (const int step : {1, 5, 500, 1024}) {
    AirBench bench{guardedAir()};
    bench.repeat(trueLook(100, 3), 5000);
    bench.hear(trueLook(100 + step, 9));
    ASSERT_EQ(bench.mode(), 9U);
    const long long taken = bench.now();
    long long back = 0;
    bench.repeat(trueLook(100, 3), 3000, [&] {
      if (back == 0 && bench.mode() == 3) back = bench.now() - taken;
    });
    EXPECT_GT(back, 0) << step;
    EXPECT_LE(back, 1000) << step;
    bench.hear(trueLook(101, 4));
    EXPECT_EQ(bench.mode(), 4U) << step;
  }
}

// A phone that comes in while an attack goes on has nothing to go by.
TEST_F(GuardedAir, ShowsNothingOfTwoStreamsThatItHasKnownNeitherOf) {
  for (const int other : {40000, 300, 9}) {
    AirBench bench{guardedAir()};
    bench.repeat(trueLook(10, 3), 3000, [&] { bench.hear(trueLook(other, 9)); });
    EXPECT_EQ(bench.trust(), AirTrust::contested) << other;
    EXPECT_EQ(bench.mode(), 0U) << other;
    bench.repeat(trueLook(10, 3), 4000);
    EXPECT_EQ(bench.mode(), 3U) << other << ": the one that stays is the show";
  }
}

TEST_F(GuardedAir, OthersOfTheShowMayBeAheadForAMoment) {
  const auto second = [](int sequence, int mode) {
    return trueLook(sequence, mode, {{&B::transmitter, 8}});
  };
  bench_.repeat(trueLook(10, 4), 3500);
  int sequence = 10;
  for (int round = 0; round < 40; ++round) {
    ++sequence;
    const int mode = 3 + round % 2;
    bench_.hear(second(sequence, mode));
    EXPECT_EQ(bench_.mode(), static_cast<unsigned>(mode)) << "whoever is heard first";
    bench_.runFor(100);
    bench_.hear(trueLook(sequence, mode));
    bench_.hear(second(sequence - 1, 3 + (round + 1) % 2));
    EXPECT_EQ(bench_.mode(), static_cast<unsigned>(mode)) << "a late one does no harm";
    bench_.runFor(100);
  }
  EXPECT_EQ(bench_.trust(), AirTrust::trusted);
  EXPECT_EQ(bench_.doubts(AirDoubt::outOfStep), 0U);
}

TEST_F(GuardedAir, AnotherTransmitterThatGoesItsOwnWayIsNotFollowed) {
  bench_.repeat(trueLook(10, 3), 5000);
  bench_.repeat(trueLook(10, 3), 2000, [&] {
    bench_.hear(trueLook(300, 9, {{&B::transmitter, 77}}));
  });
  EXPECT_EQ(bench_.mode(), 3U);
  bench_.repeat(trueLook(11, 4), 2000, [&] {
    bench_.hear(trueLook(301, 9, {{&B::transmitter, 77}}));
  });
  EXPECT_EQ(bench_.mode(), 4U);
}

TEST_F(GuardedAir, AnotherTransmitterTakesOverWhereTheFirstIsNotHeardAnyMore) {
  const auto second = [](int sequence, int mode) {
    return trueLook(sequence, mode, {{&B::transmitter, 8}});
  };
  bench_.repeat(trueLook(10, 3), 4000, [&] { bench_.hear(second(10, 3)); });
  for (int sequence = 11; sequence < 30; ++sequence) {
    bench_.repeat(second(sequence, 3 + sequence % 2), 500);
    EXPECT_EQ(bench_.mode(), 3U + static_cast<unsigned>(sequence % 2)) << sequence;
  }
}

TEST_F(GuardedAir, TheOneThatTakesOverIsObeyedFromItsFirstNewNumberOn) {
  const auto second = [](int sequence, int mode) {
    return trueLook(sequence, mode, {{&B::transmitter, 8}});
  };
  bench_.repeat(trueLook(10, 3), 4000, [&] { bench_.hear(second(10, 3)); });
  bench_.repeat(second(10, 3), 4000);
  bench_.hear(second(11, 4));
  EXPECT_EQ(bench_.mode(), 4U);
}

TEST_F(GuardedAir, AfterASilenceOfAllTheNextNumberOfAnyOfTheShowIsObeyed) {
  const Broadcast next = trueLook(11, 4, {{&B::transmitter, 8}});
  bench_.repeat(trueLook(10, 3), 4000, [&] {
    bench_.hear(trueLook(10, 3, {{&B::transmitter, 8}}));
  });
  bench_.runFor(4000);
  bench_.hear(next);
  EXPECT_EQ(bench_.mode(), 4U);
}

// As after a controller was started anew: what was known of numbers before is no measure any more.
TEST_F(GuardedAir, AShowThatBeganAnewIsMeasuredByItsNewNumbersAlone) {
  bench_.repeat(trueLook(10, 3), 4000);
  bench_.hear(trueLook(14, 4, {{&B::transmitter, 8}}));
  EXPECT_EQ(bench_.mode(), 4U) << "another of the show is ahead";
  bench_.repeat(trueLook(30000, 5), 6000);
  ASSERT_EQ(bench_.mode(), 5U);
  const auto before = bench_.doubts(AirDoubt::outOfStep);
  bench_.hear(trueLook(10, 9));
  EXPECT_EQ(bench_.doubts(AirDoubt::outOfStep), before + 1) << "an old number is out of step";
  bench_.hear(trueLook(30001, 6, {{&B::transmitter, 8}}));
  EXPECT_EQ(bench_.mode(), 6U) << "and the next one is not, whoever has it";
}

// Of two strangers that are heard once a show has fallen silent, only one may be the show.
TEST_F(GuardedAir, WhoSucceedsIsHeardMoreThanTwiceAsOftenAsAnyOther) {
  for (const long long slower : {125, 240, 400}) {
    AirBench bench{guardedAir()};
    bench.repeat(trueLook(10, 3), 4000);
    long long next = bench.now();
    bench.repeat(trueLook(30000, 5), 5000, [&] {
      if (bench.now() < next) return;
      bench.hear(trueLook(50000, 9));
      next += slower;
    });
    EXPECT_EQ(bench.mode() == 5, slower > 200) << slower;
    EXPECT_NE(bench.mode(), 9U) << slower;
  }
}

TEST_F(GuardedAir, LeavesAVenueWhoseShowOnlyStrangersGoOnWith) {
  AirOptions options = guardedAir();
  options.applicationId = 258;
  AirBench bench(options);
  bench.repeat(trueLook(10, 3), 4000);
  for (int second = 0; second < 12; ++second) {
    bench.hear(trueLook(9, 9, {{&B::applicationId, 999}}));
    bench.runFor(1000);
  }
  EXPECT_FALSE(bench.engine().isInsideVenue());
}

TEST_F(GuardedAir, AStrangersTransmitterDoesNotSilenceTheVenueWideOne) {
  bench_.repeat(trueLook(10, 3, {{&B::transmitter, 255}}), 4000);
  bench_.hear(trueLook(10, 9, {{&B::transmitter, 3}, {&B::applicationId, 999}}));
  bench_.hear(trueLook(11, 4, {{&B::transmitter, 255}}));
  EXPECT_EQ(bench_.mode(), 4U);
}

TEST_F(GuardedAir, TakesAnotherMapOnceASecond) {
  bench_.hear(trueLook(1, 3, {{&B::pixelMapId, 1}}));
  bench_.runFor(100);
  bench_.hear(trueLook(2, 3, {{&B::pixelMapId, 2}}));
  EXPECT_EQ(bench_.doubts(AirDoubt::mapTooSoon), 1U);
  bench_.hear(trueLook(3, 3, {{&B::pixelMapId, 1}, {&B::minutes, 2}}));
  bench_.hear(trueLook(4, 3));
  EXPECT_EQ(bench_.doubts(AirDoubt::mapTooSoon), 1U) << "the same one, or none";
  bench_.runFor(900);
  bench_.hear(trueLook(5, 3, {{&B::pixelMapId, 2}}));
  EXPECT_EQ(bench_.doubts(AirDoubt::mapTooSoon), 1U) << "and a second later the other one";
}

TEST_F(GuardedAir, TouchesAtMostTwiceASecond) {
  int sequence = 0;
  for (int round = 0; round < 50; ++round) {
    bench_.hear(trueLook(++sequence, 3, {{&B::vibrate, 1 + round % 2}}));
    bench_.runFor(100);
  }
  int touches = 0;
  for (const HapticAct act : bench_.phone.haptics.log.entries) {
    touches += act != HapticAct::dispose ? 1 : 0;
  }
  EXPECT_GE(touches, 9);
  EXPECT_LE(touches, 11);
  EXPECT_EQ(bench_.air().hapticsHeldBack, 50U - static_cast<std::uint64_t>(touches));
}

TEST_F(GuardedAir, WritesTheDefaultsAtMostOnceASecond) {
  int sequence = 0;
  for (int round = 0; round < 50; ++round) {
    bench_.hear(trueLook(++sequence, 3, {{&B::syncFlag, round % 2 * 2}, {&B::speed, round}}));
    bench_.runFor(100);
  }
  bench_.runFor(2000);
  int written = 0;
  for (const auto& write : bench_.phone.defaults.log.entries) written += write.key == "syncCloud";
  EXPECT_GE(written, 4);
  EXPECT_LE(written, 7);
  EXPECT_EQ(std::get<std::string>(bench_.phone.defaults.find("syncCloud")->storage), "YES");
}

TEST_F(GuardedAir, DismissesTheHostsScreensOnlyAsAShowBegins) {
  int sequence = 0;
  for (int round = 0; round < 20; ++round) {
    bench_.hear(trueLook(++sequence, 3 + round % 2));
    bench_.runFor(100);
  }
  EXPECT_EQ(bench_.phone.application.dismissals, 1);
  bench_.hear(trueLook(++sequence, 0));
  bench_.hear(trueLook(++sequence, 3));
  EXPECT_EQ(bench_.phone.application.dismissals, 2);
}

TEST_F(GuardedAir, IsNothingThatAnEngineWithoutOptionsHas) {
  AirBench exact{AirOptions{}};
  EXPECT_EQ(exact.engine().scanner().gate(), nullptr);
  exact.repeat(trueLook(10, 3), 4000);
  EXPECT_EQ(exact.trust(), AirTrust::unproven);
  exact.hear(trueLook(40000, 9));
  EXPECT_EQ(exact.mode(), 9U) << "whatever is newer";
}

}  // namespace
}  // namespace halvora
