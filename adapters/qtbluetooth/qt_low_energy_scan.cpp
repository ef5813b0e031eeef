// SPDX-License-Identifier: Apache-2.0
#include "adapters/qtbluetooth/qt_low_energy_scan.h"

#include <QByteArray>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace halvora {

// Nothing may be thrown into Qt's event loop: what there is no memory for was not heard.
template <class Sender, class Signal, class Act>
void QtLowEnergyScan::on(Sender& sender, Signal signal, const Act& act) {
  QObject::connect(&sender, signal, &context_, [act](const auto&... told) {
    try {
      act(told...);
    } catch (...) {
      return;
    }
  });
}

QtLowEnergyScan::QtLowEnergyScan() {
  using Agent = QBluetoothDeviceDiscoveryAgent;
  using Info = QBluetoothDeviceInfo;
  agent_.setLowEnergyDiscoveryTimeout(0);
  on(agent_, &Agent::deviceDiscovered, [this](const Info& device) { found(device); });
  on(agent_, &Agent::deviceUpdated, [this](const Info& device, Info::Fields updated) {
    // Other fields, such as its strength, bring data along that was told before.
    if (updated.testFlag(Info::Field::ManufacturerData)) found(device);
  });
  on(agent_, &Agent::errorOccurred, [this](Agent::Error error) { failed(error); });
  on(agent_, &Agent::finished, [this] { finished(); });
  on(device_, &QBluetoothLocalDevice::hostModeStateChanged,
     [this](QBluetoothLocalDevice::HostMode) { setState(stateOf(device_)); });
}

CentralState QtLowEnergyScan::stateOf(const QBluetoothLocalDevice& device) {
  const auto methods = QBluetoothDeviceDiscoveryAgent::supportedDiscoveryMethods();
  if (!methods.testFlag(QBluetoothDeviceDiscoveryAgent::LowEnergyMethod)) {
    return CentralState::unsupported;
  }
  if (!device.isValid()) return CentralState::poweredOn;
  return device.hostMode() == QBluetoothLocalDevice::HostPoweredOff ? CentralState::poweredOff
                                                                    : CentralState::poweredOn;
}

void QtLowEnergyScan::begin() { agent_.start(QBluetoothDeviceDiscoveryAgent::LowEnergyMethod); }

void QtLowEnergyScan::end() { agent_.stop(); }

void QtLowEnergyScan::found(const QBluetoothDeviceInfo& device) {
  // What the system remembers of a device is not in the air.
  if (device.isCached()) return;
  if (state_ == CentralState::unauthorised) setState(stateOf(device_));
  const auto data = device.manufacturerData();
  for (auto at = data.begin(); at != data.end() && listener_ != nullptr; ++at) {
    const QByteArray& bytes = at.value();
    const auto* begin = reinterpret_cast<const std::uint8_t*>(bytes.constData());
    listener_->heard(at.key(), {begin, static_cast<std::size_t>(bytes.size())});
  }
}

void QtLowEnergyScan::failed(QBluetoothDeviceDiscoveryAgent::Error error) {
  using Agent = QBluetoothDeviceDiscoveryAgent;
  // Only where Qt would also say that power is back: else it is tried again.
  if (error == Agent::PoweredOffError && device_.isValid()) {
    setState(CentralState::poweredOff);
  } else if (error == Agent::UnsupportedPlatformError) {
    setState(CentralState::unsupported);
  } else if (error == Agent::MissingPermissionsError) {
    setState(CentralState::unauthorised);
  }
  finished();
}

void QtLowEnergyScan::finished() {
  if (listener_ != nullptr) listener_->ended();
}

void QtLowEnergyScan::setState(CentralState state) {
  if (std::exchange(state_, state) == state || listener_ == nullptr) return;
  listener_->stateChanged(state);
}

}  // namespace halvora
