// SPDX-License-Identifier: Apache-2.0
// One video file that was found fit to be decoded. It is made by FfmpegVideoAssets; threads as the
// need has it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "adapters/ffmpeg/display_turn.h"
#include "adapters/ffmpeg/movie_decoder.h"
#include "adapters/ffmpeg/movie_file.h"
#include "adapters/ffmpeg/picture_memory.h"
#include "halvora/platform/video_asset.h"

namespace halvora {

class PictureStream;

class FfmpegAsset final : public VideoAsset {
 public:
  /// Null, and a short `reason` if one is asked for, where the file must not be read. Throws
  /// std::bad_alloc where memory is short, as whatever it gives out does.
  static std::unique_ptr<FfmpegAsset> open(const std::string& path, std::string* reason);

  double durationSeconds() const override;
  std::unique_ptr<FrameReader> reader(
      const std::optional<MediaTimeRange>& range = std::nullopt) const override;
  std::vector<std::unique_ptr<FrameReader>> readers(int most) const override;
  std::unique_ptr<FrameGenerator> generator() const override;

  const PictureBudget& budget() const { return *budget_; }

 private:
  FfmpegAsset() = default;
  const char* prepare();
  std::unique_ptr<PictureStream> stream(int threads = 1) const;

  std::unique_ptr<const MovieFile> file_;
  std::shared_ptr<PictureBudget> budget_ = std::make_shared<PictureBudget>();
  MovieVideo video_;
  DisplayTurn turn_;
};

}  // namespace halvora
