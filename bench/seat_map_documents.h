// SPDX-License-Identifier: Apache-2.0
// Documents of 100,000 seats, and how a way of making a map of them is measured: only after it has
// made the same map as the kit.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

#include "bench/heap_count.h"
#include "bench/require.h"
#include "seats/seat_map.h"
#include "seats/seat_texts.h"

namespace halvora {

struct SeatMapDocuments {
  /// Lists of objects, as a program writes them and as people read them.
  std::string verbose;
  std::string indented;
  /// Objects by key, in the order of the keys and in that of the alphabet.
  std::string compact;
  std::string alphabetical;
};

/// Made once.
const SeatMapDocuments& seatMapDocuments();

inline const SeatMapTexts kPlainTexts;

/// Memory that was used once stays at hand from now on.
void keepHeap();

/// By the kit.
SeatMap seatMapOf(const std::string& document);

bool isSameMap(const SeatMap& left, const SeatMap& right);

/// Measures a way from a document to a map.
template <class MapOf>
void measureSeatMap(benchmark::State& state, const std::string& document, MapOf mapOf) {
  keepHeap();
  require(isSameMap(mapOf(document), seatMapOf(document)), "two ways give different seat maps");
  {
    const AllocationsAnIteration allocations(state);
    for (auto _ : state) {
      SeatMap map = mapOf(document);
      benchmark::DoNotOptimize(map);
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
}

/// Registers `run(state, document)` once a document, as "SeatMapVerbose/WHO" and so on.
template <class Run>
bool addForEachSeatMap(const std::string& who, Run run) {
  const auto add = [&](const char* topic, const std::string SeatMapDocuments::*document) {
    benchmark::RegisterBenchmark(
        (std::string(topic) + "/" + who).c_str(),
        [run, document](benchmark::State& state) { run(state, seatMapDocuments().*document); });
  };
  add("SeatMapVerbose", &SeatMapDocuments::verbose);
  add("SeatMapIndented", &SeatMapDocuments::indented);
  add("SeatMapCompact", &SeatMapDocuments::compact);
  add("SeatMapAlphabetical", &SeatMapDocuments::alphabetical);
  return true;
}

}  // namespace halvora
