// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bus/bus.h"

#include <cstdlib>
#include <utility>

#include <unistd.h>

namespace halvora {

namespace {

constexpr Duration kBetweenTries = milliseconds(1000);

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

BusAddresses BusAddresses::ofEnvironment() {
  std::string session = variable("DBUS_SESSION_BUS_ADDRESS");
  if (session.empty()) {
    std::string folder = variable("XDG_RUNTIME_DIR");
    if (folder.empty()) folder = "/run/user/" + std::to_string(getuid());
    session = "unix:path=" + folder + "/bus";
  }
  return {{}, std::move(session)};
}

Bus::Bus(RunLoop& loop, Descriptors& descriptors, std::string address)
    : loop_(loop), address_(std::move(address)), connection_(loop, descriptors) {}

sd_bus* Bus::reach() {
  if (connection_.bus() != nullptr) return connection_.bus();
  if (lastTry_ && loop_.now() < *lastTry_ + kBetweenTries) return nullptr;
  lastTry_ = loop_.now();
  connection_.open(address_, [this] { lost(); });
  if (connection_.bus() == nullptr) return nullptr;
  for (const BusObserver* observer : observers_) observer->events_.opened();
  connection_.sent();
  return connection_.bus();
}

void Bus::tell(const BusMessage& message) {
  if (message != nullptr && connection_.bus() != nullptr) connection_.tell(message);
}

// Whoever is told may drop other calls. Where one of them fails, the others are told by the next
// loss, which that is.
void Bus::lost() {
  try {
    while (!calls_.empty()) calls_.back()->end(nullptr);
    for (const BusObserver* observer : observers_) observer->events_.lost();
  } catch (...) {
    connection_.failed();
  }
}

BusObserver::BusObserver(Bus& bus, Events events) : bus_(bus), events_(std::move(events)) {
  if (bus_.connection_.bus() != nullptr) events_.opened();
  bus_.observers_.push_back(this);
}

BusObserver::~BusObserver() { std::erase(bus_.observers_, this); }

bool BusCall::send(Bus& bus, const BusMessage& message, Duration longest, Done done) {
  BusConnection& connection = bus.connection_;
  drop();
  if (message == nullptr || connection.bus() == nullptr) return false;
  try {
    bus.calls_.reserve(bus.calls_.size() + 1);
    slot_ = connection.call(message, longest, [this](sd_bus_message* reply) { end(reply); });
  } catch (...) {
    connection.failed();
  }
  if (slot_ == nullptr) return false;
  bus.calls_.push_back(this);
  bus_ = &bus;
  done_ = std::move(done);
  return true;
}

void BusCall::drop() {
  if (slot_ == nullptr) return;
  slot_.reset();
  std::erase(bus_->calls_, this);
  done_ = nullptr;
}

// Whoever is told may make the next call on this, or give it up.
void BusCall::end(sd_bus_message* reply) {
  const Done done = std::move(done_);
  drop();
  done(reply);
}

}  // namespace halvora
