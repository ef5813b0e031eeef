// SPDX-License-Identifier: Apache-2.0
// Standard error while a command works. What is said there is for people who look, so the work
// never waits for them: a terminal that was stopped, a line to it that stands still, or a script
// that reads nothing miss lines, and are told how many once they take some again. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace halvora {

class SpokenLines {
 public:
  /// The descriptor stays whoever's it is, and as it is.
  explicit SpokenLines(int descriptor);
  ~SpokenLines();
  SpokenLines(const SpokenLines&) = delete;
  SpokenLines& operator=(const SpokenLines&) = delete;

  /// Whole lines, or what is drawn within one. A line that was begun goes on before the next.
  void say(std::string_view text) noexcept;

 private:
  bool take(std::string_view text);
  std::size_t put(std::string_view text) const;

  const int descriptor_;
  /// The same place, opened so that writing never waits; below 0 where that cannot be had.
  const int prompt_;
  std::mutex mutex_;
  /// Of what was begun.
  std::string rest_;
  std::uint64_t missed_ = 0;
};

}  // namespace halvora
