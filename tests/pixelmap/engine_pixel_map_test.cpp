// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "pixelmap/seat_lut_files.h"
#include "tests/pixelmap/seat_lut_bench.h"
#include "tests/support/pixmap_decoder.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;
using Fields = std::vector<std::pair<BroadcastValue, int>>;

const Words kThreeColours{0xFFFF0000, 0xFF00FF00, 0xFF0000FF};

/// A whole engine that hears packets in virtual time, with a seat at column 2, row 1, and the light
/// of the phone at the end of each turn.
class EnginePixelMap : public testing::Test {
 protected:
  EnginePixelMap() {
    phone_.mainBundle.folder = "/main";
    seat("A", "2", "1");
    phone_.loop.onTurnEnded([this] { noteLight(); });
    load();
    runTo(1000);
  }

  void load() {
    engine_ = std::make_unique<ShowEngine>(phone_.platform());
    engine_->viewDidLoad();
    engine_->start();
  }
  void runTo(long long ms) { phone_.loop.runUntil(milliseconds(ms)); }
  void seat(const char* section, const char* xPos, const char* yPos) {
    phone_.defaults.setFromOutside("selectedSection", std::string(section));
    phone_.defaults.setFromOutside("xPos", std::string(xPos));
    phone_.defaults.setFromOutside("yPos", std::string(yPos));
  }
  static std::string videoOf(const std::string& map) {
    return "/main/HVAssets/Maps/Venue-7/" + map + "/video.mp4";
  }
  void putMap(const std::string& map, VirtualVideo video) {
    phone_.virtualFiles.put(videoOf(map), "video " + map, 1e9);
    phone_.virtualVideos.put(videoOf(map), std::move(video));
  }
  void putMap(const std::string& map, const Words& words) {
    putMap(map, VirtualVideo::ofWords(words));
  }
  void putMapWithTable(const std::string& map, const Words& words) {
    putMap(map, words);
    const SeatLutFiles files(phone_.virtualFiles, json_, "/documents");
    ASSERT_TRUE(files.persistPixelMapSeatLUTData(lutOf(words), videoOf(map), {2, 1}));
  }

  /// A turn at that time.
  void actAt(long long ms, Task act) {
    phone_.loop.actFromOutside(milliseconds(ms), 0, std::move(act));
    runTo(ms);
  }
  /// A red look of venue 7, heard at that time, with a sequence number of its own.
  void hearAt(long long ms, const Fields& fields) {
    Broadcast broadcast{.applicationId = 258, .venueId = 7, .master = 100, .red = 255, .mode = 1};
    broadcast.sequence = ++sequence_;
    for (const auto& [field, value] : fields) field.set(broadcast, value);
    const BroadcastBytes data = encodeBroadcast(broadcast);
    actAt(ms, [this, &data] { EXPECT_TRUE(phone_.bluetooth.advertise(data)); });
  }
  void hearFrameAt(long long ms, int frame, int map = 5) {
    hearAt(ms, {{&B::pixelMapId, map}, {&B::minutes, frame}});
  }

  /// The changes of the light since it was last asked.
  std::vector<std::string> lights() { return std::exchange(lights_, {}); }
  const SeatLutState& table() const { return engine_->seatLuts().state(); }
  int opens() const { return phone_.virtualVideos.counts.opens; }
  bool isNoticeShown() const {
    const ViewStack& views = engine_->views();
    return !views.isHidden(ViewId::mapNoSeatOverlayView) &&
           views.alpha(ViewId::mapNoSeatOverlayView) > 0;
  }

  ExactJsonReader json_;
  PixmapDecoder decoder_;
  VirtualPhone phone_{json_, {.random = nullptr, .documents = "/documents", .images = &decoder_}};
  std::unique_ptr<ShowEngine> engine_;

 private:
  void noteLight() {
    if (!engine_ || engine_->views().lightColour() == light_) return;
    light_ = engine_->views().lightColour();
    const auto level = [](float value) { return std::to_string(static_cast<int>(value * 255)); };
    lights_.push_back(std::to_string(phone_.loop.now().count() / 1000) + " " + level(light_->red) +
                      " " + level(light_->green) + " " + level(light_->blue));
  }

  MaybeColour light_ = kBlack;
  std::vector<std::string> lights_;
  std::uint16_t sequence_ = 0;
};

