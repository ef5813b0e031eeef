// SPDX-License-Identifier: Apache-2.0
// A show that was recorded from the air drives a crowd as it is.
#include <array>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "engine/broadcast.h"
#include "tests/venue/air/virtual_radio.h"
#include "tests/venue/crowd/crowd_bench.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

using Rgb = std::array<int, 3>;

// The same venue as a picture of three by two pixels: two seats, and below them two places.
constexpr const char* kMap = R"({"sections": [
  {"name": "A", "rows": [{"name": "1", "seats": [{"name": "1", "x": 0, "y": 0},
                                                 {"name": "2", "x": 1, "y": 0}]}]},
  {"name": "Standing", "rows": [{"name": "1", "seats": [{"name": "1", "x": 0, "y": 1},
                                                        {"name": "2", "x": 2, "y": 1}]}]}]})";
const std::string kVideo =
    "words 3 2 2\n"
    "FF000000 FF000000 FF000000 FF000000 FF000000 FF000000\n"
    "FFFF0000 FF00FF00 FF123456 FF0000FF FF654321 FFFFFFFF\n";

/// What a seat of that colour looks like from above.
Rgb seen(int red, int green, int blue) {
  const auto level = [](int value) { return 26 + value * 229 / 255; };
  return {level(red), level(green), level(blue)};
}

struct RecordedShow : testing::Test {
  RecordedShow() {
    folder.write("HVAssets/Maps/Venue-7/map.json", kMap);
    folder.write("HVAssets/Maps/Venue-7/1/video.mp4", kVideo);
  }
  std::string at(const std::string& name) const { return (folder.path() / name).string(); }
  void send(long long milliseconds, const Broadcast& look) {
    const BroadcastBytes bytes = encodeBroadcast(look);
    air.packets.push_back({milliseconds, std::string(bytes.begin(), bytes.end())});
  }
  /// A seat's middle in the picture of that tenth of a second.
  Rgb colour(int tenth, int x, int y) const {
    char name[32];
    std::snprintf(name, sizeof name, "frames/frame-%06d.png", tenth + 1);
    const std::string picture = contentsOf(at(name));
    const std::string header = "P6 320 240 255\n";
    EXPECT_THAT(picture, StartsWith(header)) << name;
    // Squares of 98 and two thirds in the middle of a margin of 12.
    const auto column = static_cast<std::size_t>(12 + (x + 0.5) * 296 / 3);
    const auto row = static_cast<std::size_t>(120 + (y - 0.5) * 296 / 3);
    const std::size_t first = header.size() + (row * 320 + column) * 3;
    const auto level = [&](std::size_t channel) {
      return static_cast<int>(static_cast<unsigned char>(picture[first + channel]));
    };
    return {level(0), level(1), level(2)};
  }

  TestFolder folder;
  VirtualAir air;
};

TEST_F(RecordedShow, DrivesACrowd) {
  // Heard a second, two and three after listening began, and played two seconds later.
  send(1000, plainLook(1, 255));
  send(2500, plainLook(2, 0, 200, 100));
  Broadcast map = plainLook(3, 0);
  map.pixelMapId = 1;
  map.minutes = 1;
  send(3500, map);
  const std::string show = at("show.jsonl");
  std::atomic<bool> isInterrupted{false};
  const ToolRun listened =
      runTool({"listen", "--for", "5", "--record", show}, {.openRadio = [&](const std::string&) {
                return std::make_unique<VirtualRadio>(air, isInterrupted);
              }});
  ASSERT_EQ(listened.status, 0) << listened.error;

  const ToolRun crowd =
      runTool({"crowd", "--assets", folder.path().string(), "--venue", "7", "--scenario", show,
               "--out", at("frames"), "--fps", "10", "--size", "320x240"});
  ASSERT_EQ(crowd.status, 0) << crowd.error;
  const auto json = jsonOf(crowd.output);
  EXPECT_EQ(json["packets"]["heard"].GetInt(), 3 * 4);
  EXPECT_EQ(json["looks"]["count"].GetInt(), 3);
  EXPECT_EQ(json["pixelMap"]["squaredError"].GetInt(), 0);

  constexpr int kPlaces[4][2] = {{0, 0}, {1, 0}, {0, 1}, {2, 1}};
  for (const auto& [x, y] : kPlaces) {
    EXPECT_EQ(colour(28, x, y), seen(0, 0, 0)) << "before the show " << x << ", " << y;
    EXPECT_EQ(colour(44, x, y), seen(255, 0, 0)) << x << ", " << y;
    EXPECT_EQ(colour(50, x, y), seen(0, 200, 100)) << x << ", " << y;
  }
  EXPECT_EQ(colour(60, 0, 0), seen(255, 0, 0));
  EXPECT_EQ(colour(60, 1, 0), seen(0, 255, 0));
  EXPECT_EQ(colour(60, 0, 1), seen(0, 0, 255));
  EXPECT_EQ(colour(60, 2, 1), seen(255, 255, 255));
}

}  // namespace
}  // namespace halvora
