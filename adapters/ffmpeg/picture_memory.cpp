// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/picture_memory.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace halvora {
namespace {

// Vector instructions read whole units, also beyond the last row.
constexpr std::size_t kAlignment = 64;
constexpr int kPlanes = 4;

std::size_t aligned(std::size_t bytes) { return (bytes + kAlignment - 1) & ~(kAlignment - 1); }

// Rows as long as the decoder's instructions need them.
bool rowsOf(AVCodecContext& decoder, const AVFrame& frame, int& height,
            std::array<int, kPlanes>& rows) {
  int width = frame.width;
  height = frame.height;
  std::array<int, AV_NUM_DATA_POINTERS> alignments = {};
  avcodec_align_dimensions2(&decoder, &width, &height, alignments.data());
  const auto format = static_cast<AVPixelFormat>(frame.format);
  const auto isAligned = [&](std::size_t plane) {
    return alignments[plane] == 0 || rows[plane] % alignments[plane] == 0;
  };
  do {
    if (width <= 0 || av_image_fill_linesizes(rows.data(), format, width) < 0) return false;
    // The next width that is a multiple of a larger power of two.
    width += width & ~(width - 1);
  } while (!isAligned(0) || !isAligned(1) || !isAligned(2) || !isAligned(3));
  return true;
}

// Pictures of H.264 that are kept for reference, by the level that the file claims.
std::uint64_t keptByH264(int level, std::uint64_t pixels) {
  static constexpr struct {
    int level;
    std::uint64_t blocks;
  } kLimits[] = {{13, 2376},  {21, 4752},   {30, 8100},   {31, 18000},  {32, 20480},
                 {42, 34816}, {50, 110400}, {52, 184320}, {255, 696320}};
  const auto* limit = std::find_if(std::begin(kLimits), std::end(kLimits),
                                   [level](const auto& row) { return level <= row.level; });
  const std::uint64_t blocks = limit != std::end(kLimits) ? limit->blocks : 696320;
  const std::uint64_t pictureBlocks = std::max<std::uint64_t>(pixels / 256, 1);
  return std::clamp<std::uint64_t>(blocks / pictureBlocks, 1, 16);
}

std::uint64_t keptPictures(const AVCodecParameters& video, std::uint64_t pixels) {
  constexpr std::uint64_t kMost = 16;
  switch (video.codec_id) {
    case AV_CODEC_ID_H264:
      // The fourth byte of the decoder's set-up is the level.
      return video.extradata_size > 3 ? keptByH264(video.extradata[3], pixels) : kMost;
    case AV_CODEC_ID_VP8:
      return 3;
    case AV_CODEC_ID_VP9:
    case AV_CODEC_ID_AV1:
      return 8;
    case AV_CODEC_ID_MPEG4:
    case AV_CODEC_ID_H263:
    case AV_CODEC_ID_MPEG2VIDEO:
    case AV_CODEC_ID_MPEG1VIDEO:
      return 2;
    default:
      return kMost;
  }
}

}  // namespace

bool PictureBudget::take(std::uint64_t bytes) {
  std::uint64_t before = taken_.load();
  do {
    if (bytes > kMostBytes || before > kMostBytes - bytes) return false;
  } while (!taken_.compare_exchange_weak(before, before + bytes));
  std::uint64_t most = mostTaken_.load();
  while (most < before + bytes && !mostTaken_.compare_exchange_weak(most, before + bytes)) {
  }
  return true;
}

std::unique_ptr<BudgetShare> BudgetShare::of(std::shared_ptr<PictureBudget> budget,
                                             std::uint64_t bytes) {
  // The room first: what throws must have taken nothing.
  std::unique_ptr<BudgetShare> share(new BudgetShare(std::move(budget)));
  if (!share->budget_->take(bytes)) return nullptr;
  share->bytes_ = bytes;
  return share;
}

struct PictureBuffers::PoolRoom {
  std::shared_ptr<PictureBudget> budget;
  bool hasRefused = false;

  // What follows is called by the decoder's library, through which no exception may go: it would
  // leave its own locks locked.
  static AVBufferRef* allocate(void* opaque, std::size_t bytes) noexcept {
    auto& room = *static_cast<PoolRoom*>(opaque);
    try {
      std::unique_ptr<BudgetShare> share = BudgetShare::of(room.budget, bytes);
      room.hasRefused = share == nullptr;
      auto* data = share != nullptr ? static_cast<std::uint8_t*>(av_malloc(bytes)) : nullptr;
      if (data == nullptr) return nullptr;
      AVBufferRef* buffer = av_buffer_create(data, bytes, &PoolRoom::release, share.get(), 0);
      if (buffer == nullptr) {
        av_free(data);
      } else {
        static_cast<void>(share.release());
      }
      return buffer;
    } catch (...) {
      return nullptr;
    }
  }
  static void release(void* opaque, std::uint8_t* data) noexcept {
    av_free(data);
    delete static_cast<BudgetShare*>(opaque);
  }
  static void free(void* opaque) noexcept { delete static_cast<PoolRoom*>(opaque); }
};

