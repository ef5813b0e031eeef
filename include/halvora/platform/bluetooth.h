// SPDX-License-Identifier: Apache-2.0
// The Bluetooth LE central: permission, power and received advertisements. The kit only listens;
// nothing here transmits. Main thread; the delegate must outlive the manager.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Whether the application may listen. The numbers are those of the phones' own systems; scenario
/// files and hosts use them.
enum class BluetoothAuthorization : std::uint8_t {
  notDetermined = 0,  ///< The user has not been asked.
  restricted = 1,     ///< Not, and the user cannot change that.
  denied = 2,         ///< Not, until the user says otherwise in the settings.
  allowedAlways = 3,  ///< It may.
};

/// What the radio is able to do.
enum class CentralState : std::uint8_t {
  unknown = 0,       ///< Not found out yet.
  resetting = 1,     ///< The system's part of it is gone for the moment.
  unsupported = 2,   ///< There is no radio that can listen.
  unauthorised = 3,  ///< The application may not use it.
  poweredOff = 4,    ///< It is switched off.
  poweredOn = 5,     ///< It can listen.
};

/// How the manufacturer data of a show's packet begins: the company's id, low byte first. What
/// begins otherwise need not be reported.
inline constexpr std::array<std::uint8_t, 2> kShowPrefix = {0x09, 0xC9};

/// One received advertisement. The bytes live only while the delegate is called.
struct Advertisement {
  /// The manufacturer data as on the air (company id, low byte first, then the rest); none if the
  /// advertisement has none.
  std::optional<std::span<const std::uint8_t>> manufacturerData;
};

/// How to listen.
struct ScanOptions {
  /// Repeats are reported too, as the kit needs them: a look that stands still is still there.
  bool allowDuplicates = false;
  friend bool operator==(const ScanOptions&, const ScanOptions&) = default;
};

/// Is told of the radio by its manager, in a turn of its own each time.
class CentralManagerDelegate {
 public:
  virtual ~CentralManagerDelegate() = default;
  /// The state that the radio has from now on; first of all the one that it began with.
  virtual void centralManagerDidUpdateState(CentralState state) = 0;
  /// Something was heard; repeats come again where the scan allows them.
  virtual void didDiscoverPeripheral(const Advertisement& advertisement) = 0;
};

/// One listener. May be destroyed within a call of its delegate. Reports its state in the first
/// turn after it was made, and on every change. Losing power ends a scan.
class CentralManager : public Need {
 public:
  /// `unknown` until it was reported.
  virtual CentralState state() const = 0;
  /// Listens from now on, or with other options from now on; nothing unless the radio is on.
  virtual void scanForPeripherals(const ScanOptions& options) = 0;
  /// Reports nothing more that is heard; nothing where no scan runs.
  virtual void stopScan() = 0;

  /// A stop directly followed by a scan. One call, because many systems lose packets at every start
  /// of a scan, or starve an application that starts them often: where the running scan already has
  /// these options, an adapter may let it run.
  virtual void restartScan(const ScanOptions& options) {
    stopScan();
    scanForPeripherals(options);
  }
};

/// A phone's radio, as far as listening goes.
class BluetoothCentral : public Need {
 public:
  /// At this moment; never asks the user.
  virtual BluetoothAuthorization authorization() const = 0;
  /// Never null. Where permission is not determined yet, making a manager is what asks the user for
  /// it.
  virtual std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) = 0;
};

}  // namespace v0
}  // namespace halvora
