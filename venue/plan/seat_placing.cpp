// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/seat_placing.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <span>
#include <unordered_map>
#include <utility>

#include "venue/base/input_text.h"
#include "venue/base/json_buffer.h"
#include "venue/plan/free_squares.h"

namespace halvora {

namespace {

/// The side of a seat's own square.
constexpr int kCell = 2;
/// From one seat to the next where nothing says otherwise.
constexpr double kPitch = 4;
constexpr double kSectionGap = 12;
constexpr double kShelf = 1200;
/// Two seats that are so far apart never share a square: its diagonal, and a little.
constexpr double kApart = 2.9;
constexpr int kMargin = 4;
/// A video's sides are whole blocks of its codec.
constexpr int kBlock = 16;

struct Point {
  double x = 0;
  double y = 0;
};

/// The seats of a section, row by row, as places in the list.
struct SectionSeats {
  std::string name;
  std::vector<std::pair<std::string, std::vector<std::size_t>>> rows;
};

// Sections, rows and seats in the order in which they come first.
std::vector<SectionSeats> sectionsOf(const SeatList& list) {
  std::vector<SectionSeats> sections;
  std::unordered_map<std::string, std::size_t> sectionAt;
  std::map<std::pair<std::size_t, std::string>, std::size_t> rowAt;
  for (std::size_t at = 0; at < list.seats.size(); ++at) {
    const ListedSeat& seat = list.seats[at];
    const auto [section, isNewSection] = sectionAt.try_emplace(seat.section, sections.size());
    if (isNewSection) sections.push_back({seat.section, {}});
    auto& rows = sections[section->second].rows;
    const auto [row, isNewRow] = rowAt.try_emplace({section->second, seat.row}, rows.size());
    if (isNewRow) rows.emplace_back(seat.row, std::vector<std::size_t>());
    rows[row->second].second.push_back(at);
  }
  return sections;
}

void placeOnArc(const SectionSeats& section, const SeatArc& arc, std::vector<Point>& points) {
  double radius = arc.radius;
  for (const auto& [name, seats] : section.rows) {
    for (std::size_t at = 0; at < seats.size(); ++at) {
      const double share =
          seats.size() > 1 ? static_cast<double>(at) / static_cast<double>(seats.size() - 1) : 0.5;
      const double angle = (arc.from + (arc.to - arc.from) * share) * std::numbers::pi / 180;
      points[seats[at]] = {radius * std::sin(angle), -radius * std::cos(angle)};
    }
    radius += arc.pitch;
  }
}

// Sections side by side, as on shelves, from a height downwards.
void placeInBlocks(std::span<const SectionSeats* const> sections, Point corner,
                   std::vector<Point>& points) {
  const double left = corner.x;
  double shelfHeight = 0;
  for (const SectionSeats* section : sections) {
    std::size_t longest = 0;
    for (const auto& [name, seats] : section->rows) longest = std::max(longest, seats.size());
    const double width = static_cast<double>(longest) * kPitch;
    if (corner.x > left && corner.x + width > left + kShelf) {
      corner = {left, corner.y + shelfHeight + kSectionGap};
      shelfHeight = 0;
    }
    double y = corner.y;
    for (const auto& [name, seats] : section->rows) {
      for (std::size_t at = 0; at < seats.size(); ++at) {
        points[seats[at]] = {corner.x + static_cast<double>(at) * kPitch, y};
      }
      y += kPitch;
    }
    shelfHeight = std::max(shelfHeight, y - corner.y);
    corner.x += width + kSectionGap;
  }
}

struct Bounds {
  Point least{HUGE_VAL, HUGE_VAL};
  Point greatest{-HUGE_VAL, -HUGE_VAL};

