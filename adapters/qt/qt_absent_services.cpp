// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_absent_services.h"

#include "adapters/standard/radio_manager.h"

namespace halvora {

namespace {

class AbsentManager final : public RadioManager {
 public:
  using RadioManager::RadioManager;
  CentralState state() const override { return CentralState::unsupported; }
};

}  // namespace

std::unique_ptr<CentralManager> AbsentBluetooth::makeManager(CentralManagerDelegate& delegate) {
  return std::make_unique<AbsentManager>(loop_, delegate);
}

}  // namespace halvora
