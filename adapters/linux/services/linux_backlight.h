// SPDX-License-Identifier: Apache-2.0
// The screen's brightness on Linux: the kernel's backlight, through the login daemon. A level that
// was set here and that nobody has touched since is put back when this goes; what a process before
// has left, when it begins. The host owns it; main thread.
#pragma once

#include <cstdint>
#include <optional>

#include "adapters/linux/services/light_journal.h"
#include "adapters/linux/services/light_writer.h"

namespace halvora {

class LinuxBacklight {
 public:
  static constexpr Duration kFresh = milliseconds(2000);

  LinuxBacklight(RunLoop& loop, Bus& system, const SysfsLight& light,
                 const LightWriterSettings& settings = {}, Duration fresh = kFresh,
                 LightJournal* journal = nullptr);
  ~LinuxBacklight();
  LinuxBacklight(const LinuxBacklight&) = delete;
  LinuxBacklight& operator=(const LinuxBacklight&) = delete;

  /// 0 to 1. What was set counts as it was set for as long as it is fresh: ramps read what they
  /// write, and would never end on a light of ten steps or a daemon that refuses. Later the light
  /// itself.
  double level() const;
  /// Out of 0 to 1 is clamped. The lowest step is never 0, because that is darkness on some
  /// screens, also for a user who leaves the show.
  void setLevel(double level);

  /// As when this goes, for a process that ends without that.
  void giveBack();

  const LightWriterCounts& counts() const { return writer_.counts(); }

 private:
  void begin(std::uint32_t level);
  void forgetLater();
  bool isFresh() const { return isSet_ && loop_.now() - setAt_ < fresh_; }

  RunLoop& loop_;
  const Duration fresh_;
  LightWriter writer_;
  /// May be null.
  LightJournal* const journal_;
  bool isSet_ = false;
  double set_ = 1;
  Duration setAt_{};
  std::uint32_t asked_ = 0;
  /// The light's level before it was changed here.
  std::optional<std::uint32_t> before_;
  Timer forgetting_;
};

}  // namespace halvora
