// SPDX-License-Identifier: Apache-2.0
#include "adapters/image/picture_decoder.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include "adapters/standard/standard_files.h"
#include "tests/engine/allocation_count.h"
#include "tests/support/source_tree.h"

namespace {

std::atomic<std::uint64_t> unpackedBytes{0};

}  // namespace

// In place of the library's own, which it calls: counts what is unpacked.
extern "C" int inflate(z_streamp stream, int flush) {
  using Inflate = int (*)(z_streamp, int);
  static const auto kInflate = reinterpret_cast<Inflate>(dlsym(RTLD_NEXT, "inflate"));
  const uLong before = stream->total_out;
  const int result = kInflate(stream, flush);
  unpackedBytes += stream->total_out - before;
  return result;
}

namespace halvora {
namespace {

using Pixels = std::vector<std::uint8_t>;

// Six colours of a PNG, three a row.
const Pixels kSixColours = {255, 0,   0,   255, 0, 255, 0, 255, 0,  0,   255, 255,
                            255, 255, 255, 255, 0, 0,   0, 255, 64, 128, 192, 255};

std::string fixture(const std::string& name) {
  const std::string path = sourceTree() + "/tests/adapters/image/data/" + name;
  const auto bytes = readFile(path, 1 << 20);
  EXPECT_TRUE(bytes) << path;
  return bytes.value_or("");
}

std::optional<Image> decoded(std::string_view bytes) { return PictureDecoder().decode(bytes); }

void expectPixels(const std::string& name, std::uint32_t width, std::uint32_t height,
                  const Pixels& rgba) {
  SCOPED_TRACE(name);
  const auto image = decoded(fixture(name));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width, width);
  EXPECT_EQ(image->height, height);
  EXPECT_EQ(image->rgba, rgba);
}

/// The JPEG fixtures are 16 by 8: white on the left half, one colour on the right half.
void expectHalves(const std::string& name, const Pixels& right, int tolerance) {
  SCOPED_TRACE(name);
  const auto image = decoded(fixture(name));
  ASSERT_TRUE(image);
  ASSERT_EQ(image->width, 16U);
  ASSERT_EQ(image->height, 8U);
  ASSERT_EQ(image->rgba.size(), 16U * 8 * 4);
  for (std::size_t pixel = 0; pixel < 16 * 8; ++pixel) {
    const Pixels expected = pixel % 16 < 8 ? Pixels{255, 255, 255, 255} : right;
    for (std::size_t channel = 0; channel < 4; ++channel) {
      const int is = image->rgba[pixel * 4 + channel];
      const int error = std::abs(is - expected[channel]);
      ASSERT_LE(error, channel == 3 ? 0 : tolerance) << "pixel " << pixel << " is " << is;
    }
  }
}

TEST(Png, ColoursAreExact) {
  expectPixels("rgb.png", 3, 2, kSixColours);
  expectPixels("interlaced.png", 3, 2, kSixColours);
}

TEST(Png, PaletteBecomesColours) { expectPixels("palette.png", 3, 2, kSixColours); }

TEST(Png, GreyBecomesEqualChannels) {
  const Pixels four = {0, 0, 0, 255, 64, 64, 64, 255, 128, 128, 128, 255, 255, 255, 255, 255};
  expectPixels("grey.png", 4, 1, four);
  expectPixels("grey1.png", 3, 1, {255, 255, 255, 255, 0, 0, 0, 255, 255, 255, 255, 255});
}

TEST(Png, SixteenBitsBecomeTheirHighEight) {
  const Pixels four = {0, 0, 0, 255, 64, 64, 64, 255, 128, 128, 128, 255, 255, 255, 255, 255};
  expectPixels("grey16.png", 4, 1, four);
  expectPixels("rgb16.png", 3, 2, kSixColours);
}

TEST(Png, AlphaIsKeptAndNotMultiplied) {
  const auto image = decoded(fixture("alpha.png"));
  ASSERT_TRUE(image);
  ASSERT_EQ(image->rgba.size(), 12U);
  EXPECT_EQ(Pixels(image->rgba.begin(), image->rgba.begin() + 8),
            (Pixels{255, 0, 0, 255, 0, 255, 0, 128}));
  EXPECT_EQ(image->rgba[11], 0);
  expectPixels("grey_alpha.png", 3, 1, {255, 255, 255, 255, 128, 128, 128, 128, 0, 0, 0, 0});
}

TEST(Png, OrdinaryGammaChangesNothing) { expectPixels("gamma.png", 1, 1, {64, 128, 192, 255}); }

std::string bigEndian(std::uint32_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift & 0xFF);
  return bytes;
}

