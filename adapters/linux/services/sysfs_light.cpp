// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/sysfs_light.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <span>
#include <string_view>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "adapters/linux/linux_files.h"

namespace halvora {

namespace {

/// The kernel counts levels in ints.
constexpr std::uint32_t kMostLevel = INT32_MAX;
constexpr std::size_t kMostDevices = 1000;
constexpr std::size_t kLongestName = 255;

// The first line of a small file; longer ones are none of the kernel's. Never waits, whatever the
// file is.
std::string firstLine(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return {};
  std::array<char, 32> bytes;
  const ssize_t size = read(file, bytes.data(), bytes.size());
  close(file);
  if (size <= 0 || size == static_cast<ssize_t>(bytes.size())) return {};
  const std::string_view text(bytes.data(), static_cast<std::size_t>(size));
  return std::string(text.substr(0, text.find('\n')));
}

std::optional<std::uint32_t> readLevel(const std::string& path, std::uint32_t most) {
  const std::string text = firstLine(path);
  std::uint32_t level = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
  const bool isNumber = error == std::errc() && end == text.data() + text.size();
  if (!isNumber || level > most) return {};
  return level;
}

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
    const auto most = readLevel(light.folder + "/max_brightness", kMostLevel);
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
  return readLevel(folder + "/brightness", most);
}

std::optional<SysfsLight> findBacklight(const std::string& classes) {
  return findLight(classes, "backlight", [](const SysfsLight& light) -> std::optional<int> {
    static constexpr std::string_view kTypes[] = {"firmware", "platform", "raw"};
    const auto* type = std::ranges::find(kTypes, firstLine(light.folder + "/type"));
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
