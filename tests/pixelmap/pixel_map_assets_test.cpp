// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/pixel_map_assets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_storage.h"
#include "adapters/virtual/virtual_video.h"
#include "tests/support/files_with_faults.h"
#include "tests/support/pixmap_decoder.h"

namespace halvora {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::optional<std::string>>;

const std::string kVenue = "/HVAssets/Maps/Venue-7";

/// Two bundles with folders of their own; the maps of venue 7 are put into them.
class PixelMapAssetsTest : public testing::Test {
 protected:
  PixelMapAssetsTest() {
    main_.folder = "/main";
    kit_.folder = "/kit";
    main_.files = &files_;
    kit_.files = &files_;
    assets_.debugTextListener = [this](const auto& text) { texts_.push_back(text); };
  }

  /// A file below the folder of venue 7; returns its path.
  std::string put(const std::string& bundle, const std::string& name) {
    files_.files.put(bundle + kVenue + name, "bytes");
    return bundle + kVenue + name;
  }
  std::string putVideo(const std::string& bundle, const std::string& folder, VirtualVideo video) {
    const std::string path = put(bundle, folder + "/video.mp4");
    videos_.put(path, std::move(video));
    return path;
  }
  std::string urlOf(std::int64_t map) const { return assets_.pixelMapVideoURLForVenueId(7, map); }
  /// The maps of venue 7: name and path of each.
  std::vector<std::string> entries() const {
    std::vector<std::string> texts;
    for (const auto& entry : assets_.pixelMapVideoEntriesForVenueId(7)) {
      texts.push_back(entry.mapId + " " + entry.videoPath);
    }
    return texts;
  }
  auto frame(std::int64_t index, std::int64_t map = 5) {
    return assets_.copyPixelMapFrameImageForVenueId(7, map, index);
  }
  MaybeColour frameColour(std::int64_t index, std::int64_t x = 0, std::int64_t y = 0) {
    return assets_.colorFromPixelMapVideoFrameForVenueId(7, 5, index, x, y);
  }
  void putStill(VirtualBundle& bundle, int number, const std::string& bytes) {
    bundle.resources["HVAssets/Maps/Venue-7/5/f" + std::to_string(number) + ".jpg"] = bytes;
  }
  MaybeColour still(std::int64_t index, std::int64_t x = 0, std::int64_t y = 0) const {
    return assets_.colorFromPixelMapJPGFallbackForVenueId(7, 5, index, x, y);
  }

