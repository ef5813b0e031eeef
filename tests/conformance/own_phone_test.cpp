// SPDX-License-Identifier: Apache-2.0
// What the kit's own adapters have of a phone's small parts and of media, in memory and on the
// standard library, keeps what the conformance suite asks of anybody's. What libraries and systems
// serve is tested beside their other tests.
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/standard/seeded_random.h"
#include "adapters/standard/system_clock.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_media.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "adapters/virtual/virtual_video.h"
#include "conformance/media_promises.h"
#include "conformance/phone_promises.h"
#include "halvora/platform/absent.h"

namespace halvora {
namespace {

using namespace conformance;  // NOLINT(google-build-using-namespace): nothing else is tested here

void expectKept(const std::vector<BrokenPromise>& broken) {
  EXPECT_TRUE(broken.empty()) << textOf(broken);
}

/// A torch of the suite's that stands for one of ours, which is looked at when it has gone, too.
struct HandedOnTorch final : Torch {
  explicit HandedOnTorch(VirtualTorch& its) : torch(its) {}
  bool hasTorch() const override { return torch.hasTorch(); }
  bool hasFlash() const override { return torch.hasFlash(); }
  void setOn(bool on) override { torch.setOn(on); }
  VirtualTorch& torch;
};

TEST(ConformanceOfTorches, HoldsInMemory) {
  expectKept(checkTorch([] {
    auto lamp = std::make_shared<VirtualTorch>();
    VirtualTorch& its = *lamp;
    return TorchUnderTest{std::move(lamp), std::make_unique<HandedOnTorch>(its), [] {},
                          [&its] { return its.isOn; }};
  }));
  expectKept(checkNoTorch([] {
    auto torch = std::make_unique<VirtualTorch>();
    torch->isFitted = torch->isFlashFitted = false;
    return torch;
  }));
}

TEST(ConformanceOfHaptics, HoldsInMemory) {
  expectKept(checkHaptics([] {
    auto haptics = std::make_unique<VirtualHaptics>();
    VirtualHaptics& its = *haptics;
    return HapticsUnderTest{nullptr, std::move(haptics), [] {},
                            [&its] {
                              int felt = 0;
                              for (const HapticAct act : its.log.entries) {
                                if (act != HapticAct::dispose) ++felt;
                              }
                              return felt;
                            }};
  }));
}

TEST(ConformanceOfApplications, HoldsInMemory) {
  expectKept(checkApplication([] {
    auto application = std::make_unique<VirtualApplication>();
    VirtualApplication& its = *application;
    return ApplicationUnderTest{nullptr, std::move(application), [&its] { its.becomeActive(); },
                                [&its] { its.resignActive(); }};
  }));
}

TEST(ConformanceOfScreens, HoldsForTheAbsentOne) {
  struct Absent final : Screen {
    Size bounds() const override { return absent::screen().bounds(); }
    double brightness() const override { return absent::screen().brightness(); }
    void setBrightness(double level) override { absent::screen().setBrightness(level); }
    float currentEDRHeadroom() const override { return absent::screen().currentEDRHeadroom(); }
  };
  expectKept(checkFixedScreen([] { return std::make_unique<Absent>(); }));
}

TEST(ConformanceOfChance, HoldsForTheSeededOne) {
  expectKept(checkRandom([] { return std::make_unique<SeededRandom>(20261122); }));
}

TEST(ConformanceOfCalendars, HoldsForTheSystemsAndInMemory) {
  expectKept(checkCalendar([] { return std::make_unique<SystemCalendar>(); }));
  expectKept(checkCalendar([] { return std::make_unique<VirtualCalendar>(); }));
}

TEST(ConformanceOfPlayers, HoldsInMemory) {
  struct World {
    VirtualRunLoop loop;
    Log<VideoEvent> log;
  };
  expectKept(checkPlayer([] {
    auto world = std::make_shared<World>();
    World& its = *world;
    const auto work = [&its] { its.loop.runFor(milliseconds(10)); };
    return PlayerUnderTest{std::move(world),
                           std::make_unique<VirtualVideoPlayer>(its.loop, 'a', its.log),
                           {"3", "3.mp4"},
                           {"9", ""},
                           [work](const std::function<bool()>& /*isSo*/) { work(); },
                           work};
  }));
}

TEST(ConformanceOfVideos, HoldsInMemory) {
  expectKept(checkVideos([] {
    VirtualVideo video;
    video.width = video.height = 64;
    for (std::uint32_t frame = 0; frame < 12; ++frame) {
      const std::uint32_t left = 0xFF000000U | 0x111111U * frame;
      video.frames.push_back({frame / 25.0, [left](PixelPosition place) {
                                if (place.x < 32) return left;
                                return place.y < 32 ? 0xFFDC2828U : 0xFF2828DCU;
                              }});
    }
    video.durationSeconds = 12 / 25.0;
    auto assets = std::make_unique<VirtualVideoAssets>();
    assets->put("clip.mp4", std::move(video));
    return VideosUnderTest{std::move(assets), "clip.mp4", "text.mp4"};
  }));
}

}  // namespace
}  // namespace halvora
