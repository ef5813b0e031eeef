// SPDX-License-Identifier: Apache-2.0
// What the fake is asked; what it tells is in fake_bluez_signals.cpp.
#include "tests/adapters/linux/bus/fake_bluez.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/linux/bus/bus_dictionary.h"

namespace halvora {

namespace {

int refuse(sd_bus_message* call, const char* name, const char* text) {
  return sd_bus_reply_method_errorf(call, name, "%s", text);
}

int agree(sd_bus_message* call) { return sd_bus_reply_method_return(call, nullptr); }

}  // namespace

FakeBluez::FakeBluez(RunLoop& loop, Descriptors& descriptors, std::string address)
    : connection_(loop, descriptors), address_(std::move(address)) {}

void FakeBluez::appear() {
  connection_.open(address_, [] { ADD_FAILURE() << "the fake daemon lost its bus"; });
  sd_bus_slot* slot = nullptr;
  ASSERT_GE(sd_bus_add_filter(connection_.bus(), &slot, handleCall, this), 0);
  calls_.reset(slot);
  ASSERT_GE(sd_bus_add_match(connection_.bus(), &slot,
                             "type='signal',sender='org.freedesktop.DBus',"
                             "interface='org.freedesktop.DBus',member='NameOwnerChanged'",
                             handleGone, this),
            0);
  gone_.reset(slot);
  ASSERT_GE(sd_bus_request_name(connection_.bus(), "org.bluez", 0), 0);
  connection_.sent();
}

void FakeBluez::die() {
  connection_.close();
  for (auto& [path, adapter] : adapters_) adapter.discoverers.clear();
  monitors_.clear();
  advertisements_.clear();
  devices_.clear();
}

void FakeBluez::quit() {
  releaseMonitors();
  while (!devices_.empty()) {
    const std::string path = devices_.begin()->first;
    devices_.erase(path);
    removeObject(path, "org.bluez.Device1");
  }
  for (const auto& [path, adapter] : adapters_) removeObject(path, "org.bluez.Adapter1");
  sd_bus_flush(connection_.bus());
  die();
}

int FakeBluez::handleCall(sd_bus_message* message, void* self, sd_bus_error*) {
  if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
  return static_cast<FakeBluez*>(self)->dispatch(message);
}

// A client that leaves takes what it asked for with it.
int FakeBluez::handleGone(sd_bus_message* message, void* self, sd_bus_error*) {
  const char* name = nullptr;
  const char* before = nullptr;
  const char* now = nullptr;
  sd_bus_message_read(message, "sss", &name, &before, &now);
  if (*now != '\0') return 0;
  auto& fake = *static_cast<FakeBluez*>(self);
  std::erase_if(fake.monitors_, [&](const Monitor& monitor) { return monitor.client == name; });
  std::erase_if(fake.advertisements_, [&](const Advertised& one) { return one.client == name; });
  for (auto& [path, adapter] : fake.adapters_) {
    if (adapter.discoverers.erase(name) > 0) fake.endDiscovery(path, adapter);
  }
  return 0;
}

int FakeBluez::dispatch(sd_bus_message* message) {
  static const std::map<std::string_view, Method> kMethods = {
      {"GetManagedObjects", &FakeBluez::getManagedObjects},
      {"Get", &FakeBluez::getProperty},
      {"Set", &FakeBluez::setPower},
      {"SetDiscoveryFilter", &FakeBluez::setDiscoveryFilter},
      {"StartDiscovery", &FakeBluez::startDiscovery},
      {"StopDiscovery", &FakeBluez::stopDiscovery},
      {"RegisterMonitor", &FakeBluez::registerMonitor},
      {"UnregisterMonitor", &FakeBluez::unregisterMonitor},
      {"RegisterAdvertisement", &FakeBluez::registerAdvertisement},
      {"UnregisterAdvertisement", &FakeBluez::unregisterAdvertisement},
  };
  const std::string member = sd_bus_message_get_member(message);
  const auto method = kMethods.find(member);
  if (method == kMethods.end()) return 0;
  calls.push_back(member);
  if (const auto error = errors.find(member); error != errors.end()) {
    refuse(message, error->second.c_str(), "as the test wants it");
  } else if (const auto answer = answers.find(member); answer != answers.end()) {
    EXPECT_GE(answer->second(message), 0) << member;
  } else {
    EXPECT_GE((this->*method->second)(message), 0) << member;
  }
  return 1;
}

FakeBluez::Adapter* FakeBluez::adapterOf(sd_bus_message* call) {
  const auto found = adapters_.find(sd_bus_message_get_path(call));
  return found == adapters_.end() ? nullptr : &found->second;
}

int FakeBluez::getManagedObjects(sd_bus_message* call) {
  sd_bus_message* reply = nullptr;
  if (const int result = sd_bus_message_new_method_return(call, &reply); result < 0) return result;
  const BusMessage owned(reply);
  sd_bus_message_open_container(reply, 'a', "{oa{sa{sv}}}");
  for (const auto& [path, adapter] : adapters_) {
    sd_bus_message_open_container(reply, 'e', "oa{sa{sv}}");
    sd_bus_message_append(reply, "o", path.c_str());
    appendAdapter(reply, adapter);
    sd_bus_message_close_container(reply);
  }
  for (const auto& [path, device] : devices_) {
    sd_bus_message_open_container(reply, 'e', "oa{sa{sv}}");
    sd_bus_message_append(reply, "o", path.c_str());
    appendDevice(reply, device);
    sd_bus_message_close_container(reply);
  }
  sd_bus_message_close_container(reply);
  return sd_bus_send(nullptr, reply, nullptr);
}

int FakeBluez::getProperty(sd_bus_message* call) {
  const auto device = devices_.find(sd_bus_message_get_path(call));
  if (device == devices_.end()) return refuse(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "no such device");
  sd_bus_message* reply = nullptr;
  if (const int result = sd_bus_message_new_method_return(call, &reply); result < 0) return result;
  const BusMessage owned(reply);
  appendData(reply, device->second);
  return sd_bus_send(nullptr, reply, nullptr);
}

// The one property that anybody sets.
int FakeBluez::setPower(sd_bus_message* call) {
  const char* name = nullptr;
  int isOn = 0;
  if (sd_bus_message_read(call, "ssv", nullptr, &name, "b", &isOn) <= 0 ||
      adapterOf(call) == nullptr) {
    return refuse(call, "org.bluez.Error.InvalidArguments", "Invalid arguments in method call");
  }
  const std::string path = sd_bus_message_get_path(call);
  setPowered(path.substr(path.rfind('/') + 1), isOn != 0);
  return agree(call);
}

int FakeBluez::setDiscoveryFilter(sd_bus_message* call) {
  transport.clear();
  wantsRepeats = false;
  const bool isRead = forEachEntry(call, kProperties, [&](const std::string& name) {
    int flag = 0;
    const char* text = nullptr;
    if (name == "Transport") {
      if (sd_bus_message_read(call, "v", "s", &text) < 0) return false;
      transport = text;
      return true;
    }
    if (name != "DuplicateData" || sd_bus_message_read(call, "v", "b", &flag) < 0) return false;
    wantsRepeats = flag != 0;
    return true;
  });
  return isRead ? agree(call) : refuse(call, "org.bluez.Error.InvalidArguments", "filter");
}

int FakeBluez::startDiscovery(sd_bus_message* call) {
  Adapter* adapter = adapterOf(call);
  if (adapter == nullptr) return refuse(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "no such adapter");
  if (!adapter->isPowered) return refuse(call, "org.bluez.Error.NotReady", "Resource Not Ready");
  const std::string path = sd_bus_message_get_path(call);
  if (broken.contains(path.substr(path.rfind('/') + 1))) {
    return refuse(call, "org.bluez.Error.Failed", "Input/output error");
  }
  const bool isNew =
      !hasLeftOverDiscovery && adapter->discoverers.insert(sd_bus_message_get_sender(call)).second;
  if (!isNew || losesAnswers-- > 0) {
    return refuse(call, "org.bluez.Error.InProgress", "Operation already in progress");
  }
  heldBack_.clear();
  tellFlag(sd_bus_message_get_path(call), "Discovering", true);
  return agree(call);
}

int FakeBluez::stopDiscovery(sd_bus_message* call) {
  Adapter* adapter = adapterOf(call);
  if (adapter == nullptr || adapter->discoverers.erase(sd_bus_message_get_sender(call)) == 0) {
    return refuse(call, "org.bluez.Error.Failed", "No discovery started");
  }
  endDiscovery(sd_bus_message_get_path(call), *adapter);
  return agree(call);
}

int FakeBluez::registerMonitor(sd_bus_message* call) {
  const Adapter* adapter = adapterOf(call);
  if (adapter == nullptr || !adapter->hasMonitors) {
    return refuse(call, SD_BUS_ERROR_UNKNOWN_METHOD, "no monitors here");
  }
  const std::string client = sd_bus_message_get_sender(call);
  if (std::ranges::find(monitors_, client, &Monitor::client) != monitors_.end()) {
    return refuse(call, "org.bluez.Error.AlreadyExists", "Already Exists");
  }
  const char* root = nullptr;
  if (sd_bus_message_read_basic(call, 'o', &root) <= 0) return -1;
  monitors_.push_back({client, root, sd_bus_message_get_path(call), {}, {}});
  agree(call);
  const auto read = [](sd_bus_message* reply, void* self, sd_bus_error*) {
    static_cast<FakeBluez*>(self)->readMonitor(reply);
    return 0;
  };
  return sd_bus_call_method_async(connection_.bus(), nullptr, client.c_str(), root,
                                  "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", read,
                                  this, "");
}

int FakeBluez::unregisterMonitor(sd_bus_message* call) {
  const std::string client = sd_bus_message_get_sender(call);
  const auto erased =
      std::erase_if(monitors_, [&](const Monitor& monitor) { return monitor.client == client; });
  return erased > 0 ? agree(call) : refuse(call, "org.bluez.Error.DoesNotExist", "Does Not Exist");
}

// What a client shows of its monitor; one that is not as it should be is released.
void FakeBluez::readMonitor(sd_bus_message* objects) {
  const char* client = sd_bus_message_get_sender(objects);
  const auto monitor = std::ranges::find_if(
      monitors_, [&](const Monitor& one) { return client != nullptr && one.client == client; });
  if (monitor == monitors_.end()) return;
  std::string type;
  const auto readProperty = [&](const std::string& name) {
    if (name == "Type") {
      const char* text = nullptr;
      if (sd_bus_message_read(objects, "v", "s", &text) < 0) return false;
      type = text;
      return true;
    }
    if (name != "Patterns") return sd_bus_message_skip(objects, "v") >= 0;
    std::uint8_t start = 1;
    std::uint8_t kind = 0;
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_enter_container(objects, 'v', "a(yyay)") <= 0 ||
        sd_bus_message_enter_container(objects, 'a', "(yyay)") <= 0 ||
        sd_bus_message_enter_container(objects, 'r', "yyay") <= 0 ||
        sd_bus_message_read(objects, "yy", &start, &kind) <= 0 ||
        sd_bus_message_read_array(objects, 'y', &bytes, &size) < 0) {
      return false;
    }
    const auto* begin = static_cast<const std::uint8_t*>(bytes);
    if (start == 0 && kind == 0xFF) monitor->pattern.assign(begin, begin + size);
    for (int level = 0; level < 3; ++level) sd_bus_message_exit_container(objects);
    return true;
  };
  const auto readInterface = [&](const std::string& name) {
    if (name != "org.bluez.AdvertisementMonitor1") {
      return sd_bus_message_skip(objects, "a{sv}") >= 0;
    }
    return forEachEntry(objects, kProperties, readProperty);
  };
  const bool isRead = forEachEntry(objects, kObjects, [&](const std::string& path) {
    if (path != monitor->root) monitor->object = path;
    return forEachEntry(objects, kInterfaces, readInterface);
  });
  if (!isRead || type != "or_patterns" || monitor->pattern.empty()) {
    return callMonitor(*monitor, "Release");
  }
  activate(*monitor);
}

