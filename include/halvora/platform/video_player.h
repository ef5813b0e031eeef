// SPDX-License-Identifier: Apache-2.0
// Two players that loop clips and seek exactly. A clip that is missing or broken never becomes
// ready; nothing is reported. Main thread.
#pragma once

#include <string>

#include "halvora/platform/need.h"
#include "halvora/platform/task.h"
#include "halvora/platform/time.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// A clip by the name it was asked for with, and where its file lies; an empty path for one that is
/// not there.
struct VideoItem {
  std::string name;  ///< Such as "3".
  std::string path;  ///< Absolute; empty where there is no file.
};

/// One player of clips.
class VideoPlayer : public Need {
 public:
  /// Drops what was loaded and loads this clip, to loop without end once it plays.
  virtual void load(const VideoItem& item) = 0;
  /// Goes on from where it stands, as soon as the clip can be played.
  virtual void play() = 0;
  /// Stands still at once, its picture with it.
  virtual void pause() = 0;
  /// The player itself can play.
  virtual bool isReadyToPlay() const = 0;
  /// The clip can be played from any position.
  virtual bool isItemReadyToPlay() const = 0;
  /// How much of the clip to hold ready ahead of what plays.
  virtual void setPreferredForwardBuffer(Duration duration) = 0;
  /// Goes to that exact position, without waiting for it to be drawn, and then calls `completion`
  /// in a turn of its own.
  virtual void seek(Duration position, Task completion) = 0;
};

/// The two players between which clips change.
struct VideoPlayers {
  VideoPlayer& a;  ///< Drawn where a face finds `kClipA`.
  VideoPlayer& b;  ///< Drawn where a face finds `kClipB`.
};

}  // namespace v0
}  // namespace halvora
