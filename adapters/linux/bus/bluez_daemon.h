// SPDX-License-Identifier: Apache-2.0
// The system's Bluetooth daemon over D-Bus. Its matches are as narrow as the bus allows, and no
// object is kept for any device: of a foreign one nothing is left but a count. The host owns it and
// hands it to the central; main thread.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/linux/bluetooth/bluez_service.h"
#include "adapters/linux/bluetooth/show_devices.h"
#include "adapters/linux/bus/bluez_messages.h"
#include "adapters/linux/bus/bluez_monitor.h"
#include "adapters/linux/bus/bus_connection.h"

namespace halvora {

class BluezDaemon final : public BluezService, private BluezMonitorCalls {
 public:
  /// The system's bus, or the one at `busAddress`.
  BluezDaemon(RunLoop& loop, Descriptors& descriptors, std::string busAddress = {});

  void open(BluezListener& listener) override;
  void close() override;
  void look() override;
  BluezReach reach() const override { return reach_; }
  std::span<const BluezAdapter> adapters() const override { return adapters_; }
  void start(const std::string& adapter, BluezMethod method) override;
  void stop() override;
  void abandon() override;
  const BluezSignalCounts& signalCounts() const override { return counts_; }
  const BluezErrors& errors() const override { return errors_; }

  /// Devices whose last data is kept: those of our company that a monitor reports.
  std::size_t keptDevices() const { return devices_.size(); }

 private:
  /// A question for the data of a device that a monitor has found.
  struct Question {
    BusSlot answer;
    std::string device;
  };
  using Handler = void (BluezDaemon::*)(sd_bus_message*);

  // What is asked.
  template <class Act>
  void attempt(const Act& act);
  void connect();
  void matchDaemon();
  void matchSleep();
  BusSlot match(const std::string& rule, Handler handler);
  template <class... Arguments>
  BusMessage newCall(const std::string& path, const char* interface, const char* member,
                     Arguments... arguments);
  BusSlot send(const BusMessage& message, Handler handler);
  void askForObjects();
  void askForData(std::string_view device);
  void sendDiscoveryFilter();
  /// One of an adapter's two methods for each way to scan.
  void request(const char* ofDiscovery, const char* ofMonitors);
  void endLateDiscovery();

  // What is answered.
  void takeObjects(sd_bus_message* message);
  void takeFilterAnswer(sd_bus_message* message);
  void takeAnswer(sd_bus_message* message);
  void takeData(Question& question, sd_bus_message* message);

  // What is told.
  void ownerChanged(std::string_view now);
  void interfacesAdded(sd_bus_message* message);
  void interfacesRemoved(sd_bus_message* message);
  void adapterChanged(sd_bus_message* message);
  void deviceChanged(sd_bus_message* message);
  void sleepChanged(sd_bus_message* message);

  // What the daemon calls.
  bool isFromDaemon(sd_bus_message* message) const override;
  void monitorActivated() override;
  void monitorReleased() override;
  void deviceFound(std::string_view path) override;
  void callFailed() noexcept override { connection_.failed(); }

  void busLost();
  void daemonLost(BluezReach reach);
  /// `isTold`: the daemon told it by itself, and did not have to be asked.
  void take(DeviceNews news, const char* device, const CompanyData& data, bool isTold = true);
  void takeAdapter(const char* path, const AdapterNews& news);
  BluezAdapter* adapterAt(std::string_view path);
  bool isScanned(std::string_view device) const;
  void noteError(const sd_bus_error& error);

  BusConnection connection_;
  const std::string busAddress_;
  BluezListener* listener_ = nullptr;
  BluezReach reach_ = BluezReach::asking;
  std::vector<BluezAdapter> adapters_;
  /// The daemon's own name on the bus, empty while it is not there.
  std::string owner_;
  /// The login daemon's own name, likewise.
  std::string login_;
  /// The bus may start the daemon for our first call; one that went away later stays away.
  bool mayBeStarted_ = true;
  /// The adapter that is scanned on, and how; empty for none.
  std::string scanned_;
  BluezMethod method_ = BluezMethod::discovery;
  bool isStopping_ = false;
  ShowDevices devices_;
  BluezMonitor monitor_;
  BluezSignalCounts counts_;
  BluezErrors errors_;
  /// Of the connection's failures those that are among the errors.
  std::uint64_t failuresNoted_ = 0;
  // What is waited for on the bus.
  std::vector<BusSlot> matches_;
  BusSlot deviceMatch_;
  BusSlot objectsAnswer_;
  BusSlot answer_;
  std::array<Question, 4> questions_;
};

}  // namespace halvora
