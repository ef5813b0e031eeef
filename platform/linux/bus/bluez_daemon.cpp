// SPDX-License-Identifier: Apache-2.0
// What the daemon is asked, and its answers; what it tells by itself is in bluez_signals.cpp.
#include "platform/linux/bus/bluez_daemon.h"

#include <algorithm>
#include <utility>

#include "platform/linux/bus/bluez_errors.h"
#include "platform/linux/bus/bus_dictionary.h"

namespace halvora {

namespace {

constexpr const char* kDaemon = "org.bluez";
constexpr const char* kInProgress = "org.bluez.Error.InProgress";

// What the answer to our first question says when it is an error.
BluezReach reachOf(const sd_bus_error& error) {
  if (isRefusal(error)) return BluezReach::refused;
  return isAbsence(error) ? BluezReach::noDaemon : BluezReach::silent;
}

}  // namespace

template <BluezDaemon::Handler handler>
int BluezDaemon::handle(sd_bus_message* message, void* self, sd_bus_error*) {
  (static_cast<BluezDaemon*>(self)->*handler)(message);
  return 0;
}

int BluezDaemon::handleData(sd_bus_message* message, void* question, sd_bus_error*) {
  Question& asked = *static_cast<Question*>(question);
  asked.daemon->takeData(asked, message);
  return 0;
}

BluezDaemon::BluezDaemon(RunLoop& loop, Descriptors& descriptors, std::string busAddress)
    : connection_(loop, descriptors), busAddress_(std::move(busAddress)), monitor_(*this) {
  for (Question& question : questions_) question.daemon = this;
}

void BluezDaemon::open(BluezListener& listener) {
  listener_ = &listener;
  connect();
}

// The daemon ends what a client asked for when the client leaves the bus.
void BluezDaemon::close() {
  daemonLost(BluezReach::asking);
  matches_.clear();
  connection_.close();
}

void BluezDaemon::look() {
  if (connection_.bus() == nullptr) {
    connect();
  } else if (objectsAnswer_ == nullptr) {
    askForObjects();
  }
}

void BluezDaemon::connect() {
  connection_.open(busAddress_, [this] { busLost(); });
  if (connection_.bus() == nullptr) return;
  if (!matchDaemon()) return connection_.giveUp();
  askForObjects();
}

void BluezDaemon::busLost() {
  matches_.clear();
  daemonLost(BluezReach::noBus);
  listener_->systemChanged();
}

void BluezDaemon::daemonLost(BluezReach reach) {
  reach_ = reach;
  owner_.clear();
  adapters_.clear();
  abandon();
  objectsAnswer_.reset();
  answer_.reset();
}

void BluezDaemon::abandon() {
  scanned_.clear();
  devices_.clear();
  monitor_.hide();
  deviceMatch_.reset();
  for (Question& question : questions_) question.answer.reset();
}

BusSlot BluezDaemon::match(const std::string& rule, sd_bus_message_handler_t handler) {
  sd_bus_slot* slot = nullptr;
  sd_bus_add_match_async(connection_.bus(), &slot, rule.c_str(), handler, nullptr, this);
  return BusSlot(slot);
}

// Of the daemon's signals those about objects come for every device that somebody else looks for;
// the bus cannot tell their paths apart any better.
bool BluezDaemon::matchDaemon() {
  const std::string signal = "type='signal',";
  const std::string properties =
      "interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',";
  const std::string objects = "path='/',interface='org.freedesktop.DBus.ObjectManager',";
  matches_.clear();
  matches_.push_back(match(signal +
                               "sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                               "member='NameOwnerChanged',arg0='org.bluez'",
                           handle<&BluezDaemon::nameOwnerChanged>));
  matches_.push_back(match(signal + objects + "sender='org.bluez',member='InterfacesAdded'",
                           handle<&BluezDaemon::interfacesAdded>));
  matches_.push_back(match(signal + objects + "sender='org.bluez',member='InterfacesRemoved'",
                           handle<&BluezDaemon::interfacesRemoved>));
  matches_.push_back(match(signal + properties +
                               "sender='org.bluez',path_namespace='/org/bluez',"
                               "arg0='org.bluez.Adapter1'",
                           handle<&BluezDaemon::adapterChanged>));
  matches_.push_back(match(signal +
                               "sender='org.freedesktop.login1',path='/org/freedesktop/login1',"
                               "interface='org.freedesktop.login1.Manager',"
                               "member='PrepareForSleep'",
                           handle<&BluezDaemon::sleepChanged>));
  return std::ranges::none_of(matches_, [](const BusSlot& slot) { return slot == nullptr; });
}

BusMessage BluezDaemon::newCall(const std::string& path, const char* interface,
                                const char* member) {
  sd_bus_message* message = nullptr;
  sd_bus_message_new_method_call(connection_.bus(), &message, kDaemon, path.c_str(), interface,
                                 member);
  if (message != nullptr && !mayBeStarted_) sd_bus_message_set_auto_start(message, 0);
  return BusMessage(message);
}

// A connection on which nothing can be sent is as good as lost.
BusSlot BluezDaemon::send(const BusMessage& message, sd_bus_message_handler_t handler, void* data) {
  sd_bus_slot* slot = nullptr;
  if (message == nullptr ||
      sd_bus_call_async(connection_.bus(), &slot, message.get(), handler, data, 0) < 0) {
    connection_.giveUp();
  } else {
    connection_.sent();
  }
  return BusSlot(slot);
}

void BluezDaemon::askForObjects() {
  const BusMessage message =
      newCall("/", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects");
  mayBeStarted_ = false;
  objectsAnswer_ = send(message, handle<&BluezDaemon::takeObjects>, this);
}

void BluezDaemon::takeObjects(sd_bus_message* message) {
  objectsAnswer_.reset();
  const sd_bus_error* error = sd_bus_message_get_error(message);
  const char* sender = sd_bus_message_get_sender(message);
  if (error != nullptr || sender == nullptr) {
    if (error != nullptr) noteError(*error);
    daemonLost(error != nullptr ? reachOf(*error) : BluezReach::silent);
    return listener_->systemChanged();
  }
  // Whoever answers in the daemon's name is the daemon.
  owner_ = sender;
  reach_ = BluezReach::there;
  adapters_.clear();
  // Its devices are what it remembers, up to half a minute old, and not what is in the air.
  const bool isWhole = forEachEntry(message, kObjects, [&](const char* path) {
    AdapterNews news;
    if (!readAdapterObject(message, news)) return false;
    takeAdapter(path, news);
    return true;
  });
  if (!isWhole) ++counts_.malformed;
  listener_->systemChanged();
}

void BluezDaemon::start(const std::string& adapter, BluezMethod method) {
  scanned_ = adapter;
  method_ = method;
  isStopping_ = false;
  deviceMatch_ = match("type='signal',sender='org.bluez',path_namespace='" + adapter +
                           "',interface='org.freedesktop.DBus.Properties',"
                           "member='PropertiesChanged',arg0='org.bluez.Device1'",
                       handle<&BluezDaemon::deviceChanged>);
  if (method == BluezMethod::discovery) {
    sendDiscoveryFilter();
  } else if (monitor_.show(connection_.bus())) {
    request("", "RegisterMonitor");
  } else {
    connection_.giveUp();
  }
}

void BluezDaemon::stop() {
  isStopping_ = true;
  request("StopDiscovery", "UnregisterMonitor");
  abandon();
}

// Without a filter of our own the daemon would pause between its scans and tell of no repeats.
void BluezDaemon::sendDiscoveryFilter() {
  BusMessage message = newCall(scanned_, kAdapterInterface, "SetDiscoveryFilter");
  if (message != nullptr && sd_bus_message_append(message.get(), "a{sv}", 2, "Transport", "s", "le",
                                                  "DuplicateData", "b", 1) < 0) {
    message.reset();
  }
  answer_ = send(message, handle<&BluezDaemon::takeFilterAnswer>, this);
}

void BluezDaemon::takeFilterAnswer(sd_bus_message* message) {
  if (sd_bus_message_get_error(message) != nullptr) return takeAnswer(message);
  request("StartDiscovery", "");
}

void BluezDaemon::request(const char* ofDiscovery, const char* ofMonitors) {
  const bool isForMonitor = method_ == BluezMethod::monitor;
  BusMessage message = isForMonitor ? newCall(scanned_, kMonitorManagerInterface, ofMonitors)
                                    : newCall(scanned_, kAdapterInterface, ofDiscovery);
  if (message != nullptr && isForMonitor &&
      sd_bus_message_append(message.get(), "o", BluezMonitor::kRoot) < 0) {
    message.reset();
  }
  answer_ = send(message, handle<&BluezDaemon::takeAnswer>, this);
}

void BluezDaemon::takeAnswer(sd_bus_message* message) {
  answer_.reset();
  const sd_bus_error* error = sd_bus_message_get_error(message);
  auto outcome = BluezOutcome::done;
  // A monitor that exists is ours, registered by a request whose answer came too late.
  if (error != nullptr && !isStopping_ &&
      sd_bus_error_has_name(error, "org.bluez.Error.AlreadyExists") == 0) {
    noteError(*error);
    outcome = isRefusal(*error) ? BluezOutcome::refused : BluezOutcome::failed;
    if (sd_bus_error_has_name(error, kInProgress) != 0) endLateDiscovery();
  }
  if (isStopping_ || outcome != BluezOutcome::done) abandon();
  listener_->answered(outcome);
}

// A discovery in progress may be ours, by a request whose answer came too late, or what is left in
// the kernel of a daemon that died, and brings us nothing. Ours is ended, so that the next request
// has a clear answer.
void BluezDaemon::endLateDiscovery() {
  const BusMessage message = newCall(scanned_, kAdapterInterface, "StopDiscovery");
  if (message == nullptr || sd_bus_send(connection_.bus(), message.get(), nullptr) < 0) {
    connection_.giveUp();
  } else {
    connection_.sent();
  }
}

// A device that the daemon knew before we listened, and that has only repeated itself since.
void BluezDaemon::askForData(std::string_view device) {
  const auto free = std::ranges::find_if(
      questions_, [](const Question& question) { return question.answer == nullptr; });
  if (free == questions_.end()) return;
  free->device = device;
  BusMessage message = newCall(free->device, "org.freedesktop.DBus.Properties", "Get");
  if (message != nullptr &&
      sd_bus_message_append(message.get(), "ss", kDeviceInterface, "ManufacturerData") < 0) {
    message.reset();
  }
  free->answer = send(message, handleData, &*free);
}

void BluezDaemon::takeData(Question& question, sd_bus_message* message) {
  question.answer.reset();
  if (sd_bus_message_get_error(message) != nullptr) return;
  CompanyData data;
  take(readManufacturerData(message, data), question.device.c_str(), data, false);
}

void BluezDaemon::noteError(const sd_bus_error& error) {
  ++errors_.count;
  errors_.last = textOf(error);
}

}  // namespace halvora
