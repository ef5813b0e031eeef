// SPDX-License-Identifier: Apache-2.0
// Says how long it has been running, for those that show people how far something is. Nothing that
// a show does follows from it. Any thread.
#pragma once

#include <chrono>

#include "halvora/platform/time.h"

namespace halvora {

class Stopwatch {
 public:
  Duration elapsed() const {
    return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now() - begin_);
  }

 private:
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

}  // namespace halvora
