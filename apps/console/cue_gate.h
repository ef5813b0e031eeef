// SPDX-License-Identifier: Apache-2.0
// What of a show's packets goes on the air while its operator is asked about looks that flash too
// often: the last calm look goes on in the place of one that waits. A value; main thread.
#pragma once

#include <optional>

#include "engine/broadcast.h"

namespace halvora {

class CueGate {
 public:
  enum class Verdict : unsigned char {
    /// Sent, and goes on in the place of what waits later.
    calm,
    /// Sent: it is armed, or black.
    sent,
    waits,
  };

  /// In place of a show's packet: that look, the last calm one, or black where none was; none where
  /// nothing is on the air and the look waits. Another look than what is on the air has the number
  /// after it, so that phones take it.
  /// @param isRepeat the show repeats its look; else it is a new one
  std::optional<Broadcast> pass(const Broadcast& wanted, bool isRepeat, Verdict verdict);
  /// What goes on instead of a look that waits, with that look's number.
  Broadcast insteadOf(const Broadcast& wanted) const;

  /// Whatever is sent, by whomever.
  void sent(const Broadcast& packet) { onAir_ = packet; }
  void calm(const Broadcast& packet) { calm_ = packet; }
  /// Nothing is on the air from now on.
  void leave() { *this = {}; }

 private:
  std::optional<Broadcast> onAir_;
  std::optional<Broadcast> calm_;
};

}  // namespace halvora
