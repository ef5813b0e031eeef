// SPDX-License-Identifier: Apache-2.0
// One line on the terminal that says how far something is, how fast it goes and how long it will
// take. Written at most ten times a second and wiped in the end; what is over sooner shows nothing.
// Looks at a terminal that outlives it. Any thread.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "venue/base/outside.h"

namespace halvora {

class ProgressBar {
 public:
  static constexpr Duration kPause = milliseconds(100);

  /// `verb` and `unit` as in "reading … 3 of 9 frames".
  ProgressBar(const Terminal& terminal, std::string_view verb, std::string_view unit,
              std::uint64_t total);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// May come to more than there were to be.
  void show(std::uint64_t done);

 private:
  std::string text(std::uint64_t done, Duration elapsed) const;

  const Terminal& terminal_;
  std::string verb_;
  std::string unit_;
  std::uint64_t total_;
  Duration begin_{};
  std::mutex mutex_;
  Duration nextTime_{};
  std::uint64_t shown_ = 0;
};

}  // namespace halvora
