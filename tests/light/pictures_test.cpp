// SPDX-License-Identifier: Apache-2.0
// The pictures that a light names: of a bundle wherever it has them, and of the phone's files.
#include "halvora/pictures.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "adapters/virtual/virtual_storage.h"
#include "light/gobo_animator.h"
#include "light/picture_means.h"
#include "light/timer_set.h"
#include "light/view_stack.h"
#include "tests/light/light_room.h"
#include "tests/support/pixmap_decoder.h"

namespace halvora {
namespace {

struct PicturesTest : testing::Test {
  /// The level of all channels of what a face is told to draw for gobo 3; none where it is told of
  /// nothing, or cannot read it.
  std::optional<int> levelShown() {
    gobo.build(std::make_shared<const std::string>("/documents"));
    state.currentGobo = 3;
    gobo.changeGobo();
    name = views.text(ViewId::goboImage);
    const auto image = pictures.read(name);
    if (!image) return std::nullopt;
    EXPECT_EQ(image->width, 4U);
    return image->rgba.at(0);
  }

  VirtualFiles files;
  VirtualBundle host{"com.example.host"};
  PixmapDecoder decoder;
  const Pictures pictures{files, host, decoder};
  VirtualRunLoop loop;
  TimerSet timers{loop};
  ViewStack views{timers};
  GoboState state;
  ScriptedRandom random{Rule::least, {}};
  GoboAnimator gobo{state, views, files, host, random};
  std::string name;
};

TEST_F(PicturesTest, OfABundleThatHasNoFolder) {
  host.resources["HVAssets/Gobos/3.png"] = pixmapOf(4, 4, 51, 51, 51);
  EXPECT_EQ(levelShown(), 51);
  EXPECT_EQ(name, "HVAssets/Gobos/3.png");
}

// As a program's own resources have: whoever reads only files cannot know it.
TEST_F(PicturesTest, OfABundleWhoseLocationIsNoFile) {
  host.folder = ":/host";
  host.resources["HVAssets/Gobos/3.png"] = pixmapOf(4, 4, 102, 102, 102);
  EXPECT_EQ(levelShown(), 102);
  EXPECT_EQ(name, ":/host/HVAssets/Gobos/3.png");
}

TEST_F(PicturesTest, OfAFolder) {
  host.files = &files;
  host.folder = "/assets";
  files.put("/assets/HVAssets/Gobos/3.png", pixmapOf(4, 4, 153, 153, 153));
  EXPECT_EQ(levelShown(), 153);
}

TEST_F(PicturesTest, DownloadedOnesAreNotTheBundles) {
  host.resources["HVAssets/Gobos/3.png"] = pixmapOf(4, 4, 51, 51, 51);
  files.put("/documents/3.png", pixmapOf(4, 4, 204, 204, 204));
  EXPECT_EQ(levelShown(), 204);
  EXPECT_EQ(name, "/documents/3.png");
}

TEST_F(PicturesTest, NothingOfWhatIsMissingOrNoPicture) {
  EXPECT_EQ(levelShown(), std::nullopt);
  EXPECT_EQ(name, "");
  EXPECT_EQ(pictures.bytes(""), std::nullopt);
  EXPECT_EQ(pictures.bytes("HVAssets/Gobos/3.png"), std::nullopt);
  host.resources["HVAssets/Gobos/3.png"] = "no picture";
  EXPECT_EQ(levelShown(), std::nullopt);
  EXPECT_EQ(pictures.bytes(name), "no picture");
}

// What is drawn is what is judged.
TEST_F(PicturesTest, AreJudgedAsTheyAreRead) {
  host.folder = ":/host";
  host.resources["HVAssets/Gobos/3.png"] = pixmapOf(4, 4, 255, 255, 255);
  levelShown();
  PictureMeans means(pictures);
  EXPECT_EQ(means.of(name, {390, 844}).alpha, 1);
  EXPECT_EQ(means.of(name, {390, 844}).levels.green, 1);
}

}  // namespace
}  // namespace halvora
