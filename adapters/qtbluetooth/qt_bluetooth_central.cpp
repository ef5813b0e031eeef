// SPDX-License-Identifier: Apache-2.0
#include "adapters/qtbluetooth/qt_bluetooth_central.h"

#include <algorithm>
#include <cstddef>

#include "adapters/standard/radio_manager.h"

namespace halvora {

namespace {

constexpr std::uint16_t kCompany = static_cast<std::uint16_t>(kShowPrefix[0] | kShowPrefix[1] << 8);
/// No advertisement has more, the extended ones included.
constexpr std::size_t kLongest = 1650;

}  // namespace

// A radio's system knows nothing of exceptions, and one delegate nothing of another's: they end
// here.
template <class Act>
void QtBluetoothCentral::guarded(const Act& act) noexcept {
  try {
    act();
  } catch (...) {
    ++failures_;
  }
}

class QtBluetoothCentral::Manager final : public RadioManager {
 public:
  Manager(QtBluetoothCentral& radio, CentralManagerDelegate& delegate)
      : RadioManager(radio.loop_, delegate), radio_(radio) {
    radio_.managers_.add(*this);
  }
  ~Manager() override {
    radio_.managers_.remove(*this);
    radio_.guarded([this] { radio_.settle(); });
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
  packet_.assign(kShowPrefix.begin(), kShowPrefix.end());
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
  auto manager = std::make_unique<Manager>(*this, delegate);
  guarded([this] { settle(); });
  return manager;
}

void QtBluetoothCentral::stateChanged(CentralState state) noexcept {
  pause_ = kFirstPause;
  managers_.forEach([&](Manager& manager) { guarded([&] { manager.stateChanged(state); }); });
  guarded([this] { settle(); });
}

void QtBluetoothCentral::heard(std::uint16_t company, std::span<const std::uint8_t> rest) noexcept {
  if (company != kCompany || rest.size() > kLongest) return;
  pause_ = kFirstPause;
  packet_.resize(kShowPrefix.size());
  packet_.insert(packet_.end(), rest.begin(), rest.end());
  managers_.forEach([this](Manager& manager) {
    if (!manager.isScanning()) return;
    guarded([&] { manager.delegate().didDiscoverPeripheral({packet_}); });
  });
}

void QtBluetoothCentral::ended() noexcept {
  if (!isRunning_) return;
  isRunning_ = false;
  guarded([this] {
    nextBegin_ = {loop_, loop_.after(pause_, [this] {
                    nextBegin_ = {};
                    guarded([this] { settle(); });
                  })};
  });
  pause_ = std::min(pause_ * 2, kLastPause);
}

bool QtBluetoothCentral::isWanted() const {
  switch (scan_.state()) {
    case CentralState::poweredOn:
      return managers_.isAnyScanning();
    case CentralState::unauthorised:
      return managers_.isAny();
    default:
      return false;
  }
}

void QtBluetoothCentral::settle() {
  const bool isWanted = this->isWanted();
  if (!isWanted) nextBegin_ = {};
  if (isWanted == isRunning_ || nextBegin_.isValid()) return;
  isRunning_ = isWanted;
  if (!isWanted) return scan_.end();
  // May end, and lose power, within the call.
  scan_.begin();
}

}  // namespace halvora
