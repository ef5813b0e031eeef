// SPDX-License-Identifier: Apache-2.0
// A bus whose services are asked for something now and then. It is connected to with the first
// call; one that is lost is looked for again by a later call. No call is waited for, each ends
// within its time, and none is left over when its owner goes. Owned by who calls; main thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include <systemd/sd-bus.h>

#include "adapters/linux/bus/bus_connection.h"
#include "adapters/linux/bus/bus_name.h"

namespace halvora {

/// Where the services of a Linux system are asked.
struct BusAddresses {
  /// Empty for the system's.
  std::string system;
  std::string session;
  /// The user's session, as its environment names it.
  static BusAddresses ofEnvironment();
};

struct BusObject {
  const char* service;
  const char* path;
  const char* interface;
};

class ServiceBus {
 public:
  struct Events {
    /// A new connection was made: the place to set up matches. May be absent.
    std::function<void(sd_bus*)> opened;
    /// There is no such bus, or it went, and with it all calls; in a turn of its own. The bus is
    /// not to be reached for from within.
    std::function<void()> lost;
  };

  ServiceBus(RunLoop& loop, Descriptors& descriptors, std::string address, Events events);

  /// The connection, made anew if need be, once a second at most; null if there is none now.
  sd_bus* reach();

  /// Null if there is no bus.
  template <class... Arguments>
  BusMessage newCall(const BusObject& object, const char* member, const char* types = "",
                     Arguments... arguments) {
    BusMessage message = begin(object, member);
    if (message != nullptr && sd_bus_message_append(message.get(), types, arguments...) < 0) {
      message.reset();
    }
    return message;
  }

  /// For what nobody answers; lost if the bus has no room for it.
  void tell(const BusMessage& message);
  /// For a new connection: tells who has the service's name from now on.
  BusSlot watchName(const std::string& service, NameChanged changed) {
    return halvora::watchName(connection_, service, std::move(changed));
  }

 private:
  friend class BusCall;
  BusMessage begin(const BusObject& object, const char* member);

  RunLoop& loop_;
  const std::string address_;
  const Events events_;
  std::optional<Duration> lastTry_;
  BusConnection connection_;
};

/// A call under way, one at a time.
class BusCall {
 public:
  /// The reply, which may be an error; lives for the call.
  using Done = std::function<void(sd_bus_message* reply)>;

  BusCall() = default;
  BusCall(const BusCall&) = delete;
  BusCall& operator=(const BusCall&) = delete;

  /// False if it cannot be sent, and nothing comes of it. Otherwise `done` is called once, unless
  /// the call is dropped before; a lost bus drops its calls without a word.
  bool send(ServiceBus& bus, const BusMessage& message, Duration longest, Done done);
  bool isPending() const { return slot_ != nullptr; }
  void drop() { slot_.reset(); }

 private:
  BusSlot slot_;
};

inline bool isError(sd_bus_message* reply) {
  return sd_bus_message_is_method_error(reply, nullptr) != 0;
}

}  // namespace halvora
