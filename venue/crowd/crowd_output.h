// SPDX-License-Identifier: Apache-2.0
// Where a crowd's pictures go: a movie, a folder of pictures, or one contact sheet, by the name
// that the user gives. What is made appears under its name only when it is whole. One thread.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "halvora/platform/movie_writer.h"
#include "venue/base/outside.h"

namespace halvora {

struct CrowdOutputFormat {
  int width = 1280;
  int height = 720;
  int framesPerSecond = 30;
  /// How many frames will come at most.
  std::int64_t frames = 0;
};

class CrowdOutput {
 public:
  virtual ~CrowdOutput() = default;
  /// Whether the next frame is wanted; one that is not need not be drawn.
  virtual bool wantsNext() const { return true; }
  /// Every frame in turn, those that are not wanted with an empty span. False once anything failed.
  virtual bool add(std::span<const std::uint8_t> rgb) = 0;
  /// Makes what came so far a whole file. False where anything failed, now or before.
  virtual bool finish() = 0;
};

/// Which of so many frames are on a sheet: evenly spread.
class SheetTiles {
 public:
  static constexpr std::int64_t kMost = 24;

  explicit SheetTiles(std::int64_t frames);
  bool wantsNext() const;
  void next(bool isTaken);

 private:
  std::int64_t frames_;
  std::int64_t tiles_;
  std::int64_t taken_ = 0;
  std::int64_t next_ = 0;
};

/// Either may be null.
struct CrowdOutputTools {
  const MovieWriters* movies = nullptr;
  PictureEncoder encodePicture = nullptr;
};

enum class CrowdOutputKind : std::uint8_t {
  movie,
  sheet,
  folder,
  /// A file of a kind that is not written.
  other,
};

/// By the end of the name, in small or large letters: ".mp4" is a movie, ".png" a sheet. What is
/// neither, nor the name of another kind of picture or movie, is a folder.
CrowdOutputKind crowdOutputKindOf(const std::string& path);

/// Null where it cannot be made, or what writes such files is missing.
std::unique_ptr<CrowdOutput> makeCrowdOutput(const std::string& path,
                                             const CrowdOutputFormat& format,
                                             const CrowdOutputTools& tools);

}  // namespace halvora
