// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/map_report.h"

#include <algorithm>
#include <map>
#include <utility>

#include "seats/seat_names.h"
#include "seats/standing_overlay.h"
#include "venue/plan/placed_seats.h"

namespace halvora {

namespace {

std::string placeText(const PlacedSeat& seat) {
  return "(" + std::to_string(seat.x) + ", " + std::to_string(seat.y) + ")";
}

void addIfAny(std::vector<Finding>& findings, Finding finding) {
  if (finding.count > 0) findings.push_back(std::move(finding));
}

Finding findSharedPixels(const SeatMap& map, const std::vector<PlacedSeat>& seats) {
  constexpr std::size_t kMostNames = 3;
  Finding finding{"sharedPixel", "", 0, {}};
  for (const std::vector<PlacedSeat>& pixel : sharedPixelsOf(seats)) {
    finding.count += pixel.size();
    if (!finding.wantsExamples()) continue;
    std::string example;
    for (std::size_t at = 0; at < std::min(pixel.size(), kMostNames); ++at) {
      if (at > 0) example += ", ";
      example += seatLabel(map, pixel[at].index);
    }
    if (pixel.size() > kMostNames) {
      example += " and " + counted(pixel.size() - kMostNames, "other", "others");
    }
    finding.examples.push_back(example + " at " + placeText(pixel.front()));
  }
  finding.text = counted(finding.count, "seat", "seats") +
                 " share a pixel with another seat and will always show the same colour";
  return finding;
}

template <class IsWrong>
Finding findSeats(const SeatMap& map, const std::vector<PlacedSeat>& seats, std::string kind,
                  const IsWrong& isWrong) {
  Finding finding{std::move(kind), "", 0, {}};
  for (const PlacedSeat& seat : seats) {
    if (!isWrong(seat)) continue;
    ++finding.count;
    if (!finding.wantsExamples()) continue;
    finding.examples.push_back(seatLabel(map, seat.index) + " at " + placeText(seat));
  }
  return finding;
}

Finding findNegativePositions(const SeatMap& map, const std::vector<PlacedSeat>& seats) {
  Finding finding = findSeats(map, seats, "negativePosition",
                              [](const PlacedSeat& seat) { return seat.x < 0 || seat.y < 0; });
  finding.text = counted(finding.count, "seat has", "seats have") +
                 " a negative position and counts as no seat";
  return finding;
}

using PicturesBySize = std::map<FrameSize, std::vector<std::string>>;

PicturesBySize picturesBySize(const std::vector<FoundPicture>& pictures) {
  PicturesBySize groups;
  for (const FoundPicture& picture : pictures) groups[picture.size].push_back(picture.name);
  return groups;
}

// "640 x 360: 1/video.mp4, 2/video.mp4"
std::string groupText(const PicturesBySize::value_type& group) {
  const auto& [size, names] = group;
  std::string text = std::to_string(size.width) + " x " + std::to_string(size.height) + ": ";
  const std::size_t listed = std::min(names.size(), Finding::kMostExamples);
  for (std::size_t at = 0; at < listed; ++at) text += (at > 0 ? ", " : "") + names[at];
  if (names.size() == listed) return text;
  return text + " and " + counted(names.size() - listed, "other", "others");
}

Finding findOutside(const SeatMap& map, const std::vector<PlacedSeat>& seats,
                    const PicturesBySize::value_type& group) {
  const auto& [size, names] = group;
  const std::int64_t width = size.width;
  const std::int64_t height = size.height;
  Finding finding = findSeats(map, seats, "outsideFrame", [width, height](const PlacedSeat& seat) {
    return seat.x >= 0 && seat.y >= 0 && (seat.x >= width || seat.y >= height);
  });
  finding.text = counted(finding.count, "seat lies", "seats lie") +
                 " outside of the picture, which is " + groupText(group);
  return finding;
}

Finding findSizes(const PicturesBySize& groups) {
  Finding finding{"frameSizesDiffer", "", groups.size() > 1 ? groups.size() : 0, {}};
  finding.text = "the pictures have " + counted(groups.size(), "size", "different sizes") +
                 ", and a seat has one position for all of them";
  for (const auto& group : groups) {
    if (finding.wantsExamples()) finding.examples.push_back(groupText(group));
  }
  return finding;
}

/// Counts names that come more than once among those of one section or row.
class RepeatedNames {
 public:
  explicit RepeatedNames(std::string kind) : finding_{std::move(kind), "", 0, {}} {}

