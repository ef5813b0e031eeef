// SPDX-License-Identifier: Apache-2.0
// The page for venue crews: every command on it is run as it stands there.
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/ffmpeg/ffmpeg_movies.h"
#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "tests/adapters/ffmpeg/clip_maker.h"
#include "tests/apps/halvora/tool_runner.h"
#include "tests/apps/halvora/virtual_crew.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// What stands in the page's blocks of that kind, one behind the other.
std::string blocksOf(const std::string& page, const std::string& kind) {
  std::string text;
  const std::string begin = "```" + kind + "\n";
  for (std::size_t at = page.find(begin); at != std::string::npos; at = page.find(begin, at)) {
    at += begin.size();
    text += page.substr(at, page.find("```", at) - at);
  }
  return text;
}

class VenuePage : public testing::Test {
 protected:
  // Words that name a file, or the folder of the hall, are the test's own.
  std::vector<std::string> wordsOf(const std::string& command) {
    std::istringstream stream(command);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
      const bool isFile = word.starts_with("hall") || word.ends_with(".csv") ||
                          word.ends_with(".yaml") || word.ends_with(".jsonl") ||
                          word.find(".png") != std::string::npos || word.ends_with(".mp4");
      words.push_back(isFile && word != "halvora" ? (folder.path() / word).string() : word);
    }
    words.erase(words.begin());
    return words;
  }

  TestFolder folder;
  const std::string page = contentsOf(sourceTree() + "/docs/venue.md");
};

TEST_F(VenuePage, EveryCommandDoesWhatItSays) {
  folder.write("seats.csv", blocksOf(page, "csv"));
  folder.write("show.yaml", blocksOf(page, "yaml"));
  folder.write("hall/HVAssets/Maps/Venue-12/readme", "");
  const ClipMaker clips;
  folder.write("clip.mp4", contentsOf(clips.encode("film.mp4", movingTexture(50, 25, 96, 64),
                                                   "-c:v libx264 -pix_fmt yuv420p")));
  Crew crew;
  crew.lines = {{0, "go"}, {100, "go"}, {5000, "panic"}, {6000, "quit"}};
  ToolSetup setup;
  const FfmpegVideoAssets videos;
  const FfmpegMovies movies;
  setup.videos = &videos;
  setup.movies = &movies;
  setup.openLive = [&crew] { return std::make_unique<VirtualGround>(crew); };
  std::istringstream commands(blocksOf(page, "sh"));
  std::vector<ToolRun> runs;
  for (std::string command; std::getline(commands, command);) {
    runs.push_back(runTool(wordsOf(command), setup));
    EXPECT_EQ(runs.back().status, 0) << command << "\n" << runs.back().error;
  }
  ASSERT_EQ(runs.size(), 15U);
  EXPECT_THAT(runs[0].output, HasSubstr("{\"seats\":7,\"width\":32,\"height\":48,\"moved\":0"));
  EXPECT_THAT(runs[1].output, HasSubstr("Nothing is wrong."));
  EXPECT_THAT(runs[3].output, HasSubstr("{\"width\":32,\"height\":48,\"framesPerSecond\":30,"));
  EXPECT_THAT(runs[4].output, HasSubstr("\"pictures\":60,\"lacks\":[]"));
  EXPECT_THAT(runs[5].output, HasSubstr("{\"cues\":4,\"seconds\":22.5,\"packets\":13,"));
  EXPECT_THAT(runs[7].output, HasSubstr("\"light\":[1,1,1,1]"));
  EXPECT_THAT(runs[8].output, HasSubstr("\"cue\": \"Good night\""));
  EXPECT_THAT(runs[9].output, HasSubstr("\"shownBy50\": null"));
  EXPECT_THAT(runs[10].output, HasSubstr("\"pause\": "));
  EXPECT_THAT(runs[13].output, HasSubstr("\"cue\": \"Good night\""));
  EXPECT_THAT(runs[14].output, Not(IsEmpty()));
  EXPECT_THAT(runs[14].messages, HasSubstr("\"state\":\"panic\""));
}

}  // namespace
}  // namespace halvora
