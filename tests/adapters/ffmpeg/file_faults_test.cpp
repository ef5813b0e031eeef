// SPDX-License-Identifier: Apache-2.0
// Files that are damaged, lie, or change while they are read.
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "tests/adapters/ffmpeg/clip_maker.h"

namespace halvora {
namespace {

constexpr const char* kAlmostExact =
    "-c:v libx264 -qp 4 -preset superfast -sc_threshold 0 -b_strategy 0 -g 10 ";

std::string reasonAgainst(const std::string& path) {
  std::string reason;
  return FfmpegVideoAssets().open(path, &reason) == nullptr ? reason : "opened";
}

/// Where the body of the last box of that type begins.
std::size_t bodyOf(const std::string& bytes, std::string_view type) {
  const std::size_t at = bytes.rfind(type);
  EXPECT_NE(at, std::string::npos) << type;
  return at == std::string::npos ? 0 : at + 4;
}

void put32(std::string& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t byte = 0; byte < 4; ++byte) {
    bytes.at(at + byte) = static_cast<char>(value >> (24 - 8 * byte));
  }
}

class FfmpegFaults : public testing::Test {
 protected:
  std::string clip(const std::string& more = "-bf 2 -movflags faststart", int frames = 30) const {
    return clips_.encode("clip.mp4", movingTexture(frames, 30, 128, 128), kAlmostExact + more);
  }

  std::string patched(const std::function<void(std::string&)>& change) const {
    return clips_.changed(clip(), "patched.mp4", change);
  }

  ClipMaker clips_;
};

TEST_F(FfmpegFaults, WhatIsNoFileCannotBeRead) {
  const TemporaryFolder folder;
  EXPECT_EQ(reasonAgainst(folder.path() + "/missing.mp4"), "cannot be read");
  EXPECT_EQ(reasonAgainst(folder.path()), "cannot be read");
  EXPECT_EQ(reasonAgainst("/dev/zero"), "cannot be read");
  EXPECT_EQ(reasonAgainst(""), "cannot be read");
  const std::string pipe = folder.path() + "/pipe.mp4";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(reasonAgainst(pipe), "cannot be read");
  EXPECT_FALSE(FfmpegVideoAssets().open(pipe));
}

TEST_F(FfmpegFaults, WhatIsNoVideoIsRefused) {
  const TemporaryFolder folder;
  EXPECT_EQ(reasonAgainst(folder.write("empty.mp4", "")), "cannot be read");
  EXPECT_NE(reasonAgainst(folder.write("text.mp4", "#EXTM3U\nhttp://192.0.2.1/other.mp4\n")),
            "opened");
  const std::string list = "ffconcat version 1.0\nfile clip.mp4\n";
  EXPECT_NE(reasonAgainst(folder.write("list.mp4", list)), "opened");
  EXPECT_NE(reasonAgainst(folder.write("zeroes.mp4", std::string(5000, '\0'))), "opened");
  clips_.run("-f lavfi -i sine=d=1 %sound.mp4");
  EXPECT_EQ(reasonAgainst(clips_.pathOf("sound.mp4")), "no video track in it");
  clips_.run("-f lavfi -i testsrc2=s=64x64:d=1 -c:v libx264 %other.mkv");
  EXPECT_NE(reasonAgainst(clips_.pathOf("other.mkv")), "opened");
}

TEST_F(FfmpegFaults, ACoverPictureIsNoVideo) {
  clips_.run("-f lavfi -i testsrc2=s=64x64:d=0.04 -frames:v 1 %cover.jpg");
  clips_.run(
      "-f lavfi -i sine=d=1 -i %cover.jpg -map 0 -map 1 -c:v copy "
      "-disposition:v:0 attached_pic %song.mp4");
  EXPECT_EQ(reasonAgainst(clips_.pathOf("song.mp4")), "no video track in it");
}

TEST_F(FfmpegFaults, ATruncatedFileGivesWhatIsThere) {
  const std::string whole = clip();
  const auto size = std::filesystem::file_size(whole);
  const auto all = framesOf(*FfmpegVideoAssets().open(whole)->reader());
  ASSERT_EQ(all.size(), 30U);
  std::size_t before = 0;
  for (const int share : {50, 75, 99}) {
    SCOPED_TRACE(share);
    const std::string path = clips_.changed(whole, "cut.mp4", [&](std::string& bytes) {
      bytes.resize(size * static_cast<std::size_t>(share) / 100);
    });
    const auto asset = FfmpegVideoAssets().open(path);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->durationSeconds(), 1);
    const auto frames = framesOf(*asset->reader());
    EXPECT_GT(frames.size(), before);
    EXPECT_LT(frames.size(), all.size());
    before = frames.size();
    // Nothing is made up: what comes is as it is in the whole file.
    for (const SeenFrame& frame : frames) {
      EXPECT_NE(std::find(all.begin(), all.end(), frame), all.end()) << frame.seconds;
    }
    EXPECT_EQ(framesOf(asset->readers(2)), frames);
  }
}

