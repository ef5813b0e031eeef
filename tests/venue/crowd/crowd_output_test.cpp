// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_output.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::string encoded(const Image& image) {
  return std::to_string(image.width) + "x" + std::to_string(image.height);
}
std::string encodedToNothing(const Image& /*image*/) { return {}; }

// Movies that are the number of their frames, and that fail when they are told to.
struct CountedMovies final : MovieWriters {
  struct Movie final : MovieWriter {
    Movie(std::string its, bool fails) : path(std::move(its)), isGood(!fails) {}
    bool add(std::span<const std::uint8_t> /*rgb*/) override {
      ++frames;
      return isGood;
    }
    bool finish() override {
      std::ofstream(path) << frames;
      return isGood;
    }
    std::string path;
    bool isGood;
    int frames = 0;
  };

  std::unique_ptr<MovieWriter> make(const std::string& path,
                                    const MovieFormat& /*format*/) const override {
    if (canNotBegin) return nullptr;
    return std::make_unique<Movie>(path, fails);
  }
  bool canNotBegin = false;
  bool fails = false;
};

struct CrowdOutputRoom : testing::Test {
  std::string at(const std::string& name) const { return (folder.path() / name).string(); }
  std::unique_ptr<CrowdOutput> make(const std::string& name, PictureEncoder encode = encoded) {
    return makeCrowdOutput(at(name), {2, 2, 30, 3}, {&movies, encode});
  }
  std::vector<std::string> contents() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder.path())) {
      names.push_back(fs::relative(entry.path(), folder.path()).string());
    }
    return names;
  }

  TestFolder folder;
  CountedMovies movies;
  const std::vector<std::uint8_t> frame = std::vector<std::uint8_t>(2 * 2 * 3);
};

TEST(CrowdOutputKinds, GoByTheEndOfTheName) {
  using Kind = CrowdOutputKind;
  for (const auto& [name, kind] :
       std::vector<std::pair<std::string, Kind>>{{"show.mp4", Kind::movie},
                                                 {"show.MP4", Kind::movie},
                                                 {"show.Png", Kind::sheet},
                                                 {"show.avi", Kind::other},
                                                 {"a.mp4/show.WEBM", Kind::other},
                                                 {"show.jpg", Kind::other},
                                                 {"show", Kind::folder},
                                                 {"show.mp4/", Kind::folder},
                                                 {"show.v2", Kind::folder},
                                                 {".png", Kind::folder},
                                                 {"", Kind::folder}}) {
    EXPECT_EQ(crowdOutputKindOf(name), kind) << name;
  }
}

TEST_F(CrowdOutputRoom, AKindThatIsNotWrittenMakesNothing) {
  EXPECT_EQ(make("show.avi"), nullptr);
  EXPECT_THAT(contents(), IsEmpty());
}

TEST_F(CrowdOutputRoom, AShorterShowLeavesNoPicturesOfALongerOneBefore) {
  for (const int frames : {4, 2}) {
    folder.write("show/frame-000009.png", "somebody's own");
    auto output = make("show");
    ASSERT_NE(output, nullptr);
    for (int at = 0; at < frames; ++at) EXPECT_TRUE(output->add(frame));
    EXPECT_TRUE(output->finish());
  }
  EXPECT_THAT(contents(), UnorderedElementsAre("show", "show/frame-000001.png",
                                               "show/frame-000002.png", "show/frame-000009.png"));
}

TEST_F(CrowdOutputRoom, AMovieAppearsWhenItIsWhole) {
  auto output = make("show.mp4");
  ASSERT_NE(output, nullptr);
  EXPECT_TRUE(output->add(frame));
  EXPECT_FALSE(fs::exists(at("show.mp4")));
  EXPECT_TRUE(output->finish());
  output.reset();
  EXPECT_THAT(contents(), ElementsAre("show.mp4"));
  EXPECT_EQ(contentsOf(at("show.mp4")), "1");
}

