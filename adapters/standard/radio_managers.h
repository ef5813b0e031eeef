// SPDX-License-Identifier: Apache-2.0
// The managers of one radio, which it tells of what it hears. Any of them may go while they are
// told, and others may come; nothing is copied for that, because this is on the way of every
// packet. Owned by the radio, which outlives its managers; main thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace halvora {

template <class Manager>
class RadioManagers {
 public:
  void add(Manager& manager) { managers_.push_back(&manager); }
  void remove(const Manager& manager) {
    const auto at = std::ranges::find(managers_, &manager);
    if (at == managers_.end()) return;
    if (telling_ > 0) {
      *at = nullptr;
      hasGone_ = true;
    } else {
      managers_.erase(at);
    }
  }

  bool isAny() const {
    return std::ranges::any_of(managers_, [](const Manager* its) { return its != nullptr; });
  }
  bool isAnyScanning() const {
    return std::ranges::any_of(
        managers_, [](const Manager* its) { return its != nullptr && its->isScanning(); });
  }

  /// Each in the order in which they were made. Who comes meanwhile waits for the next time.
  template <class Act>
  void forEach(const Act& act) {
    const Telling telling(*this);
    const std::size_t count = managers_.size();
    for (std::size_t at = 0; at < count; ++at) {
      Manager* const manager = managers_.data()[at];
      if (manager != nullptr) act(*manager);
    }
  }

 private:
  /// While one is there places keep their numbers, also where one is told within another.
  class Telling {
   public:
    explicit Telling(RadioManagers& its) : its_(its) { ++its_.telling_; }
    ~Telling() {
      if (--its_.telling_ == 0 && its_.hasGone_) its_.close();
    }
    Telling(const Telling&) = delete;
    Telling& operator=(const Telling&) = delete;

   private:
    RadioManagers& its_;
  };

  /// Closes the gaps of those that have gone.
  void close() {
    std::erase(managers_, nullptr);
    hasGone_ = false;
  }

  /// Null for one that has gone while others are told.
  std::vector<Manager*> managers_;
  int telling_ = 0;
  bool hasGone_ = false;
};

}  // namespace halvora
