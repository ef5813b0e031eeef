// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/decoded_frame.h"

extern "C" {
#include <libavutil/mathematics.h>
#include <libavutil/pixdesc.h>
}

#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace halvora {
namespace {

constexpr int kDeepest = 16;
// Where a picture that does not say is taken for high definition.
constexpr int kTallestStandardDefinition = 576;

const ColourMatrix& matrixOf(const AVFrame& frame) {
  static constexpr struct {
    AVColorSpace space;
    const ColourMatrix& matrix;
  } kMatrices[] = {
      {AVCOL_SPC_BT709, kBt709},     {AVCOL_SPC_BT470BG, kBt601},
      {AVCOL_SPC_SMPTE170M, kBt601}, {AVCOL_SPC_SMPTE240M, kSmpte240},
      {AVCOL_SPC_FCC, kFcc},         {AVCOL_SPC_BT2020_NCL, kBt2020},
  };
  for (const auto& row : kMatrices) {
    if (row.space == frame.colorspace) return row.matrix;
  }
  return frame.height > kTallestStandardDefinition ? kBt709 : kBt601;
}

bool isFullRange(const AVFrame& frame) {
  switch (frame.format) {
    case AV_PIX_FMT_YUVJ411P:
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ444P:
      return true;
    default:
      return frame.color_range == AVCOL_RANGE_JPEG;
  }
}

// Formats whose description does not say all that there is to know.
bool isReadable(const AVFrame& frame, const AVPixFmtDescriptor& format) {
  constexpr std::uint64_t kUnreadable = AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM |
                                        AV_PIX_FMT_FLAG_FLOAT | AV_PIX_FMT_FLAG_BAYER;
  if ((format.flags & kUnreadable) != 0 || format.nb_components == 0) return false;
  if (frame.format == AV_PIX_FMT_XYZ12LE || frame.format == AV_PIX_FMT_XYZ12BE ||
      frame.format == AV_PIX_FMT_UYYVYY411) {
    return false;
  }
  for (int at = 0; at < format.nb_components; ++at) {
    const AVComponentDescriptor& component = format.comp[at];
    if (component.depth < 1 || component.depth + component.shift > kDeepest) return false;
    if (frame.data[component.plane] == nullptr) return false;
  }
  return true;
}

ComponentPlace placeOf(const AVFrame& frame, const AVPixFmtDescriptor& format, int index) {
  const AVComponentDescriptor& component = format.comp[index];
  const bool isWide = component.depth + component.shift > 8;
  const bool isBigEndian = (format.flags & AV_PIX_FMT_FLAG_BE) != 0;
  const bool isRgb = (format.flags & AV_PIX_FMT_FLAG_RGB) != 0;
  const bool isShared = !isRgb && format.nb_components >= 3 && (index == 1 || index == 2);
  ComponentPlace place;
  place.first = frame.data[component.plane] + component.offset;
  // A narrow component of a big-endian pixel of two bytes lies in the second.
  if (isBigEndian && !isWide) ++place.first;
  place.row = frame.linesize[component.plane];
  place.step = component.step;
  place.columnShift = isShared ? format.log2_chroma_w : 0;
  place.rowShift = isShared ? format.log2_chroma_h : 0;
  place.lowByte = isWide && isBigEndian ? 1 : 0;
  place.highByte = isWide && !isBigEndian ? 1 : 0;
  place.shift = component.shift;
  place.depth = component.depth;
  return place;
}

std::int64_t durationOf(const AVFrame& frame) {
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(57, 30, 100)
  return frame.duration;
#else
  return frame.pkt_duration;
#endif
}

}  // namespace

std::optional<PixelLayout> pixelLayoutOf(const AVFrame& frame) {
  const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  if (format == nullptr || !isReadable(frame, *format)) return std::nullopt;
  PixelLayout layout;
  if ((format->flags & AV_PIX_FMT_FLAG_PAL) != 0) {
    layout.kind = ColourKind::palette;
    layout.components[0] = placeOf(frame, *format, 0);
    layout.palette = frame.data[1];
    return layout.palette != nullptr ? std::optional(layout) : std::nullopt;
  }
  layout.hasAlpha = (format->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
  const int colours = format->nb_components - (layout.hasAlpha ? 1 : 0);
  for (int at = 0; at < 3; ++at) {
    // The differences of a gray picture count for nothing, so any sample does.
    const ComponentPlace place = placeOf(frame, *format, at < colours ? at : 0);
    layout.components[static_cast<std::size_t>(at)] = place;
    // Bits of a byte are not the byte.
    layout.isWide = layout.isWide || place.depth != 8 || place.shift != 0;
  }
  if (layout.hasAlpha) layout.components[3] = placeOf(frame, *format, colours);
  const int depth = format->comp[0].depth;
  if ((format->flags & AV_PIX_FMT_FLAG_RGB) != 0) {
    layout.kind = ColourKind::rgb;
    layout.colours = rgbWeights(depth, format->comp[1].depth, format->comp[2].depth);
  } else if (colours < 3) {
    layout.colours = grayWeights(isFullRange(frame), depth);
  } else {
    layout.colours = yuvWeights(matrixOf(frame), isFullRange(frame), depth);
  }
  return layout;
}

int compareTimes(std::int64_t value, AVRational unit, MediaTime time) {
  return av_compare_ts(value, unit, time.value, AVRational{1, time.timescale});
}

std::unique_ptr<DecodedFrame> DecodedFrame::of(LibavPointer<AVFrame> frame, AVRational unit) {
  const std::optional<PixelLayout> layout = pixelLayoutOf(*frame);
  if (!layout) return nullptr;
  return std::unique_ptr<DecodedFrame>(new DecodedFrame(std::move(frame), unit, *layout));
}

double DecodedFrame::seconds() const {
  if (!hasTime()) return std::numeric_limits<double>::quiet_NaN();
  return static_cast<double>(frame_->pts) * unit_.num / unit_.den;
}

int DecodedFrame::comparedWith(MediaTime time) const {
  return compareTimes(frame_->pts, unit_, time);
}

int DecodedFrame::endComparedWith(MediaTime time) const {
  std::int64_t end = 0;
  const std::int64_t duration = durationOf(*frame_);
  if (__builtin_add_overflow(frame_->pts, duration, &end)) end = INT64_MAX;
  return compareTimes(end, unit_, time);
}

}  // namespace halvora
