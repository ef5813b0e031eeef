// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_video.h"

#include <algorithm>
#include <utility>

namespace halvora {

namespace {

using Video = std::shared_ptr<const VirtualVideo>;
using Counts = VirtualVideoAssets::Counts;

class Frame final : public VideoFrame {
 public:
  Frame(Video video, std::size_t index) : video_(std::move(video)), index_(index) {}
  double seconds() const override { return video_->frames[index_].seconds; }
  std::uint32_t width() const override { return video_->width; }
  std::uint32_t height() const override { return video_->height; }
  void sample(std::span<const PixelPosition> positions,
              std::span<std::uint32_t> words) const override {
    std::transform(positions.begin(), positions.end(), words.begin(),
                   video_->frames[index_].wordAt);
  }

 private:
  Video video_;
  std::size_t index_;
};

class Reader final : public FrameReader {
 public:
  Reader(Video video, Counts& counts, std::size_t begin, std::size_t end,
         const std::optional<MediaTimeRange>& range)
      : video_(std::move(video)), counts_(counts), next_(begin), end_(end), range_(range) {}

  std::unique_ptr<VideoFrame> next() override {
    while (next_ < std::min(end_, video_->readableFrames)) {
      const std::size_t index = next_++;
      const double seconds = video_->frames[index].seconds;
      const bool isOutside =
          range_ && !(seconds >= range_->begin.seconds() && seconds < range_->end.seconds());
      if (isOutside) continue;
      if (video_->onFrame) video_->onFrame(index);
      ++counts_.framesRead;
      return std::make_unique<Frame>(video_, index);
    }
    return nullptr;
  }
  // Nothing is decoded here.
  bool hasLostPictures() const override { return false; }

 private:
  Video video_;
  Counts& counts_;
  std::size_t next_;
  std::size_t end_;
  std::optional<MediaTimeRange> range_;
};

class Generator final : public FrameGenerator {
 public:
  Generator(Video video, Counts& counts) : video_(std::move(video)), counts_(counts) {}

  std::optional<Image> imageAt(MediaTime time) override {
    const double seconds = time.seconds();
    if (seconds >= video_->durationSeconds) return std::nullopt;
    const VirtualVideoFrame* shown = nullptr;
    for (const VirtualVideoFrame& frame : video_->frames) {
      if (frame.seconds <= seconds) shown = &frame;
    }
    if (shown == nullptr) return std::nullopt;
    ++counts_.imagesMade;
    Image image{video_->width, video_->height, {}};
    for (std::uint32_t y = 0; y < image.height; ++y) {
      for (std::uint32_t x = 0; x < image.width; ++x) {
        const std::uint32_t word = shown->wordAt({x, y});
        for (const int shift : {16, 8, 0, 24}) {
          image.rgba.push_back(static_cast<std::uint8_t>(word >> shift));
        }
      }
    }
    return image;
  }

 private:
  Video video_;
  Counts& counts_;
};

class Asset final : public VideoAsset {
 public:
  Asset(Video video, Counts& counts) : video_(std::move(video)), counts_(counts) {}

  double durationSeconds() const override { return video_->durationSeconds; }

  std::unique_ptr<FrameReader> reader(const std::optional<MediaTimeRange>& range) const override {
    return part(0, video_->frames.size(), range);
  }

  std::vector<std::unique_ptr<FrameReader>> readers(int most) const override {
    std::vector<std::unique_ptr<FrameReader>> stretches;
    const std::size_t all = video_->frames.size();
    const auto count =
        std::clamp<std::size_t>(static_cast<std::size_t>(most), 1, std::max<std::size_t>(all, 1));
    for (std::size_t at = 0; at < count; ++at) {
      auto stretch = part(all * at / count, all * (at + 1) / count, std::nullopt);
      if (!stretch) return {};
      stretches.push_back(std::move(stretch));
    }
    return stretches;
  }

  std::unique_ptr<FrameGenerator> generator() const override {
    return std::make_unique<Generator>(video_, counts_);
  }

 private:
  std::unique_ptr<FrameReader> part(std::size_t begin, std::size_t end,
                                    const std::optional<MediaTimeRange>& range) const {
    if (!video_->canBeginReading) return nullptr;
    ++counts_.readers;
    return std::make_unique<Reader>(video_, counts_, begin, end, range);
  }

  Video video_;
  Counts& counts_;
};

}  // namespace

VirtualVideo VirtualVideo::ofWords(const std::vector<std::uint32_t>& words) {
  VirtualVideo video;
  video.durationSeconds = static_cast<double>(words.size()) / 30;
  for (std::size_t at = 0; at < words.size(); ++at) {
    video.frames.push_back(
        {static_cast<double>(at) / 30, [word = words[at]](PixelPosition) { return word; }});
  }
  return video;
}

VirtualVideo VirtualVideo::ofPlaces(std::size_t frames, std::uint32_t width, std::uint32_t height) {
  VirtualVideo video;
  video.durationSeconds = static_cast<double>(frames) / 30;
  video.width = width;
  video.height = height;
  for (std::size_t at = 0; at < frames; ++at) {
    video.frames.push_back({static_cast<double>(at) / 30, [at](PixelPosition place) {
                              const auto byte = [](std::size_t value) {
                                return static_cast<std::uint32_t>(value & 255);
                              };
                              return 0xFF000000U | byte(at) << 16 | byte(place.x) << 8 |
                                     byte(place.y);
                            }});
  }
  return video;
}

std::unique_ptr<VideoAsset> VirtualVideoAssets::open(const std::string& path,
                                                     std::string* reason) const {
  ++counts.opens;
  const auto found = videos_.find(path);
  if (found == videos_.end() || !found->second->hasTrack) {
    if (reason != nullptr) *reason = "no video in it";
    return nullptr;
  }
  return std::make_unique<Asset>(found->second, counts);
}

}  // namespace halvora
