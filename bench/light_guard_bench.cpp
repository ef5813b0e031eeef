// SPDX-License-Identifier: Apache-2.0
// What a frame costs a face in its list of things to draw: as the show sends it ("plain"), with the
// flash limit that decides about it ("engine"), and with nothing new to decide. Beside them the
// least that painting such a frame can be: one fill of its pixels in a processor's memory.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_phone.h"
#include "bench/require.h"
#include "light/display_list.h"

namespace halvora {

namespace {

constexpr Size kScreen{390, 844};
constexpr Duration kFrame{16'667};

struct FrameCase {
  const char* name;
  std::uint8_t mode;
  /// How far the show goes between two frames.
  Duration between;
};
constexpr FrameCase kMoving{"GuardedCrossfadeFrame", 17, kFrame};
constexpr FrameCase kStrobe{"GuardedStrobeFrame", 5, kFrame};
constexpr FrameCase kStill{"GuardedStillFrame", 1, Duration::zero()};

struct FramedPhone : BenchPhone {
  FramedPhone(const FrameCase& frame, FlashPolicy policy) {
    engine.setLimits({.flash = policy});
    Broadcast look;
    look.applicationId = 1;
    look.master = 255;
    look.red = 255;
    look.mode = frame.mode;
    look.speed = 255;
    look.paletteId = frame.mode == 17 ? 1 : 0;
    look.ledMode = frame.mode == 5 ? 5 : 0;
    require(engine.processEffect(look) == PacketFate::processed, "the look is not shown");
    loop().runFor(milliseconds(3000));
  }
  void frame(Duration between) {
    if (between > Duration::zero()) loop().runFor(between);
    benchmark::DoNotOptimize(displayListOf(engine.views(), kScreen));
  }
};

void frames(benchmark::State& state, const FrameCase& frame, FlashPolicy policy) {
  FramedPhone phone(frame, policy);
  require((phone.engine.views().filter() != nullptr) == (policy == FlashPolicy::limited),
          "the limit is not where it is measured");
  for (auto _ : state) phone.frame(frame.between);
}

void fill(benchmark::State& state) {
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(kScreen.width * kScreen.height));
  std::uint32_t colour = 0xFF000000;
  for (auto _ : state) {
    std::fill(pixels.begin(), pixels.end(), ++colour);
    benchmark::DoNotOptimize(pixels.data());
    benchmark::ClobberMemory();
  }
}

bool addAll() {
  benchmark::RegisterBenchmark("GuardedFill", fill);
  for (const FrameCase* frame : {&kMoving, &kStrobe, &kStill}) {
    const std::string name = frame->name;
    benchmark::RegisterBenchmark((name + "/engine").c_str(), frames, *frame, FlashPolicy::limited);
    benchmark::RegisterBenchmark((name + "/plain").c_str(), frames, *frame, FlashPolicy::exact);
  }
  return true;
}

[[maybe_unused]] const bool kAdded = addAll();

}  // namespace

}  // namespace halvora
