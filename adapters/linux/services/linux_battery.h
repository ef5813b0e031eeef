// SPDX-License-Identifier: Apache-2.0
// The battery need on Linux: the kernel's power supplies, of which the phone's own batteries count
// together and those of mice and headsets do not. They are small files that are read when it is
// asked for. The host owns it; main thread.
#pragma once

#include <optional>
#include <string>

#include "halvora/platform/battery.h"

namespace halvora {

inline constexpr const char* kPowerSupplies = "/sys/class/power_supply";

class LinuxBattery final : public Battery {
 public:
  explicit LinuxBattery(std::string supplies = kPowerSupplies);

  std::optional<BatteryState> state() const override;

 private:
  const std::string supplies_;
};

}  // namespace halvora
