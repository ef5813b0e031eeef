// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/light_writer.h"

#include <utility>

namespace halvora {

namespace {

/// A daemon that restarts is back by then; one that refuses will go on refusing.
constexpr int kMostFailuresInARow = 5;

/// "auto" is the caller's session, or the one that its user looks at.
constexpr BusObject kSession{"org.freedesktop.login1", "/org/freedesktop/login1/session/auto",
                             "org.freedesktop.login1.Session"};

}  // namespace

LightWriter::LightWriter(RunLoop& loop, Bus& system, SysfsLight light,
                         const LightWriterSettings& settings)
    : loop_(loop), light_(std::move(light)), settings_(settings), bus_(system) {}

void LightWriter::write(std::uint32_t level) {
  wanted_ = level;
  failuresInARow_ = 0;
  if (!call_.isPending() && !next_.isValid()) next_ = {loop_, loop_.soon([this] { send(); })};
}

void LightWriter::leave(std::uint32_t level) {
  next_.invalidate();
  call_.drop();
  bus_.tell(newCall(level));
}

BusMessage LightWriter::newCall(std::uint32_t level) {
  return bus_.newCall(kSession, "SetBrightness", "ssu", light_.subsystem.c_str(),
                      light_.name.c_str(), level);
}

void LightWriter::send() {
  if (!wanted_) return;
  const std::uint32_t level = *wanted_;
  // Looks follow each other many times a second, and most change nothing here.
  if (light_.level() == level) return wanted_.reset();
  const auto answered = [this, level](sd_bus_message* reply) {
    if (isError(reply)) return failed();
    failuresInARow_ = 0;
    if (wanted_ == level) wanted_.reset();
    send();
  };
  ++counts_.calls;
  if (!call_.send(bus_, newCall(level), settings_.longestCall, answered)) failed();
}

void LightWriter::failed() {
  ++counts_.failures;
  if (++failuresInARow_ >= kMostFailuresInARow) wanted_.reset();
  next_ = {loop_, loop_.after(settings_.afterFailure, [this] { send(); })};
}

}  // namespace halvora
