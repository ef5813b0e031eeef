// SPDX-License-Identifier: Apache-2.0
// What is to be said about a venue's map: its size, and what is wrong with it. A pure function of
// the map and of what was found beside it. Facts stand in the report's members; whatever should be
// mended before the doors open is a finding. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "halvora/platform/json.h"
#include "seats/seat_map.h"
#include "seats/seat_storage.h"

namespace halvora {

struct Finding {
  /// One word, for programs.
  std::string kind;
  /// One sentence, for people.
  std::string text;
  /// How many of what the text speaks of.
  std::uint64_t count = 1;
  /// The first few of them.
  std::vector<std::string> examples;

  static constexpr std::size_t kMostExamples = 5;
  bool wantsExamples() const { return examples.size() < kMostExamples; }
};

struct FrameSize {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  friend bool operator==(const FrameSize&, const FrameSize&) = default;
  friend bool operator<(const FrameSize& left, const FrameSize& right) {
    return std::tie(left.width, left.height) < std::tie(right.width, right.height);
  }
};

/// A picture that can be read, by its path in the venue's folder.
struct FoundPicture {
  std::string name;
  FrameSize size;
};

struct FoundVideo {
  std::string mapId;
  FoundPicture picture;
  double seconds = 0;
  /// As the kit counts them.
  int frames = 0;
};

struct FoundStills {
  std::string mapId;
  /// Whether or not they can be read.
  std::size_t count = 0;
};

/// What a venue's folder holds beside the map.
struct VenueAssets {
  /// Those that a picture can be read of.
  std::vector<FoundVideo> videos;
  std::vector<FoundStills> stills;
  /// Whatever seats are looked up in: videos, and stills one by one.
  std::vector<FoundPicture> pictures;
  /// The plan of the standing areas.
  std::optional<FoundPicture> overlay;
  std::vector<Finding> findings;
};

/// What a map's document says outside of its seats.
struct DocumentReport {
  bool isJson = false;
  /// None where the kit finds no versions.
  std::optional<MapVersionInfo> versions;
  std::vector<Finding> findings;
};

DocumentReport reportOnDocument(std::string_view document, const JsonReader& json);

struct PositionRange {
  std::int64_t leastX = 0;
  std::int64_t greatestX = 0;
  std::int64_t leastY = 0;
  std::int64_t greatestY = 0;
};

struct MapReport {
  std::uint64_t sections = 0;
  std::uint64_t rows = 0;
  /// Places in standing areas included.
  std::uint64_t seats = 0;
  std::uint64_t standingAreas = 0;
  std::uint64_t standingPlaces = 0;
  /// None without seats.
  std::optional<PositionRange> positions;
  std::optional<MapVersionInfo> versions;
  VenueAssets assets;
  /// Those of the document, the map and the assets, in this order.
  std::vector<Finding> findings;
};

MapReport reportOn(const SeatMap& map, const DocumentReport& document, VenueAssets assets);

}  // namespace halvora
