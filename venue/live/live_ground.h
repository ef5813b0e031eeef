// SPDX-License-Identifier: Apache-2.0
// What a show is played on: the clock, whoever gives commands, and the radios. For the one command
// that plays; tests have one in virtual time. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "halvora/platform/run_loop.h"
#include "halvora/platform/serial_queues.h"
#include "venue/live/ola_input.h"

namespace halvora {

class Advertiser;

/// Where commands come from. Whoever reads them calls from turns of the loop.
struct CommandSource {
  /// A line without its end.
  std::function<void(std::string_view line)> line;
  /// There will be no more.
  std::function<void()> ended;
};

class LiveGround {
 public:
  virtual ~LiveGround() = default;
  virtual RunLoop& loop() = 0;
  virtual Date date() const = 0;
  /// Runs turns until `isDone`, which is asked often enough for a user who waits.
  virtual void runUntil(const std::function<bool()>& isDone) = 0;

  /// Lines of standard input; longer ones than any command come as their beginning.
  virtual void readLines(CommandSource source) = 0;
  /// Single keys of the terminal, as the commands that they mean; false where there is none.
  virtual bool readKeys(CommandSource source) = 0;

  /// Messages of Open Sound Control at that address and port, as commands; empty, or why not.
  virtual std::string readOsc(const std::string& address, std::uint16_t port,
                              CommandSource source) = 0;

  /// A universe of OLA's daemon; null where this program was built without it.
  virtual std::unique_ptr<OlaInput> openOla(unsigned universe, OlaListener listener) = 0;

  /// Off the main thread, for what must not hold up a show; null where that cannot be had.
  virtual std::unique_ptr<SerialQueue> makeQueue() = 0;
  /// One more advertisement, on whichever adapter it is opened with; null where this program was
  /// built without Bluetooth.
  virtual std::unique_ptr<Advertiser> makeAdvertiser() = 0;
};

}  // namespace halvora
