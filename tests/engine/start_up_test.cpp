// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The one engine lives as long as the process, and so does its phone.
Platform platformOfTheProcess() {
  static const ExactJsonReader kReader;
  static auto* const kPhone = new VirtualPhone(kReader);
  return kPhone->platform();
}

TEST(SharedInstance, CallingItTwiceGivesTheSameEngine) {
  HalvoraViewController& first = HalvoraViewController::sharedInstance(platformOfTheProcess());
  HalvoraViewController& second = HalvoraViewController::sharedInstance(platformOfTheProcess());
  EXPECT_EQ(&first, &second);
}

TEST(SharedInstance, LaterPlatformsAreNotUsed) {
  HalvoraViewController& shared = HalvoraViewController::sharedInstance(platformOfTheProcess());
  const ExactJsonReader reader;
  VirtualPhone other(reader);
  EXPECT_EQ(&HalvoraViewController::sharedInstance(other.platform()), &shared);
}

TEST(ThreadsSharedInstance, AllThreadsGetTheSameEngine) {
  const Platform platform = platformOfTheProcess();
  std::array<HalvoraViewController*, 4> got{};
  std::vector<std::thread> threads;
  for (HalvoraViewController*& place : got) {
    threads.emplace_back(
        [&place, &platform] { place = &HalvoraViewController::sharedInstance(platform); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const HalvoraViewController* engine : got) EXPECT_EQ(engine, got[0]);
}

TEST(EngineStart, StateBeforeTheViewIsLoaded) {
  EngineBench bench({.isViewLoaded = false});
  const EngineState& state = bench.state();
  EXPECT_EQ(state.colour.currentMaster, 1.0);
  EXPECT_EQ(state.colour.currentHeadroom, 1.0F);
  EXPECT_EQ(bench.engine().scanner().currentBroadcast(), "");
  EXPECT_STREQ(textOf(state.presence.bluetoothState), "");
  EXPECT_FALSE(state.presence.scanningAllowed);
  EXPECT_FALSE(state.presence.insideVenue);
  EXPECT_FALSE(state.presence.resetApp);
  EXPECT_FALSE(state.presence.setupOnce);
  EXPECT_FALSE(state.screen.lastTurnOn);
  EXPECT_EQ(state.screen.currentMode, 0U);
  EXPECT_EQ(state.seat.currentVideoMinutes, 0);
  EXPECT_EQ(bench.engine().brightness().originalBrightness(), 0);
  EXPECT_THAT(bench.engine().palettes(), IsEmpty());
  EXPECT_EQ(bench.engine().pairedBucketID(), "");
  EXPECT_EQ(bench.controller().halvoraView, nullptr);
  EXPECT_EQ(bench.controller().centralManager, nullptr);
  EXPECT_THAT(bench.engine().allowedTransmitterIds(), IsEmpty());
  EXPECT_THAT(bench.take(), IsEmpty()) << "making an engine does nothing to the phone";
}

TEST(ViewDidLoad, HappensInOrder) {
  EngineBench bench({.isViewLoaded = false});
  bench.log.isDetailed = true;
  bench.engine().viewDidLoad();
  EXPECT_THAT(
      bench.take({"observe", "read", "queue", "clearSeatLut", "find", "audioPlayback", "every",
                  "readBrightness", "draw"}),
      ElementsAre("observe", "read HVAssets/palettes.json",
                  "queue com.halvora.sdk.pixelmap.lut.decode",
                  "queue com.halvora.sdk.pixelmap.live.decode", "clearSeatLut",
                  "find pairedBucketID", "audioPlayback", "every 500 ms", "readBrightness"));
}

TEST(ViewDidLoad, MakesTheTwoQueuesWithTheirLabels) {
  EngineBench bench;
  EXPECT_THAT(bench.phone.queues.log.entries, ElementsAre("com.halvora.sdk.pixelmap.lut.decode",
                                                          "com.halvora.sdk.pixelmap.live.decode"));
}

TEST(ViewDidLoad, ReadsThePalettes) {
  EngineBench bench;
  const std::vector<Palette>& palettes = bench.engine().palettes();
  ASSERT_EQ(palettes.size(), 5U);
  EXPECT_EQ(palettes[0].id, 1);
  EXPECT_THAT(palettes[0].colours, ElementsAre(colourOfBytes(0, 0, 255), colourOfBytes(0, 255, 0)));
}

// Where palettes cannot be had, each look shows its own colour.
void expectNoPalettes(EngineBench& bench) {
  EXPECT_THAT(bench.engine().palettes(), IsEmpty());
  bench.process(look(1, {{&Broadcast::paletteId, 1}}));
  EXPECT_THAT(bench.take({"light", "draw"}), ElementsAre("light 255 0 0"));
}

TEST(ViewDidLoad, MissingPalettesAreNone) {
  EngineBench bench({.palettes = std::nullopt});
  expectNoPalettes(bench);
}

TEST(ViewDidLoad, MalformedPalettesAreNone) {
  for (const char* text : {"", "{", "[]", "{\"palettes\": {}}", "{\"palettes\": null}",
                           "{\"palettes\": [{\"id\": 1, \"colours\": [\"#0000FF\"]}]",
                           "{\"other\": [{\"id\": 1, \"colours\": [\"#0000FF\"]}]}"}) {
    SCOPED_TRACE(text);
    EngineBench bench({.palettes = text});
    expectNoPalettes(bench);
  }
}

TEST(ViewDidLoad, PalettesBeyondFourMebibytesAreNone) {
  std::string text = kBenchPalettes;
  text.resize(4 << 20, ' ');
  EXPECT_EQ(EngineBench({.palettes = text}).engine().palettes().size(), 5U);
  text.push_back(' ');
  EngineBench bench({.palettes = text});
  expectNoPalettes(bench);
}

TEST(ViewDidLoad, ReadsTheBucketId) {
  EngineBench bench({.isViewLoaded = false});
  bench.phone.defaults.setFromOutside("pairedBucketID", std::string("arena-7"));
  bench.engine().viewDidLoad();
  EXPECT_EQ(bench.engine().pairedBucketID(), "arena-7");
}

TEST(ViewDidLoad, SoundPlaysBack) {
  EngineBench bench({.isViewLoaded = false});
  EXPECT_FALSE(bench.phone.application.usesAudioPlayback);
  bench.engine().viewDidLoad();
  EXPECT_TRUE(bench.phone.application.usesAudioPlayback);
}

TEST(ViewDidLoad, StatusBarIsNotHidden) {
  EngineBench bench;
  EXPECT_FALSE(bench.engine().prefersStatusBarHidden());
}

TEST(ViewDidLoad, SetupOnceAndLastTurnOnAreSetWithoutADraw) {
  EngineBench bench({.random = ScriptedRandom::Rule::greatest, .isViewLoaded = false});
  bench.engine().viewDidLoad();
  EXPECT_TRUE(bench.presence().setupOnce);
  EXPECT_TRUE(bench.screen().lastTurnOn);
  EXPECT_THAT(bench.take({"draw"}), IsEmpty());
}

TEST(ViewDidLoad, OriginalBrightnessIsTheOneOfThatMoment) {
  EngineBench bench({.brightness = 0.2, .isViewLoaded = false});
  bench.phone.screen.setBrightness(0.37);
  bench.engine().viewDidLoad();
  EXPECT_DOUBLE_EQ(bench.engine().brightness().originalBrightness(), 0.37);
  bench.phone.screen.setBrightness(0.8);
  EXPECT_DOUBLE_EQ(bench.engine().brightness().originalBrightness(), 0.37);
}

TEST(ViewDidLoad, LowLightIsPolledTwiceASecond) {
  EngineBench bench;
  bench.runTo(499);
  EXPECT_THAT(bench.take(), IsEmpty());
  bench.runTo(500);
  EXPECT_THAT(bench.take(), ElementsAre("lowLight"));
  bench.runTo(2499);
  EXPECT_THAT(bench.take(), ElementsAre("lowLight", "lowLight", "lowLight"));
}

TEST(ViewDidLoad, ShowIsInvisibleAndTheLightBlack) {
  EngineBench bench;
  EXPECT_EQ(bench.views().alpha(ViewId::container), 0);
  EXPECT_EQ(bench.views().alpha(ViewId::fpsLabel), 0);
  EXPECT_EQ(bench.views().alpha(ViewId::pairingCodeLabel), 0);
  EXPECT_EQ(bench.views().alpha(ViewId::goboView), 0);
  EXPECT_EQ(bench.views().alpha(ViewId::dimmerView), 0);
  EXPECT_EQ(bench.views().alpha(ViewId::lightView), 1);
  EXPECT_TRUE(bench.views().isHidden(ViewId::mapNoSeatOverlayView));
  EXPECT_EQ(bench.views().alpha(ViewId::mapNoSeatOverlayView), 0);
  EXPECT_TRUE(bench.views().isHidden(ViewId::lowLightHintLabel));
  EXPECT_EQ(bench.views().alpha(ViewId::lowLightHintLabel), 0);
  EXPECT_EQ(bench.views().lightColour(), MaybeColour(kBlack));
}

TEST(ViewDidLoad, TextsAndNoGoboWithoutAssets) {
  EngineBench bench;
  EXPECT_EQ(bench.views().text(ViewId::fpsLabel), "");
  EXPECT_EQ(bench.views().text(ViewId::pairingCodeLabel), "0000");
  // The bench's bundle has no folder, so there is no first gobo to show.
  EXPECT_EQ(bench.views().text(ViewId::goboImage), "");
  EXPECT_EQ(bench.views().text(ViewId::pixelMapImage), "");
}

TEST(ViewOrder, FromBottomToTop) {
  const auto isAbove = [](ViewId upper, ViewId lower) { return upper > lower; };
  const std::array order = {ViewId::container,
                            ViewId::lightView,
                            ViewId::fpsLabel,
                            ViewId::goboView,
                            ViewId::pairingCodeLabel,
                            ViewId::dimmerView,
                            ViewId::mapNoSeatOverlayView,
                            ViewId::lowLightHintLabel};
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end(), std::less_equal<>()));
  EXPECT_TRUE(isAbove(ViewId::dimmerView, ViewId::pairingCodeLabel));
  EXPECT_TRUE(isAbove(ViewId::mapNoSeatOverlayView, ViewId::dimmerView));
  EXPECT_TRUE(isAbove(ViewId::lowLightHintLabel, ViewId::dimmerView));
  for (const ViewId view : order) EXPECT_EQ(rowOf(view).parent, ViewId::container);
  EXPECT_EQ(rowOf(ViewId::goboImage).parent, ViewId::goboView);
}

