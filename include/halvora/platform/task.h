// SPDX-License-Identifier: Apache-2.0
// A move-only callable with room for its captures inside: handing one over never allocates. Timers
// and animation completions are made of these, several a frame, on the path that must stay free of
// the heap. What does not fit does not compile.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

template <class Signature>
class Callable;

/// What can be called, with its captures inside of it: making and moving one allocates nothing.
template <class Result, class... Arguments>
class Callable<Result(Arguments...)> {
 public:
  static constexpr std::size_t kCapacity = 32;  ///< Bytes of captures.
  /// Of what a task captures: numbers of 64 bits, also where addresses are shorter.
  static constexpr std::size_t kAlignment = std::max(alignof(void*), alignof(std::uint64_t));

  Callable() = default;

  /// Moves the callable and its captures inside.
  template <class Function>
  requires(!std::is_same_v<std::decay_t<Function>, Callable> &&
           std::is_invocable_r_v<Result, std::decay_t<Function>&, Arguments...>)
      Callable(Function&& function) {  // NOLINT(google-explicit-constructor): a lambda is a task
    using Stored = std::decay_t<Function>;
    static_assert(sizeof(Stored) <= kCapacity, "capture less, or capture a pointer");
    static_assert(alignof(Stored) <= kAlignment);
    static_assert(std::is_nothrow_move_constructible_v<Stored>);
    ::new (storage()) Stored(std::forward<Function>(function));
    operations_ = &kOperationsOf<Stored>;
  }

  /// The other one is empty afterwards.
  Callable(Callable&& other) noexcept { take(other); }
  /// What was inside goes first.
  Callable& operator=(Callable&& other) noexcept {
    if (this != &other) {
      reset();
      take(other);
    }
    return *this;
  }
  Callable(const Callable&) = delete;
  Callable& operator=(const Callable&) = delete;
  ~Callable() { reset(); }

  /// Whether there is something to call.
  explicit operator bool() const { return operations_ != nullptr; }

  /// Calls it; there must be something.
  Result operator()(Arguments... arguments) {
    return operations_->call(storage(), std::forward<Arguments>(arguments)...);
  }

 private:
  struct Operations {
    Result (*call)(void*, Arguments&&...);
    void (*move)(void* from, void* to);
    void (*destroy)(void*);
  };

  template <class Stored>
  static constexpr Operations kOperationsOf = {
      [](void* self, Arguments&&... arguments) -> Result {
        return (*static_cast<Stored*>(self))(std::forward<Arguments>(arguments)...);
      },
      [](void* from, void* to) {
        ::new (to) Stored(std::move(*static_cast<Stored*>(from)));
        static_cast<Stored*>(from)->~Stored();
      },
      [](void* self) { static_cast<Stored*>(self)->~Stored(); },
  };

  void* storage() { return storage_; }

  void take(Callable& other) {
    if (other.operations_ == nullptr) return;
    other.operations_->move(other.storage(), storage());
    operations_ = std::exchange(other.operations_, nullptr);
  }

  void reset() {
    if (operations_ != nullptr) std::exchange(operations_, nullptr)->destroy(storage());
  }

  const Operations* operations_ = nullptr;
  alignas(kAlignment) std::byte storage_[kCapacity];
};

/// Something to be done once, or by a repeating timer each time.
using Task = Callable<void()>;

}  // namespace v0
}  // namespace halvora