TEST_F(FfmpegFaults, ATruncatedFileWithItsHeaderAtTheEndIsRefused) {
  const std::string whole = clip("-bf 2");
  const std::string path = clips_.changed(
      whole, "cut.mp4", [](std::string& bytes) { bytes.resize(bytes.size() * 3 / 4); });
  EXPECT_EQ(reasonAgainst(path), "cannot be read");
}

TEST_F(FfmpegFaults, TablesThatClaimMoreThanTheFileHoldsAreRefused) {
  EXPECT_EQ(reasonAgainst(patched(
                [](std::string& bytes) { put32(bytes, bodyOf(bytes, "stsz") + 8, 0xFFFFFFF0); })),
            "its tables claim more samples than it can hold");
  // One size for all needs no table.
  EXPECT_EQ(reasonAgainst(patched([](std::string& bytes) {
              put32(bytes, bodyOf(bytes, "stsz") + 4, 1);
              put32(bytes, bodyOf(bytes, "stsz") + 8, 0x7FFFFFFF);
            })),
            "its tables claim more samples than it can hold");
  for (const char* table : {"stts", "ctts", "stsc", "stss", "stco"}) {
    EXPECT_EQ(reasonAgainst(patched([table](std::string& bytes) {
                put32(bytes, bodyOf(bytes, table) + 4, 0x10000000);
              })),
              "its header makes no sense")
        << table;
  }
  EXPECT_EQ(reasonAgainst(
                patched([](std::string& bytes) { put32(bytes, bodyOf(bytes, "elst") + 4, 1001); })),
            "its edit list is too long");
}

TEST_F(FfmpegFaults, DamagedPicturesAreNotGivenOut) {
  const std::string whole = clip("-bf 0", 30);
  const auto all = framesOf(*FfmpegVideoAssets().open(whole)->reader());
  const std::string path = clips_.changed(whole, "damaged.mp4", [](std::string& bytes) {
    // In the middle of the pictures, past the lengths of their parts.
    for (std::size_t at = bytes.size() / 2; at < bytes.size() / 2 + 40; ++at) bytes[at] = '\x5A';
  });
  const auto asset = FfmpegVideoAssets().open(path);
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  const auto frames = framesOf(*reader);
  EXPECT_TRUE(reader->hasLostPictures());
  EXPECT_LT(frames.size(), all.size());
  EXPECT_GT(frames.size(), all.size() / 2);
}

// Then the pictures themselves say, and nobody complains about the half that is there.
TEST_F(FfmpegFaults, AHeaderMayLackASize) {
  const std::string whole = clip();
  testing::internal::CaptureStderr();
  const auto with = [&](std::size_t at) {
    const std::string path = clips_.changed(whole, "half.mp4", [at](std::string& bytes) {
      const std::size_t entry = bytes.find("avc1", bytes.find("stsd"));
      bytes.replace(entry + 4 + at, 2, std::string(2, '\0'));
    });
    const auto asset = FfmpegVideoAssets().open(path);
    return asset != nullptr ? framesOf(*asset->reader()) : std::vector<SeenFrame>();
  };
  const auto withoutWidth = with(24);
  const auto withoutHeight = with(26);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  const auto all = framesOf(*FfmpegVideoAssets().open(whole)->reader());
  EXPECT_EQ(withoutWidth, all);
  EXPECT_EQ(withoutHeight, all);
}

