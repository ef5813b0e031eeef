// SPDX-License-Identifier: Apache-2.0
// A row of a picture is that row of the whole one, to the bit, and what is refused as a whole is
// refused row by row.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <turbojpeg.h>

#include "adapters/image/picture_decoder.h"
#include "adapters/image/png_writer.h"
#include "adapters/standard/seeded_random.h"

namespace halvora {
namespace {

const PictureDecoder kPictures;

/// A picture with edges, slopes and noise.
Image pictureOf(std::uint32_t width, std::uint32_t height, std::uint64_t seed = 1) {
  SeededRandom random(seed);
  Image image{width, height, {}};
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      const bool isWhite = (x / 5 + y / 3) % 4 == 0;
      const auto level = [&](std::uint32_t slope) {
        return static_cast<std::uint8_t>(isWhite ? 255 : (slope + random.below(40)) & 255);
      };
      image.rgba.insert(image.rgba.end(), {level(x * 7), level(y * 5), level(x * y), 255});
    }
  }
  return image;
}

std::string jpegOf(const Image& image, int subsampling, int flags = 0, int quality = 80) {
  tjhandle handle = tjInitCompress();
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(tjCompress2(handle, image.rgba.data(), static_cast<int>(image.width), 0,
                        static_cast<int>(image.height), TJPF_RGBX, &bytes, &size, subsampling,
                        quality, flags),
            0);
  std::string jpeg(reinterpret_cast<const char*>(bytes), size);
  tjFree(bytes);
  tjDestroy(handle);
  return jpeg;
}

void expectRow(const std::string& bytes, const std::optional<Image>& whole, std::int64_t row) {
  const auto found = kPictures.decodeRow(bytes, row);
  ASSERT_EQ(found.has_value(), whole.has_value()) << row;
  if (!whole) return;
  EXPECT_EQ(found->width, whole->width);
  EXPECT_EQ(found->height, whole->height);
  if (row < 0 || row >= whole->height) {
    EXPECT_TRUE(found->rgba.empty());
    return;
  }
  const auto at = [&](std::int64_t number) {
    return whole->rgba.begin() + static_cast<std::ptrdiff_t>(number * whole->width * 4);
  };
  ASSERT_EQ(found->rgba, std::vector<std::uint8_t>(at(row), at(row + 1))) << row;
}

void expectRows(const std::string& bytes) {
  const auto whole = kPictures.decode(bytes);
  ASSERT_TRUE(whole);
  for (std::int64_t row = -1; row <= whole->height; ++row) expectRow(bytes, whole, row);
}

class JpegRow : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(Subsamplings, JpegRow,
                         testing::Values(TJSAMP_444, TJSAMP_422, TJSAMP_420, TJSAMP_GRAY,
                                         TJSAMP_440, TJSAMP_411));

TEST_P(JpegRow, IsThatOfTheWholePicture) {
  for (const auto& [width, height] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
           {1, 1}, {3, 2}, {16, 16}, {17, 33}, {64, 48}, {101, 75}, {640, 90}}) {
    SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
    expectRows(jpegOf(pictureOf(width, height), GetParam()));
    expectRows(jpegOf(pictureOf(width, height), GetParam(), TJFLAG_PROGRESSIVE));
    if (HasFatalFailure()) return;
  }
}

TEST_P(JpegRow, OfAPictureThatIsCutShortIsNone) {
  const std::string jpeg = jpegOf(pictureOf(80, 120), GetParam());
  for (std::size_t size = 0; size < jpeg.size(); size += 97) {
    const std::string part = jpeg.substr(0, size);
    const auto whole = kPictures.decode(part);
    for (const std::int64_t row : {0, 60, 119}) expectRow(part, whole, row);
  }
}

