// SPDX-License-Identifier: Apache-2.0
// The pictures of a stretch of a video, one after the other: a demuxer and a decoder of its own.
// What it was opened from must outlive it; its pictures stand alone. One thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "adapters/ffmpeg/access_points.h"
#include "adapters/ffmpeg/decoded_frame.h"
#include "adapters/ffmpeg/movie_decoder.h"
#include "adapters/ffmpeg/movie_demuxer.h"

namespace halvora {

class PictureStream {
 public:
  /// Null where the file cannot be read, or the budget does not allow for another decoder. Throws
  /// std::bad_alloc where memory is short, as all that follow do.
  static std::unique_ptr<PictureStream> open(const MovieFile& file, const MovieVideo& video,
                                             const std::shared_ptr<PictureBudget>& budget,
                                             int threads);

  const MovieDemuxer& demuxer() const { return *demuxer_; }
  const AccessPoints& accessPoints() const { return accessPoints_; }
  /// The sample that is read next.
  std::size_t nextSample() const { return nextSample_; }

  /// Begins anew at that access point; false where it cannot be reached.
  bool start(std::size_t sample);
  /// Begins anew where everything presented from that time on is still to come.
  bool startFor(MediaTime time);
  /// The first sample that is decoded after that time, and so presented after it as well.
  std::size_t firstSampleAfter(MediaTime time) const;
  /// Ends before that sample.
  void endBefore(std::size_t sample) { end_ = sample; }

  /// Null at the end.
  std::unique_ptr<DecodedFrame> next();
  /// Whether something between the last start and the end has not come out as the file has it.
  bool hasLostPictures() const {
    return hasOtherIndex_ || demuxer_->hasBrokenOff() || decoder_->hasStrayed();
  }

 private:
  PictureStream(const MovieFile& file, std::unique_ptr<MovieDemuxer> demuxer,
                std::unique_ptr<MovieDecoder> decoder)
      : demuxer_(std::move(demuxer)),
        accessPoints_(file, *demuxer_),
        decoder_(std::move(decoder)),
        packet_(madeByLibav(av_packet_alloc())) {}

  void feed();

  std::unique_ptr<MovieDemuxer> demuxer_;
  AccessPoints accessPoints_;
  std::unique_ptr<MovieDecoder> decoder_;
  LibavPointer<AVPacket> packet_;
  bool hasPacket_ = false;
  // A demuxer that runs short of memory makes do with a part of the index.
  bool hasOtherIndex_ = false;
  std::size_t nextSample_ = 0;
  std::optional<std::size_t> end_;
};

}  // namespace halvora
