// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/service_bus.h"

#include <cstdint>
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

ServiceBus::ServiceBus(RunLoop& loop, Descriptors& descriptors, std::string address, Events events)
    : loop_(loop),
      address_(std::move(address)),
      events_(std::move(events)),
      connection_(loop, descriptors) {}

sd_bus* ServiceBus::reach() {
  if (connection_.bus() != nullptr) return connection_.bus();
  if (lastTry_ && loop_.now() < *lastTry_ + kBetweenTries) return nullptr;
  lastTry_ = loop_.now();
  connection_.open(address_, [this] {
    if (events_.lost) events_.lost();
  });
  if (connection_.bus() != nullptr && events_.opened) events_.opened(connection_.bus());
  connection_.sent();
  return connection_.bus();
}

BusMessage ServiceBus::begin(const BusObject& object, const char* member) {
  sd_bus* bus = reach();
  sd_bus_message* message = nullptr;
  if (bus != nullptr) {
    sd_bus_message_new_method_call(bus, &message, object.service, object.path, object.interface,
                                   member);
  }
  return BusMessage(message);
}

void ServiceBus::tell(const BusMessage& message) {
  if (message != nullptr && connection_.bus() != nullptr) connection_.tell(message);
}

bool BusCall::send(ServiceBus& bus, const BusMessage& message, Duration longest, Done done) {
  BusConnection& connection = bus.connection_;
  drop();
  if (message == nullptr || connection.bus() == nullptr) return false;
  try {
    // Whoever is told may make the next call on this, or give it up.
    slot_ =
        connection.call(message, longest, [this, done = std::move(done)](sd_bus_message* reply) {
          slot_.reset();
          done(reply);
        });
  } catch (...) {
    connection.failed();
  }
  return slot_ != nullptr;
}

}  // namespace halvora
