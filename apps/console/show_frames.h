// SPDX-License-Identifier: Apache-2.0
// Has a window paint a show step by step, each however long it takes, and saves what the window
// system shows after each: the show's clock jumps one step ahead when the last one is on the
// screen. Made by the program, over a loop and a window that outlive it. Main thread; windows may
// draw on another one.
#pragma once

#include <QObject>
#include <QQuickWindow>
#include <QString>
#include <functional>
#include <string>

#include "adapters/virtual/virtual_run_loop.h"
#include "halvora/platform/time.h"

namespace halvora {

class ShowFrames {
 public:
  /// `failed` is told why no more can be saved, once.
  ShowFrames(VirtualRunLoop& loop, Duration step, QQuickWindow& window, const std::string& folder,
             std::function<void(std::string)> failed);
  ShowFrames(const ShowFrames&) = delete;
  ShowFrames& operator=(const ShowFrames&) = delete;

  /// Saved so far.
  int count() const { return step_; }

 private:
  void painted(int step);
  QString save() const;
  void fail(std::string why);

  VirtualRunLoop& loop_;
  const Duration begin_ = loop_.now();
  const Duration pause_;
  QQuickWindow& window_;
  const QString folder_;
  std::function<void(std::string)> failed_;
  /// The one that is on the way to the screen.
  int step_ = 0;
  /// The one that the frame under way shows; of the thread that draws.
  int drawn_ = -1;
  /// Ends the connections.
  QObject context_;
};

}  // namespace halvora
