// SPDX-License-Identifier: Apache-2.0
// What counts as wrong with a map, and what does not.
#include "venue/plan/map_report.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "venue/plan/named_map.h"

namespace halvora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const ExactJsonReader kJson;
const std::string kVersions = R"("seatVersion": 2, "mapAssetsVersion": 3)";

MapReport reportOnText(const std::string& document, VenueAssets assets = {}) {
  return reportOn(seatMapOf(document, {}, kJson), reportOnDocument(document, kJson),
                  std::move(assets));
}

/// A map with versions and these sections.
MapReport reportOnSections(const std::string& sections, VenueAssets assets = {}) {
  return reportOnText("{" + kVersions + R"(, "sections": [)" + sections + "]}", std::move(assets));
}

/// One row with these seats.
MapReport reportOnSeats(const std::string& seats, VenueAssets assets = {}) {
  return reportOnSections(R"({"name": "A", "rows": [{"name": "1", "seats": [)" + seats + "]}]}",
                          std::move(assets));
}

std::vector<std::string> kindsOf(const MapReport& report) {
  std::vector<std::string> kinds;
  for (const Finding& finding : report.findings) kinds.push_back(finding.kind);
  return kinds;
}

/// The report's one finding.
Finding onlyFinding(const MapReport& report) {
  EXPECT_EQ(report.findings.size(), 1U) << ::testing::PrintToString(kindsOf(report));
  return report.findings.empty() ? Finding() : report.findings.front();
}

VenueAssets withPictures(std::vector<FoundPicture> pictures) {
  VenueAssets assets;
  assets.pictures = std::move(pictures);
  return assets;
}

TEST(MapReport, AGoodMapIsCountedAndNothingElse) {
  VenueAssets assets = withPictures({{"1/video.mp4", {11, 10}}, {"2/video.mp4", {11, 10}}});
  assets.overlay = FoundPicture{"standing-overlay.png", {4, 4}};
  const MapReport report = reportOnSections(
      R"({"name": "A", "rows": [{"name": "1", "seats": [{"name": "1", "x": 0, "y": 0},
                                                        {"name": "2", "x": 1, "y": 0}]},
                                {"name": "2", "seats": [{"name": "1", "x": 0, "y": 1}]}]},
         {"name": "Standing pit", "rows": [{"name": "1", "seats": [
            {"name": "1", "x": 10, "y": 9}, {"name": "2", "x": 9, "y": 9}]}]})",
      assets);
  EXPECT_EQ(report.sections, 2U);
  EXPECT_EQ(report.rows, 3U);
  EXPECT_EQ(report.seats, 5U);
  EXPECT_EQ(report.standingAreas, 1U);
  EXPECT_EQ(report.standingPlaces, 2U);
  ASSERT_TRUE(report.positions);
  EXPECT_EQ(report.positions->leastX, 0);
  EXPECT_EQ(report.positions->greatestX, 10);
  EXPECT_EQ(report.positions->leastY, 0);
  EXPECT_EQ(report.positions->greatestY, 9);
  EXPECT_EQ(report.versions, (MapVersionInfo{2, 3}));
  EXPECT_THAT(kindsOf(report), IsEmpty());
}

TEST(MapReport, AMapWithoutSeatsIsAFinding) {
  for (const char* sections : {"", "7", R"({"name": "A", "rows": [{"seats": []}]})"}) {
    const MapReport report = reportOnSections(sections);
    ASSERT_FALSE(report.findings.empty());
    EXPECT_EQ(report.findings.back().kind, "noSeats") << sections;
    EXPECT_EQ(report.seats, 0U);
    EXPECT_FALSE(report.positions);
  }
}

TEST(MapReport, ADocumentThatIsNoJsonIsOneFinding) {
  for (const char* document : {"", "{", "[1,]", "7"}) {
    const MapReport report = reportOnText(document);
    EXPECT_EQ(onlyFinding(report).kind, "malformed") << document;
    EXPECT_FALSE(report.versions) << document;
  }
}

