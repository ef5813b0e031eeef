// SPDX-License-Identifier: Apache-2.0
// Engines of one process that share what is the same for all of them.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"

namespace halvora {
namespace {

constexpr Colour kViolet{0.5F, 0, 1, 1};

/// One white pixel in frame 3, nothing to see in frame 4, no still in any other.
class TwoStills final : public StillSource {
 public:
  std::optional<Still> find(const std::string& name) const override {
    if (name == "Maps/v7_m5_f4.jpg") return Still();
    if (name != "Maps/v7_m5_f3.jpg") return std::nullopt;
    return std::make_shared<const Image>(Image{1, 1, std::vector<std::uint8_t>(4, 255)});
  }
};

struct SharedParts : testing::Test {
  static std::shared_ptr<const ShowAssets> violetAssets() {
    ShowAssets assets;
    assets.palettes = {{3, {kViolet}}};
    assets.mapNoSeatText = "no seat";
    assets.lowLightText = "dark";
    return std::make_shared<const ShowAssets>(std::move(assets));
  }

  ExactJsonReader json;
  VirtualPhone phone{json};
};

TEST_F(SharedParts, AssetsThatAreHandedInAreUsedAndNoneAreRead) {
  phone.mainBundle.resources["HVAssets/palettes.json"] =
      R"({"palettes": [{"id": 1, "colours": ["#FF0000"]}]})";
  const std::shared_ptr<const ShowAssets> assets = violetAssets();
  ShowEngine one(phone.platform(), {{}, assets});
  ShowEngine other(phone.platform(), {{}, assets});
  one.viewDidLoad();
  other.viewDidLoad();
  EXPECT_EQ(&one.palettes(), &assets->palettes);
  EXPECT_EQ(&other.palettes(), &assets->palettes);
  for (ShowEngine* engine : {&one, &other}) {
    const ViewStack& views = engine->views();
    EXPECT_EQ(&views.text(ViewId::mapNoSeatOverlayLabel), &assets->mapNoSeatText);
    EXPECT_EQ(&views.text(ViewId::lowLightHintLabel), &assets->lowLightText);
  }

  Broadcast look;
  look.applicationId = 1;
  look.master = 255;
  look.mode = 1;
  look.paletteId = 3;
  look.sequence = 1;
  EXPECT_EQ(one.processEffect(look), PacketFate::processed);
  EXPECT_EQ(one.views().lightColour(), kViolet);
}

TEST_F(SharedParts, AssetsOutliveWhoeverHandedThemIn) {
  std::shared_ptr<const ShowAssets> assets = violetAssets();
  ShowEngine engine(phone.platform(), {{}, assets});
  assets.reset();
  engine.viewDidLoad();
  ASSERT_EQ(engine.palettes().size(), 1U);
  EXPECT_EQ(engine.palettes()[0].id, 3);
}

TEST_F(SharedParts, StillsThatAreHandedInAreUsedAndNoneAreRead) {
  // Its decoder knows no picture, so that a still of its own would leave the torch as it is.
  phone.mainBundle.resources["Maps/v7_m5_f3.jpg"] = "a picture";
  const TwoStills stills;
  ShowEngine engine(phone.platform(), {{}, nullptr, nullptr, &stills});
  engine.viewDidLoad();
  const auto torchAfter = [&](std::uint8_t frame, const char* section, bool before) {
    phone.defaults.setFromOutside("selectedSection", std::string(section));
    Broadcast look{.applicationId = 1, .venueId = 7, .pixelMapId = 5};
    look.minutes = 1;
    look.ledMode = before ? 1 : 0;
    engine.processEffect(look);
    look.minutes = frame;
    look.ledMode = 9;
    engine.processEffect(look);
    return phone.torch.isOn;
  };
  EXPECT_TRUE(torchAfter(3, "A", false));
  EXPECT_FALSE(torchAfter(3, "", true));
  for (const bool before : {false, true}) {
    EXPECT_EQ(torchAfter(4, "A", before), before) << "one that cannot be decoded";
    EXPECT_EQ(torchAfter(2, "A", before), before) << "a missing one";
  }
  EXPECT_FALSE(torchAfter(4, "", true));
}

/// Three by two pixels, of which the last one is white.
class CornerStill final : public StillSource {
 public:
  std::optional<Still> find(const std::string& /*name*/) const override {
    std::vector<std::uint8_t> rgba(3 * 2 * 4, 0);
    std::fill(rgba.end() - 4, rgba.end(), std::uint8_t{255});
    return std::make_shared<const Image>(Image{3, 2, std::move(rgba)});
  }
};

TEST_F(SharedParts, ASeatsColumnAndRowAreThoseOfTheStill) {
  const CornerStill stills;
  const auto isLit = [&](const char* x, const char* y) {
    phone.defaults.setFromOutside("selectedSection", std::string("A"));
    phone.defaults.setFromOutside("xPos", std::string(x));
    phone.defaults.setFromOutside("yPos", std::string(y));
    ShowEngine engine(phone.platform(), {{}, nullptr, nullptr, &stills});
    engine.viewDidLoad();
    engine.processEffect(
        {.applicationId = 1, .venueId = 7, .pixelMapId = 5, .ledMode = 9, .minutes = 3});
    return phone.torch.isOn;
  };
  EXPECT_TRUE(isLit("2", "1"));
  EXPECT_FALSE(isLit("1", "2"));
  EXPECT_FALSE(isLit("2", "0"));
  EXPECT_FALSE(isLit("0", "1"));
}

}  // namespace
}  // namespace halvora
