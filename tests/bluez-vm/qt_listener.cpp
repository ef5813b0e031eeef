// SPDX-License-Identifier: Apache-2.0
// The radio through Qt Bluetooth on the emulated machine's daemon: prints a line of JSON for each
// show's packet that it hears, as `halvora listen` does, and one for each state of the radio. Runs
// until a signal ends it.
#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <string>

#include "adapters/qt/qt_run_loop.h"
#include "adapters/qtbluetooth/qt_bluetooth_central.h"
#include "adapters/qtbluetooth/qt_low_energy_scan.h"
#include "venue/show/packet.h"

namespace halvora {
namespace {

void print(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

class QtListener final : public CentralManagerDelegate {
 public:
  QtListener() : manager_(radio_.makeManager(*this)) {}

  void centralManagerDidUpdateState(CentralState state) override {
    print("{\"state\":" + std::to_string(static_cast<int>(state)) + "}");
    if (state == CentralState::poweredOn) manager_->scanForPeripherals({.allowDuplicates = true});
  }
  void didDiscoverPeripheral(const Advertisement& advertisement) override {
    if (advertisement.manufacturerData) print(describePacket(*advertisement.manufacturerData));
  }

 private:
  QtRunLoop loop_;
  QtLowEnergyScan scan_;
  QtBluetoothCentral radio_{loop_, scan_};
  std::unique_ptr<CentralManager> manager_;
};

}  // namespace
}  // namespace halvora

int main(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  const halvora::QtListener listener;
  return QCoreApplication::exec();
}