TEST(MapReport, MissingVersionsAreFindings) {
  const MapReport report = reportOnText(R"({"s": {"1": {"1": {"1": [1, 2]}}}, "seatVersion": 4})");
  EXPECT_EQ(onlyFinding(report).kind, "versionMissing");
  EXPECT_THAT(onlyFinding(report).text, HasSubstr("\"mapAssetsVersion\""));
  EXPECT_EQ(report.versions, (MapVersionInfo{4, 1}));
  EXPECT_THAT(kindsOf(reportOnText(R"({"s": {"1": {"1": {"1": [1, 2]}}}})")),
              ElementsAre("versionMissing", "versionMissing"));
}

TEST(MapReport, ABareListHasNoVersions) {
  const MapReport report = reportOnText(R"([{"rows": [{"seats": ["A"]}]}])");
  EXPECT_EQ(onlyFinding(report).kind, "versionMissing");
  EXPECT_FALSE(report.versions);
}

TEST(MapReport, VersionsWithinSeatsAreNoneOfTheDocuments) {
  const MapReport report =
      reportOnText(R"({"sections": [{"seatVersion": 2, "rows": [{"seats": ["A"]}]}],
                       "mapAssetsVersion": 1})");
  EXPECT_EQ(onlyFinding(report).kind, "versionMissing");
}

TEST(MapReport, AVersionThatCountsAsAnotherIsAFinding) {
  const auto reportOnVersion = [](const std::string& version) {
    return reportOnText(R"({"sections": [{"rows": [{"seats": ["A"]}]}], "mapAssetsVersion": 1,
                           "seatVersion": )" +
                        version + "}");
  };
  for (const char* version : {"0", "-3", "1.5", "2e3", "true", "null", "\"\"", "\"v2\"", "[2]",
                              "\"2026-11-21\"", "\"3b\"", "99999999999999999999", "{}"}) {
    EXPECT_EQ(onlyFinding(reportOnVersion(version)).kind, "versionUnreadable") << version;
  }
  for (const char* version : {"1", "7", "\"12\"", "\" 12 \"", "4000000000"}) {
    EXPECT_THAT(kindsOf(reportOnVersion(version)), IsEmpty()) << version;
  }
  EXPECT_EQ(onlyFinding(reportOnVersion("\"2026-11-21\"")).text,
            "\"seatVersion\" is \"2026-11-21\" and counts as 2026: write a whole number from 1 on");
  EXPECT_EQ(onlyFinding(reportOnVersion("0")).text,
            "\"seatVersion\" is 0 and counts as 1: write a whole number from 1 on");
}

TEST(MapReport, OfEqualVersionsTheFirstCounts) {
  const MapReport report = reportOnText(
      R"({"seatVersion": 2, "seatVersion": "x",
                       "mapAssetsVersion": [], "mapAssetsVersion": 3,
                       "sections": [{"rows": [{"seats": ["A"]}]}]})");
  EXPECT_EQ(onlyFinding(report).kind, "versionUnreadable");
  EXPECT_EQ(report.versions, (MapVersionInfo{2, 1}));
}

TEST(MapReport, SeatsOnOnePixelAreCountedAndNamed) {
  const MapReport report = reportOnSections(
      R"({"name": "B", "rows": [{"name": "1", "seats": [{"name": "a", "x": 9, "y": 9},
            {"name": "b", "x": 3, "y": 4}, {"name": "c", "x": 4, "y": 3},
            {"name": "d", "x": 9, "y": 9}]}]},
         {"name": "A", "rows": [{"name": "1", "seats": [{"name": "a", "x": 3, "y": 4},
            {"name": "b", "x": 9, "y": 9}, {"name": "c", "x": 9, "y": 9}]}]})");
  const Finding finding = onlyFinding(report);
  EXPECT_EQ(finding.kind, "sharedPixel");
  EXPECT_EQ(finding.count, 6U);
  EXPECT_THAT(finding.examples, ElementsAre("B / 1 / a, B / 1 / d, A / 1 / b and 1 other at (9, 9)",
                                            "B / 1 / b, A / 1 / a at (3, 4)"));
  EXPECT_THAT(finding.text, HasSubstr("6 seats share a pixel"));
}

