// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/seat_lut_builder.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_video.h"
#include "tests/pixelmap/sample_video.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The seat at column 2, row 1 of a video's pictures.
constexpr SeatPosition kSeat{2, 1};

constexpr std::uint32_t wordOf(std::uint32_t mark, SeatPosition seat = kSeat) {
  return 0xFF000000U | mark << 16 | static_cast<std::uint32_t>(seat.x) << 8 |
         static_cast<std::uint32_t>(seat.y);
}
Words wordsOfMarks(std::initializer_list<std::uint32_t> marks) {
  Words words;
  for (const std::uint32_t mark : marks) words.push_back(wordOf(mark));
  return words;
}

class SeatLutBuild : public testing::Test {
 protected:
  SeatLut build(const std::string& path, const BuildControl& control, SeatPosition seat = kSeat) {
    return buildPixelMapSeatLUTForVideoURL(videos_, path, seat, control);
  }
  SeatLut build(const std::string& path, SeatPosition seat = kSeat) {
    return build(path, {.workers = workers_}, seat);
  }
  SeatLut build(VirtualVideo video, SeatPosition seat = kSeat) {
    videos_.put("/video", std::move(video));
    return build("/video", seat);
  }
  /// A video with these samples, each 16 columns wide and 9 rows high; the marks count from 1.
  Words tableOf(double duration, std::initializer_list<double> times) {
    std::vector<VideoSample> samples;
    for (const double seconds : times) {
      samples.push_back({seconds, static_cast<std::uint8_t>(samples.size() + 1)});
    }
    return buildTable(SampleVideo(duration, std::move(samples)), kSeat, {.workers = workers_});
  }

  VirtualVideoAssets videos_;
  InlineWorkers workers_;
};

TEST_F(SeatLutBuild, TableHasTheSeatsPixelOfEachFrame) {
  const SeatLut lut = build(VirtualVideo::ofPlaces(5, 4, 3));
  EXPECT_EQ(wordsOf(lut), wordsOfMarks({0, 1, 2, 3, 4}));
}

TEST_F(SeatLutBuild, WordsAreTakenAsTheyAre) {
  const Words words{0xFF102030, 0x80FF0000, 0, 0x00FFFFFF, 0xFFFFFFFF};
  EXPECT_EQ(wordsOf(build(VirtualVideo::ofWords(words))), words)
      << "not premultiplied, and a pixel of no colour is no gap";
}

TEST_F(SeatLutBuild, VideoIsReadOnceFromItsBeginning) {
  std::vector<std::size_t> read;
  VirtualVideo video = VirtualVideo::ofPlaces(100, 4, 3);
  video.onFrame = [&read](std::size_t frame) { read.push_back(frame); };
  build(video);
  ASSERT_EQ(read.size(), 100U);
  EXPECT_TRUE(std::is_sorted(read.begin(), read.end()));
  EXPECT_EQ(videos_.counts.opens, 1);
  EXPECT_EQ(videos_.counts.readers, 1);
  EXPECT_EQ(videos_.counts.imagesMade, 0) << "no exact frame is looked for";
}

TEST_F(SeatLutBuild, NothingIsBuiltFromNothing) {
  EXPECT_EQ(build(""), nullptr);
  EXPECT_EQ(videos_.counts.opens, 0);
  EXPECT_EQ(build("/missing"), nullptr);
  VirtualVideo sound = VirtualVideo::ofPlaces(5, 4, 3);
  sound.hasTrack = false;
  EXPECT_EQ(build(sound), nullptr);
  VirtualVideo broken = VirtualVideo::ofPlaces(5, 4, 3);
  broken.canBeginReading = false;
  EXPECT_EQ(build(broken), nullptr);
  VirtualVideo empty = VirtualVideo::ofPlaces(5, 4, 3);
  empty.frames.clear();
  EXPECT_EQ(build(empty), nullptr);
}

TEST_F(SeatLutBuild, FramesBeforeTheFirstSampleTakeItsColour) {
  EXPECT_EQ(tableOf(5 / 30.0, {3 / 30.0, 4 / 30.0}), wordsOfMarks({1, 1, 1, 1, 2}));
}

TEST_F(SeatLutBuild, GapsTakeTheColourBeforeThem) {
  EXPECT_EQ(tableOf(7 / 30.0, {0, 1 / 30.0, 4 / 30.0}), wordsOfMarks({1, 2, 2, 2, 3, 3, 3}));
}

TEST_F(SeatLutBuild, LaterSampleOfAFrameOverwritesTheEarlier) {
  EXPECT_EQ(tableOf(3 / 30.0, {0, 1 / 30.0, 1.2 / 30, 1.4 / 30, 2 / 30.0}),
            wordsOfMarks({1, 4, 5}));
}

