// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/ffmpeg/display_turn.h"
#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "tests/adapters/ffmpeg/clip_maker.h"
#include "tests/adapters/ffmpeg/colour_reference.h"

namespace halvora {
namespace {

constexpr const char* kAlmostExact =
    "-c:v libx264 -qp 4 -preset superfast -sc_threshold 0 -b_strategy 0 -g 10 ";
constexpr int kNone = -1;

std::unique_ptr<VideoAsset> opened(const std::string& path) {
  std::string reason;
  auto asset = FfmpegVideoAssets().open(path, &reason);
  EXPECT_TRUE(asset) << path << ": " << reason;
  return asset;
}

int shownAt(FrameGenerator& generator, MediaTime time) {
  const auto image = generator.imageAt(time);
  if (!image) return kNone;
  return frameNumberOf(std::uint32_t{image->rgba[2]});
}

TEST(FfmpegGenerator, APictureIsShownFromItsTimeUpToTheNext) {
  const ClipMaker clips;
  const auto asset =
      opened(clips.encode("clip.mp4", movingTexture(40), std::string(kAlmostExact) + "-bf 2"));
  ASSERT_TRUE(asset);
  const auto generator = asset->generator();
  for (int frame = 0; frame < 40; ++frame) {
    EXPECT_EQ(shownAt(*generator, {frame * 20, 600}), frame);
    EXPECT_EQ(shownAt(*generator, {frame * 20 + 19, 600}), frame);
  }
  // Backwards, and where both ways lead through a group.
  for (const int frame : {39, 12, 11, 13, 10, 14, 9, 0, 25, 25}) {
    EXPECT_EQ(shownAt(*generator, {frame, 30}), frame);
  }
}

TEST(FfmpegGenerator, ThereIsNothingBeforeTheFirstPictureAndAtTheEndOfTheLast) {
  const ClipMaker clips;
  for (const char* order : {"-bf 0", "-bf 2"}) {
    const auto asset =
        opened(clips.encode("clip.mp4", movingTexture(15), std::string(kAlmostExact) + order));
    ASSERT_TRUE(asset);
    const auto generator = asset->generator();
    EXPECT_EQ(shownAt(*generator, {-1, 600}), kNone);
    EXPECT_EQ(shownAt(*generator, {299, 600}), 14);
    EXPECT_EQ(shownAt(*generator, {300, 600}), kNone);
    EXPECT_EQ(shownAt(*generator, {9000, 1}), kNone);
    EXPECT_EQ(shownAt(*generator, {0, 600}), 0);
  }
}

TEST(FfmpegGenerator, LongerSoundMakesTheAssetLongerButShowsNothing) {
  const ClipMaker clips;
  clips.encode("silent.mp4", movingTexture(15), kAlmostExact);
  clips.run("-i %silent.mp4 -f lavfi -i sine=r=48000:d=2 -c:v copy -c:a aac %clip.mp4");
  const auto asset = opened(clips.pathOf("clip.mp4"));
  ASSERT_TRUE(asset);
  EXPECT_NEAR(asset->durationSeconds(), 2, 0.03);
  EXPECT_EQ(framesOf(*asset->reader()).size(), 15U);
  const auto generator = asset->generator();
  EXPECT_EQ(shownAt(*generator, {14, 30}), 14);
  EXPECT_EQ(shownAt(*generator, {15, 30}), kNone);
}

TEST(FfmpegGenerator, PicturesAreTurnedAndReadersAreNot) {
  constexpr std::size_t kWidth = 64;
  constexpr std::size_t kHeight = 96;
  const ClipMaker clips;
  const auto upright =
      opened(clips.encode("upright.mp4", movingTexture(3, 30, kWidth, kHeight), kAlmostExact));
  ASSERT_TRUE(upright);
  for (const int degrees : {90, 180, 270}) {
    SCOPED_TRACE(degrees);
    clips.run("-i %upright.mp4 -c copy -metadata:s:v rotate=" + std::to_string(degrees) +
              " %turned.mp4");
    const auto asset = opened(clips.pathOf("turned.mp4"));
    ASSERT_TRUE(asset);
    const auto image = asset->generator()->imageAt({1, 30});
    ASSERT_TRUE(image);
    ASSERT_EQ(image->width, degrees == 180 ? kWidth : kHeight);
    ASSERT_EQ(image->height, degrees == 180 ? kHeight : kWidth);
    // The command turns what it decodes.
    const std::string decoded = clips.decode(clips.pathOf("turned.mp4"));
    ASSERT_EQ(decoded.size(), 3 * kWidth * kHeight * 3 / 2);
    for (std::size_t pixel = 0; pixel < kWidth * kHeight; ++pixel) {
      const auto luma = static_cast<unsigned char>(decoded[kWidth * kHeight * 3 / 2 + pixel]);
      const std::uint32_t expected = referenceYuv({.kr = 0.299, .kb = 0.114}, luma, 128, 128);
      ASSERT_NEAR(image->rgba[pixel * 4], expected & 0xFF, 1) << pixel;
    }
    EXPECT_EQ(framesOf(*asset->reader()), framesOf(*upright->reader()));
  }
}

constexpr std::int32_t kOne = 1 << 16;

std::array<std::int32_t, 9> matrixOf(std::int32_t a, std::int32_t b, std::int32_t c,
                                     std::int32_t d) {
  return {a, b, 0, c, d, 0, 0, 0, 1 << 30};
}

TEST(FfmpegTurn, StepsOf90DegreesAndMirrorsCount) {
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(kOne, 0, 0, kOne)), (DisplayTurn{false, false, false}));
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(-kOne, 0, 0, kOne)), (DisplayTurn{false, true, false}));
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(kOne, 0, 0, -kOne)), (DisplayTurn{false, false, true}));
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(0, kOne, kOne, 0)), (DisplayTurn{true, false, false}));
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(0, kOne, -kOne, 0)), (DisplayTurn{true, false, true}));
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(0, -kOne, kOne, 0)), (DisplayTurn{true, true, false}));
}

