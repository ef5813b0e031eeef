// SPDX-License-Identifier: Apache-2.0
// The main thread's wait for file descriptors, beside the timers of its run loop: what a library
// that talks through a socket of its own needs to be driven by. Its deadlines are timers of the run
// loop. Main thread.
#pragma once

#include <cstdint>
#include <utility>

#include "halvora/platform/need.h"
#include "halvora/platform/task.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// What a descriptor may be ready for: to be `readable`, `writable`, `both`, or `none` of them.
enum class DescriptorEvents : std::uint8_t { none = 0, readable = 1, writable = 2, both = 3 };

/// Whether `events` has any of what is in `one`.
constexpr bool includes(DescriptorEvents events, DescriptorEvents one) {
  return (static_cast<unsigned>(events) & static_cast<unsigned>(one)) != 0;
}

/// Names one watch; never used twice. 0 names none.
using WatchId = std::uint64_t;

class Descriptors : public Need {
 public:
  /// Runs `task` in a turn of its own, again and again for as long as one of the events is there
  /// and nothing is done about it. A descriptor that failed counts as having both. It must stay
  /// open until the watch is forgotten.
  virtual WatchId watch(int descriptor, DescriptorEvents events, Task&& task) = 0;

  /// 0 and watches that were forgotten are left alone. A task may forget its own watch.
  virtual void forget(WatchId watch) = 0;
};

/// A watch that ends with its owner.
class DescriptorWatch {
 public:
  DescriptorWatch() = default;
  /// Takes over what `Descriptors::watch` has answered.
  DescriptorWatch(Descriptors& descriptors, WatchId id) : descriptors_(&descriptors), id_(id) {}
  DescriptorWatch(DescriptorWatch&& other) noexcept  ///< The other one watches nothing any more.
      : descriptors_(other.descriptors_), id_(std::exchange(other.id_, 0)) {}
  /// Ends its own watch first.
  DescriptorWatch& operator=(DescriptorWatch&& other) noexcept {
    if (this != &other) {
      end();
      descriptors_ = other.descriptors_;
      id_ = std::exchange(other.id_, 0);
    }
    return *this;
  }
  DescriptorWatch(const DescriptorWatch&) = delete;
  DescriptorWatch& operator=(const DescriptorWatch&) = delete;
  ~DescriptorWatch() { end(); }

  /// Forgets the watch now, if there is one.
  void end() {
    if (id_ != 0) descriptors_->forget(std::exchange(id_, 0));
  }

 private:
  Descriptors* descriptors_ = nullptr;
  WatchId id_ = 0;
};

}  // namespace v0
}  // namespace halvora
