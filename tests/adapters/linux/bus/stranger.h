// SPDX-License-Identifier: Apache-2.0
// A program on a private bus that nobody has asked for anything: it writes to one other program
// alone, past the bus's matches. Owned by the test; one thread with it.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "adapters/linux/bus/bus_connection.h"
#include "adapters/linux/poll_run_loop.h"

namespace halvora {

class Stranger {
 public:
  Stranger(PollRunLoop& loop, const std::string& address) : loop_(loop), connection_(loop, loop) {
    connection_.open(address, [] {});
  }

  /// A signal to `target`, its own name on the bus, with what `fill` appends.
  void signal(const std::string& target, const std::string& path, const char* interface,
              const char* member, const std::function<void(sd_bus_message*)>& fill) {
    sd_bus_message* message = nullptr;
    ASSERT_GE(
        sd_bus_message_new_signal(connection_.bus(), &message, path.c_str(), interface, member), 0);
    const BusMessage owned(message);
    fill(message);
    ASSERT_GE(sd_bus_send_to(connection_.bus(), message, target.c_str(), nullptr), 0);
    connection_.sent();
  }
  /// "Nobody has that name any more."
  void sayGone(const std::string& target, const char* name) {
    signal(target, "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged",
           [name](sd_bus_message* message) {
             sd_bus_message_append(message, "sss", name, ":1.1", "");
           });
  }
  /// Calls a method without arguments, and waits for its answer: all that was sent to the target
  /// before has been handed on by then. False for an error, or if none comes.
  bool call(const std::string& target, const char* path, const char* interface,
            const char* member) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(connection_.bus(), &message, target.c_str(), path, interface,
                                   member);
    const BusMessage owned(message);
    bool isAnswered = false;
    bool isError = true;
    const BusSlot slot = connection_.call(owned, BusConnection::kUsualTime, [&](auto* reply) {
      isAnswered = true;
      isError = sd_bus_message_is_method_error(reply, nullptr) != 0;
    });
    return loop_.runUntil([&] { return isAnswered; }, std::chrono::seconds(30)) && !isError;
  }
  bool isThrough(const std::string& target) {
    return call(target, "/", "org.freedesktop.DBus.Peer", "Ping");
  }

 private:
  PollRunLoop& loop_;
  BusConnection connection_;
};

}  // namespace halvora
