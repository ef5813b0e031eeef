// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_devices.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <new>
#include <utility>

#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {

namespace {

constexpr double kSecondsADay = 86400;
// About 27,000 years either way, well within what the calendar types can count.
constexpr double kMostDays = 1e7;

class VirtualQueue final : public SerialQueue {
 public:
  VirtualQueue(VirtualRunLoop& loop, const std::string& label) : loop_(loop), label_(label) {}
  const std::string& label() const override { return label_; }
  bool dispatch(Task task) override {
    try {
      loop_.runInBackground(std::move(task));
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

 private:
  VirtualRunLoop& loop_;
  const std::string& label_;
};

}  // namespace

void VirtualScreen::setBrightness(double level) {
  level_ = std::clamp(level, 0.0, 1.0);
  log.add(level_);
}

void VirtualHaptics::impact(ImpactStyle style) {
  log.add(style == ImpactStyle::heavy ? HapticAct::heavyImpact : HapticAct::lightImpact);
}

void VirtualHaptics::playSystemSound(std::uint32_t) { log.add(HapticAct::sound); }

void VirtualHaptics::disposeSystemSound(std::uint32_t) { log.add(HapticAct::dispose); }

void VirtualApplication::becomeActive() {
  observers_.tell(&ApplicationObserver::appDidBecomeActive);
}

void VirtualApplication::resignActive() {
  observers_.tell(&ApplicationObserver::appWillResignActive);
}

void VirtualApplication::dismissPresentedScreens() {
  ++dismissals;
  observers_.tell(&ApplicationObserver::presentedScreensDismissed);
}

void VirtualApplication::changeOrientation() {
  observers_.tell(&ApplicationObserver::handleOrientationChange);
}

DayComponents VirtualCalendar::componentsOf(Date date) const {
  const double days = std::clamp(std::floor((date.secondsSince1970 + offsetSeconds) / kSecondsADay),
                                 -kMostDays, kMostDays);
  const std::chrono::year_month_day day{
      std::chrono::sys_days(std::chrono::days(static_cast<long>(days)))};
  return {static_cast<int>(day.year()), static_cast<int>(static_cast<unsigned>(day.month())),
          static_cast<int>(static_cast<unsigned>(day.day()))};
}

std::uint32_t ScriptedRandom::below(std::uint32_t bound) {
  log.add(bound);
  if (bound == 0) return 0;
  if (next_ < first_.size()) return std::min(first_[next_++], bound - 1);
  return rule_ == Rule::greatest ? bound - 1 : 0;
}

std::unique_ptr<SerialQueue> VirtualQueues::make(std::string_view label) {
  log.add(std::string(label));
  return std::make_unique<VirtualQueue>(loop_, *labels_.emplace(label).first);
}

}  // namespace halvora
