// SPDX-License-Identifier: Apache-2.0
#include "venue/base/interruptible_videos.h"

#include <utility>

namespace halvora {

namespace {

using Flag = const std::atomic<bool>;

class Reader final : public FrameReader {
 public:
  Reader(std::unique_ptr<FrameReader> reader, Flag& isInterrupted)
      : reader_(std::move(reader)), isInterrupted_(isInterrupted) {}
  std::unique_ptr<VideoFrame> next() override { return isInterrupted_ ? nullptr : reader_->next(); }
  bool hasLostPictures() const override { return reader_->hasLostPictures(); }

 private:
  std::unique_ptr<FrameReader> reader_;
  Flag& isInterrupted_;
};

class Generator final : public FrameGenerator {
 public:
  Generator(std::unique_ptr<FrameGenerator> generator, Flag& isInterrupted)
      : generator_(std::move(generator)), isInterrupted_(isInterrupted) {}
  std::optional<Image> imageAt(MediaTime time) override {
    return isInterrupted_ ? std::nullopt : generator_->imageAt(time);
  }

 private:
  std::unique_ptr<FrameGenerator> generator_;
  Flag& isInterrupted_;
};

class Asset final : public VideoAsset {
 public:
  Asset(std::unique_ptr<VideoAsset> asset, Flag& isInterrupted)
      : asset_(std::move(asset)), isInterrupted_(isInterrupted) {}

  double durationSeconds() const override { return asset_->durationSeconds(); }
  std::unique_ptr<FrameReader> reader(const std::optional<MediaTimeRange>& range) const override {
    return wrapped(asset_->reader(range));
  }
  std::vector<std::unique_ptr<FrameReader>> readers(int most) const override {
    auto readers = asset_->readers(most);
    for (auto& reader : readers) reader = wrapped(std::move(reader));
    return readers;
  }
  std::unique_ptr<FrameGenerator> generator() const override {
    auto generator = asset_->generator();
    if (!generator) return nullptr;
    return std::make_unique<Generator>(std::move(generator), isInterrupted_);
  }

 private:
  std::unique_ptr<FrameReader> wrapped(std::unique_ptr<FrameReader> reader) const {
    if (!reader) return nullptr;
    return std::make_unique<Reader>(std::move(reader), isInterrupted_);
  }

  std::unique_ptr<VideoAsset> asset_;
  Flag& isInterrupted_;
};

}  // namespace

std::unique_ptr<VideoAsset> InterruptibleVideos::open(const std::string& path,
                                                      std::string* reason) const {
  auto asset = videos_.open(path, reason);
  if (!asset) return nullptr;
  return std::make_unique<Asset>(std::move(asset), isInterrupted_);
}

}  // namespace halvora
