// SPDX-License-Identifier: Apache-2.0
// What an artist needs to light a venue's seats with a video: how large the picture is, where in it
// people sit, and how large something must be to be read there. Pure functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "halvora/platform/image.h"
#include "seats/seat_map.h"

namespace halvora {

/// Of a video: whole blocks of its codec, as many as hold all seats with the same room on both
/// sides; 0 where seats are outside of what phones decode.
struct ArtworkCanvas {
  int width = 0;
  int height = 0;
};
ArtworkCanvas canvasFor(const SeatMap& map);

/// Of a section whose seats are so far apart.
struct SectionDetail {
  std::string name;
  std::size_t seats = 0;
  /// From seat to seat or from row to row, whichever is more, as most of them are; in pixels. 0
  /// where there is a single seat.
  double pitch = 0;
  /// How high a letter of 5 by 7 points is of which every point has a seat; 0 likewise.
  int letter = 0;
};
/// In the order of the map.
std::vector<SectionDetail> detailsOf(const SeatMap& map);

/// Of the canvas's size: every seat's pixel, a colour a section, with the sections' numbers in the
/// order of the map.
Image drawGuide(const SeatMap& map, ArtworkCanvas canvas);
/// White where somebody sits, and between neighbours; black where nobody sees anything.
Image drawMask(const SeatMap& map, ArtworkCanvas canvas);

/// A page that stands beside both pictures, for a browser.
std::string artworkPage(const SeatMap& map, ArtworkCanvas canvas, const std::string& title);

}  // namespace halvora
