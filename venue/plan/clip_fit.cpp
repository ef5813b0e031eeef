// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/clip_fit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>

#include "pixelmap/frame_time.h"
#include "venue/base/json_line.h"
#include "venue/base/placed_file.h"
#include "venue/base/progress_bar.h"

namespace halvora {

namespace {

// Of a thirtieth of a second: a picture that comes earlier or later than that is of another frame.
constexpr double kMostOff = 0.4;
// As far as a rate can be told from the times that a file has.
constexpr double kSameRate = 0.02;

CommandResult noVideo(const std::string& file, const std::string& reason) {
  return unusable(file + ": cannot be read as a video" + (reason.empty() ? "" : ": " + reason));
}

std::string sizeText(std::int64_t width, std::int64_t height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

// The mean of what lies below each pixel: the middle of the picture, as large as the canvas's shape
// allows.
class Scaler {
 public:
  Scaler(const Image& image, ArtworkCanvas canvas)
      : image_(image),
        canvas_(canvas),
        step_(std::min(static_cast<double>(image.width) / canvas.width,
                       static_cast<double>(image.height) / canvas.height)),
        left_((image.width - step_ * canvas.width) / 2),
        top_((image.height - step_ * canvas.height) / 2) {}

  void draw(std::vector<std::uint8_t>& rgb) const {
    std::size_t at = 0;
    for (int y = 0; y < canvas_.height; ++y) {
      for (int x = 0; x < canvas_.width; ++x, at += 3) drawPixel(x, y, &rgb[at]);
    }
  }

 private:
  // Those of the picture that begin within the pixel, and one at least.
  static std::pair<std::uint32_t, std::uint32_t> range(double from, double to, std::uint32_t most) {
    const double first = std::clamp(std::floor(from + 0.5), 0.0, most - 1.0);
    const double end = std::clamp(std::floor(to + 0.5), first + 1.0, static_cast<double>(most));
    return {static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(end)};
  }
  void drawPixel(int x, int y, std::uint8_t* pixel) const {
    const auto [left, right] = range(left_ + x * step_, left_ + (x + 1) * step_, image_.width);
    const auto [top, bottom] = range(top_ + y * step_, top_ + (y + 1) * step_, image_.height);
    std::uint64_t sums[3]{};
    for (std::uint32_t row = top; row < bottom; ++row) {
      const std::uint8_t* from = &image_.rgba[(std::size_t{row} * image_.width + left) * 4];
      for (std::uint32_t column = left; column < right; ++column, from += 4) {
        for (int channel = 0; channel < 3; ++channel) sums[channel] += from[channel];
      }
    }
    const std::uint64_t count = std::uint64_t{right - left} * (bottom - top);
    for (int channel = 0; channel < 3; ++channel) {
      pixel[channel] = static_cast<std::uint8_t>((sums[channel] + count / 2) / count);
    }
  }

  const Image& image_;
  ArtworkCanvas canvas_;
  double step_;
  double left_;
  double top_;
};

}  // namespace

double ClipFacts::framesPerSecond() const {
  return pictures > 1 && span > 0 ? static_cast<double>(pictures - 1) / span : 0;
}

std::variant<ClipFacts, CommandResult> readClip(const std::string& file, const Outside& outside) {
  std::string reason;
  const auto asset = outside.videos.open(file, &reason);
  if (!asset) return noVideo(file, reason);
  const auto reader = asset->reader();
  if (!reader) return noVideo(file, "");
  ClipFacts clip;
  clip.seconds = asset->durationSeconds();
  const int expected = pixelMapFrameCount(clip.seconds);
  ProgressBar bar(outside.terminal, "looking at the clip", "pictures",
                  static_cast<std::uint64_t>(expected));
  double first = 0;
  while (const auto frame = reader->next()) {
    if (outside.isInterrupted) return interrupted();
    const double time = frame->seconds();
    if (clip.pictures++ == 0) {
      first = time;
      clip.width = frame->width();
      clip.height = frame->height();
    }
    clip.span = time - first;
    const double number = time * kPixelMapFramesPerSecond;
    clip.isEven = clip.isEven && std::abs(number - std::round(number)) < kMostOff;
    bar.show(clip.pictures);
  }
  clip.hasLostPictures = reader->hasLostPictures();
  if (clip.pictures == 0) return noVideo(file, "it has no picture");
  return clip;
}

std::vector<std::string> lacksOf(const ClipFacts& clip, ArtworkCanvas canvas) {
  std::vector<std::string> lacks;
  const auto width = static_cast<std::int64_t>(clip.width);
  const auto height = static_cast<std::int64_t>(clip.height);
  if (width != canvas.width || height != canvas.height) {
    const bool isSameShape = width * canvas.height == height * canvas.width;
    lacks.push_back("its pictures are " + sizeText(width, height) + ", the hall's canvas is " +
                    sizeText(canvas.width, canvas.height) +
                    (isSameShape ? "" : ", which is of another shape"));
  }
  const double rate = clip.framesPerSecond();
  if (clip.pictures > 1 && std::abs(rate - kPixelMapFramesPerSecond) > kSameRate) {
    lacks.push_back("it has " + levelText(std::round(rate * 1000) / 1000) +
                    " frames a second, phones count 30");
  } else if (!clip.isEven) {
    lacks.emplace_back("its pictures do not come thirty times a second, evenly");
  }
  if (clip.seconds * kPixelMapFramesPerSecond > kMostPixelMapFrames + 0.5) {
    lacks.push_back("it lasts " + levelText(std::round(clip.seconds)) + " seconds, phones count " +
                    std::to_string(kMostPixelMapFrames) + " frames");
  }
  if (clip.hasLostPictures) lacks.emplace_back("some of its pictures are damaged");
  return lacks;
}

std::optional<CommandResult> convertClip(const std::string& file, const std::string& out,
                                         ArtworkCanvas canvas, const Outside& outside) {
  std::string reason;
  const auto asset = outside.videos.open(file, &reason);
  const auto pictures = asset ? asset->generator() : nullptr;
  if (!pictures) return noVideo(file, reason);
  if (outside.movies == nullptr) return failed("this build writes no movies");
  PlacedFile place(out);
  const bool isMade = place.begin();
  const auto movie =
      isMade ? outside.movies->make(place.part(), {canvas.width, canvas.height,
                                                   static_cast<int>(kPixelMapFramesPerSecond)})
             : nullptr;
  if (!movie) return unusable(out + ": cannot be written (--out)");
  const int frames = pixelMapFrameCount(asset->durationSeconds());
  ProgressBar bar(outside.terminal, "converting", "frames", static_cast<std::uint64_t>(frames));
  std::vector<std::uint8_t> rgb(static_cast<std::size_t>(canvas.width) *
                                static_cast<std::size_t>(canvas.height) * 3);
  bool isAny = false;
  for (int frame = 0; frame < frames; ++frame) {
    if (outside.isInterrupted) return interrupted();
    // Where the clip has no picture for a time, the one before stays.
    const auto image = pictures->imageAt(pixelMapFrameTime(frame));
    if (image && image->width > 0 && image->height > 0) {
      Scaler(*image, canvas).draw(rgb);
      isAny = true;
    }
    if (!movie->add(rgb)) return failed(out + ": cannot be written");
    bar.show(static_cast<std::uint64_t>(frame) + 1);
  }
  if (!isAny) return noVideo(file, "none of its pictures can be decoded");
  if (!movie->finish() || !place.place()) return failed(out + ": cannot be written");
  return std::nullopt;
}

}  // namespace halvora
