// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/poll_run_loop.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace halvora {

namespace {

constexpr Duration kUntilNextTry = milliseconds(100);

short pollEvents(DescriptorEvents events) {
  int mask = 0;
  if (includes(events, DescriptorEvents::readable)) mask |= POLLIN;
  if (includes(events, DescriptorEvents::writable)) mask |= POLLOUT;
  return static_cast<short>(mask);
}

timespec toTimespec(Duration span) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(span);
  const auto rest = std::chrono::nanoseconds(span - seconds);
  timespec time{};
  time.tv_sec = static_cast<time_t>(seconds.count());
  time.tv_nsec = static_cast<decltype(time.tv_nsec)>(rest.count());
  return time;
}

}  // namespace

PollRunLoop::PollRunLoop() {
  makeRoom();
  postedSignal_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (postedSignal_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  watched_.push_back({0, {}});
  polled_.push_back({postedSignal_, POLLIN, 0});
}

PollRunLoop::~PollRunLoop() { close(postedSignal_); }

void PollRunLoop::makeRoom() {
  constexpr std::size_t kSmallestRoom = 8;
  const std::size_t size = std::max(kSmallestRoom, watched_.size() + 1);
  if (size <= watched_.capacity()) return;
  ready_.reserve(size * 2);
  polled_.reserve(size * 2);
  watched_.reserve(size * 2);
}

Duration PollRunLoop::now() const {
  return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now() - begin_);
}

TimerId PollRunLoop::after(Duration delay, Task&& task) {
  return queue_.schedule(now() + dueAfter(delay), {}, std::move(task));
}

TimerId PollRunLoop::every(Duration interval, Task&& task) {
  const Duration period = dueAfter(interval);
  return queue_.schedule(now() + period, period, std::move(task));
}

TimerId PollRunLoop::soon(Task&& task) { return queue_.schedule(now(), {}, std::move(task)); }

void PollRunLoop::post(Task&& task) {
  const std::lock_guard lock(postedMutex_);
  posted_.push_back(std::move(task));
  if (posted_.size() > 1) return;
  const std::uint64_t one = 1;
  // Only a full counter could refuse it, and then the loop is awake already.
  [[maybe_unused]] const auto written = write(postedSignal_, &one, sizeof one);
}

WatchId PollRunLoop::watch(int descriptor, DescriptorEvents events, Task&& task) {
  makeRoom();
  watched_.push_back({++lastWatch_, std::move(task)});
  polled_.push_back({descriptor, pollEvents(events), 0});
  return lastWatch_;
}

void PollRunLoop::forget(WatchId watch) {
  if (watch == 0) return;
  const auto found = std::ranges::find(watched_, watch, &Watched::id);
  if (found == watched_.end()) return;
  polled_.erase(polled_.begin() + (found - watched_.begin()));
  // Last: what the task held may forget watches of its own as it goes.
  const Task task = std::move(found->task);
  watched_.erase(found);
}

bool PollRunLoop::runUntil(const std::function<bool()>& isDone, std::optional<Duration> longest) {
  const auto end = longest ? std::optional(now() + *longest) : std::nullopt;
  while (!isDone()) {
    if (end && now() >= *end) return false;
    waitUntil(end);
    runReady();
    runDue();
  }
  return true;
}

void PollRunLoop::waitUntil(std::optional<Duration> end) {
  std::optional<Duration> due = queue_.earliest();
  if (end && (!due || *end < *due)) due = end;
  // What was posted and found no room would wake it at once, and for ever.
  polled_.front().events = hasLeftPosted_ ? 0 : POLLIN;
  if (hasLeftPosted_) due = std::min(due.value_or(Duration::max()), now() + kUntilNextTry);
  const timespec wait = toTimespec(due ? std::max(*due - now(), Duration::zero()) : Duration());
  // An interrupted wait reports nothing, and `revents` may be those of the wait before.
  if (ppoll(polled_.data(), polled_.size(), due ? &wait : nullptr, nullptr) >= 0) return;
  for (pollfd& polled : polled_) polled.revents = 0;
}

void PollRunLoop::runReady() {
  if (polled_.front().revents != 0 || hasLeftPosted_) takePosted();
  ready_.clear();
  for (std::size_t at = 1; at < polled_.size(); ++at) {
    if (polled_[at].revents != 0) ready_.push_back(watched_[at].id);
  }
  for (const WatchId id : ready_) runWatched(id);
}

// The task is taken out for its run: it may forget its own watch, or move the others.
void PollRunLoop::runWatched(WatchId id) {
  auto watched = std::ranges::find(watched_, id, &Watched::id);
  if (watched == watched_.end()) return;
  Task task = std::move(watched->task);
  queue_.run(task);
  watched = std::ranges::find(watched_, id, &Watched::id);
  if (watched != watched_.end()) watched->task = std::move(task);
}

// Runs what was due when it was called; what that makes due in turn waits for the next time, so
// that descriptors get theirs in between.
void PollRunLoop::runDue() {
  const Duration end = now();
  for (auto time = queue_.earliest(); time && *time <= end; time = queue_.earliest()) {
    queue_.runEarliest(now());
  }
}

bool PollRunLoop::hasRoomFor(std::size_t posted) noexcept {
  Task make = [this, posted] { queue_.makeRoom(posted); };
  const std::uint64_t failures = queue_.failures();
  queue_.run(make);
  return queue_.failures() == failures;
}

void PollRunLoop::takePosted() {
  std::vector<Task> posted;
  {
    const std::lock_guard lock(postedMutex_);
    hasLeftPosted_ = !hasRoomFor(posted_.size());
    if (hasLeftPosted_) return;
    std::uint64_t count = 0;
    [[maybe_unused]] const auto size = read(postedSignal_, &count, sizeof count);
    posted.swap(posted_);
  }
  for (Task& task : posted) soon(std::move(task));
}

}  // namespace halvora
