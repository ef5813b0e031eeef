// SPDX-License-Identifier: Apache-2.0
// How much is left in the phone's battery, where the system tells. Main thread.
#pragma once

#include <optional>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// What is known of a battery.
struct BatteryState {
  /// 0 to 1 of a full one.
  double level = 1;
  /// It is being charged, or is held full from outside.
  bool isFed = false;
  friend bool operator==(const BatteryState&, const BatteryState&) = default;
};

class Battery : public Need {
 public:
  /// None where there is no battery, or nobody tells of it. Asked now and then; waits for nothing.
  virtual std::optional<BatteryState> state() const = 0;
};

}  // namespace v0
}  // namespace halvora
