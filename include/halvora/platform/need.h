// SPDX-License-Identifier: Apache-2.0
// What all needs have in common. A need is an interface to the system that the kit runs on; whoever
// serves it owns the object, and everybody else holds a reference.
#pragma once

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// The base of every need, and of what needs make. Copying one through a reference to its interface
/// would copy nothing that the object behind it has, so it does not compile.
class Need {
 public:
  Need(const Need&) = delete;
  Need& operator=(const Need&) = delete;
  virtual ~Need() = default;

 protected:
  Need() = default;
};

/// Which object serves a need: always one, and another as soon as that is assigned.
template <class Interface>
class NeedRef {
 public:
  /// Served by that object, which must outlive this.
  NeedRef(Interface& need) : need_(&need) {}  // NOLINT(google-explicit-constructor): as references
  /// Nothing that goes at once can serve.
  NeedRef(const Interface&& need) = delete;

  /// The object that serves.
  Interface& operator*() const { return *need_; }
  /// Never null.
  Interface* operator->() const { return need_; }
  /// So that it can be handed on as a reference.
  operator Interface&() const { return *need_; }  // NOLINT(google-explicit-constructor): likewise

 private:
  Interface* need_;
};

}  // namespace v0
}  // namespace halvora
