// SPDX-License-Identifier: Apache-2.0
// The layout of a seat map that lists everything: sections, their rows, the seats of each row. Is
// told the document from the list of sections on and builds the map as it goes. One thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "halvora/platform/json.h"
#include "seats/seat_map.h"
#include "seats/seat_texts.h"

namespace halvora {

class VerboseSeatMap {
 public:
  VerboseSeatMap(SeatMapBuilder& builder, const SeatMapTexts& texts)
      : builder_(builder), texts_(texts) {}

  /// From here on, until the list of sections has ended, everything is to be told.
  void open() { depth_ = kSections; }
  bool isOpen() const { return depth_ > 0; }

  bool begin(std::string_view name, JsonContainer container);
  void end();
  void scalar(std::string_view name, const JsonScalar& value);

 private:
  // Lists and entries take turns on the way down.
  enum Depth : int { kSections = 1, kSection, kRows, kRow, kSeats, kSeat };

  /// A section, row or seat that is being read. Of equal members the first one counts.
  struct Entry {
    std::int64_t ordinal = 0;
    SeatMapName name{};
    bool nameIsSettled = false;
    bool listIsSettled = false;
  };
  /// A seat's position along one axis: what the best of its keys so far says.
  struct Axis {
    static constexpr unsigned kNoRank = UINT32_MAX;

    unsigned rank = kNoRank;
    std::int64_t position = 0;

    void settle(unsigned keyRank, const JsonScalar& value);
    std::int64_t valueOr(std::int64_t fallback) const {
      return rank != kNoRank ? position : fallback;
    }
  };

  bool isInList() const { return depth_ % 2 != 0; }
  std::string_view listName() const { return depth_ == kSection ? "rows" : "seats"; }
  Entry& entry(int depth) { return entries_[static_cast<std::size_t>(depth / 2 - 1)]; }
  void beginEntry();
  void endEntry();
  // No value stands for one that is of no use, such as an array.
  void settleName(Entry& entry, const JsonScalar* value);
  void settleSeatMember(std::string_view name, const JsonScalar* value);
  SeatMapName nameOr(const std::string& format, const Entry& entry);

  SeatMapBuilder& builder_;
  const SeatMapTexts& texts_;
  int depth_ = 0;
  std::array<Entry, 3> entries_;
  Axis x_;
  Axis y_;
  // Which of the seat's positions have been met, a bit each.
  unsigned met_ = 0;
  std::string numberText_;
};

}  // namespace halvora
