// SPDX-License-Identifier: Apache-2.0
// A show for which seat tables are made, as two functions.
#pragma once

#include <functional>
#include <utility>

#include "pixelmap/pixel_map_seat_luts.h"

namespace halvora {

class SeatLutCalls final : public SeatLutListener {
 public:
  /// The frame on the air; none is frame 0. What is told may go nowhere.
  explicit SeatLutCalls(std::function<void()> refresh = {}, const int* frame = nullptr)
      : refresh_(std::move(refresh)), frame_(frame) {}
  int currentVideoMinutes() const override { return frame_ != nullptr ? *frame_ : 0; }
  void refreshMode21ColorIfNeeded() override {
    if (refresh_) refresh_();
  }

 private:
  std::function<void()> refresh_;
  const int* frame_;
};

}  // namespace halvora
