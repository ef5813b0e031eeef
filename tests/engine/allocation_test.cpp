// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "tests/engine/allocation_count.h"
#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using B = Broadcast;

// An engine without recorders, whose logs would allocate themselves.
class Allocations : public testing::Test {
 protected:
  void SetUp() override {
    if (!countsAllocations()) GTEST_SKIP() << "a sanitizer owns the heap";
    phone_.mainBundle.resources["HVAssets/palettes.json"] = kBenchPalettes;
    phone_.screen.log.isKept = false;
    phone_.haptics.log.isKept = false;
    phone_.defaults.log.isKept = false;
    phone_.bluetooth.log.isKept = false;
    engine_.viewDidLoad();
  }

  void listen() {
    engine_.start();
    phone_.loop.runUntil(milliseconds(1000));
  }

  // So many copies of an advertisement in a row; what they took from the heap.
  std::uint64_t allocationsOf(const Advertisement& advertisement, PacketFate fate) {
    const std::uint64_t met = engine_.diagnostics()[fate];
    constexpr std::uint64_t kCopies = 100;
    std::uint64_t allocations = 0;
    {
      const AllocationCount count;
      for (std::uint64_t copy = 0; copy < kCopies; ++copy) {
        phone_.bluetooth.advertise(advertisement);
      }
      allocations = count.allocations();
    }
    EXPECT_EQ(engine_.diagnostics()[fate], met + kCopies);
    return allocations;
  }
  std::uint64_t allocationsOf(const Broadcast& broadcast, PacketFate fate) {
    const BroadcastBytes data = encodeBroadcast(broadcast);
    return allocationsOf(Advertisement{std::span<const std::uint8_t>(data)}, fate);
  }

  const ExactJsonReader json_;
  VirtualPhone phone_{json_};
  ShowEngine engine_{phone_.platform()};
};

TEST_F(Allocations, AreCounted) {
  const AllocationCount count;
  const auto one = std::make_unique<std::string>(100, 'x');
  EXPECT_EQ(one->size(), 100U);
  EXPECT_GE(count.allocations(), 2U);
}

TEST_F(Allocations, NoneForAdvertisementsOfOthers) {
  listen();
  const std::uint8_t other[] = {0x4C, 0x00, 0x02, 0x15};
  const std::uint8_t cut[] = {0x09, 0xC9, 0x01, 0x02};
  EXPECT_EQ(allocationsOf(Advertisement{}, PacketFate::noManufacturerData), 0U);
  EXPECT_EQ(allocationsOf(Advertisement{other}, PacketFate::otherMaker), 0U);
  EXPECT_EQ(allocationsOf(Advertisement{cut}, PacketFate::tooShort), 0U);
}

TEST_F(Allocations, NoneForPacketsThatAreNotObeyed) {
  listen();
  engine_.setAllowedTransmitterIds({"1:1", "2:2", "300:3"});
  EXPECT_EQ(allocationsOf(look(1, {{&B::sequence, 1}}), PacketFate::notAllowed), 0U);
  engine_.setAllowedTransmitterIds({});
  EXPECT_EQ(
      allocationsOf(look(1, {{&B::sequence, 1}, {&B::transmitter, 255}}), PacketFate::silenced),
      0U);
}

TEST_F(Allocations, NoneForStalePackets) {
  listen();
  phone_.bluetooth.advertise(encodeBroadcast(look(1, {{&B::sequence, 10}})));
  EXPECT_EQ(allocationsOf(look(3, {{&B::sequence, 10}}), PacketFate::staleSequence), 0U);
}

TEST_F(Allocations, NoneForNewSequencesOfTheSameLook) {
  listen();
  phone_.bluetooth.advertise(encodeBroadcast(look(1, {{&B::sequence, 1}})));
  const AllocationCount count;
  for (int sequence = 2; sequence <= 500; ++sequence) {
    phone_.bluetooth.advertise(encodeBroadcast(look(1, {{&B::sequence, sequence}})));
  }
  EXPECT_EQ(count.allocations(), 0U);
  EXPECT_EQ(engine_.diagnostics()[PacketFate::sameBroadcast], 499U);
}

TEST_F(Allocations, NoneForTheStepsOfAnyEffect) {
  for (int mode = 3; mode <= 20; ++mode) {
    for (const int palette : {0, 2}) {
      SCOPED_TRACE(mode);
      engine_.processEffect(look(mode, {{&B::speed, 255}, {&B::paletteId, palette}}));
      // The loop's and the engine's lists of timers grow to their working size first.
      phone_.loop.runFor(milliseconds(30000));
      const std::uint64_t turns = phone_.loop.turns();
      const AllocationCount count;
      phone_.loop.runFor(milliseconds(30000));
      EXPECT_EQ(count.allocations(), 0U);
      // Modes 7 to 12 are steady: then only the low-light poll runs, twice a second.
      const bool isSteady = mode >= 7 && mode <= 12;
      EXPECT_GT(phone_.loop.turns(), turns + (isSteady ? 0 : 60));
    }
  }
}

}  // namespace
}  // namespace halvora
