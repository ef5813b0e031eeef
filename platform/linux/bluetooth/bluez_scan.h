// SPDX-License-Identifier: Apache-2.0
// Keeps the system's scan as it is wanted: on the adapter that has power, through a monitor where
// the daemon has them, begun anew when it has gone quiet, fails or was taken away. Every pause in
// it is a timer of the run loop. Owned by the central; main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/bluetooth/bluez_service.h"
#include "platform/run_loop.h"

namespace halvora {

struct BluezSettings {
  /// So long without a show packet, and the scan is begun anew: some controllers report a device
  /// that repeats itself only every ten seconds, and a new scan makes them report it at once.
  Duration silence = milliseconds(2000);
  /// The same under a controller that was seen to report each device once a scan. Short enough for
  /// a packet in each of the engine's seconds, which else takes the venue for left after a while.
  Duration silenceOfRepeats = milliseconds(600);
  /// The shortest time between two starts for any other reason. Longer, like the one above, for a
  /// system that starves applications which begin to scan often.
  Duration betweenStarts = milliseconds(1000);
  /// The shortest time between two starts of a monitor for silence alone, which need it less: they
  /// see what a controller would hold back.
  Duration betweenRegistrations = milliseconds(10000);
};

class BluezScan {
 public:
  BluezScan(RunLoop& loop, BluezService& service, const BluezSettings& settings)
      : loop_(loop), service_(service), settings_(settings) {}

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

  /// The adapter to scan on; null if none has power.
  const BluezAdapter* adapter() const;
  /// The daemon is there and refuses to scan for this process.
  bool isRefused() const { return isRefused_; }
  bool isRunning() const;
  bool isHearing() const;
  std::optional<Duration> lastHeard() const { return lastHeard_; }
  std::uint64_t starts() const { return starts_; }
  std::uint64_t restarts() const { return restarts_; }

 private:
  enum class Phase : std::uint8_t { idle, starting, running, stopping };

  void settle();
  void settleIdle();
  void settleRunning();
  void start(const BluezAdapter& adapter);
  void stop();
  void startFailed(BluezOutcome outcome);
  void settleAt(Duration time);
  bool isLost() const;
  Duration endOfRun() const;
  /// Something was heard in this run.
  bool hasHeard() const { return lastHeard_ && *lastHeard_ >= lastStart_; }
  bool isWaitingForActivation() const { return method_ == BluezMethod::monitor && !isActivated_; }

  RunLoop& loop_;
  BluezService& service_;
  const BluezSettings settings_;
  Timer timer_;
  Phase phase_ = Phase::idle;
  bool isWanted_ = false;
  bool isRefused_ = false;
  /// What runs, or last ran.
  std::string path_;
  BluezMethod method_ = BluezMethod::discovery;
  bool isActivated_ = false;
  /// The run is to end and to begin anew.
  bool isRestartDue_ = false;
  /// The last run heard something as it began, and then nothing more.
  bool hasNoRepeats_ = false;
  int failures_ = 0;
  /// Monitors that were refused or never activated, one after the other.
  int monitorFailures_ = 0;
  Duration lastStart_{};
  /// After a failure.
  Duration notBefore_{};
  Duration silentSince_{};
  Duration unwantedSince_{};
  std::optional<Duration> lastHeard_;
  std::uint64_t starts_ = 0;
  std::uint64_t restarts_ = 0;
};

}  // namespace halvora
