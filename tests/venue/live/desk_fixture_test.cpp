// SPDX-License-Identifier: Apache-2.0
// Faders as commands: only what changes counts, and what trembles does not.
#include "venue/live/desk_fixture.h"

#include <random>
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

// Whatever a universe holds: against the table of the channels, written down once more.
TEST(DeskFixture, OfAnyUniversesTheEdgesAloneAreCommands) {
  const std::vector<std::string> up{"go", "back", "hold", "blackout", "panic", "release", "", ""};
  const std::vector<std::string> down{"", "", "resume", "release", "", "", "", ""};
  std::mt19937 random(3);
  DeskFixture fixture({"a", "b", "c"});
  std::vector<bool> was(8);
  bool isFirst = true;
  int commands = 0;
  for (int frame = 0; frame < 50'000; ++frame) {
    if (random() % 500 == 0) {
      fixture.forget();
      isFirst = true;
    }
    Levels levels(random() % 10 == 0 ? random() % 600 : 8);
    for (std::uint8_t& level : levels) {
      level = static_cast<std::uint8_t>(random() % 2 == 0 ? 100 + random() % 40 : random());
    }
    std::vector<std::string> expected;
    for (std::size_t at = 0; at < was.size(); ++at) {
      const int level = at < levels.size() ? levels[at] : 0;
      const bool is = level >= (was[at] && !isFirst ? 112 : 128);
      const bool isEdge = is != was[at] && !isFirst;
      was[at] = is;
      if (!isEdge) continue;
      const int cue = levels.size() > 6 ? levels[6] : 0;
      std::string command = is ? up[at] : down[at];
      if (at == 7 && is) {
        command = "goto " + (cue >= 1 && cue <= 3 ? std::string(1, static_cast<char>('a' + cue - 1))
                                                  : "number " + std::to_string(cue));
      }
      if (!command.empty()) expected.push_back(command);
    }
    isFirst = false;
    ASSERT_EQ(fixture.take(levels), expected) << frame;
    commands += static_cast<int>(expected.size());
  }
  EXPECT_GT(commands, 10'000);
}

}  // namespace
}  // namespace halvora