TEST_F(SeatLutBuild, SamplesOutOfOrderGoWhereTheyBelong) {
  EXPECT_EQ(tableOf(4 / 30.0, {0, 3 / 30.0, 1 / 30.0, 2 / 30.0}), wordsOfMarks({1, 3, 4, 2}));
  EXPECT_EQ(tableOf(5 / 30.0, {0, 2 / 30.0, 1 / 30.0, 3 / 30.0, 4 / 30.0}),
            wordsOfMarks({1, 3, 2, 4, 5}));
  EXPECT_EQ(tableOf(4 / 30.0, {2 / 30.0, 0, 2 / 30.0, 1 / 30.0, 0}), wordsOfMarks({5, 4, 3, 3}));
}

TEST_F(SeatLutBuild, SixtySamplesASecondLeaveEachFrameItsLast) {
  // Sample k belongs to frame k / 2, halves upwards: frame f has the samples 2f - 1 and 2f.
  const Words table = buildTable(steadyVideo(1, 60), kSeat, {.workers = workers_});
  ASSERT_EQ(table.size(), 30U);
  for (std::uint32_t frame = 0; frame < 30; ++frame) EXPECT_EQ(table[frame], wordOf(frame * 2));
}

TEST_F(SeatLutBuild, TwentyFiveSamplesASecondFillTheFramesBetween) {
  // Samples 0 to 4 belong to the frames 0, 1, 2, 4 (3.6) and 5 (4.8).
  const Words table = buildTable(steadyVideo(0.2, 25), kSeat, {.workers = workers_});
  EXPECT_EQ(table, wordsOfMarks({0, 1, 2, 2, 3, 4}));
}

TEST_F(SeatLutBuild, TimesThatAreNoneAreLeftOut) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(tableOf(3 / 30.0,
                    {std::nan(""), 0, kInfinity, 1 / 30.0, -kInfinity, -1, -1e-9, 2 / 30.0, 1e300}),
            wordsOfMarks({2, 4, 8}));
  EXPECT_EQ(tableOf(3 / 30.0, {std::nan(""), kInfinity, -kInfinity, -1, 1e300}), Words());
}

TEST_F(SeatLutBuild, SamplesBeyondTheVideosLengthAreLeftOut) {
  EXPECT_EQ(tableOf(2 / 30.0, {0, 1 / 30.0, 1.6 / 30, 2 / 30.0, 100}), wordsOfMarks({1, 2}));
  EXPECT_EQ(tableOf(2 / 30.0, {2 / 30.0, 3 / 30.0}), Words());
}

TEST_F(SeatLutBuild, VideoThatSaysNoLengthHasOneFrame) {
  for (const double duration : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(tableOf(duration, {0, 0.4 / 30, 1 / 30.0}), wordsOfMarks({2})) << duration;
  }
}

TEST_F(SeatLutBuild, ReadingThatEndsEarlyLeavesTheLastColour) {
  VirtualVideo damaged = VirtualVideo::ofPlaces(6, 4, 3);
  damaged.readableFrames = 3;
  EXPECT_EQ(wordsOf(build(damaged)), wordsOfMarks({0, 1, 2, 2, 2, 2}));
}

TEST_F(SeatLutBuild, SeatBeyondThePictureTakesTheEdge) {
  const VirtualVideo video = VirtualVideo::ofPlaces(1, 4, 3);
  EXPECT_EQ(wordsOf(build(video, {4, 1})), Words{wordOf(0, {3, 1})}) << "the last column";
  EXPECT_EQ(wordsOf(build(video, {1, 3})), Words{wordOf(0, {1, 2})}) << "the last row";
  EXPECT_EQ(wordsOf(build(video, {INT64_MAX, INT64_MAX})), Words{wordOf(0, {3, 2})});
  EXPECT_EQ(wordsOf(build(video, {-1, INT64_MIN})), Words{wordOf(0, {0, 0})});
}

TEST_F(SeatLutBuild, PicturesWithoutPixelsAreLeftOut) {
  const SampleVideo video(5 / 30.0, {{0 / 30.0, 1, 0, 9},
                                     {1 / 30.0, 2, 16, 9},
                                     {2 / 30.0, 3, 16, 0},
                                     {3 / 30.0, 4, 0, 0},
                                     {4 / 30.0, 5, 16, 9}});
  EXPECT_EQ(buildTable(video, kSeat, {.workers = workers_}), wordsOfMarks({2, 2, 2, 2, 5}));
  const SampleVideo empty(2 / 30.0, {{0, 1, 0, 9}, {1 / 30.0, 2, 16, 0}});
  EXPECT_EQ(buildTables(empty, {&kSeat, 1}, {.workers = workers_}).end, BuildEnd::noFrames);
}

