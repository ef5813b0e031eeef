// SPDX-License-Identifier: Apache-2.0
// What the adapters of a port promise, as checks: a factory goes in, and out come the promises that
// it breaks, each in words. Needs no framework of tests. One thread, but where a need itself has
// more.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace halvora::conformance {

/// One promise that an adapter does not keep.
struct BrokenPromise {
  /// Of the need, as its header calls it.
  std::string need;
  /// What it promises.
  std::string promise;
  /// What was found instead; may be empty.
  std::string found;
};

/// Gathers what is broken of one need. A promise that is broken several times is one.
class Promises {
 public:
  /// Of the need of that name.
  explicit Promises(std::string need) : need_(std::move(need)) {}

  /// Notes the promise unless it is kept, with what was found instead.
  void expect(bool isKept, std::string_view promise, std::string found = {}) {
    if (isKept) return;
    for (const BrokenPromise& known : broken_) {
      if (known.promise == promise) return;
    }
    broken_.push_back({need_, std::string(promise), std::move(found)});
  }
  /// All that was noted, in its order; the end of this.
  std::vector<BrokenPromise> broken() && { return std::move(broken_); }

 private:
  std::string need_;
  std::vector<BrokenPromise> broken_;
};

/// Numbers as something found: "1, 2", or "none".
inline std::string listed(const std::vector<int>& numbers) {
  std::string text;
  for (const int number : numbers) text += (text.empty() ? "" : ", ") + std::to_string(number);
  return text.empty() ? "none" : text;
}

/// A line a promise: "Files: a file that is replaced is never seen in part (found …)".
inline std::string textOf(const std::vector<BrokenPromise>& broken) {
  std::string text;
  for (const BrokenPromise& one : broken) {
    text += one.need + ": " + one.promise;
    if (!one.found.empty()) text += " (found: " + one.found + ")";
    text += "\n";
  }
  return text;
}

}  // namespace halvora::conformance
