// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/free_squares.h"

#include <algorithm>

namespace halvora {

// From the middle: the ring's upper edge, then left and right in turns, then the lower edge.
FreeSquares::Square FreeSquares::squareOf(const Search& search) {
  const int ring = search.ring;
  const int edge = 2 * ring + 1;
  const int sides = 2 * (edge - 2);
  if (search.step < edge) return {search.step - ring, -ring};
  const int step = search.step - edge;
  if (step < sides) return {step % 2 == 0 ? -ring : ring, step / 2 + 1 - ring};
  return {step - sides - ring, ring};
}

bool FreeSquares::takeIfFree(Square square) {
  ++looks_;
  const bool isThere =
      square.column >= 0 && square.row >= 0 && square.column < columns_ && square.row < rows_;
  return isThere && taken_.insert(keyOf(square)).second;
}

std::optional<FreeSquares::Square> FreeSquares::take(int column, int row) {
  const Square place{column, row};
  if (takeIfFree(place)) return place;
  for (Search& search = searches_[keyOf(place)]; search.ring < std::max(columns_, rows_);
       search = {search.ring + 1, 0}) {
    const int steps = 8 * search.ring;
    while (search.step < steps) {
      const Square offset = squareOf(search);
      ++search.step;
      const Square square{column + offset.column, row + offset.row};
      if (takeIfFree(square)) return square;
    }
  }
  return std::nullopt;
}

}  // namespace halvora
