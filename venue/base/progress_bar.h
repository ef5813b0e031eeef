// SPDX-License-Identifier: Apache-2.0
// One line on the terminal that says how far something is, how fast it goes and how long it will
// take. Written at most ten times a second and wiped in the end; what is over sooner shows nothing.
// In a log, a line every ten seconds.
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
  /// Between the lines of a log.
  static constexpr Duration kLogPause = milliseconds(10'000);

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
  Duration pause() const { return terminal_.isLog ? kLogPause : kPause; }

  const Terminal& terminal_;
  std::string verb_;
  std::string unit_;
  std::uint64_t total_;
  Duration begin_{};
  std::mutex mutex_;
  Duration nextTime_{};
  std::uint64_t shown_ = 0;
};

/// A log of a command's progress on standard error, for work that has no terminal; nothing where
/// nobody reads or there is no clock.
Terminal lineTerminal(const Outside& outside);

}  // namespace halvora
