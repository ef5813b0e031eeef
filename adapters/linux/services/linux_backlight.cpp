// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_backlight.h"

#include <algorithm>
#include <cmath>

namespace halvora {

LinuxBacklight::LinuxBacklight(RunLoop& loop, Bus& system, const SysfsLight& light,
                               const LightWriterSettings& settings, Duration fresh,
                               LightJournal* journal)
    : loop_(loop), fresh_(fresh), writer_(loop, system, light, settings), journal_(journal) {
  const auto owed = journal_ != nullptr ? journal_->owed(light) : std::nullopt;
  if (!owed) return;
  before_ = std::max(1U, *owed);
  begin(*before_);
  set_ = static_cast<double>(*before_) / light.most;
  forgetLater();
}

LinuxBacklight::~LinuxBacklight() { giveBack(); }

void LinuxBacklight::giveBack() {
  if (!before_) return;
  // Also where what is still under way is that very level: nobody is left to see it arrive.
  const bool isUnderWay = writer_.isBusy();
  const bool isOurs = before_ != asked_ && writer_.light().level() == asked_;
  if (isUnderWay || isOurs) writer_.leave(*before_);
  before_.reset();
  isSet_ = false;
  if (journal_ != nullptr) journal_->forget(writer_.light());
}

void LinuxBacklight::begin(std::uint32_t level) {
  isSet_ = true;
  setAt_ = loop_.now();
  asked_ = level;
  writer_.write(level);
}

// Once it is sure to have arrived; what nobody would write is owed to the next start.
void LinuxBacklight::forgetLater() {
  forgetting_ = Timer(loop_, loop_.after(kFresh, [this] {
    if (before_ != asked_ || writer_.isBusy()) return;
    if (writer_.light().level() == asked_) journal_->forget(writer_.light());
  }));
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
  set_ = std::clamp(level, 0.0, 1.0);
  begin(std::max(1U, static_cast<std::uint32_t>(std::lround(set_ * writer_.light().most))));
  if (journal_ == nullptr || !before_) return;
  if (asked_ == before_) return forgetLater();
  journal_->note(writer_.light(), *before_);
}

}  // namespace halvora
