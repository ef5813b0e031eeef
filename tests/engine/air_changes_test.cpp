// SPDX-License-Identifier: Apache-2.0
// A host that changes what its engine believes of the air while the show is on.
#include <optional>

#include <gtest/gtest.h>

#include "halvora/engine.h"
#include "tests/engine/air_bench.h"

namespace halvora {
namespace {

using B = Broadcast;

/// An engine as a host has it, on a phone that tests hear with.
class ChangedAir : public testing::Test {
 protected:
  ChangedAir() {
    engine_->viewDidLoad();
    engine_->start();
    runFor(2000);
  }

  void runFor(long long time) { phone_.loop.runFor(milliseconds(time)); }
  void hear(const Broadcast& fields) { phone_.bluetooth.advertise(encodeBroadcast(fields)); }
  void repeat(const Broadcast& one, const std::optional<Broadcast>& other, int times) {
    for (int at = 0; at < times; ++at) {
      hear(one);
      if (other) hear(*other);
      runFor(100);
    }
  }
  /// Two streams under one key, until they are contested.
  void contest() {
    repeat(trueLook(10, 3, {{&B::ledMode, 1}}), std::nullopt, 50);
    repeat(trueLook(11, 4, {{&B::ledMode, 1}}), trueLook(11, 9, {{&B::ledMode, 1}}), 20);
    ASSERT_EQ(engine_->airTrust(), AirTrust::contested);
    ASSERT_FALSE(phone_.torch.isOn);
  }

  Platform platform() {
    Platform platform = phone_.platform();
    platform.codes = codes_;
    return platform;
  }

  PlainCodes codes_;
  const ExactJsonReader json_;
  VirtualPhone phone_{json_};
  std::unique_ptr<HalvoraViewController> engine_ =
      std::make_unique<HalvoraViewController>(platform());
};

TEST_F(ChangedAir, IsBelievedFromThenOn) {
  hear(trueLook(10, 3));
  engine_->setAir(guardedAir());
  hear(trueLook(11, 4));
  hear(trueLook(40000, 9));
  EXPECT_EQ(engine_->airDiagnostics()[AirDoubt::outOfStep], 1U);
  engine_->setAir(signedAir(Authentication::require));
  EXPECT_EQ(engine_->airDiagnostics()[AirDoubt::outOfStep], 0U) << "counts begin anew";
  hear(trueLook(12, 5));
  EXPECT_EQ(engine_->airDiagnostics()[AirDoubt::untagged], 1U);
  engine_->setAir({});
  hear(trueLook(40001, 9));
  EXPECT_EQ(engine_->diagnostics()[PacketFate::processed], 3U) << "whatever is newer";
}

TEST_F(ChangedAir, ForgetsWhatWasLearntAndTellsSo) {
  std::vector<AirTrust> told;
  engine_->setAirTrustCallback([&](AirTrust trust) { told.push_back(trust); });
  engine_->setAir(guardedAir());
  repeat(trueLook(10, 3), std::nullopt, 50);
  engine_->setAir(guardedAir());
  EXPECT_EQ(engine_->airTrust(), AirTrust::unproven);
  runFor(1);
  EXPECT_EQ(told, (std::vector{AirTrust::trusted, AirTrust::unproven}));
}

TEST_F(ChangedAir, GivesTheTorchOfAContestBack) {
  engine_->setAir(guardedAir());
  contest();
  engine_->setAir({});
  EXPECT_EQ(engine_->airTrust(), AirTrust::unproven);
  EXPECT_TRUE(phone_.torch.isOn);
}

TEST_F(ChangedAir, BoundsTouchesAndWritesOnlyWhereItIsGuarded) {
  const auto touch = [&](int first) {
    const std::size_t before = phone_.haptics.log.entries.size();
    for (int at = 0; at < 8; ++at) {
      hear(trueLook(first + at, 3, {{&B::vibrate, 1 + at % 2}}));
      runFor(50);
    }
    return phone_.haptics.log.entries.size() - before;
  };
  const std::size_t free = touch(10);
  engine_->setAir(guardedAir());
  const std::size_t bounded = touch(20);
  EXPECT_LT(bounded, free);
  hear(trueLook(30, 3, {{&B::venueId, 7}, {&B::syncFlag, 2}}));
  engine_->setAir({});
  EXPECT_EQ(std::get<std::string>(phone_.defaults.find("syncCloud")->storage), "YES")
      << "what was kept is written";
  EXPECT_EQ(touch(40), free);
}

TEST_F(ChangedAir, MayChangeInTheMiddleOfALook) {
  engine_->setAir(guardedAir());
  int calls = 0;
  engine_->setLightShowStartedCallback([&] {
    ++calls;
    engine_->setAir(calls % 2 == 0 ? guardedAir() : AirOptions{});
  });
  for (int at = 0; at < 6; ++at) hear(trueLook(10 + at, 3 + at % 2));
  EXPECT_EQ(calls, 6);
}

// A host that leaves as its show is contested: the look that is held starts the call.
TEST_F(ChangedAir, AndTheEngineMayGoThere) {
  engine_->setAir(guardedAir());
  repeat(trueLook(10, 3), std::nullopt, 50);
  hear(trueLook(11, 4));
  engine_->setLightShowStartedCallback([&] { engine_.reset(); });
  for (int at = 0; at < 20 && engine_; ++at) {
    hear(trueLook(11, 4));
    hear(trueLook(11, 9));
    runFor(100);
  }
  EXPECT_EQ(engine_, nullptr);
}

}  // namespace
}  // namespace halvora
