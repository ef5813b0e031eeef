// SPDX-License-Identifier: Apache-2.0
// `halvora lut`: command lines and input files that are unusable. Nothing is written, anywhere.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// VIDEO, DOCUMENTS and RAW stand for paths in the test's folder.
class LutRefused : public testing::TestWithParam<Words> {};

TEST_P(LutRefused, WritesNothing) {
  const LutFolder room;
  Words words{"lut"};
  for (const std::string& word : GetParam()) {
    words.push_back(word == "VIDEO"       ? room.video
                    : word == "DOCUMENTS" ? room.documents
                    : word == "RAW"       ? room.at("raw")
                                          : word);
  }
  EXPECT_EQ(flawOfRefusal(runTool(words)), "");
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

std::vector<Words> withSeats(const char* command) {
  std::vector<Words> lines;
  for (const char* seat : {"-1,0", "0,-1",  "-1,-1", "-0,0",  "",
                           ",",    "1",     "1,",    ",1",    "1,2,3",
                           "a,b",  "1.0,2", "1,2 ",  " 1,2",  "1, 2",
                           "+1,2", "1;2",   "0x1,2", "[1,2]", "1,9223372036854775808",
                           "1e3,2"}) {
    lines.push_back({command, "VIDEO", "--documents", "DOCUMENTS", "--seat", seat});
  }
  return lines;
}

INSTANTIATE_TEST_SUITE_P(BuildSeats, LutRefused, testing::ValuesIn(withSeats("build")));
INSTANTIATE_TEST_SUITE_P(ShowSeats, LutRefused, testing::ValuesIn(withSeats("show")));

INSTANTIATE_TEST_SUITE_P(
    Lines, LutRefused,
    testing::Values(
        Words{}, Words{"bulid"}, Words{"build"}, Words{"show"}, Words{"build", "VIDEO"},
        Words{"build", "VIDEO", "--seat", "1,1"},
        Words{"build", "VIDEO", "--documents", "DOCUMENTS"},
        Words{"build", "VIDEO", "--raw", "RAW"},
        Words{"build", "--seat", "1,1", "--documents", "DOCUMENTS"},
        Words{"build", "VIDEO", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS"},
        Words{"build", "VIDEO", "--seat", "1,1", "2,2", "--documents", "DOCUMENTS"},
        Words{"build", "VIDEO", "--seat", "1,1", "--seat", "--documents", "DOCUMENTS"},
        Words{"build", "VIDEO", "--seat", "1,1", "--seat", "-1,1", "--documents", "DOCUMENTS"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", ""},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "VIDEO"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS", "--documents", "x"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS", "--fast"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", ""},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "VIDEO"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "/"},
        Words{"build", "VIDEO", "--seat", "1,1", "--seat", "1,1", "--raw", "RAW"},
        Words{"build", "VIDEO", "--seat", "-1,1", "--raw", "RAW"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "RAW", "--documents", "VIDEO"}));

INSTANTIATE_TEST_SUITE_P(
    Seeds, LutRefused,
    testing::Values(
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "RAW", "--center", "1"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "RAW", "--radius", "1"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS", "--center", "1",
              "--radius", "1"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS", "--radius", "1"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "RAW", "--center", "x", "--radius", "1"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "RAW", "--center", "1", "--radius", "x"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "RAW", "--center", "1.5", "--radius",
              "1"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "RAW", "--center", "", "--radius", "1"},
        Words{"build", "VIDEO", "--seat", "1,1", "--raw", "RAW", "--center", "9223372036854775808",
              "--radius", "1"}));

INSTANTIATE_TEST_SUITE_P(
    Decoders, LutRefused,
    testing::Values(
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS", "--threads", "0"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS", "--threads", "17"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS", "--threads", "-1"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS", "--threads", "two"},
        Words{"build", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS", "--threads", ""}));

INSTANTIATE_TEST_SUITE_P(
    Show, LutRefused,
    testing::Values(Words{"show", "VIDEO", "--seat", "1,1"},
                    Words{"show", "VIDEO", "--documents", "DOCUMENTS"},
                    Words{"show", "--seat", "1,1", "--documents", "DOCUMENTS"},
                    Words{"show", "", "--seat", "1,1", "--documents", "DOCUMENTS"},
                    Words{"show", "VIDEO", "--seat", "1,1", "--documents", ""},
                    Words{"show", "VIDEO", "--seat", "1,1", "--documents", "VIDEO"},
                    Words{"show", "VIDEO", "--seat", "1,1", "--seat", "1,1", "--documents",
                          "DOCUMENTS"},
                    Words{"show", "VIDEO", "VIDEO", "--seat", "1,1", "--documents", "DOCUMENTS"}));

// The video as an input file.

struct LutVideoRefused : testing::TestWithParam<Words> {
  LutFolder room;
};

INSTANTIATE_TEST_SUITE_P(Targets, LutVideoRefused,
                         testing::Values(Words{"--documents", "somewhere"},
                                         Words{"--raw", "somewhere"}));

TEST_P(LutVideoRefused, ThatIsNotThere) {
  room.video = room.at("missing.mp4");
  Words options = GetParam();
  options.back() = room.at(options.back());
  options.insert(options.end(), {"--seat", "1,1"});
  const ToolRun run = room.build(options);
  EXPECT_EQ(flawOfRefusal(run), "");
  EXPECT_THAT(run.error, HasSubstr("missing.mp4"));
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST_P(LutVideoRefused, ThatIsAFolder) {
  room.video = room.folder.path().string();
  Words options = GetParam();
  options.back() = room.at(options.back());
  options.insert(options.end(), {"--seat", "1,1"});
  EXPECT_EQ(flawOfRefusal(room.build(options)), "");
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST_P(LutVideoRefused, WithoutAName) {
  room.video = "";
  Words options = GetParam();
  options.back() = room.at(options.back());
  options.insert(options.end(), {"--seat", "1,1"});
  EXPECT_EQ(flawOfRefusal(room.build(options)), "");
  EXPECT_THAT(room.contents(), ElementsAre("places.mp4"));
}

TEST(LutHelp, IsPrintedForEveryCommand) {
  for (const Words& words :
       {Words{"lut", "--help"}, Words{"lut", "build", "--help"}, Words{"lut", "show", "--help"}}) {
    const ToolRun run = runTool(words);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "");
    EXPECT_THAT(run.output, HasSubstr("lut"));
  }
  const std::string help = runTool({"lut", "build", "--help"}).output;
  for (const char* option : {"VIDEO", "--seat", "--documents", "--raw", "--center", "--radius",
                             "--threads", "--no-progress"}) {
    EXPECT_THAT(help, HasSubstr(option));
  }
}

}  // namespace
}  // namespace halvora
