// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_backlight.h"

#include <algorithm>
#include <cmath>

namespace halvora {

LinuxBacklight::LinuxBacklight(RunLoop& loop, Bus& system, const SysfsLight& light,
                               const LightWriterSettings& settings, Duration fresh)
    : loop_(loop), fresh_(fresh), writer_(loop, system, light, settings) {}

LinuxBacklight::~LinuxBacklight() {
  if (!before_) return;
  // Also where what is still under way is that very level: nobody is left to see it arrive.
  const bool isUnderWay = writer_.isBusy();
  const bool isOurs = before_ != asked_ && writer_.light().level() == asked_;
  if (isUnderWay || isOurs) writer_.leave(*before_);
}

double LinuxBacklight::level() const {
  if (isFresh()) return set_;
  const auto level = writer_.light().level();
  return level ? static_cast<double>(*level) / writer_.light().most : set_;
}

void LinuxBacklight::setLevel(double level) {
  if (!isFresh()) {
    const auto present = writer_.light().level();
    if (!isSet_ || present != asked_) before_ = present;
  }
  isSet_ = true;
  set_ = std::clamp(level, 0.0, 1.0);
  setAt_ = loop_.now();
  asked_ = std::max(1U, static_cast<std::uint32_t>(std::lround(set_ * writer_.light().most)));
  writer_.write(asked_);
}

}  // namespace halvora
