// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_bluetooth.h"

#include <algorithm>

namespace halvora {

class VirtualBluetooth::Manager final : public CentralManager {
 public:
  Manager(VirtualBluetooth& radio, CentralManagerDelegate& delegate)
      : radio_(radio), delegate_(delegate), firstReport_(radio.loop_, radio.loop_.soon([this] {
          delegate_.centralManagerDidUpdateState(radio_.state_);
        })) {
    radio_.managers_.push_back(this);
  }
  ~Manager() override { radio_.forget(this); }
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;

  CentralState state() const override { return radio_.state_; }

  void scanForPeripherals(const ScanOptions&) override {
    begin();
    radio_.log.add(RadioAct::scanStarted);
  }
  void stopScan() override {
    isScanning = false;
    radio_.log.add(RadioAct::scanStopped);
  }
  void restartScan(const ScanOptions&) override {
    begin();
    radio_.log.add(RadioAct::scanRestarted);
  }

  CentralManagerDelegate& delegate() { return delegate_; }
  bool isScanning = false;

 private:
  // A scan asked for without power never begins.
  void begin() { isScanning = radio_.state_ == CentralState::poweredOn; }

  VirtualBluetooth& radio_;
  CentralManagerDelegate& delegate_;
  Timer firstReport_;
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
    if (state != CentralState::poweredOn) manager->isScanning = false;
    manager->delegate().centralManagerDidUpdateState(state);
  }
}

bool VirtualBluetooth::advertise(const Advertisement& advertisement) {
  bool isHeard = false;
  // A delegate may make or give up managers while it is called; no list is copied for each packet.
  ++telling_;
  for (std::size_t at = 0; at < managers_.size(); ++at) {
    if (managers_[at] == nullptr || !managers_[at]->isScanning) continue;
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
  return std::ranges::any_of(
      managers_, [](const Manager* manager) { return manager != nullptr && manager->isScanning; });
}

}  // namespace halvora
