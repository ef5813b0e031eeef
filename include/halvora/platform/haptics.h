// SPDX-License-Identifier: Apache-2.0
// Touch feedback and system sounds. A phone without them ignores every call. Main thread.
#pragma once

#include <cstdint>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// How strong a tap is: `light` or `heavy`.
enum class ImpactStyle : std::uint8_t { light, heavy };

/// The system sound that vibrates the phone.
inline constexpr std::uint32_t kVibrationSound = 1352;

/// What of a phone can be felt.
class Haptics : public Need {
 public:
  /// Prepares a generator of the style and fires it once.
  virtual void impact(ImpactStyle style) = 0;
  /// Plays the system's sound of that number once; `kVibrationSound` is felt.
  virtual void playSystemSound(std::uint32_t sound) = 0;
  /// Stops the sound and releases it.
  virtual void disposeSystemSound(std::uint32_t sound) = 0;
};

}  // namespace v0
}  // namespace halvora
