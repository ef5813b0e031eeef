// SPDX-License-Identifier: Apache-2.0
// An engine on a virtual phone whose host asks for more than the newest packet, with a clock of
// minutes and a key. A test owns one.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "engine/signed_broadcast.h"
#include "tests/engine/engine_bench.h"
#include "tests/support/plain_codes.h"

namespace halvora {

inline ShowKey testKey(std::uint8_t first = 1) {
  std::array<std::uint8_t, ShowKey::kSize> bytes{};
  bytes[0] = first;
  return ShowKey(bytes);
}

inline AirOptions guardedAir() { return {.policy = AirPolicy::guarded}; }
inline AirOptions signedAir(Authentication authentication, AirPolicy policy = AirPolicy::exact) {
  return {.policy = policy, .authentication = authentication, .showKey = testKey()};
}

class AirBench {
 public:
  explicit AirBench(const AirOptions& air) : engine_(platform(), options(air)) {
    engine_.viewDidLoad();
    engine_.start();
    runTo(2000);
  }

  ShowEngine& engine() { return engine_; }
  const EngineState& state() const { return engine_.state(); }
  unsigned mode() const { return static_cast<unsigned>(state().screen.currentMode); }
  AirDiagnostics air() const { return engine_.airDiagnostics(); }
  std::uint64_t doubts(AirDoubt doubt) const { return air()[doubt]; }
  AirTrust trust() const { return engine_.airTrust(); }
  std::uint32_t epoch() const { return epochOf(phone.wallClock.now()); }

  void runTo(long long time) { phone.loop.runUntil(milliseconds(time)); }
  void runFor(long long time) { phone.loop.runUntil(phone.loop.now() + milliseconds(time)); }
  long long now() const { return phone.loop.now() / milliseconds(1); }

  void hear(const std::vector<std::uint8_t>& data) { phone.bluetooth.advertise(data); }
  void hear(const Broadcast& fields) {
    const BroadcastBytes data = encodeBroadcast(fields);
    hear(std::vector<std::uint8_t>(data.begin(), data.end()));
  }
  /// Signed by whoever has that key, some minutes from now.
  void hearSigned(const Broadcast& fields, int minutes = 0, std::uint8_t key = 1) {
    hear(signedData(fields, minutes, key));
  }
  std::vector<std::uint8_t> signedData(const Broadcast& fields, int minutes = 0,
                                       std::uint8_t key = 1) const {
    const auto code = codes.withKey(testKey(key));
    const auto minute = static_cast<std::uint32_t>(static_cast<int>(epoch()) + minutes);
    const auto data = signBroadcast(fields, minute, *code);
    return {data.begin(), data.end()};
  }
  /// The look again and again, a tenth of a second apart, for so long; with other packets between.
  void repeat(const Broadcast& fields, long long time, const std::function<void()>& between = {}) {
    for (const long long end = now() + time; now() < end; runFor(100)) {
      hear(fields);
      if (between) between();
    }
  }

  PlainCodes codes;
  VirtualPhone phone{json_};

 private:
  Platform platform() {
    Platform platform = phone.platform();
    platform.codes = codes;
    return platform;
  }
  static ShowEngineOptions options(const AirOptions& air) {
    ShowEngineOptions options;
    options.air = air;
    return options;
  }

  static inline const ExactJsonReader json_{};
  ShowEngine engine_;
};

/// A steady look of transmitter 258:7 in the venue 7, red by its mode.
inline Broadcast trueLook(int sequence, int mode = 1, Changes changes = {}) {
  return changed(look(mode, {{&Broadcast::sequence, sequence}, {&Broadcast::venueId, 7}}), changes);
}

}  // namespace halvora
