// SPDX-License-Identifier: Apache-2.0
// The flaws of a seat map's document, counted by kind, with the first few places of each. One
// thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/json.h"
#include "venue/plan/map_report.h"

namespace halvora {

enum class Flaw : std::uint8_t {
  unusedPart,
  repeatedMember,
  sectionSkipped,
  rowSkipped,
  seatSkipped,
  listMissing,
  cutShort,
  rowWithoutSeats,
  sectionWithoutRows,
  nameUnusable,
  nameMissing,
  positionChanged,
  positionUnusable,
  positionMissing,
};
inline constexpr std::size_t kFlaws = 14;

class FlawList {
 public:
  /// `place` is called for the first few only, and gives a text.
  template <class Place>
  void add(Flaw flaw, const Place& place) {
    Finding& finding = findings_[static_cast<std::size_t>(flaw)];
    ++finding.count;
    if (finding.wantsExamples()) finding.examples.push_back(place());
  }
  /// Takes what another list has of a kind behind its own.
  void takeFrom(const FlawList& other, Flaw flaw);
  std::uint64_t count(Flaw flaw) const { return findings_[static_cast<std::size_t>(flaw)].count; }
  std::vector<Finding> finish() const;

 private:
  static Finding none() {
    Finding finding;
    finding.count = 0;
    return finding;
  }
  std::array<Finding, kFlaws> findings_ = [] {
    std::array<Finding, kFlaws> all;
    all.fill(none());
    return all;
  }();
};

/// A value as the document has it, cut to a length that fits a line; "null", "a list", "an object".
std::string shownText(const JsonScalar& value);
constexpr std::string_view shownText(JsonContainer container) {
  return container == JsonContainer::array ? "a list" : "an object";
}

/// Whether a position that is written so is the one that it is read as.
bool saysWhatItMeans(const JsonScalar& position);
/// What a number or a text counts as where a position is wanted.
std::int64_t countedAs(const JsonScalar& position);

}  // namespace halvora
