// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/seat_plan.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "seats/seat_names.h"
#include "text/numbers.h"
#include "venue/plan/placed_seats.h"
#include "venue/plan/plan_canvas.h"

namespace halvora {

namespace {

constexpr Colour kBackground = colourOfBytes(16, 18, 24);
constexpr Colour kText = colourOfBytes(236, 239, 244);
// No section has it, nor anything near it.
constexpr Colour kWarning = colourOfBytes(255, 40, 70);
constexpr Colour kSectionColours[] = {
    colourOfBytes(76, 155, 232),  colourOfBytes(242, 193, 78),  colourOfBytes(60, 196, 141),
    colourOfBytes(167, 139, 250), colourOfBytes(57, 198, 214),  colourOfBytes(201, 162, 126),
    colourOfBytes(155, 209, 75),  colourOfBytes(111, 127, 242), colourOfBytes(143, 167, 196),
    colourOfBytes(217, 210, 124), colourOfBytes(127, 209, 174), colourOfBytes(196, 181, 253),
};

constexpr const Colour& colourOf(std::size_t section) {
  return kSectionColours[section % std::size(kSectionColours)];
}

struct Box {
  double left = std::numeric_limits<double>::max();
  double top = std::numeric_limits<double>::max();
  double right = std::numeric_limits<double>::lowest();
  double bottom = std::numeric_limits<double>::lowest();

  void add(CanvasPoint point) {
    left = std::min(left, point.x);
    top = std::min(top, point.y);
    right = std::max(right, point.x);
    bottom = std::max(bottom, point.y);
  }
  double width() const { return right - left; }
  double height() const { return bottom - top; }
};

CanvasPoint positionOf(const PlacedSeat& seat) {
  return {static_cast<double>(seat.x), static_cast<double>(seat.y)};
}

double distance(CanvasPoint left, CanvasPoint right) {
  return std::hypot(left.x - right.x, left.y - right.y);
}

// Of neighbouring seats or rows most are so far apart; the closest quarter may be nearer. None: 0.
double usualGap(std::vector<double>& gaps) {
  if (gaps.empty()) return 0;
  const auto quarter = gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 4);
  std::nth_element(gaps.begin(), quarter, gaps.end());
  return *quarter;
}

double gapBetween(const std::vector<PlacedSeat>& seats) {
  std::vector<double> alongRows;
  std::vector<double> acrossRows;
  const PlacedSeat* rowsFirst = nullptr;
  for (std::size_t at = 1; at < seats.size(); ++at) {
    const PlacedSeat& seat = seats[at];
    const PlacedSeat& before = seats[at - 1];
    if (rowsFirst == nullptr) rowsFirst = &before;
    if (seat.index.section != before.index.section) {
      rowsFirst = &seat;
    } else if (seat.index.row == before.index.row) {
      const double gap = distance(positionOf(seat), positionOf(before));
      if (gap > 0) alongRows.push_back(gap);
    } else {
      const double gap = distance(positionOf(seat), positionOf(*rowsFirst));
      if (gap > 0) acrossRows.push_back(gap);
      rowsFirst = &seat;
    }
  }
  const double along = usualGap(alongRows);
  const double across = usualGap(acrossRows);
  return along > 0 && across > 0 ? std::min(along, across) : std::max(along, across);
}

// What all names begin with, up to a blank, tells nobody one section from another.
std::size_t sharedBeginning(const SeatMap& map) {
  if (map.sectionCount() < 2) return 0;
  const std::string_view first = map.section(0).displayName();
  std::size_t size = first.size();
  for (std::size_t at = 1; at < map.sectionCount(); ++at) {
    const std::string_view name = map.section(at).displayName();
    size = std::min(size, name.size());
    const auto end = first.begin() + static_cast<std::ptrdiff_t>(size);
    size = static_cast<std::size_t>(std::mismatch(first.begin(), end, name.begin()).first -
                                    first.begin());
  }
  return size == 0 ? 0 : first.rfind(' ', size - 1) + 1;
}

std::string shortened(std::string_view name) {
  constexpr std::size_t kMost = 28;
  std::size_t characters = 0;
  for (std::size_t at = 0; at < name.size(); ++at) {
    const bool isContinued = (static_cast<unsigned char>(name[at]) & 0xC0) == 0x80;
    if (!isContinued && characters++ == kMost) return std::string(name.substr(0, at)) + "..";
  }
  return std::string(name);
}

struct Section {
  std::string name;
  bool isStanding = false;
  std::uint64_t seats = 0;
  /// In the map's own positions.
  Box box;
  CanvasPoint middle;
};

std::vector<Section> sectionsOf(const SeatMap& map, const std::vector<PlacedSeat>& seats) {
  std::vector<Section> sections(map.sectionCount());
  const std::size_t beginning = sharedBeginning(map);
  for (std::size_t at = 0; at < sections.size(); ++at) {
    const std::string_view name = map.section(at).displayName();
    sections[at].name = shortened(name.substr(beginning));
    sections[at].isStanding = isStandingName(name);
  }
  for (const PlacedSeat& seat : seats) {
    Section& section = sections[seat.index.section];
    const CanvasPoint position = positionOf(seat);
    ++section.seats;
    section.box.add(position);
    section.middle.x += position.x;
    section.middle.y += position.y;
  }
  for (Section& section : sections) {
    section.middle.x /= static_cast<double>(section.seats);
    section.middle.y /= static_cast<double>(section.seats);
  }
  return sections;
}

// A text that is smaller where it would be wider than the room that it has.
void write(PlanCanvas& canvas, CanvasPoint topLeft, double height, double room,
           const std::string& text, const Colour& colour) {
  const double width = PlanCanvas::textWidth(text, height);
  const double share = std::min(1.0, room / width);
  const double lower = height * (1 - share) / 2;
  canvas.text({topLeft.x, topLeft.y + lower}, height * share, text, colour, kBackground);
}

class SeatPlan {
 public:
  SeatPlan(const SeatMap& map, double size)
      : seats_(placedSeatsOf(map)), sections_(sectionsOf(map, seats_)), unit_(size / 1600) {
    for (const auto& pixel : sharedPixelsOf(seats_)) {
      sharedSeats_ += pixel.size();
      sharedPixels_.push_back(pixel.front());
    }
    for (const Section& section : sections_) {
      box_.add({section.box.left, section.box.top});
      box_.add({section.box.right, section.box.bottom});
    }
    layOut(size);
  }

