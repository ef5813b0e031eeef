// SPDX-License-Identifier: Apache-2.0
// `halvora map check`: what a crew reads, what a program reads, and how it ends.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/pixmap_decoder.h"

namespace halvora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kGoodMap =
    R"({"seatVersion": 3, "mapAssetsVersion": 4, "s": {"A": {"1": {"1": [0, 0], "2": [1, 0]}},
        "Standing": {"1": {"1": [0, 1]}}}})";
const std::string kBadMap =
    R"({"seatVersion": 3, "mapAssetsVersion": 4, "s": {"A": {"1": {"1": [0, 0], "2": [0, 0]}},
        "B": {"1": {"1": [2, 0]}}}})";

/// A venue's folder with everything in place.
struct Venue {
  TestFolder folder;
  std::string at = "HVAssets/Maps/Venue-7/";
  std::string map = folder.write(at + "map.json", kGoodMap);
  std::string video = folder.write(at + "1/video.mp4", "words 2 2 3\n0 0 0 0\n");
  std::string spare = folder.write(at + "1/f4.jpg", pixmapOf(2, 2, 1, 2, 3));
  std::string still = folder.write(at + "2/f1.jpg", pixmapOf(2, 2, 1, 2, 3));
  std::string overlay = folder.write(at + "standing-overlay.png", pixmapOf(4, 5, 1, 2, 3));

  std::string path() const { return (folder.path() / "HVAssets/Maps/Venue-7").string(); }
};

TEST(MapCheckCommand, AGoodMapIsAPageOfFacts) {
  const Venue venue;
  const ToolRun run = runTool({"map", "check", venue.map});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.error, "");
  EXPECT_EQ(run.output, "Map              " + venue.map +
                            "\n"
                            "Venue's folder   " +
                            venue.path() +
                            "\n"
                            "\n"
                            "Sections         2\n"
                            "Rows             2\n"
                            "Seats            3\n"
                            "Standing areas   1, with 1 of the seats\n"
                            "Positions        x 0 to 1, y 0 to 1\n"
                            "Versions         seats 3, pixel maps 4\n"
                            "\n"
                            "Pixel map 1      2 x 2, 3 frames, 0.1 s, 1 still\n"
                            "Pixel map 2      no video, 1 still\n"
                            "Standing plan    standing-overlay.png, 4 x 5\n"
                            "\n"
                            "Nothing is wrong.\n");
}

TEST(MapCheckCommand, FindingsComeLastWithTheirCountAndEndWithOne) {
  const Venue venue;
  const std::string map = venue.folder.write(venue.at + "map.json", kBadMap);
  const ToolRun run = runTool({"map", "check", map});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, map + ": 2 findings");
  EXPECT_THAT(
      run.output,
      ::testing::EndsWith(
          "\n"
          "1. 2 seats share a pixel with another seat and will always show the same colour\n"
          "     Section A / Row 1 / Seat 1, Section A / Row 1 / Seat 2 at (0, 0)\n"
          "2. 1 seat lies outside of the picture, which is 2 x 2: 1/video.mp4, 1/f4.jpg, 2/f1.jpg\n"
          "     Section B / Row 1 / Seat 1 at (2, 0)\n"
          "2 findings.\n"));
}

TEST(MapCheckCommand, ProgramsGetOneObject) {
  const Venue venue;
  const ToolRun run = runTool({"map", "check", venue.map, "--json"});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output,
            R"({"sections":2,"rows":2,"seats":3,"standingAreas":1,"standingPlaces":1,"videos":[)"
            R"({"mapId":"1","file":"1/video.mp4","width":2,"height":2,"frames":3,"seconds":0.1}],)"
            R"("versions":{"seatVersion":3,"mapAssetsVersion":4},"findings":[],)"
            R"("stills":[{"mapId":"1","count":1},{"mapId":"2","count":1}],)"
            R"("standingOverlay":{"file":"standing-overlay.png","width":4,"height":5}})"
            "\n");
}

