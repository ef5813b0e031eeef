// SPDX-License-Identifier: Apache-2.0
// Whether something is still there that may go at any moment, even within a call that it makes of
// its host. A witness is a few words on the stack or in an object and allocates nothing. Main
// thread.
#pragma once

#include <cassert>

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

class Witness;

/// A member of what may go. Declared last, it goes first: witnesses know of the end before any
/// other member has ended.
class Witnessed {
 public:
  Witnessed() = default;
  ~Witnessed();
  Witnessed(const Witnessed&) = delete;
  Witnessed& operator=(const Witnessed&) = delete;

 private:
  friend class Witness;

  Witness* first_ = nullptr;
};

/// May itself go before or after what it watches.
class Witness {
 public:
  /// From now on; what is watched is there.
  // Not inlined: a compiler that sees an address of the stack being kept, but not that the
  // destructor takes it out again, warns of it.
  [[gnu::noinline]] explicit Witness(Witnessed& watched)
      : watched_(&watched), next_(watched.first_) {
    if (next_ != nullptr) next_->previous_ = this;
    watched.first_ = this;
  }
  ~Witness() {
    if (watched_ == nullptr) return;
    (previous_ != nullptr ? previous_->next_ : watched_->first_) = next_;
    if (next_ != nullptr) next_->previous_ = previous_;
  }
  Witness(const Witness&) = delete;
  Witness& operator=(const Witness&) = delete;

  /// Once true, it stays so.
  bool isGone() const { return watched_ == nullptr; }
  /// While it may not go, as in the middle of its own work, its end is a mistake that is asserted.
  void setMayGo(bool mayGo) { mayGo_ = mayGo; }

 private:
  friend class Witnessed;

  /// Null once it is gone.
  Witnessed* watched_;
  Witness* next_;
  Witness* previous_ = nullptr;
  bool mayGo_ = true;
};

inline Witnessed::~Witnessed() {
  for (Witness* witness = first_; witness != nullptr; witness = witness->next_) {
    assert(witness->mayGo_ && "destroyed from within a call that does not allow it");
    witness->watched_ = nullptr;
  }
}

}  // namespace v0
}  // namespace halvora
