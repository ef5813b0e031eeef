// SPDX-License-Identifier: Apache-2.0
// `halvora lut show`: a table that passes every check, or the check that it does not pass.
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

struct LutShow : testing::Test {
  LutFolder room;
  std::string data;
  std::string meta;

  LutShow() {
    const ToolRun run = room.buildSeat("2,1");
    EXPECT_EQ(run.status, 0) << run.error;
    const rapidjson::Document line = jsonOf(run.output);
    data = line["data"].GetString();
    meta = line["meta"].GetString();
  }

  void write(const std::string& path, const std::string& contents) const {
    room.folder.write(fs::relative(path, room.folder.path()).string(), contents);
  }
  void moveVideosTime(std::chrono::milliseconds by) const {
    fs::last_write_time(room.video, fs::last_write_time(room.video) + by);
  }
  std::string metaWith(const std::string& from, const std::string& to) const {
    std::string text = contentsOf(meta);
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos);
    return text.replace(at, from.size(), to);
  }
  /// The words it shows; what went wrong in place of them.
  Words shown() const {
    const ToolRun run = room.show("2,1");
    if (run.status != 0) return {"status " + std::to_string(run.status), run.error};
    const rapidjson::Document line = jsonOf(run.output);
    Words words;
    for (const auto& word : line["words"].GetArray()) words.emplace_back(word.GetString());
    return words;
  }
  void expectFault(const std::string& file, const std::string& what) const {
    const ToolRun run = room.show("2,1");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.error, file + ": " + what);
  }
};

TEST_F(LutShow, PrintsOneObjectWithFrameCountAndWords) {
  const ToolRun run = room.show("2,1");
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.error, "");
  EXPECT_EQ(run.output,
            "{\"frameCount\":4,\"words\":[\"FF000201\",\"FF010201\",\"FF020201\",\"FF030201\"]}\n");
}

TEST_F(LutShow, DigitsAreUpperCaseAndEightAWord) {
  write(data, std::string("\xEF\xCD\xAB\x90\0\0\0\0\x01\0\0\0\xFF\xFF\xFF\xFF", 16));
  EXPECT_THAT(shown(), ElementsAre("90ABCDEF", "00000000", "00000001", "FFFFFFFF"));
}

TEST_F(LutShow, AMissingDataFileIsAFault) {
  fs::remove(data);
  expectFault(data, "the data file is missing");
}

TEST_F(LutShow, AMissingMetaFileIsAFault) {
  fs::remove(meta);
  expectFault(meta, "the meta file is missing");
}

TEST_F(LutShow, AMissingVideoIsAFault) {
  fs::remove(room.video);
  expectFault(room.video, "the video cannot be looked at");
}

TEST_F(LutShow, AnEmptyMetaFileIsAFault) {
  write(meta, "");
  expectFault(meta, "the meta file is empty or cannot be read");
}

TEST_F(LutShow, AMetaFileThatIsNoObjectIsAFault) {
  for (const char* text : {"[4]", "{", "4", "{\"frameCount\":4,}"}) {
    write(meta, text);
    expectFault(meta, "the meta file is not a JSON object");
  }
}

TEST_F(LutShow, AMetaFileWithoutAKeyIsAFault) {
  const std::string lacks = "the meta file lacks fileSize, modifiedAt or frameCount";
  for (const char* key : {"\"frameCount\"", "\"fileSize\"", "\"modifiedAt\""}) {
    const std::string whole = contentsOf(meta);
    write(meta, metaWith(key, "\"other\""));
    expectFault(meta, lacks);
    write(meta, whole);
  }
  write(meta, metaWith("\"frameCount\":4", "\"frameCount\":\"4\""));
  expectFault(meta, lacks);
}

TEST_F(LutShow, AVideoOfAnotherSizeIsAFault) {
  write(room.video, kPlaces + "\n");
  expectFault(room.video, "the video's size has changed");
}

TEST_F(LutShow, AVideoTouchedByMoreThanHalfASecondIsAFault) {
  moveVideosTime(std::chrono::milliseconds(600));
  expectFault(room.video, "the video's modification time has changed");
}

TEST_F(LutShow, AVideoTouchedByLessIsNone) {
  moveVideosTime(std::chrono::milliseconds(400));
  EXPECT_THAT(shown(), SizeIs(4));
  moveVideosTime(std::chrono::milliseconds(-800));
  EXPECT_THAT(shown(), SizeIs(4));
}

TEST_F(LutShow, ADataFileOfLessThanAWordIsAFault) {
  write(data, "123");
  expectFault(data, "the data file is too short");
}

TEST_F(LutShow, ADataFileOfAnotherLengthIsAFault) {
  for (const std::size_t length : {4U, 12U, 15U, 17U, 20U}) {
    write(data, std::string(length, 'x'));
    expectFault(data, "the data file's length is not that of its frames");
  }
}

TEST_F(LutShow, AFrameCountOfZeroIsThatOfTheDataFile) {
  write(meta, metaWith("\"frameCount\":4", "\"frameCount\":0"));
  write(data, std::string(1200, 'x'));
  const ToolRun run = room.show("2,1");
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(jsonOf(run.output)["frameCount"].GetInt(), 300);
  EXPECT_THAT(shown(), SizeIs(300));
}

TEST_F(LutShow, ASeatThatWasNotBuiltIsAFault) {
  const ToolRun run = room.show("1,2");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.error, HasSubstr("seat_1_2.bin: the data file is missing"));
}

TEST_F(LutShow, DocumentsThatAreNotThereHaveNoTables) {
  room.documents = room.at("missing");
  const ToolRun run = room.show("2,1");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.error, HasSubstr("the data file is missing"));
}

TEST_F(LutShow, ReadsOnly) {
  const Words before = room.contents();
  EXPECT_THAT(shown(), SizeIs(4));
  room.show("1,2");
  EXPECT_EQ(room.contents(), before);
}

TEST_F(LutShow, OutputThatFailsIsStatusOne) {
  const ToolRun run =
      runTool({"lut", "show", room.video, "--seat", "2,1", "--documents", room.documents},
              {.output = [](std::string_view) { return false; }});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "standard output cannot be written");
}

}  // namespace
}  // namespace halvora
