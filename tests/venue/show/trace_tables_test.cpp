// SPDX-License-Identifier: Apache-2.0
// `halvora trace` and the seat tables on disk: which it finds, which it leaves, and where.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_video.h"
#include "tests/venue/plan/lut_folder.h"
#include "tests/venue/show/trace_lines.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// Venue 7 with map 1, in the folder that the process works in.
struct TraceTables : testing::Test {
  LutFolder room;
  fs::path previous = fs::current_path();
  VirtualVideoAssets videos;
  std::string video = room.at("assets/HVAssets/Maps/Venue-7/1/video.mp4");
  std::string show = room.folder.write(
      "show.jsonl",
      "{\"at\":0,\"start\":true}\n"
      "{\"at\":1.1,\"defaults\":{\"selectedSection\":\"A\",\"xPos\":\"2\",\"yPos\":\"1\"}}\n"
      "{\"at\":1.2,\"packet\":\"09C90102000701FFFF0000030000000003000000000000000107\"}\n");

  TraceTables() {
    fs::create_directories(fs::path(video).parent_path());
    room.folder.write("assets/HVAssets/Maps/Venue-7/1/video.mp4", kPlaces);
    videos.put(video, VirtualVideo::ofPlaces(8, 4, 3));
    fs::current_path(room.folder.path());
  }
  ~TraceTables() override {
    std::error_code error;
    fs::current_path(previous, error);
  }

  ToolRun trace(Words options) {
    options.insert(options.begin(), {"trace", show, "--until", "2"});
    ToolRun run = runTool(options, {.videos = &videos});
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(run.error, "");
    EXPECT_THAT(flawsOfTrace(run.output), IsEmpty());
    return run;
  }
  /// Frame 3 of seat (2, 1): red 3, green 2, blue 1.
  static constexpr const char* kSeatsLight = "\"light\":[0.0118,0.0078,0.0039,1]";
};

TEST_F(TraceTables, ATableThatWasBuiltBeforeIsFoundHoweverTheFoldersAreNamed) {
  ASSERT_EQ(runTool({"lut", "build", "assets/HVAssets/Maps/Venue-7/1/video.mp4", "--seat", "2,1",
                     "--documents", "documents", "--threads", "1"},
                    {.videos = &videos})
                .status,
            0);
  EXPECT_EQ(videos.counts.framesRead, 8);
  for (const Words& folders :
       {Words{"--assets", "assets", "--documents", "documents"},
        Words{"--assets", "./assets/", "--documents", "assets/../documents/."},
        Words{"--assets", room.at("assets"), "--documents", room.documents}}) {
    EXPECT_THAT(trace(folders).output, HasSubstr(kSeatsLight));
  }
  EXPECT_EQ(videos.counts.framesRead, 8) << "read again";
}

TEST_F(TraceTables, ATableOfTheTraceIsThereForOthers) {
  EXPECT_THAT(trace({"--assets", "assets", "--documents", "documents"}).output,
              HasSubstr(kSeatsLight));
  const ToolRun shown =
      runTool({"lut", "show", video, "--seat", "2,1", "--documents", room.documents});
  EXPECT_EQ(shown.status, 0) << shown.error;
  EXPECT_THAT(shown.output, HasSubstr("{\"frameCount\":8,\"words\":[\"FF000201\",\"FF010201\""));
}

TEST_F(TraceTables, AnInvalidatedVenueHasNoneLeft) {
  show = room.folder.write("show.jsonl",
                           "{\"at\":0,\"precompute\":{\"venueId\":7,\"seatX\":2,\"seatY\":1}}\n"
                           "{\"at\":1,\"invalidate\":7}\n");
  trace({"--assets", "assets", "--documents", "documents"});
  const ToolRun shown =
      runTool({"lut", "show", video, "--seat", "2,1", "--documents", room.documents});
  EXPECT_EQ(shown.status, 1);
  EXPECT_THAT(shown.error, HasSubstr("the data file is missing"));
}

// A temporary folder of the test's own, so that what is left in it is seen.
struct TraceDocuments : TraceTables {
  std::string previousFolder;
  bool hadFolder = false;

  TraceDocuments() {
    if (const char* folder = std::getenv("TMPDIR")) {
      previousFolder = folder;
      hadFolder = true;
    }
    fs::create_directory("temporary");
    setenv("TMPDIR", room.at("temporary").c_str(), 1);
  }
  ~TraceDocuments() override {
    if (hadFolder) {
      setenv("TMPDIR", previousFolder.c_str(), 1);
    } else {
      unsetenv("TMPDIR");
    }
  }
};

TEST_F(TraceDocuments, AreATemporaryFolderThatIsGoneInTheEnd) {
  bool isSeen = false;
  Words while_;
  const ToolRun run = runTool({"trace", show, "--until", "2", "--assets", "assets"},
                              {.videos = &videos, .output = [&](std::string_view line) {
                                 if (line.find(kSeatsLight) == line.npos) return true;
                                 isSeen = true;
                                 while_ = room.contents();
                                 return true;
                               }});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_TRUE(isSeen);
  EXPECT_THAT(while_, testing::Contains(testing::MatchesRegex(
                          "temporary/halvora-[^/]*/SeatLUTCache/[^/]*/seat_2_1[.]bin")));
  EXPECT_TRUE(fs::is_empty("temporary"));
}

TEST_F(TraceDocuments, AreEmptyEveryTime) {
  trace({"--assets", "assets"});
  const int frames = videos.counts.framesRead;
  trace({"--assets", "assets"});
  EXPECT_EQ(videos.counts.framesRead, 2 * frames);
}

TEST_F(TraceDocuments, AreGoneAfterAFailureToo) {
  const ToolRun run =
      runTool({"trace", show, "--until", "2", "--assets", "assets"},
              {.videos = &videos, .output = [](std::string_view) { return false; }});
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(fs::is_empty("temporary"));
}

TEST_F(TraceDocuments, AreNotMadeForACommandLineThatIsUnusable) {
  fs::remove("temporary");
  EXPECT_EQ(flawOfRefusal(runTool({"trace", show, "--until", "x"})), "");
  EXPECT_EQ(flawOfRefusal(runTool({"trace", room.folder.write("bad.jsonl", "{}\n")})), "");
}

TEST_F(TraceDocuments, ThatCannotBeMadeAreStatusOne) {
  fs::remove("temporary");
  const ToolRun run = runTool({"trace", show});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_THAT(run.error, HasSubstr("temporary folder"));
  EXPECT_EQ(runTool({"trace", show, "--documents", "documents"}).status, 0);
}

TEST(TraceFolders, GoboPicturesAreNamedRelativeToThem) {
  const fs::path previous = fs::current_path();
  const TestFolder folder;
  const std::string show = folder.write(
      "show.jsonl",
      "{\"at\":0,\"start\":true}\n"
      "{\"at\":1.2,\"packet\":\"09C90102000700FFFF0000010000000000000000020000000107\"}\n");
  fs::current_path(toolTests() / "assets" / "show" / "HVAssets");
  const Words expected{"trace", show, "--assets", (toolTests() / "assets" / "show").string()};
  const ToolRun absolute = runTool(expected);
  const ToolRun relative = runTool({"trace", show, "--assets", "../../show/."});
  fs::current_path(previous);
  EXPECT_EQ(relative.status, 0) << relative.error;
  EXPECT_THAT(relative.output, HasSubstr("\"gobo\":\"HVAssets/Gobos/2.png\""));
  EXPECT_EQ(relative.output, absolute.output);
}

}  // namespace
}  // namespace halvora