  void add(std::string_view name) { names_.push_back(name); }
  /// Forgets the names that were added; `within` says in examples where they stood.
  void settle(const std::string& within) {
    std::sort(names_.begin(), names_.end());
    for (auto name = names_.begin(); name != names_.end();) {
      const auto end = std::upper_bound(name, names_.end(), *name);
      if (end - name > 1) {
        ++finding_.count;
        if (finding_.wantsExamples()) {
          finding_.examples.push_back(
              within + std::string(*name) + ", " +
              counted(static_cast<std::uint64_t>(end - name), "time", "times"));
        }
      }
      name = end;
    }
    names_.clear();
  }
  Finding finish(const char* one, const char* many) {
    finding_.text = counted(finding_.count, one, many);
    return std::move(finding_);
  }

 private:
  Finding finding_;
  std::vector<std::string_view> names_;
};

void findRepeatedNames(const SeatMap& map, std::vector<Finding>& findings) {
  RepeatedNames sections("duplicateSection");
  RepeatedNames rows("duplicateRow");
  RepeatedNames seats("duplicateSeat");
  for (std::size_t at = 0; at < map.sectionCount(); ++at) {
    const SeatMap::SectionItem section = map.section(at);
    const std::string label = std::string(section.displayName()) + " / ";
    sections.add(section.displayName());
    for (std::size_t rowAt = 0; rowAt < section.rowCount(); ++rowAt) {
      const SeatMap::RowItem row = section.row(rowAt);
      rows.add(row.displayName());
      for (std::size_t seat = 0; seat < row.seatCount(); ++seat) {
        seats.add(row.seat(seat).displayName);
      }
      seats.settle(label + std::string(row.displayName()) + " / ");
    }
    rows.settle(label);
  }
  sections.settle("");
  addIfAny(findings, sections.finish("section name comes more than once",
                                     "section names come more than once"));
  addIfAny(findings, rows.finish("row name comes more than once in its section",
                                 "row names come more than once in their section"));
  addIfAny(findings, seats.finish("seat name comes more than once in its row",
                                  "seat names come more than once in their row"));
}

Finding findOverlay(const std::vector<std::string>& areas, const VenueAssets& assets) {
  Finding finding{"overlayMissing", "", assets.overlay ? 0 : areas.size(), {}};
  finding.text = counted(finding.count, "standing area has", "standing areas have") +
                 " no plan to stand on: none of";
  for (const std::string_view name : kStandingOverlayNames) finding.text.append(" ").append(name);
  finding.text += " in the venue's folder is a picture";
  for (const std::string& area : areas) {
    if (finding.wantsExamples()) finding.examples.push_back(area);
  }
  return finding;
}

void count(const SeatMap& map, MapReport& report, std::vector<std::string>& standingAreas) {
  report.sections = map.sectionCount();
  for (std::size_t at = 0; at < map.sectionCount(); ++at) {
    const SeatMap::SectionItem section = map.section(at);
    std::uint64_t seats = 0;
    for (std::size_t row = 0; row < section.rowCount(); ++row) {
      seats += section.row(row).seatCount();
    }
    report.rows += section.rowCount();
    report.seats += seats;
    if (!isStandingName(section.displayName())) continue;
    report.standingPlaces += seats;
    standingAreas.emplace_back(section.displayName());
  }
  report.standingAreas = standingAreas.size();
}

std::optional<PositionRange> rangeOf(const std::vector<PlacedSeat>& seats) {
  if (seats.empty()) return std::nullopt;
  const PlacedSeat& first = seats.front();
  PositionRange range{first.x, first.x, first.y, first.y};
  for (const PlacedSeat& seat : seats) {
    range.leastX = std::min(range.leastX, seat.x);
    range.greatestX = std::max(range.greatestX, seat.x);
    range.leastY = std::min(range.leastY, seat.y);
    range.greatestY = std::max(range.greatestY, seat.y);
  }
  return range;
}

}  // namespace

MapReport reportOn(const SeatMap& map, const DocumentReport& document, VenueAssets assets) {
  MapReport report;
  std::vector<std::string> standingAreas;
  count(map, report, standingAreas);
  const std::vector<PlacedSeat> seats = placedSeatsOf(map);
  report.positions = rangeOf(seats);
  report.versions = document.versions;
  std::vector<Finding>& findings = report.findings;
  findings = document.findings;
  if (map.isEmpty() && document.isJson) {
    findings.push_back({"noSeats", "the document holds no seats: there is no map", 1, {}});
  }
  addIfAny(findings, findSharedPixels(map, seats));
  addIfAny(findings, findNegativePositions(map, seats));
  const PicturesBySize groups = picturesBySize(assets.pictures);
  for (const auto& group : groups) addIfAny(findings, findOutside(map, seats, group));
  findRepeatedNames(map, findings);
  addIfAny(findings, findOverlay(standingAreas, assets));
  addIfAny(findings, findSizes(groups));
  findings.insert(findings.end(), assets.findings.begin(), assets.findings.end());
  assets.findings.clear();
  report.assets = std::move(assets);
  return report;
}

}  // namespace halvora
