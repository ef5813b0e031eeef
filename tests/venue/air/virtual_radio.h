// SPDX-License-Identifier: Apache-2.0
// A radio for the commands that listen: what is on its air is written down beforehand, in virtual
// time. Owned by a test.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "adapters/virtual/virtual_bluetooth.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "venue/air/radio.h"

namespace halvora {

struct VirtualAir {
  struct Packet {
    long long at;
    std::string bytes;
  };
  CentralState state = CentralState::poweredOn;
  RadioAdapters adapters = {};
  std::vector<Packet> packets;
  std::map<long long, std::function<void(VirtualBluetooth&)>> acts;
  /// Ctrl-C.
  long long interruptedAt = -1;
};

class VirtualRadio final : public Radio {
 public:
  VirtualRadio(const VirtualAir& air, std::atomic<bool>& isInterrupted) : air_(air) {
    radio_.setState(air.state);
    for (const VirtualAir::Packet& packet : air.packets) {
      loop_.after(milliseconds(packet.at), [this, &packet] {
        const std::vector<std::uint8_t> bytes(packet.bytes.begin(), packet.bytes.end());
        radio_.advertise(std::span<const std::uint8_t>(bytes));
      });
    }
    for (const auto& [at, act] : air.acts) {
      loop_.after(milliseconds(at), [this, &act = act] { act(radio_); });
    }
    if (air.interruptedAt >= 0) {
      loop_.after(milliseconds(air.interruptedAt), [&isInterrupted] { isInterrupted = true; });
    }
  }
  RunLoop& loop() override { return loop_; }
  Date date() const override { return VirtualWallClock(loop_).now(); }
  BluetoothCentral& bluetooth() override { return radio_; }
  RadioAdapters adapters() const override { return air_.adapters; }
  void runUntil(const std::function<bool()>& isDone) override {
    while (!isDone() && loop_.now() < std::chrono::hours(1)) loop_.runFor(milliseconds(1));
  }

 private:
  const VirtualAir& air_;
  VirtualRunLoop loop_;
  VirtualBluetooth radio_{loop_};
};

}  // namespace halvora
