// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_absent_services.h"

namespace halvora {

namespace {

class AbsentManager final : public CentralManager {
 public:
  AbsentManager(RunLoop& loop, CentralManagerDelegate& delegate)
      : report_(loop, loop.soon([&delegate] {
          delegate.centralManagerDidUpdateState(CentralState::unsupported);
        })) {}
  CentralState state() const override { return CentralState::unsupported; }
  void scanForPeripherals(const ScanOptions& /*options*/) override {}
  void stopScan() override {}

 private:
  Timer report_;
};

}  // namespace

std::unique_ptr<CentralManager> AbsentBluetooth::makeManager(CentralManagerDelegate& delegate) {
  return std::make_unique<AbsentManager>(loop_, delegate);
}

}  // namespace halvora
