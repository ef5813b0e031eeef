// SPDX-License-Identifier: Apache-2.0
// The Bluetooth daemon as a bus sees it, with adapters and air that the test makes up. It answers,
// signals and stays silent as the real one does: the first sight of a device is an added object,
// later ones are changed properties, a monitor tells of repeats without their data, power takes
// discovery with it, and death says nothing. Owned by the test; one thread with the central.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "adapters/linux/bus/bus_connection.h"

namespace halvora {

class FakeBluez {
 public:
  using Bytes = std::vector<std::uint8_t>;

  FakeBluez(RunLoop& loop, Descriptors& descriptors, std::string address);

  /// Joins the bus under the daemon's name.
  void appear();
  /// Killed: no removals, no farewell.
  void die();
  /// Ends as a service is stopped: monitors are released, objects removed.
  void quit();

  void addAdapter(const std::string& name, bool isPowered, bool hasMonitors = false);
  void removeAdapter(const std::string& name);
  void setPowered(const std::string& name, bool isPowered);

  /// A report of the controller that hears. `address` is twelve hexadecimal digits.
  void advertise(const std::string& address, const Bytes& rest, std::uint16_t company = 0xC909);
  /// The daemon forgets a device that was not seen for long.
  void expire(const std::string& address);
  /// Releases every monitor, as if they could not be kept.
  void releaseMonitors();

  /// Takes every advertisement off the air, as when an adapter goes.
  void releaseAdvertisements();
  bool isAdvertising() const { return !advertisements_.empty(); }
  /// The manufacturer data of the one advertisement, as it is on the air.
  Bytes onAir() const { return advertisements_.front().data; }
  /// What was put on the air so far, one after the other.
  std::vector<Bytes> aired;
  /// The type and the interval that were asked for last.
  std::string airedType;
  std::uint32_t airedInterval = 0;

  /// Any message in the daemon's name: the test fills it in.
  void signal(const std::string& path, const char* interface, const char* member,
              const std::function<void(sd_bus_message*)>& fill);
  std::string pathOf(const std::string& address) const;

  bool isDiscovering() const;
  bool hasMonitor() const { return !monitors_.empty(); }
  /// Whose the first monitor is, as the bus knows it.
  std::string monitorClient() const { return monitors_.front().client; }
  /// Likewise of who discovers on the first adapter, and whose the advertisement is.
  std::string discoveryClient() const { return *adapters_.begin()->second.discoverers.begin(); }
  std::string advertisementClient() const { return advertisements_.front().client; }

  /// The methods that were called, in order.
  std::vector<std::string> calls;
  /// Methods that fail, with the error that they give.
  std::map<std::string, std::string> errors;
  /// Methods that are answered by the test.
  using Answer = std::function<int(sd_bus_message* call)>;
  std::map<std::string, Answer> answers;
  /// The filter that was set last: the transport, and whether repeats are wanted.
  std::string transport;
  bool wantsRepeats = false;
  /// A controller that reports an address once until scanning begins anew.
  bool holdsRepeatsBack = false;
  /// The kernel still discovers for a daemon that died: for nobody, and in everybody's way.
  bool hasLeftOverDiscovery = false;
  /// So many discoveries begin without their client being told so.
  int losesAnswers = 0;
  /// The other order of the two tellings of a report under a monitor.
  bool tellsFoundFirst = false;
  /// Adapters, by their names, on which no scan begins.
  std::set<std::string> broken;
  /// The adapter whose controller hears; empty for the first.
  std::string ear;
  /// Monitors are taken and then never activated.
  bool neverActivates = false;
  /// Whether adapters that are added from now on can advertise.
  bool canAdvertise = true;

 private:
  struct Adapter {
    bool isPowered = false;
    bool hasMonitors = false;
    bool canAdvertise = true;
    /// The clients' names on the bus.
    std::set<std::string> discoverers;
  };
  struct Monitor {
    std::string client;
    std::string root;
    std::string adapter;
    /// Its object, once its pattern was read and found good.
    std::string object;
    Bytes pattern;
  };
  struct Advertised {
    std::string client;
    std::string path;
    /// Tells of changes.
    BusSlot match;
    Bytes data;
    /// Waits for the answer, until the object was read.
    BusMessage call;
  };
  struct Device {
    std::string adapter;
    std::uint16_t company = 0;
    Bytes data;
  };
  using Method = int (FakeBluez::*)(sd_bus_message*);

  static int handleCall(sd_bus_message* message, void* self, sd_bus_error*);
  static int handleGone(sd_bus_message* message, void* self, sd_bus_error*);
  int dispatch(sd_bus_message* message);
  int getManagedObjects(sd_bus_message* call);
  int getProperty(sd_bus_message* call);
  int setPower(sd_bus_message* call);
  int setDiscoveryFilter(sd_bus_message* call);
  int startDiscovery(sd_bus_message* call);
  int stopDiscovery(sd_bus_message* call);
  int registerMonitor(sd_bus_message* call);
  int unregisterMonitor(sd_bus_message* call);
  int registerAdvertisement(sd_bus_message* call);
  int unregisterAdvertisement(sd_bus_message* call);
  Advertised* advertisedBy(sd_bus_message* message, const std::string& path);
  bool readAdvertisement(sd_bus_message* message, Advertised& advertised);
  static int takeAdvertisement(sd_bus_message* reply, void* self, sd_bus_error*);
  static int changeAdvertisement(sd_bus_message* signal, void* self, sd_bus_error*);
  void readMonitor(sd_bus_message* objects);
  void activate(const Monitor& monitor);
  void callMonitor(const Monitor& monitor, const char* member, const std::string& device = {});

  Adapter* adapterOf(sd_bus_message* call);
  std::string earPath() const;
  void endDiscovery(const std::string& path, Adapter& adapter);
  void removeObject(const std::string& path, const char* interface);
  void tellAdded(const std::string& path, const Device& device);
  void tellChanged(const std::string& path, const Device& device, bool withData);
  void tellFlag(const std::string& path, const char* name, bool value);
  static void appendAdapter(sd_bus_message* message, const Adapter& adapter);
  static void appendDevice(sd_bus_message* message, const Device& device);
  static void appendData(sd_bus_message* message, const Device& device);

  BusConnection connection_;
  const std::string address_;
  BusSlot calls_;
  BusSlot gone_;
  std::map<std::string, Adapter> adapters_;
  std::map<std::string, Device> devices_;
  std::vector<Monitor> monitors_;
  std::vector<Advertised> advertisements_;
  std::set<std::string> heldBack_;
};

}  // namespace halvora
