// SPDX-License-Identifier: Apache-2.0
// What a packet costs an engine that does not take the air exactly: one that is foreign, one with a
// tag, good or bad, alone and in a flood, and one of the show in guarded air; each beside an engine
// that takes it exactly. And what the torch costs where the air may be changed.
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
  explicit AirPhone(const AirOptions& air, bool mayChangeAir = false)
      : engine_(platform(), options(air, mayChangeAir)) {
    keepNoLogs(phone_);
    engine_.viewDidLoad();
    engine_.start();
    phone_.loop.runUntil(milliseconds(2000));
  }

  void hear(std::span<const std::uint8_t> data) { phone_.bluetooth.advertise({data}); }
  void run(Duration time) { phone_.loop.runUntil(phone_.loop.now() + time); }
  bool isTorchOn() const { return phone_.torch.isOn; }
  SignedBroadcastBytes signedPacket(std::uint16_t sequence, std::uint8_t torch = 0) {
    Broadcast look;
    look.ledMode = torch;
    look.ledSpeed = torch != 0 ? 255 : 0;
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
  static ShowEngineOptions options(const AirOptions& air, bool mayChangeAir) {
    ShowEngineOptions options;
    options.air = air;
    options.mayChangeAir = mayChangeAir;
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

void foreignPacket(benchmark::State& state, const AirOptions& air) {
  AirPhone phone(air);
  std::array<std::uint8_t, 20> data{0x4C, 0x00, 0x10, 0x05};
  for (auto _ : state) {
    benchmark::DoNotOptimize(data.data());
    phone.hear(data);
  }
  require(phone.counts()[PacketFate::otherMaker] >= static_cast<std::uint64_t>(state.iterations()),
          "a foreign packet was taken for ours");
}

void repeated(benchmark::State& state, const AirOptions& air) {
  AirPhone phone(air);
  const auto data = phone.signedPacket(1);
  for (auto _ : state) phone.hear(data);
  require(phone.counts()[PacketFate::staleSequence] + 1 >=
              static_cast<std::uint64_t>(state.iterations()),
          "a repeat was no repeat");
}

// The same look under the next number, again and again.
void nextNumber(benchmark::State& state, const AirOptions& air) {
  AirPhone phone(air);
  auto data = phone.signedPacket(1);
  phone.hear(data);
  std::uint16_t sequence = 1;
  for (auto _ : state) {
    // Numbers go round, and 0 is no number.
    sequence = static_cast<std::uint16_t>(sequence == 0xFFFF ? 1 : sequence + 1);
    data[kSequenceOffset] = static_cast<std::uint8_t>(sequence >> 8);
    data[kSequenceOffset + 1] = static_cast<std::uint8_t>(sequence & 0xFF);
    phone.hear(data);
  }
  require(
      phone.counts()[PacketFate::sameBroadcast] >= static_cast<std::uint64_t>(state.iterations()),
      "a new number was none");
}

void goodTagRepeated(benchmark::State& state) {
  AirPhone phone(required());
  const auto data = phone.signedPacket(1);
  for (auto _ : state) phone.hear(data);
  require(phone.air().goodTags == static_cast<std::uint64_t>(state.iterations()),
          "a good tag was not");
}

// Two packets in turn, so that each is checked; among so many bad ones.
void goodTag(benchmark::State& state, int flood) {
  AirPhone phone(required());
  const std::array data{phone.signedPacket(1), phone.signedPacket(2)};
  auto bad = data[0];
  bad[kTagOffset] ^= 1;
  for (int at = 0; at < flood; ++at) phone.hear(bad);
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

// A tenth of a second of the torch's strobe.
void torchStrobe(benchmark::State& state, bool mayChangeAir) {
  AirPhone phone(AirOptions{}, mayChangeAir);
  phone.hear(phone.signedPacket(1, 5));
  bool wasLit = false;
  for (int at = 0; at < 100; ++at) {
    phone.run(milliseconds(7));
    wasLit = wasLit || phone.isTorchOn();
  }
  for (auto _ : state) {
    phone.run(milliseconds(100));
    // Else the show is dropped.
    state.PauseTiming();
    phone.hear(phone.signedPacket(1, 5));
    state.ResumeTiming();
  }
  require(wasLit, "the torch was never lit");
}

BENCHMARK_CAPTURE(foreignPacket, required, required())->Name("Air/ForeignPacket/required");
BENCHMARK_CAPTURE(foreignPacket, exact, AirOptions{})->Name("Air/ForeignPacket/exact");
BENCHMARK_CAPTURE(repeated, guarded, guarded())->Name("Air/Repeat/guarded");
BENCHMARK_CAPTURE(repeated, exact, AirOptions{})->Name("Air/Repeat/exact");
BENCHMARK_CAPTURE(nextNumber, guarded, guarded())->Name("Air/NextNumber/guarded");
BENCHMARK_CAPTURE(nextNumber, exact, AirOptions{})->Name("Air/NextNumber/exact");
BENCHMARK(goodTagRepeated)->Name("Air/GoodTagRepeated");
BENCHMARK_CAPTURE(goodTag, alone, 0)->Name("Air/GoodTag/alone");
BENCHMARK_CAPTURE(goodTag, flooded, 10'000)->Name("Air/GoodTag/flooded");
BENCHMARK_CAPTURE(torchStrobe, fixed, false)->Name("Air/TorchStrobe/fixed");
BENCHMARK_CAPTURE(torchStrobe, changeable, true)->Name("Air/TorchStrobe/changeable");
BENCHMARK(badTag)->Name("Air/BadTag");

}  // namespace
}  // namespace halvora
