// SPDX-License-Identifier: Apache-2.0
// `halvora lut build`: the tables, where they go, and what is printed of them.
#include "venue/plan/lut_build.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "adapters/virtual/virtual_video.h"
#include "halvora/platform/absent.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

struct LutBuild : testing::Test {
  LutFolder room;

  /// The lines of a run that went well.
  static std::vector<rapidjson::Document> linesOfGood(const ToolRun& run) {
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(run.error, "");
    std::vector<rapidjson::Document> lines;
    for (const std::string& line : linesOf(run.output)) {
      lines.push_back(jsonOf(line));
      EXPECT_TRUE(lines.back().IsObject()) << line;
    }
    return lines;
  }
  std::string dataOf(const std::string& seat) const {
    const auto lines = linesOfGood(room.buildSeat(seat));
    if (lines.size() != 1 || !lines[0].HasMember("data")) return "";
    return contentsOf(lines[0]["data"].GetString());
  }
  static Words wordsOfFile(const rapidjson::Document& line) {
    return wordsOf(contentsOf(line["data"].GetString()));
  }
};

TEST_F(LutBuild, PrintsOneObjectWithTheThreeKeysInTheirOrder) {
  const ToolRun run = room.buildSeat("2,1");
  const auto lines = linesOfGood(run);
  ASSERT_THAT(lines, SizeIs(1));
  Words keys;
  for (const auto& member : lines[0].GetObject()) keys.emplace_back(member.name.GetString());
  EXPECT_THAT(keys, ElementsAre("frameCount", "data", "meta"));
  EXPECT_EQ(lines[0]["frameCount"].GetInt(), 4);
}

TEST_F(LutBuild, WritesTheSeatsColoursLittleEndian) {
  EXPECT_EQ(dataOf("2,1"), std::string("\x01\x02\x00\xFF\x01\x02\x01\xFF"
                                       "\x01\x02\x02\xFF\x01\x02\x03\xFF",
                                       16));
}

TEST_F(LutBuild, NamesTheFilesAsTheKitDoes) {
  const auto lines = linesOfGood(room.buildSeat("2,1"));
  ASSERT_THAT(lines, SizeIs(1));
  const fs::path data = lines[0]["data"].GetString();
  const fs::path meta = lines[0]["meta"].GetString();
  EXPECT_EQ(data.filename(), "seat_2_1.bin");
  EXPECT_EQ(meta.filename(), "seat_2_1.json");
  EXPECT_EQ(data.parent_path(), meta.parent_path());
  EXPECT_EQ(decodedName(data.parent_path().filename()), room.video);
  EXPECT_EQ(data.parent_path().parent_path(), room.at("documents/SeatLUTCache"));
}

TEST_F(LutBuild, MetaFileHasItsFiveKeys) {
  const auto lines = linesOfGood(room.buildSeat("2,1"));
  ASSERT_THAT(lines, SizeIs(1));
  const rapidjson::Document meta = jsonOf(contentsOf(lines[0]["meta"].GetString()));
  ASSERT_TRUE(meta.IsObject());
  EXPECT_EQ(meta.MemberCount(), 5U);
  EXPECT_EQ(meta["frameCount"].GetInt(), 4);
  EXPECT_EQ(meta["seatX"].GetInt(), 2);
  EXPECT_EQ(meta["seatY"].GetInt(), 1);
  EXPECT_EQ(meta["fileSize"].GetUint64(), kPlaces.size());
  EXPECT_GT(meta["modifiedAt"].GetDouble(), 0);
}

TEST_F(LutBuild, LeavesNothingBesideTheTwoFiles) {
  const auto lines = linesOfGood(room.buildSeat("2,1"));
  ASSERT_THAT(lines, SizeIs(1));
  const fs::path folder = fs::path(lines[0]["data"].GetString()).parent_path();
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  EXPECT_THAT(names, ElementsAre("seat_2_1.bin", "seat_2_1.json"));
}

TEST_F(LutBuild, SeatBeyondTheEdgeGetsTheEdgesColours) {
  EXPECT_EQ(dataOf("3,1"), dataOf("2,1"));
  EXPECT_EQ(dataOf("2,2"), dataOf("2,1"));
  EXPECT_EQ(dataOf("9223372036854775807,0"), dataOf("2,0"));
}

