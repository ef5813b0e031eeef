// SPDX-License-Identifier: Apache-2.0
// A host whose resources are all in its program.
#include "adapters/qt/qt_resource_bundle.h"

#include <QImage>
#include <QString>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "seats/seat_map_availability.h"

namespace halvora {
namespace {

class PackedHost : public testing::Test {
 protected:
  static VirtualPhoneSetup setupWith(Bundle& bundle) {
    VirtualPhoneSetup setup;
    setup.mainBundle = &bundle;
    return setup;
  }

  const ExactJsonReader json_;
  QtResourceBundle bundle_{QStringLiteral(":/packed"), "com.example.packed", {"en"}, json_};
  VirtualPhone phone_{json_, setupWith(bundle_)};
};

TEST_F(PackedHost, ShowsItsGobos) {
  ShowEngine engine(phone_.platform());
  engine.viewDidLoad();
  const std::string& gobo = engine.views().text(ViewId::goboImage);
  EXPECT_EQ(gobo, ":/packed/HVAssets/Gobos/1.png");
  EXPECT_FALSE(QImage(QString::fromStdString(gobo)).isNull()) << "a face draws it";
}

TEST_F(PackedHost, HasTheSeatsOfItsVenue) {
  SeatMapAvailability map(phone_.platform(), [] {});
  map.viewDidLoad();
  phone_.loop.soon([&map] { map.preloadSeatMapForVenueId(7); });
  EXPECT_TRUE(phone_.loop.runFor(milliseconds(100)));
  EXPECT_FALSE(map.seatMapSections()->isEmpty());
}

TEST_F(PackedHost, KnowsWhatItHas) {
  const auto folder = bundle_.attributes("HVAssets/Gobos");
  ASSERT_TRUE(folder);
  EXPECT_TRUE(folder->isFolder);
  EXPECT_EQ(bundle_.list("HVAssets/Gobos"), std::vector<std::string>{"1.png"});
  EXPECT_EQ(bundle_.list("HVAssets/Gobos/1.png"), std::nullopt);
  EXPECT_EQ(bundle_.attributes("HVAssets/Gobos/2.png"), std::nullopt);
}

}  // namespace
}  // namespace halvora
