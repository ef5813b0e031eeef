// SPDX-License-Identifier: Apache-2.0
// A service on a private bus that does what the test wants: answers, refuses, hangs, dies and comes
// back. Every call is written down with its arguments. Owned by the test; one thread with it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "adapters/linux/bus/bus_connection.h"

namespace halvora {

class FakeService {
 public:
  using Answer = std::function<int(sd_bus_message* call)>;

  FakeService(RunLoop& loop, Descriptors& descriptors, std::string address, std::string name);

  /// Joins the bus under its name.
  void appear();
  /// Killed: no farewell.
  void die();

  /// A signal of its own with a truth value, to everybody.
  void signal(const char* path, const char* interface, const char* member, bool value);
  /// A signal to everybody, with what `fill` appends.
  void announce(const char* path, const char* interface, const char* member,
                const std::function<void(sd_bus_message*)>& fill);

  /// Answers to the calls that a hanging service has kept.
  void answerKept();

  /// "Inhibit(host, Light show)", in order; containers are in brackets.
  std::vector<std::string> calls;
  /// Who called last, by its own name on the bus.
  std::string caller;
  /// What it can do, by "interface.member"; anything else it does not know.
  std::map<std::string, Answer> answers;
  /// Keeps calls instead of answering.
  bool isHanging = false;

 private:
  static int handleCall(sd_bus_message* message, void* self, sd_bus_error*);
  void answer(sd_bus_message* call);

  BusConnection connection_;
  const std::string address_;
  const std::string name_;
  BusSlot filter_;
  std::vector<BusMessage> kept_;
};

/// An answer without content.
int agree(sd_bus_message* call);
/// An answer that is an error of that name.
FakeService::Answer refusal(const char* name);
/// The arguments as text; the message stands at its end then.
std::string argumentsOf(sd_bus_message* message);

}  // namespace halvora
