// SPDX-License-Identifier: Apache-2.0
// How well each seat could hear a show: the longest time in which nothing reaches it, of what is
// sent, by whom, and from where. No phone is simulated for it. Pure functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "halvora/platform/image.h"
#include "halvora/platform/workers.h"
#include "venue/base/json_buffer.h"
#include "venue/crowd/air.h"
#include "venue/crowd/crowd_devices.h"

namespace halvora {

struct Coverage {
  /// Of a seat that hears nothing at all.
  static constexpr std::uint32_t kNothing = UINT32_MAX;

  /// What the show itself leaves between two packets at most, with all of its transmitters.
  Duration pause{};
  /// The longest silence of each seat, in milliseconds.
  std::vector<std::uint32_t> silences;
};

/// From the first packet at or after `from` to the last, as if no transmitter ever died. The
/// numbers of the seats in the venue begin with `firstPhone`. `goesOn` is asked by any thread.
Coverage coverageOf(const Air& air, std::span<const CrowdSeat> seats, std::size_t firstPhone,
                    Duration from, Workers& workers, const std::function<bool()>& goesOn);

/// The seats in the colours of their silence, and below them what the colours mean.
Image drawCoverage(const Coverage& coverage, std::span<const CrowdSeat> seats, int width,
                   int height);

/// An object: `pause` in milliseconds, and `seats`, how many have a silence up to so many
/// milliseconds (null: longer than all of those), and `nothing`.
void writeCoverage(PrettyJsonWriter& writer, const Coverage& coverage);

}  // namespace halvora
