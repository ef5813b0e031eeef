// SPDX-License-Identifier: Apache-2.0
// Packets in, pictures out: a silent decoder whose pictures are charged to a budget, and that gives
// out none that is damaged or not to be shown. One thread.
#pragma once

#include <memory>

#include "adapters/ffmpeg/libav.h"
#include "adapters/ffmpeg/picture_memory.h"

namespace halvora {

/// What the decoders of one asset have in common.
struct MovieVideo {
  LibavPointer<AVCodecParameters> parameters;
  PictureNeed need;
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
  /// Forgets everything, as before a seek.
  void restart();

 private:
  explicit MovieDecoder(const std::shared_ptr<PictureBudget>& budget) : buffers_(budget) {}
  int checked(int result);

  // Freed in this order: the decoder gives its pictures back to its buffers.
  std::unique_ptr<BudgetShare> share_;
  PictureBuffers buffers_;
  LibavPointer<AVCodecContext> context_;
  bool isEnding_ = false;
  int failuresAtEnd_ = 0;
};

}  // namespace halvora
