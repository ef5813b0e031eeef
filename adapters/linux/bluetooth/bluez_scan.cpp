// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bluetooth/bluez_scan.h"

#include <algorithm>
#include <tuple>

namespace halvora {

namespace {

/// How long a scan goes on that nobody wants any more.
constexpr Duration kLinger = milliseconds(1500);
constexpr Duration kFirstRetry = milliseconds(500);
constexpr Duration kLastRetry = milliseconds(2000);
/// How long at most an adapter that fails is left alone while another one scans and hears nothing.
constexpr Duration kLastReturn = std::chrono::minutes(1);
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

// After so many failures in a row; twice as long each time.
Duration pauseAfter(int failures, Duration longest) {
  return std::min(kFirstRetry * (1 << std::clamp(failures - 1, 0, 8)), longest);
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

// An adapter that is plugged in again begins anew.
void BluezScan::adaptersChanged() {
  std::erase_if(trials_, [this](const Trial& trial) {
    return find(service_.adapters(), trial.path) == nullptr;
  });
  settle();
}

void BluezScan::daemonGone() {
  phase_ = Phase::idle;
  timer_.invalidate();
  trials_.clear();
}

void BluezScan::answered(BluezOutcome outcome) {
  if (phase_ == Phase::stopping) {
    phase_ = Phase::idle;
  } else if (phase_ == Phase::starting && outcome == BluezOutcome::done) {
    phase_ = Phase::running;
    // What a scan was refused before says nothing of this one.
    if (isRefused() && !isWanted_) unwantedSince_ = silentSince_ = loop_.now();
    Trial& trial = trialOf(path_);
    trial.failures = 0;
    trial.isRefused = false;
  } else if (phase_ == Phase::starting) {
    startFailed(outcome);
  }
  settle();
}

void BluezScan::startFailed(BluezOutcome outcome) {
  Trial& trial = trialOf(path_);
  phase_ = Phase::idle;
  trial.isRefused = outcome == BluezOutcome::refused;
  if (method_ == BluezMethod::monitor && !trial.isRefused) ++trial.monitorFailures;
  ++trial.failures;
  trial.notBefore =
      loop_.now() + (trial.isRefused ? kRefusedRetry : pauseAfter(trial.failures, kLastRetry));
}

void BluezScan::monitorActivated() {
  isActivated_ = true;
  trialOf(path_).monitorFailures = 0;
  settle();
}

void BluezScan::monitorReleased() {
  if (phase_ == Phase::idle || method_ != BluezMethod::monitor) return;
  if (!isActivated_) ++trialOf(path_).monitorFailures;
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
  if (home_ != path_) home_ = path_;
  if (*lastHeard_ - lastStart_ > kFirstReports) hasNoRepeats_ = false;
}

const BluezAdapter* BluezScan::powered(const std::string& path) const {
  const BluezAdapter* found = find(service_.adapters(), path);
  return found != nullptr && found->isPowered ? found : nullptr;
}

BluezScan::Trial& BluezScan::trialOf(const std::string& path) {
  const auto found = std::ranges::find(trials_, path, &Trial::path);
  return found != trials_.end() ? *found : trials_.emplace_back(Trial{.path = path});
}

const BluezScan::Trial& BluezScan::pastOf(const std::string& path) const {
  static const Trial kUntried;
  const auto found = std::ranges::find(trials_, path, &Trial::path);
  return found != trials_.end() ? *found : kUntried;
}

Duration BluezScan::nextStart() const {
  const Duration between = hasNoRepeats_ ? settings_.silenceOfRepeats : settings_.betweenStarts;
  const Duration earliest = std::max(loop_.now(), governor_.earliest());
  return starts_ > 0 ? std::max(earliest, lastStart_ + between) : earliest;
}

const BluezAdapter* BluezScan::adapter() const {
  // A run ends before another adapter has its turn.
  if (phase_ != Phase::idle) {
    if (const BluezAdapter* own = powered(path_)) return own;
  }
  const BluezAdapter* best = nullptr;
  for (const BluezAdapter& one : service_.adapters()) {
    if (!one.isPowered || !mayUse(one)) continue;
    if (best == nullptr || goesBefore(one, *best)) best = &one;
  }
  return best;
}

// Who may be asked sooner; of these the one to be stayed on or returned to; of others the one that
// was left alone longest.
bool BluezScan::goesBefore(const BluezAdapter& one, const BluezAdapter& other) const {
  const Duration now = nextStart();
  const std::string& favourite = returnTime() <= loop_.now() ? home_ : path_;
  const auto rank = [&](const BluezAdapter& adapter) {
    const Trial& past = pastOf(adapter.path);
    const bool isFavourite =
        adapter.path == favourite && (favourite != path_ || past.failures == 0);
    return std::tuple(std::max(past.notBefore, now), !isFavourite, past.lastStart);
  };
  return rank(one) < rank(other);
}

// When a silent scan is to give way to the adapter that is better, as far as one knows. Where a
// show is heard, nothing is to be gained.
Duration BluezScan::returnTime() const {
  if (home_ == path_ || powered(home_) == nullptr) return Duration::max();
  const Trial& past = pastOf(home_);
  const Duration pause = pauseAfter(past.failures, kLastReturn);
  const Duration silentSince = std::max(lastHeard_.value_or(Duration()), arrivedAt_);
  return std::max(silentSince + settings_.silence, past.lastStart + pause);
}

const BluezAdapter* BluezScan::adapterInUse() const {
  return phase_ == Phase::idle ? nullptr : find(service_.adapters(), path_);
}

bool BluezScan::isRefused() const {
  const BluezAdapter* any = nullptr;
  for (const BluezAdapter& one : service_.adapters()) {
    if (!one.isPowered || !mayUse(one)) continue;
    if (!pastOf(one.path).isRefused) return false;
    any = &one;
  }
  return any != nullptr;
}

bool BluezScan::isRunning() const {
  return phase_ == Phase::running && !isWaitingForActivation() && powered(path_) != nullptr;
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
  if (target == nullptr || !(isWanted_ || isRefused())) return;
  const Duration earliest = std::max(pastOf(target->path).notBefore, nextStart());
  if (earliest > loop_.now()) return settleAt(earliest);
  start(*target);
}

void BluezScan::settleRunning() {
  if (isLost()) {
    service_.abandon();
    phase_ = Phase::idle;
    return;
  }
  const Duration end = endOfRun();
  if (end > loop_.now()) return settleAt(end);
  if (isWaitingForActivation() && !isRestartDue_ && isWanted_) {
    ++trialOf(path_).monitorFailures;
  }
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
  // A run that could not begin anew goes on.
  return std::max(endOfHearing(), governor_.earliest());
}

// When this run is to give way to a new one.
Duration BluezScan::endOfHearing() const {
  const Duration earliest = lastStart_ + settings_.betweenStarts;
  if (isRestartDue_) return earliest;
  if (isWaitingForActivation()) return std::max(lastStart_ + kActivationTime, earliest);
  if (hasNoRepeats_) return std::max(*lastHeard_, lastStart_) + settings_.silenceOfRepeats;
  const Duration between =
      method_ == BluezMethod::monitor ? settings_.betweenRegistrations : settings_.betweenStarts;
  const Duration silentSince = std::max(lastHeard_.value_or(Duration()), silentSince_);
  return std::min(std::max(silentSince + settings_.silence, lastStart_ + between),
                  std::max(returnTime(), earliest));
}

void BluezScan::start(const BluezAdapter& adapter) {
  if (path_ != adapter.path) arrivedAt_ = loop_.now();
  path_ = adapter.path;
  if (find(service_.adapters(), home_) == nullptr) home_ = path_;
  Trial& trial = trialOf(path_);
  method_ = adapter.hasMonitors && trial.monitorFailures < kMostMonitorFailures
                ? BluezMethod::monitor
                : BluezMethod::discovery;
  isActivated_ = false;
  isRestartDue_ = false;
  lastStart_ = loop_.now();
  trial.lastStart = lastStart_;
  governor_.started(lastStart_);
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