TEST_F(CrowdOutputRoom, FilesOfTheUsersAreLeftAlone) {
  const std::vector<std::string> names = {"show.part.mp4", "show.mp4.part", "show.mp4.part-0",
                                          "show.png.part", "show.png.part-0"};
  for (const std::string& name : names) folder.write(name, "the user's");
  for (const char* name : {"show.mp4", "show.png"}) {
    auto output = make(name);
    ASSERT_NE(output, nullptr);
    EXPECT_TRUE(output->add(frame));
    EXPECT_TRUE(output->finish());
  }
  EXPECT_EQ(contents().size(), names.size() + 2);
  for (const std::string& name : names) EXPECT_EQ(contentsOf(at(name)), "the user's") << name;
}

TEST_F(CrowdOutputRoom, ALinkIsNotFollowedToAnotherFile) {
  folder.write("precious", "the user's");
  fs::create_symlink(at("precious"), at("show.mp4.part-0"));
  fs::create_symlink(at("missing"), at("show.mp4.part-1"));
  auto output = make("show.mp4");
  ASSERT_NE(output, nullptr);
  EXPECT_TRUE(output->add(frame));
  EXPECT_TRUE(output->finish());
  EXPECT_EQ(contentsOf(at("precious")), "the user's");
  EXPECT_FALSE(fs::exists(at("missing")));
}

TEST_F(CrowdOutputRoom, AMovieThatFailsLeavesNothingBehind) {
  movies.fails = true;
  auto output = make("show.mp4");
  ASSERT_NE(output, nullptr);
  EXPECT_FALSE(output->add(frame));
  EXPECT_FALSE(output->finish());
  output.reset();
  EXPECT_THAT(contents(), IsEmpty());
  movies.canNotBegin = true;
  EXPECT_EQ(make("show.mp4"), nullptr);
  EXPECT_THAT(contents(), IsEmpty());
}

TEST_F(CrowdOutputRoom, AMovieThatCannotBePutInPlaceLeavesNothingBehind) {
  auto output = make("show.mp4");
  ASSERT_NE(output, nullptr);
  EXPECT_TRUE(output->add(frame));
  fs::create_directories(at("show.mp4/in"));
  EXPECT_FALSE(output->finish());
  output.reset();
  EXPECT_THAT(contents(), UnorderedElementsAre("show.mp4", "show.mp4/in"));
}

TEST_F(CrowdOutputRoom, AFolderHasAPictureAFrame) {
  auto output = make("frames");
  ASSERT_NE(output, nullptr);
  for (int at = 0; at < 2; ++at) EXPECT_TRUE(output->add(frame));
  EXPECT_TRUE(output->finish());
  EXPECT_THAT(contents(),
              UnorderedElementsAre("frames", "frames/frame-000001.png", "frames/frame-000002.png"));
  EXPECT_EQ(contentsOf(at("frames/frame-000002.png")), "2x2");
}

TEST_F(CrowdOutputRoom, AFolderThatCannotTakeAPictureSaysSo) {
  auto output = make("frames", encodedToNothing);
  ASSERT_NE(output, nullptr);
  EXPECT_FALSE(output->add(frame));
  EXPECT_FALSE(output->add(frame));
  EXPECT_FALSE(output->finish());

  // A folder stands where the second picture is to be.
  auto other = make("others");
  fs::create_directories(at("others/frame-000002.png/in"));
  EXPECT_TRUE(other->add(frame));
  EXPECT_FALSE(other->add(frame));
  EXPECT_FALSE(other->add(frame));
  EXPECT_FALSE(other->finish());
}

TEST_F(CrowdOutputRoom, ANewFolderWithoutPicturesGoesAgain) {
  make("new").reset();
  EXPECT_FALSE(fs::exists(at("new")));
  fs::create_directory(at("old"));
  make("old").reset();
  EXPECT_TRUE(fs::exists(at("old")));
}