TEST_F(LutBuild, SeatZeroZeroIsASeat) {
  EXPECT_THAT(wordsOf(dataOf("0,0")), ElementsAre("FF000000", "FF010000", "FF020000", "FF030000"));
}

TEST_F(LutBuild, SeveralSeatsAreOneLineEachInTheirOrder) {
  const auto lines = linesOfGood(room.build(
      {"--seat", "2,1", "--seat", "0,1", "--seat", "1,0", "--documents", room.documents}));
  ASSERT_THAT(lines, SizeIs(3));
  EXPECT_THAT(lines[0]["data"].GetString(), EndsWith("/seat_2_1.bin"));
  EXPECT_THAT(lines[1]["data"].GetString(), EndsWith("/seat_0_1.bin"));
  EXPECT_THAT(lines[2]["data"].GetString(), EndsWith("/seat_1_0.bin"));
  EXPECT_THAT(wordsOfFile(lines[1]), ElementsAre("FF000001", "FF010001", "FF020001", "FF030001"));
  EXPECT_THAT(wordsOfFile(lines[2]), ElementsAre("FF000100", "FF010100", "FF020100", "FF030100"));
}

TEST_F(LutBuild, SeveralSeatsAreOnePassOverTheVideo) {
  VirtualVideoAssets videos;
  videos.put(room.video, VirtualVideo::ofPlaces(10, 40, 30));
  linesOfGood(room.build({"--seat", "1,2", "--seat", "3,4", "--seat", "5,6", "--threads", "1",
                          "--documents", room.documents},
                         {.videos = &videos}));
  EXPECT_EQ(videos.counts.framesRead, 10);
  EXPECT_EQ(videos.counts.readers, 1);
}

TEST_F(LutBuild, ASeatTwiceIsTwoLines) {
  const auto lines =
      linesOfGood(room.build({"--seat", "2,1", "--seat", "2,1", "--documents", room.documents}));
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_STREQ(lines[0]["data"].GetString(), lines[1]["data"].GetString());
  EXPECT_THAT(wordsOfFile(lines[0]), ElementsAre("FF000201", "FF010201", "FF020201", "FF030201"));
}

TEST_F(LutBuild, AnyNumberOfThreadsMakesTheSameTable) {
  VirtualVideoAssets videos;
  videos.put(room.video, VirtualVideo::ofPlaces(100, 40, 30));
  std::vector<std::string> tables;
  for (const char* threads : {"1", "2", "3", "7", "16"}) {
    const auto lines = linesOfGood(
        room.build({"--seat", "5,6", "--threads", threads, "--documents", room.documents},
                   {.videos = &videos}));
    ASSERT_THAT(lines, SizeIs(1));
    tables.push_back(contentsOf(lines[0]["data"].GetString()));
  }
  EXPECT_EQ(tables[0].size(), 400U);
  EXPECT_EQ(tables[0].substr(99 * 4), std::string("\x06\x05\x63\xFF"));
  EXPECT_THAT(tables, testing::Each(tables[0]));
}

TEST_F(LutBuild, AVideoCutShortGivesTheFramesItHas) {
  room.video = room.folder.write("cut.mp4", "words 1 1 4\nFF111111\nFF222222\n");
  EXPECT_THAT(wordsOf(dataOf("0,0")), ElementsAre("FF111111", "FF222222", "FF222222", "FF222222"));
}

TEST_F(LutBuild, BuildingAgainPutsTheNewTableInPlace) {
  dataOf("0,0");
  room.video = room.folder.write("places.mp4", "words 1 1 1\nFFABCDEF\n");
  EXPECT_THAT(wordsOf(dataOf("0,0")), ElementsAre("FFABCDEF"));
  EXPECT_EQ(room.show("0,0").status, 0);
}

