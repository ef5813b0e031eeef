// SPDX-License-Identifier: Apache-2.0
// Keeps the system's scan as it is wanted: on an adapter that has power and works, through a
// monitor where the daemon has them, begun anew when it has gone quiet, fails or was taken away.
// Every pause in it is a timer of the run loop. Owned by the central; main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "adapters/linux/bluetooth/bluez_service.h"
#include "adapters/standard/start_governor.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

struct BluezSettings {
  /// So long without a show packet, and the scan is begun anew: some controllers report a device
  /// that repeats itself only every ten seconds, and a new scan makes them report it at once.
  Duration silence = milliseconds(2000);
  /// The same under a controller that was seen to report each device once a scan. Short enough for
  /// a packet in each of the engine's seconds, which else takes the venue for left after a while.
  Duration silenceOfRepeats = milliseconds(600);
  /// The shortest time between two starts for any other reason.
  Duration betweenStarts = milliseconds(1000);
  /// The shortest time between two starts of a monitor for silence alone, which need it less: they
  /// see what a controller would hold back.
  Duration betweenRegistrations = milliseconds(10000);
  /// For a system that starves an application which begins to scan too often; none by itself.
  StartLimit startLimit = {};
  /// The one adapter to scan on, as the system calls it ("hci1"), waited for if it is not there;
  /// empty for whichever works.
  std::string adapter = {};
};

class BluezScan {
 public:
  BluezScan(RunLoop& loop, BluezService& service, const BluezSettings& settings)
      : loop_(loop), service_(service), settings_(settings), governor_(settings.startLimit) {}

  /// A scan that is no longer wanted goes on for a moment, so that a client may stop and start it
  /// as often as it likes.
  void setWanted(bool isWanted);
  /// The daemon's adapters have changed.
  void adaptersChanged();
  /// The daemon is gone, and with it all that it was asked for.
  void daemonGone();
  void answered(BluezOutcome outcome);
  void monitorActivated();
  void monitorReleased();
  void wokeUp();
  void heard();

  /// Whether the settings allow that adapter.
  bool mayUse(const BluezAdapter& adapter) const {
    return settings_.adapter.empty() || settings_.adapter == adapter.name();
  }
  /// The adapter to scan on; null if none that may be used has power.
  const BluezAdapter* adapter() const;
  /// The adapter that is scanned on or asked to be; null for none.
  const BluezAdapter* adapterInUse() const;
  /// The daemon is there and refuses to scan for this process, on every adapter that there is.
  bool isRefused() const;
  bool isRunning() const;
  bool isHearing() const;
  std::optional<Duration> lastHeard() const { return lastHeard_; }
  std::uint64_t starts() const { return starts_; }
  std::uint64_t restarts() const { return restarts_; }

 private:
  enum class Phase : std::uint8_t { idle, starting, running, stopping };
  /// How it went with an adapter that was tried.
  struct Trial {
    std::string path;
    Duration lastStart = Duration::min();
    /// After a failure.
    Duration notBefore{};
    /// Starts that failed one after the other, and monitors that were refused or never activated.
    int failures = 0;
    int monitorFailures = 0;
    bool isRefused = false;
  };

  void settle();
  void settleIdle();
  void settleRunning();
  void start(const BluezAdapter& adapter);
  void stop();
  void startFailed(BluezOutcome outcome);
  void settleAt(Duration time);
  bool isLost() const;
  Duration endOfRun() const;
  Duration endOfHearing() const;
  Duration returnTime() const;
  /// Null where it is gone, or has no power.
  const BluezAdapter* powered(const std::string& path) const;
  Trial& trialOf(const std::string& path);
  const Trial& pastOf(const std::string& path) const;
  /// When the next start may be on any adapter.
  Duration nextStart() const;
  /// Whether a start is to be on `one` rather than on `other`.
  bool goesBefore(const BluezAdapter& one, const BluezAdapter& other) const;
  /// Something was heard in this run.
  bool hasHeard() const { return lastHeard_ && *lastHeard_ >= lastStart_; }
  bool isWaitingForActivation() const { return method_ == BluezMethod::monitor && !isActivated_; }

  RunLoop& loop_;
  BluezService& service_;
  const BluezSettings settings_;
  StartGovernor governor_;
  Timer timer_;
  Phase phase_ = Phase::idle;
  bool isWanted_ = false;
  /// What runs, or last ran.
  std::string path_;
  /// The adapter on which a show was heard last; before the first, that which was tried first.
  std::string home_;
  /// Of adapters that the daemon has.
  std::vector<Trial> trials_;
  BluezMethod method_ = BluezMethod::discovery;
  bool isActivated_ = false;
  /// The run is to end and to begin anew.
  bool isRestartDue_ = false;
  /// The last run heard something as it began, and then nothing more.
  bool hasNoRepeats_ = false;
  Duration lastStart_{};
  /// When the scan came to the adapter that it is on.
  Duration arrivedAt_{};
  Duration silentSince_{};
  Duration unwantedSince_{};
  std::optional<Duration> lastHeard_;
  std::uint64_t starts_ = 0;
  std::uint64_t restarts_ = 0;
};

}  // namespace halvora
