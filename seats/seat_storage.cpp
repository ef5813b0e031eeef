// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_storage.h"

#include <algorithm>
#include <utility>

#include "text/defaults_values.h"
#include "text/numbers.h"
#include "text/seat_defaults.h"

namespace halvora {

namespace {

const DefaultsDictionary* dictionaryOf(const DefaultsValue* value) {
  return value != nullptr ? std::get_if<DefaultsDictionary>(&value->storage) : nullptr;
}

const DefaultsValue* find(const DefaultsDictionary& dictionary, std::string_view key) {
  const auto found =
      std::find_if(dictionary.begin(), dictionary.end(),
                   [key](const DefaultsMember& member) { return member.key == key; });
  return found == dictionary.end() ? nullptr : &found->value;
}

/// A number, flags included; none for anything else.
std::optional<std::int64_t> numberOf(const DefaultsValue* value) {
  if (value == nullptr) return std::nullopt;
  if (const auto* number = std::get_if<std::int64_t>(&value->storage)) return *number;
  if (const auto* real = std::get_if<double>(&value->storage)) return wholeNumber(*real);
  if (const auto* flag = std::get_if<bool>(&value->storage)) return *flag ? 1 : 0;
  return std::nullopt;
}

/// A number, or the integer that a text begins with.
std::optional<std::int64_t> integerOf(const DefaultsValue* value) {
  const auto* text = value != nullptr ? std::get_if<std::string>(&value->storage) : nullptr;
  return text != nullptr ? std::optional(integerValue(*text)) : numberOf(value);
}

std::string textOf(const DefaultsDictionary& dictionary, std::string_view key) {
  const DefaultsValue* value = find(dictionary, key);
  const auto* text = value != nullptr ? std::get_if<std::string>(&value->storage) : nullptr;
  return text != nullptr ? *text : std::string();
}

}  // namespace

SeatNames seatNamesOf(const DefaultsDictionary& record) {
  return {textOf(record, "section"), textOf(record, "row"), textOf(record, "seat")};
}

const DefaultsDictionary* SeatStorage::seatSelectionForVenueId(std::int64_t venueId) const {
  return dictionaryOf(findForVenue(seatSelectionStorageKey, venueId));
}

void SeatStorage::persistSeatSelectionForVenueId(std::int64_t venueId, const SeatNames& names,
                                                 SeatPoint seat) {
  setForVenue(seatSelectionStorageKey, venueId,
              DefaultsDictionary{{"section", names.section},
                                 {"row", names.row},
                                 {"seat", names.seat},
                                 {std::string(kXPosKey), seat.x},
                                 {std::string(kYPosKey), seat.y}});
  finish();
}

std::optional<SeatPoint> SeatStorage::hasValidSeatSelectionForVenueId(std::int64_t venueId) const {
  const DefaultsDictionary* record = seatSelectionForVenueId(venueId);
  if (record == nullptr || !seatNamesOf(*record).areComplete()) return std::nullopt;
  const SeatPoint seat{integerOf(find(*record, kXPosKey)).value_or(-1),
                       integerOf(find(*record, kYPosKey)).value_or(-1)};
  return seat.x >= 0 && seat.y >= 0 ? std::optional(seat) : std::nullopt;
}

void SeatStorage::clearSeatSelectionForVenueId(std::int64_t venueId) {
  if (venueId < 1) return;
  if (const auto* stored = dictionaryOf(defaults_.find(seatSelectionStorageKey))) {
    const std::string venueKey = seatSelectionVenueKeyForVenueId(venueId);
    DefaultsDictionary venues = *stored;
    std::erase_if(venues, [&](const DefaultsMember& member) { return member.key == venueKey; });
    set(seatSelectionStorageKey, std::move(venues));
  }
  setSeatDefaults({}, {0, 0});
}

void SeatStorage::syncSeatDefaultsForVenueId(std::int64_t venueId) {
  const DefaultsDictionary* record = seatSelectionForVenueId(venueId);
  if (record == nullptr) {
    setSeatDefaults({}, {0, 0});
  } else {
    setSeatDefaults(seatNamesOf(*record), {numberOf(find(*record, kXPosKey)).value_or(-1),
                                           numberOf(find(*record, kYPosKey)).value_or(-1)});
  }
}

void SeatStorage::setSeatDefaults(const SeatNames& names, SeatPoint seat) {
  setText(kXPosKey, std::to_string(seat.x));
  setText(kYPosKey, std::to_string(seat.y));
  setLabel(kSelectedSectionKey, names.section);
  setLabel(kSelectedRowKey, names.row);
  setLabel(kSelectedSeatKey, names.seat);
  finish();
}

std::optional<bool> SeatStorage::storedSeatLUTReady(std::int64_t venueId) const {
  const DefaultsValue* value = findForVenue(seatLUTReadyStorageKey, venueId);
  // Any number but 0 is a yes, one half too.
  if (const auto* real = value != nullptr ? std::get_if<double>(&value->storage) : nullptr) {
    return *real != 0;
  }
  const auto number = numberOf(value);
  return number ? std::optional(*number != 0) : std::nullopt;
}

bool SeatStorage::persistedSeatLUTReadyForVenueId(std::int64_t venueId) const {
  return storedSeatLUTReady(venueId).value_or(false);
}

bool SeatStorage::isSeatLUTUnfinishedForVenueId(std::int64_t venueId) const {
  return !storedSeatLUTReady(venueId).value_or(true);
}

void SeatStorage::setPersistedSeatLUTReady(bool ready, std::int64_t venueId) {
  setForVenue(seatLUTReadyStorageKey, venueId, ready);
  finish();
}

std::optional<std::int64_t> SeatStorage::seatDayForVenueId(std::int64_t venueId) const {
  return numberOf(findForVenue(seatDayStorageKey, venueId));
}

void SeatStorage::setSeatDay(std::int64_t day, std::int64_t venueId) {
  setForVenue(seatDayStorageKey, venueId, day);
  finish();
}

StoredMapVersions SeatStorage::mapVersionsForVenueId(std::int64_t venueId) const {
  return {numberOf(findForVenue(seatVersionStorageKey, venueId)),
          numberOf(findForVenue(mapAssetsVersionStorageKey, venueId))};
}

void SeatStorage::setMapVersions(const MapVersionInfo& versions, std::int64_t venueId) {
  setForVenue(seatVersionStorageKey, venueId, versions.seatVersion);
  setForVenue(mapAssetsVersionStorageKey, venueId, versions.mapAssetsVersion);
  finish();
}

const DefaultsValue* SeatStorage::findForVenue(std::string_view key, std::int64_t venueId) const {
  const DefaultsDictionary* venues = venueId >= 1 ? dictionaryOf(defaults_.find(key)) : nullptr;
  return venues != nullptr ? find(*venues, seatSelectionVenueKeyForVenueId(venueId)) : nullptr;
}

void SeatStorage::setForVenue(std::string_view key, std::int64_t venueId, DefaultsValue value) {
  if (venueId < 1) return;
  const DefaultsValue* present = findForVenue(key, venueId);
  if (present != nullptr && *present == value) return;
  const DefaultsDictionary* stored = dictionaryOf(defaults_.find(key));
  DefaultsDictionary venues = stored != nullptr ? *stored : DefaultsDictionary();
  const std::string venueKey = seatSelectionVenueKeyForVenueId(venueId);
  std::erase_if(venues, [&](const DefaultsMember& member) { return member.key == venueKey; });
  venues.push_back({venueKey, std::move(value)});
  set(key, std::move(venues));
}

// A number that reads the same is left as it is: the engine takes either.
void SeatStorage::setText(std::string_view key, std::string text) {
  if (textForKey(defaults_, key) != text) set(key, std::move(text));
}

void SeatStorage::setLabel(std::string_view key, const std::string& label) {
  if (label.empty()) {
    remove(key);
  } else {
    set(key, label);
  }
}

void SeatStorage::set(std::string_view key, DefaultsValue value) {
  const DefaultsValue* present = defaults_.find(key);
  if (present != nullptr && *present == value) return;
  defaults_.set(key, std::move(value));
  hasWritten_ = true;
}

void SeatStorage::remove(std::string_view key) {
  if (defaults_.find(key) == nullptr) return;
  defaults_.remove(key);
  hasWritten_ = true;
}

void SeatStorage::finish() {
  if (std::exchange(hasWritten_, false)) defaults_.synchronize();
}

}  // namespace halvora
