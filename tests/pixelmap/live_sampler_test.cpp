// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/live_sampler.h"

#include <cmath>
#include <functional>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_storage.h"
#include "adapters/virtual/virtual_video.h"
#include "halvora/platform/absent.h"
#include "pixelmap/pixel_map_assets.h"
#include "tests/support/step_queue.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The sampler over map 5 of venue 7, whose video has ten frames of 4 × 3 pixels; its queue decodes
/// when the test says so.
class LiveSampling : public testing::Test {
 protected:
  LiveSampling() {
    bundle_.folder = "/main";
    bundle_.files = &files_;
    putVideo(VirtualVideo::ofPlaces(10, 4, 3));
  }

  void putVideo(VirtualVideo video, const std::string& map = "5") {
    video.onFrame = [this](std::size_t frame) {
      read_.push_back(frame);
      if (frame == actAt_ && act_) act_();
    };
    const std::string path = pathOf(map);
    files_.put(path, "video");
    videos_.put(path, std::move(video));
  }
  static std::string pathOf(const std::string& map) {
    return "/main/HVAssets/Maps/Venue-7/" + map + "/video.mp4";
  }
  void start(std::int64_t center = 0, const std::string& key = "key", SeatPosition seat = {2, 1}) {
    const auto file = files_.attributes(pathOf("5"));
    sampler_->startPixelMapLiveSamplerForVideoURL(
        {pathOf("5"), 7, 5, key, seat, center, VideoFileSignature{file->size, file->modifiedAt}},
        queue_);
  }
  void startOther() {
    sampler_->startPixelMapLiveSamplerForVideoURL({pathOf("6"), 7, 6, "other", {2, 1}, 0}, queue_);
  }
  void stop() { sampler_->stopPixelMapLiveSampler(); }
  void actAt(std::size_t frame, std::function<void()> act) {
    actAt_ = frame;
    act_ = std::move(act);
  }
  MaybeColour at(std::int64_t frame) const {
    return sampler_->colorFromLivePixelMapSeatBufferForFrameIndex(frame);
  }
  /// The frames that have a colour, of ten.
  std::vector<int> frames() const {
    std::vector<int> filled;
    for (int frame = 0; frame < 10; ++frame) {
      const MaybeColour colour = at(frame);
      if (!colour) continue;
      EXPECT_EQ(colour, colourOfBytes(static_cast<std::uint8_t>(frame), 2, 1));
      filled.push_back(frame);
    }
    return filled;
  }

  VirtualFiles files_;
  VirtualVideoAssets videos_;
  VirtualBundle bundle_{"com.example.host"};
  Bundles bundles_{bundle_, bundle_};
  PixelMapAssets assets_{bundles_, videos_, absent::images()};
  StepQueue queue_;
  std::unique_ptr<LiveSampler> sampler_ = std::make_unique<LiveSampler>(assets_, videos_);
  /// The frames that were read, in order.
  std::vector<std::size_t> read_;

 private:
  std::size_t actAt_ = 0;
  std::function<void()> act_;
};

TEST_F(LiveSampling, HasNothingBeforeItStarts) {
  EXPECT_EQ(at(0), std::nullopt);
  EXPECT_EQ(at(-1), std::nullopt);
}

TEST_F(LiveSampling, CentreIsThereAtOnce) {
  start(3);
  EXPECT_THAT(frames(), ElementsAre(3));
  EXPECT_EQ(videos_.counts.imagesMade, 1);
  EXPECT_THAT(read_, IsEmpty());
  EXPECT_EQ(queue_.waiting(), 1U);
}

TEST_F(LiveSampling, FramesFromTheCentreOnComeBeforeThoseInFrontOfIt) {
  start(6);
  queue_.runAll();
  EXPECT_THAT(read_, ElementsAre(6, 7, 8, 9, 0, 1, 2, 3, 4, 5));
  EXPECT_EQ(videos_.counts.readers, 2);
  EXPECT_EQ(frames().size(), 10U);
}

