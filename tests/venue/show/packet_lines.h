// SPDX-License-Identifier: Apache-2.0
// A scenario's line that puts a packet on the air. Any thread.
#pragma once

#include "engine/broadcast.h"
#include "venue/show/scenario.h"

namespace halvora {

/// Seconds all three; without `every` it is sent once.
inline ScenarioLine packetLine(double at, const Broadcast& fields, double every = 0,
                               double until = 0) {
  const BroadcastBytes data = encodeBroadcast(fields);
  ScenarioLine line;
  line.action = PacketAction{{data.begin(), data.end()}};
  line.at = at;
  line.every = every;
  line.until = until;
  return line;
}

}  // namespace halvora