  FilesWithFaults files_;
  VirtualVideoAssets videos_;
  VirtualBundle main_{"com.example.host"};
  VirtualBundle kit_{"com.halvora.sdk"};
  Bundles bundles_{main_, kit_};
  PixmapDecoder decoder_;
  PixelMapAssets assets_{bundles_, videos_, decoder_};
  Texts texts_;
};

using PixelMapVideo = PixelMapAssetsTest;
using PixelMapEntries = PixelMapAssetsTest;
using PixelMapFrame = PixelMapAssetsTest;
using PixelMapStill = PixelMapAssetsTest;

TEST_F(PixelMapVideo, LiesInTheFolderOfItsMap) {
  const std::string path = put("/main", "/5/video.mp4");
  EXPECT_EQ(urlOf(5), path);
  EXPECT_EQ(urlOf(6), "");
  EXPECT_EQ(assets_.pixelMapVideoURLForVenueId(8, 5), "");
}

TEST_F(PixelMapVideo, NameCountsInEitherCase) {
  const std::string path = put("/main", "/5/VIDEO.MP4");
  EXPECT_EQ(urlOf(5), path);
  const std::string other = put("/main", "/6/Video.mP4");
  EXPECT_EQ(urlOf(6), other);
}

TEST_F(PixelMapVideo, FirstOfTheListingWins) {
  const std::string first = put("/main", "/5/Video.mp4");
  put("/main", "/5/video.mp4");
  EXPECT_EQ(urlOf(5), first);
}

TEST_F(PixelMapVideo, NoOtherNameCounts) {
  for (const char* name : {"video.mp", "video.mp44", "xvideo.mp4", "video_mp4", "movie.mp4"}) {
    put("/main", std::string("/5/") + name);
  }
  put("/main", "/video.mp4");
  EXPECT_EQ(urlOf(5), "");
}

TEST_F(PixelMapVideo, MainBundleComesBeforeTheKits) {
  const std::string kits = put("/kit", "/5/video.mp4");
  EXPECT_EQ(urlOf(5), kits);
  const std::string mains = put("/main", "/5/video.mp4");
  EXPECT_EQ(urlOf(5), mains);
}

TEST_F(PixelMapVideo, MainFolderWithoutOneLeavesItToTheKit) {
  put("/main", "/5/notes.txt");
  const std::string path = put("/kit", "/5/video.mp4");
  EXPECT_EQ(urlOf(5), path);
}

TEST_F(PixelMapVideo, MapThatIsAFileLeavesItToTheKit) {
  put("/main", "/5");
  const std::string path = put("/kit", "/5/video.mp4");
  EXPECT_EQ(urlOf(5), path);
}

TEST_F(PixelMapVideo, FolderThatCannotBeListedLeavesItToTheKit) {
  put("/main", "/5/video.mp4");
  files_.unlistable = "/main" + kVenue + "/5";
  EXPECT_EQ(urlOf(5), "");
  const std::string path = put("/kit", "/5/video.mp4");
  EXPECT_EQ(urlOf(5), path);
}

TEST_F(PixelMapVideo, BundleWithoutAFolderIsSkipped) {
  put("", "/5/video.mp4");
  main_.folder = "";
  EXPECT_EQ(urlOf(5), "") << "not at the root of the file system";
  EXPECT_THAT(entries(), IsEmpty());
  const std::string path = put("/kit", "/5/video.mp4");
  EXPECT_EQ(urlOf(5), path);
  EXPECT_THAT(entries(), ElementsAre("5 " + path));
}

TEST_F(PixelMapEntries, AreListedByNumberAndThenByName) {
  for (const char* map : {"/x", "/10", "/2", "/intro"})
    put("/main", std::string(map) + "/video.mp4");
  const std::string folder = "/main" + kVenue;
  EXPECT_THAT(entries(),
              ElementsAre("2 " + folder + "/2/video.mp4", "10 " + folder + "/10/video.mp4",
                          "intro " + folder + "/intro/video.mp4", "x " + folder + "/x/video.mp4"));
}

TEST_F(PixelMapEntries, MapInBothBundlesIsListedOnceFromTheMainOne) {
  const std::string second = put("/main", "/2/video.mp4");
  const std::string third = put("/main", "/3/VIDEO.mp4");
  const std::string first = put("/kit", "/1/video.mp4");
  put("/kit", "/2/video.mp4");
  put("/kit", "/3/video.mp4");
  EXPECT_THAT(entries(), ElementsAre("2 " + second, "3 " + third, "1 " + first));
}

TEST_F(PixelMapEntries, MapWithoutAVideoInTheMainBundleComesFromTheKit) {
  put("/main", "/5/notes.txt");
  const std::string path = put("/kit", "/5/video.mp4");
  EXPECT_THAT(entries(), ElementsAre("5 " + path));
}

TEST_F(PixelMapEntries, OneFolderForBothBundlesGivesEachMapOnce) {
  kit_.folder = main_.folder;
  const std::string path = put("/main", "/5/video.mp4");
  EXPECT_THAT(entries(), ElementsAre("5 " + path));
}

TEST_F(PixelMapEntries, OnlyFoldersWithAVideoCount) {
  put("/main", "/4");
  put("/main", "/video.mp4");
  put("/main", "/5/f1.jpg");
  const std::string path = put("/main", "/6/video.mp4");
  EXPECT_THAT(entries(), ElementsAre("6 " + path));
}

TEST_F(PixelMapEntries, VenueThatIsNoFolderOrCannotBeListedHasNone) {
  files_.files.put("/main" + kVenue, "a file");
  EXPECT_THAT(entries(), IsEmpty());
  const std::string path = put("/kit", "/5/video.mp4");
  EXPECT_THAT(entries(), ElementsAre("5 " + path));
  files_.unlistable = "/kit" + kVenue;
  EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(PixelMapEntries, VenueBelowOneHasNone) {
  files_.files.put("/main/HVAssets/Maps/Venue-0/5/video.mp4", "");
  files_.files.put("/main/HVAssets/Maps/Venue--1/5/video.mp4", "");
  EXPECT_THAT(assets_.pixelMapVideoEntriesForVenueId(0), IsEmpty());
  EXPECT_THAT(assets_.pixelMapVideoEntriesForVenueId(-1), IsEmpty());
  EXPECT_EQ(assets_.pixelMapVideoURLForVenueId(0, 5), "/main/HVAssets/Maps/Venue-0/5/video.mp4")
      << "a single map may be asked for under any number";
}

TEST_F(PixelMapFrame, AskingTwiceDecodesOnce) {
  putVideo("/main", "/5", VirtualVideo::ofPlaces(10, 4, 3));
  const auto first = frame(3);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(frame(3), first);
  EXPECT_EQ(videos_.counts.imagesMade, 1);
  EXPECT_EQ(videos_.counts.opens, 1);
  EXPECT_EQ(videos_.counts.framesRead, 0) << "exact frames, not read through";
}

TEST_F(PixelMapFrame, HasTheVideosFullSizeAndTheFramesColours) {
  putVideo("/main", "/5", VirtualVideo::ofPlaces(10, 4, 3));
  const auto image = frame(7);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->width, 4U);
  EXPECT_EQ(image->height, 3U);
  EXPECT_EQ(frameColour(7, 2, 1), colourOfBytes(7, 2, 1));
  EXPECT_EQ(videos_.counts.imagesMade, 1);
}

TEST_F(PixelMapFrame, IndexCountsModuloTheVideosFrames) {
  putVideo("/main", "/5", VirtualVideo::ofPlaces(10, 4, 3));
  EXPECT_EQ(frameColour(9), colourOfBytes(9, 0, 0));
  EXPECT_EQ(frameColour(10), colourOfBytes(0, 0, 0));
  EXPECT_EQ(frameColour(13), colourOfBytes(3, 0, 0));
  EXPECT_EQ(videos_.counts.imagesMade, 3);
  EXPECT_EQ(frameColour(3), colourOfBytes(3, 0, 0));
  EXPECT_EQ(videos_.counts.imagesMade, 3) << "13 and 3 are one frame";
}

TEST_F(PixelMapFrame, OnlyTheLastOneIsKept) {
  putVideo("/main", "/5", VirtualVideo::ofPlaces(10, 4, 3));
  const auto first = frame(1);
  frame(2);
  frame(1);
  EXPECT_EQ(videos_.counts.imagesMade, 3);
  EXPECT_EQ(videos_.counts.opens, 1) << "the generator stays";
  EXPECT_EQ(first->rgba[0], 1) << "whoever holds a picture keeps it";
}

TEST_F(PixelMapFrame, AnotherVideoTakesTheGeneratorsPlace) {
  putVideo("/main", "/5", VirtualVideo::ofPlaces(10, 4, 3));
  putVideo("/main", "/6", VirtualVideo::ofPlaces(2, 8, 8));
  EXPECT_EQ(frame(1, 5)->width, 4U);
  EXPECT_EQ(frame(1, 6)->width, 8U) << "not the picture kept for the other video";
  EXPECT_EQ(frame(3, 6)->rgba[0], 1) << "of two frames";
  EXPECT_EQ(frame(1, 5)->width, 4U);
  EXPECT_EQ(videos_.counts.opens, 3);
  EXPECT_EQ(videos_.counts.imagesMade, 3);
}

TEST_F(PixelMapFrame, FailureLeavesTheKeptOneAlone) {
  VirtualVideo late = VirtualVideo::ofPlaces(10, 4, 3);
  late.frames.erase(late.frames.begin(), late.frames.begin() + 2);
  putVideo("/main", "/5", std::move(late));
  const auto second = frame(2);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(frame(0), nullptr);
  EXPECT_EQ(frame(1), nullptr);
  EXPECT_EQ(frame(2), second);
  EXPECT_EQ(videos_.counts.imagesMade, 1);
}

TEST_F(PixelMapFrame, NegativeIndexIsNoneBeforeAnythingIsLookedFor) {
  EXPECT_EQ(frame(-1), nullptr);
  EXPECT_THAT(texts_, IsEmpty());
  putVideo("/main", "/5", VirtualVideo::ofPlaces(10, 4, 3));
  EXPECT_EQ(frame(-1), nullptr);
  EXPECT_EQ(videos_.counts.opens, 0);
}

TEST_F(PixelMapFrame, MissingVideoIsReportedAndAFoundOneTakesTheReportBack) {
  EXPECT_EQ(frame(0), nullptr);
  EXPECT_EQ(frameColour(0), std::nullopt);
  EXPECT_THAT(texts_,
              ElementsAre("Missing video.mp4 (Venue-7/5)", "Missing video.mp4 (Venue-7/5)"));
  texts_.clear();
  putVideo("/main", "/5", VirtualVideo::ofPlaces(10, 4, 3));
  EXPECT_NE(frame(0), nullptr);
  EXPECT_THAT(texts_, ElementsAre(std::nullopt));
  assets_.debugTextListener = nullptr;
  EXPECT_EQ(frame(0, 6), nullptr) << "nobody has to listen";
}

TEST_F(PixelMapFrame, VideoWithoutAVideoTrackHasNone) {
  VirtualVideo sound = VirtualVideo::ofPlaces(10, 4, 3);
  sound.hasTrack = false;
  const std::string path = putVideo("/main", "/5", sound);
  EXPECT_EQ(frame(0), nullptr);
  videos_.put(path, VirtualVideo::ofPlaces(10, 4, 3));
  EXPECT_NE(frame(0), nullptr) << "the file was not yet whole";
}

TEST_F(PixelMapFrame, SeatOutsideThePictureHasNoColour) {
  putVideo("/main", "/5", VirtualVideo::ofPlaces(10, 4, 3));
  EXPECT_EQ(frameColour(1, 3, 2), colourOfBytes(1, 3, 2));
  EXPECT_EQ(frameColour(1, 4, 2), std::nullopt);
  EXPECT_EQ(frameColour(1, 3, 3), std::nullopt);
  EXPECT_EQ(frameColour(1, -1, 2), std::nullopt);
  EXPECT_EQ(frameColour(1, 3, -1), std::nullopt);
}

TEST_F(PixelMapStill, FramesZeroAndOneAreTheFirstThenTheSecond) {
  putStill(main_, 2, pixmapOf(1, 1, 2, 0, 0));
  EXPECT_EQ(still(0), colourOfBytes(2, 0, 0));
  EXPECT_EQ(still(1), colourOfBytes(2, 0, 0));
  EXPECT_EQ(still(-5), colourOfBytes(2, 0, 0));
  putStill(main_, 1, pixmapOf(1, 1, 1, 0, 0));
  EXPECT_EQ(still(0), colourOfBytes(1, 0, 0));
  EXPECT_EQ(still(1), colourOfBytes(1, 0, 0));
  EXPECT_EQ(still(-5), colourOfBytes(1, 0, 0));
}

TEST_F(PixelMapStill, FrameIsItsOwnNumberOrTheNextOne) {
  putStill(main_, 2, pixmapOf(1, 1, 2, 0, 0));
  putStill(main_, 5, pixmapOf(1, 1, 5, 0, 0));
  EXPECT_EQ(still(2), colourOfBytes(2, 0, 0));
  EXPECT_EQ(still(3), std::nullopt) << "neither 2 nor 5";
  EXPECT_EQ(still(4), colourOfBytes(5, 0, 0));
  EXPECT_EQ(still(5), colourOfBytes(5, 0, 0));
  EXPECT_EQ(still(INT64_MAX), std::nullopt);
}

TEST_F(PixelMapStill, EachNumberIsLookedForInBothBundles) {
  putStill(main_, 2, pixmapOf(1, 1, 2, 0, 0));
  putStill(kit_, 1, pixmapOf(1, 1, 1, 0, 0));
  EXPECT_EQ(still(1), colourOfBytes(1, 0, 0));
  putStill(main_, 1, pixmapOf(1, 1, 9, 0, 0));
  EXPECT_EQ(still(1), colourOfBytes(9, 0, 0)) << "the main bundle's comes first";
}

TEST_F(PixelMapStill, WhatGivesNoColourLeavesItToTheNext) {
  putStill(main_, 1, "no picture");
  putStill(main_, 2, pixmapOf(4, 3, 2, 0, 0));
  EXPECT_EQ(still(1, 3, 2), colourOfBytes(2, 0, 0));
  putStill(main_, 1, pixmapOf(2, 2, 1, 0, 0));
  EXPECT_EQ(still(1, 1, 1), colourOfBytes(1, 0, 0));
  EXPECT_EQ(still(1, 3, 2), colourOfBytes(2, 0, 0)) << "outside the smaller picture";
  EXPECT_EQ(still(1, 4, 2), std::nullopt);
}

TEST_F(PixelMapStill, NegativeSeatHasNone) {
  putStill(main_, 1, pixmapOf(4, 3, 1, 0, 0));
  EXPECT_EQ(still(1, -1, 0), std::nullopt);
  EXPECT_EQ(still(1, 0, -1), std::nullopt);
}

TEST_F(PixelMapStill, NothingFoundIsNone) { EXPECT_EQ(still(1), std::nullopt); }

MaybeColour sample(const Image& image, std::int64_t x, std::int64_t y) {
  return PixelMapAssets::sampleColorFromImage(image, x, y);
}

TEST(PixelMapSample, SeatIsColumnThenRowFromTheTop) {
  const Image image{3, 2, {0,  0, 0, 255, 1,  0, 0, 255, 2,  0, 0, 255,
                           10, 0, 0, 255, 11, 0, 0, 255, 12, 0, 0, 255}};
  for (int x = 0; x < 3; ++x) {
    for (int y = 0; y < 2; ++y) {
      EXPECT_EQ(sample(image, x, y), colourOfBytes(static_cast<std::uint8_t>(y * 10 + x), 0, 0));
    }
  }
}

TEST(PixelMapSample, OutsideOfThePictureIsNone) {
  const Image image{3, 2, std::vector<std::uint8_t>(24, 255)};
  for (const auto& [x, y] : {std::pair<std::int64_t, std::int64_t>{3, 0},
                             {0, 2},
                             {-1, 0},
                             {0, -1},
                             {INT64_MAX, 0},
                             {0, INT64_MIN},
                             {std::int64_t{1} << 32, 0}}) {
    EXPECT_EQ(sample(image, x, y), std::nullopt) << x << " " << y;
  }
}

TEST(PixelMapSample, LevelsArePartsOf255InSinglePrecision) {
  const MaybeColour colour = sample({1, 1, {200, 100, 37, 255}}, 0, 0);
  ASSERT_TRUE(colour.has_value());
  EXPECT_EQ(colour->red, 200 / 255.0F);
  EXPECT_EQ(colour->green, 100 / 255.0F);
  EXPECT_EQ(colour->blue, 37 / 255.0F);
  EXPECT_EQ(colour->alpha, 1);
}

TEST(PixelMapSample, ColourIsPremultipliedByItsAlpha) {
  const MaybeColour colour = sample({1, 1, {200, 100, 50, 128}}, 0, 0);
  EXPECT_EQ(colour, (Colour{100 / 255.0F, 50 / 255.0F, 25 / 255.0F, 128 / 255.0F}));
  EXPECT_EQ(sample({1, 1, {200, 100, 50, 0}}, 0, 0), (Colour{0, 0, 0, 0}));
}

TEST(PixelMapSample, EmptyPictureHasNone) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(sample({}, 0, 0), std::nullopt);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Context not created!");
}

}  // namespace
}  // namespace halvora