TEST_F(EnginePixelMap, TableOnDiskShowsTheSeatsColourWithNothingDecoded) {
  putMapWithTable("5", kThreeColours);
  hearAt(1500, {});
  hearFrameAt(2000, 1);
  EXPECT_THAT(lights(), ElementsAre("1500 255 0 0", "2000 0 255 0"));
  EXPECT_EQ(opens(), 0);
  EXPECT_EQ(engine_->state().screen.currentMode, 21U);
}

TEST_F(EnginePixelMap, UnbuiltMapIsBlackAndThenTheSeatsColourWithoutASecondPacket) {
  putMap("5", kThreeColours);
  hearAt(1500, {});
  hearFrameAt(2000, 1);
  EXPECT_THAT(lights(), ElementsAre("1500 255 0 0", "2000 0 0 0", "2000 0 255 0"));
  runTo(3000);
  EXPECT_THAT(lights(), IsEmpty());
}

TEST_F(EnginePixelMap, EachFrameShowsItsColourAndTheMapGoesRound) {
  putMapWithTable("5", kThreeColours);
  for (int frame = 1; frame <= 5; ++frame) hearFrameAt(1000 + frame * 100, frame);
  EXPECT_THAT(lights(), ElementsAre("1100 0 255 0", "1200 0 0 255", "1300 255 0 0", "1400 0 255 0",
                                    "1500 0 0 255"));
  hearAt(1600, {{&B::pixelMapId, 5}, {&B::seconds, 1}, {&B::minutes, 0}});
  EXPECT_THAT(lights(), ElementsAre("1600 0 255 0")) << "frame 256 of three";
}

TEST_F(EnginePixelMap, FrameWithoutAColourIsBlack) {
  putMapWithTable("5", {0xFFFF0000, 0xFF00FF00, 0});
  hearFrameAt(1500, 1);
  hearFrameAt(1600, 2);
  hearFrameAt(1700, 3);
  EXPECT_THAT(lights(), ElementsAre("1500 0 255 0", "1600 0 0 0", "1700 255 0 0"));
}

TEST_F(EnginePixelMap, SwitchingToAnUnbuiltMapNeverShowsTheOldMapsColour) {
  putMapWithTable("5", kThreeColours);
  putMap("6", Words{0xFF010101, 0xFF020202});
  hearFrameAt(1500, 1);
  hearFrameAt(1600, 1, 6);
  EXPECT_THAT(lights(), ElementsAre("1500 0 255 0", "1600 0 0 0", "1600 2 2 2"));
  hearFrameAt(1700, 1, 5);
  EXPECT_THAT(lights(), ElementsAre("1700 0 255 0")) << "from memory, at once";
}

TEST_F(EnginePixelMap, MapWithoutAVideoIsBlack) {
  putMapWithTable("5", kThreeColours);
  hearFrameAt(1500, 1);
  hearFrameAt(1600, 2, 6);
  EXPECT_THAT(lights(), ElementsAre("1500 0 255 0", "1600 0 0 0"));
  EXPECT_EQ(table().pixelMapSeatLUTRequestedKey, "");
}

TEST_F(EnginePixelMap, SeatOfTheDefaultsCounts) {
  putMap("5", VirtualVideo::ofPlaces(3, 16, 9));
  hearFrameAt(1500, 1);
  EXPECT_THAT(lights(), ElementsAre("1500 1 2 1"));
  seat("A", "12", "7");
  hearFrameAt(1600, 2);
  EXPECT_THAT(lights(), ElementsAre("1600 0 0 0", "1600 2 12 7")) << "read anew at every look";
  phone_.defaults.setFromOutside("xPos", std::int64_t{3});
  hearFrameAt(1700, 1);
  EXPECT_THAT(lights(), ElementsAre("1700 0 0 0", "1700 1 3 7")) << "a number will do";
  EXPECT_EQ(table().pixelMapSeatLUTLoadedKey, videoOf("5") + "|3|7");
}

