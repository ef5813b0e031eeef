// SPDX-License-Identifier: Apache-2.0
// The building of the chosen seat's tables, which the engine does: whether it is under way, how far
// it is, and whether the tables are ready. Owned by the status panel, which is told; what the
// engine holds of a run reaches this weakly. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "halvora/engine.h"
#include "halvora/witness.h"
#include "seats/seat_storage.h"

namespace halvora {

/// What the engine says of a run, or that there is none any more.
struct TableRunNews {
  enum class Kind : std::uint8_t { progress, end, givenUp };
  Kind kind;
  int done = 0;
  int total = 0;
};

class TableRun {
 public:
  /// `told` hears of all that the engine says, and may destroy the run. Storage and engine must
  /// outlive it, but the engine may go once it is not used any more.
  TableRun(HalvoraViewController& engine, SeatStorage& storage,
           std::function<void(const TableRunNews&)> told);
  ~TableRun();
  TableRun(const TableRun&) = delete;
  TableRun& operator=(const TableRun&) = delete;

  /// Does nothing for no venue, for a place that is none, and while a run is under way.
  void start(std::int64_t venueId, SeatPoint seat);
  /// Gives up the run that another panel's, or the host's own, has ended without a word; then, with
  /// `mayStart`, builds the venue's tables where nobody goes on with them.
  void lookAfter(std::int64_t venueId, bool mayStart);
  void giveUp() { tell({TableRunNews::Kind::givenUp}); }

  bool isInProgress() const { return isInProgress_; }
  bool isReady() const { return isReady_; }
  /// -1 for none.
  int lastDone() const { return lastDone_; }

  // What the news mean. True where a face should point it out.
  bool progressed(int done);
  bool ended(int done, int total);
  void forget();
  /// Unless a run is under way, what is stored counts.
  void readStored(std::int64_t venueId);

 private:
  void tell(const TableRunNews& news);
  void build(std::int64_t venueId, SeatPoint seat);
  void buildEnded(std::int64_t venueId, SeatPoint seat, int done, int total);

  HalvoraViewController& engine_;
  const Witness engineLife_;
  SeatStorage& storage_;
  std::function<void(const TableRunNews&)> told_;

  bool isInProgress_ = false;
  bool isReady_ = false;
  int lastDone_ = -1;
  /// Counts the runs, so that what comes late of one that was given up is told apart.
  std::uint64_t number_ = 0;
  /// The engine's number of the run.
  std::uint64_t generation_ = 0;
  /// Whose tables were gone through last; what is not ready then is not tried again by itself.
  std::optional<std::pair<std::int64_t, SeatPoint>> finished_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  Witnessed life_;
};

}  // namespace halvora
