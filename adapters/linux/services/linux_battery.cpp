// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_battery.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/linux/linux_files.h"
#include "adapters/linux/services/kernel_file.h"

namespace halvora {

namespace {

constexpr std::size_t kMostSupplies = 100;
constexpr std::uint32_t kFull = 100;

}  // namespace

LinuxBattery::LinuxBattery(std::string supplies) : supplies_(std::move(supplies)) {}

// Of several batteries the fullest counts, as the phone runs until that is empty too.
std::optional<BatteryState> LinuxBattery::state() const {
  std::optional<BatteryState> found;
  bool isFed = false;
  const auto names = LinuxFiles().list(supplies_).value_or(std::vector<std::string>());
  for (const std::string& name : std::span(names).first(std::min(names.size(), kMostSupplies))) {
    const std::string folder = std::string(supplies_).append("/").append(name);
    if (firstLineOf(folder + "/scope") == "Device") continue;
    if (firstLineOf(folder + "/type") != "Battery") {
      isFed = isFed || numberIn(folder + "/online", 1) == 1U;
      continue;
    }
    const auto percent = numberIn(folder + "/capacity", kFull);
    if (!percent) continue;
    const std::string status = firstLineOf(folder + "/status");
    isFed = isFed || status == "Charging" || status == "Full";
    const double level = static_cast<double>(*percent) / kFull;
    if (!found || level > found->level) found = BatteryState{level, false};
  }
  if (found) found->isFed = isFed;
  return found;
}

}  // namespace halvora
