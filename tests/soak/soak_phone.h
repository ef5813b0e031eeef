// SPDX-License-Identifier: Apache-2.0
// One phone through hours of whatever a seed brings: shows, silence, radio faults, activations,
// seats, clocks, hosts and files that come and go. Each hour ends with an idle engine. One thread.
#pragma once

#include <cstdint>
#include <string>

#include "adapters/standard/seeded_random.h"
#include "tests/support/engine_world.h"

namespace halvora {

class SoakPhone {
 public:
  explicit SoakPhone(std::uint64_t seed);

  /// False if a rule was broken; `complaint` then says which.
  bool liveAnHour();
  const std::string& complaint() const { return world_.complaint(); }
  std::uint64_t turns() const { return world_.turns(); }

 private:
  std::uint32_t below(std::uint32_t bound) { return random_.below(bound); }
  bool isOneOf(std::uint32_t chances) { return below(chances) == 0; }
  void passUntil(Duration time);
  void quietHour(Duration end);
  void showHour(Duration end);
  void show(Duration end);
  void look();
  void fault();
  void radioFault();
  void fileFault();
  void seatFault();

  SeededRandom random_;
  EngineWorld world_;
  Broadcast packet_{.applicationId = 1, .venueId = 7, .master = 255, .mode = 1, .transmitter = 1};
};

}  // namespace halvora