  Image draw();

 private:
  void layOut(double size);
  void layOutList();
  CanvasPoint onPlan(CanvasPoint position) const {
    return {left_ + (position.x - box_.left) * scale_, top_ + (position.y - box_.top) * scale_};
  }

  std::string labelOf(std::size_t section) const;
  std::string listEntry(std::size_t section) const;
  void drawTitle(PlanCanvas& canvas) const;
  void drawStandingBox(PlanCanvas& canvas, std::size_t section) const;
  void drawLabels(PlanCanvas& canvas) const;
  void drawShared(PlanCanvas& canvas) const;
  void drawList(PlanCanvas& canvas) const;

  const std::vector<PlacedSeat> seats_;
  const std::vector<Section> sections_;
  std::uint64_t sharedSeats_ = 0;
  std::vector<PlacedSeat> sharedPixels_;
  Box box_;
  /// Everything but the seats' places is so many units of a plan with 1600 pixels.
  const double unit_;
  double scale_ = 1;
  double seatRadius_ = 1;
  double left_ = 0;
  double top_ = 0;
  double width_ = 0;
  double height_ = 0;
  struct {
    double top = 0;
    double columnWidth = 0;
    std::size_t rows = 0;
    std::size_t entries = 0;
  } list_;
};

constexpr double kPlanMargin = 48;
constexpr double kTitleHeight = 20;
constexpr double kLabelHeight = 19;
constexpr double kListHeight = 15;
constexpr double kListLine = 30;
constexpr double kListIndent = 26;

void SeatPlan::layOut(double size) {
  // A few seats should not become balloons.
  constexpr double kMostUnitsAPosition = 60;
  constexpr double kLeastWidth = 800;
  const double margin = kPlanMargin * unit_;
  const double longer = std::max({box_.width(), box_.height(), 1.0});
  scale_ = std::min((size - 2 * margin) / longer, kMostUnitsAPosition * unit_);
  const double planWidth = box_.width() * scale_ + 2 * margin;
  width_ = std::max(planWidth, kLeastWidth * unit_);
  left_ = (width_ - planWidth) / 2 + margin;
  const double titleLines = sharedSeats_ > 0 ? 2 : 1;
  top_ = margin + (titleLines * 2 + 1) * kTitleHeight * unit_;
  list_.top = top_ + box_.height() * scale_ + margin;
  layOutList();
  height_ = list_.top + (static_cast<double>(list_.rows) + 1) * kListLine * unit_;
  const double largest = 13 * unit_ + 1;
  const double gap = gapBetween(seats_) * scale_;
  seatRadius_ = gap > 0 ? std::clamp(gap * 0.42, 1.0, largest) : largest;
}

void SeatPlan::layOutList() {
  constexpr std::size_t kMostRows = 20;
  // A third fits three times, however it was rounded.
  constexpr double kHair = 1e-6;
  double widest = 0;
  for (std::size_t at = 0; at < sections_.size(); ++at) {
    widest = std::max(widest, PlanCanvas::textWidth(listEntry(at), kListHeight * unit_));
  }
  const double room = width_ - 2 * kPlanMargin * unit_;
  list_.columnWidth = std::min(widest + 2 * kListIndent * unit_, room / 3);
  const auto columns = static_cast<std::size_t>(std::max(room / list_.columnWidth + kHair, 1.0));
  list_.rows = std::min((sections_.size() + columns - 1) / columns, kMostRows);
  list_.entries = std::min(sections_.size(), list_.rows * columns);
}

// The name, where it fits over the section's seats; the list explains a number.
std::string SeatPlan::labelOf(std::size_t at) const {
  const Section& section = sections_[at];
  const double width = PlanCanvas::textWidth(section.name, kLabelHeight * unit_);
  const bool fits = width <= section.box.width() * scale_;
  return fits ? section.name : "#" + std::to_string(at + 1);
}

std::string SeatPlan::listEntry(std::size_t at) const {
  const Section& section = sections_[at];
  const std::string label = labelOf(at);
  return label + (label == section.name ? ": " : " " + section.name + ": ") +
         (section.isStanding ? counted(section.seats, "place", "places")
                             : counted(section.seats, "seat", "seats"));
}

void SeatPlan::drawTitle(PlanCanvas& canvas) const {
  const double height = kTitleHeight * unit_;
  const double margin = kPlanMargin * unit_;
  const double room = width_ - 2 * margin;
  const auto whole = [](double value) { return std::to_string(wholeNumber(value)); };
  write(canvas, {margin, margin * 0.75}, height, room,
        counted(seats_.size(), "seat", "seats") + "   " +
            counted(sections_.size(), "section", "sections") + "   X " + whole(box_.left) + " to " +
            whole(box_.right) + "   Y " + whole(box_.top) + " to " + whole(box_.bottom),
        kText);
  if (sharedSeats_ == 0) return;
  write(canvas, {margin, margin * 0.75 + height * 2}, height, room,
        counted(sharedSeats_, "seat shares", "seats share") + " a pixel with another", kWarning);
}

void SeatPlan::drawStandingBox(PlanCanvas& canvas, std::size_t at) const {
  const Box& box = sections_[at].box;
  const double room = seatRadius_ + 10 * unit_;
  const CanvasPoint least = onPlan({box.left, box.top});
  const CanvasPoint greatest = onPlan({box.right, box.bottom});
  const CanvasPoint corners[] = {{least.x - room, least.y - room},
                                 {greatest.x + room, least.y - room},
                                 {greatest.x + room, greatest.y + room},
                                 {least.x - room, greatest.y + room}};
  for (std::size_t side = 0; side < std::size(corners); ++side) {
    const CanvasPoint from = corners[side];
    const CanvasPoint to = corners[(side + 1) % std::size(corners)];
    const double dashes = std::max(std::floor(distance(from, to) / (16 * unit_)), 1.0);
    const CanvasPoint step{(to.x - from.x) / dashes, (to.y - from.y) / dashes};
    for (double dash = 0; dash < dashes; ++dash) {
      const CanvasPoint begin{from.x + step.x * dash, from.y + step.y * dash};
      canvas.line(begin, {begin.x + step.x * 0.5, begin.y + step.y * 0.5}, 1.5 * unit_,
                  colourOf(at));
    }
  }
}

// A label stands on the seat in the middle of its section, so that it stays on its own seats where
// the section is bent.
void SeatPlan::drawLabels(PlanCanvas& canvas) const {
  if (sections_.size() == 1) return;
  std::vector<const PlacedSeat*> middles(sections_.size());
  for (const PlacedSeat& seat : seats_) {
    const PlacedSeat*& best = middles[seat.index.section];
    const CanvasPoint middle = sections_[seat.index.section].middle;
    if (best == nullptr ||
        distance(positionOf(seat), middle) < distance(positionOf(*best), middle)) {
      best = &seat;
    }
  }
  const double height = kLabelHeight * unit_;
  for (std::size_t at = 0; at < sections_.size(); ++at) {
    const std::string text = labelOf(at);
    const CanvasPoint centre = onPlan(positionOf(*middles[at]));
    canvas.text({centre.x - PlanCanvas::textWidth(text, height) / 2, centre.y - height / 2}, height,
                text, kText, kBackground);
  }
}

void SeatPlan::drawShared(PlanCanvas& canvas) const {
  const double radius = std::max(seatRadius_ * 1.2, 4 * unit_);
  for (const PlacedSeat& seat : sharedPixels_) {
    canvas.disc(onPlan(positionOf(seat)), radius + 2 * unit_, kBackground);
    canvas.disc(onPlan(positionOf(seat)), radius, kWarning);
  }
}

void SeatPlan::drawList(PlanCanvas& canvas) const {
  const double height = kListHeight * unit_;
  for (std::size_t at = 0; at < list_.entries; ++at) {
    const std::size_t column = at / list_.rows;
    const std::size_t row = at % list_.rows;
    const CanvasPoint place{kPlanMargin * unit_ + static_cast<double>(column) * list_.columnWidth,
                            list_.top + static_cast<double>(row) * kListLine * unit_};
    const bool isLast = at + 1 == list_.entries && list_.entries < sections_.size();
    if (!isLast) canvas.disc({place.x + 7 * unit_, place.y + height / 2}, 7 * unit_, colourOf(at));
    const std::string text =
        isLast ? "+ " + counted(sections_.size() - at, "section", "sections") : listEntry(at);
    write(canvas, {place.x + kListIndent * unit_, place.y}, height,
          list_.columnWidth - 2 * kListIndent * unit_, text, kText);
  }
}

Image SeatPlan::draw() {
  PlanCanvas canvas(static_cast<std::uint32_t>(std::lround(width_)),
                    static_cast<std::uint32_t>(std::lround(height_)), kBackground);
  for (std::size_t at = 0; at < sections_.size(); ++at) {
    if (sections_[at].isStanding) drawStandingBox(canvas, at);
  }
  for (const PlacedSeat& seat : seats_) {
    canvas.disc(onPlan(positionOf(seat)), seatRadius_, colourOf(seat.index.section));
  }
  drawLabels(canvas);
  drawShared(canvas);
  drawTitle(canvas);
  drawList(canvas);
  return canvas.finish();
}

}  // namespace

Image drawSeatPlan(const SeatMap& map, std::uint32_t size) {
  return SeatPlan(map, static_cast<double>(size)).draw();
}

}  // namespace halvora
