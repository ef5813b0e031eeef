// SPDX-License-Identifier: Apache-2.0
// What the daemon is asked, and its answers; what it tells by itself is in bluez_signals.cpp.
#include "adapters/linux/bus/bluez_daemon.h"

#include <algorithm>
#include <utility>

#include "adapters/linux/bus/bluez_errors.h"
#include "adapters/linux/bus/bus_dictionary.h"
#include "adapters/linux/bus/bus_name.h"

namespace halvora {

namespace {

constexpr const char* kLogin = "org.freedesktop.login1";
constexpr const char* kInProgress = "org.bluez.Error.InProgress";

// What the answer to our first question says when it is an error.
BluezReach reachOf(const sd_bus_error& error) {
  if (isRefusal(error)) return BluezReach::refused;
  return isAbsence(error) ? BluezReach::noDaemon : BluezReach::silent;
}

}  // namespace

// What is asked may fail for want of memory half way. There is one way back from anywhere: a new
// connection.
template <class Act>
void BluezDaemon::attempt(const Act& act) {
  try {
    act();
  } catch (...) {
    connection_.failed();
  }
}

BluezDaemon::BluezDaemon(RunLoop& loop, Descriptors& descriptors, std::string busAddress)
    : connection_(loop, descriptors), busAddress_(std::move(busAddress)), monitor_(*this) {}

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
    attempt([this] { askForObjects(); });
  }
}

void BluezDaemon::connect() {
  connection_.open(busAddress_, [this] { busLost(); });
  if (connection_.bus() == nullptr) return;
  attempt([this] {
    matchDaemon();
    matchSleep();
    askForObjects();
  });
}

void BluezDaemon::busLost() {
  matches_.clear();
  login_.clear();
  if (connection_.failures() > std::exchange(failuresNoted_, connection_.failures())) {
    ++errors_.count;
    errors_.last = "out of memory";
  }
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

BusSlot BluezDaemon::match(const std::string& rule, Handler handler) {
  return connection_.match(rule,
                           [this, handler](sd_bus_message* message) { (this->*handler)(message); });
}

// Of the daemon's signals those about objects come for every device that somebody else looks for;
// the bus cannot tell their paths apart any better.
void BluezDaemon::matchDaemon() {
  const std::string signal = "type='signal',sender='org.bluez',";
  const std::string objects = signal + "path='/',interface='org.freedesktop.DBus.ObjectManager',";
  matches_.clear();
  matches_.push_back(watchName(
      connection_, kBluez, [this](std::string_view, std::string_view now) { ownerChanged(now); }));
  matches_.push_back(match(objects + "member='InterfacesAdded'", &BluezDaemon::interfacesAdded));
  matches_.push_back(
      match(objects + "member='InterfacesRemoved'", &BluezDaemon::interfacesRemoved));
  matches_.push_back(match(signal + "path_namespace='/org/bluez',"
                                    "interface='org.freedesktop.DBus.Properties',"
                                    "member='PropertiesChanged',arg0='org.bluez.Adapter1'",
                           &BluezDaemon::adapterChanged));
}

void BluezDaemon::matchSleep() {
  matches_.push_back(watchName(connection_, kLogin,
                               [this](std::string_view, std::string_view now) { login_ = now; }));
  matches_.push_back(
      match("type='signal',sender='org.freedesktop.login1',"
            "path='/org/freedesktop/login1',"
            "interface='org.freedesktop.login1.Manager',member='PrepareForSleep'",
            &BluezDaemon::sleepChanged));
  matches_.push_back(
      askForOwner(connection_, kLogin, [this](std::string_view owner) { login_ = owner; }));
}

template <class... Arguments>
BusMessage BluezDaemon::newCall(const std::string& path, const char* interface, const char* member,
                                Arguments... arguments) {
  BusMessage message = connection_.newCall({kBluez, path.c_str(), interface}, member, arguments...);
  if (message != nullptr && !mayBeStarted_) sd_bus_message_set_auto_start(message.get(), 0);
  return message;
}

// A connection on which nothing can be sent is as good as lost.
BusSlot BluezDaemon::send(const BusMessage& message, Handler handler) {
  return connection_.call(message, BusConnection::kUsualTime,
                          [this, handler](sd_bus_message* answer) { (this->*handler)(answer); });
}

void BluezDaemon::askForObjects() {
  const BusMessage message = newCall("/", kObjectManagerInterface, "GetManagedObjects");
  mayBeStarted_ = false;
  objectsAnswer_ = send(message, &BluezDaemon::takeObjects);
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
  attempt([&] {
    scanned_ = adapter;
    method_ = method;
    isStopping_ = false;
    deviceMatch_ = match("type='signal',sender='org.bluez',path_namespace='" + adapter +
                             "',interface='org.freedesktop.DBus.Properties',"
                             "member='PropertiesChanged',arg0='org.bluez.Device1'",
                         &BluezDaemon::deviceChanged);
    if (method == BluezMethod::discovery) {
      sendDiscoveryFilter();
    } else if (monitor_.show(connection_.bus())) {
      request("", "RegisterMonitor");
    } else {
      connection_.giveUp();
    }
  });
}

void BluezDaemon::stop() {
  isStopping_ = true;
  attempt([this] { request("StopDiscovery", "UnregisterMonitor"); });
  abandon();
}

// Without a filter of our own the daemon would pause between its scans and tell of no repeats.
void BluezDaemon::sendDiscoveryFilter() {
  answer_ = send(newCall(scanned_, kAdapterInterface, "SetDiscoveryFilter", "a{sv}", 2, "Transport",
                         "s", "le", "DuplicateData", "b", 1),
                 &BluezDaemon::takeFilterAnswer);
}

void BluezDaemon::takeFilterAnswer(sd_bus_message* message) {
  if (sd_bus_message_get_error(message) != nullptr) return takeAnswer(message);
  request("StartDiscovery", "");
}

void BluezDaemon::request(const char* ofDiscovery, const char* ofMonitors) {
  answer_ =
      send(method_ == BluezMethod::monitor
               ? newCall(scanned_, kMonitorManagerInterface, ofMonitors, "o", BluezMonitor::kRoot)
               : newCall(scanned_, kAdapterInterface, ofDiscovery),
           &BluezDaemon::takeAnswer);
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
  connection_.tell(newCall(scanned_, kAdapterInterface, "StopDiscovery"));
}

// A device that the daemon knew before we listened, and that has only repeated itself since.
void BluezDaemon::askForData(std::string_view device) {
  const auto free = std::ranges::find_if(
      questions_, [](const Question& question) { return question.answer == nullptr; });
  if (free == questions_.end()) return;
  free->device = device;
  free->answer = connection_.call(
      newCall(free->device, kPropertiesInterface, "Get", "ss", kDeviceInterface,
              "ManufacturerData"),
      BusConnection::kUsualTime,
      [this, &question = *free](sd_bus_message* answer) { takeData(question, answer); });
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