TEST_F(SeatLutBuild, EachPicturesOwnSizeCounts) {
  const SampleVideo video(
      4 / 30.0,
      {{0 / 30.0, 1, 16, 9}, {1 / 30.0, 2, 2, 9}, {2 / 30.0, 3, 16, 1}, {3 / 30.0, 4, 16, 9}});
  EXPECT_EQ(buildTable(video, kSeat, {.workers = workers_}),
            (Words{wordOf(1), wordOf(2, {1, 1}), wordOf(3, {2, 0}), wordOf(4)}));
}

TEST_F(SeatLutBuild, ManySeatsAtOnceEqualEachAlone) {
  const auto seats = manySeats(40);
  const SampleVideo video = steadyVideo(5, 30);
  const BuiltTables built = buildTables(video, seats, {.workers = workers_});
  ASSERT_EQ(built.end, BuildEnd::built);
  ASSERT_EQ(built.tables.size(), seats.size());
  for (std::size_t at = 0; at < seats.size(); ++at) {
    EXPECT_EQ(built.tables[at], buildTable(video, seats[at], {.workers = workers_})) << at;
  }
}

TEST_F(SeatLutBuild, VideosOfEveryLengthAreWholeToTheLastFrame) {
  const auto seats = manySeats(17);
  for (const int frames : {1, 2, 63, 64, 65, 127, 128, 129, 200}) {
    const SampleVideo video = steadyVideo(frames / 30.0, 30);
    const BuiltTables built = buildTables(video, seats, {.workers = workers_});
    ASSERT_EQ(built.tables.size(), seats.size());
    for (std::size_t at = 0; at < seats.size(); ++at) {
      ASSERT_EQ(built.tables[at], expectedTable(video, seats[at])) << frames << " " << at;
    }
  }
}

TEST_F(SeatLutBuild, OddVideosGiveWhatTheRuleSays) {
  const auto seats = manySeats(18);
  for (std::uint64_t seed = 1; seed <= 60; ++seed) {
    const SampleVideo video = oddVideo(seed);
    const BuiltTables built = buildTables(video, seats, {.workers = workers_});
    for (std::size_t at = 0; at < seats.size(); ++at) {
      const Words expected = expectedTable(video, seats[at]);
      ASSERT_EQ(built.tables.empty() ? Words() : built.tables[at], expected) << seed << " " << at;
    }
  }
}

TEST_F(SeatLutBuild, ProgressCountsTheFrames) {
  std::vector<int> progress;
  videos_.put("/video", VirtualVideo::ofPlaces(4, 4, 3));
  build("/video", {.workers = workers_, .onFrame = [&](int done) { progress.push_back(done); }});
  EXPECT_THAT(progress, ElementsAre(1, 2, 3, 4));
}

TEST_F(SeatLutBuild, CancelledBuildReadsNoFurtherFrameAndGivesNothing) {
  videos_.put("/video", VirtualVideo::ofPlaces(100, 4, 3));
  int asked = 0;
  const auto cancelAt = [&](int most) {
    asked = 0;
    return BuildControl{.workers = workers_,
                        .isCancelled = [&asked, most] { return ++asked > most; }};
  };
  EXPECT_EQ(build("/video", cancelAt(0)), nullptr);
  EXPECT_EQ(videos_.counts.framesRead, 0);
  EXPECT_EQ(build("/video", cancelAt(3)), nullptr);
  EXPECT_EQ(videos_.counts.framesRead, 3);
  const SampleVideo video = steadyVideo(1, 30);
  EXPECT_EQ(buildTables(video, {&kSeat, 1}, cancelAt(5)).end, BuildEnd::cancelled);
  EXPECT_NE(build("/video", cancelAt(1000)), nullptr);
}

class SeatLutSeed : public testing::Test {
 protected:
  SeatLut seed(VirtualVideo video, std::int64_t center, std::int64_t radius,
               SeatPosition seat = kSeat) {
    videos_.counts.imagesMade = 0;
    videos_.put("/video", std::move(video));
    return buildSeedPixelMapSeatLUTForVideoURL(videos_, "/video", seat, center, radius);
  }
  /// The frames that have a colour in a video of so many, each of which must have its own.
  std::vector<std::size_t> framesOf(std::size_t frames, std::int64_t center, std::int64_t radius) {
    const Words words = wordsOf(seed(VirtualVideo::ofPlaces(frames, 4, 3), center, radius));
    EXPECT_EQ(words.size(), frames);
    std::vector<std::size_t> filled;
    for (std::size_t frame = 0; frame < words.size(); ++frame) {
      if (words[frame] == 0) continue;
      EXPECT_EQ(words[frame], wordOf(static_cast<std::uint32_t>(frame)));
      filled.push_back(frame);
    }
    EXPECT_EQ(static_cast<std::size_t>(videos_.counts.imagesMade), filled.size())
        << "each once, and no others";
    return filled;
  }

