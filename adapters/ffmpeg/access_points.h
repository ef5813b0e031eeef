// SPDX-License-Identifier: Apache-2.0
// The samples of a track at which decoding may begin. A file marks more of them than there are:
// what is marked in a stream of gradual refresh gives wrong pictures. So the samples themselves are
// looked at. The demuxer and the bytes must outlive it. One thread.
#pragma once

#include <cstddef>
#include <vector>

#include "adapters/ffmpeg/movie_demuxer.h"

namespace halvora {

class AccessPoints {
 public:
  AccessPoints(const MovieFile& file, const MovieDemuxer& demuxer);

  /// The last one at or before that sample. From the first sample on everything can be decoded.
  std::size_t atOrBefore(std::size_t sample) const;
  /// Samples, ascending, that cut the track into `parts` parts of about equally many bytes, each of
  /// which can be decoded for itself and is presented before the next; none where there are no
  /// such.
  std::vector<std::size_t> cuts(int parts) const;

 private:
  enum class Purpose { entry, cut };

  bool serves(std::size_t sample, Purpose purpose) const;
  bool beginsWithPicture(const AVIndexEntry& entry, Purpose purpose) const;
  bool isKeyOfVp9(const AVIndexEntry& entry) const;

  const ByteSource& bytes_;
  const MovieDemuxer& demuxer_;
  AVCodecID codec_;
  /// Whether each packet stands for itself.
  bool isIntraOnly_ = false;
  /// Of the lengths that stand before the parts of a sample; 0 where there are none.
  int lengthBytes_ = 0;
  /// Whether a decoder can begin anywhere but at the first sample.
  bool canEnter_ = false;
};

}  // namespace halvora
