// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_bluetooth.h"

#include <algorithm>

#include "adapters/standard/radio_manager.h"

namespace halvora {

class VirtualBluetooth::Manager final : public RadioManager {
 public:
  Manager(VirtualBluetooth& radio, CentralManagerDelegate& delegate)
      : RadioManager(radio.loop_, delegate), radio_(radio) {
    radio_.managers_.push_back(this);
  }
  ~Manager() override { radio_.forget(this); }

  CentralState state() const override { return radio_.state_; }
  void scanForPeripherals(const ScanOptions& options) override {
    RadioManager::scanForPeripherals(options);
    radio_.log.add(RadioAct::scanStarted);
  }
  void stopScan() override {
    RadioManager::stopScan();
    radio_.log.add(RadioAct::scanStopped);
  }
  void restartScan(const ScanOptions& options) override {
    RadioManager::scanForPeripherals(options);
    radio_.log.add(RadioAct::scanRestarted);
  }

 private:
  VirtualBluetooth& radio_;
};

std::unique_ptr<CentralManager> VirtualBluetooth::makeManager(CentralManagerDelegate& delegate) {
  log.add(RadioAct::managerMade);
  return std::make_unique<Manager>(*this, delegate);
}

void VirtualBluetooth::setState(CentralState state) {
  if (state == state_) return;
  state_ = state;
  // A delegate may make or give up managers while it is told.
  const std::vector<Manager*> managers = managers_;
  for (Manager* manager : managers) {
    if (manager == nullptr || std::ranges::find(managers_, manager) == managers_.end()) continue;
    manager->stateChanged(state);
  }
}

bool VirtualBluetooth::advertise(const Advertisement& advertisement) {
  bool isHeard = false;
  // A delegate may make or give up managers while it is called; no list is copied for each packet.
  ++telling_;
  for (std::size_t at = 0; at < managers_.size(); ++at) {
    if (managers_[at] == nullptr || !managers_[at]->isScanning()) continue;
    isHeard = true;
    managers_[at]->delegate().didDiscoverPeripheral(advertisement);
  }
  if (--telling_ == 0) std::erase(managers_, nullptr);
  return isHeard;
}

void VirtualBluetooth::forget(const Manager* manager) {
  if (telling_ > 0) {
    std::ranges::replace(managers_, manager, nullptr);
  } else {
    std::erase(managers_, manager);
  }
}

bool VirtualBluetooth::isScanning() const {
  return std::ranges::any_of(managers_, [](const Manager* manager) {
    return manager != nullptr && manager->isScanning();
  });
}

}  // namespace halvora
