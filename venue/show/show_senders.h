// SPDX-License-Identifier: Apache-2.0
// Who sends the show of a scenario, and when each of them sends without a pause: what a crew that
// listens can expect of every single transmitter. Values; any thread once it is made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/broadcast.h"
#include "halvora/platform/time.h"
#include "venue/show/scenario.h"

namespace halvora {

/// The number that a packet bears on one of several transmitters: they count up from the show's,
/// but who speaks for the whole venue keeps that number.
constexpr std::uint8_t transmitterNumber(std::uint8_t number, std::size_t air) {
  return number == kVenueWideTransmitter ? number : static_cast<std::uint8_t>(number + air);
}

class ShowSenders {
 public:
  /// Up to `end`. Who is not heard for longer than `pause` has paused. Of several airs each sends
  /// the whole show, with a number of its own.
  ShowSenders(const Scenario& scenario, Duration end, Duration pause, std::size_t airs = 1);

  /// As "application:number", in the order in which they begin.
  const std::vector<std::string>& keys() const { return keys_; }
  /// The show's venue; none where its packets name several, or there are none.
  std::optional<std::uint8_t> venueId() const { return venueId_; }
  /// Whether the sender at that place of `keys` sends from the one time to the other, without a
  /// pause.
  bool isSending(std::size_t sender, Duration from, Duration to) const;

 private:
  struct Stretch {
    Duration begin{};
    Duration end{};
  };

  void note(const std::string& key, Duration time, Duration pause);

  std::vector<std::string> keys_;
  /// One list a sender.
  std::vector<std::vector<Stretch>> stretches_;
  std::optional<std::uint8_t> venueId_;
};

}  // namespace halvora