TEST_F(LiveSampling, FromTheFirstFrameThereIsOneRange) {
  start(0);
  queue_.runAll();
  EXPECT_THAT(read_, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
  EXPECT_EQ(videos_.counts.readers, 1);
}

TEST_F(LiveSampling, CentreCountsModuloTheFrames) {
  start(-1);
  EXPECT_THAT(frames(), ElementsAre(9));
  stop();
  start(24);
  EXPECT_THAT(frames(), ElementsAre(4));
}

TEST_F(LiveSampling, IndexCountsModuloTheFrames) {
  start(9);
  EXPECT_EQ(at(-1), colourOfBytes(9, 2, 1));
  EXPECT_EQ(at(19), colourOfBytes(9, 2, 1));
  EXPECT_EQ(at(-11), colourOfBytes(9, 2, 1));
  EXPECT_EQ(at(10), std::nullopt);
}

TEST_F(LiveSampling, WordZeroIsBlackAndNotNone) {
  putVideo(VirtualVideo::ofWords(std::vector<std::uint32_t>(10, 0)));
  start(0);
  queue_.runAll();
  EXPECT_EQ(at(4), (Colour{0, 0, 0, 0}));
}

TEST_F(LiveSampling, DecodedWordsAreNotPremultiplied) {
  putVideo(VirtualVideo::ofWords(std::vector<std::uint32_t>(10, 0x80FF0000)));
  start(0);
  EXPECT_EQ(at(0), (Colour{128 / 255.0F, 0, 0, 128 / 255.0F})) << "the exact frame is";
  queue_.runAll();
  EXPECT_EQ(at(0), (Colour{1, 0, 0, 128 / 255.0F})) << "and is overwritten";
}

TEST_F(LiveSampling, SeatBeyondThePictureTakesTheEdgeOnceItIsDecoded) {
  start(0, "key", {4, 3});
  EXPECT_EQ(at(0), std::nullopt) << "the exact frame has no such pixel";
  queue_.runAll();
  EXPECT_EQ(at(0), colourOfBytes(0, 3, 2));
  EXPECT_EQ(at(9), colourOfBytes(9, 3, 2));
}

TEST_F(LiveSampling, FramesWithoutASampleHaveNone) {
  VirtualVideo video = VirtualVideo::ofPlaces(10, 4, 3);
  video.frames.erase(video.frames.begin() + 4);
  video.frames.front().seconds = -1;
  video.frames[8].seconds = std::nan("");
  putVideo(std::move(video));
  start(3);
  queue_.runAll();
  EXPECT_THAT(frames(), ElementsAre(1, 2, 3, 5, 6, 7, 8));
}

TEST_F(LiveSampling, SamplesGoToTheFrameThatIsNearest) {
  VirtualVideo video = VirtualVideo::ofPlaces(10, 4, 3);
  video.frames[7].seconds = 7.4 / 30;
  video.frames[8].seconds = 7.6 / 30;
  video.frames[9].seconds = 9.7 / 30;
  putVideo(std::move(video));
  start(3);
  queue_.runAll();
  EXPECT_THAT(frames(), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8)) << "9.7 is beyond the last frame";
}

TEST_F(LiveSampling, PicturesWithoutPixelsAreLeftOut) {
  VirtualVideo video = VirtualVideo::ofPlaces(10, 4, 3);
  video.height = 0;
  putVideo(std::move(video));
  testing::internal::CaptureStderr();
  start(0);
  testing::internal::GetCapturedStderr();
  queue_.runAll();
  EXPECT_EQ(read_.size(), 10U);
  EXPECT_EQ(at(5), std::nullopt);
}

TEST_F(LiveSampling, SecondStartForTheSameKeyDoesNothing) {
  start(3);
  start(3);
  start(5);
  EXPECT_EQ(queue_.waiting(), 1U);
  EXPECT_EQ(videos_.counts.imagesMade, 1);
  queue_.runAll();
  start(7);
  EXPECT_EQ(queue_.waiting(), 0U);
  EXPECT_EQ(frames().size(), 10U) << "what it has stays";
}

TEST_F(LiveSampling, SecondStartForTheSameKeyDoesNotOpenTheVideo) {
  start(3);
  const int opens = videos_.counts.opens;
  for (int look = 0; look < 10; ++look) start(3);
  EXPECT_EQ(videos_.counts.opens, opens);
}

TEST_F(LiveSampling, AnotherVideoInItsPlaceStartsAnew) {
  start(0);
  queue_.runAll();
  putVideo(VirtualVideo::ofPlaces(20, 4, 3));
  files_.touch(pathOf("5"), 2e9);
  start(0);
  EXPECT_EQ(queue_.waiting(), 1U);
  EXPECT_EQ(at(5), std::nullopt);
  queue_.runAll();
  EXPECT_EQ(at(19), colourOfBytes(19, 2, 1));
}

TEST_F(LiveSampling, AnotherKeyTakesItsPlaceBeforeItDecodes) {
  putVideo(VirtualVideo::ofPlaces(5, 4, 3), "6");
  start(3);
  startOther();
  EXPECT_EQ(at(3), std::nullopt);
  EXPECT_EQ(at(0), colourOfBytes(0, 2, 1));
  queue_.runAll();
  EXPECT_THAT(read_, ElementsAre(0, 1, 2, 3, 4)) << "nothing of the first video";
  EXPECT_EQ(at(6), colourOfBytes(1, 2, 1)) << "of five frames";
}