TEST_F(LutBuild, TablesTooLargeForTheHeapComeOutTheSame) {
  VirtualVideoAssets videos;
  videos.put(room.video, VirtualVideo::ofPlaces(70, 40, 30));
  LutBuildRequest request;
  request.video = room.video;
  for (int seat = 0; seat < 600; ++seat) request.seats.push_back({seat % 40, seat / 40});
  const std::atomic<bool> isInterrupted{false};
  const Outside outside{absent::images(), videos, isInterrupted};
  const auto tables = [&](std::size_t mostHeapBytes, const std::string& documents) {
    request.mostHeapBytes = mostHeapBytes;
    request.documents = room.at(documents);
    std::string output;
    const CommandResult result = buildLuts(request, outside, [&output](std::string_view text) {
      output += text;
      return true;
    });
    EXPECT_EQ(result.status, 0) << result.error;
    Words contents;
    for (const std::string& line : linesOf(output)) {
      contents.push_back(contentsOf(jsonOf(line)["data"].GetString()));
    }
    return contents;
  };
  const Words inHeap = tables(std::size_t{1} << 30, "in-heap");
  const Words inFile = tables(0, "in-file");
  ASSERT_THAT(inHeap, SizeIs(600));
  EXPECT_EQ(inHeap[599].substr(69 * 4), std::string("\x0E\x27\x45\xFF"));
  EXPECT_EQ(inHeap, inFile);
}

// What has to do with paths.

struct LutPaths : LutBuild {
  fs::path previous = fs::current_path();
  LutPaths() { fs::current_path(room.folder.path()); }
  ~LutPaths() override {
    std::error_code error;
    fs::current_path(previous, error);
  }

  /// The video's path as the name of the folder gives it, and the folder of the documents.
  std::pair<std::string, std::string> namesOf(const std::string& video,
                                              const std::string& documents) {
    const auto lines =
        linesOfGood(runTool({"lut", "build", video, "--seat", "0,0", "--documents", documents}));
    if (lines.size() != 1) return {};
    const fs::path folder = fs::path(lines[0]["data"].GetString()).parent_path();
    return {decodedName(folder.filename()), folder.parent_path().parent_path()};
  }
};

TEST_F(LutPaths, AreMadeAbsolute) {
  EXPECT_EQ(namesOf("places.mp4", "documents"), std::pair(room.video, room.documents));
  EXPECT_EQ(namesOf("./places.mp4", "./documents/"), std::pair(room.video, room.documents));
  EXPECT_EQ(namesOf(".//places.mp4", "documents//."), std::pair(room.video, room.documents));
}

TEST_F(LutPaths, LoseTheNamesThatAreTakenBack) {
  fs::create_directory("clips");
  EXPECT_EQ(namesOf("clips/../places.mp4", "clips/../documents"),
            std::pair(room.video, room.documents));
  EXPECT_EQ(namesOf(room.at("clips/.././clips/../places.mp4"), room.documents),
            std::pair(room.video, room.documents));
}

TEST_F(LutPaths, KeepTheirLinks) {
  fs::create_directory("elsewhere");
  fs::create_directory_symlink("elsewhere", "documents-link");
  fs::create_symlink("places.mp4", "video-link.mp4");
  EXPECT_EQ(namesOf("video-link.mp4", "documents-link"),
            std::pair(room.at("video-link.mp4"), room.at("documents-link")));
}

// The names alone would lead to a folder beside the link, where there may be another video.
TEST_F(LutPaths, KeepTheWayUpBehindALink) {
  fs::create_directories("hall/maps");
  fs::create_directory_symlink("hall/maps", "maps-link");
  room.folder.write("hall/other.mp4", kPlaces);
  EXPECT_EQ(namesOf("maps-link/../other.mp4", "documents").first,
            room.at("maps-link/../other.mp4"));
}

TEST_F(LutPaths, TheSameVideoIsTheSameFolderHoweverItIsNamed) {
  linesOfGood(runTool({"lut", "build", "places.mp4", "--seat", "0,0", "--documents", "documents"}));
  const ToolRun shown =
      runTool({"lut", "show", room.video, "--seat", "0,0", "--documents", "./documents"});
  EXPECT_EQ(shown.status, 0) << shown.error;
}

