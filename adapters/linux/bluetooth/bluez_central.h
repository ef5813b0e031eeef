// SPDX-License-Identifier: Apache-2.0
// The Bluetooth need on Linux: what the system's Bluetooth daemon says of adapters and power
// becomes the states that the engine knows, and one scan of the system serves all managers. A scan
// asked for here runs on through a client's stops and starts; see `BluezScan`. The host owns it,
// with the service that it stands on; main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "adapters/linux/bluetooth/bluez_scan.h"
#include "adapters/linux/bluetooth/bluez_service.h"
#include "adapters/standard/radio_managers.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

/// What a host may want to know of its reception. Scanning says that the system listens, hearing
/// that a show was heard within the setting's silence.
struct BluetoothDiagnostics {
  bool isScanning = false;
  bool isHearing = false;
  /// The adapter that is scanned on or just asked to be, as the system calls it ("hci0"); empty for
  /// none. And all that there are.
  std::string adapter;
  std::vector<std::string> adapters;
  /// In media time.
  std::optional<Duration> lastShowPacket;
  BluezSignalCounts signalCounts;
  /// How often the system was asked to scan, and how often of these because of silence, a wake-up
  /// or a monitor that was dropped.
  std::uint64_t starts = 0;
  std::uint64_t restarts = 0;
  BluezErrors errors;
  /// What delegates have thrown. The next packet is handed to them all the same.
  std::uint64_t delegateFailures = 0;
};

class BluezCentral final : public BluetoothCentral, private BluezListener {
 public:
  /// Begins to look for the daemon at once. The service is this central's alone and outlives it.
  BluezCentral(RunLoop& loop, BluezService& service, const BluezSettings& settings = {});
  ~BluezCentral() override;
  BluezCentral(const BluezCentral&) = delete;
  BluezCentral& operator=(const BluezCentral&) = delete;

  /// Nobody is asked on Linux: allowed until the system refuses.
  BluetoothAuthorization authorization() const override;
  /// Repeats are always delivered, whatever the scan's options.
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) override;

  BluetoothDiagnostics diagnostics() const;

 private:
  class Manager;

  void systemChanged() override;
  void answered(BluezOutcome outcome) override;
  void monitorActivated() override { scan_.monitorActivated(); }
  void monitorReleased() override { scan_.monitorReleased(); }
  void wokeUp() override { scan_.wokeUp(); }
  void heard(std::span<const std::uint8_t> manufacturerData) override;

  CentralState presentState() const;
  void updateState();
  void wishesChanged();
  void lookLater();

  RunLoop& loop_;
  BluezService& service_;
  BluezScan scan_;
  CentralState state_ = CentralState::unknown;
  std::uint64_t delegateFailures_ = 0;
  /// The daemon has been there, and may be expected back.
  bool wasThere_ = false;
  int looks_ = 0;
  Timer nextLook_;
  RadioManagers<Manager> managers_;
};

}  // namespace halvora
