// SPDX-License-Identifier: Apache-2.0
// The need for descriptors on Qt's event loop, beside `QtRunLoop`. Belongs to the thread that made
// it, which must run Qt's event loop.
#pragma once

#include <QSocketNotifier>
#include <cstdint>
#include <map>
#include <memory>

#include "halvora/platform/descriptors.h"

namespace halvora {

class QtDescriptors final : public Descriptors {
 public:
  QtDescriptors() = default;
  QtDescriptors(const QtDescriptors&) = delete;
  QtDescriptors& operator=(const QtDescriptors&) = delete;

  WatchId watch(int descriptor, DescriptorEvents events, Task&& task) override;
  void forget(WatchId watch) override { watched_.erase(watch); }

  /// Tasks that threw, as where memory is short: Qt's event loop cannot bear exceptions.
  std::uint64_t failures() const { return failures_; }

 private:
  /// A notifier may be given up in the midst of what it tells.
  struct EndLater {
    void operator()(QSocketNotifier* notifier) const {
      notifier->setEnabled(false);
      notifier->deleteLater();
    }
  };
  using Notifier = std::unique_ptr<QSocketNotifier, EndLater>;
  struct Watched {
    Task task;
    Notifier reading;
    Notifier writing;
  };

  Notifier notify(int descriptor, QSocketNotifier::Type type, WatchId watch);
  void run(WatchId watch);

  WatchId lastWatch_ = 0;
  std::map<WatchId, Watched> watched_;
  std::uint64_t failures_ = 0;
};

}  // namespace halvora
