// SPDX-License-Identifier: Apache-2.0
// Faders as commands: only what changes counts, and what trembles does not.
#include "venue/live/desk_fixture.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Levels = std::vector<std::uint8_t>;

TEST(DeskFixture, AFaderThatGoesUpIsACommandOnce) {
  DeskFixture fixture({"Doors", "Song"});
  EXPECT_THAT(fixture.take(Levels{0}), IsEmpty());
  EXPECT_THAT(fixture.take(Levels{255}), ElementsAre("go"));
  EXPECT_THAT(fixture.take(Levels{255}), IsEmpty());
  EXPECT_THAT(fixture.take(Levels{0}), IsEmpty());
  EXPECT_THAT(fixture.take(Levels{128, 128}), ElementsAre("go", "back"));
}

TEST(DeskFixture, HoldAndBlackoutLastAsLongAsTheirFaders) {
  DeskFixture fixture({});
  fixture.take(Levels{});
  EXPECT_THAT(fixture.take(Levels{0, 0, 255, 255}), ElementsAre("hold", "blackout"));
  EXPECT_THAT(fixture.take(Levels{0, 0, 0, 0}), ElementsAre("resume", "release"));
  EXPECT_THAT(fixture.take(Levels{0, 0, 0, 0, 255}), ElementsAre("panic"));
  EXPECT_THAT(fixture.take(Levels{0, 0, 0, 0, 0, 255}), ElementsAre("release"));
}

TEST(DeskFixture, ACueIsTakenByItsNumber) {
  DeskFixture fixture({"Doors", "Last song"});
  fixture.take(Levels{});
  EXPECT_THAT(fixture.take(Levels{0, 0, 0, 0, 0, 0, 2, 0}), IsEmpty());
  EXPECT_THAT(fixture.take(Levels{0, 0, 0, 0, 0, 0, 2, 255}), ElementsAre("goto Last song"));
  fixture.take(Levels{});
  EXPECT_THAT(fixture.take(Levels{0, 0, 0, 0, 0, 0, 3, 255}), ElementsAre("goto number 3"));
}

TEST(DeskFixture, WhatTremblesBetweenTheLevelsDoesNothing) {
  DeskFixture fixture({});
  fixture.take(Levels{});
  EXPECT_THAT(fixture.take(Levels{127}), IsEmpty());
  EXPECT_THAT(fixture.take(Levels{128}), ElementsAre("go"));
  EXPECT_THAT(fixture.take(Levels{113}), IsEmpty());
  EXPECT_THAT(fixture.take(Levels{128}), IsEmpty());
  EXPECT_THAT(fixture.take(Levels{111}), IsEmpty());
  EXPECT_THAT(fixture.take(Levels{128}), ElementsAre("go"));
}

TEST(DeskFixture, ADeskThatIsConnectedAsksForNothing) {
  DeskFixture fixture({});
  EXPECT_THAT(fixture.take(Levels{255, 0, 0, 255}), IsEmpty());
  EXPECT_THAT(fixture.take(Levels{255, 0, 0, 0}), ElementsAre("release"));
  fixture.forget();
  EXPECT_THAT(fixture.take(Levels{255, 255}), IsEmpty());
}

}  // namespace
}  // namespace halvora
