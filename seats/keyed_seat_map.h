// SPDX-License-Identifier: Apache-2.0
// The compact layout of a seat map: objects in objects, from section keys over row keys to seat
// keys, each seat an array of its position. Is told the document from the object of sections on
// and builds the map as it goes, an object's items being put in order at its end. One thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "halvora/platform/json.h"
#include "seats/seat_keys.h"
#include "seats/seat_map.h"
#include "seats/seat_texts.h"

namespace halvora {

class KeyedSeatMap {
 public:
  KeyedSeatMap(SeatMapBuilder& builder, const SeatMapTexts& texts)
      : builder_(builder),
        keys_{SeatKeyList(builder, texts.sectionPrefix), SeatKeyList(builder, texts.rowPrefix),
              SeatKeyList(builder, texts.seatPrefix)} {}

  /// From here on, until the object of sections has ended, everything is to be told.
  void open() { depth_ = kSections; }
  bool isOpen() const { return depth_ > 0; }

  bool begin(std::string_view name, JsonContainer container);
  void end();
  void scalar(std::string_view name, const JsonScalar& value);

 private:
  enum Depth : int { kSections = 1, kRows, kSeats, kPosition };

  SeatKeyList& keys(int depth) { return keys_[static_cast<std::size_t>(depth - kSections)]; }
  // Whether what ends becomes an item of the object around it.
  bool endPosition();
  bool endObject();

  SeatMapBuilder& builder_;
  /// The keys of the objects that are being read.
  std::array<SeatKeyList, 3> keys_;
  int depth_ = 0;
  /// The position that is being read, and how many elements it has so far.
  std::array<std::int64_t, 2> position_{};
  std::size_t elements_ = 0;
};

}  // namespace halvora
