// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluetooth/bluez_scan.h"

#include <algorithm>

namespace halvora {

namespace {

/// How long a scan goes on that nobody wants any more.
constexpr Duration kLinger = milliseconds(1500);
constexpr Duration kFirstRetry = milliseconds(500);
constexpr Duration kLastRetry = milliseconds(2000);
/// Who was refused is not soon let in; still soon enough for a scan within five seconds of it.
constexpr Duration kRefusedRetry = milliseconds(3000);
/// A daemon activates a monitor as soon as its adapter has power.
constexpr Duration kActivationTime = milliseconds(2000);
/// Of a run, in which a controller reports whatever is near, even if it never does so again.
constexpr Duration kFirstReports = milliseconds(1000);
/// After so many monitors that came to nothing, discovery has to do.
constexpr int kMostMonitorFailures = 2;

const BluezAdapter* find(std::span<const BluezAdapter> adapters, const std::string& path) {
  const auto found = std::ranges::find(adapters, path, &BluezAdapter::path);
  return found == adapters.end() ? nullptr : &*found;
}

Duration retryAfter(int failures) {
  return std::min(kFirstRetry * (1 << std::min(failures, 8)), kLastRetry);
}

}  // namespace

void BluezScan::setWanted(bool isWanted) {
  if (isWanted == isWanted_) return;
  isWanted_ = isWanted;
  if (!isWanted) {
    unwantedSince_ = loop_.now();
  } else if (phase_ == Phase::idle) {
    silentSince_ = loop_.now();
  }
  settle();
}

void BluezScan::adaptersChanged() { settle(); }

void BluezScan::daemonGone() {
  phase_ = Phase::idle;
  timer_.invalidate();
  isRefused_ = false;
  isRestartDue_ = false;
  failures_ = 0;
  monitorFailures_ = 0;
  notBefore_ = Duration();
}

void BluezScan::answered(BluezOutcome outcome) {
  if (phase_ == Phase::stopping) {
    phase_ = Phase::idle;
  } else if (phase_ == Phase::starting && outcome == BluezOutcome::done) {
    phase_ = Phase::running;
    failures_ = 0;
    if (isRefused_ && !isWanted_) unwantedSince_ = loop_.now();
    isRefused_ = false;
  } else if (phase_ == Phase::starting) {
    startFailed(outcome);
  }
  settle();
}

void BluezScan::startFailed(BluezOutcome outcome) {
  phase_ = Phase::idle;
  isRestartDue_ = false;
  isRefused_ = outcome == BluezOutcome::refused;
  if (method_ == BluezMethod::monitor && !isRefused_) ++monitorFailures_;
  notBefore_ = loop_.now() + (isRefused_ ? kRefusedRetry : retryAfter(failures_++));
}

void BluezScan::monitorActivated() {
  isActivated_ = true;
  monitorFailures_ = 0;
  settle();
}

void BluezScan::monitorReleased() {
  if (phase_ == Phase::idle || method_ != BluezMethod::monitor) return;
  if (!isActivated_) ++monitorFailures_;
  isActivated_ = false;
  isRestartDue_ = true;
  settle();
}

void BluezScan::wokeUp() {
  if (phase_ != Phase::running) return;
  isRestartDue_ = true;
  settle();
}

// Who is heard later than that in a run repeats itself.
void BluezScan::heard() {
  lastHeard_ = loop_.now();
  if (*lastHeard_ - lastStart_ > kFirstReports) hasNoRepeats_ = false;
}

const BluezAdapter* BluezScan::adapter() const {
  const auto adapters = service_.adapters();
  // A scan stays where it is for as long as it can.
  const BluezAdapter* present = find(adapters, path_);
  if (present != nullptr && present->isPowered) return present;
  const auto powered = std::ranges::find_if(adapters, &BluezAdapter::isPowered);
  return powered == adapters.end() ? nullptr : &*powered;
}

bool BluezScan::isRunning() const {
  if (phase_ != Phase::running || isWaitingForActivation()) return false;
  const BluezAdapter* own = find(service_.adapters(), path_);
  return own != nullptr && own->isPowered;
}

bool BluezScan::isHearing() const {
  return lastHeard_ && loop_.now() - *lastHeard_ < settings_.silence;
}

void BluezScan::settle() {
  timer_.invalidate();
  // What is asked for already has its answer first.
  if (phase_ == Phase::running) settleRunning();
  if (phase_ == Phase::idle) settleIdle();
}

void BluezScan::settleIdle() {
  const BluezAdapter* target = adapter();
  // Who is refused goes on asking, because nothing says when that changes.
  if (target == nullptr || !(isWanted_ || isRefused_)) return;
  const Duration between = hasNoRepeats_ ? settings_.silenceOfRepeats : settings_.betweenStarts;
  const Duration earliest = starts_ > 0 ? std::max(notBefore_, lastStart_ + between) : Duration();
  if (earliest > loop_.now()) return settleAt(earliest);
  start(*target);
}

void BluezScan::settleRunning() {
  if (isLost()) {
    service_.abandon();
    phase_ = Phase::idle;
    isRestartDue_ = false;
    return;
  }
  const Duration end = endOfRun();
  if (end > loop_.now()) return settleAt(end);
  if (isWaitingForActivation() && !isRestartDue_ && isWanted_) ++monitorFailures_;
  // A run may miss its first reports; that says nothing while the show is near.
  if (hasHeard()) {
    hasNoRepeats_ = method_ == BluezMethod::discovery && *lastHeard_ - lastStart_ <= kFirstReports;
  } else if (!isHearing()) {
    hasNoRepeats_ = false;
  }
  stop();
}

// An adapter that is gone, or loses its power, takes discovery with it; monitors outlive the power.
bool BluezScan::isLost() const {
  const BluezAdapter* own = find(service_.adapters(), path_);
  if (own == nullptr) return true;
  return !own->isPowered && method_ == BluezMethod::discovery;
}

Duration BluezScan::endOfRun() const {
  const BluezAdapter* target = adapter();
  if (!isWanted_) return unwantedSince_ + kLinger;
  // Without power there is nothing to hear, and nothing to be done about it.
  if (target == nullptr) return Duration::max();
  if (target->path != path_) return loop_.now();
  const Duration earliest = lastStart_ + settings_.betweenStarts;
  if (isRestartDue_) return earliest;
  if (isWaitingForActivation()) return std::max(lastStart_ + kActivationTime, earliest);
  if (hasNoRepeats_) return std::max(*lastHeard_, lastStart_) + settings_.silenceOfRepeats;
  const Duration between =
      method_ == BluezMethod::monitor ? settings_.betweenRegistrations : settings_.betweenStarts;
  const Duration silentSince = std::max(lastHeard_.value_or(Duration()), silentSince_);
  return std::max(silentSince + settings_.silence, lastStart_ + between);
}

void BluezScan::start(const BluezAdapter& adapter) {
  path_ = adapter.path;
  method_ = adapter.hasMonitors && monitorFailures_ < kMostMonitorFailures ? BluezMethod::monitor
                                                                           : BluezMethod::discovery;
  isActivated_ = false;
  isRestartDue_ = false;
  lastStart_ = loop_.now();
  ++starts_;
  phase_ = Phase::starting;
  service_.start(path_, method_);
}

void BluezScan::stop() {
  if (isWanted_) ++restarts_;
  phase_ = Phase::stopping;
  service_.stop();
}

void BluezScan::settleAt(Duration time) {
  if (time == Duration::max()) return;
  timer_ = {loop_, loop_.after(time - loop_.now(), [this] { settle(); })};
}

}  // namespace halvora
