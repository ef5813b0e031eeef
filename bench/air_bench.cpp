// SPDX-License-Identifier: Apache-2.0
// What a packet costs an engine that does not take the air exactly: one that is foreign, one with a
// tag, good or bad, and one of the show in guarded air.
#include <array>
#include <cstdint>
#include <span>

#include <benchmark/benchmark.h>

#include "adapters/nettle/nettle_codes.h"
#include "bench/bench_phone.h"
#include "bench/require.h"
#include "engine/signed_broadcast.h"

namespace halvora {
namespace {

ShowKey benchKey() { return ShowKey(std::array<std::uint8_t, ShowKey::kSize>{7}); }

class AirPhone {
 public:
  explicit AirPhone(const AirOptions& air) : engine_(platform(), options(air)) {
    keepNoLogs(phone_);
    engine_.viewDidLoad();
    engine_.start();
    phone_.loop.runUntil(milliseconds(2000));
  }

  void hear(std::span<const std::uint8_t> data) { phone_.bluetooth.advertise({data}); }
  SignedBroadcastBytes signedPacket(std::uint16_t sequence) {
    Broadcast look;
    look.applicationId = 258;
    look.venueId = 7;
    look.mode = 1;
    look.master = look.red = 255;
    look.sequence = sequence;
    look.transmitter = 7;
    return signBroadcast(look, epochOf(phone_.wallClock.now()), *code_);
  }
  const ScanDiagnostics& counts() const { return engine_.diagnostics(); }
  AirDiagnostics air() const { return engine_.airDiagnostics(); }

 private:
  Platform platform() {
    Platform platform = phone_.platform();
    platform.codes = codes_;
    return platform;
  }
  static ShowEngineOptions options(const AirOptions& air) {
    ShowEngineOptions options;
    options.air = air;
    return options;
  }

  NettleCodes codes_;
  std::unique_ptr<MessageCode> code_ = codes_.withKey(benchKey());
  ExactJsonReader json_;
  VirtualPhone phone_{json_};
  ShowEngine engine_;
};

AirOptions guarded() { return {.policy = AirPolicy::guarded}; }
AirOptions required() {
  return {.policy = AirPolicy::guarded,
          .authentication = Authentication::require,
          .showKey = benchKey()};
}

void foreignPacket(benchmark::State& state) {
  AirPhone phone(required());
  std::array<std::uint8_t, 20> data{0x4C, 0x00, 0x10, 0x05};
  for (auto _ : state) {
    benchmark::DoNotOptimize(data.data());
    phone.hear(data);
  }
  require(phone.counts()[PacketFate::otherMaker] >= static_cast<std::uint64_t>(state.iterations()),
          "a foreign packet was taken for ours");
}

void guardedRepeat(benchmark::State& state) {
  AirPhone phone(guarded());
  const auto data = phone.signedPacket(1);
  for (auto _ : state) phone.hear(data);
  require(phone.counts()[PacketFate::staleSequence] + 1 >=
              static_cast<std::uint64_t>(state.iterations()),
          "a repeat was no repeat");
}

void goodTagRepeated(benchmark::State& state) {
  AirPhone phone(required());
  const auto data = phone.signedPacket(1);
  for (auto _ : state) phone.hear(data);
  require(phone.air().goodTags == static_cast<std::uint64_t>(state.iterations()),
          "a good tag was not");
}

// Two packets in turn, so that each is checked.
void goodTag(benchmark::State& state) {
  AirPhone phone(required());
  const std::array data{phone.signedPacket(1), phone.signedPacket(2)};
  std::size_t at = 0;
  for (auto _ : state) phone.hear(data[++at % 2]);
  require(phone.air().goodTags == static_cast<std::uint64_t>(state.iterations()),
          "a good tag was not");
}

void badTag(benchmark::State& state) {
  AirPhone phone(required());
  auto data = phone.signedPacket(1);
  data[kTagOffset] ^= 1;
  for (auto _ : state) phone.hear(data);
  require(phone.air()[AirDoubt::badTag] == static_cast<std::uint64_t>(state.iterations()),
          "a bad tag was good");
}

BENCHMARK(foreignPacket)->Name("Air/ForeignPacket");
BENCHMARK(guardedRepeat)->Name("Air/GuardedRepeat");
BENCHMARK(goodTagRepeated)->Name("Air/GoodTagRepeated");
BENCHMARK(goodTag)->Name("Air/GoodTag");
BENCHMARK(badTag)->Name("Air/BadTag");

}  // namespace
}  // namespace halvora
