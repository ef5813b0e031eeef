// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bluetooth/bluez_central.h"

#include <algorithm>

#include "adapters/standard/radio_manager.h"

namespace halvora {

namespace {

constexpr Duration kFirstLook = milliseconds(250);
constexpr Duration kLastLook = milliseconds(2000);

}  // namespace

class BluezCentral::Manager final : public RadioManager {
 public:
  Manager(BluezCentral& central, CentralManagerDelegate& delegate)
      : RadioManager(central.loop_, delegate), central_(central) {
    central_.managers_.add(*this);
  }
  ~Manager() override {
    central_.managers_.remove(*this);
    central_.wishesChanged();
  }

  CentralState state() const override { return central_.state_; }
  void heard(const Advertisement& advertisement) {
    if (isScanning()) tell([&] { delegate().didDiscoverPeripheral(advertisement); });
  }

 private:
  // A change before the first report is part of it.
  void report(CentralState state) override {
    if (hasReported()) tell([&] { RadioManager::report(state); });
  }
  void setScanning(bool isWanted) override {
    if (isWanted == isScanning()) return;
    RadioManager::setScanning(isWanted);
    central_.wishesChanged();
  }
  // A delegate that throws harms neither the others nor the radio. It may be the end of this
  // manager, and not of the central.
  template <class Call>
  void tell(const Call& call) {
    BluezCentral& central = central_;
    try {
      call();
    } catch (...) {
      ++central.delegateFailures_;
    }
  }

  BluezCentral& central_;
};

BluezCentral::BluezCentral(RunLoop& loop, BluezService& service, const BluezSettings& settings)
    : loop_(loop), service_(service), scan_(loop, service, settings) {
  service_.open(*this);
}

BluezCentral::~BluezCentral() { service_.close(); }

// Whatever may mend itself counts as allowed, because an engine that was told otherwise does not
// ask again.
BluetoothAuthorization BluezCentral::authorization() const {
  return state_ == CentralState::unauthorised ? BluetoothAuthorization::denied
                                              : BluetoothAuthorization::allowedAlways;
}

std::unique_ptr<CentralManager> BluezCentral::makeManager(CentralManagerDelegate& delegate) {
  return std::make_unique<Manager>(*this, delegate);
}

BluetoothDiagnostics BluezCentral::diagnostics() const {
  BluetoothDiagnostics found;
  found.isScanning = scan_.isRunning();
  found.isHearing = scan_.isHearing();
  if (const BluezAdapter* adapter = scan_.adapterInUse()) found.adapter = adapter->name();
  for (const BluezAdapter& adapter : service_.adapters()) {
    found.adapters.emplace_back(adapter.name());
  }
  found.lastShowPacket = scan_.lastHeard();
  found.signalCounts = service_.signalCounts();
  found.starts = scan_.starts();
  found.restarts = scan_.restarts();
  found.errors = service_.errors();
  found.delegateFailures = delegateFailures_;
  return found;
}

void BluezCentral::systemChanged() {
  if (service_.reach() == BluezReach::there) {
    wasThere_ = true;
    looks_ = 0;
    nextLook_.invalidate();
    scan_.adaptersChanged();
  } else {
    scan_.daemonGone();
    lookLater();
  }
  updateState();
}

// A daemon that comes to the bus is told at once. This is for what is told by nobody: a bus that is
// back, a policy that has changed, a daemon that did not answer.
void BluezCentral::lookLater() {
  const BluezReach reach = service_.reach();
  if (reach == BluezReach::asking || reach == BluezReach::noDaemon || nextLook_.isValid()) return;
  const Duration pause = std::min(kFirstLook * (1 << std::min(looks_++, 8)), kLastLook);
  nextLook_ = {loop_, loop_.after(pause, [this] { service_.look(); })};
}

void BluezCentral::answered(BluezOutcome outcome) {
  scan_.answered(outcome);
  updateState();
}

void BluezCentral::heard(std::span<const std::uint8_t> manufacturerData) {
  scan_.heard();
  const Advertisement advertisement{manufacturerData};
  managers_.forEach([&](Manager& manager) { manager.heard(advertisement); });
}

CentralState BluezCentral::presentState() const {
  switch (service_.reach()) {
    case BluezReach::asking:
      return CentralState::unknown;
    case BluezReach::noBus:
    case BluezReach::noDaemon:
    case BluezReach::silent:
      return wasThere_ ? CentralState::resetting : CentralState::unsupported;
    case BluezReach::refused:
      return CentralState::unauthorised;
    case BluezReach::there:
      break;
  }
  const auto mayUse = [this](const BluezAdapter& adapter) { return scan_.mayUse(adapter); };
  if (std::ranges::none_of(service_.adapters(), mayUse)) return CentralState::unsupported;
  if (scan_.adapter() == nullptr) return CentralState::poweredOff;
  return scan_.isRefused() ? CentralState::unauthorised : CentralState::poweredOn;
}

void BluezCentral::updateState() {
  const CentralState state = presentState();
  if (state == state_) return;
  state_ = state;
  managers_.forEach([state](Manager& manager) { manager.stateChanged(state); });
  wishesChanged();
}

void BluezCentral::wishesChanged() { scan_.setWanted(managers_.isAnyScanning()); }

}  // namespace halvora
