// SPDX-License-Identifier: Apache-2.0
// What one advertisement costs, from the radio's hand-over to the verdict: by the engine, by the
// plain text reference ("text") and by the same with the digits from a table ("tabledText").
#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "adapters/standard/seeded_random.h"
#include "bench/heap_count.h"
#include "bench/packet_listeners.h"

namespace halvora {

namespace {

const std::vector<std::string> kAllowed = {"4242:1", "4242:2",  "4242:3",   "4242:255", "77:1",
                                           "77:2",   "900:255", "65535:12", "0:1"};
constexpr std::array<std::uint8_t, 26> kOtherMaker = {
    0x4C, 0x00, 0x02, 0x15, 0x3E, 0x9A, 0x51, 0x0B, 0x77, 0xC4, 0x42, 0xD0, 0x8F,
    0x16, 0xE2, 0x5D, 0x30, 0xA9, 0x6B, 0x1C, 0x00, 0x07, 0x01, 0x2C, 0xC5, 0x00};

Broadcast steadyLook() {
  Broadcast look;
  look.applicationId = 4242;
  look.venueId = 7;
  look.master = 200;
  look.red = 255;
  look.green = 180;
  look.blue = 107;
  look.mode = 1;
  look.sequence = 1;
  look.transmitter = 3;
  return look;
}

// Every verdict, the limits of the sequence's wrap, and a few thousand packets of chance.
std::vector<std::vector<std::uint8_t>> packetsOfAllKinds() {
  std::vector<std::vector<std::uint8_t>> packets;
  const auto add = [&](const Broadcast& look, std::size_t size = kShortestBroadcast) {
    const BroadcastBytes bytes = encodeBroadcast(look);
    packets.emplace_back(bytes.begin(), bytes.end() - 1);
    packets.back().resize(size - 1);
    packets.back().push_back(bytes.back());
  };
  packets.push_back({});
  packets.push_back({0x09});
  packets.push_back({0x09, 0xC9});
  packets.push_back({0xC9, 0x09, 0x00});
  packets.emplace_back(kOtherMaker.begin(), kOtherMaker.end());

  Broadcast look = steadyLook();
  constexpr std::uint16_t kSequences[] = {1, 1, 2, 0, 60000, 100, 60001, 56000, 55999, 65535, 0};
  for (const std::uint16_t sequence : kSequences) {
    look.sequence = sequence;
    add(look);
  }
  add(look, 25);
  look.sequence = 9000;
  add(look, 31);

  SeededRandom random(20261121);
  const auto one = [&](std::initializer_list<std::uint16_t> of) {
    return of.begin()[random.below(static_cast<std::uint32_t>(of.size()))];
  };
  for (int round = 0; round < 4000; ++round) {
    look.applicationId = one({4242, 4242, 4242, 77, 900, 65535, 0});
    look.transmitter = static_cast<std::uint8_t>(one({1, 2, 3, 12, 255}));
    look.syncFlag = static_cast<std::uint8_t>(one({0, 0, 0, 2, 1, 255}));
    look.mode = static_cast<std::uint8_t>(one({0, 1, 1, 9, 10, 11}));
    look.red = static_cast<std::uint8_t>(random.below(4) * 85);
    look.sequence = static_cast<std::uint16_t>(look.sequence + random.below(12) * 20 - 40);
    add(look, 26 + random.below(2) * 5);
  }
  return packets;
}

template <class Reference>
void requireSameVerdicts(const std::vector<std::string>& allowed, PacketFate neverMet) {
  EngineListener engine(allowed);
  Reference reference(allowed);
  engine.advertise({});
  reference.advertise({});
  std::size_t at = 0;
  for (const auto& packet : packetsOfAllKinds()) {
    if (++at % 7 == 0) {
      engine.resetRangeCount();
      reference.resetRangeCount();
    }
    engine.advertise({packet});
    reference.advertise({packet});
    require(engine.heard() == reference.heard(),
            "engine and reference differ after " + NSDataToHex(packet));
  }
  // A verdict that no packet met has not been compared; nothing is short of memory here.
  for (std::size_t fate = 0; fate < kPacketFateCount; ++fate) {
    const auto which = static_cast<PacketFate>(fate);
    if (which == PacketFate::failed || which == PacketFate::doubted) continue;
    const bool isMet = engine.count(static_cast<PacketFate>(fate)) > 0;
    require(isMet != (static_cast<PacketFate>(fate) == neverMet),
            "verdict " + std::to_string(fate) + " is not met as it should be");
  }
}

void requireSameVerdictsOnce() {
  static const bool kDone = [] {
    requireSameVerdicts<PrintedTextListener>({}, PacketFate::notAllowed);
    requireSameVerdicts<PrintedTextListener>(kAllowed, PacketFate::silenced);
    requireSameVerdicts<TabledTextListener>({}, PacketFate::notAllowed);
    requireSameVerdicts<TabledTextListener>(kAllowed, PacketFate::silenced);
    return true;
  }();
  static_cast<void>(kDone);
}

// Hands in `data` again and again, changed by `change` before each time; every one of them must
// meet `fate`.
template <class Change>
void measure(benchmark::State& state, auto& listener, std::span<std::uint8_t> data, PacketFate fate,
             Change change) {
  requireSameVerdictsOnce();
  const std::uint64_t before = listener.count(fate);
  {
    const AllocationsAnIteration allocations(state);
    for (auto _ : state) {
      change();
      benchmark::DoNotOptimize(data.data());
      benchmark::ClobberMemory();
      listener.advertise({data});
    }
  }
  require(listener.count(fate) - before == static_cast<std::uint64_t>(state.iterations()),
          "a packet met another fate");
}

constexpr auto kNoChange = [] {};

void setSequence(BroadcastBytes& data, std::uint16_t sequence) {
  data[kSequenceOffset] = static_cast<std::uint8_t>(sequence >> 8);
  data[kSequenceOffset + 1] = static_cast<std::uint8_t>(sequence);
}

template <class Listener>
void otherMaker(benchmark::State& state) {
  Listener listener;
  auto data = kOtherMaker;
  measure(state, listener, data, PacketFate::otherMaker, kNoChange);
}

template <class Listener>
void staleSequence(benchmark::State& state) {
  Listener listener;
  BroadcastBytes data = encodeBroadcast(steadyLook());
  listener.advertise({data});
  measure(state, listener, data, PacketFate::staleSequence, kNoChange);
}

template <class Listener>
void sameBroadcast(benchmark::State& state) {
  Listener listener;
  BroadcastBytes data = encodeBroadcast(steadyLook());
  listener.advertise({data});
  std::uint16_t sequence = steadyLook().sequence;
  measure(state, listener, data, PacketFate::sameBroadcast, [&] { setSequence(data, ++sequence); });
}

template <class Listener>
void notAllowed(benchmark::State& state) {
  Listener listener(kAllowed);
  Broadcast look = steadyLook();
  look.transmitter = 9;
  BroadcastBytes data = encodeBroadcast(look);
  measure(state, listener, data, PacketFate::notAllowed, kNoChange);
}

template <class Listener>
void newColour(benchmark::State& state) {
  Listener listener;
  BroadcastBytes data = encodeBroadcast(steadyLook());
  listener.advertise({data});
  constexpr std::size_t kRed = 8;
  std::uint16_t sequence = steadyLook().sequence;
  measure(state, listener, data, PacketFate::processed, [&] {
    setSequence(data, ++sequence);
    data[kRed] ^= 0x55;
  });
}

template <class Listener>
void newPalette(benchmark::State& state) {
  Listener listener;
  BroadcastBytes data = encodeBroadcast(steadyLook());
  listener.advertise({data});
  constexpr std::size_t kPalette = 22;
  std::uint16_t sequence = steadyLook().sequence;
  measure(state, listener, data, PacketFate::processed, [&] {
    setSequence(data, ++sequence);
    data[kPalette] = static_cast<std::uint8_t>(data[kPalette] % 50 + 1);
  });
}

template <class Listener>
bool addAll(const std::string& who) {
  const auto add = [&](const char* topic, void (*run)(benchmark::State&)) {
    benchmark::RegisterBenchmark((topic + ("/" + who)).c_str(), run);
  };
  add("OtherMaker", otherMaker<Listener>);
  add("StaleSequence", staleSequence<Listener>);
  add("SameBroadcast", sameBroadcast<Listener>);
  add("NotAllowed", notAllowed<Listener>);
  add("NewColour", newColour<Listener>);
  add("NewPalette", newPalette<Listener>);
  return true;
}

[[maybe_unused]] const bool kAdded = addAll<EngineListener>("engine") &&
                                     addAll<PrintedTextListener>("text") &&
                                     addAll<TabledTextListener>("tabledText");

}  // namespace

}  // namespace halvora