TEST(MapReport, StandingPlacesShareAPixelLikeSeats) {
  VenueAssets assets;
  assets.overlay = FoundPicture{"standing-overlay.png", {4, 4}};
  const MapReport report = reportOnSections(
      R"({"name": "Standing", "rows": [{"name": "1", "seats": [{"name": "a", "x": 1, "y": 1},
                                                               {"name": "b", "x": 1, "y": 1}]}]})",
      assets);
  EXPECT_EQ(onlyFinding(report).kind, "sharedPixel");
}

TEST(MapReport, NegativePositionsAreAFinding) {
  const MapReport report =
      reportOnSeats(R"({"name": "a", "x": -1, "y": 4}, {"name": "b", "x": 4, "y": -2},
                       {"name": "c", "x": 0, "y": 0})",
                    withPictures({{"1/video.mp4", {10, 10}}}));
  const Finding finding = onlyFinding(report);
  EXPECT_EQ(finding.kind, "negativePosition");
  EXPECT_EQ(finding.count, 2U);
  EXPECT_THAT(finding.examples, ElementsAre("A / 1 / a at (-1, 4)", "A / 1 / b at (4, -2)"));
}

TEST(MapReport, SeatsOutsideOfAVideosPictureAreAFinding) {
  const MapReport report =
      reportOnSeats(R"({"name": "a", "x": 9, "y": 4}, {"name": "b", "x": 10, "y": 4},
                       {"name": "c", "x": 9, "y": 5})",
                    withPictures({{"1/video.mp4", {10, 5}}, {"2/video.mp4", {10, 5}}}));
  const Finding finding = onlyFinding(report);
  EXPECT_EQ(finding.kind, "outsideFrame");
  EXPECT_EQ(finding.count, 2U);
  EXPECT_THAT(finding.examples, ElementsAre("A / 1 / b at (10, 4)", "A / 1 / c at (9, 5)"));
  EXPECT_THAT(finding.text, HasSubstr("10 x 5: 1/video.mp4, 2/video.mp4"));
}

TEST(MapReport, PicturesOfDifferentSizesAreAFindingAndCountOneByOne) {
  const MapReport report = reportOnSeats(
      R"({"name": "a", "x": 12, "y": 4})",
      withPictures({{"1/video.mp4", {10, 5}}, {"2/video.mp4", {20, 5}}, {"3/f1.jpg", {10, 5}}}));
  ASSERT_THAT(kindsOf(report), ElementsAre("outsideFrame", "frameSizesDiffer"));
  EXPECT_THAT(report.findings[0].text, HasSubstr("10 x 5: 1/video.mp4, 3/f1.jpg"));
  EXPECT_EQ(report.findings[1].count, 2U);
  EXPECT_THAT(report.findings[1].examples,
              ElementsAre("10 x 5: 1/video.mp4, 3/f1.jpg", "20 x 5: 2/video.mp4"));
}