TEST_F(LiveSampling, AnotherKeyTakesItsPlaceWhileItDecodes) {
  putVideo(VirtualVideo::ofPlaces(5, 4, 3), "6");
  start(0);
  actAt(6, [this] { startOther(); });
  queue_.runNext();
  EXPECT_EQ(read_.size(), 7U) << "it ends at the sample it was at";
  EXPECT_EQ(at(0), colourOfBytes(0, 2, 1));
  EXPECT_EQ(at(1), std::nullopt) << "the other video's first frame is all there is";
  queue_.runNext();
  EXPECT_EQ(at(4), colourOfBytes(4, 2, 1));
}

TEST_F(LiveSampling, SampleThatIsTakenWhileAnotherKeyTakesItsPlaceIsNotStored) {
  putVideo(VirtualVideo::ofPlaces(10, 4, 3), "6");
  VirtualVideo video = VirtualVideo::ofPlaces(10, 4, 3);
  video.frames[4].wordAt = [this](PixelPosition) {
    startOther();
    return 0xFF123456U;
  };
  putVideo(std::move(video));
  start(1);
  queue_.runNext();
  EXPECT_THAT(read_, ElementsAre(1, 2, 3, 4, 5)) << "the next sample finds that it is over";
  EXPECT_THAT(frames(), ElementsAre(0)) << "the other video's first";
}

TEST_F(LiveSampling, StopForgetsEverything) {
  start(3);
  queue_.runAll();
  stop();
  EXPECT_THAT(frames(), IsEmpty());
  start(4);
  EXPECT_THAT(frames(), ElementsAre(4)) << "the key is forgotten too";
  EXPECT_EQ(queue_.waiting(), 1U);
}

TEST_F(LiveSampling, StopBeforeItDecodesLeavesNothingToDo) {
  start(3);
  stop();
  const int opens = videos_.counts.opens;
  queue_.runAll();
  EXPECT_THAT(read_, IsEmpty());
  EXPECT_EQ(videos_.counts.opens, opens);
}

TEST_F(LiveSampling, StopWhileItDecodesEndsItAtThatSample) {
  start(5);
  actAt(7, [this] { stop(); });
  queue_.runAll();
  EXPECT_THAT(read_, ElementsAre(5, 6, 7)) << "and the frames before the centre are not begun";
  EXPECT_THAT(frames(), IsEmpty());
}

TEST_F(LiveSampling, DecodingOfAnEarlierStartOfTheSameKeyIsOver) {
  start(5);
  actAt(7, [this] {
    stop();
    start(2);
  });
  queue_.runNext();
  EXPECT_THAT(read_, ElementsAre(5, 6, 7));
  EXPECT_THAT(frames(), ElementsAre(2)) << "and wrote nothing into the new one's buffer";
  actAt(0, nullptr);
  queue_.runNext();
  EXPECT_EQ(frames().size(), 10U);
}

TEST_F(LiveSampling, StartWithoutAVideoStopsIt) {
  const auto expectStop = [this](const LiveRequest& request) {
    start(3);
    sampler_->startPixelMapLiveSamplerForVideoURL(request, queue_);
    EXPECT_THAT(frames(), IsEmpty());
    queue_.runAll();
    EXPECT_THAT(read_, IsEmpty());
  };
  expectStop({"", 7, 5, "other", {2, 1}, 0});
  expectStop({pathOf("5"), 7, 5, "", {2, 1}, 0});
  expectStop({"/missing", 7, 5, "other", {2, 1}, 0});
  VirtualVideo sound = VirtualVideo::ofPlaces(10, 4, 3);
  sound.hasTrack = false;
  putVideo(std::move(sound), "6");
  expectStop({pathOf("6"), 7, 6, "other", {2, 1}, 0});
}

TEST_F(LiveSampling, VideoThatCannotBeReadThroughHasItsCentreOnly) {
  VirtualVideo video = VirtualVideo::ofPlaces(10, 4, 3);
  video.canBeginReading = false;
  putVideo(std::move(video));
  start(3);
  queue_.runAll();
  EXPECT_THAT(frames(), ElementsAre(3));
}

TEST_F(LiveSampling, VideoThatIsGoneWhenItsTurnComesHasItsCentreOnly) {
  start(3);
  VirtualVideo sound = VirtualVideo::ofPlaces(10, 4, 3);
  sound.hasTrack = false;
  putVideo(std::move(sound));
  queue_.runAll();
  EXPECT_THAT(frames(), ElementsAre(3));
}

TEST_F(LiveSampling, NothingIsDecodedForASamplerThatIsGone) {
  start(3);
  sampler_.reset();
  queue_.runAll();
  EXPECT_THAT(read_, IsEmpty());
}

}  // namespace
}  // namespace halvora
