// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/artwork.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>

#include "pixelmap/frame_time.h"
#include "venue/base/json_line.h"
#include "venue/plan/placed_seats.h"
#include "venue/plan/plan_canvas.h"
#include "venue/plan/seat_placing.h"

namespace halvora {

namespace {

constexpr std::int64_t kBlock = 16;
/// As wide as an importer makes the room around all seats.
constexpr std::int64_t kMostMargin = 4;
/// A video has one sample of colour for so many pixels each way.
constexpr std::int64_t kColourCell = 2;
/// Points of a letter that can be told from others.
constexpr int kLetterPoints = 7;
constexpr double kMostHalf = 24;
constexpr double kLabelHeight = 10;
/// Of a section's colour, between its seats.
constexpr float kGround = 0.25F;

constexpr Colour kNight = colourOfBytes(0, 0, 0);
constexpr Colour kSeat = colourOfBytes(255, 255, 255);
constexpr Colour kSectionColours[] = {
    colourOfBytes(76, 155, 232),  colourOfBytes(242, 193, 78),  colourOfBytes(60, 196, 141),
    colourOfBytes(167, 139, 250), colourOfBytes(57, 198, 214),  colourOfBytes(201, 162, 126),
    colourOfBytes(155, 209, 75),  colourOfBytes(217, 210, 124),
};

double distance(const PlacedSeat& one, const PlacedSeat& other) {
  return std::hypot(static_cast<double>(one.x - other.x), static_cast<double>(one.y - other.y));
}

double middle(std::vector<double>& gaps) {
  if (gaps.empty()) return 0;
  const auto at = gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 2);
  std::nth_element(gaps.begin(), at, gaps.end());
  return *at;
}

// From seat to seat, and from each seat of a row to the nearest of the row before it.
double pitchOf(std::span<const PlacedSeat> seats) {
  std::vector<double> alongRows;
  std::vector<double> acrossRows;
  std::span<const PlacedSeat> before;
  for (std::size_t begin = 0; begin < seats.size();) {
    std::size_t end = begin + 1;
    for (; end < seats.size() && seats[end].index.row == seats[begin].index.row; ++end) {
      const double gap = distance(seats[end], seats[end - 1]);
      if (gap > 0) alongRows.push_back(gap);
    }
    // The middle one has a neighbour in the row before, whichever of both is longer.
    const PlacedSeat& own = seats[begin + (end - begin) / 2];
    double nearest = std::numeric_limits<double>::max();
    for (const PlacedSeat& other : before) nearest = std::min(nearest, distance(own, other));
    if (!before.empty() && nearest > 0) acrossRows.push_back(nearest);
    before = seats.subspan(begin, end - begin);
    begin = end;
  }
  return std::max(middle(alongRows), middle(acrossRows));
}

CanvasPoint pixelOf(const PlacedSeat& seat) {
  return {static_cast<double>(seat.x) + 0.5, static_cast<double>(seat.y) + 0.5};
}

// As far as the middle of four neighbours.
void drawAround(PlanCanvas& picture, std::span<const PlacedSeat> seats, const Colour& colour) {
  const double half = std::clamp(pitchOf(seats) * 0.71, 0.5, kMostHalf);
  for (const PlacedSeat& seat : seats) picture.disc(pixelOf(seat), half, colour);
}

// The seat that is nearest to the middle of all, which may lie outside of an arc.
CanvasPoint labelPlaceOf(std::span<const PlacedSeat> seats) {
  CanvasPoint middle;
  for (const PlacedSeat& seat : seats) {
    middle.x += pixelOf(seat).x / static_cast<double>(seats.size());
    middle.y += pixelOf(seat).y / static_cast<double>(seats.size());
  }
  return pixelOf(*std::ranges::min_element(seats, {}, [middle](const PlacedSeat& seat) {
    const CanvasPoint at = pixelOf(seat);
    return std::hypot(at.x - middle.x, at.y - middle.y);
  }));
}

// Calls `take` with each section's seats.
template <class Take>
void forEachSection(const std::vector<PlacedSeat>& seats, const Take& take) {
  for (std::size_t begin = 0; begin < seats.size();) {
    std::size_t end = begin;
    while (end < seats.size() && seats[end].index.section == seats[begin].index.section) ++end;
    take(std::span(seats).subspan(begin, end - begin));
    begin = end;
  }
}

int sideFor(std::int64_t least, std::int64_t greatest) {
  if (least < 0 || greatest >= kLargestCanvas) return 0;
  const std::int64_t side = greatest + std::min(least, kMostMargin) + kColourCell;
  const std::int64_t blocks = (side + kBlock - 1) / kBlock * kBlock;
  return static_cast<int>(std::min<std::int64_t>(blocks, kLargestCanvas));
}

std::string escaped(std::string_view text) {
  std::string safe;
  for (const char character : text) {
    switch (character) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      default:
        safe += character;
    }
  }
  return safe;
}

}  // namespace

