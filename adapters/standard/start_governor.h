// SPDX-License-Identifier: Apache-2.0
// When a scan may begin again on systems that starve an application which begins too many: some
// give it nothing at all for the rest of half a minute. A value; one thread at a time.
#pragma once

#include <cstddef>
#include <deque>

#include "halvora/platform/time.h"

namespace halvora {

/// At most so many starts in any such span; no starts for no limit.
struct StartLimit {
  std::size_t starts = 0;
  Duration within{};
};

class StartGovernor {
 public:
  explicit StartGovernor(const StartLimit& limit = {}) : limit_(limit) {}

  /// The first moment at which a start does not break the limit. It may have passed.
  Duration earliest() const {
    if (limit_.starts == 0 || starts_.size() < limit_.starts) return Duration::min();
    return starts_.front() + limit_.within;
  }
  /// In the order of time; also of a start that could not wait.
  void started(Duration now) {
    if (limit_.starts == 0) return;
    starts_.push_back(now);
    if (starts_.size() > limit_.starts) starts_.pop_front();
  }

 private:
  StartLimit limit_;
  /// The last ones, no more than the limit allows.
  std::deque<Duration> starts_;
};

}  // namespace halvora
