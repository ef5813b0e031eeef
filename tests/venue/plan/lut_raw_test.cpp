// SPDX-License-Identifier: Apache-2.0
// `halvora lut build --raw`: one table's bytes in a file, of all frames or of those around one.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "adapters/virtual/virtual_video.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;

struct LutRaw : testing::Test {
  LutFolder room;
  std::string raw = room.at("table");

  Words seed(const std::string& center, const std::string& radius,
             const std::string& seat = "2,1") const {
    const ToolRun run =
        room.build({"--seat", seat, "--raw", raw, "--center", center, "--radius", radius});
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(run.output, "");
    return wordsOf(contentsOf(raw));
  }
};

TEST_F(LutRaw, WritesOnlyTheTablesBytes) {
  const ToolRun run = room.build({"--seat", "2,1", "--raw", raw});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.error, "");
  EXPECT_THAT(wordsOf(contentsOf(raw)),
              ElementsAre("FF000201", "FF010201", "FF020201", "FF030201"));
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4", "table"));
}

TEST_F(LutRaw, LeavesTheDocumentsAlone) {
  const ToolRun run = room.build({"--seat", "2,1", "--raw", raw, "--documents", room.documents});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4", "table"));
}

TEST_F(LutRaw, PutsTheFileInPlaceOfAnother) {
  room.folder.write("table", "something much longer than the table is");
  EXPECT_EQ(room.build({"--seat", "2,1", "--raw", raw}).status, 0);
  EXPECT_EQ(contentsOf(raw).size(), 16U);
}

TEST_F(LutRaw, AFailureLeavesTheFileThatIsThere) {
  room.folder.write("table", "old");
  room.video = room.folder.write("text.mp4", "no video");
  EXPECT_EQ(room.build({"--seat", "2,1", "--raw", raw}).status, 1);
  EXPECT_EQ(contentsOf(raw), "old");
}

TEST_F(LutRaw, AFolderThatIsNotThereIsStatusOneAndNamesTheFile) {
  raw = room.at("missing/table");
  const ToolRun run = room.build({"--seat", "2,1", "--raw", raw});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.error, HasSubstr(raw));
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST_F(LutRaw, AFullDeviceIsStatusOne) {
  const ToolRun run = room.build({"--seat", "2,1", "--raw", "/dev/full"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.error, HasSubstr("/dev/full"));
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(LutRaw, ADeviceIsWrittenAndNotReplaced) {
  EXPECT_EQ(room.build({"--seat", "2,1", "--raw", "/dev/null"}).status, 0);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(LutRaw, APipeIsWritten) {
  ASSERT_EQ(mkfifo(raw.c_str(), 0600), 0);
  // Both ends, so that opening does not wait; the table fits into a pipe.
  const int pipe = open(raw.c_str(), O_RDWR);
  ASSERT_GE(pipe, 0);
  EXPECT_EQ(room.build({"--seat", "2,1", "--raw", raw}).status, 0);
  std::string bytes(17, '\0');
  const ssize_t size = read(pipe, bytes.data(), bytes.size());
  close(pipe);
  ASSERT_EQ(size, 16);
  EXPECT_THAT(wordsOf(bytes.substr(0, 16)),
              ElementsAre("FF000201", "FF010201", "FF020201", "FF030201"));
  EXPECT_TRUE(fs::is_fifo(raw));
}

TEST_F(LutRaw, ALinkIsFollowedAndStays) {
  room.folder.write("target", "old");
  fs::create_symlink("target", raw);
  EXPECT_EQ(room.build({"--seat", "2,1", "--raw", raw}).status, 0);
  EXPECT_TRUE(fs::is_symlink(raw));
  EXPECT_EQ(contentsOf(room.at("target")).size(), 16U);
}

TEST_F(LutRaw, SeedHasTheFramesAroundTheCentreAndNoOthers) {
  EXPECT_THAT(seed("1", "1"), ElementsAre("FF000201", "FF010201", "FF020201", "00000000"));
}

TEST_F(LutRaw, SeedCountsRoundTheEnds) {
  EXPECT_THAT(seed("0", "1"), ElementsAre("FF000201", "FF010201", "00000000", "FF030201"));
  EXPECT_THAT(seed("5", "1"), ElementsAre("FF000201", "FF010201", "FF020201", "00000000"));
  EXPECT_THAT(seed("-1", "1"), ElementsAre("FF000201", "00000000", "FF020201", "FF030201"));
}

TEST_F(LutRaw, SeedOfRadiusZeroIsThatOfRadiusOne) {
  EXPECT_EQ(seed("1", "0"), seed("1", "1"));
  EXPECT_EQ(seed("1", "-7"), seed("1", "1"));
}

TEST_F(LutRaw, SeedOfALargeRadiusIsEveryFrame) {
  EXPECT_THAT(seed("1", "9223372036854775807"),
              ElementsAre("FF000201", "FF010201", "FF020201", "FF030201"));
}

TEST_F(LutRaw, SeedOfASeatBeyondTheEdgeIsStatusOne) {
  const ToolRun run = room.build({"--seat", "3,1", "--raw", raw, "--center", "1", "--radius", "1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.error, HasSubstr(room.video));
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST_F(LutRaw, SeedOfNoVideoIsStatusOne) {
  room.video = room.folder.write("text.mp4", "no video");
  const ToolRun run = room.build({"--seat", "0,0", "--raw", raw, "--center", "1", "--radius", "1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.error, HasSubstr("no video track in it"));
}

}  // namespace
}  // namespace halvora
