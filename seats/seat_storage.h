// SPDX-License-Identifier: Apache-2.0
// What is remembered of the user's seats: for each venue the seat, the versions of the map it was
// chosen on and whether its tables are built; and, in flat keys that the engine reads, the seat in
// the present venue. Stored values may be of any type. Owned by the status panel; main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "halvora/platform/user_defaults.h"

namespace halvora {

struct SeatPoint {
  std::int64_t x = 0;
  std::int64_t y = 0;
  friend bool operator==(const SeatPoint&, const SeatPoint&) = default;
};

struct SeatNames {
  std::string section;
  std::string row;
  std::string seat;

  bool areComplete() const { return !section.empty() && !row.empty() && !seat.empty(); }
};

/// The versions of a venue's seat map and of its pixel maps.
struct MapVersionInfo {
  std::int64_t seatVersion = 1;
  std::int64_t mapAssetsVersion = 1;
  friend bool operator==(const MapVersionInfo&, const MapVersionInfo&) = default;
};

struct StoredMapVersions {
  std::optional<std::int64_t> seatVersion;
  std::optional<std::int64_t> mapAssetsVersion;
};

/// A record's labels; what is no text is empty.
SeatNames seatNamesOf(const DefaultsDictionary& record);

/// A venue id below 1 stores nothing and finds nothing. Every write is synchronised; a write of
/// what is there already is none.
class SeatStorage {
 public:
  static constexpr std::string_view seatSelectionStorageKey = "seatSelectionByVenue";
  static constexpr std::string_view seatVersionStorageKey = "seatVersionByVenue";
  static constexpr std::string_view mapAssetsVersionStorageKey = "mapAssetsVersionByVenue";
  static constexpr std::string_view seatLUTReadyStorageKey = "seatLUTReadyByVenue";
  static constexpr std::string_view seatDayStorageKey = "seatDayByVenue";

  explicit SeatStorage(UserDefaults& defaults) : defaults_(defaults) {}

  static std::string seatSelectionVenueKeyForVenueId(std::int64_t venueId) {
    return std::to_string(venueId);
  }

  /// Null for none. Lives until the next write.
  const DefaultsDictionary* seatSelectionForVenueId(std::int64_t venueId) const;
  void persistSeatSelectionForVenueId(std::int64_t venueId, const SeatNames& names, SeatPoint seat);
  /// The day on which the user chose the venue's seat, or said last that it still holds, as a
  /// number like 20260605; none for a seat of which that was not kept.
  std::optional<std::int64_t> seatDayForVenueId(std::int64_t venueId) const;
  void setSeatDay(std::int64_t day, std::int64_t venueId);
  /// The seat's place, if the venue's record is complete.
  std::optional<SeatPoint> hasValidSeatSelectionForVenueId(std::int64_t venueId) const;
  /// The flat keys go too, whichever venue they are of.
  void clearSeatSelectionForVenueId(std::int64_t venueId);

  /// Copies the venue's record, or that there is none, into the flat keys.
  void syncSeatDefaultsForVenueId(std::int64_t venueId);
  /// The flat keys alone, for a seat that has just been chosen.
  void setSeatDefaults(const SeatNames& names, SeatPoint seat);

  bool persistedSeatLUTReadyForVenueId(std::int64_t venueId) const;
  /// Whether it has been stored that they are not ready, as it is when their building begins.
  bool isSeatLUTUnfinishedForVenueId(std::int64_t venueId) const;
  void setPersistedSeatLUTReady(bool ready, std::int64_t venueId);

  StoredMapVersions mapVersionsForVenueId(std::int64_t venueId) const;
  void setMapVersions(const MapVersionInfo& versions, std::int64_t venueId);

 private:
  /// None where no number is stored.
  std::optional<bool> storedSeatLUTReady(std::int64_t venueId) const;
  const DefaultsValue* findForVenue(std::string_view key, std::int64_t venueId) const;
  void setForVenue(std::string_view key, std::int64_t venueId, DefaultsValue value);
  void setText(std::string_view key, std::string text);
  void setLabel(std::string_view key, const std::string& label);
  void set(std::string_view key, DefaultsValue value);
  void remove(std::string_view key);
  void finish();

  UserDefaults& defaults_;
  bool hasWritten_ = false;
};

}  // namespace halvora
