// SPDX-License-Identifier: Apache-2.0
// Where the files of shows and venues lie, as names within a bundle, and how much of them is read.
// Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace halvora {

/// The folder of clips, and of all that is below.
inline constexpr const char* kAssetFolder = "HVAssets";
inline constexpr const char* kGoboFolder = "HVAssets/Gobos";
/// The one that is up before a show asks for any.
inline constexpr const char* kFirstGobo = "HVAssets/Gobos/1.png";
/// Of all venues.
inline constexpr const char* kMapFolder = "HVAssets/Maps";
inline constexpr const char* kPaletteFile = "HVAssets/palettes.json";
inline constexpr std::size_t kLargestPaletteFile = std::size_t{4} << 20;
/// Bytes of a venue's picture, a map's still or a standing area's plan: a larger file counts as
/// none.
inline constexpr std::size_t kLargestPicture = std::size_t{32} << 20;

/// The folder of all that belongs to a venue.
inline std::string venueFolder(std::int64_t venueId) {
  return "HVAssets/Maps/Venue-" + std::to_string(venueId);
}

/// What one of a venue's pixel maps is made of.
inline std::string pixelMapFolder(std::int64_t venueId, std::int64_t pixelMapId) {
  return venueFolder(venueId) + "/" + std::to_string(pixelMapId);
}

/// Where people sit.
inline std::string seatMapFile(std::int64_t venueId) { return venueFolder(venueId) + "/map.json"; }

}  // namespace halvora
