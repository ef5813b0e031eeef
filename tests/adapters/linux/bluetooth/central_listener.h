// SPDX-License-Identifier: Apache-2.0
// A delegate that writes down what a central told it. Owned by the test.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "halvora/platform/bluetooth.h"

namespace halvora {

class CentralListener final : public CentralManagerDelegate {
 public:
  void centralManagerDidUpdateState(CentralState state) override {
    states.push_back(state);
    if (onState) onState(state);
  }
  void didDiscoverPeripheral(const Advertisement& advertisement) override {
    const auto& data = advertisement.manufacturerData;
    packets.push_back(data ? std::vector<std::uint8_t>(data->begin(), data->end())
                           : std::vector<std::uint8_t>());
    if (onPacket) onPacket();
  }
  CentralState last() const { return states.empty() ? CentralState::unknown : states.back(); }

  std::vector<CentralState> states;
  std::vector<std::vector<std::uint8_t>> packets;
  std::function<void(CentralState)> onState;
  std::function<void()> onPacket;
};

}  // namespace halvora
