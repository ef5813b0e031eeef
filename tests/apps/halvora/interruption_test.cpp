// SPDX-License-Identifier: Apache-2.0
// A user who has had enough: commands end soon, say so, and leave nothing half done.
#include "apps/halvora/interruption.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_video.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;

struct Interruption : testing::Test {
  LutFolder room;
  std::atomic<bool> isInterrupted{false};
  VirtualVideoAssets videos;
  ToolSetup setup{.videos = &videos, .isInterrupted = &isInterrupted};

  /// A video in which the user interrupts while this frame is being read.
  VirtualVideo interruptedAt(std::size_t frame) {
    VirtualVideo video = VirtualVideo::ofPlaces(100, 4, 3);
    video.onFrame = [this, frame](std::size_t index) {
      if (index == frame) isInterrupted = true;
    };
    return video;
  }
  static void expectInterrupted(const ToolRun& run) {
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.error, "interrupted");
  }
};

TEST_F(Interruption, EndsABuildAtTheNextFrame) {
  videos.put(room.video, interruptedAt(9));
  expectInterrupted(
      room.build({"--seat", "1,1", "--threads", "1", "--documents", room.documents}, setup));
  EXPECT_EQ(videos.counts.framesRead, 10);
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST_F(Interruption, EndsABuildOnManyThreads) {
  videos.put(room.video, interruptedAt(9));
  expectInterrupted(
      room.build({"--seat", "1,1", "--threads", "4", "--documents", room.documents}, setup));
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST_F(Interruption, BeforeTheBuildBeginsReadsNothing) {
  videos.put(room.video, interruptedAt(9));
  isInterrupted = true;
  expectInterrupted(
      room.build({"--seat", "1,1", "--threads", "1", "--documents", room.documents}, setup));
  EXPECT_EQ(videos.counts.framesRead, 0);
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

// Saving shows its progress, so the terminal is where a test can hear of it.
TEST_F(Interruption, WhileTablesAreSavedTakesBackThoseThatWere) {
  videos.put(room.video, VirtualVideo::ofPlaces(1, 4, 3));
  Duration time{};
  Words saved;
  setup.terminal = {[&](std::string_view text) {
                      if (text.find("saving") == text.npos) return;
                      saved = room.contents();
                      isInterrupted = true;
                    },
                    [&time] { return time += milliseconds(100); }};
  expectInterrupted(room.build(
      {"--seat", "1,1", "--seat", "2,1", "--seat", "3,1", "--documents", room.documents}, setup));
  EXPECT_EQ(saved.size(), 1U + 3U + 2U) << "the video, three folders, the first seat's two files";
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST_F(Interruption, EndsASeedBuild) {
  VirtualVideo video = VirtualVideo::ofPlaces(100, 4, 3);
  video.frames[10].wordAt = [this](PixelPosition) {
    isInterrupted = true;
    return 0xFF000000U;
  };
  videos.put(room.video, video);
  expectInterrupted(room.build(
      {"--seat", "1,1", "--raw", room.at("table"), "--center", "0", "--radius", "100"}, setup));
  EXPECT_EQ(videos.counts.imagesMade, 11);
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

// A whole trace, whose phone builds the table of venue 7, map 1.
struct TraceInterruption : Interruption {
  std::string show =
      room.folder.write("show.jsonl",
                        "{\"at\":0,\"start\":true}\n"
                        "{\"at\":1,\"precompute\":{\"venueId\":7,\"seatX\":1,\"seatY\":1}}\n"
                        "{\"at\":2,\"playVideo\":\"none\"}\n");

  ToolRun trace(std::size_t frame) {
    const fs::path folder = room.folder.path() / "assets/HVAssets/Maps/Venue-7/1";
    fs::create_directories(folder);
    room.folder.write("assets/HVAssets/Maps/Venue-7/1/video.mp4", "");
    videos.put((folder / "video.mp4").string(), interruptedAt(frame));
    return runTool({"trace", show, "--assets", room.at("assets"), "--documents", room.documents},
                   setup);
  }
};

TEST_F(TraceInterruption, KeepsNoPartOfATable) {
  const ToolRun run = trace(30);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "interrupted");
  EXPECT_EQ(run.output.find("progress"), std::string::npos);
  if (fs::exists(room.documents)) {
    for (const auto& entry : fs::recursive_directory_iterator(room.documents)) {
      EXPECT_FALSE(entry.is_regular_file()) << entry.path();
    }
  }
}

TEST_F(TraceInterruption, IsNotWhatHappensOtherwise) {
  const ToolRun run = trace(1000);
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_NE(run.output.find("progress"), std::string::npos);
}

// The real signals, in a process of their own, which sends them to itself while it reads a frame.
class SignalsDeathTest : public testing::TestWithParam<int> {
 public:
  LutFolder room;

  /// Builds, with so many signals; ends the process, with 0 if all is as it should be.
  [[noreturn]] void buildAndExit(int signals) const {
    std::signal(GetParam(), SIG_DFL);
    const std::atomic<bool>& isInterrupted = interruptedBySignals();
    VirtualVideo video = VirtualVideo::ofPlaces(100, 4, 3);
    video.onFrame = [signals](std::size_t index) {
      if (index == 9) {
        for (int count = 0; count < signals; ++count) std::raise(GetParam());
      }
    };
    VirtualVideoAssets videos;
    videos.put(room.video, video);
    const ToolRun run =
        room.build({"--seat", "1,1", "--threads", "1", "--documents", room.documents},
                   {.videos = &videos, .isInterrupted = &isInterrupted});
    std::fprintf(stderr, "%d %s after %d frames\n", run.status, run.error.c_str(),
                 videos.counts.framesRead.load());
    std::_Exit(run.status);
  }
};

TEST_P(SignalsDeathTest, InterruptABuild) {
  EXPECT_EXIT(buildAndExit(1), testing::ExitedWithCode(1), "1 interrupted after 10 frames");
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST_P(SignalsDeathTest, EndTheProcessAtTheSecondTime) {
  EXPECT_EXIT(buildAndExit(2), testing::KilledBySignal(GetParam()), "");
}

INSTANTIATE_TEST_SUITE_P(OfTheUser, SignalsDeathTest, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST(IgnoredSignals, StayIgnored) {
  const auto previous = std::signal(SIGHUP, SIG_IGN);
  interruptedBySignals();
  EXPECT_EQ(std::signal(SIGHUP, previous), SIG_IGN);
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
}

}  // namespace
}  // namespace halvora
