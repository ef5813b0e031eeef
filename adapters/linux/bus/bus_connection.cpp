// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bus/bus_connection.h"

#include <chrono>
#include <utility>

#include <poll.h>

namespace halvora {

namespace {

constexpr int kMostMessagesATurn = 64;
constexpr std::uint64_t kNoDeadline = UINT64_MAX;
/// A daemon that says nothing for so long is taken for gone.
constexpr std::uint64_t kCallTimeoutMicroseconds = 5'000'000;

// Deadlines of the bus are on the machine's steady clock.
Duration untilDeadline(std::uint64_t deadline) {
  const auto now =
      std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch());
  return Duration(static_cast<Duration::rep>(deadline)) - now;
}

DescriptorEvents eventsOf(int mask) {
  const bool isRead = (mask & POLLIN) != 0;
  const bool isWritten = (mask & POLLOUT) != 0;
  if (isRead && isWritten) return DescriptorEvents::both;
  if (isWritten) return DescriptorEvents::writable;
  return isRead ? DescriptorEvents::readable : DescriptorEvents::none;
}

}  // namespace

void BusConnection::open(const std::string& address, std::function<void()> lost) {
  close();
  lost_ = std::move(lost);
  if (connect(address)) return wait();
  bus_.reset();
  giveUp();
}

bool BusConnection::connect(const std::string& address) {
  sd_bus* bus = nullptr;
  if (address.empty()) {
    if (sd_bus_open_system(&bus) < 0) return false;
    bus_.reset(bus);
  } else {
    if (sd_bus_new(&bus) < 0) return false;
    bus_.reset(bus);
    if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0) {
      return false;
    }
  }
  return sd_bus_set_method_call_timeout(bus, kCallTimeoutMicroseconds) >= 0;
}

void BusConnection::close() {
  watch_.end();
  watchedEvents_ = 0;
  next_.invalidate();
  deadline_ = 0;
  isLost_ = false;
  hasFailed_ = false;
  bus_.reset();
}

int BusConnection::handle(sd_bus_message* message, void* registered, sd_bus_error*) noexcept {
  auto& own = *static_cast<Registered*>(registered);
  try {
    own.handler(message);
  } catch (...) {
    own.connection.failed();
  }
  return 0;
}

// The library frees what it keeps once nothing calls it any more, also where a handler drops its
// own slot.
template <class Register>
BusSlot BusConnection::registered(BusHandler handler, const Register& add) {
  auto kept = std::make_unique<Registered>(Registered{*this, std::move(handler)});
  sd_bus_slot* slot = nullptr;
  if (add(&slot, kept.get()) < 0) {
    giveUp();
    return nullptr;
  }
  sd_bus_slot_set_destroy_callback(slot, [](void* gone) { delete static_cast<Registered*>(gone); });
  static_cast<void>(kept.release());
  return BusSlot(slot);
}

BusSlot BusConnection::match(const std::string& rule, BusHandler handler) {
  return registered(std::move(handler), [&](sd_bus_slot** slot, void* kept) {
    return sd_bus_add_match_async(bus_.get(), slot, rule.c_str(), handle, nullptr, kept);
  });
}

BusSlot BusConnection::call(const BusMessage& message, Duration longest, BusHandler answered) {
  BusSlot slot = registered(std::move(answered), [&](sd_bus_slot** made, void* kept) {
    return sd_bus_call_async(bus_.get(), made, message.get(), handle, kept,
                             static_cast<std::uint64_t>(longest.count()));
  });
  if (slot != nullptr) sent();
  return slot;
}

void BusConnection::tell(const BusMessage& message) {
  if (sd_bus_send(bus_.get(), message.get(), nullptr) < 0) return giveUp();
  sent();
}

void BusConnection::giveUp() {
  if (isLost_) return;
  next_ = {loop_, loop_.soon([this] {
             close();
             lost_();
           })};
  watch_.end();
  isLost_ = true;
}

// Where not even that can be scheduled, the next message tries again.
void BusConnection::failed() noexcept {
  ++failures_;
  hasFailed_ = true;
  try {
    giveUp();
  } catch (...) {
    return;
  }
}

void BusConnection::process() {
  for (int count = 0; count < kMostMessagesATurn; ++count) {
    const int result = sd_bus_process(bus_.get(), nullptr);
    // A handler may have closed the connection.
    if (!bus_) return;
    if (result < 0 || hasFailed_) giveUp();
    if (result == 0 || isLost_) break;
  }
  wait();
}

void BusConnection::wait() {
  if (bus_ && !isLost_) waitForDescriptor();
  if (bus_ && !isLost_) waitForDeadline();
}

void BusConnection::waitForDescriptor() {
  const int events = sd_bus_get_events(bus_.get());
  if (events < 0) return giveUp();
  if (events == watchedEvents_) return;
  watch_ = {descriptors_,
            descriptors_.watch(sd_bus_get_fd(bus_.get()), eventsOf(events), [this] { process(); })};
  watchedEvents_ = events;
}

void BusConnection::waitForDeadline() {
  std::uint64_t deadline = kNoDeadline;
  if (sd_bus_get_timeout(bus_.get(), &deadline) < 0) return giveUp();
  if (deadline == deadline_ && next_.isValid()) return;
  next_.invalidate();
  deadline_ = deadline;
  if (deadline == kNoDeadline) return;
  auto task = [this] { process(); };
  // Messages that are read already wait for no descriptor.
  next_ = {loop_, deadline == 0 ? loop_.soon(task) : loop_.after(untilDeadline(deadline), task)};
}

}  // namespace halvora
