// SPDX-License-Identifier: Apache-2.0
// What transmitters of our company last said, by the daemon's path of them: under a monitor an
// advertisement that repeats itself is told without its data. Holds a bounded number of them; the
// one that was quiet longest makes room. Main thread.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace halvora {

/// Manufacturer data as long as an extended advertisement can bring it through the daemon.
inline constexpr std::size_t kLongestCompanyData = 254;

class ShowDevices {
 public:
  static constexpr std::size_t kMost = 64;

  void clear() { devices_.clear(); }
  std::size_t size() const { return devices_.size(); }

  /// The device's data, as it was told in full. `isFresh`: its report is still to be told without.
  void keep(std::string_view path, std::span<const std::uint8_t> data, bool isFresh) {
    Device& device = placeFor(path);
    device.size = std::min(data.size(), device.data.size());
    std::copy_n(data.begin(), device.size, device.data.begin());
    device.isFresh = isFresh;
    device.lastUse = ++uses_;
  }

  /// A report of the device without data: none if it is not known. Empty if the report is the one
  /// whose data was told just now, because such a report is told both ways, in either order.
  std::optional<std::span<const std::uint8_t>> repeat(std::string_view path) {
    const auto found = std::ranges::find(devices_, path, &Device::path);
    if (found == devices_.end()) return std::nullopt;
    found->lastUse = ++uses_;
    if (std::exchange(found->isFresh, false)) return std::span<const std::uint8_t>();
    return std::span<const std::uint8_t>(found->data).first(found->size);
  }

 private:
  struct Device {
    std::string path;
    std::array<std::uint8_t, kLongestCompanyData> data{};
    std::size_t size = 0;
    bool isFresh = false;
    std::uint64_t lastUse = 0;
  };

  Device& placeFor(std::string_view path) {
    auto place = std::ranges::find(devices_, path, &Device::path);
    if (place != devices_.end()) return *place;
    if (devices_.size() < kMost) return devices_.emplace_back(Device{.path = std::string(path)});
    place = std::ranges::min_element(devices_, {}, &Device::lastUse);
    place->path = path;
    return *place;
  }

  std::vector<Device> devices_;
  std::uint64_t uses_ = 0;
};

}  // namespace halvora
