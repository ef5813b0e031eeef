// SPDX-License-Identifier: Apache-2.0
// The radio need on a scan of Qt Bluetooth's, for systems where the kit has no radio of its own.
// Holds one scan for as long as any manager wants it, and begins it anew, less and less often, when
// it ends by itself. One that was refused is tried again likewise for as long as there is a
// manager, because nobody says when the user has granted it after all. Owned by the host; main
// thread.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "adapters/qtbluetooth/low_energy_scan.h"
#include "adapters/standard/radio_managers.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

class QtBluetoothCentral final : public BluetoothCentral, private LowEnergyScanListener {
 public:
  /// Between the end of a scan and the next one; twice as long each time that nothing was heard.
  static constexpr Duration kFirstPause = milliseconds(1000);
  static constexpr Duration kLastPause = milliseconds(64'000);

  /// Both must outlive this.
  QtBluetoothCentral(RunLoop& loop, LowEnergyScan& scan);
  ~QtBluetoothCentral() override;
  QtBluetoothCentral(const QtBluetoothCentral&) = delete;
  QtBluetoothCentral& operator=(const QtBluetoothCentral&) = delete;

  BluetoothAuthorization authorization() const override;
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) override;
  /// How often a delegate, or the system, threw: what it was told of is lost.
  std::uint64_t failures() const { return failures_; }

 private:
  class Manager;

  void stateChanged(CentralState state) noexcept override;
  void heard(std::uint16_t company, std::span<const std::uint8_t> rest) noexcept override;
  void ended() noexcept override;
  /// Whether there is a scan to be: a manager wants one, or the right to it is to be found out.
  bool isWanted() const;
  /// Has the scan that is wanted.
  void settle();
  template <class Act>
  void guarded(const Act& act) noexcept;

  RunLoop& loop_;
  LowEnergyScan& scan_;
  RadioManagers<Manager> managers_;
  /// The packet that is handed on, with its company's id.
  std::vector<std::uint8_t> packet_;
  bool isRunning_ = false;
  Duration pause_ = kFirstPause;
  Timer nextBegin_;
  std::uint64_t failures_ = 0;
};

}  // namespace halvora
