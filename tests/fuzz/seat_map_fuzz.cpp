// SPDX-License-Identifier: Apache-2.0
// Any bytes as a seat map document: the direct parse gives what the rules give on a tree of values,
// reads nothing beyond the document's end, and every section can be drawn as a plan.
#include <algorithm>
#include <cmath>

#include "adapters/json/exact_json_reader.h"
#include "seats/seat_map_document.h"
#include "seats/standing_plan.h"
#include "tests/fuzz/fuzz_targets.h"
#include "tests/fuzz/json_reference.h"
#include "tests/seats/plain_seat_map.h"
#include "tests/seats/seat_map_lines.h"

namespace halvora {

namespace {

bool isShare(double value) { return value >= 0 && value <= 1; }

void checkPlan(const SeatMap::SectionItem& section) {
  const auto points = standingSeatPointsOf(section);
  std::size_t seats = 0;
  for (std::size_t row = 0; row < section.rowCount(); ++row) seats += section.row(row).seatCount();
  require(points.size() == seats, "a plan has a point for each seat");
  for (const StandingSeatPoint& point : points) {
    require(isShare(point.xNorm) && isShare(point.yNorm), "a point lies on the plan");
    require(standingSeatAt(points, point.rowIndex, point.seatIndex) == &point,
            "a seat's point is found");
    const auto* nearest = nearestStandingSeat(points, point.xNorm, point.yNorm);
    require(nearest != nullptr && nearest->xNorm == point.xNorm && nearest->yNorm == point.yNorm,
            "nothing is nearer to a point than itself");
    constexpr double kDot = 14;
    const auto dot = standingDotCenter({300, 200}, kDot, point.xNorm, point.yNorm);
    require(dot && dot->x >= kDot / 2 && dot->x <= 300 - kDot / 2 && dot->y >= kDot / 2 &&
                dot->y <= 200 - kDot / 2,
            "a dot lies on the plan");
  }
  require(nearestStandingSeat(points, std::nan(""), -1e300) != nullptr, "any touch has a seat");
}

}  // namespace

int fuzzSeatMap(FuzzBytes bytes) {
  const std::string_view text = textOf(bytes);
  const ExactJsonReader json;
  const auto tree = json.parse(text, nullptr);
  if (isComparableJson(text)) {
    require(tree.has_value() == rapidJsonAccepts(text), "another reader takes the same documents");
  }
  const SeatMap map = parseSeatMapSectionsFromJSON(text, {}, json);
  if (!tree) {
    require(map.isEmpty(), "a malformed document is no map");
  } else if (!hasDigits(text, 19)) {
    // An integer beyond 64 bits is rounded in a tree of values; as a name it stays as written.
    require(linesOf(map) == plainSeatMapLines(*tree, {}), "the direct parse keeps to the rules");
  }
  for (std::size_t at = 0; at < map.sectionCount(); ++at) {
    const auto section = map.section(at);
    require(section.rowCount() > 0, "a section has rows");
    for (std::size_t row = 0; row < section.rowCount(); ++row) {
      require(section.row(row).seatCount() > 0, "a row has seats");
    }
  }
  return 0;
}

int fuzzStanding(FuzzBytes bytes) {
  const ExactJsonReader json;
  const SeatMap map = parseSeatMapSectionsFromJSON(textOf(bytes), {}, json);
  for (std::size_t at = 0; at < map.sectionCount(); ++at) checkPlan(map.section(at));
  return 0;
}

}  // namespace halvora
