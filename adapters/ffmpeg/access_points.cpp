// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/access_points.h"

#include <algorithm>
#include <array>
#include <utility>

namespace halvora {
namespace {

// Before the picture come parameters and messages, never many.
constexpr int kMostUnits = 64;

int lengthBytesOf(const AVCodecParameters& video) {
  // How a decoder's set-up begins where lengths are used, and where it says how long these are.
  const int at = video.codec_id == AV_CODEC_ID_H264 ? 4 : 21;
  if (video.extradata_size <= at || video.extradata[0] != 1) return 0;
  return (video.extradata[at] & 3) + 1;
}

// Units of H.264 with a picture are of types 1 to 5; only 5 resets the decoder.
bool isH264Picture(unsigned int header) { return (header & 31) >= 1 && (header & 31) <= 5; }
bool isH264Reset(unsigned int header) { return (header & 31) == 5; }

// HEVC: pictures are of types 0 to 31; 16 to 21 can be entered at, but only 19 and 20 keep what
// follows from being presented among what comes before.
unsigned int hevcType(unsigned int header) { return header >> 1 & 63; }

}  // namespace

AccessPoints::AccessPoints(const MovieFile& file, const MovieDemuxer& demuxer)
    : bytes_(*file.bytes), demuxer_(demuxer), codec_(demuxer.stream().codecpar->codec_id) {
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec_);
  isIntraOnly_ = descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
  if (codec_ == AV_CODEC_ID_H264 || codec_ == AV_CODEC_ID_HEVC) {
    lengthBytes_ = lengthBytesOf(*demuxer.stream().codecpar);
  }
  // Edits may show a part twice, or a later one first.
  canEnter_ = file.outline.edits <= 1 && file.outline.sampleDescriptions == 1;
}

bool AccessPoints::serves(std::size_t sample, Purpose purpose) const {
  if (sample == 0) return true;
  if (!canEnter_) return false;
  const AVIndexEntry& entry = demuxer_.sample(sample);
  if (isIntraOnly_) return true;
  if ((entry.flags & AVINDEX_KEYFRAME) == 0) return false;
  switch (codec_) {
    case AV_CODEC_ID_H264:
    case AV_CODEC_ID_HEVC:
      return beginsWithPicture(entry, purpose);
    case AV_CODEC_ID_VP9:
      return purpose == Purpose::entry || isKeyOfVp9(entry);
    default:
      return purpose == Purpose::entry;
  }
}

bool AccessPoints::beginsWithPicture(const AVIndexEntry& entry, Purpose purpose) const {
  if (lengthBytes_ == 0) return false;
  const auto length = static_cast<std::size_t>(lengthBytes_);
  const auto size = static_cast<std::uint64_t>(entry.size);
  std::array<std::uint8_t, 4 + 3> head = {};
  std::uint64_t at = 0;
  for (int unit = 0; unit < kMostUnits && at + length + 3 <= size; ++unit) {
    const std::span<std::uint8_t> wanted(head.data(), length + 3);
    const auto place = static_cast<std::uint64_t>(entry.pos) + at;
    if (entry.pos < 0 || bytes_.read(place, wanted) != wanted.size()) return false;
    std::uint64_t bytes = 0;
    for (std::size_t byte = 0; byte < length; ++byte) bytes = bytes << 8 | head[byte];
    const unsigned int header = head[length];
    if (codec_ == AV_CODEC_ID_H264 && isH264Picture(header)) return isH264Reset(header);
    if (codec_ == AV_CODEC_ID_HEVC && hevcType(header) < 32) {
      const unsigned int type = hevcType(header);
      if (purpose == Purpose::entry) return type >= 16 && type <= 21;
      // The slice's second bit says that earlier pictures are not to be shown.
      return (type == 19 || type == 20) && (head[length + 2] & 0x40) == 0;
    }
    at += length + bytes;
  }
  return false;
}

bool AccessPoints::isKeyOfVp9(const AVIndexEntry& entry) const {
  std::array<std::uint8_t, 1> head = {};
  if (entry.pos < 0 || bytes_.read(static_cast<std::uint64_t>(entry.pos), head) != 1) return false;
  // Two bits that are always alike, two for the profile (the highest has one more), then whether an
  // old picture is shown, and whether this one depends on others.
  const bool isHighest = (head[0] & 0x30) == 0x30;
  const int depends = isHighest ? 0x06 : 0x0C;
  return (head[0] & 0xC0) == 0x80 && (head[0] & depends) == 0;
}

std::size_t AccessPoints::atOrBefore(std::size_t sample) const {
  while (sample > 0 && !serves(sample, Purpose::entry)) --sample;
  return sample;
}

std::vector<std::size_t> AccessPoints::cuts(int parts) const {
  const std::size_t count = demuxer_.sampleCount();
  std::vector<std::uint64_t> bytesBefore(count + 1);
  for (std::size_t sample = 0; sample < count; ++sample) {
    bytesBefore[sample + 1] =
        bytesBefore[sample] + static_cast<std::uint64_t>(demuxer_.sample(sample).size);
  }
  const std::uint64_t share = bytesBefore[count] / static_cast<std::uint64_t>(std::max(parts, 1));
  // A cut further off would leave somebody with too little to do.
  const std::uint64_t furthest = share / 4;
  std::vector<std::size_t> found;
  for (int part = 1; part < parts; ++part) {
    const std::uint64_t target = share * static_cast<std::uint64_t>(part);
    const auto distance = [&](std::size_t sample) {
      const std::uint64_t at = bytesBefore[sample];
      return at > target ? at - target : target - at;
    };
    const auto begin = static_cast<std::size_t>(
        std::lower_bound(bytesBefore.begin(), bytesBefore.end(), target) - bytesBefore.begin());
    std::size_t best = count;
    for (std::size_t at = begin; at < count && distance(at) <= furthest; ++at) {
      if (!serves(at, Purpose::cut)) continue;
      best = at;
      break;
    }
    for (std::size_t at = begin; at-- > 1 && distance(at) <= furthest;) {
      if (best < count && distance(at) >= distance(best)) break;
      if (!serves(at, Purpose::cut)) continue;
      best = at;
      break;
    }
    if (best == count || best == 0 || (!found.empty() && best <= found.back())) return {};
    found.push_back(best);
  }
  return found;
}

}  // namespace halvora
