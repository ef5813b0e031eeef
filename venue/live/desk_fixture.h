// SPDX-License-Identifier: Apache-2.0
// A lighting desk's channels as commands: the fixture that a crew patches. Values; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace halvora {

/// From the universe's first channel on.
enum class DeskChannel : std::uint8_t { go, back, hold, blackout, panic, release, cue, take };
inline constexpr std::size_t kDeskChannels = 8;

class DeskFixture {
 public:
  /// A channel is up from this level on, and down again below the other, so that a fader that
  /// trembles between them does nothing.
  static constexpr std::uint8_t kUp = 128;
  static constexpr std::uint8_t kDown = 112;

  /// The names are those of the show's cues.
  explicit DeskFixture(std::vector<std::string> cueNames) : cueNames_(std::move(cueNames)) {}

  /// What a frame of the universe asks for, after the one before; channels that are missing are 0.
  /// The first frame asks for nothing: whoever connects a desk does not want what its faders say.
  std::vector<std::string> take(std::span<const std::uint8_t> levels);
  /// The next frame is a first one again.
  void forget() { hasLevels_ = false; }

 private:
  std::vector<std::string> cueNames_;
  std::array<bool, kDeskChannels> isUp_{};
  bool hasLevels_ = false;
};

}  // namespace halvora
