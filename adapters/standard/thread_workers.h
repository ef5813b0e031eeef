// SPDX-License-Identifier: Apache-2.0
// Workers on threads of their own, which live as long as one run. Any thread.
#pragma once

#include "halvora/platform/workers.h"

namespace halvora {

class ThreadWorkers final : public Workers {
 public:
  /// More than these have nothing to gain from one video.
  static constexpr int kMost = 16;

  /// 0 for as many as the machine has processors; at most `kMost`.
  explicit ThreadWorkers(int count = 0);
  int count() const override { return count_; }
  bool areParallel() const override { return true; }
  WorkEnd run(std::span<Task> tasks) override;

 private:
  int count_;
};

}  // namespace halvora
