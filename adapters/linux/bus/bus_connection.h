// SPDX-License-Identifier: Apache-2.0
// A connection to a D-Bus bus, driven by the run loop: what arrives is handed to the handlers that
// were set up on it, a bounded number of messages a turn, so that a crowded bus never holds up the
// show. Nothing that a handler throws passes through the bus library, which is C: it is counted,
// and the connection counts as lost, because its owner knows how to begin anew. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <systemd/sd-bus.h>

#include "halvora/platform/descriptors.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

struct BusEnd {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
/// A handler that is set up for as long as this lives.
using BusSlot = std::unique_ptr<sd_bus_slot, BusEnd>;
using BusMessage = std::unique_ptr<sd_bus_message, BusEnd>;

/// An error of the bus, freed with its owner.
struct BusError : sd_bus_error {
  BusError() : sd_bus_error{} {}
  ~BusError() { sd_bus_error_free(this); }
  BusError(const BusError&) = delete;
  BusError& operator=(const BusError&) = delete;
};

/// Is called with each message that comes for it, and may drop its own slot.
using BusHandler = std::function<void(sd_bus_message*)>;

/// What of a service is called. The texts live for the call.
struct BusObject {
  const char* service;
  const char* path;
  const char* interface;
};

class BusConnection {
 public:
  /// As long as the bus library waits by itself: five seconds.
  static constexpr Duration kUsualTime{};

  BusConnection(RunLoop& loop, Descriptors& descriptors) : loop_(loop), descriptors_(descriptors) {}
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  /// Begins to connect to the bus at `address`, or to the system's if that is empty; messages may
  /// be sent at once. `lost` runs in a turn of its own if there is no such bus, or when it goes.
  void open(const std::string& address, std::function<void()> lost);
  /// Handlers on it are not called any more; their slots may go later.
  void close();

  /// Null while it is closed.
  sd_bus* bus() const { return bus_.get(); }

  /// Null where there is no connection, or no memory. The arguments are as the bus library takes
  /// them.
  template <class... Arguments>
  BusMessage newCall(const BusObject& object, const char* member, const char* types = "",
                     Arguments... arguments) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(bus_.get(), &message, object.service, object.path,
                                   object.interface, member);
    BusMessage call(message);
    if (call != nullptr && sd_bus_message_append(message, types, arguments...) < 0) call.reset();
    return call;
  }

  /// Hands every message on that the rule describes. Null, and the connection given up, if the bus
  /// takes no rule.
  BusSlot match(const std::string& rule, BusHandler handler);
  /// Hands the answer on, which is an error if none has come after `longest`. Null, and the
  /// connection given up, for what cannot be sent.
  BusSlot call(const BusMessage& message, Duration longest, BusHandler answered);
  /// For a call whose answer is of no interest. The connection is given up for what cannot be sent.
  void tell(const BusMessage& message);

  /// To be called when something was sent outside a handler: says what is to be waited for.
  void sent() { wait(); }
  /// For what cannot even be sent: the connection counts as lost.
  void giveUp();
  /// For what was thrown on the way: counted, and given up.
  void failed() noexcept;
  /// How often that was.
  std::uint64_t failures() const { return failures_; }

 private:
  /// What the bus library keeps for a handler, for as long as it may still call it.
  struct Registered {
    BusConnection& connection;
    BusHandler handler;
  };

  static int handle(sd_bus_message* message, void* registered, sd_bus_error*) noexcept;
  template <class Register>
  BusSlot registered(BusHandler handler, const Register& add);
  bool connect(const std::string& address);
  void process();
  void wait();
  void waitForDescriptor();
  void waitForDeadline();

  RunLoop& loop_;
  Descriptors& descriptors_;
  std::unique_ptr<sd_bus, BusEnd> bus_;
  std::function<void()> lost_;
  /// Waits for nothing any more but to say so.
  bool isLost_ = false;
  std::uint64_t failures_ = 0;
  /// Something was thrown, and the connection may still be to be given up.
  bool hasFailed_ = false;
  DescriptorWatch watch_;
  int watchedEvents_ = 0;
  Timer next_;
  /// What `next_` waits for, as the bus counts time.
  std::uint64_t deadline_ = 0;
};

}  // namespace halvora