TEST(ViewOrder, LabelsAreWhiteAndLarge) {
  for (const ViewId label : {ViewId::fpsLabel, ViewId::pairingCodeLabel}) {
    EXPECT_EQ(rowOf(label).colour, kWhite);
    EXPECT_EQ(rowOf(label).fontSize, 100);
  }
  EXPECT_EQ(rowOf(ViewId::container).colour, kBlack);
  EXPECT_EQ(rowOf(ViewId::dimmerView).colour, kBlack);
  EXPECT_EQ(rowOf(ViewId::goboView).colour.alpha, 0);
}

TEST(ViewOrder, ViewsFillTheScreen) {
  const Rect whole{0, 0, 390, 844};
  for (const ViewId view : {ViewId::container, ViewId::lightView, ViewId::fpsLabel,
                            ViewId::goboView, ViewId::pairingCodeLabel, ViewId::dimmerView}) {
    EXPECT_EQ(frameOf(view, {390, 844}), whole) << rowOf(view).name;
  }
}

TEST(Layout, ViewTakesItsSuperviewsBounds) {
  EngineBench bench;
  bench.engine().viewWillLayoutSubviews(Rect{1, 2, 320, 480});
  EXPECT_EQ(bench.engine().frame(), (Rect{1, 2, 320, 480}));
}

