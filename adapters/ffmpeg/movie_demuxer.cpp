// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/movie_demuxer.h"

#include <algorithm>
#include <cstdio>

namespace halvora {
namespace {

constexpr int kInputBuffer = 32 * 1024;
// A packet is not a picture, but takes memory as well; no picture of a sensible size needs more.
constexpr int kMostPacketBytes = 200 * 1024 * 1024;

// Format contexts have no level of their own for messages, so a copy of their class lends them one,
// in a field that only muxers use.
void silence(AVFormatContext& context) {
  static const AVClass kSilentClass = [] {
    AVClass silent = *avformat_get_class();
    silent.log_level_offset_offset =
        static_cast<int>(offsetof(AVFormatContext, metadata_header_padding));
    return silent;
  }();
  context.av_class = &kSilentClass;
  context.metadata_header_padding = kSilence;
}

int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) noexcept {
  return AVERROR(EACCES);
}

}  // namespace

struct MovieDemuxer::Input {
  const MovieFile& file;
  std::uint64_t at = 0;

  static int read(void* opaque, std::uint8_t* buffer, int size) noexcept {
    auto& input = *static_cast<Input*>(opaque);
    const std::size_t count =
        input.file.read(input.at, {buffer, static_cast<std::size_t>(std::max(size, 0))});
    input.at += count;
    return count > 0 ? static_cast<int>(count) : AVERROR_EOF;
  }

  static std::int64_t seek(void* opaque, std::int64_t offset, int whence) noexcept {
    auto& input = *static_cast<Input*>(opaque);
    const auto size = static_cast<std::int64_t>(input.file.bytes->size());
    if ((whence & AVSEEK_SIZE) != 0) return size;
    const int from = whence & ~AVSEEK_FORCE;
    if (from == SEEK_CUR) offset += static_cast<std::int64_t>(input.at);
    if (from == SEEK_END) offset += size;
    if (offset < 0) return AVERROR(EINVAL);
    input.at = static_cast<std::uint64_t>(offset);
    return offset;
  }
};

void MovieDemuxer::InputDeleter::operator()(AVIOContext* context) const {
  av_freep(&context->buffer);
  avio_context_free(&context);
}

MovieDemuxer::MovieDemuxer(const MovieFile& file)
    : file_(file), input_(new Input{file}), pending_(madeByLibav(av_packet_alloc())) {}

MovieDemuxer::~MovieDemuxer() = default;

std::unique_ptr<MovieDemuxer> MovieDemuxer::open(const MovieFile& file) {
  std::unique_ptr<MovieDemuxer> demuxer(new MovieDemuxer(file));
  if (!demuxer->open()) return nullptr;
  return demuxer;
}

