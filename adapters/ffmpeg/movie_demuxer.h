// SPDX-License-Identifier: Apache-2.0
// The samples of a movie's first video track, in decoding order, as packets. A sample's number is
// its place in the track's index. The movie file must outlive it. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "adapters/ffmpeg/libav.h"
#include "adapters/ffmpeg/movie_file.h"

namespace halvora {

class MovieDemuxer {
 public:
  /// Null where the file cannot be read. Throws std::bad_alloc where memory is short, as all that
  /// follow do.
  static std::unique_ptr<MovieDemuxer> open(const MovieFile& file);
  ~MovieDemuxer();

  const AVStream& stream() const { return *stream_; }
  std::size_t sampleCount() const;
  const AVIndexEntry& sample(std::size_t number) const;

  /// Makes that sample the next one; false where it cannot be reached.
  bool seek(std::size_t number);
  /// The number of the next sample, whose packet is then in `packet`; none at the end, and where
  /// the rest of the file cannot be read.
  std::optional<std::size_t> read(AVPacket& packet);
  /// Whether reading ended before a sample that is wholly in the file.
  bool hasBrokenOff() const { return hasBrokenOff_; }

 private:
  struct Input;
  struct InputDeleter {
    void operator()(AVIOContext* context) const;
  };

  explicit MovieDemuxer(const MovieFile& file);
  bool open();
  bool seekNear(std::int64_t timestamp);
  std::optional<std::size_t> numberOf(const AVPacket& packet) const;
  bool readPacket(AVPacket& packet);
  bool isReadable(const AVIndexEntry& entry) const;

  const MovieFile& file_;
  // Freed in this order: the format context lets go of its input.
  std::unique_ptr<Input> input_;
  std::unique_ptr<AVIOContext, InputDeleter> inputContext_;
  LibavPointer<AVFormatContext> format_;
  AVStream* stream_ = nullptr;
  // Samples up to the first one that is not wholly in the file.
  std::size_t readable_ = 0;
  std::size_t next_ = 0;
  // Already read, to find out where a seek led.
  LibavPointer<AVPacket> pending_;
  bool hasPending_ = false;
  bool hasBrokenOff_ = false;
};

}  // namespace halvora
