// SPDX-License-Identifier: Apache-2.0
#include "seats/map_versions.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"

namespace halvora {
namespace {

std::optional<MapVersionInfo> versionsOf(const std::string& document) {
  return mapVersionInfoFromJSON(document, ExactJsonReader());
}

TEST(MapVersions, AreTheOutermostMembers) {
  EXPECT_EQ(versionsOf(R"({"sections": [], "seatVersion": 3, "mapAssetsVersion": 4})"),
            (MapVersionInfo{3, 4}));
  EXPECT_EQ(
      versionsOf(
          R"({"s": {"seatVersion": {"mapAssetsVersion": [1, 2]}}, "t": [{"seatVersion": 9}]})"),
      (MapVersionInfo{1, 1}));
}

TEST(MapVersions, ADocumentWithoutVersionsCountsAsVersion1ForBoth) {
  EXPECT_EQ(versionsOf("{}"), (MapVersionInfo{1, 1}));
  EXPECT_EQ(versionsOf(R"({"sections": [], "seatVersion": 2})"), (MapVersionInfo{2, 1}));
}

TEST(MapVersions, MayBeAnythingWithAnIntegerValue) {
  EXPECT_EQ(versionsOf(R"({"seatVersion": "12", "mapAssetsVersion": 3.9})"),
            (MapVersionInfo{12, 3}));
  EXPECT_EQ(versionsOf(R"({"seatVersion": " 4", "mapAssetsVersion": "\u00A05"})"),
            (MapVersionInfo{4, 5}));
  EXPECT_EQ(versionsOf(R"({"seatVersion": true, "mapAssetsVersion": "v2"})"),
            (MapVersionInfo{1, 1}));
  EXPECT_EQ(versionsOf(R"({"seatVersion": null, "mapAssetsVersion": [5]})"),
            (MapVersionInfo{1, 1}));
}

TEST(MapVersions, AreAtLeast1) {
  EXPECT_EQ(versionsOf(R"({"seatVersion": 0, "mapAssetsVersion": -7})"), (MapVersionInfo{1, 1}));
}

TEST(MapVersions, OfEqualMembersTheFirstCounts) {
  EXPECT_EQ(
      versionsOf(
          R"({"seatVersion": 2, "seatVersion": 3, "mapAssetsVersion": {}, "mapAssetsVersion": 4})"),
      (MapVersionInfo{2, 1}));
}

TEST(MapVersions, ADocumentThatIsNoObjectHasNone) {
  EXPECT_EQ(versionsOf("[]"), std::nullopt);
  EXPECT_EQ(versionsOf(R"([{"seatVersion": 3}])"), std::nullopt);
  EXPECT_EQ(versionsOf("5"), std::nullopt);
  EXPECT_EQ(versionsOf(""), std::nullopt);
  EXPECT_EQ(versionsOf(R"({"seatVersion": 3)"), std::nullopt);
  EXPECT_EQ(versionsOf(R"({"seatVersion": 3,})"), std::nullopt);
}

}  // namespace
}  // namespace halvora
