// SPDX-License-Identifier: Apache-2.0
#include "bindings/c/host_media.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace halvora {

namespace {

/// What the host answers when memory is short is thrown on as what it is.
bool isDone(int status) {
  if (status == HALVORA_NO_MEMORY) throw std::bad_alloc();
  return status == HALVORA_OK;
}

/// Pixels that a host hands over within a call.
struct Taken {
  std::optional<Image> image;
  bool lacksMemory = false;

  /// Nothing may be thrown through the host, which is C.
  static void take(void* into, std::uint32_t width, std::uint32_t height,
                   const std::uint8_t* rgba) noexcept {
    Taken& its = *static_cast<Taken*>(into);
    const std::uint64_t pixels = std::uint64_t{width} * height;
    if (rgba == nullptr || pixels == 0 || pixels > ImageDecoder::kMostPixels) return;
    try {
      its.image = Image{width, height, {rgba, rgba + pixels * 4}};
    } catch (const std::bad_alloc&) {
      its.lacksMemory = true;
    }
  }
  std::optional<Image> handOut(int status) && {
    if (lacksMemory) throw std::bad_alloc();
    return isDone(status) ? std::move(image) : std::nullopt;
  }
};

// Each of these is made before the host opens what it is for, so that nothing stays open where
// there is no memory for it. A null is nothing opened.

class Frame final : public VideoFrame {
 public:
  explicit Frame(const halvora_media& media) : media_(media) {}
  ~Frame() override {
    if (its.handle != nullptr) media_.free_frame(media_.context, its.handle);
  }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;
  double seconds() const override { return its.seconds; }
  std::uint32_t width() const override { return its.width; }
  std::uint32_t height() const override { return its.height; }
  void sample(std::span<const PixelPosition> positions,
              std::span<std::uint32_t> words) const override {
    static_assert(sizeof(PixelPosition) == 2 * sizeof(std::uint32_t));
    if (positions.empty()) return;
    media_.sample(media_.context, its.handle, &positions.data()->x, words.data(), positions.size());
  }

  halvora_frame its{};

 private:
  const halvora_media& media_;
};

class Reader final : public FrameReader {
 public:
  explicit Reader(const halvora_media& media) : media_(media) {}
  ~Reader() override {
    if (handle != nullptr) media_.close_reader(media_.context, handle);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  std::unique_ptr<VideoFrame> next() override {
    auto frame = std::make_unique<Frame>(media_);
    const bool isRead = isDone(media_.next_frame(media_.context, handle, &frame->its));
    return isRead && frame->its.handle != nullptr ? std::move(frame) : nullptr;
  }
  bool hasLostPictures() const override {
    return media_.has_lost_pictures != nullptr &&
           media_.has_lost_pictures(media_.context, handle) != 0;
  }

  void* handle = nullptr;

 private:
  const halvora_media& media_;
};

class Generator final : public FrameGenerator {
 public:
  Generator(const halvora_media& media, void* video) : media_(media), video_(video) {}
  std::optional<Image> imageAt(MediaTime time) override {
    if (media_.picture_at == nullptr) return std::nullopt;
    const halvora_time at{time.value, time.timescale};
    Taken taken;
    const int status = media_.picture_at(media_.context, video_, &at, &Taken::take, &taken);
    return std::move(taken).handOut(status);
  }