TEST_F(EnginePixelMap, LookWithoutAPixelMapPutsTheTableAway) {
  putMapWithTable("5", kThreeColours);
  hearFrameAt(1500, 1);
  hearAt(1600, {});
  EXPECT_THAT(lights(), ElementsAre("1500 0 255 0", "1600 255 0 0"));
  EXPECT_EQ(table().pixelMapSeatLUTRequestedKey, "");
  EXPECT_EQ(table().pixelMapSeatLUTLoadedKey, "");
  EXPECT_EQ(table().pixelMapSeatLUTActiveData, nullptr);
  EXPECT_EQ(table().pixelMapSeatLUTFrameCount, 0);
  hearFrameAt(1700, 1);
  EXPECT_THAT(lights(), ElementsAre("1700 0 255 0"));
  EXPECT_EQ(opens(), 0);
}

TEST_F(EnginePixelMap, WithoutASectionTheNoticeIsShownAndNothingIsLoaded) {
  putMapWithTable("5", kThreeColours);
  seat("", "2", "1");
  hearAt(1400, {});
  hearFrameAt(1500, 1);
  EXPECT_THAT(lights(), ElementsAre("1400 255 0 0", "1500 0 0 0"));
  EXPECT_EQ(engine_->state().screen.currentMode, 50U);
  EXPECT_TRUE(isNoticeShown());
  EXPECT_EQ(table().pixelMapSeatLUTRequestedKey, "");
  seat("A", "2", "1");
  hearFrameAt(3000, 2);
  EXPECT_THAT(lights(), ElementsAre("3000 0 0 255"));
  runTo(5000);
  EXPECT_FALSE(isNoticeShown());
}

TEST_F(EnginePixelMap, NegativeSeatKeepsTheLooksOwnMode) {
  putMapWithTable("5", kThreeColours);
  seat("A", "-1", "1");
  hearFrameAt(1500, 1);
  EXPECT_EQ(engine_->state().screen.currentMode, 1U);
  EXPECT_THAT(lights(), ElementsAre("1500 255 0 0"));
  EXPECT_EQ(table().pixelMapSeatLUTRequestedKey, "");
}

TEST_F(EnginePixelMap, TorchFollowsTheStillBesideTheScreen) {
  putMapWithTable("5", kThreeColours);
  phone_.mainBundle.resources["Maps/v7_m5_f1.jpg"] = pixmapOf(16, 9, 255, 255, 255);
  phone_.mainBundle.resources["Maps/v7_m5_f2.jpg"] = pixmapOf(16, 9, 255, 255, 254);
  const auto hear = [this](long long ms, int frame) {
    hearAt(ms, {{&B::pixelMapId, 5}, {&B::minutes, frame}, {&B::ledMode, 9}});
  };
  hear(1500, 1);
  EXPECT_TRUE(phone_.torch.isOn);
  hear(1600, 2);
  EXPECT_FALSE(phone_.torch.isOn);
  EXPECT_THAT(lights(), ElementsAre("1500 0 255 0", "1600 0 0 255"));
}

TEST_F(EnginePixelMap, StillsOfTheMapDoNotLightTheScreen) {
  putMap("5", Words{});
  phone_.mainBundle.resources["HVAssets/Maps/Venue-7/5/f1.jpg"] = pixmapOf(16, 9, 1, 2, 3);
  hearFrameAt(1500, 1);
  EXPECT_THAT(lights(), IsEmpty()) << "black as it was: only a table lights it";
}

TEST_F(EnginePixelMap, TablesThatWereBuiltAheadAreShownAtOnce) {
  putMap("5", kThreeColours);
  putMap("6", Words{0xFF010101, 0xFF020202});
  std::vector<std::string> reports;
  actAt(1500, [&] {
    engine_->precomputePixelMapLUTsForVenueId(
        7, 2, 1,
        [&](int done, int total, const std::string& map) {
          reports.push_back(std::to_string(done) + "/" + std::to_string(total) + " " + map);
        },
        [&](int done, int total) {
          reports.push_back("done " + std::to_string(done) + "/" + std::to_string(total));
        });
    EXPECT_THAT(reports, IsEmpty());
  });
  EXPECT_THAT(reports, ElementsAre("1/2 5", "2/2 6", "done 2/2"));
  const int opened = opens();
  hearFrameAt(2000, 1, 6);
  hearFrameAt(2100, 1, 5);
  EXPECT_THAT(lights(), ElementsAre("2000 2 2 2", "2100 0 255 0"));
  EXPECT_EQ(opens(), opened);
}

