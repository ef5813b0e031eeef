// SPDX-License-Identifier: Apache-2.0
// Packets in, pictures out: a silent decoder whose pictures are charged to a budget, and that gives
// out none that is damaged or not to be shown. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "adapters/ffmpeg/libav.h"
#include "adapters/ffmpeg/picture_memory.h"

namespace halvora {

/// What the decoders of one asset have in common.
struct MovieVideo {
  LibavPointer<AVCodecParameters> parameters;
  PictureNeed need;
  /// So many samples were in the track's index when the file was opened.
  std::size_t samples = 0;
};

class MovieDecoder {
 public:
  enum class Outcome {
    /// There is a picture.
    picture,
    /// There is none before another packet, or the end, was sent.
    starved,
    /// There will be none any more.
    ended,
  };

  /// Null where nobody can decode that, or the budget does not allow for it. Throws std::bad_alloc
  /// where memory is short, as all that follow do: a picture that is missing for that would look
  /// like one that the video lacks.
  static std::unique_ptr<MovieDecoder> open(const MovieVideo& video, AVRational unit,
                                            const std::shared_ptr<PictureBudget>& budget,
                                            int threads);

  /// To be called while starved; null for the end.
  void send(const AVPacket* packet);
  Outcome receive(AVFrame& frame);
  /// Whether not each packet's picture came out, and once; to be asked at the end. A decoder that
  /// has no memory for a part of a packet says no more than of a part that is damaged: nothing. It
  /// drops the picture, or gives out the one before it again.
  bool hasStrayed() const { return hasStrayed_ || !owed_.empty(); }
  /// Forgets everything, as before a seek.
  void restart();

 private:
  explicit MovieDecoder(const std::shared_ptr<PictureBudget>& budget) : buffers_(budget) {}
  int checked(int result);
  void owe(std::int64_t time);
  void settle(std::int64_t time);

  // Freed in this order: the decoder gives its pictures back to its buffers.
  std::unique_ptr<BudgetShare> share_;
  PictureBuffers buffers_;
  LibavPointer<AVCodecContext> context_;
  bool isEnding_ = false;
  int failuresAtEnd_ = 0;
  // Times of the pictures that are still to come.
  std::vector<std::int64_t> owed_;
  bool hasStrayed_ = false;
};

}  // namespace halvora
