// SPDX-License-Identifier: Apache-2.0
// When each frame of a window began, took over what is to be drawn, and was handed to the window
// system, and which look it showed. Belongs to a benchmark, which must not outlive the window. Main
// thread; frames may be drawn on another one.
#pragma once

#include <QJsonObject>
#include <QObject>
#include <QQuickWindow>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace halvora {

using Moment = std::chrono::steady_clock::time_point;

inline double millisecondsOf(std::chrono::steady_clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

struct Frame {
  Moment begun;
  Moment synced;
  Moment swapped;
  /// Of the main thread, when the frame began.
  double processorSeconds = 0;
  /// What `setLook` said last before the frame took over.
  std::uint64_t look = 0;
  /// Something moves at that moment, so another frame is due.
  bool isMoving = false;
};

/// Between the frames of what moves, in milliseconds: from one being out to the next, and what the
/// main thread's processor did from the beginning of one to that of the next.
struct Pauses {
  std::vector<double> times;
  std::vector<double> efforts;

  void add(const Pauses& more);
  QJsonObject figures() const;
};
Pauses pausesOf(const std::vector<Frame>& frames);

class FrameLog {
 public:
  explicit FrameLog(QQuickWindow& window);
  FrameLog(const FrameLog&) = delete;
  FrameLog& operator=(const FrameLog&) = delete;

  void setLook(std::uint64_t look) { look_ = look; }
  /// Asked in each frame, while the main thread is there or waits.
  void watchMotion(std::function<bool()> isMoving) { isMoving_ = std::move(isMoving); }
  void clear();
  std::vector<Frame> frames() const;
  std::size_t count() const;
  /// Runs the event loop until another frame is out than when it was called.
  void waitForNext();

 private:
  void synced();
  void swapped();

  QObject context_;
  std::uint64_t look_ = 0;
  std::function<bool()> isMoving_;
  Moment begun_;
  double processorSeconds_ = 0;
  /// The one under way; of the thread that draws.
  Frame frame_;
  mutable std::mutex mutex_;
  std::vector<Frame> frames_;
};

}  // namespace halvora