void PictureBuffers::serve(AVCodecContext& decoder) {
  decoder.opaque = this;
  decoder.get_buffer2 = &getBuffer;
#if FF_API_THREAD_SAFE_CALLBACKS
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  decoder.thread_safe_callbacks = 1;
#pragma GCC diagnostic pop
#endif
}

void PictureBuffers::forget() {
  const std::lock_guard lock(mutex_);
  av_buffer_pool_uninit(&pool_);
}

int PictureBuffers::getBuffer(AVCodecContext* decoder, AVFrame* frame, int flags) noexcept {
  auto& buffers = *static_cast<PictureBuffers*>(decoder->opaque);
  // Such decoders know of no other memory; their share was taken when they were opened.
  if ((decoder->codec->capabilities & AV_CODEC_CAP_DR1) == 0) {
    const int result = avcodec_default_get_buffer2(decoder, frame, flags);
    if (result == AVERROR(ENOMEM)) buffers.wasMemoryShort_ = true;
    return result;
  }
  Answer answer = Answer::noMemory;
  try {
    answer = buffers.fill(*decoder, *frame);
  } catch (...) {
    // As it was said.
  }
  if (answer == Answer::given) return 0;
  (answer == Answer::refused ? buffers.hasRefused_ : buffers.wasMemoryShort_) = true;
  return AVERROR(ENOMEM);
}

PictureBuffers::Answer PictureBuffers::fill(AVCodecContext& decoder, AVFrame& frame) {
  int height = 0;
  std::array<int, kPlanes> rows = {};
  if (!rowsOf(decoder, frame, height, rows)) return Answer::refused;
  std::array<std::ptrdiff_t, kPlanes> strides = {};
  std::copy(rows.begin(), rows.end(), strides.begin());
  std::array<std::size_t, kPlanes> sizes = {};
  const auto format = static_cast<AVPixelFormat>(frame.format);
  if (av_image_fill_plane_sizes(sizes.data(), format, height, strides.data()) < 0) {
    return Answer::refused;
  }
  std::size_t total = kAlignment;
  for (const std::size_t size : sizes) total += size > 0 ? aligned(size) + kAlignment : 0;

  const Answer answer = bufferOf(total, frame.buf[0]);
  if (answer != Answer::given) return answer;
  const auto start = reinterpret_cast<std::uintptr_t>(frame.buf[0]->data);
  std::size_t offset = aligned(start) - start;
  for (std::size_t plane = 0; plane < kPlanes && sizes[plane] > 0; ++plane) {
    frame.data[plane] = frame.buf[0]->data + offset;
    frame.linesize[plane] = rows[plane];
    offset += aligned(sizes[plane]) + kAlignment;
  }
  frame.extended_data = frame.data;
  return Answer::given;
}

PictureBuffers::Answer PictureBuffers::bufferOf(std::size_t bytes, AVBufferRef*& buffer) {
  const std::lock_guard lock(mutex_);
  if (pool_ == nullptr || bufferBytes_ != bytes) {
    av_buffer_pool_uninit(&pool_);
    auto room = std::make_unique<PoolRoom>(PoolRoom{budget_});
    pool_ = av_buffer_pool_init2(bytes, room.get(), &PoolRoom::allocate, &PoolRoom::free);
    if (pool_ == nullptr) return Answer::noMemory;
    room_ = room.release();
    bufferBytes_ = bytes;
  }
  room_->hasRefused = false;
  buffer = av_buffer_pool_get(pool_);
  if (buffer != nullptr) return Answer::given;
  return room_->hasRefused ? Answer::refused : Answer::noMemory;
}

PictureNeed PictureNeed::of(const AVCodecParameters& video) {
  // Decoders round sizes up to whole blocks.
  constexpr int kLongest = 1 << 16;
  const auto width = static_cast<std::uint64_t>(std::clamp(video.width, 0, kLongest));
  const auto height = static_cast<std::uint64_t>(std::clamp(video.height, 0, kLongest));
  const std::uint64_t blocks = aligned(width) * aligned(height);
  PictureNeed need;
  need.pixels = width * height;
  const auto* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(video.format));
  if (format != nullptr) {
    const int bits = av_get_padded_bits_per_pixel(format);
    need.leastBytes = need.pixels * static_cast<std::uint64_t>(bits) / 8;
    need.mostBytes = blocks * static_cast<std::uint64_t>(bits) / 8;
  } else {
    // From gray to four numbers of 16 bits.
    need.leastBytes = need.pixels;
    need.mostBytes = blocks * 8;
  }
  const AVCodecDescriptor* codec = avcodec_descriptor_get(video.codec_id);
  const bool isAlone = codec != nullptr && (codec->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
  // One is handed out while the next is decoded; and what that refers to, or comes before it.
  need.leastPictures =
      isAlone ? 2 : 3 + static_cast<std::uint64_t>(std::clamp(video.video_delay, 0, 16));
  need.mostPictures = isAlone ? 3 : keptPictures(video, need.pixels) + 3;
  return need;
}

}  // namespace halvora
