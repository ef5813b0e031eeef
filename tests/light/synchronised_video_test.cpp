// SPDX-License-Identifier: Apache-2.0
#include "light/synchronised_video.h"

#include <memory>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_media.h"
#include "tests/light/light_room.h"

namespace halvora {
namespace {

const std::string kFolder = "/assets";

/// The clips alone, with a show that lets them play: status 1, the first seconds over. An event is
/// what a player was asked to do, or the start of a fade of its view.
class VideoRoom final : private ViewObserver {
 public:
  VideoRoom() {
    views.setObserver(this);
    loop.onTurnEnded([this] { note(); });
    for (const char* name : {"3.mp4", "5.mp4"}) files.put(kFolder + "/" + name, "");
    make();
    state.currentVideoStatus = 1;
    state.videoCanPlay = true;
  }

  void make() {
    video = std::make_unique<SynchronisedVideo>(state, views, timers, files, players);
    video->build(std::make_shared<const std::string>(kFolder));
  }
  Events play(const std::string& name) {
    video->playVideo(name);
    return take();
  }
  Events runFor(long long ms) {
    loop.runFor(milliseconds(ms));
    return take();
  }
  Events take() {
    note();
    return std::exchange(events, {});
  }
  /// Where a clip begins when the show is at that position.
  Events startAt(int position) {
    state.currentVideoMilliseconds = position;
    play("3");
    return runFor(10);
  }
  /// Turns of the next second; a running poller takes 100.
  std::uint64_t turnsOfASecond() {
    const std::uint64_t before = loop.turns();
    loop.runFor(milliseconds(1000));
    return loop.turns() - before;
  }

  VirtualFiles files;
  VirtualRunLoop loop;
  TimerSet timers{loop};
  ViewStack views{timers};
  VideoState state;
  Log<VideoEvent> log;
  VirtualVideoPlayer a{loop, 'A', log};
  VirtualVideoPlayer b{loop, 'B', log};
  const VideoPlayers players{a, b};
  std::unique_ptr<SynchronisedVideo> video;
  Events events;

