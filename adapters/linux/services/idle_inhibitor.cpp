// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/idle_inhibitor.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include <fcntl.h>

namespace halvora {

namespace {

constexpr BusObject kObjects[] = {
    {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver"},
    {"org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
     "org.freedesktop.portal.Inhibit"},
    {"org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"},
};
static_assert(std::size(kObjects) == kIdleHolders);
constexpr std::uint32_t kPortalIdle = 8;
constexpr std::size_t kLongestHandle = 255;

/// The last time to be heard of. A grant that comes later is the service's until we leave the bus.
constexpr Duration kLongestInhibition = milliseconds(25'000);

const BusObject& objectOf(IdleHolder holder) { return kObjects[static_cast<std::size_t>(holder)]; }

}  // namespace

IdleInhibitor::IdleInhibitor(RunLoop& loop, Buses& buses, IdleReason reason,
                             const IdleSettings& settings)
    : loop_(loop),
      reason_(std::move(reason)),
      settings_(settings),
      buses_(buses),
      pause_(settings.firstPause),
      session_(buses.session, {[this] {
                                 watch(IdleHolder::screenSaver);
                                 watch(IdleHolder::portal);
                               },
                               [this] { busLost(false); }}),
      system_(buses.system, {[this] { watch(IdleHolder::login); }, [this] { busLost(true); }}) {}

IdleInhibitor::~IdleInhibitor() { setInhibited(false); }

void IdleInhibitor::setInhibited(bool inhibited) {
  if (std::exchange(isWanted_, inhibited) == inhibited) return;
  nextRound_.invalidate();
  patience_.invalidate();
  pause_ = settings_.firstPause;
  if (inhibited) return begin();
  for (std::size_t at = 0; at < kIdleHolders; ++at) {
    if (services_[at].grant) release(static_cast<IdleHolder>(at), *services_[at].grant);
    services_[at].grant.reset();
  }
}

std::optional<IdleHolder> IdleInhibitor::holder() const {
  const auto* const found = std::ranges::find_if(
      services_, [](const Service& service) { return service.grant.has_value(); });
  if (found == services_.end()) return {};
  return static_cast<IdleHolder>(found - services_.begin());
}

void IdleInhibitor::watch(IdleHolder holder) {
  watches_[static_cast<std::size_t>(holder)] = busOf(holder).watchName(
      objectOf(holder).service, [this, holder](std::string_view before, std::string_view) {
        serviceChanged(holder, !before.empty());
      });
}

void IdleInhibitor::serviceChanged(IdleHolder holder, bool isGone) {
  // What another owner of the name granted is worth nothing any more.
  if (isGone) at(holder).grant.reset();
  beginLater();
}

void IdleInhibitor::busLost(bool isSystem) {
  for (std::size_t at = 0; at < kIdleHolders; ++at) {
    if ((static_cast<IdleHolder>(at) == IdleHolder::login) != isSystem) continue;
    services_[at].grant.reset();
    watches_[at].reset();
  }
  beginLater();
}

void IdleInhibitor::beginLater() {
  if (!isWanted_ || holder() || nextRound_.isValid()) return;
  nextRound_ = {loop_, loop_.after(pause_, [this] { begin(); })};
  pause_ = std::min(2 * pause_, settings_.lastPause);
}

void IdleInhibitor::begin() {
  asked_ = 0;
  isBusMissing_ = false;
  askNext();
}

// One that still owes an answer is given its time again, and not asked a second time.
void IdleInhibitor::askNext() {
  while (isWanted_ && !holder() && asked_ < kIdleHolders) {
    const auto next = static_cast<IdleHolder>(asked_++);
    if (at(next).call.isPending() || ask(next)) {
      patience_ = {loop_, loop_.after(settings_.patience, [this] { askNext(); })};
      return;
    }
    // Names are told of by a bus that is there, and nobody tells of a bus.
    isBusMissing_ = true;
  }
  if (isBusMissing_) beginLater();
}

bool IdleInhibitor::ask(IdleHolder holder) {
  Bus& bus = busOf(holder);
  const BusObject& object = objectOf(holder);
  const char* application = reason_.application.c_str();
  const char* reason = reason_.reason.c_str();
  BusMessage message;
  switch (holder) {
    case IdleHolder::screenSaver:
      message = bus.newCall(object, "Inhibit", "ss", application, reason);
      break;
    case IdleHolder::portal:
      message =
          bus.newCall(object, "Inhibit", "sua{sv}", "", kPortalIdle, 1, "reason", "s", reason);
      break;
    case IdleHolder::login:
      message = bus.newCall(object, "Inhibit", "ssss", "idle", application, reason, "block");
      break;
  }
  return at(holder).call.send(bus, message, kLongestInhibition,
                              [this, holder](sd_bus_message* reply) { answered(holder, reply); });
}

void IdleInhibitor::answered(IdleHolder holder, sd_bus_message* reply) {
  // All is asked anew once the loss has been told.
  if (reply == nullptr) return;
  auto grant = isError(reply) ? std::nullopt : readGrant(holder, reply);
  if (!grant) return askNext();
  if (!isWanted_ || this->holder()) return release(holder, *grant);
  at(holder).grant = std::move(grant);
  patience_.invalidate();
  nextRound_.invalidate();
  pause_ = settings_.firstPause;
}

std::optional<IdleInhibitor::Grant> IdleInhibitor::readGrant(IdleHolder holder,
                                                             sd_bus_message* reply) {
  Grant grant;
  const char* handle = nullptr;
  int descriptor = -1;
  switch (holder) {
    case IdleHolder::screenSaver:
      if (sd_bus_message_read(reply, "u", &grant.cookie) <= 0) return {};
      return grant;
    case IdleHolder::portal:
      if (sd_bus_message_read(reply, "o", &handle) <= 0) return {};
      if (std::string_view(handle).size() > kLongestHandle) return {};
      grant.handle = handle;
      return grant;
    case IdleHolder::login:
      // The message closes its own.
      if (sd_bus_message_read(reply, "h", &descriptor) <= 0) return {};
      grant.descriptor = OwnedDescriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
      if (!grant.descriptor.isOpen()) return {};
      return grant;
  }
  return {};
}

// The login daemon's ends with its descriptor.
void IdleInhibitor::release(IdleHolder holder, const Grant& grant) {
  Bus& bus = busOf(holder);
  BusObject object = objectOf(holder);
  if (holder == IdleHolder::screenSaver) {
    bus.tell(bus.newCall(object, "UnInhibit", "u", grant.cookie));
  } else if (holder == IdleHolder::portal) {
    object.path = grant.handle.c_str();
    object.interface = "org.freedesktop.portal.Request";
    bus.tell(bus.newCall(object, "Close"));
  }
}

}  // namespace halvora
