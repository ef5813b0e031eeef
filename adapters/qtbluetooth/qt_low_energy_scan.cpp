// SPDX-License-Identifier: Apache-2.0
#include "adapters/qtbluetooth/qt_low_energy_scan.h"

#include <QByteArray>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace halvora {

QtLowEnergyScan::QtLowEnergyScan() {
  using Agent = QBluetoothDeviceDiscoveryAgent;
  agent_.setLowEnergyDiscoveryTimeout(0);
  QObject::connect(&agent_, &Agent::deviceDiscovered, &context_,
                   [this](const QBluetoothDeviceInfo& device) { found(device); });
  QObject::connect(
      &agent_, &Agent::deviceUpdated, &context_,
      [this](const QBluetoothDeviceInfo& device, QBluetoothDeviceInfo::Fields updated) {
        // Other fields, such as its strength, bring data along that was told before.
        if (updated.testFlag(QBluetoothDeviceInfo::Field::ManufacturerData)) found(device);
      });
  QObject::connect(&agent_, &Agent::errorOccurred, &context_,
                   [this](Agent::Error error) { failed(error); });
  QObject::connect(&agent_, &Agent::finished, &context_, [this] { finished(); });
  QObject::connect(&device_, &QBluetoothLocalDevice::hostModeStateChanged, &context_,
                   [this] { setState(stateOf(device_)); });
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
  const auto data = device.manufacturerData();
  for (auto at = data.begin(); at != data.end() && listener_ != nullptr; ++at) {
    const QByteArray& bytes = at.value();
    const auto* begin = reinterpret_cast<const std::uint8_t*>(bytes.constData());
    try {
      listener_->heard(at.key(), {begin, static_cast<std::size_t>(bytes.size())});
    } catch (...) {
      // Nothing may be thrown into Qt's event loop: a packet that there was no memory for was not
      // heard.
      return;
    }
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
