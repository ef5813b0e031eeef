// SPDX-License-Identifier: Apache-2.0
// Hands decoded frames from the thread that decodes to the one that gathers, a few at a time, so
// that neither waits long and memory stays bounded. One writer, one reader.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/video_asset.h"

namespace halvora {

class FrameChannel {
 public:
  static constexpr std::size_t kRoom = 4;

  /// Waits for room.
  void push(std::unique_ptr<VideoFrame> frame) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return frames_.size() < kRoom; });
    frames_.push_back(std::move(frame));
    changed_.notify_all();
  }

  /// No more frames will come.
  void close() {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    changed_.notify_all();
  }

  /// Waits for a frame; null when there will be none.
  std::unique_ptr<VideoFrame> pop() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isClosed_ || !frames_.empty(); });
    if (frames_.empty()) return nullptr;
    auto frame = std::move(frames_.front());
    frames_.pop_front();
    changed_.notify_all();
    return frame;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::unique_ptr<VideoFrame>> frames_;
  bool isClosed_ = false;
};

}  // namespace halvora
