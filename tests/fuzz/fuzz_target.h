// SPDX-License-Identifier: Apache-2.0
// What every fuzz target shares: how it reads its bytes, and how it says that a rule was broken. A
// target is a function over bytes, used by the fuzzer, by the long seeded runs and by the tests.
// Values; one thread at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string_view>

namespace halvora {

using FuzzBytes = std::span<const std::uint8_t>;

/// A rule that an input broke. Only targets throw it, never from within the code under test.
class FuzzFailure : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Breaks off the run of an input for which the rule does not hold.
inline void require(bool isTrue, const char* rule) {
  if (!isTrue) throw FuzzFailure(rule);
}

inline std::string_view textOf(FuzzBytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Takes an input apart from its beginning; at its end there are zeros without end.
class FuzzInput {
 public:
  explicit FuzzInput(FuzzBytes bytes) : rest_(bytes) {}

  bool isEmpty() const { return rest_.empty(); }
  FuzzBytes rest() const { return rest_; }

  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const std::uint8_t first = rest_.front();
    rest_ = rest_.subspan(1);
    return first;
  }
  std::uint16_t two() {
    const unsigned high = byte();
    return static_cast<std::uint16_t>(high << 8 | byte());
  }
  /// So many bytes, or what is left.
  FuzzBytes take(std::size_t count) {
    const FuzzBytes taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }

 private:
  FuzzBytes rest_;
};

}  // namespace halvora
