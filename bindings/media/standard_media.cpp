// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string_view>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/image/picture_decoder.h"
#include "bindings/c/halvora.h"

namespace {

using halvora::Image;
using halvora::MediaTime;
using halvora::MediaTimeRange;

struct Video {
  std::unique_ptr<halvora::VideoAsset> asset;
  /// Made with the first picture that is asked for.
  std::unique_ptr<halvora::FrameGenerator> generator;
};
using Reader = halvora::FrameReader;
using Frame = halvora::VideoFrame;

/// Nothing but a status goes out, whatever is thrown within.
template <class Act>
int guarded(const Act& act) noexcept {
  try {
    return act() ? HALVORA_OK : HALVORA_NONE;
  } catch (const std::bad_alloc&) {
    return HALVORA_NO_MEMORY;
  } catch (...) {
    return HALVORA_NONE;
  }
}

bool handOver(const std::optional<Image>& image, halvora_take_picture take, void* into) {
  if (!image) return false;
  take(into, image->width, image->height, image->rgba.data());
  return true;
}

MediaTime timeOf(const halvora_time& time) { return {time.value, time.timescale}; }

int picture(void*, const void* bytes, std::size_t count, halvora_take_picture take, void* into) {
  return guarded([&] {
    const std::string_view encoded(static_cast<const char*>(bytes), count);
    return handOver(halvora::PictureDecoder().decode(encoded), take, into);
  });
}

int openVideo(void*, const char* path, void** video, double* seconds) {
  return guarded([&] {
    auto opened = std::make_unique<Video>();
    opened->asset = halvora::FfmpegVideoAssets().open(path);
    if (opened->asset == nullptr) return false;
    *seconds = opened->asset->durationSeconds();
    *video = opened.release();
    return true;
  });
}

void closeVideo(void*, void* video) { delete static_cast<Video*>(video); }

int openReader(void*, void* video, const halvora_time* begin, const halvora_time* end,
               void** reader) {
  return guarded([&] {
    std::optional<MediaTimeRange> range;
    if (begin != nullptr && end != nullptr) range = MediaTimeRange{timeOf(*begin), timeOf(*end)};
    *reader = static_cast<Video*>(video)->asset->reader(range).release();
    return *reader != nullptr;
  });
}

void closeReader(void*, void* reader) { delete static_cast<Reader*>(reader); }

int nextFrame(void*, void* reader, halvora_frame* frame) {
  return guarded([&] {
    std::unique_ptr<Frame> next = static_cast<Reader*>(reader)->next();
    if (next == nullptr) return false;
    *frame = {nullptr, next->seconds(), next->width(), next->height()};
    frame->handle = next.release();
    return true;
  });
}

/// Some at a time, so that nothing is allocated.
void sample(void*, void* frame, const std::uint32_t* places, std::uint32_t* words,
            std::size_t count) {
  constexpr std::size_t kAtATime = 256;
  halvora::PixelPosition positions[kAtATime];
  for (std::size_t begin = 0; begin < count; begin += kAtATime) {
    const std::size_t size = std::min(count - begin, kAtATime);
    for (std::size_t at = 0; at < size; ++at) {
      positions[at] = {places[2 * (begin + at)], places[2 * (begin + at) + 1]};
    }
    static_cast<Frame*>(frame)->sample({positions, size}, {words + begin, size});
  }
}

void freeFrame(void*, void* frame) { delete static_cast<Frame*>(frame); }

int hasLostPictures(void*, void* reader) {
  return static_cast<Reader*>(reader)->hasLostPictures() ? 1 : 0;
}

int pictureAt(void*, void* video, const halvora_time* time, halvora_take_picture take, void* into) {
  return guarded([&] {
    Video& its = *static_cast<Video*>(video);
    if (its.generator == nullptr) its.generator = its.asset->generator();
    return its.generator != nullptr && handOver(its.generator->imageAt(timeOf(*time)), take, into);
  });
}

}  // namespace

int halvora_standard_media(halvora_media* media, size_t size) {
  if (media == nullptr || size < sizeof(halvora_media)) return HALVORA_MISSING;
  halvora_media standard{};
  standard.size = sizeof(standard);
  standard.picture = &picture;
  standard.open_video = &openVideo;
  standard.close_video = &closeVideo;
  standard.open_reader = &openReader;
  standard.close_reader = &closeReader;
  standard.next_frame = &nextFrame;
  standard.sample = &sample;
  standard.free_frame = &freeFrame;
  standard.has_lost_pictures = &hasLostPictures;
  standard.picture_at = &pictureAt;
  std::memset(media, 0, size);
  std::memcpy(media, &standard, sizeof(standard));
  return HALVORA_OK;
}
