// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/live_crowd.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include <gmock/gmock.h>

#include "adapters/virtual/virtual_run_loop.h"
#include "halvora/light.h"
#include "tests/venue/crowd/crowd_bench.h"
#include "venue/crowd/venue_tables.h"

namespace halvora {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

CrowdLight lightOf(int red, int green, int blue) {
  CrowdLight light;
  light.red = static_cast<std::uint8_t>(red);
  light.green = static_cast<std::uint8_t>(green);
  light.blue = static_cast<std::uint8_t>(blue);
  light.isShowing = true;
  return light;
}

struct LiveCrowdRoom : testing::Test {
  explicit LiveCrowdRoom(int phones = 4) : seats(CrowdBench::rowOf(phones)) {
    crowd.mayHaveChanged = [this] { ++announced; };
    pass(milliseconds(1500));
    static_cast<void>(changed());
    announced = 0;
  }

  void pass(Duration time) { ASSERT_TRUE(loop.runFor(time)); }
  std::vector<std::uint32_t> changed() {
    std::vector<std::uint32_t> found;
    crowd.look(found);
    return found;
  }
  void send(const Broadcast& look, double loss = 0) { crowd.hear(encodeBroadcast(look), loss); }

  VirtualRunLoop loop;
  CrowdBench bench;
  std::vector<CrowdSeat> seats;
  CrowdParts parts = bench.parts();
  LiveCrowd crowd{loop, parts, seats};
  int announced = 0;
};

TEST_F(LiveCrowdRoom, AllPhonesShowWhatTheyHear) {
  send(plainLook(1, 255, 0, 128));
  pass(milliseconds(1500));
  EXPECT_THAT(changed(), UnorderedElementsAre(0, 1, 2, 3));
  EXPECT_THAT(crowd.lights(), Each(lightOf(255, 0, 128)));
}

TEST_F(LiveCrowdRoom, ALightIsWhatTheScreenLetsThrough) {
  Broadcast look = plainLook(1, 255, 100, 20);
  look.master = 102;
  send(look);
  pass(milliseconds(500));
  const double fade = crowd.phone(0).views().shownAlpha(ViewId::container);
  EXPECT_GT(fade, 0.1);
  EXPECT_LT(fade, 0.9);
  const auto shown = [&](double level) {
    return static_cast<int>(std::lround(level * 0.4 * fade));
  };
  EXPECT_EQ(crowd.phone(0).light(), lightOf(shown(255), shown(100), shown(20)));
  pass(milliseconds(1000));
  EXPECT_EQ(crowd.phone(0).light(), lightOf(102, 40, 8));
}

TEST_F(LiveCrowdRoom, APhoneThatHasLeftShowsNothing) {
  Broadcast look = plainLook(1, 255);
  look.ledMode = 1;
  send(look);
  pass(milliseconds(1500));
  EXPECT_TRUE(crowd.phone(0).light().isTorchOn);
  crowd.phone(0).leave();
  EXPECT_EQ(crowd.phone(0).light(), CrowdLight{});
  EXPECT_NE(crowd.phone(1).light(), CrowdLight{});
}

TEST_F(LiveCrowdRoom, SaysOnceThatALightMayHaveChanged) {
  send(plainLook(1, 255));
  EXPECT_EQ(announced, 1);
  pass(milliseconds(1500));
  EXPECT_EQ(announced, 1);
  static_cast<void>(changed());
  static_cast<void>(changed());
  EXPECT_FALSE(crowd.isAnimating());
  send(plainLook(2, 100));
  EXPECT_EQ(announced, 2);
  EXPECT_THAT(changed(), UnorderedElementsAre(0, 1, 2, 3));
}

TEST_F(LiveCrowdRoom, ASteadyLookIsSilent) {
  send(plainLook(1, 255));
  pass(milliseconds(1500));
  static_cast<void>(changed());
  static_cast<void>(changed());
  announced = 0;
  for (int at = 0; at < 100; ++at) {
    send(plainLook(1, 255));
    pass(milliseconds(100));
  }
  EXPECT_EQ(announced, 0);
  EXPECT_THAT(changed(), IsEmpty());
  EXPECT_FALSE(crowd.isAnimating());
}

TEST_F(LiveCrowdRoom, AFadeIsLookedAtUntilItsEnd) {
  send(plainLook(1, 255));
  static_cast<void>(changed());
  EXPECT_TRUE(crowd.isAnimating());
  std::vector<int> reds;
  constexpr std::size_t kFarLongerThanTheFade = 100;
  while (crowd.isAnimating() && reds.size() < kFarLongerThanTheFade) {
    pass(milliseconds(100));
    static_cast<void>(changed());
    reds.push_back(crowd.lights()[0].red);
  }
  EXPECT_FALSE(crowd.isAnimating());
  EXPECT_TRUE(std::is_sorted(reds.begin(), reds.end()));
  EXPECT_GT(reds.size(), 5U);
  EXPECT_EQ(reds.back(), 255);
}

TEST_F(LiveCrowdRoom, ATorchCountsWithoutALight) {
  Broadcast look = plainLook(1, 255);
  send(look);
  pass(milliseconds(1500));
  static_cast<void>(changed());
  look.ledMode = 1;
  look.sequence = 2;
  send(look);
  EXPECT_THAT(changed(), UnorderedElementsAre(0, 1, 2, 3));
  EXPECT_TRUE(crowd.lights()[0].isTorchOn);
}

TEST_F(LiveCrowdRoom, KnowsThePacketThatAPhoneObeyed) {
  EXPECT_FALSE(crowd.obeyed(0));
  send(plainLook(1, 255));
  send(plainLook(1, 255));
  EXPECT_EQ(crowd.obeyed(0), encodeBroadcast(plainLook(1, 255)));
  // One that is too short, and one that is older.
  crowd.hear(std::vector<std::uint8_t>{0x09, 0xC9, 1}, 0);
  send(plainLook(0, 100));
  EXPECT_EQ(crowd.obeyed(0), encodeBroadcast(plainLook(1, 255)));
}

TEST_F(LiveCrowdRoom, AFaceAndTheCrowdSeeTheSameViews) {
  struct Face final : LightObserver {
    void lightChanged() override { ++changes; }
    void lightEnds() override {}
    int changes = 0;
  } face;
  send(plainLook(1, 255));
  pass(milliseconds(1500));
  static_cast<void>(changed());
  const Light light(crowd.phone(2).views());
  light.setObserver(&face);
  send(plainLook(2, 100));
  EXPECT_GT(face.changes, 0);
  EXPECT_THAT(changed(), UnorderedElementsAre(0, 1, 2, 3));
  // It is no reason for a frame after the other.
  EXPECT_FALSE(crowd.isAnimating());

  light.setObserver(nullptr);
  static_cast<void>(changed());
  announced = 0;
  crowd.phone(2).hear(encodeBroadcast(plainLook(3, 50)));
  EXPECT_EQ(announced, 1);
  EXPECT_THAT(changed(), ElementsAre(2));
}

TEST_F(LiveCrowdRoom, ApplicationsThatAreOpenedAgainForgetTheShow) {
  send(plainLook(9, 255));
  pass(milliseconds(1500));
  crowd.becomeActive();
  pass(milliseconds(1000));
  send(plainLook(2, 100));
  pass(milliseconds(2000));
  static_cast<void>(changed());
  EXPECT_THAT(crowd.lights(), Each(lightOf(100, 0, 0)));
}

TEST_F(LiveCrowdRoom, EachPhoneShowsItsOwnPixel) {
  VirtualVideoAssets videos;
  const std::string url = "maps/HVAssets/Maps/Venue-7/1/video.mp4";
  videos.put(url, VirtualVideo::ofPlaces(3, 4, 1));
  std::vector<SeatPosition> places;
  for (const CrowdSeat& seat : seats) places.push_back(seat.at);
  VenueTables tables(places);
  std::vector<std::uint32_t> room;
  ASSERT_EQ(tables.build({"1", url}, videos, {.workers = bench.workers},
                         [&room](std::size_t words) {
                           room.resize(words);
                           return std::span(room);
                         }),
            VenueTables::End::built);
  bench.main.folder = "maps";
  bench.main.files = &bench.files;
  bench.files.put(url, "a video");
  const CrowdParts withTables = bench.parts(&tables);
  LiveCrowd seated(loop, withTables, seats);
  pass(milliseconds(1500));
  Broadcast look = plainLook(1, 0);
  look.pixelMapId = 1;
  look.minutes = 2;
  seated.hear(encodeBroadcast(look), 0);
  pass(milliseconds(1500));
  std::vector<std::uint32_t> seen;
  seated.look(seen);
  EXPECT_THAT(seated.lights(),
              ElementsAre(lightOf(2, 0, 0), lightOf(2, 1, 0), lightOf(2, 2, 0), lightOf(2, 3, 0)));
}

struct LargerCrowd : LiveCrowdRoom {
  LargerCrowd() : LiveCrowdRoom(200) {}
};

TEST_F(LargerCrowd, EachPhoneMissesPacketsOfItsOwn) {
  send(plainLook(1, 255), 1);
  EXPECT_THAT(changed(), IsEmpty());
  send(plainLook(2, 255), 0.5);
  std::vector<bool> first;
  for (std::size_t at = 0; at < crowd.size(); ++at) first.push_back(crowd.obeyed(at).has_value());
  const auto heard = std::count(first.begin(), first.end(), true);
  EXPECT_GT(heard, 60);
  EXPECT_LT(heard, 140);
  send(plainLook(3, 100), 0.5);
  std::vector<bool> second;
  for (std::size_t at = 0; at < crowd.size(); ++at) {
    second.push_back(crowd.obeyed(at) == encodeBroadcast(plainLook(3, 100)));
  }
  EXPECT_NE(first, second);
}

TEST(LiveCrowd, GoesDuringAShow) {
  VirtualRunLoop loop;
  CrowdBench bench;
  const std::vector<CrowdSeat> seats = CrowdBench::rowOf(3);
  const CrowdParts parts = bench.parts();
  int announced = 0;
  std::optional<LiveCrowd> crowd;
  crowd.emplace(loop, parts, seats);
  ASSERT_TRUE(loop.runFor(milliseconds(1500)));
  Broadcast look = plainLook(1, 255);
  look.mode = 5;
  look.ledMode = 5;
  crowd->hear(encodeBroadcast(look), 0);
  ASSERT_TRUE(loop.runFor(milliseconds(700)));
  std::vector<std::uint32_t> changed;
  crowd->look(changed);
  EXPECT_FALSE(changed.empty());
  crowd->mayHaveChanged = [&announced] { ++announced; };
  crowd.reset();
  EXPECT_EQ(announced, 0);
  ASSERT_TRUE(loop.runFor(milliseconds(5000)));
  EXPECT_EQ(announced, 0);
}

}  // namespace
}  // namespace halvora
