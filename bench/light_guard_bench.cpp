// SPDX-License-Identifier: Apache-2.0
// What a frame costs a face in its list of things to draw: as the show sends it ("plain"), with the
// flash limit that decides about it ("engine"), and with nothing new to decide. Beside them the
// least that painting such a frame can be: one fill of its pixels in a processor's memory.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
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

class Canvas {
 public:
  void fill() {
    std::fill(pixels_.begin(), pixels_.end(), ++colour_);
    benchmark::DoNotOptimize(pixels_.data());
    benchmark::ClobberMemory();
  }

 private:
  std::vector<std::uint32_t> pixels_ =
      std::vector<std::uint32_t>(static_cast<std::size_t>(kScreen.width * kScreen.height));
  std::uint32_t colour_ = 0xFF000000;
};

void fill(benchmark::State& state) {
  Canvas canvas;
  for (auto _ : state) canvas.fill();
}

// Processor time of one call, in nanoseconds: the median of those that a run has seen.
class Cost {
 public:
  template <class Act>
  void add(int calls, const Act& act) {
    const std::clock_t before = std::clock();
    for (int call = 0; call < calls; ++call) act();
    const auto spent = static_cast<double>(std::clock() - before);
    costs_.push_back(spent / CLOCKS_PER_SEC * 1e9 / calls);
  }
  double median() {
    const auto middle = costs_.begin() + static_cast<std::ptrdiff_t>(costs_.size() / 2);
    std::nth_element(costs_.begin(), middle, costs_.end());
    return *middle;
  }

 private:
  std::vector<double> costs_;
};

// What the limit adds to a frame as a part of one fill, in one run: the three in turn, so that
// whatever else the machine does meets them all alike.
void share(benchmark::State& state, const FrameCase& frame) {
  constexpr int kFrames = 2000;
  constexpr int kFills = 50;
  FramedPhone plain(frame, FlashPolicy::exact);
  FramedPhone limited(frame, FlashPolicy::limited);
  Canvas canvas;
  Cost withLimit;
  Cost without;
  Cost ofFill;
  for (auto _ : state) {
    without.add(kFrames, [&] { plain.frame(frame.between); });
    withLimit.add(kFrames, [&] { limited.frame(frame.between); });
    ofFill.add(kFills, [&] { canvas.fill(); });
  }
  const double added = withLimit.median() - without.median();
  state.counters["added_ns"] = added;
  state.counters["fill_ns"] = ofFill.median();
  state.counters["percent_of_fill"] = 100 * added / ofFill.median();
}

bool addAll() {
  benchmark::RegisterBenchmark("GuardedFill", fill);
  for (const FrameCase* frame : {&kMoving, &kStrobe, &kStill}) {
    const std::string name = frame->name;
    benchmark::RegisterBenchmark((name + "/engine").c_str(), frames, *frame, FlashPolicy::limited);
    benchmark::RegisterBenchmark((name + "/share").c_str(), share, *frame);
    benchmark::RegisterBenchmark((name + "/plain").c_str(), frames, *frame, FlashPolicy::exact);
  }
  return true;
}

[[maybe_unused]] const bool kAdded = addAll();

}  // namespace

}  // namespace halvora
