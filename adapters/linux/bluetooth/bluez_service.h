// SPDX-License-Identifier: Apache-2.0
// What the system's Bluetooth daemon is asked and what it tells, as values: the seam between the
// rules of listening (`BluezCentral`) and the bus that the daemon is reached on. Main thread. An
// implementation never calls its listener from within a call of its own.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace halvora {

enum class BluezReach : std::uint8_t {
  /// The first answer has not come yet.
  asking,
  noBus,
  /// Nobody has the daemon's name; the bus tells when somebody takes it.
  noDaemon,
  /// There is a daemon, and it does not answer as it should.
  silent,
  /// The bus does not let this process talk to the daemon.
  refused,
  there,
};

struct BluezAdapter {
  std::string path;
  bool isPowered = false;
  /// Whether it takes monitors of patterns in advertisements.
  bool hasMonitors = false;
  friend bool operator==(const BluezAdapter&, const BluezAdapter&) = default;

  /// As the system calls it, such as "hci0": its path's last part.
  std::string_view name() const { return std::string_view(path).substr(path.rfind('/') + 1); }
};

/// The two ways to have advertisements reported. A monitor is a pattern that the daemon, and often
/// the controller, compares with each; discovery reports everything that is in the air.
enum class BluezMethod : std::uint8_t { discovery, monitor };

enum class BluezOutcome : std::uint8_t { done, refused, failed };

/// What became of the signals that came while listening.
struct BluezSignalCounts {
  std::uint64_t ours = 0;
  std::uint64_t foreign = 0;
  std::uint64_t malformed = 0;
};

struct BluezErrors {
  std::uint64_t count = 0;
  /// As the bus gave it: the error's name, and what was said beside it.
  std::string last;
};

class BluezListener {
 public:
  virtual ~BluezListener() = default;
  /// The reach or the adapters may have changed, or a look has ended.
  virtual void systemChanged() = 0;
  /// The answer to `start` or `stop`. A request whose daemon is gone has none.
  virtual void answered(BluezOutcome outcome) = 0;
  virtual void monitorActivated() = 0;
  /// The daemon has dropped the monitor.
  virtual void monitorReleased() = 0;
  /// The machine has woken from suspend.
  virtual void wokeUp() = 0;
  /// Manufacturer data of our company as on the air, company id first; lives for the call.
  virtual void heard(std::span<const std::uint8_t> manufacturerData) = 0;
};

class BluezService {
 public:
  virtual ~BluezService() = default;

  /// Begins to look for the daemon. `listener` is told everything from then on and must outlive the
  /// service, or close it before it goes.
  virtual void open(BluezListener& listener) = 0;
  /// Ends every scan and is silent from now on.
  virtual void close() = 0;
  /// Looks again who is there, on a new connection if there is none; ends in `systemChanged`.
  virtual void look() = 0;

  virtual BluezReach reach() const = 0;
  /// Known while the daemon is there, in the order of their paths.
  virtual std::span<const BluezAdapter> adapters() const = 0;

  /// Has advertisements of our company reported. One request at a time.
  virtual void start(const std::string& adapter, BluezMethod method) = 0;
  /// The end of what was started; always done.
  virtual void stop() = 0;
  /// What was started has ended by itself. No answer.
  virtual void abandon() = 0;

  virtual const BluezSignalCounts& signalCounts() const = 0;
  virtual const BluezErrors& errors() const = 0;
};

}  // namespace halvora