TEST_F(FfmpegFaults, ADurationMayBeALie) {
  const auto durationAfter = [&](std::uint32_t claimed) {
    const auto asset = FfmpegVideoAssets().open(patched(
        [claimed](std::string& bytes) { put32(bytes, bodyOf(bytes, "mvhd") + 16, claimed); }));
    return asset != nullptr ? asset->durationSeconds() : -1;
  };
  EXPECT_EQ(durationAfter(3'000'000'000U), 3'000'000);
  EXPECT_EQ(durationAfter(1), 0.001);
  // Nothing, and "unknown": then it is as long as its tracks.
  EXPECT_EQ(durationAfter(0), 1);
  EXPECT_EQ(durationAfter(UINT32_MAX), 1);
}

TEST_F(FfmpegFaults, AFileThatVanishesOrIsReplacedIsReadOn) {
  const std::string path = clip();
  const auto asset = FfmpegVideoAssets().open(path);
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  ASSERT_TRUE(reader->next());
  std::filesystem::remove(path);
  EXPECT_EQ(framesOf(*reader).size(), 29U);
  clips_.encode("clip.mp4", movingTexture(5), "-c:v mpeg4");
  EXPECT_EQ(framesOf(asset->readers(2)).size(), 30U);
}

TEST_F(FfmpegFaults, AFileThatBecomesShorterEndsReading) {
  const std::string path = clip();
  const auto all = framesOf(*FfmpegVideoAssets().open(path)->reader());
  const auto asset = FfmpegVideoAssets().open(path);
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  const auto generator = asset->generator();
  ASSERT_TRUE(reader->next());
  std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
  const auto frames = framesOf(*reader);
  EXPECT_TRUE(reader->hasLostPictures());
  EXPECT_LT(frames.size(), 29U);
  for (const SeenFrame& frame : frames) {
    EXPECT_NE(std::find(all.begin(), all.end(), frame), all.end());
  }
  EXPECT_FALSE(generator->imageAt({29, 30}));
  EXPECT_TRUE(generator->imageAt({0, 30}));
  std::filesystem::resize_file(path, 0);
  EXPECT_FALSE(asset->reader());
  EXPECT_TRUE(asset->readers(2).empty());
  EXPECT_FALSE(asset->generator());
}

TEST_F(FfmpegFaults, AFileThatIsWrittenOverDoesNoHarm) {
  const std::string path = clip();
  const auto asset = FfmpegVideoAssets().open(path);
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  ASSERT_TRUE(reader->next());
  const auto size = std::filesystem::file_size(path);
  {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file << std::string(size, '\x33');
  }
  EXPECT_LT(framesOf(*reader).size(), 29U);
  EXPECT_FALSE(asset->reader());
}

TEST_F(FfmpegFaults, NothingIsEverPrinted) {
  const std::string whole = clip();
  const auto size = std::filesystem::file_size(whole);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  std::size_t frames = 0;
  for (std::size_t at = 40; at < size; at += size / 60) {
    const std::string path = clips_.changed(whole, "noise.mp4", [at](std::string& bytes) {
      for (std::size_t byte = at; byte < std::min(at + 6, bytes.size()); ++byte) {
        bytes[byte] = static_cast<char>(bytes[byte] ^ 0x55);
      }
    });
    const auto asset = FfmpegVideoAssets().open(path);
    if (asset == nullptr) continue;
    frames += framesOf(asset->readers(2)).size();
    if (const auto generator = asset->generator()) generator->imageAt({9, 30});
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_GT(frames, 100U);
}

}  // namespace
}  // namespace halvora
