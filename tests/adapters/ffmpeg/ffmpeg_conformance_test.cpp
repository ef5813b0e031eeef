// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "conformance/media_promises.h"
#include "conformance/samples.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

TEST(ConformanceOfVideos, HoldsForFfmpeg) {
  const TemporaryFolder folder;
  const std::string clip = folder.write("clip.mp4", std::string(conformance::sampleClip()));
  const std::string text = folder.write("text.mp4", "no video");
  const auto broken = conformance::checkVideos([&] {
    return conformance::VideosUnderTest{std::make_unique<FfmpegVideoAssets>(), clip, text};
  });
  EXPECT_TRUE(broken.empty()) << conformance::textOf(broken);
}

}  // namespace
}  // namespace halvora
