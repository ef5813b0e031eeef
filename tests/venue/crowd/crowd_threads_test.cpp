// SPDX-License-Identifier: Apache-2.0
// The threads of a crowd side by side: they share seats, tables, palettes, bundles and the air, and
// only read them.
#include <string>

#include <gtest/gtest.h>

#include "engine/broadcast.h"
#include "tests/venue/crowd/crowd_bench.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

TEST(CrowdThreads, ShareWhatAllPhonesHaveInCommon) {
  const TestFolder folder;
  folder.write("HVAssets/Maps/Venue-7/map.json", mapOfSeats(kSeveralBlocks));
  folder.write("HVAssets/Maps/Venue-7/1/video.mp4", kPlaces);
  folder.write("HVAssets/palettes.json",
               R"({"palettes": [{"id": 1, "colours": ["#FF0000", "#00FF00"]}]})");
  std::string show =
      "{\"at\": 0, \"start\": true}\n"
      "{\"at\": 0.5, \"precompute\": {\"venueId\": 7, \"seatX\": 0, \"seatY\": 0}}\n";
  for (int at = 0; at < 30; ++at) {
    Broadcast look;
    look.applicationId = 1;
    look.venueId = 7;
    look.master = 255;
    look.mode = static_cast<std::uint8_t>(at % 2 == 0 ? 1 : 3);
    look.speed = 255;
    look.ledMode = 2;
    look.paletteId = 1;
    look.pixelMapId = static_cast<std::uint8_t>(at % 3 == 0 ? 1 : 0);
    look.minutes = static_cast<std::uint8_t>(at);
    look.sequence = static_cast<std::uint16_t>(at + 1);
    look.transmitter = 1;
    show += "{\"at\": " + std::to_string(1.5 + at * 0.1) + ", \"packet\": \"" +
            NSDataToHex(encodeBroadcast(look)) + "\"}\n";
  }
  const ToolRun run =
      runTool({"crowd", "--assets", folder.path().string(), "--venue", "7", "--scenario",
               folder.write("show.jsonl", show), "--out", (folder.path() / "sheet.png").string(),
               "--size", "64x32", "--loss", "0.2", "--jitter", "20", "--threads", "4"});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(jsonOf(run.output)["phones"].GetUint(), kSeveralBlocks);
}

}  // namespace
}  // namespace halvora
