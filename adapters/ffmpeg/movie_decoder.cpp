// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/movie_decoder.h"

#include <algorithm>

#include "halvora/platform/image.h"

namespace halvora {
namespace {

// A decoder that has nothing left but errors has ended.
constexpr int kMostFailuresAtEnd = 64;

bool isWhole(const AVFrame& frame) {
  constexpr int kUnwanted = AV_FRAME_FLAG_CORRUPT | AV_FRAME_FLAG_DISCARD;
  return frame.decode_error_flags == 0 && (frame.flags & kUnwanted) == 0;
}

}  // namespace

std::unique_ptr<MovieDecoder> MovieDecoder::open(const MovieVideo& video, AVRational unit,
                                                 const std::shared_ptr<PictureBudget>& budget,
                                                 int threads) {
  const AVCodec* codec = avcodec_find_decoder(video.parameters->codec_id);
  if (codec == nullptr) return nullptr;
  std::unique_ptr<MovieDecoder> decoder(new MovieDecoder(budget));
  decoder->context_ = madeByLibav(avcodec_alloc_context3(codec));
  AVCodecContext* context = decoder->context_.get();
  if (checkedForMemory(avcodec_parameters_to_context(context, video.parameters.get())) < 0) {
    return nullptr;
  }
  context->log_level_offset = kSilence;
  if (context->width <= 0 || context->height <= 0) {
    // Then the video itself says, and no one complains aloud about the half of a size.
    context->width = context->height = context->coded_width = context->coded_height = 0;
  }
  context->pkt_timebase = unit;
  context->thread_count = threads;
  context->thread_type = FF_THREAD_FRAME;
  context->max_pixels = static_cast<std::int64_t>(ImageDecoder::kMostPixels);
  decoder->buffers_.serve(*context);
  if ((codec->capabilities & AV_CODEC_CAP_DR1) == 0) {
    decoder->share_ = BudgetShare::of(budget, video.need.mostOf(threads));
    if (decoder->share_ == nullptr) return nullptr;
  }
  if (checkedForMemory(avcodec_open2(context, codec, nullptr)) < 0) return nullptr;
  return decoder;
}

// Refusing a picture for the budget is told as a want of memory too, because the library knows no
// other word for it.
int MovieDecoder::checked(int result) {
  const bool isShort = result == AVERROR(ENOMEM) && !buffers_.hasRefused();
  if (isShort || buffers_.wasMemoryShort()) {
    buffers_.forget();
    throw std::bad_alloc();
  }
  return result;
}

void MovieDecoder::send(const AVPacket* packet) {
  isEnding_ = packet == nullptr;
  const bool isShown = packet != nullptr && (packet->flags & AV_PKT_FLAG_DISCARD) == 0;
  if (isShown) owe(packet->pts);
  // A packet that cannot be decoded is as good as none.
  static_cast<void>(checked(avcodec_send_packet(context_.get(), packet)));
}

MovieDecoder::Outcome MovieDecoder::receive(AVFrame& frame) {
  while (!buffers_.hasRefused() && failuresAtEnd_ < kMostFailuresAtEnd) {
    const int result = checked(avcodec_receive_frame(context_.get(), &frame));
    if (result == 0 && isWhole(frame) && !buffers_.hasRefused()) {
      settle(frame.pts);
      return Outcome::picture;
    }
    if (result == AVERROR_EOF) break;
    if (result == AVERROR(EAGAIN)) {
      if (isEnding_) break;
      return Outcome::starved;
    }
    if (result < 0 && isEnding_) ++failuresAtEnd_;
  }
  // Others may need the memory before this decoder is used again, if ever.
  buffers_.forget();
  return Outcome::ended;
}

void MovieDecoder::restart() {
  avcodec_flush_buffers(context_.get());
  isEnding_ = false;
  failuresAtEnd_ = 0;
  owed_.clear();
  hasStrayed_ = false;
}

void MovieDecoder::owe(std::int64_t time) {
  // More than any decoder holds back, with a thread for each of many processors.
  constexpr std::size_t kMostOwed = 256;
  if (owed_.size() == kMostOwed) hasStrayed_ = true;
  if (!hasStrayed_) owed_.push_back(time);
}

void MovieDecoder::settle(std::int64_t time) {
  if (hasStrayed_) return;
  const auto owed = std::find(owed_.begin(), owed_.end(), time);
  if (owed == owed_.end()) {
    hasStrayed_ = true;
  } else {
    owed_.erase(owed);
  }
}

}  // namespace halvora
