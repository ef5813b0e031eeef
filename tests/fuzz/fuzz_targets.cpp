// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/fuzz_targets.h"

#include <algorithm>

namespace halvora {

namespace {

constexpr FuzzTarget kTargets[] = {
    {"packet", fuzzPacket, 64, 20000, nullptr},
    {"scanner", fuzzScanner, 400, 3000, nullptr},
    {"air", fuzzAir, 400, 3000, nullptr},
    {"values", fuzzValues, 48, 20000, "values.txt"},
    {"json", fuzzJson, 256, 10000, "json.txt"},
    {"palettes", fuzzPalettes, 256, 5000, "json.txt"},
    {"strings", fuzzStrings, 256, 5000, "json.txt"},
    {"versions", fuzzVersions, 256, 5000, "json.txt"},
    {"seat_map", fuzzSeatMap, 1024, 2000, "json.txt"},
    {"standing", fuzzStanding, 512, 3000, "json.txt"},
    {"defaults", fuzzDefaults, 256, 5000, "json.txt"},
    {"tables", fuzzTables, 256, 5000, "json.txt"},
    {"scenario", fuzzScenario, 512, 5000, "scenario.txt"},
#ifdef HALVORA_FUZZ_YAML
    {"show", fuzzShow, 512, 3000, "show.txt"},
#endif
    {"tickets", fuzzTickets, 512, 3000, nullptr},
    {"gobos", fuzzGobos, 128, 50, nullptr},
    {"engine", fuzzEngine, 512, 300, nullptr},
    {"flashes", fuzzFlashes, 192, 5000, nullptr},
#ifdef HALVORA_FUZZ_PICTURES
    {"picture", fuzzPicture, 4096, 2000, nullptr},
#endif
#ifdef HALVORA_FUZZ_VIDEO
    {"outline", fuzzOutline, 4096, 5000, "video.txt"},
    {"video", fuzzVideo, 8192, 150, "video.txt"},
#endif
#ifdef HALVORA_FUZZ_BUS
    {"bus", fuzzBus, 256, 5000, nullptr},
#endif
};

}  // namespace

std::span<const FuzzTarget> fuzzTargets() { return kTargets; }

const FuzzTarget* fuzzTargetOf(std::string_view name) {
  const auto* found = std::ranges::find_if(
      kTargets, [name](const FuzzTarget& target) { return target.name == name; });
  return found == std::end(kTargets) ? nullptr : found;
}

}  // namespace halvora
