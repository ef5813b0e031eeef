// SPDX-License-Identifier: Apache-2.0
// Squares of a canvas, each for one seat, and the nearest free one to a place. What was seen to be
// taken near a place is never looked at again from there, so however many seats a list puts into
// one place, each of them costs about the same. Value; one thread.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace halvora {

class FreeSquares {
 public:
  struct Square {
    int column = 0;
    int row = 0;
  };

  FreeSquares(int columns, int rows) : columns_(columns), rows_(rows) {}

  /// Takes the place itself or the nearest square in the rings around it; none where all are taken.
  std::optional<Square> take(int column, int row);
  /// How many squares were looked at until now.
  std::uint64_t looks() const { return looks_; }

 private:
  /// The next square of a search: so far in a ring around the place.
  struct Search {
    int ring = 1;
    int step = 0;
  };

  static Square squareOf(const Search& search);
  bool takeIfFree(Square square);
  std::int64_t keyOf(Square square) const {
    return std::int64_t{square.row} * columns_ + square.column;
  }

  int columns_;
  int rows_;
  std::unordered_set<std::int64_t> taken_;
  std::unordered_map<std::int64_t, Search> searches_;
  std::uint64_t looks_ = 0;
};

}  // namespace halvora
