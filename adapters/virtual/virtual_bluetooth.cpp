// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_bluetooth.h"

#include "adapters/standard/radio_manager.h"

namespace halvora {

class VirtualBluetooth::Manager final : public RadioManager {
 public:
  Manager(VirtualBluetooth& radio, CentralManagerDelegate& delegate)
      : RadioManager(radio.loop_, delegate), radio_(radio) {
    radio_.managers_.add(*this);
  }
  ~Manager() override { radio_.managers_.remove(*this); }

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
  managers_.forEach([state](Manager& manager) { manager.stateChanged(state); });
}

bool VirtualBluetooth::advertise(const Advertisement& advertisement) {
  bool isHeard = false;
  managers_.forEach([&](Manager& manager) {
    if (!manager.isScanning()) return;
    isHeard = true;
    manager.delegate().didDiscoverPeripheral(advertisement);
  });
  return isHeard;
}

bool VirtualBluetooth::isScanning() const { return managers_.isAnyScanning(); }

}  // namespace halvora
