// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_storage.h"
#include "light/picture_means.h"
#include "tests/support/pixmap_decoder.h"
#include "tests/support/side_by_side.h"

namespace halvora {
namespace {

TEST(PictureMeansThreads, AskAndKeepSideBySide) {
  VirtualFiles files;
  files.put("/white.png", pixmapOf(4, 4, 255, 255, 255));
  const PixmapDecoder decoder;
  const VirtualBundle host("com.example.host");
  PictureMeans means(Pictures(files, host, decoder));
  const PictureMeans::Sums white = means.read("/white.png");
  sideBySide({[&] { means.of("/lacking.png", {}); }, [&] { means.has("/white.png"); },
              [&] { means.keep("/white.png", white); }});
  EXPECT_TRUE(means.has("/lacking.png"));
  EXPECT_EQ(means.of("/lacking.png", {}).alpha, 0) << "a picture that cannot be read";
  EXPECT_EQ(means.of("/white.png", {}).levels.red, 1);
}

}  // namespace
}  // namespace halvora