void FakeBluez::activate(const Monitor& monitor) {
  if (!neverActivates && adapters_.at(monitor.adapter).isPowered) callMonitor(monitor, "Activate");
}

void FakeBluez::releaseMonitors() {
  for (const Monitor& monitor : std::exchange(monitors_, {})) callMonitor(monitor, "Release");
}

void FakeBluez::callMonitor(const Monitor& monitor, const char* member, const std::string& device) {
  sd_bus_message* message = nullptr;
  ASSERT_GE(sd_bus_message_new_method_call(connection_.bus(), &message, monitor.client.c_str(),
                                           monitor.object.c_str(),
                                           "org.bluez.AdvertisementMonitor1", member),
            0);
  const BusMessage owned(message);
  if (!device.empty()) sd_bus_message_append(message, "o", device.c_str());
  sd_bus_send(connection_.bus(), message, nullptr);
  connection_.sent();
}

std::string FakeBluez::earPath() const {
  return ear.empty() ? adapters_.begin()->first : "/org/bluez/" + ear;
}

std::string FakeBluez::pathOf(const std::string& address) const {
  std::string path = earPath() + "/dev";
  for (std::size_t at = 0; at < address.size(); at += 2) path += "_" + address.substr(at, 2);
  return path;
}

bool FakeBluez::isDiscovering() const {
  return std::ranges::any_of(adapters_,
                             [](const auto& entry) { return !entry.second.discoverers.empty(); });
}

}  // namespace halvora
