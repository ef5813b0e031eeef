// SPDX-License-Identifier: Apache-2.0
// A scan by Qt Bluetooth's discovery of low-energy devices. Where Qt has no word on the machine's
// adapter, as on some phones, power is taken for granted until a scan says otherwise. Nor has it a
// word on permission: a scan that is refused shows that it lacks, and the first device that one
// finds, whoever's, that it is there again. Needs an application object. Owned by the host; main
// thread.
#pragma once

#include <QBluetoothDeviceDiscoveryAgent>
#include <QBluetoothDeviceInfo>
#include <QBluetoothLocalDevice>
#include <QObject>

#include "adapters/qtbluetooth/low_energy_scan.h"

namespace halvora {

class QtLowEnergyScan final : public LowEnergyScan {
 public:
  QtLowEnergyScan();
  ~QtLowEnergyScan() override = default;
  QtLowEnergyScan(const QtLowEnergyScan&) = delete;
  QtLowEnergyScan& operator=(const QtLowEnergyScan&) = delete;

  void setListener(LowEnergyScanListener* listener) override { listener_ = listener; }
  CentralState state() const override { return state_; }
  void begin() override;
  void end() override;

 private:
  /// Connects what Qt tells with what is then done.
  template <class Sender, class Signal, class Act>
  void on(Sender& sender, Signal signal, const Act& act);
  void found(const QBluetoothDeviceInfo& device);
  void failed(QBluetoothDeviceDiscoveryAgent::Error error);
  void finished();
  void setState(CentralState state);
  static CentralState stateOf(const QBluetoothLocalDevice& device);

  LowEnergyScanListener* listener_ = nullptr;
  QBluetoothLocalDevice device_;
  CentralState state_ = stateOf(device_);
  QBluetoothDeviceDiscoveryAgent agent_;
  /// Ends the connections.
  QObject context_;
};

}  // namespace halvora
