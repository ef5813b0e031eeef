// SPDX-License-Identifier: Apache-2.0
// A transmitter of show packets, and the loop on which it runs: for the one command that is heard.
// The kit itself never transmits. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "adapters/standard/system_clock.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/time.h"

namespace halvora {

/// What one advertisement of manufacturer data holds, the company's id included.
inline constexpr std::size_t kLeastAdvertised = 2;
inline constexpr std::size_t kMostAdvertised = 29;

struct TransmitterSettings {
  /// As the system calls it ("hci1"); empty for the first one with power.
  std::string adapter = {};
  /// From one advertisement to the next, as far as the system allows.
  Duration interval = milliseconds(100);
};

/// What is on the air of one adapter.
class Advertiser {
 public:
  virtual ~Advertiser() = default;
  /// Looks for the adapter. Once, before anything is shown.
  virtual void open(const TransmitterSettings& settings) = 0;
  /// Advertises this data again and again, in place of what was shown before.
  virtual void show(std::span<const std::uint8_t> manufacturerData) = 0;
  /// Off the air.
  virtual void end() = 0;

  /// Something that was asked for is still to be answered.
  virtual bool isBusy() const = 0;
  /// Why nothing is on the air any more, in one line; empty while all is well.
  virtual const std::string& failure() const = 0;
};

class Transmitter : public Advertiser {
 public:
  virtual RunLoop& loop() = 0;
  /// What signed packets are signed for.
  virtual Date date() const { return SystemWallClock().now(); }
  /// Runs turns until `isDone`, which is asked often enough for a user who waits.
  virtual void runUntil(const std::function<bool()>& isDone) = 0;
};

}  // namespace halvora