TEST(Layout, ViewWithoutASuperviewIsNothing) {
  EngineBench bench;
  bench.engine().viewWillLayoutSubviews(Rect{0, 0, 320, 480});
  bench.engine().viewWillLayoutSubviews(std::nullopt);
  EXPECT_EQ(bench.engine().frame(), (Rect{0, 0, 0, 0}));
}

TEST(Layout, TurningThePhoneDoesNothing) {
  EngineBench bench;
  bench.phone.application.changeOrientation();
  EXPECT_THAT(bench.take(), IsEmpty());
}

TEST(LocalizedString, KeyMissingFromTheTableGivesTheFallback) {
  EngineBench bench;
  EXPECT_EQ(bench.engine().hvLocalizedStringForKey("hv_none", "A fallback"), "A fallback");
}

TEST(LocalizedString, TranslatedKeyGivesTheTranslation) {
  EngineBench bench;
  bench.phone.kitBundle.strings["hv_low_light_hint"] = "Lichtshow aktiv.";
  EXPECT_EQ(bench.engine().hvLocalizedStringForKey("hv_low_light_hint", "A fallback"),
            "Lichtshow aktiv.");
}

TEST(LocalizedString, EmptyTextOrTheKeyItselfGivesTheFallback) {
  EngineBench bench;
  bench.phone.kitBundle.strings["hv_empty"] = "";
  bench.phone.kitBundle.strings["hv_same"] = "hv_same";
  EXPECT_EQ(bench.engine().hvLocalizedStringForKey("hv_empty", "A fallback"), "A fallback");
  EXPECT_EQ(bench.engine().hvLocalizedStringForKey("hv_same", "A fallback"), "A fallback");
}

TEST(LocalizedString, HostsTableIsNotAsked) {
  EngineBench bench;
  bench.phone.mainBundle.strings["hv_text"] = "The host's";
  EXPECT_EQ(bench.engine().hvLocalizedStringForKey("hv_text", "A fallback"), "A fallback");
}

}  // namespace
}  // namespace halvora
