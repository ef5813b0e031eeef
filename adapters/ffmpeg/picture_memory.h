// SPDX-License-Identifier: Apache-2.0
// The memory of decoded pictures: a budget that all decoders of one asset share, and the buffers of
// one decoder. Both outlive the decoder for as long as one of its pictures is held. Any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include "adapters/ffmpeg/libav.h"
#include "halvora/platform/image.h"

namespace halvora {

class PictureBudget {
 public:
  static constexpr std::uint64_t kMostBytes = 200ULL * 1024 * 1024;

  /// False, and nothing taken, where it would be too much.
  bool take(std::uint64_t bytes);
  void giveBack(std::uint64_t bytes) { taken_.fetch_sub(bytes); }

  std::uint64_t taken() const { return taken_.load(); }
  /// The most that was ever taken at one time.
  std::uint64_t mostTaken() const { return mostTaken_.load(); }

 private:
  std::atomic<std::uint64_t> taken_ = 0;
  std::atomic<std::uint64_t> mostTaken_ = 0;
};

/// Bytes taken for as long as this lives.
class BudgetShare {
 public:
  /// None where it would be too much.
  static std::unique_ptr<BudgetShare> of(std::shared_ptr<PictureBudget> budget,
                                         std::uint64_t bytes);

  ~BudgetShare() { budget_->giveBack(bytes_); }
  BudgetShare(const BudgetShare&) = delete;
  BudgetShare& operator=(const BudgetShare&) = delete;

 private:
  explicit BudgetShare(std::shared_ptr<PictureBudget> budget) : budget_(std::move(budget)) {}

  std::shared_ptr<PictureBudget> budget_;
  std::uint64_t bytes_ = 0;
};

/// Buffers that a decoder uses again and again; they are never cleared.
class PictureBuffers {
 public:
  explicit PictureBuffers(std::shared_ptr<PictureBudget> budget) : budget_(std::move(budget)) {}
  ~PictureBuffers() { av_buffer_pool_uninit(&pool_); }
  PictureBuffers(const PictureBuffers&) = delete;
  PictureBuffers& operator=(const PictureBuffers&) = delete;

  /// Has that decoder, opened next, ask here for every picture; this must outlive it.
  void serve(AVCodecContext& decoder);
  /// Frees what is not in use, and the rest when it is given back.
  void forget();
  /// Whether a picture was refused, for the budget or its kind.
  bool hasRefused() const { return hasRefused_.load(); }
  /// Whether there was no memory for a picture that the budget allows for. The decoder itself may
  /// make less of that than it is, and go on with the next one.
  bool wasMemoryShort() const { return wasMemoryShort_.load(); }

 private:
  enum class Answer : std::uint8_t { given, refused, noMemory };

  static int getBuffer(AVCodecContext* decoder, AVFrame* frame, int flags) noexcept;
  Answer fill(AVCodecContext& decoder, AVFrame& frame);
  Answer bufferOf(std::size_t bytes, AVBufferRef*& buffer);

  std::shared_ptr<PictureBudget> budget_;
  std::atomic<bool> hasRefused_ = false;
  std::atomic<bool> wasMemoryShort_ = false;
  // Decoding threads ask as well.
  std::mutex mutex_;
  AVBufferPool* pool_ = nullptr;
  /// What the pool asks for room; its own to free.
  struct PoolRoom;
  PoolRoom* room_ = nullptr;
  std::size_t bufferBytes_ = 0;
};

/// What decoding one video takes in pictures.
struct PictureNeed {
  std::uint64_t pixels = 0;
  /// Of one picture; as little, and as much, as the track's description allows for.
  std::uint64_t leastBytes = 0;
  std::uint64_t mostBytes = 0;
  /// So many at once, in a harmless case and in the worst.
  std::uint64_t leastPictures = 0;
  std::uint64_t mostPictures = 0;

  static PictureNeed of(const AVCodecParameters& video);
  /// Whether not even a harmless case fits.
  bool isHopeless() const {
    return pixels > ImageDecoder::kMostPixels ||
           leastBytes * leastPictures > PictureBudget::kMostBytes;
  }
  /// What a decoder of so many threads may come to hold.
  std::uint64_t mostOf(int threads) const {
    return mostBytes * (mostPictures + static_cast<std::uint64_t>(threads) - 1);
  }
};

}  // namespace halvora