TEST_F(LutPaths, MayHoldBytesThatAreNoLetters) {
  const std::string name = "Gr\xC3\xBC\xC3\x9F \"e\\\" + ?.mp4";
  room.folder.write(name, kPlaces);
  const auto names = namesOf(name, "documents");
  EXPECT_EQ(names.first, room.at(name));
}

// Failures that leave nothing behind.

TEST_F(LutBuild, AVideoThatGivesNoTableIsStatusOneAndLeavesNoFile) {
  const Words before{"empty.mp4", "places.mp4", "text.mp4", "without-frames.mp4"};
  room.folder.write("empty.mp4", "");
  room.folder.write("text.mp4", "no video\n");
  room.folder.write("without-frames.mp4", "words 3 2 4\n");
  for (const char* name : {"empty.mp4", "text.mp4", "without-frames.mp4"}) {
    room.video = room.at(name);
    const ToolRun run = room.buildSeat("0,0");
    EXPECT_EQ(run.status, 1) << name;
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.error, HasSubstr(name));
    EXPECT_THAT(room.contents(), testing::ElementsAreArray(before)) << name;
  }
}

TEST_F(LutBuild, AReasonIsGivenWhereTheVideoHasOne) {
  room.video = room.folder.write("text.mp4", "no video\n");
  EXPECT_THAT(room.buildSeat("0,0").error, HasSubstr("no video track in it"));
}

TEST_F(LutBuild, AFolderThatCannotBeMadeIsStatusOneBeforeAnythingIsRead) {
  VirtualVideoAssets videos;
  videos.put(room.video, VirtualVideo::ofPlaces(10, 4, 3));
  room.documents = room.folder.write("file", "") + "/documents";
  const Words before = room.contents();
  const ToolRun run = room.buildSeat("0,0", {.videos = &videos});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.error, HasSubstr(room.documents));
  EXPECT_EQ(videos.counts.framesRead, 0);
  EXPECT_EQ(room.contents(), before);
}

// A name of more than 255 bytes, which no usual file system takes.
TEST_F(LutBuild, AVideoWhoseFolderCannotHaveItsNameIsStatusOne) {
  const std::string name(100, 'a');
  fs::create_directories(room.folder.path() / name);
  room.video = room.folder.write(name + "/" + name + ".mp4", kPlaces);
  const Words before = room.contents();
  const ToolRun run = room.buildSeat("0,0");
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.error, "");
  EXPECT_EQ(room.contents(), before);
}

// The second seat's meta file cannot be put in place, because a folder has its name.
TEST_F(LutBuild, WhenOneSeatCannotBeSavedTheOthersGoToo) {
  const auto lines = linesOfGood(room.buildSeat("1,1"));
  ASSERT_THAT(lines, SizeIs(1));
  const fs::path taken = lines[0]["meta"].GetString();
  fs::remove(taken);
  fs::remove(lines[0]["data"].GetString());
  fs::create_directory(taken);
  const Words before = room.contents();

  const ToolRun run = room.build(
      {"--seat", "0,0", "--seat", "1,1", "--seat", "2,1", "--documents", room.documents});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_THAT(run.error, HasSubstr(taken.string()));
  EXPECT_EQ(room.contents(), before);
}

TEST_F(LutBuild, AVideoThatIsReplacedMeanwhileIsStatusOne) {
  VirtualVideo video = VirtualVideo::ofPlaces(10, 4, 3);
  video.onFrame = [this](std::size_t index) {
    if (index == 5) room.folder.write("places.mp4", "another video");
  };
  VirtualVideoAssets videos;
  videos.put(room.video, video);
  ToolRun run = room.buildSeat("0,0", {.videos = &videos});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.error, HasSubstr(room.video));
  EXPECT_THAT(run.error, HasSubstr("has changed"));
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));

  room.folder.write("places.mp4", kPlaces);
  run = room.build({"--seat", "0,0", "--raw", room.at("table")}, {.videos = &videos});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST_F(LutBuild, OutputThatFailsIsStatusOne) {
  const ToolRun run = room.buildSeat("0,0", {.output = [](std::string_view) { return false; }});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "standard output cannot be written");
}

}  // namespace
}  // namespace halvora