TEST_P(JpegRow, OfAPictureThatIsDamagedIsWhatTheWholeOneIs) {
  SeededRandom random(7);
  int whole = 0;
  for (int round = 0; round < 400; ++round) {
    const int flags = round % 3 == 0 ? TJFLAG_PROGRESSIVE : 0;
    std::string jpeg = jpegOf(pictureOf(48, 70, 3), GetParam(), flags);
    for (std::uint32_t fault = 0; fault <= random.below(3); ++fault) {
      jpeg[random.below(static_cast<std::uint32_t>(jpeg.size()))] =
          static_cast<char>(random.below(256));
    }
    const auto decoded = kPictures.decode(jpeg);
    if (decoded) ++whole;
    SCOPED_TRACE(round);
    for (const std::int64_t row : {0, 1, 8, 33, 69}) expectRow(jpeg, decoded, row);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(whole, 0);
  EXPECT_LT(whole, 400);
}

TEST(PictureRow, OfOtherPicturesIsTakenOutOfTheWholeOne) {
  expectRows(pngOf(pictureOf(9, 7)));
  EXPECT_FALSE(kPictures.decodeRow("no picture", 0));
  EXPECT_FALSE(kPictures.decodeRow("", 0));
}

/// Three scans, one a colour, of which the last comes again and again.
std::string jpegOfScans(int count) {
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &bytes, &size);
  jpeg.image_width = jpeg.image_height = 8;
  jpeg.input_components = 3;
  jpeg.in_color_space = JCS_RGB;
  jpeg_set_defaults(&jpeg);
  const jpeg_scan_info scans[] = {
      {1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
  jpeg.scan_info = scans;
  jpeg.num_scans = 3;
  jpeg_start_compress(&jpeg, TRUE);
  std::vector<JSAMPLE> colour(24, 90);
  JSAMPLE* row = colour.data();
  while (jpeg.next_scanline < 8) jpeg_write_scanlines(&jpeg, &row, 1);
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  std::free(bytes);
  const std::size_t last = text.rfind("\xFF\xDA");
  const std::size_t end = text.size() - 2;
  std::string all = text.substr(0, end);
  for (int scan = 3; scan < count; ++scan) all += text.substr(last, end - last);
  return all + text.substr(end);
}

TEST(PictureRow, OfFiveHundredScansIsReadAndOfMoreIsNot) {
  for (const auto& [count, isRead] : {std::pair{3, true}, {500, true}, {501, false}}) {
    const std::string jpeg = jpegOfScans(count);
    EXPECT_EQ(kPictures.decodeRow(jpeg, 7).has_value(), isRead) << count;
    expectRow(jpeg, kPictures.decode(jpeg), 7);
  }
}

/// White from edge to edge, written row by row.
std::string whiteJpeg(JDIMENSION side, bool isProgressive) {
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &bytes, &size);
  jpeg.image_width = jpeg.image_height = side;
  jpeg.input_components = 3;
  jpeg.in_color_space = JCS_RGB;
  jpeg_set_defaults(&jpeg);
  if (isProgressive) jpeg_simple_progression(&jpeg);
  jpeg_start_compress(&jpeg, TRUE);
  std::vector<JSAMPLE> white(std::size_t{side} * 3, 255);
  JSAMPLE* row = white.data();
  while (jpeg.next_scanline < side) jpeg_write_scanlines(&jpeg, &row, 1);
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  std::string text(reinterpret_cast<const char*>(bytes), size);
  std::free(bytes);
  return text;
}

/// What the process has held at most since the last call, in KiB; 0 where the kernel does not say.
long mostHeld() {
  long kibibytes = 0;
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") status >> kibibytes;
  }
  std::ofstream reset("/proc/self/clear_refs");
  reset << "5" << std::flush;
  return reset.good() ? kibibytes : 0;
}

TEST(PictureRow, OfALargePictureTakesLittleMemory) {
  // 250 MB of pixels.
  constexpr JDIMENSION kSide = 7900;
  const std::string jpeg = whiteJpeg(kSide, false);
  mostHeld();
  const long before = mostHeld();
  if (before == 0) GTEST_SKIP() << "the kernel does not say";
  const auto row = kPictures.decodeRow(jpeg, kSide - 1);
  const long after = mostHeld();
  ASSERT_TRUE(row);
  EXPECT_EQ(row->rgba, std::vector<std::uint8_t>(std::size_t{kSide} * 4, 255));
  EXPECT_EQ(row->height, kSide);
  EXPECT_LT(after - before, 20'000);
}

TEST(PictureRow, OfALargePictureInSeveralScansIsRefused) {
  const std::string jpeg = whiteJpeg(7900, true);
  mostHeld();
  const long before = mostHeld();
  EXPECT_FALSE(kPictures.decodeRow(jpeg, 0));
  EXPECT_LT(mostHeld() - before, 160'000);
  EXPECT_TRUE(kPictures.decodeRow(whiteJpeg(2000, true), 1999));
}

}  // namespace
}  // namespace halvora