TEST_F(EnginePixelMap, NextProcessFindsTheTablesOfTheLast) {
  putMap("5", kThreeColours);
  hearFrameAt(1500, 1);
  engine_.reset();
  const int opened = opens();
  load();
  runTo(3000);
  lights();
  hearAt(3100, {});
  hearFrameAt(3200, 2);
  EXPECT_THAT(lights(), ElementsAre("3100 255 0 0", "3200 0 0 255"));
  EXPECT_EQ(opens(), opened);
}

TEST_F(EnginePixelMap, InvalidationInMidShowIsSeenAtTheNextFrame) {
  putMap("5", kThreeColours);
  hearFrameAt(1500, 1);
  actAt(1600, [this] { engine_->invalidatePixelMapSeatLUTCacheForVenueId(7); });
  EXPECT_THAT(lights(), ElementsAre("1500 0 255 0")) << "nothing is painted anew";
  EXPECT_EQ(table().pixelMapSeatLUTActiveData, nullptr);
  const int opened = opens();
  hearFrameAt(1700, 2);
  EXPECT_THAT(lights(), ElementsAre("1700 0 0 0", "1700 0 0 255"));
  EXPECT_GT(opens(), opened) << "the saved table was removed";
}

TEST_F(EnginePixelMap, BuildThatEndsInAnotherModeLeavesTheLightAlone) {
  // The next look is heard while the map is being built.
  VirtualVideo video = VirtualVideo::ofWords(kThreeColours);
  Broadcast steady{.applicationId = 258, .venueId = 7, .master = 100, .green = 255, .mode = 1};
  steady.sequence = 100;
  video.onFrame = [this, steady](std::size_t frame) {
    if (frame == 1) phone_.bluetooth.advertise(encodeBroadcast(steady));
  };
  putMap("5", std::move(video));
  hearFrameAt(1500, 1);
  runTo(3000);
  EXPECT_THAT(lights(), ElementsAre("1500 0 255 0"));
  EXPECT_EQ(engine_->state().screen.currentMode, 1U);
  EXPECT_EQ(table().pixelMapSeatLUTActiveData, nullptr);
  EXPECT_TRUE(phone_.virtualFiles.list("/documents/SeatLUTCache").has_value())
      << "but it was saved";
}

TEST_F(EnginePixelMap, EngineThatGoesBeforeTheBuildLeavesNothingToDo) {
  putMap("5", kThreeColours);
  actAt(1500, [this] {
    Broadcast look{.applicationId = 258, .venueId = 7, .pixelMapId = 5, .mode = 1, .sequence = 9};
    phone_.bluetooth.advertise(encodeBroadcast(look));
    engine_.reset();
  });
  runTo(3000);
  EXPECT_EQ(phone_.virtualVideos.counts.framesRead, 0);
  EXPECT_FALSE(phone_.virtualFiles.attributes("/documents").has_value());
}

TEST_F(EnginePixelMap, BothQueuesHaveTheirLabels) {
  EXPECT_THAT(phone_.queues.log.entries, ElementsAre("com.halvora.sdk.pixelmap.lut.decode",
                                                     "com.halvora.sdk.pixelmap.live.decode"));
}

TEST(EngineWithoutDocuments, ShowsTheColourAndSavesNothing) {
  const ExactJsonReader json;
  VirtualPhone phone(json);
  phone.mainBundle.folder = "/main";
  phone.virtualFiles.put("/main/HVAssets/Maps/Venue-7/5/video.mp4", "video");
  phone.virtualVideos.put("/main/HVAssets/Maps/Venue-7/5/video.mp4",
                          VirtualVideo::ofWords(kThreeColours));
  phone.defaults.setFromOutside("selectedSection", std::string("A"));
  ShowEngine engine(phone.platform());
  engine.viewDidLoad();
  phone.loop.soon([&engine] {
    engine.processEffect(
        {.applicationId = 258, .venueId = 7, .pixelMapId = 5, .mode = 1, .minutes = 2});
  });
  phone.loop.runUntil(milliseconds(100));
  EXPECT_EQ(engine.views().lightColour(), colourOfBytes(0, 0, 255));
  EXPECT_TRUE(phone.virtualFiles.writes.entries.empty());
}

}  // namespace
}  // namespace halvora
