// SPDX-License-Identifier: Apache-2.0
// What the managers of every radio do alike: the first report comes in the next turn, no scan
// begins without power, and losing power ends one. A radio derives its own, and tells it of each
// change. Main thread.
#pragma once

#include "halvora/platform/bluetooth.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

class RadioManager : public CentralManager {
 public:
  RadioManager(RunLoop& loop, CentralManagerDelegate& delegate)
      : delegate_(delegate), firstReport_(loop, loop.soon([this] {
          hasReported_ = true;
          report(state());
        })) {}

  void scanForPeripherals(const ScanOptions& /*options*/) override {
    setScanning(state() == CentralState::poweredOn);
  }
  void stopScan() override { setScanning(false); }
  void restartScan(const ScanOptions& options) override { scanForPeripherals(options); }

  bool isScanning() const { return isScanning_; }
  CentralManagerDelegate& delegate() { return delegate_; }
  /// What the radio's state is now. May be the end of this manager.
  void stateChanged(CentralState state) {
    if (state != CentralState::poweredOn) isScanning_ = false;
    report(state);
  }

 protected:
  bool hasReported() const { return hasReported_; }
  virtual void setScanning(bool isScanning) { isScanning_ = isScanning; }
  virtual void report(CentralState state) { delegate_.centralManagerDidUpdateState(state); }

 private:
  CentralManagerDelegate& delegate_;
  bool isScanning_ = false;
  bool hasReported_ = false;
  const Timer firstReport_;
};

}  // namespace halvora
