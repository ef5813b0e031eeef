// SPDX-License-Identifier: Apache-2.0
#include <memory>

#include <gtest/gtest.h>

#include "adapters/image/picture_decoder.h"
#include "conformance/media_promises.h"

namespace halvora {
namespace {

TEST(ConformanceOfPictures, HoldsForLibjpegAndLibpng) {
  const auto broken = conformance::checkPictures([] { return std::make_unique<PictureDecoder>(); });
  EXPECT_TRUE(broken.empty()) << conformance::textOf(broken);
}

}  // namespace
}  // namespace halvora
