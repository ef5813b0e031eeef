// SPDX-License-Identifier: Apache-2.0
// A bus that everyone who now and then asks one of its services for something shares. It is
// connected to with the first call; one that is lost is looked for again by a later call. No call
// is waited for, each ends within its time, and none is left over when its owner goes. Outlives
// those who use it; main thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

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

class Bus {
 public:
  Bus(RunLoop& loop, Descriptors& descriptors, std::string address);
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  /// The connection, made anew if need be, once a second at most; null if there is none now.
  sd_bus* reach();

  /// Null if there is no bus.
  template <class... Arguments>
  BusMessage newCall(const BusObject& object, const char* member, const char* types = "",
                     Arguments... arguments) {
    return reach() != nullptr ? connection_.newCall(object, member, types, arguments...) : nullptr;
  }

  /// For what nobody answers; lost if the bus has no room for it.
  void tell(const BusMessage& message);
  /// For a new connection: tells who has the service's name from now on.
  BusSlot watchName(const std::string& service, NameChanged changed) {
    return halvora::watchName(connection_, service, std::move(changed));
  }
  /// The same once, of who has it at present.
  BusSlot askForOwner(const std::string& service,
                      std::function<void(std::string_view owner)> answered) {
    return halvora::askForOwner(connection_, service, std::move(answered));
  }
  /// For a new connection too: hands on what the rule describes, whoever sent it.
  BusSlot match(const std::string& rule, BusHandler handler) {
    return connection_.match(rule, std::move(handler));
  }

 private:
  friend class BusCall;
  friend class BusObserver;
  void lost();

  RunLoop& loop_;
  const std::string address_;
  std::optional<Duration> lastTry_;
  BusConnection connection_;
  std::vector<class BusCall*> calls_;
  std::vector<class BusObserver*> observers_;
};

/// The two buses of a machine.
struct Buses {
  Buses(RunLoop& loop, Descriptors& descriptors, const BusAddresses& addresses)
      : system(loop, descriptors, addresses.system),
        session(loop, descriptors, addresses.session) {}

  Bus system;
  Bus session;
};

/// Hears of a bus's connections for as long as it lives.
class BusObserver {
 public:
  struct Events {
    /// A new connection was made, or is there already: the place to set up matches.
    std::function<void()> opened;
    /// There is no such bus, or it went, and all calls have ended; in a turn of its own. The bus is
    /// not to be reached for from within.
    std::function<void()> lost;
  };

  BusObserver(Bus& bus, Events events);
  ~BusObserver();
  BusObserver(const BusObserver&) = delete;
  BusObserver& operator=(const BusObserver&) = delete;

 private:
  friend class Bus;
  Bus& bus_;
  const Events events_;
};

/// A call under way, one at a time.
class BusCall {
 public:
  /// The reply, which may be an error, also where the bus was lost; or null for such a loss, from
  /// within which the bus is not to be reached for. Lives for the call.
  using Done = std::function<void(sd_bus_message* reply)>;

  BusCall() = default;
  ~BusCall() { drop(); }
  BusCall(const BusCall&) = delete;
  BusCall& operator=(const BusCall&) = delete;

  /// False if it cannot be sent, and nothing comes of it. Otherwise `done` is called once, unless
  /// the call is dropped before.
  bool send(Bus& bus, const BusMessage& message, Duration longest, Done done);
  bool isPending() const { return slot_ != nullptr; }
  void drop();

 private:
  friend class Bus;
  void end(sd_bus_message* reply);

  Bus* bus_ = nullptr;
  Done done_;
  BusSlot slot_;
};

inline bool isError(sd_bus_message* reply) {
  return reply == nullptr || sd_bus_message_is_method_error(reply, nullptr) != 0;
}

}  // namespace halvora