  VirtualVideoAssets videos_;
};

TEST_F(SeatLutSeed, HasTheFramesAroundTheCentre) {
  EXPECT_THAT(framesOf(10, 5, 2), ElementsAre(3, 4, 5, 6, 7));
  EXPECT_EQ(videos_.counts.framesRead, 0) << "exact frames, not read through";
}

TEST_F(SeatLutSeed, RadiusIsAtLeastOne) {
  EXPECT_THAT(framesOf(10, 5, 0), ElementsAre(4, 5, 6));
  EXPECT_THAT(framesOf(10, 5, -7), ElementsAre(4, 5, 6));
  EXPECT_THAT(framesOf(10, 5, 1), ElementsAre(4, 5, 6));
}

TEST_F(SeatLutSeed, GoesRoundTheEnds) {
  EXPECT_THAT(framesOf(10, 0, 2), ElementsAre(0, 1, 2, 8, 9));
  EXPECT_THAT(framesOf(10, 9, 2), ElementsAre(0, 1, 7, 8, 9));
}

TEST_F(SeatLutSeed, CentreCountsModuloTheFrames) {
  EXPECT_THAT(framesOf(10, -1, 1), ElementsAre(0, 8, 9));
  EXPECT_THAT(framesOf(10, 25, 1), ElementsAre(4, 5, 6));
}

TEST_F(SeatLutSeed, VisitsEachFrameOnceHoweverFarItReaches) {
  EXPECT_THAT(framesOf(2, 0, 5), ElementsAre(0, 1));
  EXPECT_THAT(framesOf(1, 0, 5), ElementsAre(0));
  EXPECT_THAT(framesOf(5, 2, 5), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(framesOf(5, 2, INT64_MAX), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(framesOf(4, 1, 2), ElementsAre(0, 1, 2, 3)) << "both ways end at frame 3";
}

TEST_F(SeatLutSeed, SeatOutsideThePictureHasNoColour) {
  const VirtualVideo video = VirtualVideo::ofPlaces(5, 4, 3);
  EXPECT_NE(seed(video, 2, 1, {3, 2}), nullptr);
  EXPECT_EQ(seed(video, 2, 1, {4, 2}), nullptr) << "not the last column";
  EXPECT_EQ(seed(video, 2, 1, {3, 3}), nullptr);
  EXPECT_EQ(seed(video, 2, 1, {-1, 0}), nullptr);
}

TEST_F(SeatLutSeed, FramesThatCannotBeHadStayEmpty) {
  VirtualVideo late = VirtualVideo::ofPlaces(5, 4, 3);
  late.frames.erase(late.frames.begin(), late.frames.begin() + 2);
  EXPECT_EQ(wordsOf(seed(late, 2, 2)), (Words{0, 0, wordOf(2), wordOf(3), wordOf(4)}));
  late.frames.erase(late.frames.begin());
  EXPECT_EQ(seed(late, 1, 1), nullptr);
}

TEST_F(SeatLutSeed, ColoursArePremultiplied) {
  const SeatLut lut = seed(VirtualVideo::ofWords({0x80FF0000, 0xFF102030, 0x00FFFFFF}), 1, 1);
  EXPECT_EQ(wordsOf(lut), (Words{0x80800000, 0xFF102030, 0}));
}

TEST_F(SeatLutSeed, NothingIsBuiltFromNothing) {
  EXPECT_EQ(buildSeedPixelMapSeatLUTForVideoURL(videos_, "", kSeat, 0, 1), nullptr);
  EXPECT_EQ(buildSeedPixelMapSeatLUTForVideoURL(videos_, "/missing", kSeat, 0, 1), nullptr);
  VirtualVideo sound = VirtualVideo::ofPlaces(5, 4, 3);
  sound.hasTrack = false;
  EXPECT_EQ(seed(sound, 0, 1), nullptr);
  VirtualVideo empty = VirtualVideo::ofPlaces(5, 4, 3);
  empty.frames.clear();
  EXPECT_EQ(seed(empty, 0, 1), nullptr);
}

}  // namespace
}  // namespace halvora
