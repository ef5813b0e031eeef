// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/ffmpeg_asset.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "adapters/ffmpeg/frame_generator.h"
#include "adapters/ffmpeg/movie_demuxer.h"
#include "adapters/ffmpeg/picture_stream.h"
#include "adapters/ffmpeg/stretch_reader.h"

namespace halvora {
namespace {

DisplayTurn turnOf(const AVStream& stream) {
  std::array<std::int32_t, 9> matrix = {};
  std::size_t size = 0;
  const std::uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
  if (data == nullptr || size < sizeof matrix) return {};
  std::memcpy(matrix.data(), data, sizeof matrix);
  return DisplayTurn::ofMatrix(matrix);
}

// What only the video itself says: how large its pictures are, of what kind, and how many are held
// back until they are in order. Nothing is decoded for it.
PictureNeed needOf(const AVCodecParameters& video, const AVPacket& packet) {
  const auto found = madeByLibav(avcodec_parameters_alloc());
  const auto context = madeByLibav(avcodec_alloc_context3(nullptr));
  const bool isCopied = checkedForMemory(avcodec_parameters_copy(found.get(), &video)) >= 0 &&
                        checkedForMemory(avcodec_parameters_to_context(context.get(), &video)) >= 0;
  AVCodecParserContext* parser = isCopied ? av_parser_init(video.codec_id) : nullptr;
  const bool canParse = parser != nullptr;
  if (canParse) {
    context->log_level_offset = kSilence;
    parser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
    std::uint8_t* data = nullptr;
    int size = 0;
    av_parser_parse2(parser, context.get(), &data, &size, packet.data, packet.size, packet.pts,
                     packet.dts, packet.pos);
    if (parser->format != AV_PIX_FMT_NONE) found->format = parser->format;
    found->width = std::max(video.width, parser->coded_width);
    found->height = std::max(video.height, parser->coded_height);
    found->video_delay = std::max(video.video_delay, context->has_b_frames);
  }
  av_parser_close(parser);
  return PictureNeed::of(canParse ? *found : video);
}

}  // namespace

std::unique_ptr<FfmpegAsset> FfmpegAsset::open(const std::string& path, std::string* reason) {
  std::unique_ptr<FfmpegAsset> asset(new FfmpegAsset);
  asset->file_ = MovieFile::open(path, reason);
  if (asset->file_ == nullptr) return nullptr;
  const char* fault = asset->prepare();
  if (fault == nullptr) return asset;
  if (reason != nullptr) *reason = fault;
  return nullptr;
}

const char* FfmpegAsset::prepare() {
  constexpr const char* kUnreadable = "cannot be read";
  const auto demuxer = MovieDemuxer::open(*file_);
  const auto packet = madeByLibav(av_packet_alloc());
  video_.parameters = madeByLibav(avcodec_parameters_alloc());
  AVCodecParameters* video = video_.parameters.get();
  if (demuxer == nullptr ||
      checkedForMemory(avcodec_parameters_copy(video, demuxer->stream().codecpar)) < 0) {
    return kUnreadable;
  }
  video_.samples = demuxer->sampleCount();
  const AVCodec* codec = avcodec_find_decoder(video->codec_id);
  if (codec == nullptr) return "no decoder for its video";
  video_.need = demuxer->read(*packet) ? needOf(*video, *packet) : PictureNeed::of(*video);
  const bool isChargedInAdvance = (codec->capabilities & AV_CODEC_CAP_DR1) == 0;
  if (video_.need.isHopeless() ||
      (isChargedInAdvance && video_.need.mostOf(1) > PictureBudget::kMostBytes)) {
    return "its pictures are too large";
  }
  turn_ = turnOf(demuxer->stream());
  return nullptr;
}

double FfmpegAsset::durationSeconds() const { return file_->outline.durationSeconds; }

std::unique_ptr<PictureStream> FfmpegAsset::stream(int threads) const {
  return PictureStream::open(*file_, video_, budget_, threads);
}

std::unique_ptr<FrameReader> FfmpegAsset::reader(const std::optional<MediaTimeRange>& range) const {
  return StretchReader::of(stream(), range);
}

std::vector<std::unique_ptr<FrameReader>> FfmpegAsset::readers(int most) const {
  constexpr int kMostReaders = 64;
  int parts = std::clamp(most, 1, kMostReaders);
  const auto fits = [&] {
    return video_.need.mostOf(1) * static_cast<std::uint64_t>(parts) <= PictureBudget::kMostBytes;
  };
  while (parts > 1 && !fits()) --parts;
  std::vector<std::unique_ptr<FrameReader>> readers;
  std::unique_ptr<PictureStream> first = stream();
  if (first == nullptr) return readers;
  std::vector<std::size_t> begins = first->accessPoints().cuts(parts);
  if (begins.empty()) {
    // One decoder with several threads does as well, where threads help it.
    if (parts > 1) {
      first.reset();
      first = stream(parts);
      // The system may have no threads to give.
      if (first == nullptr) first = stream();
    }
    auto only = StretchReader::of(std::move(first), std::nullopt);
    if (only != nullptr) readers.push_back(std::move(only));
    return readers;
  }
  begins.insert(begins.begin(), 0);
  for (std::size_t part = 0; part < begins.size(); ++part) {
    auto own = part == 0 ? std::move(first) : stream();
    const bool isLast = part + 1 == begins.size();
    if (own == nullptr || !own->start(begins[part])) return {};
    if (!isLast) own->endBefore(begins[part + 1]);
    readers.push_back(StretchReader::of(std::move(own), std::nullopt));
  }
  return readers;
}

std::unique_ptr<FrameGenerator> FfmpegAsset::generator() const {
  std::unique_ptr<PictureStream> own = stream();
  if (own == nullptr) return nullptr;
  return std::make_unique<ImageGenerator>(std::move(own), budget_, turn_);
}

}  // namespace halvora
