// SPDX-License-Identifier: Apache-2.0
// What an engine costs before any packet: to make it, load it and take it down again, and the
// memory that it holds in between. The phone that it runs on is not counted.
#include <string>

#include <benchmark/benchmark.h>

#include "bench/bench_phone.h"
#include "bench/heap_count.h"

namespace halvora {

namespace {

void startEngine(benchmark::State& state, const std::string& palettes) {
  const ExactJsonReader json;
  VirtualPhone phone(json);
  keepNoLogs(phone);
  if (!palettes.empty()) phone.mainBundle.resources["HVAssets/palettes.json"] = palettes;
  const Platform platform = phone.platform();
  // Once beforehand, so that what the phone keeps for the first engine is not taken for the
  // engine's own.
  ShowEngine(platform).viewDidLoad();
  {
    const HeapWatch watch;
    ShowEngine engine(platform);
    engine.viewDidLoad();
    state.counters["heapBytes"] = static_cast<double>(watch.bytesHeld());
    state.counters["objectBytes"] = static_cast<double>(sizeof(ShowEngine));
  }
  const AllocationsAnIteration allocations(state);
  for (auto _ : state) {
    ShowEngine engine(platform);
    engine.viewDidLoad();
    benchmark::DoNotOptimize(engine.palettes().data());
  }
}

BENCHMARK_CAPTURE(startEngine, bare, std::string())->Name("EngineStart");
BENCHMARK_CAPTURE(startEngine, palettes, benchPalettes())->Name("EngineStartPalettes");

}  // namespace

}  // namespace halvora