 private:
  void alphaChanged(ViewId view, double alpha, Duration duration) override {
    note();
    add(std::string(rowOf(view).name) + (alpha == 1 ? " in " : " out ") + textOf(duration));
  }
  void note() {
    for (const VideoEvent& event : log.drain()) {
      const std::string player(1, event.player);
      switch (event.act) {
        case VideoAct::load:
          add(player + " load " + event.item);
          break;
        case VideoAct::play:
          add(player + " play");
          break;
        case VideoAct::pause:
          add(player + " pause");
          break;
        case VideoAct::seek:
          add(player + " seek " + textOf(event.position));
          break;
      }
    }
  }
  void add(const std::string& what) { events.push_back(textOf(loop.now()) + " " + what); }
};

TEST(PlayVideo, FirstClipIsPreparedOnAAndCrossfadesInASecond) {
  VideoRoom room;
  EXPECT_EQ(room.play("3"),
            (Events{"0 A load 3", "0 playerViewB out 1000", "0 playerViewA in 1000", "0 B pause"}));
  EXPECT_TRUE(room.state.isVideoAPlaying);
  EXPECT_EQ(room.a.item().path, kFolder + "/3.mp4");
  EXPECT_EQ(room.a.forwardBuffer, milliseconds(200'000));
}

TEST(PlayVideo, SecondClipIsPreparedOnTheOtherPlayerWhileTheFirstPlays) {
  VideoRoom room;
  room.play("3");
  room.runFor(2000);
  EXPECT_TRUE(room.a.isPlaying);
  EXPECT_EQ(room.play("5"), (Events{"2000 B load 5", "2000 playerViewA out 1000",
                                    "2000 playerViewB in 1000", "2000 A pause"}));
  EXPECT_FALSE(room.state.isVideoAPlaying);
  EXPECT_EQ(room.b.forwardBuffer, milliseconds(200'000));
  EXPECT_EQ(room.runFor(20), (Events{"2010 B seek 0", "2010 B play"}));
}

TEST(PlayVideo, PlayersTakeTurns) {
  VideoRoom room;
  for (const char* player : {"A", "B", "A", "B"}) {
    EXPECT_EQ(room.play("3").front(), std::string("0 ") + player + " load 3");
  }
}

TEST(PlayVideo, FullyVisibleViewIsNotFaded) {
  VideoRoom room;
  room.views.setAlpha(ViewId::playerViewA, 1);
  room.take();
  EXPECT_EQ(room.play("3"), (Events{"0 A load 3", "0 B pause"}));
  room.views.setAlpha(ViewId::playerViewB, 0.99);
  room.take();
  EXPECT_EQ(room.play("5"),
            (Events{"0 B load 5", "0 playerViewA out 1000", "0 playerViewB in 1000", "0 A pause"}));
}

TEST(PlayVideo, PauseConcernsAThenB) {
  VideoRoom room;
  room.video->pausePlayers();
  EXPECT_EQ(room.take(), (Events{"0 A pause", "0 B pause"}));
}

TEST(StartVideo, SeeksAndThenPlaysOnce) {
  VideoRoom room;
  EXPECT_EQ(room.startAt(0), (Events{"10 A seek 0", "10 A play"}));
  EXPECT_EQ(room.state.videoPlayTimer, TimerId{0});
  EXPECT_EQ(room.runFor(20000), Events{});
}

TEST(StartVideo, GoesToWholeSecondsOfThePositionAndTheLead) {
  for (const auto& [position, seconds] : {std::pair{0, 0},
                                          {179, 0},
                                          {180, 1},
                                          {1179, 1},
                                          {12340, 13},
                                          {12990, 13},
                                          {13179, 13},
                                          {13180, 14},
                                          {255 * 60000 + 255 * 1000 + 2550, 15558}}) {
    VideoRoom room;
    EXPECT_EQ(room.startAt(position).front(), "10 A seek " + std::to_string(seconds * 1000))
        << position;
  }
}

TEST(StartVideo, PositionThatMovesOnDoesNotMoveTheClip) {
  VideoRoom room;
  room.startAt(12340);
  room.state.currentVideoMilliseconds = 60000;
  EXPECT_EQ(room.runFor(5000), Events{});
}

TEST(StartVideo, TakesThePositionOfTheMomentItStarts) {
  VideoRoom room;
  room.state.videoCanPlay = false;
  room.startAt(12340);
  room.state.currentVideoMilliseconds = 20000;
  room.state.videoCanPlay = true;
  EXPECT_EQ(room.runFor(10).front(), "20 A seek 20000");
}

struct WaitCase {
  const char* what;
  void (*set)(VideoRoom& room, bool ready);
};

constexpr WaitCase kWaits[] = {
    {"the player", [](VideoRoom& room, bool ready) { room.a.isPlayerReady = ready; }},
    {"the clip", [](VideoRoom& room, bool ready) { room.a.isItemReady = ready; }},
    {"the status", [](VideoRoom& room, bool ready) { room.state.currentVideoStatus = ready; }},
    {"the first seconds", [](VideoRoom& room, bool ready) { room.state.videoCanPlay = ready; }},
};

TEST(StartVideo, LooksEvery10MillisecondsWhetherItMay) {
  for (const WaitCase& wait : kWaits) {
    SCOPED_TRACE(wait.what);
    VideoRoom room;
    wait.set(room, false);
    room.play("3");
    EXPECT_EQ(room.runFor(7300), Events{});
    EXPECT_EQ(room.turnsOfASecond(), 100U);
    room.loop.runFor(milliseconds(5));
    wait.set(room, true);
    EXPECT_EQ(room.runFor(4), Events{});
    EXPECT_EQ(room.runFor(1), (Events{"8310 A seek 0", "8310 A play"}));
    EXPECT_EQ(room.turnsOfASecond(), 0U);
  }
}

TEST(StartVideo, OfTheOtherPlayerDoesNotCount) {
  VideoRoom room;
  room.b.isPlayerReady = false;
  room.b.isItemReady = false;
  room.play("3");
  EXPECT_EQ(room.runFor(10), (Events{"10 A seek 0", "10 A play"}));
}

TEST(StartVideo, NeedsAStatusOf1OrMore) {
  for (const int status : {1, 2, 255}) {
    VideoRoom room;
    room.state.currentVideoStatus = status;
    EXPECT_FALSE(room.startAt(0).empty()) << status;
  }
  for (const int status : {0, -1}) {
    VideoRoom room;
    room.state.currentVideoStatus = status;
    EXPECT_TRUE(room.startAt(0).empty()) << status;
  }
}

TEST(StartVideo, WithoutAClipDoesNothing) {
  VideoRoom room;
  room.video->startVideo();
  EXPECT_EQ(room.take(), Events{});
}

TEST(MissingClip, PollsUntilItIsReplaced) {
  VideoRoom room;
  EXPECT_EQ(room.play("4").front(), "0 A load 4");
  EXPECT_EQ(room.a.item().path, "");
  room.runFor(60'000);
  EXPECT_EQ(room.turnsOfASecond(), 100U);
  room.play("5");
  EXPECT_EQ(room.runFor(10), (Events{"61010 B seek 0", "61010 B play"}));
  room.runFor(1000);
  EXPECT_EQ(room.turnsOfASecond(), 0U);
}

TEST(MissingClip, PollsUntilItsTimerIsInvalidated) {
  VideoRoom room;
  room.play("4");
  room.runFor(1500);
  room.timers.invalidate(room.state.videoPlayTimer);
  EXPECT_EQ(room.turnsOfASecond(), 0U);
}

TEST(MissingClip, IsAlsoAFolderOfThatNameAndAnyNameWithoutAssets) {
  VideoRoom room;
  room.files.put(kFolder + "/6.mp4/inside", "");
  room.play("6");
  EXPECT_EQ(room.a.item().path, "");
  room.video->build(std::make_shared<const std::string>());
  room.play("3");
  EXPECT_EQ(room.b.item().path, "");
  EXPECT_EQ(room.b.item().name, "3");
}

TEST(PlayVideo, WhileAnotherWaitsLeavesOnePoller) {
  VideoRoom room;
  room.state.videoCanPlay = false;
  room.play("3");
  room.runFor(1005);
  room.play("5");
  room.runFor(1000);
  EXPECT_EQ(room.turnsOfASecond(), 100U);
  room.state.videoCanPlay = true;
  EXPECT_EQ(room.runFor(5000), (Events{"3015 B seek 0", "3015 B play"}));
}

TEST(CatchingUp, LeadsFurtherAndPlaysTwoSecondsLater) {
  for (const auto& [position, seconds] :
       {std::pair{0, 2}, {239, 2}, {240, 3}, {12340, 15}, {13239, 15}, {13240, 16}}) {
    VideoRoom room;
    room.state.isCatchingUp = true;
    EXPECT_EQ(room.startAt(position), Events{"10 A seek " + std::to_string(seconds * 1000)});
    EXPECT_EQ(room.runFor(1999), Events{});
    EXPECT_EQ(room.runFor(1), Events{"2010 A play"});
    EXPECT_EQ(room.runFor(20000), Events{});
  }
}

TEST(CatchingUp, BegunBeforeTheSeekCompletesKeepsTheClipFromPlaying) {
  VideoRoom room;
  room.a.holdsSeeks = true;
  EXPECT_EQ(room.startAt(0), Events{"10 A seek 0"});
  room.state.isCatchingUp = true;
  room.a.completeSeek();
  EXPECT_EQ(room.runFor(20000), Events{});
}

TEST(CatchingUp, DelayedPlayConcernsThePlayerThatIsActiveThen) {
  VideoRoom room;
  room.state.isCatchingUp = true;
  room.startAt(0);
  room.runFor(990);
  room.state.currentVideoStatus = 0;
  room.play("5");
  EXPECT_EQ(room.runFor(2000), Events{"2010 B play"});
}

TEST(Seek, CompletionPlaysTheClipWheneverItComes) {
  VideoRoom room;
  room.a.holdsSeeks = true;
  room.startAt(0);
  EXPECT_EQ(room.runFor(3000), Events{});
  EXPECT_FALSE(room.a.isPlaying);
  room.a.completeSeek();
  EXPECT_EQ(room.take(), Events{"3010 A play"});
}

TEST(Seek, CompletionAfterTheEngineIsGoneDoesNothing) {
  VideoRoom room;
  room.a.holdsSeeks = true;
  room.startAt(0);
  room.video.reset();
  room.a.completeSeek();
  EXPECT_EQ(room.take(), Events{});
  EXPECT_FALSE(room.a.isPlaying);
}

}  // namespace
}  // namespace halvora
