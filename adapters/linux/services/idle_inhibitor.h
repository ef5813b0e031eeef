// SPDX-License-Identifier: Apache-2.0
// Keeps the screen from dimming and locking by itself, by whichever service of the system answers
// first: the session's screen saver, the desktop's portal, or the login daemon, asked in this
// order. What one of them grants is kept until it is not wanted any more; a service that goes takes
// its grant with it, and all are asked anew. The host owns it; main thread.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "adapters/linux/bus/bus.h"
#include "adapters/linux/services/owned_descriptor.h"

namespace halvora {

enum class IdleHolder : std::uint8_t { screenSaver, portal, login };
inline constexpr std::size_t kIdleHolders = 3;

/// Who inhibits, and why, in words for the user.
struct IdleReason {
  std::string application;
  std::string reason;
};

struct IdleSettings {
  /// A service that has not answered by then is left to answer, and the next one is asked.
  Duration patience = milliseconds(2000);
  /// Before all are asked anew; twice as long each time that nobody grants, up to the last.
  Duration firstPause = milliseconds(1000);
  Duration lastPause = milliseconds(60'000);
};

class IdleInhibitor {
 public:
  IdleInhibitor(RunLoop& loop, Buses& buses, IdleReason reason, const IdleSettings& settings = {});
  /// What is in force is released.
  ~IdleInhibitor();
  IdleInhibitor(const IdleInhibitor&) = delete;
  IdleInhibitor& operator=(const IdleInhibitor&) = delete;

  void setInhibited(bool inhibited);
  /// Whose grant is in force.
  std::optional<IdleHolder> holder() const;

 private:
  /// What a service gives in return; each fills the one field that is its own.
  struct Grant {
    std::uint32_t cookie = 0;
    std::string handle;
    OwnedDescriptor descriptor;
  };
  struct Service {
    BusCall call;
    std::optional<Grant> grant;
  };

  void watch(IdleHolder holder);
  void busLost(bool isSystem);
  void serviceChanged(IdleHolder holder, bool isGone);
  void begin();
  void beginLater();
  void askNext();
  bool ask(IdleHolder holder);
  void answered(IdleHolder holder, sd_bus_message* reply);
  static std::optional<Grant> readGrant(IdleHolder holder, sd_bus_message* reply);
  void release(IdleHolder holder, const Grant& grant);
  Bus& busOf(IdleHolder holder) {
    return holder == IdleHolder::login ? buses_.system : buses_.session;
  }
  Service& at(IdleHolder holder) { return services_[static_cast<std::size_t>(holder)]; }

  RunLoop& loop_;
  const IdleReason reason_;
  const IdleSettings settings_;
  Buses& buses_;
  bool isWanted_ = false;
  /// How many were asked in the present round.
  std::size_t asked_ = 0;
  bool isBusMissing_ = false;
  Duration pause_;
  std::array<BusSlot, kIdleHolders> watches_;
  std::array<Service, kIdleHolders> services_;
  Timer patience_;
  Timer nextRound_;
  const BusObserver session_;
  const BusObserver system_;
};

}  // namespace halvora