ArtworkCanvas canvasFor(const SeatMap& map) {
  const std::vector<PlacedSeat> seats = placedSeatsOf(map);
  if (seats.empty()) return {};
  const auto [left, right] = std::ranges::minmax(seats, {}, &PlacedSeat::x);
  const auto [top, bottom] = std::ranges::minmax(seats, {}, &PlacedSeat::y);
  const ArtworkCanvas canvas{sideFor(left.x, right.x), sideFor(top.y, bottom.y)};
  return canvas.width == 0 || canvas.height == 0 ? ArtworkCanvas{} : canvas;
}

std::vector<SectionDetail> detailsOf(const SeatMap& map) {
  std::vector<SectionDetail> details;
  forEachSection(placedSeatsOf(map), [&](std::span<const PlacedSeat> seats) {
    const double pitch = pitchOf(seats);
    details.push_back({std::string(map.section(seats.front().index.section).displayName()),
                       seats.size(), pitch, static_cast<int>(std::ceil(pitch * kLetterPoints))});
  });
  return details;
}

Image drawGuide(const SeatMap& map, ArtworkCanvas canvas) {
  PlanCanvas picture(static_cast<std::uint32_t>(canvas.width),
                     static_cast<std::uint32_t>(canvas.height), kNight);
  const std::vector<PlacedSeat> seats = placedSeatsOf(map);
  forEachSection(seats, [&](std::span<const PlacedSeat> section) {
    const Colour& colour =
        kSectionColours[section.front().index.section % std::size(kSectionColours)];
    drawAround(picture, section,
               {colour.red * kGround, colour.green * kGround, colour.blue * kGround});
    for (const PlacedSeat& seat : section) picture.disc(pixelOf(seat), 0.5, colour);
  });
  // Over all seats, where one section lies within another.
  forEachSection(seats, [&](std::span<const PlacedSeat> section) {
    const CanvasPoint centre = labelPlaceOf(section);
    const std::string number = std::to_string(section.front().index.section + 1);
    const double width = PlanCanvas::textWidth(number, kLabelHeight);
    picture.text({std::clamp(centre.x - width / 2, 2.0, std::max(2.0, canvas.width - width - 2)),
                  centre.y - kLabelHeight / 2},
                 kLabelHeight, number, kSeat, kNight);
  });
  return picture.finish();
}

Image drawMask(const SeatMap& map, ArtworkCanvas canvas) {
  PlanCanvas picture(static_cast<std::uint32_t>(canvas.width),
                     static_cast<std::uint32_t>(canvas.height), kNight);
  forEachSection(placedSeatsOf(map),
                 [&](std::span<const PlacedSeat> seats) { drawAround(picture, seats, kSeat); });
  return picture.finish();
}

std::string artworkPage(const SeatMap& map, ArtworkCanvas canvas, const std::string& title) {
  const std::string size =
      std::to_string(canvas.width) + " × " + std::to_string(canvas.height) + " pixels";
  const std::string rate = std::to_string(static_cast<int>(kPixelMapFramesPerSecond));
  std::string page =
      "<!doctype html>\n<meta charset=\"utf-8\">\n<title>" + escaped(title) +
      "</title>\n<style>body{font:16px/1.5 sans-serif;max-width:60em;margin:2em auto;padding:0 "
      "1em}img{max-width:100%;border:1px solid #888;image-rendering:pixelated}td,th{text-align:"
      "right;padding:0 1em}td:nth-child(2),th:nth-child(2){text-align:left}</style>\n<h1>" +
      escaped(title) + "</h1>\n<p>A video for this hall is <b>" + size + "</b> and has <b>" + rate +
      " frames a second</b>, none left out. It lasts at most " +
      std::to_string(kMostPixelMapFrames / static_cast<int>(kPixelMapFramesPerSecond) / 60) +
      " minutes; H.264 in MP4. Each phone shows the one pixel of its seat, and "
      "a video has one sample of colour for two by two pixels, so no finer detail has a colour of "
      "its own.</p>\n<p>What is not white in the mask is seen by nobody. No seat should flash more "
      "than three times in any second.</p>\n<h2>Where people sit</h2>\n<p><img src=\"guide.png\" "
      "alt=\"Every seat as a dot, each section in a colour, with its number\"></p>\n<h2>The "
      "mask</h2>"
      "\n<p><img src=\"mask.png\" alt=\"White where somebody sits\"></p>\n<h2>The smallest letter "
      "that reads</h2>\n<p>A letter needs five by seven points, and each point a seat. Smaller "
      "ones "
      "fall between the seats.</p>\n<table>\n<tr><th>Number<th>Section<th>Seats<th>From seat to "
      "seat"
      "<th>Smallest letter, height\n";
  int number = 0;
  for (const SectionDetail& section : detailsOf(map)) {
    page += "<tr><td>" + std::to_string(++number) + "<td>" + escaped(section.name) + "<td>" +
            std::to_string(section.seats);
    page += section.letter > 0 ? "<td>" + levelText(section.pitch) + " pixels<td>" +
                                     std::to_string(section.letter) + " pixels\n"
                               : "<td>–<td>none\n";
  }
  return page + "</table>\n";
}

}  // namespace halvora
