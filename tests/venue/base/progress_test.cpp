// SPDX-License-Identifier: Apache-2.0
// How far a long command is: what it says to a terminal, how often, and what is left of it.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_video.h"
#include "tests/venue/plan/lut_folder.h"
#include "venue/base/progress_bar.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kWipe = "\r\033[K";

// A terminal in virtual time.
struct Watched {
  Duration time = milliseconds(5000);
  Words writes;
  Terminal terminal{[this](std::string_view text) { writes.emplace_back(text); },
                    [this] { return time; }};
};

TEST(ProgressBar, SaysHowFarHowFastAndHowLong) {
  Watched watched;
  {
    ProgressBar bar(watched.terminal, "reading", "frames", 5400);
    watched.time += milliseconds(2000);
    bar.show(1350);
    EXPECT_THAT(watched.writes,
                ElementsAre(kWipe + "reading [####            ] 1350 of 5400 frames, "
                                    "675 a second, 0:06 left"));
  }
  EXPECT_EQ(watched.writes.back(), kWipe);
}

TEST(ProgressBar, TimeLeftIsInMinutesAndSeconds) {
  Watched watched;
  ProgressBar bar(watched.terminal, "reading", "frames", 65025);
  watched.time += milliseconds(1000);
  bar.show(100);
  EXPECT_THAT(watched.writes.back(), HasSubstr(", 10:50 left"));
  watched.time += milliseconds(999'000);
  bar.show(61'221);
  EXPECT_THAT(watched.writes.back(), HasSubstr(", 1:03 left")) << "62.1 seconds";
  watched.time += milliseconds(1000);
  bar.show(65025);
  EXPECT_THAT(watched.writes.back(), HasSubstr("[################] 65025 of 65025"));
  EXPECT_THAT(watched.writes.back(), HasSubstr(", 0:00 left"));
}

TEST(ProgressBar, InALogIsALineEveryTenSeconds) {
  Watched watched;
  watched.terminal.isLog = true;
  {
    ProgressBar bar(watched.terminal, "simulating", "seconds", 240);
    for (std::uint64_t second = 1; second <= 21; ++second) {
      watched.time += milliseconds(1000);
      bar.show(second);
    }
  }
  EXPECT_THAT(
      watched.writes,
      ElementsAre("simulating [                ] 10 of 240 seconds, 1 a second, 3:50 left\n",
                  "simulating [#               ] 20 of 240 seconds, 1 a second, 3:40 left\n"));
}

TEST(ProgressBar, FitsIntoEightyColumns) {
  Watched watched;
  ProgressBar bar(watched.terminal, "reading", "frames", 65025);
  watched.time += milliseconds(100);
  bar.show(65024);
  EXPECT_LT(watched.writes.back().size(), 80U + kWipe.size());
}

TEST(ProgressBar, SpeaksAtMostTenTimesASecond) {
  Watched watched;
  ProgressBar bar(watched.terminal, "reading", "frames", 3000);
  for (std::uint64_t frame = 1; frame <= 3000; ++frame) {
    watched.time += milliseconds(1);
    bar.show(frame);
  }
  EXPECT_EQ(watched.writes.size(), 30U);
}

TEST(ProgressBar, SaysNothingOfWhatIsOverSooner) {
  Watched watched;
  {
    ProgressBar bar(watched.terminal, "reading", "frames", 10);
    watched.time += milliseconds(99);
    bar.show(10);
  }
  EXPECT_THAT(watched.writes, IsEmpty());
}

TEST(ProgressBar, NeverGoesBack) {
  Watched watched;
  ProgressBar bar(watched.terminal, "reading", "frames", 10);
  watched.time += milliseconds(1000);
  bar.show(6);
  watched.time += milliseconds(1000);
  bar.show(5);
  EXPECT_EQ(watched.writes.size(), 1U);
}

// A video of 60 frames a second has twice the frames that its tables have.
TEST(ProgressBar, SpeaksOfNoEndThatItDoesNotKnow) {
  Watched watched;
  ProgressBar bar(watched.terminal, "reading", "frames", 10);
  watched.time += milliseconds(1000);
  bar.show(15);
  EXPECT_EQ(watched.writes.back(), kWipe + "reading 15 frames, 15 a second");
}

TEST(ProgressBar, NeedsNoTerminal) {
  const Terminal nobody;
  ProgressBar bar(nobody, "reading", "frames", 10);
  bar.show(5);
}

// As a command shows it: every frame takes 50 ms.
struct BuildProgress : testing::Test {
  LutFolder room;
  Watched watched;
  VirtualVideoAssets videos;

  ToolRun build(Words options) {
    VirtualVideo video = VirtualVideo::ofPlaces(6, 4, 3);
    video.onFrame = [this](std::size_t) { watched.time += milliseconds(50); };
    videos.put(room.video, video);
    options.insert(options.end(), {"--seat", "1,1", "--threads", "1"});
    return room.build(options, {.videos = &videos, .terminal = watched.terminal});
  }
};

TEST_F(BuildProgress, SpeaksOfFramesAndIsWiped) {
  const ToolRun run = build({"--documents", room.documents});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.error, "");
  EXPECT_THAT(watched.writes,
              ElementsAre(HasSubstr("reading [#####           ] 2 of 6 frames, 20 a second"),
                          HasSubstr("4 of 6 frames, 20 a second, 0:01 left"),
                          HasSubstr("6 of 6 frames, 20 a second, 0:00 left"), kWipe));
}

TEST_F(BuildProgress, IsThereForRawTablesToo) {
  EXPECT_EQ(build({"--raw", room.at("table")}).status, 0);
  EXPECT_EQ(watched.writes.size(), 4U);
}

TEST_F(BuildProgress, IsWipedWhereTheBuildFails) {
  std::atomic<bool> isInterrupted{false};
  VirtualVideo video = VirtualVideo::ofPlaces(10, 4, 3);
  video.onFrame = [&](std::size_t index) {
    watched.time += milliseconds(50);
    isInterrupted = index == 4;
  };
  videos.put(room.video, video);
  const ToolRun run = room.build(
      {"--seat", "1,1", "--threads", "1", "--documents", room.documents},
      {.videos = &videos, .isInterrupted = &isInterrupted, .terminal = watched.terminal});
  EXPECT_EQ(run.error, "interrupted");
  ASSERT_FALSE(watched.writes.empty());
  EXPECT_EQ(watched.writes.back(), kWipe);
}

TEST_F(BuildProgress, IsNotShownToWhoDoesNotWantIt) {
  EXPECT_EQ(build({"--documents", room.documents, "--no-progress"}).status, 0);
  EXPECT_THAT(watched.writes, IsEmpty());
}

// The clock goes on by itself here, 30 ms each time somebody looks at it.
TEST_F(BuildProgress, SpeaksOfSavingManyTables) {
  Terminal terminal = watched.terminal;
  terminal.now = [this] { return watched.time += milliseconds(30); };
  videos.put(room.video, VirtualVideo::ofPlaces(1, 40, 30));
  Words options{"--documents", room.documents};
  for (int seat = 0; seat < 9; ++seat) {
    options.insert(options.end(), {"--seat", std::to_string(seat) + ",0"});
  }
  EXPECT_EQ(room.build(options, {.videos = &videos, .terminal = terminal}).status, 0);
  EXPECT_THAT(watched.writes, ElementsAre(HasSubstr("saving [#######         ] 4 of 9 tables"),
                                          HasSubstr("8 of 9 tables"), kWipe));
}

}  // namespace
}  // namespace halvora
