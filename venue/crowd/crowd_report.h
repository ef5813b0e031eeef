// SPDX-License-Identifier: Apache-2.0
// What is measured of a crowd while it runs. Everything is counted in whole numbers, so that the
// sums of several threads are the same in whatever order they are added. Values; one thread at a
// time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

#include "halvora/platform/time.h"

namespace halvora {

/// How long phones took to show a look, from its coming on the air. Exact to the millisecond up to
/// 128 ms, to 8 ms up to a second, to 256 ms up to 16 s; later ones count as never.
class LookDelays {
 public:
  static constexpr std::size_t kFine = 128;
  static constexpr std::size_t kMiddle = 112;
  static constexpr std::size_t kCoarse = 60;
  static constexpr Duration kLongest = milliseconds(16'384);

  void add(Duration delay);
  void add(const LookDelays& other);
  /// The time by which so many phones had it: the end of the step that the last of them falls into.
  std::optional<Duration> whenShown(std::uint64_t phones) const;

  /// How many phones fall into each step of time.
  std::span<const std::uint32_t> counts() const { return counts_; }
  std::span<std::uint32_t> counts() { return counts_; }

 private:
  std::array<std::uint32_t, kFine + kMiddle + kCoarse> counts_{};
};

/// The delays of looks that are still under way, by the number of the look.
class OpenLooks {
 public:
  /// Looks below `first` are over and count no more.
  explicit OpenLooks(std::uint32_t first = 0) : first_(first) {}

  void add(std::uint32_t look, Duration delay) {
    if (look >= first_) of(look).add(delay);
  }
  void add(const OpenLooks& other);
  /// Takes the oldest one out, which must be the next in number.
  LookDelays take(std::uint32_t look);

 private:
  LookDelays& of(std::uint32_t look);

  std::uint32_t first_;
  std::deque<LookDelays> delays_;
};

/// Of one frame, over all phones that are open.
struct FrameCounts {
  std::uint32_t open = 0;
  std::uint32_t showing = 0;
  std::uint32_t torches = 0;
  /// Against the pixel-map video: the phones compared, the sum of their squared errors over three
  /// channels, and the phone that is furthest off.
  std::uint32_t compared = 0;
  std::uint64_t squaredError = 0;
  std::uint32_t worstError = 0;
  std::uint32_t worstPhone = 0;
  /// Phones that show something else than the true show does, or did a moment ago.
  std::uint32_t lost = 0;

  void add(const FrameCounts& other);
};

struct PacketCounts {
  /// Sums over the phones that were open when a packet was sent.
  std::uint64_t offered = 0;
  std::uint64_t heard = 0;
  void add(const PacketCounts& other) {
    offered += other.offered;
    heard += other.heard;
  }
};

}  // namespace halvora
