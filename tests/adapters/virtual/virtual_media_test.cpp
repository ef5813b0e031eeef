// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_media.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

using testing::ElementsAre;

class VirtualVideo : public testing::Test {
 protected:
  std::string acts() {
    std::string text;
    for (const VideoEvent& event : log_.drain()) {
      constexpr const char* kNames[] = {"load ", "play ", "pause ", "seek "};
      text += event.player;
      text += kNames[static_cast<std::size_t>(event.act)];
      text += event.item;
      if (event.act == VideoAct::seek) text += std::to_string(event.position.count()) + " ";
    }
    return text;
  }

  VirtualRunLoop loop_;
  Log<VideoEvent> log_;
  VirtualVideoPlayer player_{loop_, 'A', log_};
};

TEST(VirtualTorch, IsFittedAndKeepsEveryWrite) {
  VirtualTorch torch;
  EXPECT_TRUE(torch.hasTorch());
  EXPECT_TRUE(torch.hasFlash());
  EXPECT_FALSE(torch.isOn);
  for (const bool on : {true, true, false}) {
    torch.setOn(on);
    EXPECT_EQ(torch.isOn, on);
  }
  EXPECT_THAT(torch.log.entries, ElementsAre(true, true, false));
}

TEST(VirtualTorch, TorchAndFlashCanBeMissingSeparately) {
  VirtualTorch torch;
  torch.isFitted = false;
  EXPECT_FALSE(torch.hasTorch());
  EXPECT_TRUE(torch.hasFlash());
  torch.isFitted = true;
  torch.isFlashFitted = false;
  EXPECT_TRUE(torch.hasTorch());
  EXPECT_FALSE(torch.hasFlash());
}

TEST_F(VirtualVideo, WritesDownWhatItIsAskedForInOrder) {
  player_.load({"3", "3.mp4"});
  player_.play();
  player_.pause();
  player_.seek(milliseconds(13), [] {});
  EXPECT_EQ(acts(), "Aload 3Aplay Apause Aseek 13000 ");
  player_.setPreferredForwardBuffer(milliseconds(5));
  EXPECT_EQ(player_.forwardBuffer, milliseconds(5));
}

TEST_F(VirtualVideo, PlaysUntilItIsPausedOrLoadedAnew) {
  player_.load({"3", "3.mp4"});
  EXPECT_FALSE(player_.isPlaying);
  player_.play();
  EXPECT_TRUE(player_.isPlaying);
  player_.pause();
  EXPECT_FALSE(player_.isPlaying);
  player_.play();
  player_.load({"5", "5.mp4"});
  EXPECT_FALSE(player_.isPlaying);
  EXPECT_EQ(player_.item().name, "5");
}

TEST_F(VirtualVideo, OnlyAClipThatExistsIsEverReady) {
  EXPECT_FALSE(player_.isItemReadyToPlay()) << "nothing is loaded";
  player_.load({"3", ""});
  EXPECT_FALSE(player_.isItemReadyToPlay());
  player_.load({"3", "3.mp4"});
  EXPECT_TRUE(player_.isItemReadyToPlay());
  EXPECT_TRUE(player_.isReadyToPlay());
  player_.isItemReady = false;
  player_.isPlayerReady = false;
  EXPECT_FALSE(player_.isItemReadyToPlay());
  EXPECT_FALSE(player_.isReadyToPlay());
}

TEST_F(VirtualVideo, SeekCompletesAtTheSameTimeInATurnOfItsOwn) {
  loop_.runUntil(milliseconds(700));
  int completed = 0;
  player_.seek(milliseconds(1), [&completed] { ++completed; });
  EXPECT_EQ(completed, 0);
  loop_.runUntil(milliseconds(700));
  EXPECT_EQ(completed, 1);
  EXPECT_EQ(loop_.turns(), 1U);
}

TEST_F(VirtualVideo, SeekThatIsHeldCompletesOnceWhenItIsLet) {
  player_.holdsSeeks = true;
  int completed = 0;
  player_.seek(milliseconds(1), [&completed] { ++completed; });
  loop_.runUntil(milliseconds(5000));
  EXPECT_EQ(completed, 0);
  player_.completeSeek();
  player_.completeSeek();
  EXPECT_EQ(completed, 1);
}

TEST_F(VirtualVideo, TwoSeeksInOneTurnBothComplete) {
  std::string completed;
  player_.seek(milliseconds(1), [&completed] { completed += "1"; });
  player_.seek(milliseconds(2), [&completed] { completed += "2"; });
  loop_.runUntil(milliseconds(1));
  EXPECT_EQ(completed, "12");
}

TEST_F(VirtualVideo, CompletionMaySeekAgain) {
  std::string completed;
  player_.seek(milliseconds(1), [this, &completed] {
    completed += "1";
    player_.seek(milliseconds(2), [&completed] { completed += "2"; });
  });
  loop_.runUntil(milliseconds(1));
  EXPECT_EQ(completed, "12");
}

}  // namespace
}  // namespace halvora
