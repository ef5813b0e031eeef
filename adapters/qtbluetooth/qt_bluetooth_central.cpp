// SPDX-License-Identifier: Apache-2.0
#include "adapters/qtbluetooth/qt_bluetooth_central.h"

#include <algorithm>
#include <cstddef>

namespace halvora {

namespace {

constexpr std::uint16_t kCompany = static_cast<std::uint16_t>(kShowPrefix[0] | kShowPrefix[1] << 8);
/// No advertisement has more, the extended ones included.
constexpr std::size_t kLongest = 1650;

}  // namespace

class QtBluetoothCentral::Manager final : public RadioManager {
 public:
  Manager(QtBluetoothCentral& radio, CentralManagerDelegate& delegate)
      : RadioManager(radio.loop_, delegate), radio_(radio) {
    radio_.managers_.push_back(this);
  }
  ~Manager() override {
    std::erase(radio_.managers_, this);
    radio_.settle();
  }
  CentralState state() const override { return radio_.scan_.state(); }

 protected:
  void setScanning(bool isScanning) override {
    RadioManager::setScanning(isScanning);
    radio_.settle();
  }

 private:
  QtBluetoothCentral& radio_;
};

QtBluetoothCentral::QtBluetoothCentral(RunLoop& loop, LowEnergyScan& scan)
    : loop_(loop), scan_(scan) {
  packet_.reserve(kShowPrefix.size() + kLongest);
  scan_.setListener(this);
}

QtBluetoothCentral::~QtBluetoothCentral() {
  scan_.setListener(nullptr);
  if (isRunning_) scan_.end();
}

BluetoothAuthorization QtBluetoothCentral::authorization() const {
  return scan_.state() == CentralState::unauthorised ? BluetoothAuthorization::denied
                                                     : BluetoothAuthorization::allowedAlways;
}

std::unique_ptr<CentralManager> QtBluetoothCentral::makeManager(CentralManagerDelegate& delegate) {
  return std::make_unique<Manager>(*this, delegate);
}

template <class Act>
void QtBluetoothCentral::forEach(const Act& act) {
  const std::vector<Manager*> told = managers_;
  for (Manager* manager : told) {
    if (std::ranges::find(managers_, manager) != managers_.end()) act(*manager);
  }
}

void QtBluetoothCentral::stateChanged(CentralState state) {
  forEach([state](Manager& manager) { manager.stateChanged(state); });
  settle();
}

void QtBluetoothCentral::heard(std::uint16_t company, std::span<const std::uint8_t> rest) {
  if (company != kCompany || rest.size() > kLongest) return;
  pause_ = kFirstPause;
  packet_.assign(kShowPrefix.begin(), kShowPrefix.end());
  packet_.insert(packet_.end(), rest.begin(), rest.end());
  forEach([this](Manager& manager) {
    if (manager.isScanning()) manager.delegate().didDiscoverPeripheral({packet_});
  });
}

void QtBluetoothCentral::ended() {
  if (!isRunning_) return;
  isRunning_ = false;
  nextBegin_ = {loop_, loop_.after(pause_, [this] {
                  nextBegin_ = {};
                  settle();
                })};
  pause_ = std::min(pause_ * 2, kLastPause);
}

void QtBluetoothCentral::settle() {
  const bool isWanted =
      scan_.state() == CentralState::poweredOn &&
      std::ranges::any_of(managers_, [](const Manager* its) { return its->isScanning(); });
  if (!isWanted) nextBegin_ = {};
  if (isWanted == isRunning_ || nextBegin_.isValid()) return;
  isRunning_ = isWanted;
  if (!isWanted) return scan_.end();
  // May end, and lose power, within the call.
  scan_.begin();
}

}  // namespace halvora
