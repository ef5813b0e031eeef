// SPDX-License-Identifier: Apache-2.0
// Engines of one process that share what is the same for all of them.
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "engine/halvora_view_controller.h"
#include "platform/json/rapid_json_reader.h"
#include "platform/virtual/virtual_phone.h"

namespace halvora {
namespace {

constexpr Colour kViolet{0.5F, 0, 1, 1};

struct SharedParts : testing::Test {
  RapidJsonReader json;
  VirtualPhone phone{json};
};

TEST_F(SharedParts, PalettesThatAreHandedInAreUsedAndNoneAreRead) {
  phone.mainBundle.resources["HVAssets/palettes.json"] =
      R"({"palettes": [{"id": 1, "colours": ["#FF0000"]}]})";
  const auto palettes =
      std::make_shared<const std::vector<Palette>>(std::vector<Palette>{{3, {kViolet}}});
  HalvoraViewController one(phone.platform(), {.palettes = palettes});
  HalvoraViewController other(phone.platform(), {.palettes = palettes});
  one.viewDidLoad();
  other.viewDidLoad();
  EXPECT_EQ(&one.palettes(), palettes.get());
  EXPECT_EQ(&other.palettes(), palettes.get());

  Broadcast look;
  look.applicationId = 1;
  look.master = 255;
  look.mode = 1;
  look.paletteId = 3;
  look.sequence = 1;
  EXPECT_EQ(one.processEffect(look), PacketFate::processed);
  EXPECT_EQ(one.views().lightColour(), kViolet);
}

TEST_F(SharedParts, PalettesOutliveWhoeverHandedThemIn) {
  auto palettes =
      std::make_shared<const std::vector<Palette>>(std::vector<Palette>{{3, {kViolet}}});
  HalvoraViewController engine(phone.platform(), {.palettes = palettes});
  palettes.reset();
  engine.viewDidLoad();
  ASSERT_EQ(engine.palettes().size(), 1U);
  EXPECT_EQ(engine.palettes()[0].id, 3);
}

}  // namespace
}  // namespace halvora
