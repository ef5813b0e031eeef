// SPDX-License-Identifier: Apache-2.0
// What was on the air, as a scenario that `halvora trace` and this program play: the seat of the
// phone, its start, and every packet. A value, any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "halvora/platform/time.h"
#include "halvora/platform/user_defaults.h"

namespace halvora {

/// A phone listens a second after its start; what was recorded from the first moment on begins when
/// it hears it.
inline constexpr Duration kRecordingLead = milliseconds(1500);

class ShowRecording {
 public:
  /// `seat` holds the defaults that tell an engine where its phone is; it may be empty.
  ShowRecording(Duration begin, const DefaultsDictionary& seat);

  void add(Duration now, std::span<const std::uint8_t> packet);

  int packets() const { return packets_; }
  /// JSON Lines, complete at any time.
  const std::string& text() const { return text_; }

 private:
  Duration begin_;
  int packets_ = 0;
  std::string text_;
};

}  // namespace halvora
