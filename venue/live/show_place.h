// SPDX-License-Identifier: Apache-2.0
// Where a played show is, for a player that stands by: beside the journal of sequence numbers lies
// a small file, replaced whole at each change and gone when a player ends as it should. Whoever
// finds it once the journal is free knows that the player has died, and where it was.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/serial_queues.h"
#include "halvora/platform/time.h"
#include "venue/live/show_player.h"

namespace halvora {

/// What the phones of a zone show while the cue that runs is another zone's, or all is black.
struct ZoneLook {
  std::uint8_t zone = 0;
  Broadcast look;
};

/// A value; any thread.
struct ShowPlace {
  /// When that was so.
  Date date;
  /// Of the cue that was played last; the two lists may not be the same to the letter.
  std::string cueName;
  PlayerPlace player;
  std::vector<ZoneLook> zones;
};

std::string packPlace(const ShowPlace& place);
/// None where the bytes are no place.
std::optional<ShowPlace> unpackPlace(std::string_view bytes);
/// How long after its cue began a show is now: what is held stands still. A clock that was set back
/// or by more than a day counts for nothing.
Duration cueTimeAt(const ShowPlace& place, Date now);

/// The file. Main thread.
class PlaceFile {
 public:
  /// Without a queue it is written at once.
  PlaceFile(std::string path, std::unique_ptr<SerialQueue> queue);
  PlaceFile(const PlaceFile&) = delete;
  PlaceFile& operator=(const PlaceFile&) = delete;

  /// Soon, and not waited for: of several that wait the newest is written. It is for the death of a
  /// process, which leaves what the system was given, so no disk is waited for either.
  void keep(std::string bytes);
  /// What lies there from an earlier show.
  void forget();
  /// The player ends as it should.
  void end();
  /// The player ends in the midst of its show: what is kept stays for who stands by.
  void leave();
  /// Whether what was to be kept last could not be written. Any thread.
  bool hasFailed() const { return hasFailed_; }

 private:
  void write();

  const std::string path_;
  std::mutex mutex_;
  /// Guarded: what is to be written; empty for nothing.
  std::string newest_;
  std::atomic<bool> hasFailed_ = false;
  std::unique_ptr<SerialQueue> queue_;
};

/// Where the place of a journal's player lies.
std::string placeFileOf(const std::string& journal);

}  // namespace halvora