TEST(MapReport, NamesThatComeTwiceAreFindingsWhereTheyMislead) {
  const MapReport report = reportOnSections(
      R"({"name": "A", "rows": [{"name": "1", "seats": [{"name": "a", "x": 0, "y": 0},
            {"name": "a", "x": 1, "y": 0}, {"name": "a", "x": 2, "y": 0},
            {"name": "b", "x": 3, "y": 0}]},
            {"name": "2", "seats": [{"name": "a", "x": 0, "y": 1}]},
            {"name": "2", "seats": [{"name": "a", "x": 0, "y": 2}]}]},
         {"name": "B", "rows": [{"name": "1", "seats": [{"name": "a", "x": 0, "y": 3}]}]},
         {"name": "A", "rows": [{"name": "1", "seats": [{"name": "a", "x": 0, "y": 4}]}]})");
  ASSERT_THAT(kindsOf(report), ElementsAre("duplicateSection", "duplicateRow", "duplicateSeat"));
  for (const Finding& finding : report.findings) EXPECT_EQ(finding.count, 1U) << finding.kind;
  EXPECT_THAT(report.findings[0].examples, ElementsAre("A, 2 times"));
  EXPECT_THAT(report.findings[1].examples, ElementsAre("A / 2, 2 times"));
  EXPECT_THAT(report.findings[2].examples, ElementsAre("A / 1 / a, 3 times"));
}

TEST(MapReport, AStandingAreaWithoutAPlanIsAFinding) {
  const std::string sections =
      R"({"name": "Standing left", "rows": [{"name": "1", "seats": [{"x": 1, "y": 1}]}]},
         {"name": "STANDING right", "rows": [{"name": "1", "seats": [{"x": 2, "y": 1}]}]},
         {"name": "A", "rows": [{"name": "1", "seats": [{"x": 3, "y": 1}]}]})";
  const Finding finding = onlyFinding(reportOnSections(sections));
  EXPECT_EQ(finding.kind, "overlayMissing");
  EXPECT_EQ(finding.count, 2U);
  EXPECT_THAT(finding.examples, ElementsAre("Standing left", "STANDING right"));
  EXPECT_THAT(finding.text, HasSubstr("standing-overlay.png standing_overlay.png "
                                      "standing-overlay.PNG standing_overlay.PNG"));
  VenueAssets assets;
  assets.overlay = FoundPicture{"standing_overlay.png", {1, 1}};
  EXPECT_THAT(kindsOf(reportOnSections(sections, assets)), IsEmpty());
}

TEST(MapReport, FindingsOfTheFolderComeLast) {
  VenueAssets assets;
  assets.findings.push_back({"videoMissing", "text", 1, {}});
  const MapReport report =
      reportOnText(R"({"s": {"1": {"1": {"1": [1, 2]}}}, "seatVersion": 1})", std::move(assets));
  EXPECT_THAT(kindsOf(report), ElementsAre("versionMissing", "videoMissing"));
}

TEST(MapReport, OfALargeMapAFewExamplesAreListedAndAllAreCounted) {
  constexpr int kRows = 2000;
  constexpr int kSeats = 100;
  std::string rows;
  for (int row = 0; row < kRows; ++row) {
    rows += row > 0 ? ",{\"seats\":[" : "{\"seats\":[";
    for (int seat = 0; seat < kSeats; ++seat) {
      rows += seat > 0 ? ",{\"name\":\"s\",\"x\":5,\"y\":-1}" : "{\"name\":\"t\",\"x\":5,\"y\":9}";
    }
    rows += "]}";
  }
  const MapReport report = reportOnSections("{\"name\": \"A\", \"rows\": [" + rows + "]}",
                                            withPictures({{"1/video.mp4", {5, 5}}}));
  EXPECT_EQ(report.seats, std::uint64_t{kRows} * kSeats);
  ASSERT_THAT(kindsOf(report),
              ElementsAre("sharedPixel", "negativePosition", "outsideFrame", "duplicateSeat"));
  EXPECT_EQ(report.findings[0].count, 200'000U);
  EXPECT_EQ(report.findings[1].count, 198'000U);
  EXPECT_EQ(report.findings[2].count, 2'000U);
  EXPECT_EQ(report.findings[3].count, 2'000U);
  EXPECT_EQ(report.findings[0].examples.size(), 2U);
  for (std::size_t at = 1; at < 4; ++at) {
    EXPECT_EQ(report.findings[at].examples.size(), Finding::kMostExamples) << at;
  }
}

}  // namespace
}  // namespace halvora
