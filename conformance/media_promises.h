// SPDX-License-Identifier: Apache-2.0
// What decoders of pictures and videos and a player of clips promise. Videos are read from files
// that the caller has written; a player works in its own time, which the caller lets pass.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "conformance/promises.h"
#include "halvora/platform/image.h"
#include "halvora/platform/video_asset.h"
#include "halvora/platform/video_player.h"

namespace halvora::conformance {

/// JPEG and PNG, whole and row by row.
std::vector<BrokenPromise> checkPictures(
    const std::function<std::unique_ptr<ImageDecoder>()>& make);

/// What opens videos, and two files for it.
struct VideosUnderTest {
  std::unique_ptr<VideoAssets> assets;  ///< Nothing opened yet.
  /// A file with the bytes of `sampleClip`, or a video that shows the same.
  std::string path;
  /// A file that is there and is no video.
  std::string brokenPath;
};

/// Every frame once, at its time, with its colours; ranges, stretches, single pictures.
std::vector<BrokenPromise> checkVideos(const std::function<VideosUnderTest()>& make);

/// A player in a world whose time the caller lets pass.
struct PlayerUnderTest {
  /// Outlives the player.
  std::shared_ptr<void> world;
  std::unique_ptr<VideoPlayer> player;  ///< Has loaded nothing yet.
  VideoItem clip;                       ///< One that it can play.
  VideoItem broken;                     ///< A file that is no clip.
  /// Lets the player and the run loop work until that is so, or for as long as a machine may take.
  std::function<void(const std::function<bool()>& isSo)> workUntil;
  /// Lets both work for a moment, in which nothing that was begun needs to end.
  std::function<void()> work;
};

/// Readiness, seeks that complete once and in a turn of their own, a player that goes meanwhile.
std::vector<BrokenPromise> checkPlayer(const std::function<PlayerUnderTest()>& make);

}  // namespace halvora::conformance
