// SPDX-License-Identifier: Apache-2.0
// The light view's value: what it makes of an engine, what it hands to it and what it asks of it.
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "engine/inside.h"
#include "halvora/host.h"
#include "tests/engine/engine_bench.h"
#include "tests/host/phone_of_the_process.h"

namespace halvora {
namespace {

using Texts = std::vector<std::string>;

struct HostViewTest : testing::Test {
  HalvoraView viewWith(Texts ids) { return HalvoraView(embedded(), {}, {}, std::move(ids)); }
  /// A view that counts what it hears.
  HalvoraView counting() {
    return HalvoraView(
        embedded(), [this] { ++started; }, [this] { ++stopped; });
  }
  EmbeddedEngine embedded() { return {bench.phone.platform(), bench.controller()}; }
  HalvoraViewController& show(const HalvoraView& view) {
    coordinator = view.makeCoordinator();
    return view.makeController(*coordinator);
  }
  void settle() { bench.phone.loop.runFor(milliseconds(1)); }

  EngineBench bench{{.hasCallbacks = false}};
  std::unique_ptr<HalvoraView::Coordinator> coordinator;
  int started = 0;
  int stopped = 0;
};

TEST_F(HostViewTest, TakesItsFieldsInOrder) {
  const HalvoraView view(
      embedded(), [this] { ++started; }, [this] { ++stopped; }, {"258:7", "258:8"});
  view.onLightShowStarted();
  EXPECT_EQ(started, 1);
  view.onLightShowStopped();
  EXPECT_EQ(stopped, 1);
  EXPECT_EQ(view.allowedTransmitterIds, (Texts{"258:7", "258:8"}));
}

TEST_F(HostViewTest, FieldsMayAllBeAbsent) {
  const HalvoraView view(embedded());
  EXPECT_FALSE(view.onLightShowStarted);
  EXPECT_FALSE(view.onLightShowStopped);
  EXPECT_TRUE(view.allowedTransmitterIds.empty());
}

TEST(HostViewOfTheProcess, TheCoordinatorHasTheProcessesEngine) {
  const HalvoraView view(platformOfTheProcess());
  const auto first = view.makeCoordinator();
  EXPECT_EQ(&first->mainViewController,
            &HalvoraViewController::sharedInstance(platformOfTheProcess()));
  EXPECT_EQ(&view.makeCoordinator()->mainViewController, &first->mainViewController);
}

TEST(HostViewOfTheProcess, OperationsGoToTheProcessesEngine) {
  const HalvoraView view(platformOfTheProcess());
  auto& engine = HalvoraViewController::sharedInstance(platformOfTheProcess());
  EXPECT_EQ(view.isPermissionGranted(), engine.isPermissionGranted());
  EXPECT_EQ(view.isInsideVenue(), engine.isInsideVenue());
  const bool wasAllowed = insideOf(engine).state().presence.scanningAllowed;
  view.start();
  EXPECT_EQ(insideOf(engine).state().presence.scanningAllowed,
            wasAllowed || view.isPermissionGranted());
}

TEST_F(HostViewTest, TheCoordinatorHasAnEngineOfTheHostsOwnAndTheTransmitters) {
  const auto made = viewWith({"258:7"}).makeCoordinator();
  EXPECT_EQ(&made->mainViewController, &bench.controller());
  EXPECT_EQ(made->allowedTransmitterIds, Texts{"258:7"});
}

TEST_F(HostViewTest, MakingTheCoordinatorChangesNothingOfTheEngine) {
  const auto made = viewWith({"258:7"}).makeCoordinator();
  EXPECT_TRUE(bench.controller().allowedTransmitterIds().empty());
  EXPECT_FALSE(bench.controller().lightShowStartedCallback());
}

TEST_F(HostViewTest, TheControllerIsTheEngineWithTheTransmitters) {
  HalvoraViewController& controller = show(viewWith({"258:7"}));
  EXPECT_EQ(&controller, &bench.controller());
  EXPECT_EQ(controller.allowedTransmitterIds(), Texts{"258:7"});
  bench.listen();
  Broadcast foreign = look(1);
  foreign.transmitter = 8;
  EXPECT_EQ(bench.hearNext(foreign), PacketFate::notAllowed);
  EXPECT_EQ(bench.hearNext(look(1)), PacketFate::processed);
}

TEST_F(HostViewTest, AStartIsToldOnceInATurnOfItsOwn) {
  show(counting());
  bench.process(look(1));
  EXPECT_EQ(started, 0);
  settle();
  EXPECT_EQ(started, 1);
  EXPECT_EQ(stopped, 0);
}

TEST_F(HostViewTest, AStopIsToldOnceInATurnOfItsOwn) {
  show(counting());
  bench.process(look(1));
  settle();
  bench.process(look(0));
  EXPECT_EQ(stopped, 0);
  settle();
  EXPECT_EQ(started, 1);
  EXPECT_EQ(stopped, 1);
}

TEST_F(HostViewTest, EachChangeOfModeIsToldInItsOrder) {
  std::string heard;
  show(HalvoraView(
      embedded(), [&heard] { heard += '+'; }, [&heard] { heard += '-'; }));
  bench.process(look(1));
  bench.process(look(3));
  bench.process(look(0));
  bench.process(look(2));
  settle();
  EXPECT_EQ(heard, "++-+");
}

TEST_F(HostViewTest, AbsentCallbacksCallNothingAndDoNotFail) {
  show(HalvoraView(embedded()));
  EXPECT_EQ(bench.process(look(1)), PacketFate::processed);
  EXPECT_EQ(bench.process(look(0)), PacketFate::processed);
  settle();
  EXPECT_EQ(bench.screen().currentMode, 0U);
}

TEST_F(HostViewTest, OneCallbackMayBeAbsent) {
  show(HalvoraView(embedded(), {}, [this] { ++stopped; }));
  bench.process(look(1));
  bench.process(look(0));
  settle();
  EXPECT_EQ(stopped, 1);
}

TEST_F(HostViewTest, CallbacksLastLongerThanTheValue) {
  {
    const HalvoraView view = counting();
    show(view);
  }
  bench.process(look(1));
  settle();
  EXPECT_EQ(started, 1);
}

TEST_F(HostViewTest, ACallbackMayDestroyTheCoordinator) {
  show(HalvoraView(embedded(), [this] { coordinator.reset(); }));
  bench.process(look(1));
  settle();
  EXPECT_EQ(coordinator, nullptr);
}

TEST_F(HostViewTest, OfTwoViewsTheOneShownLastIsHeardAndObeyed) {
  int first = 0;
  show(HalvoraView(embedded(), [&first] { ++first; }, {}, {"258:9"}));
  show(counting());
  bench.process(look(1));
  settle();
  EXPECT_EQ(first, 0);
  EXPECT_EQ(started, 1);
  EXPECT_TRUE(bench.controller().allowedTransmitterIds().empty());
}

TEST_F(HostViewTest, UpdatingTheControllerDoesNothing) {
  HalvoraViewController& controller = show(viewWith({"258:7"}));
  HalvoraView(embedded(), [this] { ++started; }, {}, {"258:9"}).updateController(controller);
  EXPECT_EQ(controller.allowedTransmitterIds(), Texts{"258:7"});
  bench.process(look(1));
  settle();
  EXPECT_EQ(started, 0);
}

TEST_F(HostViewTest, ItsSizeIsTheFacesBusiness) {
  const HalvoraView view(embedded());
  EXPECT_EQ(view.sizeThatFits({300, 400}, bench.controller()), std::nullopt);
  EXPECT_EQ(view.sizeThatFits({}, bench.controller()), std::nullopt);
}

TEST_F(HostViewTest, StartBeginsToListen) {
  HalvoraView(embedded()).start();
  EXPECT_TRUE(bench.presence().scanningAllowed);
  settle();
  bench.phone.loop.runFor(milliseconds(1000));
  EXPECT_TRUE(bench.phone.bluetooth.isScanning());
}

TEST_F(HostViewTest, StartWithoutPermissionDoesNot) {
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::notDetermined);
  HalvoraView(embedded()).start();
  bench.phone.loop.runFor(milliseconds(3000));
  EXPECT_FALSE(bench.presence().scanningAllowed);
  EXPECT_FALSE(bench.phone.bluetooth.isScanning());
}

TEST_F(HostViewTest, InitBluetoothPermissionListensWithoutAskingFirst) {
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::notDetermined);
  HalvoraView(embedded()).initBluetoothPermission();
  bench.phone.loop.runFor(milliseconds(1000));
  EXPECT_TRUE(bench.phone.bluetooth.isScanning());
}