TEST(FfmpegTurn, AnythingElseDoesNot) {
  const DisplayTurn none;
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(46341, 46341, -46341, 46341)), none);
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(2 * kOne, 0, 0, -kOne)), none);
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(0, 0, 0, 0)), none);
  EXPECT_EQ(DisplayTurn::ofMatrix(matrixOf(-kOne, kOne, 0, -kOne)), none);
}

// Two by three pixels that say where they are.
class PlaceFrame final : public VideoFrame {
 public:
  double seconds() const override { return 0; }
  std::uint32_t width() const override { return 2; }
  std::uint32_t height() const override { return 3; }
  void sample(std::span<const PixelPosition> positions,
              std::span<std::uint32_t> words) const override {
    for (std::size_t at = 0; at < positions.size(); ++at) {
      words[at] = 0x80000000U | positions[at].x << 16 | positions[at].y << 8 | 7;
    }
  }
};

// The places that show up, row by row, as x and y in one number.
std::vector<int> placesOf(DisplayTurn turn) {
  const Image image = turnedImage(PlaceFrame(), turn);
  EXPECT_EQ(image.width, turn.isTransposed ? 3U : 2U);
  EXPECT_EQ(image.rgba.size(), 24U);
  std::vector<int> places;
  for (std::size_t at = 0; at < image.rgba.size(); at += 4) {
    places.push_back(image.rgba[at] * 10 + image.rgba[at + 1]);
    EXPECT_EQ(image.rgba[at + 2], 7);
    EXPECT_EQ(image.rgba[at + 3], 255) << "opaque, whatever the video says";
  }
  return places;
}

TEST(FfmpegTurn, EveryTurnPutsEveryPixelInItsPlace) {
  using Places = std::vector<int>;
  EXPECT_EQ(placesOf({false, false, false}), (Places{0, 10, 1, 11, 2, 12}));
  EXPECT_EQ(placesOf({false, true, false}), (Places{10, 0, 11, 1, 12, 2}));
  EXPECT_EQ(placesOf({false, false, true}), (Places{2, 12, 1, 11, 0, 10}));
  EXPECT_EQ(placesOf({false, true, true}), (Places{12, 2, 11, 1, 10, 0}));
  EXPECT_EQ(placesOf({true, false, false}), (Places{0, 1, 2, 10, 11, 12}));
  EXPECT_EQ(placesOf({true, false, true}), (Places{2, 1, 0, 12, 11, 10}));
  EXPECT_EQ(placesOf({true, true, false}), (Places{10, 11, 12, 0, 1, 2}));
  EXPECT_EQ(placesOf({true, true, true}), (Places{12, 11, 10, 2, 1, 0}));
}

}  // namespace
}  // namespace halvora
