// SPDX-License-Identifier: Apache-2.0
// One of the two players of clips, on Qt's media library, which is loaded with the first clip and
// not before: most shows never play one. A machine that cannot play media has a player that never
// becomes ready. Owned by QtPlatform; main thread.
#pragma once

#include <QImage>
#include <memory>

#include "faces/qt/qt_clip_picture.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/video_player.h"

namespace halvora {

class QtVideoPlayer final : public QtClipPicture, public VideoPlayer {
  Q_OBJECT

 public:
  explicit QtVideoPlayer(RunLoop& loop);
  ~QtVideoPlayer() override;

  void load(const VideoItem& item) override;
  void play() override;
  void pause() override;
  bool isReadyToPlay() const override { return media_ != nullptr; }
  bool isItemReadyToPlay() const override;
  /// Clips are files: reading ahead is the library's business.
  void setPreferredForwardBuffer(Duration /*duration*/) override {}
  /// A position beyond the clip's end is one within its repetitions.
  void seek(Duration position, Task completion) override;

  QImage picture() override;

 private:
  class Media;

  void loaded();
  void failed();
  void ended();
  void begin();

  RunLoop& loop_;
  VideoItem item_;
  std::unique_ptr<Media> media_;
  bool isLoaded_ = false;
  bool isPlaying_ = false;
  bool hasFailed_ = false;
  /// Where the clip stands, or stood when it began to play.
  Duration position_{};
  Timer retry_;
  /// The end of the first round, then of every other one.
  Timer round_;
};

}  // namespace halvora
