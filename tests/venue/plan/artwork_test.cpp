// SPDX-License-Identifier: Apache-2.0
// What an artist gets of a hall, and clips held against it: real ones, made and read by FFmpeg.
#include "venue/plan/artwork.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/ffmpeg/ffmpeg_movies.h"
#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/json/exact_json_reader.h"
#include "tests/adapters/ffmpeg/clip_maker.h"
#include "tests/venue/plan/lut_folder.h"
#include "venue/plan/clip_fit.h"
#include "venue/plan/named_map.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::Not;

// Ten rows of twelve seats, four pixels apart along a row and six from row to row.
std::string hallMap() {
  std::string rows;
  for (int row = 0; row < 10; ++row) {
    std::string seats;
    for (int seat = 0; seat < 12; ++seat) {
      seats += std::string(seat > 0 ? "," : "") + R"({"name": ")" + std::to_string(seat + 1) +
               R"(", "x": )" + std::to_string(4 + seat * 4) + R"(, "y": )" +
               std::to_string(4 + row * 6) + "}";
    }
    rows += std::string(row > 0 ? "," : "") + R"({"name": ")" + std::to_string(row + 1) +
            R"(", "seats": [)" + seats + "]}";
  }
  return R"({"sections": [{"name": "Stalls & co", "rows": [)" + rows + "]}]}";
}

struct Artwork : testing::Test {
  Artwork() { map = folder.write("map.json", hallMap()); }
  std::string at(const std::string& name) const { return (folder.path() / name).string(); }
  ToolRun fit(const std::string& clip, const Words& options = {}) const {
    Words words{"map", "fit", clip, "--map", map};
    words.insert(words.end(), options.begin(), options.end());
    ToolSetup setup;
    setup.videos = &videos;
    setup.movies = &movies;
    return runTool(words, setup);
  }

  TestFolder folder;
  std::string map;
  const FfmpegVideoAssets videos;
  const FfmpegMovies movies;
  const ClipMaker clips;
};

// A codec's blocks: as many as hold every seat's cell and as much room beyond it as before it.
TEST(ArtworkCanvasTest, IsOfWholeBlocks) {
  const auto sideOf = [](int greatest) {
    const std::string seats =
        R"({"s": {"1": {"1": {"1": [4, 4], "2": [)" + std::to_string(greatest) + ", 4]}}}}";
    const SeatMap map = seatMapOf(seats, {}, ExactJsonReader());
    return canvasFor(map).width;
  };
  EXPECT_EQ(sideOf(10), 16);
  EXPECT_EQ(sideOf(11), 32) << "one pixel more than a block";
  EXPECT_EQ(sideOf(26), 32);
  EXPECT_EQ(sideOf(27), 48);
}

TEST(ClipFactsTest, PicturesThatDoNotComeEvenlyAreSaidToBe) {
  ClipFacts clip;
  clip.width = clip.height = 16;
  clip.pictures = 31;
  clip.span = 1;
  clip.seconds = 31.0 / 30;
  const ArtworkCanvas canvas{16, 16};
  EXPECT_THAT(lacksOf(clip, canvas), testing::IsEmpty());
  clip.isEven = false;
  EXPECT_THAT(lacksOf(clip, canvas), testing::ElementsAre(HasSubstr("evenly")));
}

TEST_F(Artwork, TemplateSaysSizeRateAndTheSmallestLetter) {
  const ToolRun run = runTool({"map", "template", map, "--out", at("art")});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(
      run.output,
      "{\"width\":64,\"height\":64,\"framesPerSecond\":30,\"sections\":[{\"section\":\"Stalls "
      "& co\",\"seats\":120,\"letter\":42}]}\n");
  EXPECT_TRUE(fs::exists(at("art/guide.png")));
  EXPECT_TRUE(fs::exists(at("art/mask.png")));
  const std::string page = contentsOf(at("art/artwork.html"));
  EXPECT_THAT(page, HasSubstr("<b>64 × 64 pixels</b>"));
  EXPECT_THAT(page, HasSubstr("<b>30 frames a second</b>"));
  EXPECT_THAT(page, HasSubstr("<tr><td>1<td>Stalls &amp; co<td>120<td>6 pixels<td>42 pixels"));
}

TEST_F(Artwork, TemplateHasTheCanvasOfTheImport) {
  std::string seats = "section,row,seat\n";
  for (int seat = 1; seat <= 90; ++seat) {
    seats += "A," + std::to_string(seat / 20) + "," + std::to_string(seat) + "\n";
  }
  const ToolRun import =
      runTool({"map", "import", folder.write("seats.csv", seats), "--out", at("imported.json")});
  ASSERT_EQ(import.status, 0) << import.error;
  const ToolRun run = runTool({"map", "template", at("imported.json"), "--out", at("art")});
  ASSERT_EQ(run.status, 0) << run.error;
  const auto sizeOf = [](const std::string& line) {
    return line.substr(line.find("\"width\""),
                       line.find(",", line.find("\"height\"")) - line.find("\"width\""));
  };
  EXPECT_EQ(sizeOf(run.output), sizeOf(import.output));
}

