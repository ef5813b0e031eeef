// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_video_player.h"

#include <QAudioOutput>
#include <QCoreApplication>
#include <QMediaPlayer>
#include <QUrl>
#include <QVideoFrame>
#include <QVideoSink>
#include <utility>

#include "adapters/qt/qt_media_support.h"

namespace halvora {

class QtVideoPlayer::Media {
 public:
  explicit Media(QtVideoPlayer& owner) {
    player.setVideoSink(&sink);
    player.setAudioOutput(&sound);
    // Should the show's clock be late, the clip goes round by itself.
    player.setLoops(QMediaPlayer::Infinite);
    QObject::connect(&player, &QMediaPlayer::mediaStatusChanged, &context_,
                     [&owner](QMediaPlayer::MediaStatus status) {
                       if (status == QMediaPlayer::LoadedMedia) owner.loaded();
                       if (status == QMediaPlayer::EndOfMedia) owner.ended();
                     });
    QObject::connect(&player, &QMediaPlayer::errorOccurred, &context_,
                     [&owner] { owner.failed(); });
    QObject::connect(&sink, &QVideoSink::videoFrameChanged, &context_,
                     [this, &owner](const QVideoFrame& shown) {
                       frame = shown;
                       picture = {};
                       emit owner.changed();
                     });
  }

  Duration length() const { return milliseconds(player.duration()); }
  void goTo(Duration position) {
    player.setPosition(std::chrono::duration_cast<std::chrono::milliseconds>(position).count());
  }
  void open(const std::string& path) {
    frame = {};
    picture = {};
    player.setSource(QUrl());
    if (!path.empty()) player.setSource(QUrl::fromLocalFile(QString::fromStdString(path)));
  }

  QVideoFrame frame;
  /// The frame converted, if somebody has asked for it.
  QImage picture;
  QVideoSink sink;
  QAudioOutput sound;
  QMediaPlayer player;

 private:
  /// Ends the connections before anything else goes: a player that goes still has things to say.
  QObject context_;
};

QtVideoPlayer::QtVideoPlayer(RunLoop& loop) : loop_(loop) {
  // The library's threads must have ended before the process does.
  connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
    load({});
    media_.reset();
  });
}

QtVideoPlayer::~QtVideoPlayer() = default;

void QtVideoPlayer::load(const VideoItem& item) {
  item_ = item;
  isLoaded_ = false;
  isPlaying_ = false;
  hasFailed_ = false;
  position_ = {};
  retry_.invalidate();
  round_.invalidate();
  if (!media_ && !item_.path.empty() && canPlayMedia()) media_ = std::make_unique<Media>(*this);
  if (media_) media_->open(item_.path);
  emit changed();
}

bool QtVideoPlayer::isItemReadyToPlay() const { return isLoaded_ && media_->player.isSeekable(); }

void QtVideoPlayer::loaded() {
  if (std::exchange(isLoaded_, true)) return;
  if (isPlaying_) {
    begin();
  } else {
    // Has the first picture decoded; only then can the clip be played from any position.
    media_->player.pause();
  }
}

void QtVideoPlayer::ended() {
  if (!isPlaying_) return;
  media_->goTo({});
  media_->player.play();
}

// A library that has just been loaded may fail once without a reason.
void QtVideoPlayer::failed() {
  isLoaded_ = false;
  round_.invalidate();
  if (std::exchange(hasFailed_, true)) return;
  retry_ = Timer(loop_, loop_.soon([this] { media_->open(item_.path); }));
}

void QtVideoPlayer::play() {
  if (std::exchange(isPlaying_, true) || !isLoaded_) return;
  begin();
}

void QtVideoPlayer::pause() {
  round_.invalidate();
  if (!std::exchange(isPlaying_, false) || !isLoaded_) return;
  position_ = milliseconds(media_->player.position());
  media_->player.pause();
}

void QtVideoPlayer::seek(Duration position, Task completion) {
  if (isLoaded_) {
    const Duration length = media_->length();
    position_ = length > Duration::zero() ? position % length : position;
    media_->goTo(position_);
    if (isPlaying_) begin();
  }
  loop_.soon(std::move(completion));
}

// The library's own rounds take a little longer each than the clip; beginning every round on the
// show's clock keeps all phones together.
void QtVideoPlayer::begin() {
  media_->player.play();
  const Duration length = media_->length();
  round_.invalidate();
  if (length <= Duration::zero()) return;
  round_ = Timer(loop_, loop_.after(length - position_, [this, length] {
    media_->goTo({});
    round_ = Timer(loop_, loop_.every(length, [this] { media_->goTo({}); }));
  }));
}

QImage QtVideoPlayer::picture() {
  if (!media_ || !media_->frame.isValid()) return {};
  if (media_->picture.isNull()) media_->picture = media_->frame.toImage();
  return media_->picture;
}

}  // namespace halvora