bool MovieDemuxer::open() {
  const AVInputFormat* format = av_find_input_format("mov");
  if (format == nullptr) return false;
  auto* buffer = static_cast<unsigned char*>(av_malloc(kInputBuffer));
  if (buffer == nullptr) throw std::bad_alloc();
  inputContext_.reset(avio_alloc_context(buffer, kInputBuffer, 0, input_.get(), &Input::read,
                                         nullptr, &Input::seek));
  if (inputContext_ == nullptr) {
    av_free(buffer);
    throw std::bad_alloc();
  }
  AVFormatContext* context = madeByLibav(avformat_alloc_context()).release();
  silence(*context);
  context->pb = inputContext_.get();
  context->io_open = &refuseToOpen;
  // The times of a packet are the file's own, not what a parser makes of them.
  context->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;
  // On failure the context is freed.
  if (checkedForMemory(avformat_open_input(&context, "", format, nullptr)) < 0) return false;
  format_.reset(context);
  for (unsigned int index = 0; index < format_->nb_streams; ++index) {
    AVStream* stream = format_->streams[index];
    const bool isVideo = stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
                         (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
    const bool isChosen = stream_ == nullptr && isVideo &&
                          static_cast<std::uint32_t>(stream->id) == file_.outline.trackId;
    if (isChosen) stream_ = stream;
    stream->discard = isChosen ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
  }
  if (stream_ == nullptr || stream_->time_base.num <= 0 || stream_->time_base.den <= 0)
    return false;
  while (readable_ < sampleCount() && isReadable(sample(readable_))) ++readable_;
  return true;
}

bool MovieDemuxer::isReadable(const AVIndexEntry& entry) const {
  const std::uint64_t fileSize = file_.bytes->size();
  const auto begin = static_cast<std::uint64_t>(entry.pos);
  return entry.pos >= 0 && entry.size <= kMostPacketBytes && begin <= fileSize &&
         static_cast<std::uint64_t>(entry.size) <= fileSize - begin;
}

std::size_t MovieDemuxer::sampleCount() const {
  return static_cast<std::size_t>(avformat_index_get_entries_count(stream_));
}

const AVIndexEntry& MovieDemuxer::sample(std::size_t number) const {
  return *avformat_index_get_entry(stream_, static_cast<int>(number));
}

bool MovieDemuxer::readPacket(AVPacket& packet) {
  for (;;) {
    av_packet_unref(&packet);
    if (checkedForMemory(av_read_frame(format_.get(), &packet)) < 0) return false;
    // The file has become shorter since it was opened.
    if ((packet.flags & AV_PKT_FLAG_CORRUPT) != 0) return false;
    if (packet.stream_index == stream_->index) return true;
  }
}

std::optional<std::size_t> MovieDemuxer::read(AVPacket& packet) {
  if (hasPending_) {
    hasPending_ = false;
    av_packet_unref(&packet);
    av_packet_move_ref(&packet, pending_.get());
  } else if (next_ >= readable_) {
    return std::nullopt;
  } else if (!readPacket(packet)) {
    hasBrokenOff_ = true;
    return std::nullopt;
  }
  const std::size_t number = next_++;
  const std::size_t count = sampleCount();
  packet.duration = number + 1 < count ? sample(number + 1).timestamp - sample(number).timestamp
                                       : std::int64_t{file_.outline.lastSampleDuration};
  return number;
}

// Decoding times ascend in the index, but need not differ.
std::optional<std::size_t> MovieDemuxer::numberOf(const AVPacket& packet) const {
  std::size_t first = 0;
  for (std::size_t behind = sampleCount(); first < behind;) {
    const std::size_t middle = first + (behind - first) / 2;
    if (sample(middle).timestamp < packet.dts) {
      first = middle + 1;
    } else {
      behind = middle;
    }
  }
  for (; first < sampleCount() && sample(first).timestamp == packet.dts; ++first) {
    if (sample(first).pos == packet.pos) return first;
  }
  return std::nullopt;
}

bool MovieDemuxer::seekNear(std::int64_t timestamp) {
  hasPending_ = false;
  if (checkedForMemory(av_seek_frame(format_.get(), stream_->index, timestamp,
                                     AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY)) < 0) {
    return false;
  }
  if (!readPacket(*pending_)) return false;
  const auto number = numberOf(*pending_);
  if (!number) return false;
  next_ = *number;
  hasPending_ = true;
  return true;
}

bool MovieDemuxer::seek(std::size_t number) {
  if (number == next_) return true;
  if (number >= readable_) return false;
  // The demuxer takes the time for one of presentation, and may land on either side.
  const std::size_t earlier = number - std::min<std::size_t>(number, 64);
  const bool isReached = (seekNear(sample(number).timestamp) && next_ <= number) ||
                         (seekNear(sample(earlier).timestamp) && next_ <= number) ||
                         (seekNear(INT64_MIN / 2) && next_ <= number);
  for (; isReached && next_ < number; ++next_) {
    if (!hasPending_ && !readPacket(*pending_)) return false;
    hasPending_ = false;
  }
  return isReached;
}

}  // namespace halvora
