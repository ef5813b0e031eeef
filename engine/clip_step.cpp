// SPDX-License-Identifier: Apache-2.0
// The clip's step of command processing: which clip a look asks of the two players, and how they
// go.
#include <string>

#include "engine/show_fade.h"
#include "engine/steps.h"
#include "halvora/platform/screen.h"
#include "light/brightness.h"
#include "light/timer_set.h"
#include "light/view_stack.h"

namespace halvora {

namespace {

constexpr Duration kVideoFade = milliseconds(500);
constexpr int kLastVideo = 10;

// No look reaches this while clips are never started over the air; it is whole for when they are.
void showVideo(int videoId, int videoStatus, const ClipStage& stage) {
  ViewStack& views = stage.views;
  VideoState& video = stage.state;
  // The status has just been stored, so catching up is dormant: the two never differ here.
  video.isCatchingUp =
      videoId != video.currentVideoId && videoStatus == 1 && video.currentVideoStatus == 0;
  if (views.alpha(ViewId::container) != 1) {
    views.animateAlpha({{ViewId::container, 1}}, {.duration = kShowFade, .name = "Fade Out"});
    stage.screen.setBrightness(1.0);
  }
  if (views.alpha(ViewId::videoBackgroundView) != 1) {
    views.animateAlpha({{ViewId::videoBackgroundView, 1}},
                       {.duration = kShowFade, .name = "Fade Out"});
  }
  if (videoId == video.currentVideoId) return;
  stage.timers.invalidate(video.videoPlayTimer);
  video.currentVideoId = videoId;
  if (videoId <= kLastVideo) stage.players.playVideo(std::to_string(videoId));
}

void hideVideo(bool showEnds, const ClipStage& stage) {
  ViewStack& views = stage.views;
  VideoState& video = stage.state;
  stage.timers.invalidate(video.videoPlayTimer);
  if (views.alpha(ViewId::videoBackgroundView) != 0) {
    views.setAlpha(ViewId::videoBackgroundView, 0);
  }
  video.currentVideoId = 0;
  if (views.alpha(ViewId::playerViewA) == 0 && views.alpha(ViewId::playerViewB) == 0) return;

  const auto completion = [&brightness = stage.brightness, &players = stage.players,
                           showEnds](bool) {
    if (showEnds) brightness.originalScreenBrightness();
    players.pausePlayers();
  };
  if (showEnds) {
    views.animateAlpha({{ViewId::playerViewA, 0}, {ViewId::playerViewB, 0}, {ViewId::container, 0}},
                       {.duration = kVideoFade}, completion);
  } else {
    views.animateAlpha({{ViewId::playerViewA, 0}, {ViewId::playerViewB, 0}},
                       {.duration = kVideoFade}, completion);
  }
}

}  // namespace

void setVideo(const Command& command, const ClipStage& stage) {
  if (command.broadcast.videoId != 0) {
    showVideo(command.broadcast.videoId, command.broadcast.videoStatus, stage);
  } else {
    hideVideo(command.mode == 0, stage);
  }
}

}  // namespace halvora
