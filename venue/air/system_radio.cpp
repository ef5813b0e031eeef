// SPDX-License-Identifier: Apache-2.0
#include "venue/air/system_radio.h"

#include <utility>

#include "adapters/linux/bluetooth/bluez_central.h"
#include "adapters/linux/bus/bluez_daemon.h"
#include "venue/air/system_loop.h"

namespace halvora {

namespace {

class SystemRadio final : public Radio {
 public:
  SystemRadio(const std::string& adapter, const std::string& busAddress)
      : daemon_(loop_, loop_, busAddress), central_(loop_, daemon_, {.adapter = adapter}) {}

  RunLoop& loop() override { return loop_; }
  BluetoothCentral& bluetooth() override { return central_; }
  RadioAdapters adapters() const override {
    BluetoothDiagnostics found = central_.diagnostics();
    if (!found.isScanning) found.adapter.clear();
    return {std::move(found.adapters), std::move(found.adapter), std::move(found.errors.last)};
  }
  void runUntil(const std::function<bool()>& isDone) override { runCommandUntil(loop_, isDone); }

 private:
  PollRunLoop loop_;
  BluezDaemon daemon_;
  BluezCentral central_;
};

}  // namespace

std::unique_ptr<Radio> openSystemRadio(const std::string& adapter, const std::string& busAddress) {
  return std::make_unique<SystemRadio>(adapter, busAddress);
}

}  // namespace halvora
