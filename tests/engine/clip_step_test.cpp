// SPDX-License-Identifier: Apache-2.0
// The clip's step of command processing with a clip in it. No packet gets one past the step that
// drops it, so the step is run by itself.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/steps.h"
#include "light/brightness.h"
#include "light/synchronised_video.h"
#include "light/timer_set.h"
#include "light/view_stack.h"

namespace halvora {
namespace {

class ClipStep : public testing::Test, private ViewObserver {
 protected:
  ClipStep() { views.setObserver(this); }

  void take(int videoId, int status = 1, std::uint32_t mode = 1) {
    Witness engine(life);
    Command command{.broadcast = {}, .engine = engine};
    command.broadcast.videoId = static_cast<std::uint8_t>(videoId);
    command.broadcast.videoStatus = static_cast<std::uint8_t>(status);
    command.mode = mode;
    state.currentVideoStatus = status;
    setVideo(command, {state, views, timers, video, phone.screen, brightness});
  }
  std::vector<std::string> loaded() {
    std::vector<std::string> names;
    for (const VideoEvent& event : phone.videoLog.drain()) {
      if (event.act == VideoAct::load) names.push_back(std::string(1, event.player) + event.item);
    }
    return names;
  }

  ExactJsonReader json;
  VirtualPhone phone{json};
  VideoState state;
  ColourState colour;
  TimerSet timers{phone.loop};
  ViewStack views{timers};
  BrightnessRamps brightness{phone.screen, timers, colour};
  SynchronisedVideo video{state, views, timers, phone.files, phone.videoPlayers};
  Witnessed life;
  std::vector<std::string> animations;

 private:
  void alphaAnimationStarted(const AnimationTiming& timing) override {
    animations.push_back(std::string(timing.name) + " " +
                         std::to_string(timing.duration.count() / 1000));
  }
};

TEST_F(ClipStep, AClipFadesTheShowAndItsBackgroundInAndIsPrepared) {
  take(3);
  EXPECT_EQ(views.alpha(ViewId::container), 1);
  EXPECT_EQ(views.alpha(ViewId::videoBackgroundView), 1);
  // The show, its background, and the change of players.
  EXPECT_EQ(animations, (std::vector<std::string>{"Fade Out 1000", "Fade Out 1000", " 1000"}));
  EXPECT_EQ(phone.screen.log.entries, std::vector<double>{1.0});
  EXPECT_EQ(loaded(), std::vector<std::string>{"A3"});
  EXPECT_EQ(state.currentVideoId, 3);
}

TEST_F(ClipStep, TheSameClipAgainChangesNothing) {
  take(3);
  loaded();
  const TimerId poller = state.videoPlayTimer;
  take(3);
  EXPECT_EQ(loaded(), std::vector<std::string>{});
  EXPECT_EQ(state.videoPlayTimer, poller);
  EXPECT_EQ(phone.screen.log.entries.size(), 1U);
}

TEST_F(ClipStep, ASecondClipIsPreparedOnTheOtherPlayer) {
  take(3);
  take(10);
  EXPECT_EQ(loaded(), (std::vector<std::string>{"A3", "B10"}));
  EXPECT_EQ(views.alpha(ViewId::playerViewA), 0);
  EXPECT_EQ(views.alpha(ViewId::playerViewB), 1);
}

TEST_F(ClipStep, VideoId11ChangesTheIdAndPlaysNothing) {
  take(3);
  loaded();
  take(11);
  EXPECT_EQ(state.currentVideoId, 11);
  EXPECT_EQ(state.videoPlayTimer, 0U);
  EXPECT_EQ(loaded(), std::vector<std::string>{});
}

TEST_F(ClipStep, CatchingUpStaysDormantBecauseTheStatusIsStoredFirst) {
  take(3, 1);
  EXPECT_FALSE(state.isCatchingUp);
  state.isCatchingUp = true;
  take(4, 0);
  EXPECT_FALSE(state.isCatchingUp);
}

TEST_F(ClipStep, NoClipFadesThePlayersOutAndThenPausesThem) {
  take(3);
  phone.loop.runFor(milliseconds(1000));
  phone.videoLog.drain();
  take(0);
  EXPECT_EQ(views.alpha(ViewId::videoBackgroundView), 0);
  EXPECT_EQ(views.alpha(ViewId::playerViewA), 0);
  EXPECT_EQ(state.currentVideoId, 0);
  phone.loop.runFor(milliseconds(499));
  EXPECT_TRUE(phone.videoLog.entries.empty());
  phone.loop.runFor(milliseconds(1));
  ASSERT_EQ(phone.videoLog.entries.size(), 2U);
  EXPECT_EQ(phone.videoLog.entries[0].act, VideoAct::pause);
  EXPECT_EQ(phone.videoLog.entries[1].player, 'B');
}

}  // namespace
}  // namespace halvora
