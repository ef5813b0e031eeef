// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/sysfs_light.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>
#include <string_view>
#include <tuple>
#include <vector>

#include "adapters/linux/linux_files.h"
#include "adapters/linux/services/kernel_file.h"

namespace halvora {

namespace {

/// The kernel counts levels in ints.
constexpr std::uint32_t kMostLevel = INT32_MAX;
constexpr std::size_t kMostDevices = 1000;
constexpr std::size_t kLongestName = 255;

bool isPlain(std::string_view name) {
  return name.size() <= kLongestName && std::ranges::all_of(name, [](char letter) {
           return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
                  (letter >= 'a' && letter <= 'z') ||
                  std::string_view(":_-.@+").find(letter) != std::string_view::npos;
         });
}

// Of the class's devices that `rankOf` gives a rank, the one with the lowest, then by name.
template <class RankOf>
std::optional<SysfsLight> findLight(const std::string& classes, const char* subsystem,
                                    RankOf rankOf) {
  const std::string parent = classes + "/" + subsystem;
  std::optional<SysfsLight> best;
  int bestRank = 0;
  const auto names = LinuxFiles().list(parent).value_or(std::vector<std::string>());
  for (const std::string& name : std::span(names).first(std::min(names.size(), kMostDevices))) {
    SysfsLight light{subsystem, name, std::string(parent).append("/").append(name)};
    if (!isPlain(light.name)) continue;
    const std::optional<int> rank = rankOf(light);
    const auto most = numberIn(light.folder + "/max_brightness", kMostLevel);
    if (!rank || most.value_or(0) == 0) continue;
    light.most = *most;
    if (!light.level()) continue;
    if (best && std::tie(bestRank, best->name) <= std::tie(*rank, light.name)) continue;
    best = light;
    bestRank = *rank;
  }
  return best;
}

}  // namespace

std::optional<std::uint32_t> SysfsLight::level() const {
  return numberIn(folder + "/brightness", most);
}

std::optional<SysfsLight> findBacklight(const std::string& classes) {
  return findLight(classes, "backlight", [](const SysfsLight& light) -> std::optional<int> {
    static constexpr std::string_view kTypes[] = {"firmware", "platform", "raw"};
    const auto* type = std::ranges::find(kTypes, firstLineOf(light.folder + "/type"));
    return static_cast<int>(std::distance(std::begin(kTypes), type));
  });
}

std::optional<SysfsLight> findTorchLight(const std::string& classes) {
  return findLight(classes, "leds", [](const SysfsLight& light) -> std::optional<int> {
    const std::string_view name = light.name;
    const std::size_t colon = name.rfind(':');
    if (colon == std::string_view::npos) return {};
    const bool isTorch = name.substr(colon + 1).starts_with("torch");
    if (!isTorch && !name.substr(colon + 1).starts_with("flash")) return {};
    const std::string_view before = name.substr(0, colon);
    const bool isWhite = before == "white" || before.ends_with(":white");
    return (isWhite ? 0 : 2) + (isTorch ? 0 : 1);
  });
}

}  // namespace halvora
