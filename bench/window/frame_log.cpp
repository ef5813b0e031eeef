// SPDX-License-Identifier: Apache-2.0
#include "bench/window/frame_log.h"

#include <QCoreApplication>
#include <QEventLoop>

#include "bench/window/measurement.h"

namespace halvora {

void Pauses::add(const Pauses& more) {
  times.insert(times.end(), more.times.begin(), more.times.end());
  efforts.insert(efforts.end(), more.efforts.begin(), more.efforts.end());
}

QJsonObject Pauses::figures() const {
  return {{QStringLiteral("count"), static_cast<int>(times.size())},
          {QStringLiteral("median"), quantile(times, 0.5)},
          {QStringLiteral("worst"), quantile(times, 1)},
          {QStringLiteral("worstEffort"), quantile(efforts, 1)}};
}

Pauses pausesOf(const std::vector<Frame>& frames) {
  Pauses pauses;
  for (std::size_t at = 1; at < frames.size(); ++at) {
    const Frame& frame = frames[at];
    const Frame& before = frames[at - 1];
    if (!before.isMoving) continue;
    pauses.times.push_back(millisecondsOf(frame.swapped - before.swapped));
    pauses.efforts.push_back(1000 * (frame.processorSeconds - before.processorSeconds));
  }
  return pauses;
}

FrameLog::FrameLog(QQuickWindow& window) {
  QObject::connect(
      &window, &QQuickWindow::afterAnimating, &context_,
      [this] {
        begun_ = std::chrono::steady_clock::now();
        processorSeconds_ = threadProcessorTime();
      },
      Qt::DirectConnection);
  QObject::connect(
      &window, &QQuickWindow::afterSynchronizing, &context_, [this] { synced(); },
      Qt::DirectConnection);
  QObject::connect(
      &window, &QQuickWindow::frameSwapped, &context_, [this] { swapped(); }, Qt::DirectConnection);
}

// The main thread waits here if frames are drawn on another one.
void FrameLog::synced() {
  frame_ = {.begun = begun_,
            .synced = std::chrono::steady_clock::now(),
            .swapped = {},
            .processorSeconds = processorSeconds_,
            .look = look_,
            .isMoving = isMoving_ && isMoving_()};
}

void FrameLog::swapped() {
  const Moment now = std::chrono::steady_clock::now();
  {
    const std::lock_guard lock(mutex_);
    frames_.push_back(frame_);
    frames_.back().swapped = now;
  }
  // For a main thread that sleeps.
  QCoreApplication::postEvent(&context_, new QEvent(QEvent::User));
}

void FrameLog::clear() {
  const std::lock_guard lock(mutex_);
  frames_.clear();
}

std::vector<Frame> FrameLog::frames() const {
  const std::lock_guard lock(mutex_);
  return frames_;
}

std::size_t FrameLog::count() const {
  const std::lock_guard lock(mutex_);
  return frames_.size();
}

void FrameLog::waitForNext() {
  const std::size_t before = count();
  while (count() == before) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

}  // namespace halvora
