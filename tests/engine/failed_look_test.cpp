// SPDX-License-Identifier: Apache-2.0
// Looks that are cut short: what a step throws ends in the engine, is counted, and the look is
// obeyed once more while it is heard.
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "tests/engine/air_bench.h"
#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using B = Broadcast;

/// Throws when a view's alpha changes for the n-th time from now.
class ThrowingObserver final : public ViewObserver {
 public:
  void alphaChanged(ViewId, double, Duration) override {
    if (countdown > 0 && --countdown == 0) throw std::bad_alloc();
  }
  int countdown = 0;
};

class FailedLook : public testing::Test {
 protected:
  FailedLook() {
    bench_.listen();
    bench_.engine().views().setObserver(&observer_);
  }
  ~FailedLook() override { bench_.engine().views().setObserver(nullptr); }

  std::uint64_t failed() { return bench_.engine().diagnostics()[PacketFate::failed]; }
  double container() { return bench_.engine().views().alpha(ViewId::container); }

  EngineBench bench_;
  ThrowingObserver observer_;
};

TEST_F(FailedLook, IsCountedAndObeyedOnceMoreInTheNextSecond) {
  const Broadcast wanted = look(3, {{&B::sequence, 5}, {&B::ledMode, 1}});
  int failures = 0;
  // At every alpha that the look sets, one after the other.
  for (observer_.countdown = 1;; observer_.countdown = failures + 1) {
    if (bench_.hear(wanted) != PacketFate::failed) break;
    ++failures;
    EXPECT_EQ(failed(), static_cast<std::uint64_t>(failures));
    EXPECT_NE(bench_.hear(wanted), PacketFate::processed) << "not before a second has passed";
    bench_.runTo(1000 * (failures + 2));
  }
  EXPECT_GT(failures, 1);
  EXPECT_EQ(bench_.screen().currentMode, 3U);
  EXPECT_TRUE(bench_.screen().runEffectAnimation);
  EXPECT_EQ(container(), 1);
  EXPECT_EQ(bench_.state().torch.currentLEDMode, 1);
  EXPECT_EQ(bench_.state().unfinishedStep, 0);
}

// To guard and proof the repeat is nothing new.
TEST(FailedLookOfDoubtedAir, IsObeyedOnceMoreWhetherItIsGuardedOrSigned) {
  for (const AirOptions& air : {guardedAir(), signedAir(Authentication::require)}) {
    AirBench bench{air};
    ThrowingObserver observer;
    bench.engine().views().setObserver(&observer);
    const auto hear = [&](const Broadcast& heard) {
      air.showKey ? bench.hearSigned(heard) : bench.hear(heard);
    };
    const Broadcast wanted = look(3, {{&B::sequence, 5}, {&B::venueId, 7}});
    observer.countdown = 2;
    hear(wanted);
    EXPECT_EQ(bench.engine().diagnostics()[PacketFate::failed], 1U);
    const std::uint64_t obeyed = bench.engine().diagnostics()[PacketFate::processed];
    hear(wanted);
    EXPECT_EQ(bench.engine().diagnostics()[PacketFate::processed], obeyed) << "not at once";
    bench.runFor(1100);
    hear(wanted);
    EXPECT_EQ(bench.engine().diagnostics()[PacketFate::processed], obeyed + 1);
    EXPECT_EQ(bench.engine().views().alpha(ViewId::container), 1);
    hear(wanted);
    EXPECT_EQ(bench.engine().diagnostics()[PacketFate::processed], obeyed + 1) << "and once only";
    bench.engine().views().setObserver(nullptr);
  }
}

TEST_F(FailedLook, ANewLookIsObeyedAtOnce) {
  observer_.countdown = 2;
  EXPECT_EQ(bench_.hear(look(3, {{&B::sequence, 5}})), PacketFate::failed);
  EXPECT_EQ(bench_.hear(look(1, {{&B::sequence, 6}})), PacketFate::processed);
  EXPECT_EQ(container(), 1);
  bench_.runTo(4000);
  EXPECT_EQ(bench_.hear(look(1, {{&B::sequence, 6}})), PacketFate::staleSequence);
}

TEST_F(FailedLook, AHostsCallbackThatThrowsLeavesTheShow) {
  bench_.engine().lightShowStartedCallback() = [] { throw std::string("the host's own"); };
  EXPECT_EQ(bench_.hear(look(3, {{&B::sequence, 5}})), PacketFate::processed);
  EXPECT_EQ(container(), 1);
  EXPECT_EQ(bench_.engine().diagnostics().failedCallbacks, 1U);
  EXPECT_EQ(bench_.engine().diagnostics().failedCalls, 0U);
}

}  // namespace
}  // namespace halvora
