// SPDX-License-Identifier: Apache-2.0
// Hands decoded frames from the thread that decodes to the one that gathers, a few at a time, so
// that neither waits long and memory stays bounded. One writer, one reader; whichever of them ends
// says so, and the other waits for it no more.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>

#include "halvora/platform/video_asset.h"

namespace halvora {

class FrameChannel {
 public:
  static constexpr std::size_t kRoom = 4;

  /// Waits for room; false, and the frame is gone, once nobody reads any more.
  bool push(std::unique_ptr<VideoFrame> frame) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isAbandoned_ || count_ < kRoom; });
    if (isAbandoned_) return false;
    frames_[(first_ + count_++) % kRoom] = std::move(frame);
    changed_.notify_all();
    return true;
  }

  /// No more frames will come.
  void close() { end(isClosed_); }
  /// No more frames will be read.
  void abandon() { end(isAbandoned_); }

  /// Waits for a frame; null when there will be none.
  std::unique_ptr<VideoFrame> pop() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isClosed_ || count_ > 0; });
    if (count_ == 0) return nullptr;
    auto frame = std::move(frames_[first_]);
    first_ = (first_ + 1) % kRoom;
    --count_;
    changed_.notify_all();
    return frame;
  }

 private:
  void end(bool& side) {
    const std::lock_guard lock(mutex_);
    side = true;
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::array<std::unique_ptr<VideoFrame>, kRoom> frames_;
  /// Of those that wait, the oldest one's place.
  std::size_t first_ = 0;
  std::size_t count_ = 0;
  bool isClosed_ = false;
  bool isAbandoned_ = false;
};

}  // namespace halvora