// A link leads to where somebody fetches it; a pipe is somebody's too.
TEST_F(CrowdOutputRoom, ASheetAndAMovieGoThroughALinkAndIntoNoPipe) {
  for (const std::string kind : {".png", ".mp4"}) {
    fs::create_symlink("kept" + kind, at("link" + kind));
    const auto output = make("link" + kind);
    ASSERT_NE(output, nullptr);
    EXPECT_TRUE(output->add(frame));
    EXPECT_TRUE(output->finish());
    EXPECT_TRUE(fs::is_symlink(at("link" + kind)));
    EXPECT_TRUE(fs::is_regular_file(at("kept" + kind)));
    ASSERT_EQ(mkfifo(at("pipe" + kind).c_str(), 0600), 0);
    EXPECT_EQ(make("pipe" + kind), nullptr);
    EXPECT_TRUE(fs::is_fifo(at("pipe" + kind)));
  }
}

// Of 60 frames 24 are taken, the first one of each 2.5.
TEST_F(CrowdOutputRoom, ASheetTakesItsPicturesEvenlyAndLaysThemOutInRows) {
  static Image sheet;
  constexpr int kWidth = 3;
  constexpr int kHeight = 2;
  const auto output = makeCrowdOutput(at("sheet.png"), {kWidth, kHeight, 30, 60},
                                      {&movies, [](const Image& image) {
                                         sheet = image;
                                         return std::string("a picture");
                                       }});
  ASSERT_NE(output, nullptr);
  std::vector<std::uint8_t> rgb(kWidth * kHeight * 3);
  std::vector<int> taken;
  for (int number = 0; number < 61; ++number) {
    if (output->wantsNext()) taken.push_back(number);
    for (std::size_t byte = 0; byte < rgb.size(); ++byte) {
      rgb[byte] = static_cast<std::uint8_t>(100 + number + static_cast<int>(byte) * 5);
    }
    EXPECT_TRUE(output->add(rgb));
  }
  EXPECT_TRUE(output->finish());
  EXPECT_THAT(taken, ElementsAre(0, 2, 5, 7, 10, 12, 15, 17, 20, 22, 25, 27, 30, 32, 35, 37, 40, 42,
                                 45, 47, 50, 52, 55, 57));
  // Four columns and six rows, 6 pixels around each.
  ASSERT_EQ(sheet.width, 6 + 4 * (3 + 6));
  ASSERT_EQ(sheet.height, 6 + 6 * (2 + 6));
  ASSERT_EQ(sheet.rgba.size(), std::size_t{sheet.width} * sheet.height * 4);
  for (int y = 0; y < static_cast<int>(sheet.height); ++y) {
    for (int x = 0; x < static_cast<int>(sheet.width); ++x) {
      const int column = x % 9 - 6;
      const int row = y % 8 - 6;
      const bool isOfATile = column >= 0 && row >= 0;
      const std::size_t tile = static_cast<std::size_t>(y / 8 * 4 + x / 9);
      for (int channel = 0; channel < 3; ++channel) {
        const int byte = (row * kWidth + column) * 3 + channel;
        const int expected = isOfATile ? (100 + taken[tile] + byte * 5) % 256 : 40;
        const auto pixel = static_cast<std::size_t>(y * static_cast<int>(sheet.width) + x);
        ASSERT_EQ(sheet.rgba[pixel * 4 + static_cast<std::size_t>(channel)], expected)
            << x << ", " << y;
        ASSERT_EQ(sheet.rgba[pixel * 4 + 3], 255);
      }
    }
  }
}

TEST_F(CrowdOutputRoom, ASheetWithoutPicturesIsNone) {
  auto output = make("sheet.png");
  ASSERT_NE(output, nullptr);
  EXPECT_FALSE(output->finish());
  EXPECT_THAT(contents(), IsEmpty());
}

TEST_F(CrowdOutputRoom, NothingIsMadeWhereAFolderHasTheName) {
  fs::create_directories(at("show.mp4"));
  fs::create_directories(at("show.png"));
  EXPECT_EQ(make("show.mp4"), nullptr);
  EXPECT_EQ(make("show.png"), nullptr);
}

}  // namespace
}  // namespace halvora
