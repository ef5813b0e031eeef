// SPDX-License-Identifier: Apache-2.0
// What the phones of a small crowd share, all of it in memory. Owned by a test; one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_storage.h"
#include "adapters/virtual/virtual_video.h"
#include "engine/broadcast.h"
#include "halvora/platform/absent.h"
#include "venue/crowd/crowd.h"
#include "venue/crowd/crowd_phone.h"

namespace halvora {

struct CrowdBench {
  /// So many seats in a row, beginning in the picture's corner.
  static std::vector<CrowdSeat> rowOf(int count) {
    std::vector<CrowdSeat> seats;
    for (int at = 0; at < count; ++at) seats.push_back({{at, 0}, "A", false, "1", "1"});
    return seats;
  }

  CrowdParts parts(const SeatLutSource* tables = nullptr) {
    return {bundles, json, absent::images(), files, {{}, assets, tables}, {}};
  }

  VirtualBundle main{"com.example.host"};
  VirtualBundle kit{"com.halvora.sdk"};
  const Bundles bundles{main, kit};
  const ExactJsonReader json;
  VirtualFiles files;
  InlineWorkers workers;
  std::shared_ptr<const ShowAssets> assets = std::make_shared<const ShowAssets>();
};

/// So many phones that four threads have a block each, and one is left over.
inline constexpr std::size_t kSeveralBlocks = 4 * Crowd::kBlock + 1;

/// The document of a venue with so many seats in one row, which share six pixels.
inline std::string mapOfSeats(std::size_t count) {
  std::string seats;
  for (std::size_t at = 0; at < count; ++at) {
    seats += std::string(at > 0 ? "," : "") + "{\"name\": \"" + std::to_string(at) +
             "\", \"x\": " + std::to_string(at % 3) + ", \"y\": " + std::to_string(at % 2) + "}";
  }
  return R"({"sections": [{"name": "A", "rows": [{"name": "1", "seats": [)" + seats + "]}]}]}";
}

/// A steady look of transmitter 1 at venue 7.
inline Broadcast plainLook(std::uint16_t sequence, std::uint8_t red, std::uint8_t green = 0,
                           std::uint8_t blue = 0) {
  Broadcast look;
  look.applicationId = 1;
  look.venueId = 7;
  look.master = 255;
  look.mode = 1;
  look.red = red;
  look.green = green;
  look.blue = blue;
  look.sequence = sequence;
  look.transmitter = 1;
  return look;
}

}  // namespace halvora
