// SPDX-License-Identifier: Apache-2.0
// A venue's sections, rows and seats: a value that does not change, a few blocks of memory however
// many seats there are. Made by SeatMapBuilder; shared between threads by whoever holds it. No
// section is without rows, no row without seats.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace halvora {

/// A piece of a map's text, all names lying one behind the other.
struct SeatMapName {
  std::uint32_t offset;
  std::uint32_t size;
};

class SeatMap {
  struct Seat {
    Seat() = default;
    Seat(std::int64_t x, std::int64_t y, SeatMapName its) : xPos(x), yPos(y), name(its) {}
    std::int64_t xPos;
    std::int64_t yPos;
    SeatMapName name;
  };
  /// A row's seats or a section's rows: `count` of them from `first` on.
  struct Group {
    SeatMapName name;
    std::uint32_t first;
    std::uint32_t count;
  };

 public:
  /// A name lives as long as the map that the item was taken from.
  struct SeatItem {
    std::string_view displayName;
    std::int64_t xPos;
    std::int64_t yPos;
  };

  class RowItem {
   public:
    std::string_view displayName() const { return map_.text(row_.name); }
    std::size_t seatCount() const { return row_.count; }
    SeatItem seat(std::size_t index) const {
      const Seat& seat = map_.seats_[row_.first + index];
      return {map_.text(seat.name), seat.xPos, seat.yPos};
    }

   private:
    friend class SeatMap;
    RowItem(const SeatMap& map, const Group& row) : map_(map), row_(row) {}
    const SeatMap& map_;
    const Group& row_;
  };

  class SectionItem {
   public:
    std::string_view displayName() const { return map_.text(section_.name); }
    std::size_t rowCount() const { return section_.count; }
    RowItem row(std::size_t index) const { return {map_, map_.rows_[section_.first + index]}; }

   private:
    friend class SeatMap;
    SectionItem(const SeatMap& map, const Group& section) : map_(map), section_(section) {}
    const SeatMap& map_;
    const Group& section_;
  };

  bool isEmpty() const { return sections_.empty(); }
  std::size_t sectionCount() const { return sections_.size(); }
  SectionItem section(std::size_t index) const { return {*this, sections_[index]}; }

 private:
  friend class SeatMapBuilder;

  std::string_view text(SeatMapName name) const {
    return std::string_view(names_).substr(name.offset, name.size);
  }

  std::vector<Group> sections_;
  std::vector<Group> rows_;
  std::vector<Seat> seats_;
  std::string names_;
};

/// Puts a map together from its seats upwards: seats are added, then the row that holds them, then
/// the section that holds its rows.
class SeatMapBuilder {
 public:
  /// All names together may have so many bytes; a map with more ends up empty.
  static constexpr std::size_t kMostNameBytes = std::size_t{1} << 30;

  SeatMapName addName(std::string_view text);
  /// The two in one.
  SeatMapName addName(std::string_view prefix, std::string_view key);
  /// Until the next name is added.
  std::string_view text(SeatMapName name) const { return map_.text(name); }

  void addSeat(SeatMapName name, std::int64_t xPos, std::int64_t yPos) {
    map_.seats_.emplace_back(xPos, yPos, name);
  }
  /// The seats added since the last row make a row. False, and no row, where there is none.
  bool endRow(SeatMapName name);
  /// The rows added since the last section make a section.
  bool endSection(SeatMapName name);

  /// What was added since the last row (section) is replaced by those of it that `order` counts
  /// up, from 0, in that order.
  void arrangeSeats(std::span<const std::uint32_t> order);
  void arrangeRows(std::span<const std::uint32_t> order);
  void arrangeSections(std::span<const std::uint32_t> order);

  void clear() { *this = {}; }
  SeatMap finish() { return isFull_ ? SeatMap() : std::move(map_); }

 private:
  SeatMap map_;
  std::size_t firstSeat_ = 0;
  std::size_t firstRow_ = 0;
  bool isFull_ = false;
};

}  // namespace halvora
