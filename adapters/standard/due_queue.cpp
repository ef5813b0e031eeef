// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/due_queue.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace halvora {

namespace {

// Orders below this one belong to what is scheduled first.
constexpr std::uint64_t kFirstOrder = std::uint64_t{1} << 63;
constexpr std::size_t kSmallestCleanUp = 64;

// Heaps put the largest at the front, the loop wants the earliest there.
constexpr auto kLater = [](const auto& a, const auto& b) {
  return std::tie(a.time, a.order) > std::tie(b.time, b.order);
};

// As a vector grows by itself: twice as large, so that it seldom moves.
template <class Element>
void reserveMore(std::vector<Element>& elements, std::size_t size) {
  if (size > elements.capacity()) elements.reserve(std::max(size, elements.capacity() * 2));
}

constexpr TimerId idOf(std::uint32_t slot, std::uint32_t generation) {
  return TimerId{generation} << 32 | slot;
}

}  // namespace

TimerId DueQueue::schedule(Duration time, Duration interval, Task&& task) {
  return add(time, interval, nextOrder(), std::move(task));
}

TimerId DueQueue::scheduleFirst(Duration time, std::uint64_t order, Task&& task) {
  return add(time, {}, std::min(order, kFirstOrder - 1), std::move(task));
}

void DueQueue::cancel(TimerId timer) {
  if (find(timer) == nullptr) return;
  const auto index = static_cast<std::uint32_t>(timer);
  // Goes last: what the task holds may cancel timers of its own as it goes.
  const Task task = std::move(slots_[index].task);
  ++stale_;
  release(index);
  forgetStale();
}

std::optional<Duration> DueQueue::earliest() {
  while (!queue_.empty() && isStale(queue_.front())) {
    pop();
    --stale_;
  }
  return queue_.empty() ? std::nullopt : std::optional(queue_.front().time);
}

bool DueQueue::runEarliest(Duration now) {
  const Due due = queue_.front();
  pop();
  // The task is taken out for its run: it may cancel itself, or move the slots by scheduling more.
  Task task = std::move(slots_[due.slot].task);
  const Duration interval = slots_[due.slot].interval;
  if (interval > Duration::zero()) {
    const auto missed = std::max(now - due.time, Duration::zero()) / interval;
    push({due.time + (missed + 1) * interval, nextOrder(), due.slot, due.generation});
  } else {
    release(due.slot);
  }
  run(task);
  Slot& slot = slots_[due.slot];
  if (interval > Duration::zero() && slot.isPending && slot.generation == due.generation) {
    slot.task = std::move(task);
  }
  return due.order >= kFirstOrder;
}

void DueQueue::run(Task& task) noexcept {
  try {
    task();
  } catch (...) {
    if (failures_++ == 0) firstFailure_ = std::current_exception();
  }
}

void DueQueue::makeRoom(std::size_t more) {
  const std::size_t slots = slots_.size() + more;
  reserveMore(slots_, slots);
  reserveMore(freeSlots_, slots);
  reserveMore(queue_, queue_.size() + more);
}

TimerId DueQueue::add(Duration time, Duration interval, std::uint64_t order, Task&& task) {
  // All that may fail comes before all that changes something.
  reserveMore(queue_, queue_.size() + 1);
  if (freeSlots_.empty()) {
    reserveMore(freeSlots_, slots_.size() + 1);
    slots_.emplace_back();
    freeSlots_.push_back(static_cast<std::uint32_t>(slots_.size() - 1));
  }
  const std::uint32_t index = freeSlots_.back();
  freeSlots_.pop_back();
  Slot& slot = slots_[index];
  slot.task = std::move(task);
  slot.interval = interval;
  slot.isPending = true;
  push({time, order, index, slot.generation});
  return idOf(index, slot.generation);
}

std::uint64_t DueQueue::nextOrder() { return kFirstOrder + lastOrder_++; }

const DueQueue::Slot* DueQueue::find(TimerId timer) const {
  const auto index = static_cast<std::uint32_t>(timer);
  if (index >= slots_.size()) return nullptr;
  const Slot& slot = slots_[index];
  return slot.isPending && slot.generation == timer >> 32 ? &slot : nullptr;
}

bool DueQueue::isStale(const Due& due) const {
  const Slot& slot = slots_[due.slot];
  return !slot.isPending || slot.generation != due.generation;
}

void DueQueue::push(const Due& due) {
  queue_.push_back(due);
  std::push_heap(queue_.begin(), queue_.end(), kLater);
}

void DueQueue::pop() {
  std::pop_heap(queue_.begin(), queue_.end(), kLater);
  queue_.pop_back();
}

void DueQueue::release(std::uint32_t index) {
  Slot& slot = slots_[index];
  slot.isPending = false;
  ++slot.generation;
  freeSlots_.push_back(index);
}

void DueQueue::forgetStale() {
  if (stale_ < kSmallestCleanUp || stale_ * 2 < queue_.size()) return;
  std::erase_if(queue_, [this](const Due& due) { return isStale(due); });
  std::make_heap(queue_.begin(), queue_.end(), kLater);
  stale_ = 0;
}

}  // namespace halvora
