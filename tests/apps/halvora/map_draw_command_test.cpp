// SPDX-License-Identifier: Apache-2.0
// `halvora map draw`: what it writes, where, and how it ends. The picture's format is the tests'
// own.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/pixmap_decoder.h"
#include "tests/venue/plan/picture_probe.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

struct DrawFolder {
  TestFolder folder;
  std::string map = folder.write("map.json", R"({"s": {"1": {"1": {"1": [0, 0], "2": [9, 3]}}}})");
  std::string out = at("plan.png");

  std::string at(const std::string& name) const { return (folder.path() / name).string(); }
  ToolRun draw(const std::vector<std::string>& options) const {
    std::vector<std::string> words{"map", "draw"};
    words.insert(words.end(), options.begin(), options.end());
    return runTool(words);
  }
  std::size_t fileCount() const {
    const fs::directory_iterator entries(folder.path());
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  }
};

TEST(MapDrawCommand, WritesThePictureAndPrintsNothing) {
  const DrawFolder files;
  const ToolRun run = files.draw({files.map, "--out", files.out});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output, "");
  const auto image = PixmapDecoder().decode(contentsOf(files.out));
  ASSERT_TRUE(image);
  EXPECT_GT(pixelsOf(*image, {76, 155, 232}), 100U);
  EXPECT_EQ(files.fileCount(), 2U) << "nothing is left beside it";
}

TEST(MapDrawCommand, ReplacesAnOlderPictureWhole) {
  const DrawFolder files;
  files.folder.write("plan.png", std::string(20'000'000, 'x'));
  EXPECT_EQ(files.draw({files.map, "--out", files.out}).status, 0);
  EXPECT_TRUE(PixmapDecoder().decode(contentsOf(files.out)));
}

TEST(MapDrawCommand, DrawsAsLargeAsAsked) {
  const DrawFolder files;
  const auto widthOf = [&](const char* size) {
    EXPECT_EQ(files.draw({files.map, "--out", files.out, "--size", size}).status, 0);
    const auto image = PixmapDecoder().decode(contentsOf(files.out));
    return image ? image->width : 0;
  };
  EXPECT_EQ(widthOf("200") * 10, widthOf("2000"));
}

TEST(MapDrawCommand, NamesComeFromAStringTable) {
  const DrawFolder files;
  const std::string strings =
      files.folder.write("de.json", R"({"hv_seat_picker_fallback_section_prefix": "Block"})");
  EXPECT_EQ(files.draw({files.map, "--out", files.out, "--strings", strings}).status, 0);
  EXPECT_EQ(files.draw({files.map, "--out", files.at("other.png")}).status, 0);
  EXPECT_NE(contentsOf(files.out), contentsOf(files.at("other.png")));
}

TEST(MapDrawCommand, AnEmptyMapIsNotDrawn) {
  const DrawFolder files;
  for (const char* text : {"", "{", "[]", R"({"s": {}})"}) {
    const std::string map = files.folder.write("map.json", text);
    const ToolRun run = files.draw({map, "--out", files.out});
    EXPECT_EQ(run.status, 1) << text;
    EXPECT_EQ(run.error, map + ": holds no seats");
    EXPECT_FALSE(fs::exists(files.out)) << text;
  }
}

TEST(MapDrawCommand, RefusesWhatItCannotUse) {
  const DrawFolder files;
  const std::string missing = files.at("missing.json");
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {files.map},
                                             {missing, "--out", files.out},
                                             {files.map, "--out", ""},
                                             {files.map, "--out", files.folder.path().string()},
                                             {files.map, "--out", files.at("missing/plan.png")},
                                             {files.map, "--out", files.at("map.json/plan.png")},
                                             {files.map, "--out", files.map},
                                             {files.map, "--out", files.out, "--strings", missing},
                                             {files.map, "--out", files.out, "--size", "199"},
                                             {files.map, "--out", files.out, "--size", "6001"},
                                             {files.map, "--out", files.out, "--size", "-800"},
                                             {files.map, "--out", files.out, "--size", "large"}}) {
    EXPECT_EQ(flawOfRefusal(files.draw(arguments)), "") << ::testing::PrintToString(arguments);
    EXPECT_EQ(files.fileCount(), 1U) << ::testing::PrintToString(arguments);
  }
}

TEST(MapDrawCommand, WritesNothingOnceInterrupted) {
  const DrawFolder files;
  const std::atomic<bool> isInterrupted{true};
  const ToolRun run =
      runTool({"map", "draw", files.map, "--out", files.out}, {.isInterrupted = &isInterrupted});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "interrupted");
  EXPECT_FALSE(fs::exists(files.out));
}

TEST(MapDrawCommand, ADeviceIsNoPlaceForAPicture) {
  const DrawFolder files;
  EXPECT_EQ(flawOfRefusal(files.draw({files.map, "--out", "/dev/null"})), "");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

}  // namespace
}  // namespace halvora
