// SPDX-License-Identifier: Apache-2.0
// What is found in a venue's folder, and what is wrong with it.
#include "venue/plan/venue_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/pixmap_decoder.h"
#include "tests/venue/plan/word_videos.h"

namespace halvora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::string kVideo = "words 2 1 3\nFF000000 FF000000\n";
const std::string kStill = pixmapOf(2, 1, 1, 2, 3);

VenueAssets assetsIn(const TestFolder& folder, bool isInterrupted = false) {
  const PixmapDecoder images;
  const WordVideos videos;
  const std::atomic<bool> flag{isInterrupted};
  return venueAssetsIn(folder.path().string(), {images, videos, flag});
}

std::vector<std::string> kindsOf(const VenueAssets& assets) {
  std::vector<std::string> kinds;
  for (const Finding& finding : assets.findings) kinds.push_back(finding.kind);
  return kinds;
}

Finding onlyFinding(const VenueAssets& assets) {
  EXPECT_EQ(assets.findings.size(), 1U) << ::testing::PrintToString(kindsOf(assets));
  return assets.findings.empty() ? Finding() : assets.findings.front();
}

TEST(VenueFolder, MapsAreListedByNumberWithTheirPictures) {
  const TestFolder folder;
  folder.write("map.json", "{}");
  folder.write("10/VIDEO.Mp4",
               "words 4 3 60\n" + std::string("FF000000 FF000000 FF000000 FF000000 "
                                              "FF000000 FF000000 FF000000 FF000000 "
                                              "FF000000 FF000000 FF000000 FF000000"));
  folder.write("2/video.mp4", kVideo);
  folder.write("2/f1.jpg", pixmapOf(5, 6, 1, 2, 3));
  folder.write("3/f1.jpg", kStill);
  folder.write("standing_overlay.png", pixmapOf(7, 8, 1, 2, 3));
  const VenueAssets assets = assetsIn(folder);
  EXPECT_THAT(kindsOf(assets), IsEmpty());
  ASSERT_EQ(assets.videos.size(), 2U);
  EXPECT_EQ(assets.videos[0].mapId, "2");
  EXPECT_EQ(assets.videos[0].frames, 3);
  EXPECT_DOUBLE_EQ(assets.videos[0].seconds, 0.1);
  EXPECT_EQ(assets.videos[1].mapId, "10");
  EXPECT_EQ(assets.videos[1].picture.name, "10/VIDEO.Mp4");
  EXPECT_EQ(assets.videos[1].picture.size, (FrameSize{4, 3}));
  EXPECT_EQ(assets.videos[1].frames, 60);
  ASSERT_EQ(assets.stills.size(), 2U);
  EXPECT_EQ(assets.stills[0].mapId, "2");
  EXPECT_EQ(assets.stills[1].count, 1U);
  std::vector<std::string> names;
  for (const FoundPicture& picture : assets.pictures) names.push_back(picture.name);
  EXPECT_THAT(names, ElementsAre("2/video.mp4", "2/f1.jpg", "3/f1.jpg", "10/VIDEO.Mp4"));
  EXPECT_EQ(assets.pictures[1].size, (FrameSize{5, 6}));
  ASSERT_TRUE(assets.overlay);
  EXPECT_EQ(assets.overlay->name, "standing_overlay.png");
  EXPECT_EQ(assets.overlay->size, (FrameSize{7, 8}));
}

TEST(VenueFolder, AnEmptyOrMissingFolderHoldsNothing) {
  const TestFolder folder;
  EXPECT_THAT(kindsOf(assetsIn(folder)), IsEmpty());
  EXPECT_TRUE(assetsIn(folder).pictures.empty());
  const PixmapDecoder images;
  const WordVideos videos;
  const std::atomic<bool> flag{false};
  const auto missing = venueAssetsIn((folder.path() / "missing").string(), {images, videos, flag});
  EXPECT_THAT(kindsOf(missing), IsEmpty());
}

TEST(VenueFolder, AMapWithNeitherVideoNorStillsIsAFinding) {
  const TestFolder folder;
  folder.write("4/movie.mp4", kVideo);
  folder.write("4/f01.jpg", kStill);
  folder.write("4/f0.jpg", kStill);
  folder.write("4/F1.jpg", kStill);
  folder.write("4/f1.jpeg", kStill);
  const Finding finding = onlyFinding(assetsIn(folder));
  EXPECT_EQ(finding.kind, "videoMissing");
  EXPECT_THAT(finding.text, HasSubstr("map 4 "));
}

