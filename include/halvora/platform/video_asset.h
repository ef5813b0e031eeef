// SPDX-License-Identifier: Apache-2.0
// Video files as a need: the frames of a file's first video track, one after the other or by their
// time. An asset, its readers and its generators are each used by one thread at a time; different
// ones of one asset may be used side by side, and must go before it. Opening is allowed on any
// thread. Where memory is short, all of it throws std::bad_alloc, so that nobody takes that for a
// fault of the video.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "halvora/platform/image.h"
#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// So many timescale-ths of a second.
struct MediaTime {
  std::int64_t value = 0;      ///< May be below 0.
  std::int32_t timescale = 1;  ///< Above 0.

  /// The same in seconds, as near as a double comes.
  double seconds() const { return static_cast<double>(value) / timescale; }
};

/// From `begin` on, up to but not including `end`.
struct MediaTimeRange {
  MediaTime begin;  ///< The first moment.
  MediaTime end;    ///< The first one that is not part of it.
};

/// Columns from the left, rows from the top.
struct PixelPosition {
  std::uint32_t x = 0;  ///< Column, from 0.
  std::uint32_t y = 0;  ///< Row, from 0.
};

/// One decoded picture. Stands alone: it may outlive its reader and move to another thread.
class VideoFrame : public Need {
 public:
  /// When it is presented, in seconds; not a number where the file does not say.
  virtual double seconds() const = 0;
  virtual std::uint32_t width() const = 0;   ///< Pixels, as it is stored.
  virtual std::uint32_t height() const = 0;  ///< Likewise.
  /// Converts those pixels, and no others, to words 0xAARRGGBB. The positions lie inside of the
  /// picture; both spans have one length.
  virtual void sample(std::span<const PixelPosition> positions,
                      std::span<std::uint32_t> words) const = 0;
};

/// Goes through frames, one after the other.
class FrameReader : public Need {
 public:
  /// The next frame as the decoder gives them out; null at the end, and where the file cannot be
  /// read any further. Pictures are as they are stored: not turned.
  virtual std::unique_ptr<VideoFrame> next() = 0;
  /// Whether pictures did not come out that the file should have; known at the end. Either it is
  /// damaged, and they are missing whenever it is read, or whatever decodes it ran short of memory
  /// for a moment and kept that to itself. Of a range it may also say so where pictures at its
  /// edges lean on some outside of it, which nobody asked for.
  virtual bool hasLostPictures() const = 0;
};

/// Makes single pictures of a video, by time.
class FrameGenerator : public Need {
 public:
  /// The whole picture on show at that time, turned as the track asks for; none where there is
  /// none. Times in ascending order cost least.
  virtual std::optional<Image> imageAt(MediaTime time) = 0;
};

/// One video file that could be opened.
class VideoAsset : public Need {
 public:
  /// Of the whole file, its sound included; may be anything, as a file may claim anything.
  virtual double durationSeconds() const = 0;
  /// The frames presented within the range, or all. Null where reading cannot begin.
  virtual std::unique_ptr<FrameReader> reader(
      const std::optional<MediaTimeRange>& range = std::nullopt) const = 0;
  /// At most `most` readers that share all frames among them: each has a stretch of the video that
  /// is presented before those of the readers behind it. Empty where reading cannot begin.
  virtual std::vector<std::unique_ptr<FrameReader>> readers(int most) const = 0;
  /// For single pictures. Never null; one that cannot read has no picture at any time.
  virtual std::unique_ptr<FrameGenerator> generator() const = 0;
};

/// Opens video files.
class VideoAssets : public Need {
 public:
  /// Null where there is no file, no video in it, or one that no safe amount of memory can hold.
  /// `reason`, if given, receives a short text on failure.
  virtual std::unique_ptr<VideoAsset> open(const std::string& path,
                                           std::string* reason = nullptr) const = 0;
};

}  // namespace v0
}  // namespace halvora