TEST(MapCheckCommand, FindingsOfAProgramHaveTheSameKeys) {
  const TestFolder folder;
  const std::string map = folder.write("map.json", R"([{"rows": []}])");
  const ToolRun run = runTool({"map", "check", "--json", map});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output,
            R"({"sections":0,"rows":0,"seats":0,"standingAreas":0,"standingPlaces":0,"videos":[],)"
            R"("versions":null,"findings":[{"kind":"versionMissing","text":)"
            R"("a document that is a bare list has no versions","count":1,"examples":[]},)"
            R"({"kind":"sectionWithoutRows","text":)"
            R"("1 section has no rows with seats and is left out","count":1,"examples":["[0]"]},)"
            R"({"kind":"noSeats","text":"the document holds no seats: there is no map","count":1,)"
            R"("examples":[]}],"stills":[],"standingOverlay":null})"
            "\n");
}

TEST(MapCheckCommand, AFileElsewhereIsCheckedAgainstTheFolderOfAVenue) {
  const Venue venue;
  const std::string map = venue.folder.write("draft/new.json", kGoodMap);
  const std::string assets = venue.folder.path().string();
  const ToolRun alone = runTool({"map", "check", map});
  EXPECT_EQ(alone.status, 1) << "no plan for the standing area beside it";
  EXPECT_THAT(alone.output, HasSubstr("Pixel maps       none\n"));
  const ToolRun run = runTool({"map", "check", map, "--assets", assets, "--venue", "7"});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(run.output, HasSubstr("\nVenue's folder   " + venue.path() + "\n"));
}

TEST(MapCheckCommand, NamesComeFromAStringTable) {
  const Venue venue;
  const std::string map = venue.folder.write(venue.at + "map.json", kBadMap);
  const std::string strings =
      venue.folder.write("de.json", R"({"hv_seat_picker_fallback_section_prefix": "Block"})");
  const ToolRun run = runTool({"map", "check", map, "--strings", strings});
  EXPECT_THAT(run.output, HasSubstr("     Block B / Row 1 / Seat 1 at (2, 0)\n"));
}

TEST(MapCheckCommand, NamesCannotMoveTheCursor) {
  const Venue venue;
  const std::string map = venue.folder.write(venue.at + "map.json",
                                             R"({"seatVersion": 1, "mapAssetsVersion": 1,
          "s": {"\u001b[2J\n\u007f": {"1": {"1": [9, 9]}}}})");
  EXPECT_THAT(runTool({"map", "check", map}).output,
              HasSubstr("     Section ?[2J?? / Row 1 / Seat 1 at (9, 9)\n"));
}

TEST(MapCheckCommand, WhatIsNoMapIsAFindingAndNotAnError) {
  const TestFolder folder;
  for (const char* text : {"", "{", "[1,]", "7", "{}"}) {
    const ToolRun run = runTool({"map", "check", folder.write("map.json", text)});
    EXPECT_EQ(run.status, 1) << text;
    EXPECT_THAT(run.output, StartsWith("Map ")) << text;
  }
}

TEST(MapCheckCommand, RefusesWhatItCannotUse) {
  const Venue venue;
  const std::string missing = (venue.folder.path() / "missing.json").string();
  const std::string assets = venue.folder.path().string();
  const std::string broken = venue.folder.write("broken.json", "[1");
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {missing},
                                             {venue.path()},
                                             {venue.map, "more"},
                                             {venue.map, "--strings", missing},
                                             {venue.map, "--strings", broken},
                                             {venue.map, "--assets", assets},
                                             {venue.map, "--venue", "7"},
                                             {venue.map, "--assets", assets, "--venue", "8"},
                                             {venue.map, "--assets", assets, "--venue", "0"},
                                             {venue.map, "--assets", assets, "--venue", "-7"},
                                             {venue.map, "--assets", assets, "--venue", "seven"}}) {
    std::vector<std::string> words{"map", "check"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(flawOfRefusal(runTool(words)), "") << ::testing::PrintToString(arguments);
  }
}

TEST(MapCheckCommand, AnInterruptedCheckReportsNothing) {
  const Venue venue;
  const std::atomic<bool> isInterrupted{true};
  const ToolRun run = runTool({"map", "check", venue.map}, {.isInterrupted = &isInterrupted});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "interrupted");
  EXPECT_EQ(run.output, "");
}

TEST(MapCheckCommand, OutputThatCannotBeWrittenIsAFailure) {
  const Venue venue;
  const ToolRun run =
      runTool({"map", "check", venue.map}, {.output = [](std::string_view) { return false; }});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "standard output cannot be written");
}

}  // namespace
}  // namespace halvora