TEST_F(Artwork, TemplateRefusesWhatItCannotDraw) {
  const auto flaw = [&](const Words& words) { return flawOfRefusal(runTool(words)); };
  EXPECT_EQ(flaw({"map", "template", at("none.json"), "--out", at("art")}), "");
  EXPECT_EQ(flaw({"map", "template", folder.write("e.json", "{}"), "--out", at("art")}), "");
  EXPECT_EQ(flaw({"map", "template", map, "--out", at("art"), "--size", "32x64"}), "");
  EXPECT_EQ(flaw({"map", "template", map, "--out", at("art"), "--size", "64"}), "");
  EXPECT_EQ(flaw({"map", "template", map, "--out", map}), "");
  EXPECT_FALSE(fs::exists(at("art")));
}

TEST_F(Artwork, AClipThatFitsLacksNothing) {
  const ToolRun run =
      fit(clips.encode("good.mp4", movingTexture(45), "-c:v libx264 -pix_fmt yuv420p"));
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("\"width\":64,\"height\":64,\"framesPerSecond\":30,"));
  EXPECT_THAT(run.output, HasSubstr("\"pictures\":45,\"lacks\":[]}"));
}

TEST_F(Artwork, AClipOfFilmIsSaidToBe) {
  const ToolRun run =
      fit(clips.encode("film.mp4", movingTexture(50, 25, 96, 64), "-c:v libx264 -pix_fmt yuv420p"));
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output,
              HasSubstr("\"lacks\":[\"its pictures are 96x64, the hall's canvas is 64x64, which is "
                        "of another shape\",\"it has 25 frames a second, phones count 30\"]"));
  EXPECT_THAT(run.error, HasSubstr("film.mp4: its pictures are 96x64"));
  EXPECT_THAT(run.error, Not(HasSubstr("\n")));
}

TEST_F(Artwork, TheCopyPassesItsOwnCheck) {
  const std::string film =
      clips.encode("film.mp4", movingTexture(50, 25, 96, 128), "-c:v libx264 -pix_fmt yuv420p");
  const ToolRun made = fit(film, {"--out", at("copy.mp4")});
  EXPECT_EQ(made.status, 0) << made.error;
  EXPECT_THAT(made.output, HasSubstr("\"pictures\":60,\"lacks\":[]}"));
  EXPECT_EQ(fit(at("copy.mp4")).status, 0);
}

// The middle of a wide clip, and the picture that is on show at each thirtieth of a second.
TEST_F(Artwork, TheCopyHasTheMiddleOfTheClip) {
  RawVideo halves{128, 64, 25, 25, "rgb24", ""};
  for (int frame = 0; frame < halves.frames; ++frame) {
    for (int pixel = 0; pixel < halves.width * halves.height; ++pixel) {
      const int x = pixel % halves.width;
      const bool isMiddle = x >= 32 && x < 96;
      const bool isLate = frame >= 10;
      halves.bytes += isMiddle && isLate ? '\xF0' : '\x10';
      halves.bytes += isMiddle ? '\xF0' : '\x10';
      halves.bytes += '\x10';
    }
  }
  const std::string clip = clips.encode("halves.mp4", halves, "-c:v libx264 -pix_fmt yuv420p");
  ASSERT_EQ(fit(clip, {"--out", at("copy.mp4")}).status, 0);
  // A generator reads through its asset.
  const auto copy = videos.open(at("copy.mp4"));
  const auto pictures = copy->generator();
  const auto redAndGreen = [&](int frame, std::size_t x) {
    const auto image = pictures->imageAt({frame, 30});
    const std::uint8_t* pixel = &image->rgba[(32 * std::size_t{image->width} + x) * 4];
    return std::pair(pixel[0] > 128, pixel[1] > 128);
  };
  for (const std::size_t x : {0U, 2U, 63U}) {
    EXPECT_EQ(redAndGreen(0, x), std::pair(false, true)) << x;
  }
  EXPECT_EQ(redAndGreen(11, 61), std::pair(false, true));
  EXPECT_EQ(redAndGreen(12, 2), std::pair(true, true));
  EXPECT_EQ(redAndGreen(29, 61), std::pair(true, true));
}

TEST_F(Artwork, RefusesWhatIsNoClip) {
  EXPECT_EQ(flawOfRefusal(fit(at("none.mp4"))), "");
  EXPECT_EQ(flawOfRefusal(fit(folder.write("text.mp4", "text"))), "");
  EXPECT_EQ(flawOfRefusal(fit(folder.write("text.mp4", "text"), {"--out", at("o.mp4")})), "");
  const std::string clip =
      clips.encode("good.mp4", movingTexture(45), "-c:v libx264 -pix_fmt yuv420p");
  EXPECT_EQ(flawOfRefusal(fit(clip, {"--out", clip})), "");
  EXPECT_EQ(flawOfRefusal(fit(clip, {"--out", at("copy.avi")})), "");
  EXPECT_EQ(flawOfRefusal(fit(clip, {"--out", at("no/folder/copy.mp4")})), "");
  EXPECT_FALSE(fs::exists(at("o.mp4")));
}

}  // namespace
}  // namespace halvora
