// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/picture_stream.h"

#include <utility>

namespace halvora {

std::unique_ptr<PictureStream> PictureStream::open(const MovieFile& file, const MovieVideo& video,
                                                   const std::shared_ptr<PictureBudget>& budget,
                                                   int threads) {
  auto demuxer = MovieDemuxer::open(file);
  if (demuxer == nullptr) return nullptr;
  auto decoder = MovieDecoder::open(video, demuxer->stream().time_base, budget, threads);
  if (decoder == nullptr) return nullptr;
  std::unique_ptr<PictureStream> stream(
      new PictureStream(file, std::move(demuxer), std::move(decoder)));
  stream->hasOtherIndex_ = stream->demuxer_->sampleCount() != video.samples;
  return stream;
}

bool PictureStream::start(std::size_t sample) {
  hasPacket_ = false;
  if (sample == 0 && demuxer_->sampleCount() == 0) return false;
  if (!demuxer_->seek(sample)) return false;
  decoder_->restart();
  nextSample_ = sample;
  return true;
}

std::size_t PictureStream::firstSampleAfter(MediaTime time) const {
  std::size_t first = 0;
  for (std::size_t behind = demuxer_->sampleCount(); first < behind;) {
    const std::size_t middle = first + (behind - first) / 2;
    const bool isAfter =
        compareTimes(demuxer_->sample(middle).timestamp, demuxer_->stream().time_base, time) > 0;
    if (isAfter) {
      behind = middle;
    } else {
      first = middle + 1;
    }
  }
  return first;
}

bool PictureStream::startFor(MediaTime time) {
  std::size_t sample = firstSampleAfter(time);
  if (sample > 0) --sample;
  for (;;) {
    sample = accessPoints_.atOrBefore(sample);
    if (!start(sample)) return false;
    if (sample == 0) return true;
    hasPacket_ = demuxer_->read(*packet_).has_value();
    if (!hasPacket_) return false;
    // It may be decoded before that time, and presented after it.
    const bool isPresented = compareTimes(packet_->pts, demuxer_->stream().time_base, time) <= 0;
    if (isPresented) return true;
    --sample;
  }
}

void PictureStream::feed() {
  const bool isAtEnd = end_ && nextSample_ >= *end_;
  if (!isAtEnd && !hasPacket_) hasPacket_ = demuxer_->read(*packet_).has_value();
  if (isAtEnd || !hasPacket_) {
    decoder_->send(nullptr);
    return;
  }
  // A sample of no bytes stands for the picture before it; to a decoder it would mean the end.
  if (packet_->size > 0) decoder_->send(packet_.get());
  hasPacket_ = false;
  ++nextSample_;
}

std::unique_ptr<DecodedFrame> PictureStream::next() {
  LibavPointer<AVFrame> frame = madeByLibav(av_frame_alloc());
  for (;;) {
    switch (decoder_->receive(*frame)) {
      case MovieDecoder::Outcome::picture:
        return DecodedFrame::of(std::move(frame), demuxer_->stream().time_base);
      case MovieDecoder::Outcome::starved:
        feed();
        break;
      case MovieDecoder::Outcome::ended:
        return nullptr;
    }
  }
}

}  // namespace halvora
