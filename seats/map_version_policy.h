// SPDX-License-Identifier: Apache-2.0
// What follows where a venue's map states other versions than it did when the user chose a seat:
// the choice, or only its tables, are no longer good. Owned by the status panel; main thread.
#pragma once

#include <cstdint>

#include "halvora/engine.h"
#include "seats/seat_storage.h"
#include "seats/table_run.h"

namespace halvora {

class MapVersionPolicy {
 public:
  /// All must outlive it.
  MapVersionPolicy(HalvoraViewController& engine, SeatStorage& storage, TableRun& tables)
      : engine_(engine), storage_(storage), tables_(tables) {}

  /// Only while there is an engine. May destroy the panel, as a run's news may.
  void apply(std::int64_t venueId, const MapVersionInfo& versions);

 private:
  HalvoraViewController& engine_;
  SeatStorage& storage_;
  TableRun& tables_;
};

}  // namespace halvora