  void add(Point point) {
    least = {std::min(least.x, point.x), std::min(least.y, point.y)};
    greatest = {std::max(greatest.x, point.x), std::max(greatest.y, point.y)};
  }
};

Bounds boundsOf(const std::vector<Point>& points) {
  Bounds bounds;
  for (const Point& point : points) bounds.add(point);
  return bounds;
}

// Of most seats: a few that were drawn on each other say nothing of the hall.
double usualDistance(const std::vector<Point>& points, const std::atomic<bool>& isInterrupted) {
  std::vector<std::size_t> order(points.size());
  for (std::size_t at = 0; at < order.size(); ++at) order[at] = at;
  std::ranges::sort(order, {}, [&](std::size_t at) { return points[at].x; });
  constexpr std::size_t kMostLooks = 400;
  std::vector<double> nearest;
  for (std::size_t at = 0; at < order.size() && !isInterrupted; ++at) {
    const Point& one = points[order[at]];
    double best = HUGE_VAL;
    for (std::size_t other = at + 1; other < std::min(order.size(), at + kMostLooks); ++other) {
      const Point& two = points[order[other]];
      if (two.x - one.x >= best) break;
      const double distance = std::hypot(two.x - one.x, two.y - one.y);
      if (distance > 1e-6) best = std::min(best, distance);
    }
    if (best < HUGE_VAL) nearest.push_back(best);
  }
  if (nearest.empty()) return kPitch;
  const auto low = nearest.begin() + static_cast<std::ptrdiff_t>(nearest.size() / 50);
  std::nth_element(nearest.begin(), low, nearest.end());
  return *low;
}

int wholeBlocks(double pixels) { return static_cast<int>(std::ceil(pixels / kBlock)) * kBlock; }

std::variant<PlacedList, std::string> onCanvas(const std::vector<Point>& points,
                                               const std::atomic<bool>& isInterrupted) {
  const Bounds bounds = boundsOf(points);
  const Point extent{bounds.greatest.x - bounds.least.x, bounds.greatest.y - bounds.least.y};
  constexpr double kRoom = kLargestCanvas - 2 * kMargin - kCell;
  double scale = std::max(kApart, kPitch) / usualDistance(points, isInterrupted);
  const double longest = std::max(extent.x, extent.y);
  if (longest * scale > kRoom) scale = kRoom / longest;
  PlacedList placed;
  placed.width = std::min(kLargestCanvas, wholeBlocks(extent.x * scale + 2 * kMargin + kCell));
  placed.height = std::min(kLargestCanvas, wholeBlocks(extent.y * scale + 2 * kMargin + kCell));
  // Where many lie in one place, there must be room beside it.
  const auto hasRoom = [&] {
    const auto columns = static_cast<std::size_t>(placed.width / kCell);
    return columns * static_cast<std::size_t>(placed.height / kCell) >= points.size();
  };
  while (!hasRoom() && std::min(placed.width, placed.height) < kLargestCanvas) {
    int& side = placed.width <= placed.height ? placed.width : placed.height;
    side += kBlock;
  }
  FreeSquares squares(placed.width / kCell, placed.height / kCell);
  for (const Point& point : points) {
    if (isInterrupted) return "interrupted";
    const auto square = [scale](double from, double to) {
      return static_cast<int>(std::llround((to - from) * scale + kMargin)) / kCell;
    };
    const int column = square(bounds.least.x, point.x);
    const int row = square(bounds.least.y, point.y);
    const auto place = squares.take(column, row);
    if (!place) {
      return "more seats than a canvas of 4096 pixels has squares for; import the hall in parts";
    }
    if (place->column != column || place->row != row) ++placed.moved;
    placed.places.push_back({place->column * kCell, place->row * kCell});
  }
  return placed;
}

void write(JsonWriter& writer, const std::string& text) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

}  // namespace

std::optional<SeatArc> seatArcOf(std::string_view text) {
  const std::size_t equals = text.rfind('=');
  if (equals == 0 || equals == std::string_view::npos) return std::nullopt;
  SeatArc arc{std::string(text.substr(0, equals))};
  double* const numbers[] = {&arc.from, &arc.to, &arc.radius, &arc.pitch};
  std::string_view rest = text.substr(equals + 1);
  for (double* number : numbers) {
    const std::size_t end = std::min(rest.find(','), rest.size());
    const auto value = plainNumber(std::string(rest.substr(0, end)));
    if (!value || !(std::fabs(*value) <= kLargestCanvas)) return std::nullopt;
    *number = *value;
    const bool isLast = number == &arc.pitch;
    if (isLast != (end == rest.size())) return std::nullopt;
    rest.remove_prefix(isLast ? end : end + 1);
  }
  return arc.radius >= 0 && arc.pitch > 0 ? std::optional(arc) : std::nullopt;
}

std::variant<PlacedList, std::string> placeSeats(const SeatList& list,
                                                 const std::vector<SeatArc>& arcs,
                                                 const std::atomic<bool>& isInterrupted) {
  std::vector<Point> points(list.seats.size());
  if (arcs.empty() && list.isPlaced()) {
    for (std::size_t at = 0; at < points.size(); ++at) {
      points[at] = {*list.seats[at].x, *list.seats[at].y};
    }
    return onCanvas(points, isInterrupted);
  }
  const std::vector<SectionSeats> sections = sectionsOf(list);
  std::vector<const SectionSeats*> blocks;
  Bounds bowl;
  for (const SectionSeats& section : sections) {
    const auto arc = std::ranges::find(arcs, section.name, &SeatArc::section);
    if (arc == arcs.end()) {
      blocks.push_back(&section);
      continue;
    }
    placeOnArc(section, *arc, points);
    for (const auto& [name, seats] : section.rows) {
      for (const std::size_t seat : seats) bowl.add(points[seat]);
    }
  }
  for (const SeatArc& arc : arcs) {
    if (std::ranges::find(sections, arc.section, &SectionSeats::name) == sections.end()) {
      return "--place: no section is called \"" + arc.section + "\"";
    }
  }
  const bool hasBowl = bowl.least.x < HUGE_VAL;
  placeInBlocks(blocks, hasBowl ? Point{bowl.least.x, bowl.greatest.y + 2 * kSectionGap} : Point{},
                points);
  return onCanvas(points, isInterrupted);
}

std::string seatMapDocumentOf(const SeatList& list, const PlacedList& places) {
  JsonBuffer buffer;
  JsonWriter writer(buffer);
  writer.StartObject();
  writer.Key("seatVersion");
  writer.Int(1);
  writer.Key("mapAssetsVersion");
  writer.Int(1);
  writer.Key("s");
  writer.StartObject();
  for (const SectionSeats& section : sectionsOf(list)) {
    write(writer, section.name);
    writer.StartObject();
    for (const auto& [row, seats] : section.rows) {
      write(writer, row);
      writer.StartObject();
      for (const std::size_t at : seats) {
        write(writer, list.seats[at].seat);
        writer.StartArray();
        writer.Int(places.places[at].x);
        writer.Int(places.places[at].y);
        writer.EndArray();
      }
      writer.EndObject();
    }
    writer.EndObject();
  }
  writer.EndObject();
  writer.EndObject();
  return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

}  // namespace halvora