// A chunk of a PNG; of those that are passed over nobody checks the sum.
std::string chunk(const std::string& name, const std::string& bytes) {
  return bigEndian(static_cast<std::uint32_t>(bytes.size())) + name + bytes + std::string(4, '\0');
}

/// A fixture with something more before the first pixel, or behind the last.
std::string withChunks(const std::string& name, const std::string& chunks, const char* before) {
  std::string bytes = fixture(name);
  return bytes.insert(bytes.find(before) - 4, chunks);
}

TEST(Png, RemarksChangeNothingWhereverTheyStand) {
  const std::string remarks = chunk("tEXt", "Comment\0words") + chunk("zTXt", "no stream") +
                              chunk("iTXt", "neither") + chunk("tIME", "1234567") +
                              chunk("pHYs", "123456789") + chunk("prIV", std::string(1000, 'x')) +
                              chunk("eXIf", "II*") + chunk("sPLT", "palette");
  for (const char* name : {"rgb.png", "interlaced.png", "palette.png", "alpha.png", "grey16.png",
                           "gamma.png", "grey_alpha.png", "grey1.png"}) {
    const auto plain = decoded(fixture(name));
    ASSERT_TRUE(plain) << name;
    for (const char* before : {"IDAT", "IEND"}) {
      const auto image = decoded(withChunks(name, remarks, before));
      ASSERT_TRUE(image) << name << " before " << before;
      EXPECT_EQ(image->rgba, plain->rgba) << name;
    }
  }
}

/// Seven million bytes in seven thousand.
std::string packedZeros() {
  const std::string zeros(7'000'000, '\0');
  std::string packed(compressBound(zeros.size()), '\0');
  uLongf size = packed.size();
  EXPECT_EQ(compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                     reinterpret_cast<const Bytef*>(zeros.data()), zeros.size()),
            Z_OK);
  return packed.substr(0, size);
}

/// With the sum that the library asks for.
std::string goodChunk(const std::string& name, const std::string& bytes) {
  const std::string text = name + bytes;
  const auto sum = static_cast<std::uint32_t>(
      crc32(0, reinterpret_cast<const Bytef*>(text.data()), static_cast<uInt>(text.size())));
  return bigEndian(static_cast<std::uint32_t>(bytes.size())) + text + bigEndian(sum);
}

// What is unpacked of a picture before which that chunk stands so many times.
std::uint64_t unpackedWith(const std::string& one, int times) {
  std::string chunks;
  for (int count = 0; count < times; ++count) chunks += one;
  const std::string bytes = withChunks("rgb.png", chunks, "IDAT");
  unpackedBytes = 0;
  const auto image = decoded(bytes);
  EXPECT_EQ(image ? image->rgba : Pixels{}, kSixColours);
  return unpackedBytes;
}

// The library would unpack each, and reads them before it has seen a pixel: fifty of them take a
// thousand times as long as the picture.
TEST(Png, CompressedRemarksAreNotUnpacked) {
  const std::string remark = goodChunk("zTXt", std::string("Comment\0\0", 9) + packedZeros());
  const std::uint64_t unpacked = unpackedWith(remark, 50);
  EXPECT_GT(unpacked, 0U) << "the count sees nothing";
  EXPECT_LT(unpacked, 1000U);
}

// Of one that is no good the library unpacks the beginning, and does so with the next one.
TEST(Png, OneProfileIsLookedAtAndNoOther) {
  const std::string profile = goodChunk("iCCP", std::string("name\0\0", 6) + packedZeros());
  const std::uint64_t none = unpackedWith("", 0);
  const std::uint64_t one = unpackedWith(profile, 1);
  EXPECT_GT(one, none);
  EXPECT_EQ(unpackedWith(profile, 2), one);
  EXPECT_EQ(unpackedWith(profile, 50), one);
}

TEST(Png, AChunkThatClaimsMoreThanThereIsIsLeftToTheLibrary) {
  std::string bytes = fixture("rgb.png");
  const std::size_t data = bytes.find("IDAT") - 4;
  EXPECT_FALSE(
      decoded(bytes.substr(0, data) + bigEndian(0xFFFFFFFF) + "tEXt" + bytes.substr(data)));
  EXPECT_FALSE(
      decoded(bytes.substr(0, data) + bigEndian(0x7FFFFFFF) + "tEXt" + bytes.substr(data)));
}

