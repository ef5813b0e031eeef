// SPDX-License-Identifier: Apache-2.0
// The kit's decoders as a host in C has them: through callbacks there and back, they keep what the
// conformance suite asks of any decoder.
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "bindings/c/halvora.h"
#include "bindings/c/host_media.h"
#include "conformance/media_promises.h"
#include "conformance/samples.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

halvora_media standardMedia() {
  halvora_media media{};
  EXPECT_EQ(halvora_standard_media(&media, sizeof(media)), HALVORA_OK);
  return media;
}

TEST(StandardMedia, NeedsAWholeStruct) {
  halvora_media media{};
  EXPECT_EQ(halvora_standard_media(nullptr, sizeof(media)), HALVORA_MISSING);
  EXPECT_EQ(halvora_standard_media(&media, sizeof(media) - 1), HALVORA_MISSING);
}

TEST(StandardMedia, DecodesPictures) {
  const halvora_media media = standardMedia();
  const auto broken =
      conformance::checkPictures([&] { return std::make_unique<HostPictures>(media); });
  EXPECT_TRUE(broken.empty()) << conformance::textOf(broken);
}

TEST(StandardMedia, DecodesVideos) {
  const halvora_media media = standardMedia();
  const TemporaryFolder folder;
  const std::string clip = folder.write("clip.mp4", std::string(conformance::sampleClip()));
  const std::string text = folder.write("text.mp4", "no video");
  const auto broken = conformance::checkVideos([&] {
    return conformance::VideosUnderTest{std::make_unique<HostVideos>(media), clip, text};
  });
  EXPECT_TRUE(broken.empty()) << conformance::textOf(broken);
}

}  // namespace
}  // namespace halvora
