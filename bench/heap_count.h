// SPDX-License-Identifier: Apache-2.0
// What this program takes from the heap. The benchmarks' program replaces operator new for it; the
// counts are the calling thread's own.
#pragma once

#include <cstdint>

#include <benchmark/benchmark.h>

namespace halvora {

/// Calls of operator new so far.
std::uint64_t heapAllocations();

/// While one lives, it adds up the bytes that operator new hands out and takes back, as the heap
/// rounds them. At most one at a time.
class HeapWatch {
 public:
  HeapWatch();
  ~HeapWatch();
  HeapWatch(const HeapWatch&) = delete;
  HeapWatch& operator=(const HeapWatch&) = delete;

  std::int64_t bytesHeld() const;
};

/// Notes, with a benchmark's result, how often one iteration went to the heap. Lives around the
/// iterations.
class AllocationsAnIteration {
 public:
  explicit AllocationsAnIteration(benchmark::State& state)
      : state_(state), before_(heapAllocations()) {}
  ~AllocationsAnIteration() {
    const auto made = static_cast<double>(heapAllocations() - before_);
    state_.counters["allocations"] = benchmark::Counter(made, benchmark::Counter::kAvgIterations);
  }
  AllocationsAnIteration(const AllocationsAnIteration&) = delete;
  AllocationsAnIteration& operator=(const AllocationsAnIteration&) = delete;

 private:
  benchmark::State& state_;
  std::uint64_t before_;
};

}  // namespace halvora
