// SPDX-License-Identifier: Apache-2.0
// The player of clips on a real file and the real media library, off screen. The library works in
// its own time, so tests wait for what it reports and for nothing else; the rounds of a clip are on
// the show's clock, which is virtual.
#include "adapters/qt/qt_video_player.h"

#include <QColor>
#include <QCoreApplication>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "adapters/qt/qt_media_support.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "conformance/media_promises.h"
#include "tests/adapters/ffmpeg/clip_maker.h"
#include "tests/faces/qt/event_wait.h"

namespace halvora {
namespace {

// Red in its first second, blue in its second one.
std::string makeClip(const ClipMaker& maker) {
  maker.run(
      "-f lavfi -i color=c=red:s=64x64:r=30:d=1 -f lavfi -i color=c=blue:s=64x64:r=30:d=1 "
      "-filter_complex concat=n=2:v=1 -pix_fmt yuv420p -g 30 -y %3.mp4");
  return maker.pathOf("3.mp4");
}

struct QtVideoPlayerTest : testing::Test {
  void SetUp() override {
    if (!canPlayMedia()) GTEST_SKIP() << "no media library";
  }

  static void waitUntil(const std::function<bool()>& isDone) { letQtWorkUntil(isDone); }
  void waitUntilReady() {
    waitUntil([this] { return player.isItemReadyToPlay(); });
  }
  void waitForColour(const QColor& colour) {
    waitUntil([&] {
      const QImage picture = player.picture();
      if (picture.isNull()) return false;
      const QColor seen = picture.pixelColor(picture.width() / 2, picture.height() / 2);
      return std::abs(seen.red() - colour.red()) < 40 && std::abs(seen.blue() - colour.blue()) < 40;
    });
  }