TEST(VenueFolder, AVideoThatHoldsNoneIsAFinding) {
  const TestFolder folder;
  folder.write("1/video.mp4", "no video");
  const Finding finding = onlyFinding(assetsIn(folder));
  EXPECT_EQ(finding.kind, "videoUnreadable");
  EXPECT_EQ(finding.text, "1/video.mp4 cannot be played: no video track in it");
}

TEST(VenueFolder, AVideoWithoutAPictureIsAFinding) {
  const TestFolder folder;
  folder.write("1/video.mp4", "words 2 1 3\n");
  EXPECT_EQ(onlyFinding(assetsIn(folder)).kind, "videoUnreadable");
}

TEST(VenueFolder, AVideoOfNoLengthIsAFinding) {
  const TestFolder folder;
  folder.write("1/video.mp4", "words 2 1 0\nFF000000 FF000000\n");
  EXPECT_EQ(onlyFinding(assetsIn(folder)).kind, "videoEmpty");
}

TEST(VenueFolder, AVideoThatIsAFolderIsAFinding) {
  const TestFolder folder;
  folder.write("1/video.mp4/inside", "");
  EXPECT_EQ(onlyFinding(assetsIn(folder)).kind, "videoUnreadable");
}

TEST(VenueFolder, StillsThatAreNoPicturesAreAFinding) {
  const TestFolder folder;
  folder.write("1/f1.jpg", kStill);
  folder.write("1/f2.jpg", "no picture");
  folder.write("1/f3.jpg", "");
  const VenueAssets assets = assetsIn(folder);
  const Finding finding = onlyFinding(assets);
  EXPECT_EQ(finding.kind, "stillUnreadable");
  EXPECT_EQ(finding.count, 2U);
  EXPECT_THAT(finding.examples, ElementsAre("1/f2.jpg", "1/f3.jpg"));
  EXPECT_EQ(assets.pictures.size(), 1U);
}

TEST(VenueFolder, StillsInPlaceOfAVideoMustNotMissTwoInARow) {
  const TestFolder folder;
  for (const char* name : {"2", "4", "7", "10", "12"}) {
    folder.write("1/f" + std::string(name) + ".jpg", kStill);
  }
  const Finding finding = onlyFinding(assetsIn(folder));
  EXPECT_EQ(finding.kind, "stillsMissing");
  EXPECT_EQ(finding.count, 4U);
  EXPECT_THAT(finding.examples, ElementsAre("f5.jpg to f6.jpg", "f8.jpg to f9.jpg"));
  folder.write("1/video.mp4", kVideo);
  EXPECT_THAT(kindsOf(assetsIn(folder)), IsEmpty()) << "the video shows these frames";
}

TEST(VenueFolder, StillsThatBeginLateLeaveTheFirstFramesDark) {
  const TestFolder folder;
  folder.write("1/f3.jpg", kStill);
  EXPECT_THAT(onlyFinding(assetsIn(folder)).examples, ElementsAre("f1.jpg to f2.jpg"));
}

TEST(VenueFolder, AMapThatNoPacketCanAskForIsAFinding) {
  for (const char* name : {"0", "256", "01", "-1", "x"}) {
    const TestFolder folder;
    folder.write(std::string(name) + "/video.mp4", kVideo);
    EXPECT_EQ(onlyFinding(assetsIn(folder)).kind, "unreachableMap") << name;
  }
  const TestFolder folder;
  folder.write("255/video.mp4", kVideo);
  folder.write("sources/notes.txt", "not a pixel map at all");
  EXPECT_THAT(kindsOf(assetsIn(folder)), IsEmpty());
}

TEST(VenueFolder, ThePlanIsTheFirstNameThatIsAPicture) {
  const TestFolder folder;
  folder.write("standing-overlay.png", "no picture");
  folder.write("standing-overlay.PNG", pixmapOf(1, 1, 1, 2, 3));
  folder.write("standing_overlay.PNG", pixmapOf(2, 2, 1, 2, 3));
  const VenueAssets assets = assetsIn(folder);
  const Finding finding = onlyFinding(assets);
  EXPECT_EQ(finding.kind, "overlayUnreadable");
  EXPECT_THAT(finding.text, HasSubstr("standing-overlay.png"));
  ASSERT_TRUE(assets.overlay);
  EXPECT_EQ(assets.overlay->name, "standing-overlay.PNG");
}

TEST(VenueFolder, AnInterruptedLookReadsNoMoreStills) {
  const TestFolder folder;
  folder.write("1/f1.jpg", kStill);
  EXPECT_TRUE(assetsIn(folder, true).pictures.empty());
}

}  // namespace
}  // namespace halvora
