// SPDX-License-Identifier: Apache-2.0
#include "light/synchronised_video.h"

#include "halvora/platform/files.h"

namespace halvora {

namespace {

constexpr Duration kCrossfade = milliseconds(1000);
constexpr Duration kPoll = milliseconds(10);
constexpr Duration kForwardBuffer = milliseconds(200'000);
/// What a phone needs from the decision to play to the picture.
constexpr int kLead = 820;
constexpr int kCatchUpLead = 2760;
constexpr Duration kCatchUpDelay = milliseconds(2000);

}  // namespace

VideoItem SynchronisedVideo::getPlayerItem(const std::string& name) const {
  std::string path = (folder_ ? *folder_ : std::string()) + "/" + name + ".mp4";
  if (!folder_ || folder_->empty() || !isFile(files_, path)) path.clear();
  return {name, std::move(path)};
}

void SynchronisedVideo::playVideo(const std::string& name) {
  state_.isVideoAPlaying = !state_.isVideoAPlaying;
  const ViewId shown = state_.isVideoAPlaying ? ViewId::playerViewA : ViewId::playerViewB;
  const ViewId other = state_.isVideoAPlaying ? ViewId::playerViewB : ViewId::playerViewA;
  active().load(getPlayerItem(name));
  if (views_.alpha(shown) != 1) {
    views_.animateAlpha({{other, 0}, {shown, 1}}, {.duration = kCrossfade});
  }
  inactive().pause();
  active().setPreferredForwardBuffer(kForwardBuffer);
  videoPlayWait();
}

void SynchronisedVideo::pausePlayers() {
  players_.a.pause();
  players_.b.pause();
}

void SynchronisedVideo::videoPlayWait() {
  timers_.invalidate(state_.videoPlayTimer);
  state_.videoPlayTimer = timers_.every(kPoll, [this] { startVideo(); });
}

void SynchronisedVideo::startVideo() {
  VideoPlayer& player = active();
  if (!player.isReadyToPlay() || !player.isItemReadyToPlay()) return;
  if (state_.currentVideoStatus < 1 || !state_.videoCanPlay) return;
  timers_.invalidate(state_.videoPlayTimer);

  // Whole seconds: every phone drops the fraction alike.
  const int lead = state_.isCatchingUp ? kCatchUpLead : kLead;
  const int seconds = (state_.currentVideoMilliseconds + lead) / 1000;
  if (!isAlive_) isAlive_ = std::make_shared<const bool>(true);
  player.seek(milliseconds(seconds * 1000LL), [this, alive = std::weak_ptr<const bool>(isAlive_)] {
    if (!alive.expired() && !state_.isCatchingUp) active().play();
  });
  if (state_.isCatchingUp) timers_.after(kCatchUpDelay, [this] { active().play(); });
}

}  // namespace halvora