TEST(Jpeg, WhiteIsPureAndColoursAreNear) {
  expectHalves("baseline.jpg", {200, 100, 50, 255}, 1);
  EXPECT_EQ(decoded(fixture("baseline.jpg"))->rgba[0], 255);
}

TEST(Jpeg, ProgressiveIsTheSamePicture) {
  expectHalves("progressive.jpg", {200, 100, 50, 255}, 1);
  EXPECT_EQ(decoded(fixture("progressive.jpg"))->rgba, decoded(fixture("baseline.jpg"))->rgba);
}

TEST(Jpeg, GreyBecomesEqualChannels) { expectHalves("grey.jpg", {118, 118, 118, 255}, 1); }

TEST(Jpeg, SubsampledColoursArePictureToo) {
  const auto image = decoded(fixture("subsampled.jpg"));
  ASSERT_TRUE(image);
  ASSERT_EQ(image->rgba.size(), 16U * 8 * 4);
  EXPECT_NEAR(image->rgba[15 * 4], 200, 6);
}

TEST(Jpeg, InksAreRefused) { EXPECT_FALSE(decoded(fixture("cmyk.jpg"))); }

// What a file holds after its last pixel: an empty chunk, or a marker.
std::size_t endMarkOf(const std::string& name) { return name.ends_with(".png") ? 12 : 2; }

TEST(RefusedPicture, EveryBeginningThatLacksPixelsIsRefused) {
  for (const char* name : {"rgb.png", "interlaced.png", "palette.png", "alpha.png", "grey16.png",
                           "baseline.jpg", "progressive.jpg", "grey.jpg"}) {
    const std::string bytes = fixture(name);
    ASSERT_TRUE(decoded(bytes));
    for (std::size_t length = 0; length < bytes.size() - endMarkOf(name); ++length) {
      // A copy of its own, so that a read past the end is one past an allocation.
      const std::vector<char> cut(bytes.begin(), bytes.begin() + static_cast<long>(length));
      EXPECT_FALSE(decoded({cut.data(), cut.size()}))
          << name << " cut to " << length << " of " << bytes.size();
    }
  }
}

TEST(RefusedPicture, DamagedDataIsNoPicture) {
  std::string bytes = fixture("rgb.png");
  bytes[bytes.find("IDAT") + 8] = static_cast<char>(bytes[bytes.find("IDAT") + 8] ^ 0x55);
  EXPECT_FALSE(decoded(bytes));
}

// Refused before any memory for its pixels is asked for.
void expectRefusedForItsSize(const std::string& bytes) {
  bool isDecoded = false;
  std::uint64_t allocations = 0;
  {
    const AllocationCount count;
    isDecoded = decoded(bytes).has_value();
    allocations = count.allocations();
  }
  EXPECT_FALSE(isDecoded);
  EXPECT_EQ(allocations, 0U);
}

TEST(RefusedPicture, ClaimsOfTooManyPixelsCostNothing) {
  expectRefusedForItsSize(fixture("vast.png"));
  expectRefusedForItsSize(fixture("wide.png"));

  std::string jpeg = fixture("baseline.jpg");
  const std::size_t frame = jpeg.find("\xFF\xC0");
  ASSERT_NE(frame, std::string::npos);
  jpeg.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC", 4);
  expectRefusedForItsSize(jpeg);
  jpeg.replace(frame + 5, 4, "\x1F\x40\x1F\x41", 4);
  expectRefusedForItsSize(jpeg);
}

TEST(RefusedPicture, WithoutPixelsIsNone) {
  std::string jpeg = fixture("baseline.jpg");
  const std::size_t frame = jpeg.find("\xFF\xC0");
  jpeg.replace(frame + 7, 2, std::string(2, '\0'));
  EXPECT_FALSE(decoded(jpeg));
}

TEST(RefusedPicture, OtherKindsAreNone) {
  EXPECT_FALSE(decoded(fixture("words.png"))) << "a name is no proof";
  for (const std::string& bytes :
       {std::string(), std::string("\xFF\xD8"), std::string("\xFF\xD8\xFF"), std::string("GIF89a"),
        std::string("\x89PNG\r\n\x1A\n"), std::string("P6 1 1 255\n\0\0\0", 14),
        std::string(4096, '\xFF'), std::string("<svg xmlns=\"\"/>")}) {
    EXPECT_FALSE(decoded(bytes)) << bytes.size();
  }
}

}  // namespace
}  // namespace halvora
