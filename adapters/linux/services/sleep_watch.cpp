// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/sleep_watch.h"

#include <utility>

#include <fcntl.h>

namespace halvora {

namespace {

constexpr BusObject kLogin{"org.freedesktop.login1", "/org/freedesktop/login1",
                           "org.freedesktop.login1.Manager"};
constexpr Duration kLongestCall = milliseconds(25'000);

}  // namespace

SleepWatch::SleepWatch(RunLoop& loop, Bus& system, std::string application, Told told,
                       const SleepSettings& settings)
    : loop_(loop),
      bus_(system),
      application_(std::move(application)),
      told_(std::move(told)),
      settings_(settings),
      observer_(system, {[this] { opened(); }, [this] { lost(); }}) {
  reach();
}

// A bus that is there says when the daemon comes; one that is not is looked for again.
void SleepWatch::reach() {
  next_ = Timer(loop_, loop_.after(settings_.pause, [this] { reach(); }));
  if (bus_.reach() != nullptr && !isAsleep_ && !isWaitedFor() && !login_.empty()) askForDelay();
}

void SleepWatch::opened() {
  owners_ = bus_.watchName(kLogin.service,
                           [this](std::string_view, std::string_view now) { ownerIs(now); });
  signals_ = bus_.match(
      "type='signal',sender='org.freedesktop.login1',path='/org/freedesktop/login1',"
      "interface='org.freedesktop.login1.Manager',member='PrepareForSleep'",
      [this](sd_bus_message* message) { sleepChanged(message); });
  answer_ = bus_.askForOwner(kLogin.service, [this](std::string_view owner) { ownerIs(owner); });
}

// Whoever would tell of the awakening is gone.
void SleepWatch::lost() {
  login_.clear();
  owners_.reset();
  answer_.reset();
  signals_.reset();
  delay_ = OwnedDescriptor();
  setAsleep(false);
}

void SleepWatch::ownerIs(std::string_view owner) {
  if (login_ == owner) return;
  login_ = owner;
  delay_ = OwnedDescriptor();
  setAsleep(false);
  if (!login_.empty()) askForDelay();
}

void SleepWatch::askForDelay() {
  const BusMessage message = bus_.newCall(kLogin, "Inhibit", "ssss", "sleep", application_.c_str(),
                                          "Gives the screen and the torch back", "delay");
  if (message == nullptr || call_.isPending()) return;
  call_.send(bus_, message, kLongestCall, [this](sd_bus_message* reply) {
    int descriptor = -1;
    if (isError(reply) || sd_bus_message_read(reply, "h", &descriptor) <= 0) return;
    // The message closes its own.
    delay_ = OwnedDescriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
  });
}

void SleepWatch::sleepChanged(sd_bus_message* message) {
  int isAsleep = 0;
  if (login_.empty() || !isFrom(message, login_)) return;
  if (sd_bus_message_read_basic(message, 'b', &isAsleep) > 0) setAsleep(isAsleep != 0);
}

void SleepWatch::setAsleep(bool isAsleep) {
  if (std::exchange(isAsleep_, isAsleep) == isAsleep) return;
  if (isAsleep) {
    release_ = Timer(loop_, loop_.after(settings_.delay, [this] { delay_ = OwnedDescriptor(); }));
  } else {
    release_.invalidate();
    if (!isWaitedFor() && !login_.empty()) askForDelay();
  }
  if (told_) told_(isAsleep);
}

}  // namespace halvora
