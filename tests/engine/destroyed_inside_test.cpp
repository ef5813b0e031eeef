// SPDX-License-Identifier: Apache-2.0
// A host that destroys the engine from within one of the engine's own calls: nothing of the look
// that was under way is done any more, and nobody touches what is gone.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

struct DestroyedInside : testing::Test {
  DestroyedInside() {
    bench.listen();
    bench.runTo(1500);
  }
  std::function<void()> destroyed() {
    return [this] { destroy(); };
  }
  // What the engine does until it is gone is not what is asked about here.
  void destroy() {
    ++destructions;
    bench.destroyEngine();
    bench.log.drain();
  }
  /// A look of an effect, a gobo and a torch mode, all of which would come after the callback.
  void hear(int mode) {
    const Broadcast told = look(
        mode, {{&B::sequence, ++sequence}, {&B::gobo, 1}, {&B::ledMode, 5}, {&B::pixelMapId, 0}});
    bench.phone.bluetooth.advertise(encodeBroadcast(told));
  }
  void expectSilence() {
    EXPECT_EQ(destructions, 1);
    EXPECT_THAT(bench.take(), IsEmpty());
    const std::uint64_t turns = bench.phone.loop.turns();
    bench.phone.loop.runFor(milliseconds(60'000));
    EXPECT_EQ(bench.phone.loop.turns(), turns);
    hear(3);
    bench.phone.application.becomeActive();
    EXPECT_THAT(bench.take(), IsEmpty());
  }

  EngineBench bench;
  int destructions = 0;
  int sequence = 0;
};

TEST_F(DestroyedInside, TheStartedCallbackOfALookThatWasHeard) {
  bench.engine().lightShowStartedCallback() = destroyed();
  hear(3);
  expectSilence();
}

TEST_F(DestroyedInside, TheStoppedCallbackOfALookThatWasHeard) {
  bench.engine().lightShowStoppedCallback() = destroyed();
  hear(3);
  ASSERT_EQ(destructions, 0);
  hear(0);
  expectSilence();
}

TEST_F(DestroyedInside, TheStartedCallbackOfALookThatTheHostShows) {
  bench.engine().lightShowStartedCallback() = destroyed();
  EXPECT_EQ(bench.process(look(3)), PacketFate::engineGone);
  expectSilence();
}

TEST_F(DestroyedInside, ACallbackWithinACallback) {
  std::vector<PacketFate> fates;
  bench.engine().lightShowStartedCallback() = [&] {
    ShowEngine& engine = bench.engine();
    engine.lightShowStartedCallback() = destroyed();
    fates.push_back(engine.processEffect(look(4)));
  };
  fates.push_back(bench.process(look(3)));
  EXPECT_THAT(fates, ElementsAre(PacketFate::engineGone, PacketFate::engineGone));
  expectSilence();
}

TEST_F(DestroyedInside, ACallbackThatMakesAnotherEngineInItsPlace) {
  EngineBench other;
  bench.engine().lightShowStartedCallback() = [&] {
    destroy();
    other.process(look(1));
  };
  hear(3);
  EXPECT_EQ(other.screen().currentMode, 1U);
  expectSilence();
}

// The callback of a screen that the host has presented, and of whoever else listens.
struct Dismissed final : ApplicationObserver {
  explicit Dismissed(std::function<void()> act) : act_(std::move(act)) {}
  void handleOrientationChange() override {}
  void appDidBecomeActive() override { act_(); }
  void appWillResignActive() override { act_(); }
  void presentedScreensDismissed() override { act_(); }

 private:
  std::function<void()> act_;
};

TEST_F(DestroyedInside, TheDismissalOfWhatIsPresented) {
  Dismissed host(destroyed());
  bench.phone.application.addObserver(host);
  hear(3);
  bench.phone.application.removeObserver(host);
  expectSilence();
}

TEST(DestroyedByAnotherObserver, WhenTheApplicationBecomesActive) {
  EngineBench bench;
  Dismissed host([&] { bench.destroyEngine(); });
  bench.phone.application.addObserver(host);
  bench.phone.application.becomeActive();
  bench.phone.application.removeObserver(host);
  bench.take();
  bench.phone.application.resignActive();
  EXPECT_THAT(bench.take(), IsEmpty());
}

TEST(DestroyedByAnotherObserver, ThatWasThereBeforeTheEngine) {
  EngineBench bench({.isViewLoaded = false});
  Dismissed host([&] { bench.destroyEngine(); });
  bench.phone.application.addObserver(host);
  bench.engine().viewDidLoad();
  bench.take();
  bench.phone.application.resignActive();
  bench.phone.application.removeObserver(host);
  EXPECT_THAT(bench.take(), ElementsAre("stopObserving")) << "it is told of nothing";
}

// A face that outlives the show it draws.
struct Face final : LightObserver {
  void lightChanged() override {}
  void lightEnds() override { ++ends; }
  int ends = 0;
};

TEST(LightThatEnds, TellsItsObserver) {
  EngineBench bench;
  Face face;
  bench.controller().light().setObserver(&face);
  bench.destroyEngine();
  EXPECT_EQ(face.ends, 1);
}

// Whoever keeps an engine's address asks before using it.
TEST(EngineWitness, KnowsOfItsEnd) {
  EngineBench bench;
  const Witness first(bench.engine().life());
  {
    const Witness leaves(bench.engine().life());
    EXPECT_FALSE(leaves.isGone());
  }
  const Witness second(bench.engine().life());
  EXPECT_FALSE(first.isGone());
  bench.destroyEngine();
  EXPECT_TRUE(first.isGone());
  EXPECT_TRUE(second.isGone());
}

}  // namespace
}  // namespace halvora
