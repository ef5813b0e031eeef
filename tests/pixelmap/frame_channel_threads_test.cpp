// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "pixelmap/frame_channel.h"

namespace halvora {
namespace {

/// Tells its number, and how many there are at a time.
class NumberedFrame final : public VideoFrame {
 public:
  NumberedFrame(int number, std::atomic<int>& alive) : number_(number), alive_(alive) { ++alive_; }
  ~NumberedFrame() override { --alive_; }
  double seconds() const override { return number_; }
  std::uint32_t width() const override { return 1; }
  std::uint32_t height() const override { return 1; }
  void sample(std::span<const PixelPosition>, std::span<std::uint32_t>) const override {}

 private:
  int number_;
  std::atomic<int>& alive_;
};

class FrameChannelThreads : public testing::Test {
 protected:
  std::unique_ptr<VideoFrame> frame(int number) {
    return std::make_unique<NumberedFrame>(number, alive_);
  }

  std::atomic<int> alive_{0};
  FrameChannel channel_;
};

TEST_F(FrameChannelThreads, EveryFrameComesInItsOrder) {
  constexpr int kFrames = 2000;
  std::thread writer([this] {
    for (int number = 0; number < kFrames; ++number) EXPECT_TRUE(channel_.push(frame(number)));
    channel_.close();
  });
  for (int number = 0; number < kFrames; ++number) {
    const auto taken = channel_.pop();
    ASSERT_TRUE(taken);
    ASSERT_EQ(taken->seconds(), number);
  }
  EXPECT_EQ(channel_.pop(), nullptr);
  EXPECT_EQ(channel_.pop(), nullptr) << "and none later";
  writer.join();
}

TEST_F(FrameChannelThreads, NoMoreFramesWaitThanThereIsRoomFor) {
  constexpr int kFrames = 200;
  std::atomic<int> pushed{0};
  std::thread writer([&] {
    for (int number = 0; number < kFrames; ++number) {
      channel_.push(frame(number));
      ++pushed;
    }
    channel_.close();
  });
  constexpr int kRoom = FrameChannel::kRoom;
  int taken = 0;
  for (auto next = channel_.pop(); next; next = channel_.pop()) {
    ++taken;
    EXPECT_LE(pushed, taken + kRoom);
    // Those that wait, the one taken, and the one that waits for room.
    EXPECT_LE(alive_, kRoom + 2);
  }
  writer.join();
  EXPECT_EQ(taken, kFrames);
  EXPECT_EQ(alive_, 0);
}

TEST_F(FrameChannelThreads, AFullChannelIsFullAndAnEmptyOneIsNot) {
  for (std::size_t number = 0; number < FrameChannel::kRoom; ++number) {
    channel_.push(frame(static_cast<int>(number)));
  }
  std::atomic<bool> isIn{false};
  std::thread writer([&] {
    channel_.push(frame(4));
    isIn = true;
    channel_.close();
  });
  // Until there is room it cannot be in, however long that takes.
  EXPECT_FALSE(isIn);
  EXPECT_EQ(channel_.pop()->seconds(), 0);
  writer.join();
  for (int number = 1; number <= 4; ++number) EXPECT_EQ(channel_.pop()->seconds(), number);
  EXPECT_EQ(channel_.pop(), nullptr);
}

TEST_F(FrameChannelThreads, AWriterWaitsForNoReaderThatIsGone) {
  std::thread writer([this] {
    int number = 0;
    while (channel_.push(frame(number))) ++number;
    EXPECT_LE(number, static_cast<int>(FrameChannel::kRoom) + 1);
  });
  channel_.pop();
  channel_.abandon();
  writer.join();
  EXPECT_FALSE(channel_.push(frame(9)));
}

}  // namespace
}  // namespace halvora
