// SPDX-License-Identifier: Apache-2.0
// Any packets at any times at the gate of an engine with a key, in guarded air: what it may never
// do, whatever is sent.
#include <algorithm>
#include <numeric>
#include <optional>
#include <vector>

#include "engine/air_gate.h"
#include "tests/fuzz/fuzz_targets.h"
#include "tests/support/plain_codes.h"

namespace halvora {

namespace {

using Act = AirVerdict::Act;
using Data = std::vector<std::uint8_t>;

constexpr std::uint16_t kPinned = 1;

ShowKey keyOf(std::uint8_t first) {
  std::array<std::uint8_t, ShowKey::kSize> bytes{};
  bytes[0] = first;
  return ShowKey(bytes);
}

AirOptions optionsOf(int choice) {
  AirOptions options;
  options.policy = choice % 2 == 0 ? AirPolicy::guarded : AirPolicy::exact;
  options.authentication = static_cast<Authentication>(choice / 2 % 3);
  options.showKey = keyOf(1);
  if (choice / 8 % 2 == 1) options.applicationId = kPinned;
  return options;
}

std::uint64_t sumOf(const AirDiagnostics& diagnostics) {
  return std::accumulate(diagnostics.doubts.begin(), diagnostics.doubts.end(), std::uint64_t{0});
}

class Clock final : public WallClock {
 public:
  Date now() const override { return {seconds}; }
  double seconds = 1e9;
};

class GateRun {
 public:
  explicit GateRun(int choice) : options_(optionsOf(choice)), gate_(options_, codes_) {}

  void step(FuzzInput& input) {
    const int act = input.byte();
    if (act < 176) {
      hear(craft(input, act));
    } else if (act < 240) {
      pass(milliseconds(1LL << act % 16));
    } else if (act < 248) {
      gate_.refresh(now_);
    } else {
      gate_.reset(now_);
      require(gate_.trust() != AirTrust::contested, "what was dropped is not contested");
    }
  }

 private:
  void pass(Duration time) {
    now_ += time;
    clock_.seconds += toSeconds(time);
  }

  // The packet before, changed in places, with the next number or any other; signed, or as if.
  Data craft(FuzzInput& input, int act) {
    for (int changes = act % 3; changes > 0; --changes) {
      packet_[2 + input.byte() % (packet_.size() - 2)] = input.byte();
    }
    if (act % 8 < 6) {
      const unsigned next = packet_[23] * 256U + packet_[24] + static_cast<unsigned>(act) % 4;
      packet_[23] = static_cast<std::uint8_t>(next >> 8);
      packet_[24] = static_cast<std::uint8_t>(next);
    }
    if (act % 16 < 6) return packet_;
    const auto code = codes_.withKey(keyOf(act % 16 < 14 ? 1 : 2));
    const auto minute = epochOf(clock_.now()) + static_cast<std::uint32_t>(input.byte() % 5) - 2;
    const auto whole = signBroadcast(decodeBroadcast(packet_), minute, *code);
    return {whole.begin(), whole.end()};
  }

  bool isProven(const Data& data) const {
    const auto whole = signedBroadcastIn(data);
    const auto code = codes_.withKey(keyOf(1));
    const std::uint32_t epoch = epochOf(clock_.now());
    return whole && (isTagGood(*whole, epoch - 1, *code) || isTagGood(*whole, epoch, *code) ||
                     isTagGood(*whole, epoch + 1, *code));
  }

  void hear(const Data& data) {
    const HeardPacket packet(data);
    const std::uint64_t doubts = sumOf(gate_.diagnostics());
    const AirVerdict verdict = gate_.judge(packet, now_, clock_);
    const bool isDoubted = verdict.act == Act::doubt || verdict.act == Act::hold;
    require(sumOf(gate_.diagnostics()) == doubts + (isDoubted ? 1 : 0), "a doubt is counted once");
    const bool isContested = gate_.trust() == AirTrust::contested;
    require(verdict.act != Act::hold || isContested, "only what is contested is held");
    const bool isTaken = verdict.act == Act::obey || verdict.act == Act::same;
    if (options_.authentication == Authentication::require) {
      require(!isTaken || isProven(data), "only what is proven is obeyed");
      require(verdict.act != Act::pass, "and nobody else is asked");
    }
    if (options_.policy == AirPolicy::exact) {
      require(!isContested, "nothing is contested where nobody compares");
      return;
    }
    require(verdict.act != Act::pass, "the guard has a word on everything");
    if (options_.authentication != Authentication::off) return;
    require(!isContested || !isTaken, "of a contested show nothing is obeyed");
    require(!isTaken || !options_.applicationId || packet.applicationId() == kPinned,
            "what the host has pinned stays");
  }

  AirOptions options_;
  PlainCodes codes_;
  Clock clock_;
  AirGate gate_;
  Duration now_ = milliseconds(1000);
  Data packet_ = {0x09, 0xC9, 0, kPinned, 0, 7, 0, 255, 9, 9, 9, 1, 128,
                  0,    0,    0, 0,       0, 0, 0, 0,   0, 0, 0, 1, 7};
};

}  // namespace

int fuzzAir(FuzzBytes bytes) {
  FuzzInput input(bytes);
  GateRun run(input.byte());
  while (!input.isEmpty()) run.step(input);
  return 0;
}

}  // namespace halvora
