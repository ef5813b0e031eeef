// SPDX-License-Identifier: Apache-2.0
// Sets a light of the kernel's through the login daemon, which writes for the user of the session.
// One call at a time: what is asked for meanwhile waits, and only the newest of it is written. A
// strobe therefore never queues, however slow the daemon is. Owned by the light's need; main
// thread.
#pragma once

#include <cstdint>
#include <optional>

#include "adapters/linux/bus/bus.h"
#include "adapters/linux/services/sysfs_light.h"

namespace halvora {

struct LightWriterSettings {
  Duration longestCall = milliseconds(1000);
  Duration afterFailure = milliseconds(1000);
};

struct LightWriterCounts {
  std::uint64_t calls = 0;
  /// Calls that were refused, or not answered in time.
  std::uint64_t failures = 0;
};

class LightWriter {
 public:
  LightWriter(RunLoop& loop, Bus& system, SysfsLight light,
              const LightWriterSettings& settings = {});
  LightWriter(const LightWriter&) = delete;
  LightWriter& operator=(const LightWriter&) = delete;

  const SysfsLight& light() const { return light_; }
  /// Of several levels within one turn the last counts; one that the light has already is left out.
  void write(std::uint32_t level);
  /// The last word of an owner that goes: sent at once, and not waited for.
  void leave(std::uint32_t level);

  /// Something is still to be written, or its answer to come.
  bool isBusy() const { return wanted_.has_value(); }
  const LightWriterCounts& counts() const { return counts_; }

 private:
  BusMessage newCall(std::uint32_t level);
  void send();
  void failed();

  RunLoop& loop_;
  const SysfsLight light_;
  const LightWriterSettings settings_;
  Bus& bus_;
  /// None once it has been written, or given up.
  std::optional<std::uint32_t> wanted_;
  int failuresInARow_ = 0;
  LightWriterCounts counts_;
  BusCall call_;
  Timer next_;
};

}  // namespace halvora
