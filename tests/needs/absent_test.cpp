// SPDX-License-Identifier: Apache-2.0
#include "halvora/platform/absent.h"

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_bluetooth.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "engine/show_engine.h"
#include "halvora/engine.h"
#include "halvora/platform/files.h"
#include "halvora/platform/image.h"
#include "halvora/platform/json.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/torch.h"
#include "halvora/platform/user_defaults.h"
#include "halvora/platform/video_asset.h"
#include "halvora/platform/video_player.h"
#include "halvora/platform/workers.h"
#include "seats/panel_controller.h"

namespace halvora {
namespace {

TEST(AbsentNeeds, AreTheSameForEverybody) {
  VirtualRunLoop loop;
  const Platform one{.runLoop = loop};
  const Platform other{.runLoop = loop};
  EXPECT_EQ(&*one.torch, &*other.torch);
  EXPECT_EQ(&*one.torch, &absent::torch());
}

TEST(AbsentNeeds, GiveNothingAndSayWhy) {
  std::string reason;
  EXPECT_EQ(absent::json().parse("{}", &reason), std::nullopt);
  EXPECT_EQ(reason, "there is no reader of JSON");
  EXPECT_EQ(absent::videoAssets().open("/a.mp4", &reason), nullptr);
  EXPECT_EQ(reason, "there is no reader of videos");
  EXPECT_EQ(absent::videoAssets().open("/a.mp4"), nullptr);
  EXPECT_EQ(absent::images().decode("\xFF\xD8\xFF"), std::nullopt);
  EXPECT_FALSE(absent::files().replace("/a", "bytes"));
  EXPECT_FALSE(absent::files().attributes("/"));
}

TEST(AbsentNeeds, DefaultsForgetAtOnce) {
  absent::defaults().set("venueID", std::int64_t{7});
  EXPECT_EQ(absent::defaults().find("venueID"), nullptr);
}

TEST(AbsentNeeds, QueuesAndWorkersBeginNothing) {
  const std::unique_ptr<SerialQueue> queue = absent::queues().make("com.example.queue");
  EXPECT_EQ(queue->label(), "com.example.queue");
  int runs = 0;
  EXPECT_FALSE(queue->dispatch([&runs] { ++runs; }));
  Task task = [&runs] { ++runs; };
  EXPECT_EQ(absent::workers().run({&task, 1}), WorkEnd::notBegun);
  EXPECT_EQ(runs, 0);
}

struct AbsentNeedsPhone : testing::Test {
  /// A look with a gobo, a clip, a torch mode and a pixel map.
  static Broadcast look() {
    Broadcast look;
    look.applicationId = 1;
    look.venueId = 7;
    look.master = 255;
    look.mode = 1;
    look.red = 200;
    look.gobo = 1;
    look.videoId = 1;
    look.videoStatus = 1;
    look.vibrate = 1;
    look.ledMode = 1;
    look.pixelMapId = 1;
    look.sequence = 1;
    look.transmitter = 1;
    return look;
  }

  VirtualRunLoop loop;
  Platform platform{.runLoop = loop};
};

TEST_F(AbsentNeedsPhone, AnEngineStartsShowsALookAndGoes) {
  ShowEngine engine(platform);
  engine.viewDidLoad();
  engine.start();
  EXPECT_EQ(engine.processEffect(look()), PacketFate::processed);
  EXPECT_EQ(engine.views().lightColour(), kBlack) << "a pixel map, and nobody has a seat";
  Broadcast plain = look();
  plain.pixelMapId = 0;
  EXPECT_EQ(engine.processEffect(plain), PacketFate::processed);
  EXPECT_EQ(engine.views().lightColour(), colourOfBytes(200, 0, 0));
  engine.precomputePixelMapLUTsForVenueId(7, 1, 2);
  engine.playVideo("3");
  loop.runFor(milliseconds(10'000));
  EXPECT_EQ(engine.diagnostics().failedCalls, 0U);
}

TEST_F(AbsentNeedsPhone, APanelIsLaidOutAndActedOn) {
  HalvoraViewController engine(platform);
  engine.viewDidLoad();
  PanelController panel(engine, platform);
  panel.viewDidLoad();
  panel.viewDidLayoutSubviews(390);
  panel.initBluetoothPermission();
  panel.openAppSettings();
  panel.openSeatSelector();
  loop.runFor(milliseconds(10'000));
  EXPECT_EQ(panel.resolvedVenueId(), 0);
  EXPECT_EQ(panel.presentedSeatSelector(), nullptr);
}

TEST_F(AbsentNeedsPhone, AnAssignedRadioIsTheOneThatIsHeard) {
  VirtualBluetooth radio(loop);
  radio.setAuthorization(BluetoothAuthorization::allowedAlways);
  radio.setState(CentralState::poweredOn);
  platform.bluetooth = radio;
  HalvoraViewController engine(platform);
  engine.viewDidLoad();
  engine.start();
  loop.runFor(milliseconds(1000));
  EXPECT_TRUE(radio.isScanning());
}

}  // namespace
}  // namespace halvora
