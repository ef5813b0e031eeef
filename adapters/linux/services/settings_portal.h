// SPDX-License-Identifier: Apache-2.0
// The user's wishes on Linux, from the desktop's settings portal: once it is there, and whenever
// one changes. What it says badly is left out; where it goes, what it said last still holds. The
// host owns it; main thread.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "adapters/linux/bus/bus.h"
#include "halvora/user_wishes.h"

namespace halvora {

/// How many settings of the portal have a say.
inline constexpr std::size_t kPortalSettings = 5;

class SettingsPortal {
 public:
  /// Asks at once. `changed` runs in a turn of its own, after each change of what is wished.
  SettingsPortal(Bus& session, std::function<void(const UserWishes&)> changed);
  SettingsPortal(const SettingsPortal&) = delete;
  SettingsPortal& operator=(const SettingsPortal&) = delete;

  const UserWishes& wishes() const { return wishes_; }

 private:
  void watch();
  void ask();
  void answered(sd_bus_message* reply);
  void settingChanged(sd_bus_message* message);
  /// At a variant.
  void take(std::string_view space, std::string_view key, sd_bus_message* message);
  void tell();

  Bus& bus_;
  const std::function<void(const UserWishes&)> changed_;
  /// By the rows of the table in the source; none until it was told.
  std::array<std::optional<std::uint32_t>, kPortalSettings> values_;
  UserWishes wishes_;
  /// The portal's own name on the bus, empty while it is not known.
  std::string owner_;
  BusSlot name_;
  BusSlot holder_;
  BusSlot signal_;
  BusCall call_;
  const BusObserver observer_;
};

}  // namespace halvora
