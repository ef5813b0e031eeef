// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/ffmpeg_movies.h"

#include <cstddef>

#include "adapters/ffmpeg/libav.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace halvora {

namespace {

struct OutputDeleter {
  void operator()(AVFormatContext* output) const {
    if (output->pb != nullptr) avio_closep(&output->pb);
    avformat_free_context(output);
  }
};

// BT.709 in limited range, to 16 bits of fraction.
struct Weights {
  int red;
  int green;
  int blue;
  int base;
};
constexpr Weights kLuma{11966, 40254, 4064, 16};
constexpr Weights kBlueDifference{-6596, -22189, 28784, 128};
constexpr Weights kRedDifference{28784, -26145, -2639, 128};

std::uint8_t weighted(const Weights& weights, int red, int green, int blue) {
  const int sum = weights.red * red + weights.green * green + weights.blue * blue;
  return static_cast<std::uint8_t>((sum + (1 << 15)) / (1 << 16) + weights.base);
}

// Chroma is the mean of four pixels.
void convert(const std::uint8_t* rgb, int width, int height, AVFrame& frame) {
  const auto at = [&](int x, int y) {
    return rgb + (static_cast<std::ptrdiff_t>(y) * width + x) * 3;
  };
  for (int y = 0; y < height; ++y) {
    std::uint8_t* luma = frame.data[0] + static_cast<std::ptrdiff_t>(y) * frame.linesize[0];
    for (int x = 0; x < width; ++x) {
      const std::uint8_t* pixel = at(x, y);
      luma[x] = weighted(kLuma, pixel[0], pixel[1], pixel[2]);
    }
  }
  for (int y = 0; y < height; y += 2) {
    std::uint8_t* blue = frame.data[1] + static_cast<std::ptrdiff_t>(y / 2) * frame.linesize[1];
    std::uint8_t* red = frame.data[2] + static_cast<std::ptrdiff_t>(y / 2) * frame.linesize[2];
    for (int x = 0; x < width; x += 2) {
      int mean[3];
      for (int channel = 0; channel < 3; ++channel) {
        mean[channel] = (at(x, y)[channel] + at(x + 1, y)[channel] + at(x, y + 1)[channel] +
                         at(x + 1, y + 1)[channel] + 2) /
                        4;
      }
      blue[x / 2] = weighted(kBlueDifference, mean[0], mean[1], mean[2]);
      red[x / 2] = weighted(kRedDifference, mean[0], mean[1], mean[2]);
    }
  }
}

class Writer final : public MovieWriter {
 public:
  bool open(const std::string& path, const MovieFormat& format) {
    width_ = format.width;
    height_ = format.height;
    AVFormatContext* output = nullptr;
    if (avformat_alloc_output_context2(&output, nullptr, "mp4", path.c_str()) < 0) return false;
    output_.reset(output);
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    if (codec == nullptr) codec = avcodec_find_encoder(AV_CODEC_ID_H264);
    if (codec == nullptr) codec = avcodec_find_encoder(AV_CODEC_ID_MPEG4);
    if (codec == nullptr || !openEncoder(*codec, format)) return false;
    stream_ = avformat_new_stream(output, nullptr);
    if (stream_ == nullptr) return false;
    stream_->time_base = encoder_->time_base;
    stream_->avg_frame_rate = encoder_->framerate;
    if (avcodec_parameters_from_context(stream_->codecpar, encoder_.get()) < 0) return false;
    if (avio_open(&output->pb, path.c_str(), AVIO_FLAG_WRITE) < 0) return false;
    isGood_ = avformat_write_header(output, nullptr) >= 0;
    return isGood_;
  }

  bool add(std::span<const std::uint8_t> rgb) override {
    const auto size = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 3;
    isGood_ = isGood_ && rgb.size() == size && av_frame_make_writable(frame_.get()) >= 0;
    if (!isGood_) return false;
    convert(rgb.data(), width_, height_, *frame_);
    frame_->pts = next_++;
    return isGood_ = avcodec_send_frame(encoder_.get(), frame_.get()) >= 0 && drain();
  }

  bool finish() override {
    isGood_ = isGood_ && avcodec_send_frame(encoder_.get(), nullptr) >= 0 && drain() &&
              av_write_trailer(output_.get()) >= 0;
    if (output_ && output_->pb != nullptr) isGood_ = avio_closep(&output_->pb) >= 0 && isGood_;
    return isGood_;
  }

 private:
  bool openEncoder(const AVCodec& codec, const MovieFormat& format) {
    encoder_.reset(avcodec_alloc_context3(&codec));
    frame_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (!encoder_ || !frame_ || !packet_) return false;
    encoder_->log_level_offset = kSilence;
    encoder_->width = frame_->width = format.width;
    encoder_->height = frame_->height = format.height;
    encoder_->pix_fmt = AV_PIX_FMT_YUV420P;
    frame_->format = AV_PIX_FMT_YUV420P;
    encoder_->time_base = {1, format.framesPerSecond};
    encoder_->framerate = {format.framesPerSecond, 1};
    encoder_->color_range = AVCOL_RANGE_MPEG;
    encoder_->colorspace = AVCOL_SPC_BT709;
    encoder_->color_primaries = AVCOL_PRI_BT709;
    encoder_->color_trc = AVCOL_TRC_BT709;
    encoder_->gop_size = format.framesPerSecond;
    encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    // A seat is a few pixels: coarser than this, neighbours run into each other.
    if (av_opt_set(encoder_->priv_data, "crf", "18", 0) < 0) encoder_->bit_rate = 8'000'000;
    static_cast<void>(av_opt_set(encoder_->priv_data, "preset", "veryfast", 0));
    return avcodec_open2(encoder_.get(), &codec, nullptr) >= 0 &&
           av_frame_get_buffer(frame_.get(), 0) >= 0;
  }

  bool drain() {
    for (;;) {
      const int result = avcodec_receive_packet(encoder_.get(), packet_.get());
      if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return true;
      if (result < 0) return false;
      av_packet_rescale_ts(packet_.get(), encoder_->time_base, stream_->time_base);
      packet_->stream_index = stream_->index;
      packet_->duration = av_rescale_q(1, encoder_->time_base, stream_->time_base);
      if (av_interleaved_write_frame(output_.get(), packet_.get()) < 0) return false;
    }
  }

  int width_ = 0;
  int height_ = 0;
  std::int64_t next_ = 0;
  bool isGood_ = false;
  std::unique_ptr<AVFormatContext, OutputDeleter> output_;
  LibavPointer<AVCodecContext> encoder_;
  LibavPointer<AVFrame> frame_;
  LibavPointer<AVPacket> packet_;
  AVStream* stream_ = nullptr;
};

}  // namespace

std::unique_ptr<MovieWriter> FfmpegMovies::make(const std::string& path,
                                                const MovieFormat& format) const {
  const bool isPossible = format.width >= 2 && format.height >= 2 && format.width % 2 == 0 &&
                          format.height % 2 == 0 && format.framesPerSecond > 0;
  auto writer = std::make_unique<Writer>();
  if (!isPossible || !writer->open(path, format)) return nullptr;
  return writer;
}

}  // namespace halvora
