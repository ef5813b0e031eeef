// SPDX-License-Identifier: Apache-2.0
// Decoders and players that are wrong, three a need: the conformance suite says of each which
// promise it breaks.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_media.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "adapters/virtual/virtual_video.h"
#include "conformance/media_promises.h"
#include "conformance/samples.h"
#include "tests/conformance/planted.h"

namespace halvora {
namespace {

using namespace conformance;  // NOLINT(google-build-using-namespace): nothing else is tested here

/// Knows the sample by heart, premultiplies it, takes half a picture for one, has the last row for
/// any that is not there.
class FaultyDecoder final : public ImageDecoder {
 public:
  explicit FaultyDecoder(Fault fault) : fault_(fault) {}
  std::optional<Image> decode(std::string_view bytes) const override {
    const bool isWhole = bytes == samplePng();
    const bool isPart = !bytes.empty() && samplePng().starts_with(bytes);
    if (!isWhole && (!isPart || fault_ != Fault::second)) return std::nullopt;
    Image image{3, 2, {255, 0, 0, 255, 0,  255, 0,  128, 0,   0,   255, 0,
                       1,   2, 3, 255, 10, 20,  30, 4,   250, 251, 252, 253}};
    for (std::size_t at = 0; fault_ == Fault::first && at < image.rgba.size(); ++at) {
      image.rgba[at] = static_cast<std::uint8_t>(image.rgba[at] * image.rgba[at | 3] / 255);
    }
    return image;
  }
  std::optional<ImageRow> decodeRow(std::string_view bytes, std::int64_t row) const override {
    if (fault_ == Fault::third) row = std::clamp<std::int64_t>(row, 0, 1);
    return ImageDecoder::decodeRow(bytes, row);
  }

 private:
  const Fault fault_;
};

TEST(PlantedFaults, OfADecoderOfPicturesAreSaid) {
  const auto ofDecoder = [](Fault fault) {
    return checkPictures([fault] { return std::make_unique<FaultyDecoder>(fault); });
  };
  expectSaid(ofDecoder(Fault::first), "not premultiplied");
  expectSaid(ofDecoder(Fault::second), "what is no whole picture is none");
  expectSaid(ofDecoder(Fault::third), "a row that the picture does not have is empty");
}

/// The sample in memory: with red and blue exchanged, with a time that is one frame late, with its
/// last frame left out.
VideosUnderTest faultyVideos(Fault fault) {
  VirtualVideo video;
  video.width = video.height = 64;
  for (std::uint32_t frame = 0; frame < 12; ++frame) {
    const std::uint32_t left = 0xFF000000U | 0x111111U * frame;
    const std::uint32_t upper = fault == Fault::first ? 0xFF2828DCU : 0xFFDC2828U;
    const std::uint32_t shown = fault == Fault::second ? frame + 1 : frame;
    video.frames.push_back({shown / 25.0, [left, upper](PixelPosition place) {
                              if (place.x < 32) return left;
                              return place.y < 32 ? upper : 0xFF2828DCU;
                            }});
  }
  video.durationSeconds = 12 / 25.0;
  if (fault == Fault::third) video.readableFrames = 11;
  auto assets = std::make_unique<VirtualVideoAssets>();
  assets->put("clip.mp4", std::move(video));
  return {std::move(assets), "clip.mp4", "text.mp4"};
}

TEST(PlantedFaults, OfVideosAreSaid) {
  const auto ofVideos = [](Fault fault) {
    return checkVideos([fault] { return faultyVideos(fault); });
  };
  expectSaid(ofVideos(Fault::first), "pixels are words 0xAARRGGBB, rows from the top");
  expectSaid(ofVideos(Fault::second), "each frame says when it is presented");
  expectSaid(ofVideos(Fault::third), "every frame is read, and each once");
}

/// Completes a seek within the call, keeps the clip that was there, is ready for what is broken.
class FaultyPlayer final : public VideoPlayer {
 public:
  FaultyPlayer(Fault fault, RunLoop& loop) : fault_(fault), player_(loop, 'a', log_) {}
  void load(const VideoItem& item) override {
    if (fault_ == Fault::second && item.path.empty()) return;
    player_.load(fault_ != Fault::third && item.name == "9" ? VideoItem{item.name, ""} : item);
  }
  void play() override { player_.play(); }
  void pause() override { player_.pause(); }
  bool isReadyToPlay() const override { return player_.isReadyToPlay(); }
  bool isItemReadyToPlay() const override { return player_.isItemReadyToPlay(); }
  void setPreferredForwardBuffer(Duration /*duration*/) override {}
  void seek(Duration position, Task completion) override {
    if (fault_ != Fault::first) return player_.seek(position, std::move(completion));
    completion();
  }

 private:
  const Fault fault_;
  Log<VideoEvent> log_;
  VirtualVideoPlayer player_;
};

TEST(PlantedFaults, OfAPlayerAreSaid) {
  const auto ofPlayer = [](Fault fault) {
    return checkPlayer([fault] {
      auto loop = std::make_shared<VirtualRunLoop>();
      VirtualRunLoop& its = *loop;
      const auto work = [&its] { its.runFor(milliseconds(10)); };
      return PlayerUnderTest{std::move(loop),
                             std::make_unique<FaultyPlayer>(fault, its),
                             {"3", "3.mp4"},
                             {"9", "9.mp4"},
                             [work](const std::function<bool()>& /*isSo*/) { work(); },
                             work};
    });
  };
  expectSaid(ofPlayer(Fault::first), "a seek completes in a turn of its own, not within the call");
  expectSaid(ofPlayer(Fault::second), "loading drops the clip that was there");
  expectSaid(ofPlayer(Fault::third), "a clip that is broken is never ready");
}

}  // namespace
}  // namespace halvora
