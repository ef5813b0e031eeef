// SPDX-License-Identifier: Apache-2.0
// A descriptor that is closed with its owner.
#pragma once

#include <utility>

#include <unistd.h>

namespace halvora {

class OwnedDescriptor {
 public:
  OwnedDescriptor() = default;
  explicit OwnedDescriptor(int number) : number_(number) {}
  OwnedDescriptor(OwnedDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  OwnedDescriptor(const OwnedDescriptor&) = delete;
  OwnedDescriptor& operator=(const OwnedDescriptor&) = delete;
  ~OwnedDescriptor() {
    if (isOpen()) close(number_);
  }
  bool isOpen() const { return number_ >= 0; }

 private:
  int number_ = -1;
};

}  // namespace halvora
