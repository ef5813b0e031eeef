// SPDX-License-Identifier: Apache-2.0
#include "seats/table_run.h"

#include <algorithm>
#include <new>
#include <string>

namespace halvora {

using Kind = TableRunNews::Kind;

TableRun::TableRun(HalvoraViewController& engine, SeatStorage& storage,
                   std::function<void(const TableRunNews&)> told)
    : engine_(engine), engineLife_(engine.life()), storage_(storage), told_(std::move(told)) {}

TableRun::~TableRun() = default;

// By a copy, which whoever is told does not take along.
void TableRun::tell(const TableRunNews& news) {
  const auto told = told_;
  told(news);
}

void TableRun::start(std::int64_t venueId, SeatPoint seat) {
  if (seat.x < 0 || seat.y < 0 || venueId < 1 || isInProgress_ || engineLife_.isGone()) return;
  const Witness self(life_);
  finished_.reset();
  generation_ = engine_.pixelMapPrecomputeGeneration();
  try {
    storage_.setPersistedSeatLUTReady(false, venueId);
    tell({Kind::progress, 0, 1});
    if (self.isGone() || engineLife_.isGone()) return;
    build(venueId, seat);
  } catch (const std::bad_alloc&) {
    // A later refresh begins again.
    if (!self.isGone()) giveUp();
  }
}

void TableRun::build(std::int64_t venueId, SeatPoint seat) {
  const std::weak_ptr<bool> weak = alive_;
  const std::uint64_t number = ++number_;
  const auto isWanted = [this, weak, number] { return !weak.expired() && number_ == number; };
  engine_.precomputePixelMapLUTsForVenueId(
      venueId, seat.x, seat.y,
      [this, isWanted](int done, int total, const std::string& /*mapId*/) {
        if (isWanted()) tell({Kind::progress, done, std::max(total, 1)});
      },
      [this, isWanted, venueId, seat](int done, int total) {
        if (isWanted()) buildEnded(venueId, seat, done, total);
      });
  generation_ = engine_.pixelMapPrecomputeGeneration();
}

// What is stored is of the seat that is chosen now, and the user may have chosen another one while
// these tables were built: its own come next.
void TableRun::buildEnded(std::int64_t venueId, SeatPoint seat, int done, int total) {
  const Witness self(life_);
  try {
    const auto chosen = storage_.hasValidSeatSelectionForVenueId(venueId);
    if (chosen && *chosen != seat) done = -1;
    finished_ = {venueId, seat};
    storage_.setPersistedSeatLUTReady(total > 0 && done >= total, venueId);
    tell({Kind::end, done, std::max(total, 0)});
  } catch (const std::bad_alloc&) {
    // Or it would be under way for good. A later refresh begins again, and finds the tables.
    if (!self.isGone()) {
      forget();
      finished_.reset();
    }
    throw;
  }
}

// Nobody goes on with tables whose process died, whose run another one has ended, or whose seat was
// not the chosen one any more. Tables that are there are only looked at.
void TableRun::lookAfter(std::int64_t venueId, bool mayStart) {
  const bool isAbandoned = isInProgress_ && engine_.pixelMapPrecomputeGeneration() != generation_;
  if (isAbandoned) giveUp();
  if (!mayStart || isInProgress_ || engine_.isPrecomputingPixelMapLUTs()) return;
  if (!storage_.isSeatLUTUnfinishedForVenueId(venueId)) return;
  const auto seat = storage_.hasValidSeatSelectionForVenueId(venueId);
  if (seat && finished_ != std::pair(venueId, *seat)) start(venueId, *seat);
}

bool TableRun::progressed(int done) {
  const bool hasGrown = done > 0 && isInProgress_ && done > lastDone_;
  isInProgress_ = true;
  lastDone_ = std::max(done, 0);
  return hasGrown;
}

bool TableRun::ended(int done, int total) {
  const bool wasReady = isReady_;
  isReady_ = done >= total && total >= 1;
  isInProgress_ = false;
  lastDone_ = -1;
  return isReady_ && !wasReady;
}

void TableRun::forget() {
  ++number_;
  isInProgress_ = false;
  isReady_ = false;
  lastDone_ = -1;
}

void TableRun::readStored(std::int64_t venueId) {
  if (!isInProgress_) isReady_ = storage_.persistedSeatLUTReadyForVenueId(venueId);
}

}  // namespace halvora
