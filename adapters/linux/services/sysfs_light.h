// SPDX-License-Identifier: Apache-2.0
// Lights that the kernel shows as files: the screen's backlight and the lamp beside the camera.
// They are read here and never written, because only root may. What does not read as a light of
// the kernel's is none. Values, any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace halvora {

inline constexpr const char* kLightClasses = "/sys/class";

struct SysfsLight {
  /// The kernel's class of devices, "backlight" or "leds", and the device's name in it.
  std::string subsystem;
  std::string name;
  std::string folder;
  /// The greatest level, at least 1.
  std::uint32_t most = 1;

  /// What it is set to, 0 to `most`; none if that cannot be read.
  std::optional<std::uint32_t> level() const;
};

/// Of several, the one whose driver knows most: firmware, platform, then raw; then by name.
std::optional<SysfsLight> findBacklight(const std::string& classes = kLightClasses);

/// A light-emitting diode whose function is torch or flash. Of several a white one, and a torch
/// before a flash, which may only stand short bursts at its greatest level.
std::optional<SysfsLight> findTorchLight(const std::string& classes = kLightClasses);

}  // namespace halvora
