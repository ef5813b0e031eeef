// SPDX-License-Identifier: Apache-2.0
#include "light/picture_means.h"

#include <string>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_storage.h"
#include "tests/support/pixmap_decoder.h"

namespace halvora {
namespace {

/// One column of four pixels, black but for one.
std::string columnWith(std::size_t white) {
  std::string picture = "P6 1 4 255\n" + std::string(12, '\0');
  for (std::size_t byte = 0; byte < 3; ++byte)
    picture[picture.size() - 12 + 3 * white + byte] = '\xFF';
  return picture;
}

// A picture covers the screen: what stands out above and below is not seen, be it half a pixel.
TEST(PictureMeansTest, APixelThatIsCutCountsForWhatIsSeenOfIt) {
  VirtualFiles files;
  const VirtualBundle host("com.example.host");
  const PixmapDecoder decoder;
  for (const std::size_t white : {0U, 1U, 2U, 3U}) {
    const std::string path = "/" + std::to_string(white);
    files.put(path, columnWith(white));
    PictureMeans means(Pictures(files, host, decoder));
    // Three of four pixels' height are seen: half of the first and half of the last are not.
    const bool isCut = white == 0 || white == 3;
    EXPECT_NEAR(means.of(path, {1, 3}).levels.green, (isCut ? 0.5 : 1.0) / 3, 1e-12) << white;
    EXPECT_NEAR(means.of(path, {1, 4}).levels.green, 0.25, 1e-12) << white;
    EXPECT_NEAR(means.of(path, {}).levels.green, 0.25, 1e-12) << "of no screen: of the picture";
  }
}

TEST(PictureMeansTest, ThirtyTwoAreKept) {
  VirtualFiles files;
  const VirtualBundle host("com.example.host");
  const PixmapDecoder decoder;
  PictureMeans means(Pictures(files, host, decoder));
  for (int number = 0; number <= 32; ++number) {
    const std::string path = "/" + std::to_string(number);
    files.put(path, pixmapOf(1, 1, 255, 255, 255));
    means.of(path, {});
    EXPECT_TRUE(means.has("/0")) << "it was asked for after each";
  }
  EXPECT_FALSE(means.has("/1")) << "it was asked for the longest ago";
  EXPECT_TRUE(means.has("/2"));
}

}  // namespace
}  // namespace halvora