 private:
  const halvora_media& media_;
  void* const video_;
};

class Asset final : public VideoAsset {
 public:
  explicit Asset(const halvora_media& media) : media_(media) {}
  ~Asset() override {
    if (handle != nullptr) media_.close_video(media_.context, handle);
  }
  Asset(const Asset&) = delete;
  Asset& operator=(const Asset&) = delete;
  double durationSeconds() const override { return seconds; }
  std::unique_ptr<FrameReader> reader(const std::optional<MediaTimeRange>& range) const override {
    const halvora_time begin{range ? range->begin.value : 0, range ? range->begin.timescale : 1};
    const halvora_time end{range ? range->end.value : 0, range ? range->end.timescale : 1};
    auto opened = std::make_unique<Reader>(media_);
    const bool isOpen = isDone(media_.open_reader(media_.context, handle, range ? &begin : nullptr,
                                                  range ? &end : nullptr, &opened->handle));
    return isOpen && opened->handle != nullptr ? std::move(opened) : nullptr;
  }
  /// A phone has one thread, so one reader is as quick as several.
  std::vector<std::unique_ptr<FrameReader>> readers(int /*most*/) const override {
    std::vector<std::unique_ptr<FrameReader>> all;
    if (std::unique_ptr<FrameReader> one = reader(std::nullopt)) all.push_back(std::move(one));
    return all;
  }
  std::unique_ptr<FrameGenerator> generator() const override {
    return std::make_unique<Generator>(media_, handle);
  }

  void* handle = nullptr;
  double seconds = 0;

 private:
  const halvora_media& media_;
};

class Code final : public MessageCode {
 public:
  Code(const Host& host, const ShowKey& key) : host_(host), key_(key) {}
  MessageCode::Code of(std::span<const std::uint8_t> message) override {
    MessageCode::Code code{};
    const halvora_callbacks& callbacks = host_.callbacks();
    callbacks.code(callbacks.context, key_.bytes().data(), message.data(), message.size(),
                   code.data());
    return code;
  }

 private:
  const Host& host_;
  const ShowKey key_;
};

}  // namespace

bool isComplete(const halvora_media& media) {
  const bool readsVideos = media.close_video != nullptr && media.open_reader != nullptr &&
                           media.close_reader != nullptr && media.next_frame != nullptr &&
                           media.sample != nullptr && media.free_frame != nullptr;
  const bool playsClips =
      media.play_clip != nullptr && media.seek_clip != nullptr && media.is_clip_ready != nullptr;
  return media.size >= sizeof(halvora_media) && (media.open_video == nullptr || readsVideos) &&
         (media.load_clip == nullptr || playsClips);
}

std::optional<Image> HostPictures::decode(std::string_view bytes) const {
  if (media_.picture == nullptr) return std::nullopt;
  Taken taken;
  const int status =
      media_.picture(media_.context, bytes.data(), bytes.size(), &Taken::take, &taken);
  return std::move(taken).handOut(status);
}

std::unique_ptr<VideoAsset> HostVideos::open(const std::string& path, std::string* reason) const {
  auto asset = std::make_unique<Asset>(media_);
  if (media_.open_video != nullptr &&
      isDone(media_.open_video(media_.context, path.c_str(), &asset->handle, &asset->seconds)) &&
      asset->handle != nullptr) {
    return asset;
  }
  if (reason != nullptr) {
    *reason = media_.open_video == nullptr ? "the host has no decoder of videos"
                                           : "the host's decoder does not open it";
  }
  return nullptr;
}

void HostPlayer::load(const VideoItem& item) {
  hasClip_ = !item.path.empty();
  if (media_.load_clip == nullptr) return;
  media_.load_clip(media_.context, number_, item.name.c_str(), item.path.c_str());
}

bool HostPlayer::isItemReadyToPlay() const {
  return hasClip_ && media_.load_clip != nullptr &&
         media_.is_clip_ready(media_.context, number_) != 0;
}

void HostPlayer::setPlaying(bool isPlaying) {
  if (media_.load_clip == nullptr) return;
  media_.play_clip(media_.context, number_, isPlaying ? 1 : 0);
}

void HostPlayer::seek(Duration position, Task completion) {
  if (media_.load_clip != nullptr) {
    media_.seek_clip(media_.context, number_, position.count());
  }
  if (completion) loop_.soon(std::move(completion));
}

std::unique_ptr<MessageCode> HostCodes::withKey(const ShowKey& key) const {
  if (host_.callbacks().code == nullptr) return nullptr;
  return std::make_unique<Code>(host_, key);
}

}  // namespace halvora
