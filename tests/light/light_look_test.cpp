// SPDX-License-Identifier: Apache-2.0
#include "light/light_look.h"

#include <memory>

#include <gtest/gtest.h>

namespace halvora {
namespace {

TEST(LightLookTest, ADarkenedLookHasNothingThatShines) {
  LightLook look;
  look.visible.fill(1);
  look.light = kWhite;
  look.gobo = std::make_shared<const std::string>("/star.png");
  const LightLook dark = darkened(look);
  EXPECT_EQ(dark.light, kBlack);
  EXPECT_EQ(shownGobo(dark), nullptr);
  for (const ViewId clip : {ViewId::playerViewA, ViewId::playerViewB}) EXPECT_EQ(dark.of(clip), 0);
  EXPECT_EQ(dark.of(ViewId::container), 1) << "texts stay";
}

}  // namespace
}  // namespace halvora
