// SPDX-License-Identifier: Apache-2.0
// A whole evening in virtual time: the panel appears and asks, the venue is heard on the air, the
// seat is chosen, its tables are built, and the show's packets show the seat's colours.
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/file_defaults.h"
#include "engine/broadcast.h"
#include "engine/inside.h"
#include "halvora/colour.h"
#include "tests/seats/panel_bench.h"

namespace halvora {
namespace {

constexpr int kPixelMapMode = 21;
constexpr std::uint32_t kRed = 0xFFFF0000;
constexpr std::uint32_t kGreen = 0xFF00FF00;

class FullWalk : public testing::Test {
 protected:
  FullWalk() {
    bench.putMap(7, benchMap(3, 2));
    // Two maps: one whose frames are red, green, red, and one whose pixels tell their place.
    bench.putPixelMap(7, 1, {kRed, kGreen, kRed});
    const std::string path = "/host/HVAssets/Maps/Venue-7/2/video.mp4";
    bench.phone.virtualFiles.put(path, "video");
    bench.phone.virtualVideos.put(path, VirtualVideo::ofPlaces(3, 16, 9));
  }

  void hear(int pixelMapId, int frame, int mode) {
    Broadcast packet;
    packet.applicationId = 258;
    packet.transmitter = 7;
    packet.venueId = 7;
    packet.master = 100;
    packet.pixelMapId = static_cast<std::uint8_t>(pixelMapId);
    packet.mode = static_cast<std::uint8_t>(mode);
    packet.minutes = static_cast<std::uint8_t>(frame);
    packet.sequence = ++sequence_;
    const BroadcastBytes data = encodeBroadcast(packet);
    bench.turn([&] { EXPECT_TRUE(bench.phone.bluetooth.advertise(data)) << "nobody scans"; });
  }
  MaybeColour light() { return insideOf(bench.engine()).views().lightColour(); }

  /// From the first sight of the panel until the phone knows where it is.
  void arrive() {
    EXPECT_EQ(bench.shown(), "shown shown hidden hidden hidden hidden");
    bench.turn([&] { bench.panel().initBluetoothPermission(); });
    EXPECT_EQ(bench.phone.bluetooth.log.entries.front(), RadioAct::managerMade);
    bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::allowedAlways);
    bench.tick();
    EXPECT_EQ(bench.shown(), "gone gone shown hidden hidden hidden");
    EXPECT_EQ(bench.views().statusTextLabel.text, "host: outside");

    bench.phone.loop.runFor(milliseconds(1000));
    hear(0, 0, 0);
    bench.tick();
    EXPECT_EQ(bench.views().statusTextLabel.text, "host: inside");
    EXPECT_EQ(bench.shown(), "gone gone shown hidden shown shown");
    EXPECT_EQ(bench.summary(), "No seat selected");
  }

  PanelBench bench{{.authorization = BluetoothAuthorization::notDetermined}};
  std::uint16_t sequence_ = 0;
};

TEST_F(FullWalk, ToASeat) {
  arrive();
  std::vector<std::string> dots;
  bench.phone.loop.onTurnEnded([&] {
    const std::string dot =
        bench.dotText() + " " + std::to_string(bench.panel().tables().lastDone());
    if (dots.empty() || dots.back() != dot) dots.push_back(dot);
  });
  bench.choose(2, 1, 2);
  bench.tick();
  EXPECT_EQ(bench.summary(), "A  |  1  |  11");
  EXPECT_EQ(bench.views().seatSelectionButton.title, "Change Seat");
  EXPECT_EQ(bench.dotText(), "green");
  EXPECT_EQ(dots,
            (std::vector<std::string>{"hidden -1", "amber 0", "amber 1", "amber 2", "green -1"}));
  EXPECT_EQ(bench.tables(), 2U);

  const int opens = bench.phone.virtualVideos.counts.opens;
  hear(1, 1, kPixelMapMode);
  EXPECT_EQ(light(), (Colour{0, 1, 0, 1}));
  hear(1, 2, kPixelMapMode);
  EXPECT_EQ(light(), (Colour{1, 0, 0, 1}));
  // Seat 11 is at (5, 4); frame 2 of a pixel is the colour (2, x, y).
  hear(2, 2, kPixelMapMode);
  EXPECT_EQ(light(), colourOfBytes(2, 5, 4));
  EXPECT_EQ(bench.phone.virtualVideos.counts.opens, opens) << "no video is opened in the show";
}

TEST_F(FullWalk, ToAStandingPlace) {
  arrive();
  bench.turn([&] { bench.panel().openSeatSelector(); });
  const auto selector = bench.panel().presentedWizard();
  ASSERT_NE(selector, nullptr);
  bench.turn([&] {
    selector->pickerDidSelectRow(1);
    selector->nextTapped();
  });
  bench.turn([&] {
    selector->viewDidLayoutSubviews({200, 100});
    // Of the places (2, 7) and (12, 8) the second is the right lower corner of the plan.
    selector->handleStandingTap({190, 95});
    selector->nextTapped();
  });
  bench.tick();
  EXPECT_EQ(bench.panel().presentedWizard(), nullptr);
  EXPECT_EQ(bench.summary(), "Standing Floor");
  EXPECT_EQ(bench.views().seatSelectionButton.title, "Change Location");
  EXPECT_EQ(bench.flat("xPos") + " " + bench.flat("yPos"), "12 8");
  EXPECT_EQ(bench.dotText(), "green");
  hear(2, 1, kPixelMapMode);
  EXPECT_EQ(light(), colourOfBytes(1, 12, 8));
}

TEST_F(FullWalk, ComesBackToItsSeatAfterARestart) {
  arrive();
  bench.choose(2, 1, 2);
  bench.tick();
  const DefaultsValue* seats = bench.phone.defaults.find("seatSelectionByVenue");
  ASSERT_NE(seats, nullptr);
  VirtualFiles files;
  const ExactJsonReader json;
  const FileDefaults::Needs needs{files, json, bench.phone.loop, bench.phone.queues};
  {
    FileDefaults lasting("/data/defaults.json", needs);
    for (const char* key : {"seatSelectionByVenue", "seatVersionByVenue", "mapAssetsVersionByVenue",
                            "seatLUTReadyByVenue", "xPos", "yPos", "selectedSection", "selectedRow",
                            "selectedSeat", "venueID"}) {
      ASSERT_NE(bench.phone.defaults.find(key), nullptr) << key;
      lasting.set(key, *bench.phone.defaults.find(key));
    }
  }
  FileDefaults lasting("/data/defaults.json", needs);
  EXPECT_EQ(*lasting.find("seatSelectionByVenue"), *seats);
  PanelBench later({.prepare = [&](VirtualPhone& phone) {
    for (const char* key : {"seatSelectionByVenue", "seatVersionByVenue", "mapAssetsVersionByVenue",
                            "seatLUTReadyByVenue", "venueID"}) {
      phone.defaults.setFromOutside(key, *lasting.find(key));
    }
  }});
  later.putMap(7, benchMap(3, 2));
  later.tick();
  EXPECT_EQ(later.summary(), "A  |  1  |  11");
  EXPECT_EQ(later.dotText(), "green");
  EXPECT_EQ(later.flat("selectedSeat"), "11");
}

}  // namespace
}  // namespace halvora
