// SPDX-License-Identifier: Apache-2.0
// The means of the pictures that one phone shows over its light, for the guard before its screen. A
// picture that is not known yet is read and decoded on a queue, so that no turn of a show waits for
// it. Main thread.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "halvora/platform/platform.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/serial_queues.h"
#include "light/picture_means.h"

namespace halvora {

class GoboMeans {
 public:
  /// So many pictures are on their way at once; another one is asked for when there is room.
  static constexpr std::size_t kMostUnderWay = 4;

  /// What it takes of the platform must outlive it. `arrived` is called in turns of its own, and no
  /// more once this is gone.
  GoboMeans(const Platform& platform, std::function<void()> arrived);
  ~GoboMeans();
  GoboMeans(const GoboMeans&) = delete;
  GoboMeans& operator=(const GoboMeans&) = delete;

  /// Whether the picture's mean can be told now; has it made where not. Where there is neither
  /// thread nor memory for that, it is made in the call that asks for the mean.
  bool isKnown(const std::string& path);
  /// As `PictureMeans::of`; nothing for a picture that is on its way, or for which there was no
  /// memory.
  PictureMean of(const std::string& path, Size screen);

 private:
  struct Reading;

  /// Null for none.
  const Reading* find(const std::string& path) const;
  void keepWhatHasArrived();
  bool begin(const std::string& path);

  RunLoop& loop_;
  SerialQueues& queues_;
  std::function<void()> arrived_;
  /// Readings hold it weakly, and do nothing once it is gone.
  std::shared_ptr<PictureMeans> means_;
  std::vector<std::shared_ptr<Reading>> readings_;
  /// Made for the first picture.
  std::unique_ptr<SerialQueue> queue_;
  /// There was nobody else to read the last one, or nobody has asked yet.
  bool readsHere_ = true;
};

}  // namespace halvora