TEST_F(HostViewTest, PermissionIsGrantedWhereBluetoothIsAlwaysAllowed) {
  const HalvoraView view(embedded());
  const std::pair<BluetoothAuthorization, bool> kCases[] = {
      {BluetoothAuthorization::notDetermined, false},
      {BluetoothAuthorization::restricted, false},
      {BluetoothAuthorization::denied, false},
      {BluetoothAuthorization::allowedAlways, true},
  };
  for (const auto& [authorization, isGranted] : kCases) {
    bench.phone.bluetooth.setAuthorization(authorization);
    EXPECT_EQ(view.isPermissionGranted(), isGranted);
  }
}

TEST_F(HostViewTest, IsInsideTheVenueOnceAPacketWasAccepted) {
  const HalvoraView view(embedded());
  EXPECT_FALSE(view.isInsideVenue());
  bench.listen();
  bench.hearNext(look(1));
  EXPECT_TRUE(view.isInsideVenue());
}

// Every phone of a simulated audience has a view, and hears of its own show alone.
TEST(HostViews, ThousandEnginesInOneProcess) {
  constexpr std::size_t kPhones = 1000;
  std::vector<std::unique_ptr<EngineBench>> phones;
  std::vector<int> starts(kPhones);
  for (std::size_t at = 0; at < kPhones; ++at) {
    phones.push_back(std::make_unique<EngineBench>(BenchSetup{.hasCallbacks = false}));
    EngineBench& bench = *phones.back();
    const HalvoraView view({bench.phone.platform(), bench.controller()},
                           [&starts, at] { ++starts[at]; });
    view.makeController(*view.makeCoordinator());
  }
  for (std::size_t at = 0; at < kPhones; at += 2) {
    phones[at]->process(look(1));
    phones[at]->phone.loop.runFor(milliseconds(1));
  }
  for (std::size_t at = 0; at < kPhones; ++at) EXPECT_EQ(starts[at], at % 2 == 0 ? 1 : 0);
}

TEST_F(HostViewTest, UsageReportsAreTheEnginesUntilTheHostSaysOtherwise) {
  EXPECT_TRUE(bench.controller().usageReports());
  HalvoraView view(embedded());
  show(view);
  EXPECT_TRUE(bench.controller().usageReports());
  view.usageReports = false;
  show(view);
  EXPECT_FALSE(bench.controller().usageReports());
  view.usageReports.reset();
  show(view);
  EXPECT_FALSE(bench.controller().usageReports()) << "nothing is said about them";
  view.usageReports = true;
  show(view);
  EXPECT_TRUE(bench.controller().usageReports());
}

}  // namespace
}  // namespace halvora