  ClipMaker maker;
  VirtualRunLoop loop;
  QtVideoPlayer player{loop};
};

TEST_F(QtVideoPlayerTest, HasNoPictureAndIsNotReadyWithoutAClip) {
  EXPECT_FALSE(player.isReadyToPlay());
  EXPECT_FALSE(player.isItemReadyToPlay());
  EXPECT_TRUE(player.picture().isNull());
  player.play();
  player.pause();
}

TEST_F(QtVideoPlayerTest, AClipBecomesReadyAndShowsItsFirstPicture) {
  player.load({"3", makeClip(maker)});
  EXPECT_TRUE(player.isReadyToPlay());
  EXPECT_FALSE(player.isItemReadyToPlay());
  waitUntilReady();
  waitForColour(Qt::red);
}

TEST_F(QtVideoPlayerTest, PlaysThrough) {
  player.load({"3", makeClip(maker)});
  waitUntilReady();
  player.play();
  waitForColour(Qt::blue);
}

TEST_F(QtVideoPlayerTest, PlaysAsSoonAsItIsReadyWhenItWasAskedToBefore) {
  player.load({"3", makeClip(maker)});
  player.play();
  waitForColour(Qt::blue);
}

TEST_F(QtVideoPlayerTest, ASeekCompletesInATurnOfItsOwnAndShowsItsPicture) {
  player.load({"3", makeClip(maker)});
  waitUntilReady();
  bool isComplete = false;
  player.seek(milliseconds(1500), [&isComplete] { isComplete = true; });
  EXPECT_FALSE(isComplete);
  loop.runFor(milliseconds(1));
  EXPECT_TRUE(isComplete);
  waitForColour(Qt::blue);
}

TEST_F(QtVideoPlayerTest, APositionBeyondTheEndIsOneWithinTheRounds) {
  player.load({"3", makeClip(maker)});
  waitUntilReady();
  player.seek(milliseconds(1500), [] {});
  waitForColour(Qt::blue);
  player.seek(milliseconds(8500), [] {});
  waitForColour(Qt::red);
}

TEST_F(QtVideoPlayerTest, EachRoundBeginsOnTheShowsClock) {
  player.load({"3", makeClip(maker)});
  waitUntilReady();
  player.seek(milliseconds(1000), [] {});
  player.play();
  waitForColour(Qt::blue);
  // One second is left of this round. The player's own time has hardly passed.
  loop.runFor(milliseconds(1000));
  waitForColour(Qt::red);
  waitForColour(Qt::blue);
  loop.runFor(milliseconds(2000));
  waitForColour(Qt::red);
}

TEST_F(QtVideoPlayerTest, ASeekCompletesWithoutAClipToo) {
  bool isComplete = false;
  player.seek(milliseconds(1500), [&isComplete] { isComplete = true; });
  loop.runFor(milliseconds(1));
  EXPECT_TRUE(isComplete);
}

// Run without any device for the sound, too: its pictures are what a clip is for.
TEST_F(QtVideoPlayerTest, AClipWithSoundPlaysThrough) {
  maker.run(
      "-f lavfi -i color=c=red:s=64x64:r=30:d=1 -f lavfi -i color=c=blue:s=64x64:r=30:d=1 "
      "-f lavfi -i sine=frequency=440:duration=2 -filter_complex concat=n=2:v=1[v] -map [v] "
      "-map 2:a -c:a aac -pix_fmt yuv420p -g 30 -y %4.mp4");
  player.load({"4", maker.pathOf("4.mp4")});
  waitUntilReady();
  player.play();
  waitForColour(Qt::blue);
  player.pause();
}

TEST_F(QtVideoPlayerTest, LoadingAnotherClipTakesTheFirstAway) {
  player.load({"3", makeClip(maker)});
  waitUntilReady();
  waitForColour(Qt::red);
  player.load({"9", ""});
  EXPECT_FALSE(player.isItemReadyToPlay());
  EXPECT_TRUE(player.picture().isNull());
}

TEST_F(QtVideoPlayerTest, ABrokenClipIsNeverReadyAndAnotherOneIsPlayedAfterIt) {
  const std::string clip = makeClip(maker);
  const std::string broken =
      maker.changed(clip, "broken.mp4", [](std::string& bytes) { bytes.assign(5000, 'x'); });
  player.load({"9", broken});
  QCoreApplication::processEvents();
  loop.runFor(milliseconds(1));
  EXPECT_FALSE(player.isItemReadyToPlay());
  player.load({"3", clip});
  waitUntilReady();
  waitForColour(Qt::red);
}

TEST_F(QtVideoPlayerTest, KeepsWhatTheConformanceSuiteAsksOfPlayers) {
  const std::string clip = makeClip(maker);
  const std::string broken =
      maker.changed(clip, "broken.mp4", [](std::string& bytes) { bytes.assign(5000, 'x'); });
  const auto work = [this] {
    QCoreApplication::processEvents();
    loop.runFor(milliseconds(1));
  };
  const auto unkept = conformance::checkPlayer([&] {
    return conformance::PlayerUnderTest{nullptr,
                                        std::make_unique<QtVideoPlayer>(loop),
                                        {"3", clip},
                                        {"9", broken},
                                        [&](const std::function<bool()>& isSo) {
                                          waitUntil([&] {
                                            work();
                                            return isSo();
                                          });
                                        },
                                        work};
  });
  EXPECT_TRUE(unkept.empty()) << conformance::textOf(unkept);
}

TEST_F(QtVideoPlayerTest, MayGoWhileItPlays) {
  auto gone = std::make_unique<QtVideoPlayer>(loop);
  gone->load({"3", makeClip(maker)});
  waitUntil([&] { return gone->isItemReadyToPlay(); });
  gone->play();
  gone->seek(milliseconds(500), [] {});
  gone.reset();
  loop.runFor(milliseconds(5000));
}

// Run with the library's parts out of reach: making a player would end the process.
TEST(QtVideoPlayerWithoutPlugIns, NoClipIsEverReady) {
  const ClipMaker maker;
  VirtualRunLoop loop;
  QtVideoPlayer player(loop);
  EXPECT_FALSE(canPlayMedia());
  player.load({"3", makeClip(maker)});
  player.play();
  loop.runFor(milliseconds(1000));
  QCoreApplication::processEvents();
  EXPECT_FALSE(player.isReadyToPlay());
  EXPECT_FALSE(player.isItemReadyToPlay());
  EXPECT_TRUE(player.picture().isNull());
}

}  // namespace
}  // namespace halvora
