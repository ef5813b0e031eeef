// SPDX-License-Identifier: Apache-2.0
#include "platform/virtual/virtual_run_loop.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace halvora {

namespace {

// Orders from here on are the phone's own; those below belong to acts from outside.
constexpr std::uint64_t kFirstOwnOrder = std::uint64_t{1} << 63;
constexpr std::size_t kSmallestCleanUp = 64;

// Heaps put the largest at the front, the loop wants the earliest there.
constexpr auto kLater = [](const auto& a, const auto& b) {
  return std::tie(a.time, a.order) > std::tie(b.time, b.order);
};

constexpr TimerId idOf(std::uint32_t slot, std::uint32_t generation) {
  return TimerId{generation} << 32 | slot;
}

}  // namespace

TimerId VirtualRunLoop::after(Duration delay, Task task) {
  return schedule(now_ + std::max(delay, kShortestDelay), {}, nextOrder(), std::move(task));
}

TimerId VirtualRunLoop::every(Duration interval, Task task) {
  const Duration period = std::max(interval, kShortestDelay);
  return schedule(now_ + period, period, nextOrder(), std::move(task));
}

TimerId VirtualRunLoop::soon(Task task) { return schedule(now_, {}, nextOrder(), std::move(task)); }

void VirtualRunLoop::actFromOutside(Duration time, std::uint64_t order, Task act) {
  schedule(std::max(time, now_), {}, std::min(order, kFirstOwnOrder - 1), std::move(act));
}

void VirtualRunLoop::cancel(TimerId timer) {
  Slot* slot = find(timer);
  if (slot == nullptr) return;
  release(*slot, static_cast<std::uint32_t>(timer));
  ++stale_;
  forgetStale();
}

bool VirtualRunLoop::isPending(TimerId timer) const {
  return const_cast<VirtualRunLoop*>(this)->find(timer) != nullptr;
}

bool VirtualRunLoop::runUntil(Duration end) {
  while (!queue_.empty()) {
    const Due due = queue_.front();
    if (isStale(due)) {
      pop();
      --stale_;
      continue;
    }
    if (due.time > end) break;
    pop();
    if (due.time > now_) turnsAtThisInstant_ = 0;
    if (++turnsAtThisInstant_ > kMostTurnsAtOneInstant) return false;
    now_ = due.time;
    runTurn(due);
  }
  now_ = std::max(now_, end);
  return true;
}

TimerId VirtualRunLoop::schedule(Duration time, Duration interval, std::uint64_t order, Task task) {
  if (freeSlots_.empty()) {
    freeSlots_.push_back(static_cast<std::uint32_t>(slots_.size()));
    slots_.emplace_back();
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

std::uint64_t VirtualRunLoop::nextOrder() { return kFirstOwnOrder + lastOrder_++; }

VirtualRunLoop::Slot* VirtualRunLoop::find(TimerId timer) {
  const auto index = static_cast<std::uint32_t>(timer);
  if (index >= slots_.size()) return nullptr;
  Slot& slot = slots_[index];
  return slot.isPending && slot.generation == timer >> 32 ? &slot : nullptr;
}

bool VirtualRunLoop::isStale(const Due& due) const {
  const Slot& slot = slots_[due.slot];
  return !slot.isPending || slot.generation != due.generation;
}

void VirtualRunLoop::push(const Due& due) {
  queue_.push_back(due);
  std::push_heap(queue_.begin(), queue_.end(), kLater);
}

void VirtualRunLoop::pop() {
  std::pop_heap(queue_.begin(), queue_.end(), kLater);
  queue_.pop_back();
}

void VirtualRunLoop::release(Slot& slot, std::uint32_t index) {
  slot.isPending = false;
  ++slot.generation;
  slot.task = {};
  freeSlots_.push_back(index);
}

void VirtualRunLoop::runTurn(const Due& due) {
  // The task is taken out for its run: it may cancel itself, or move the slots by scheduling more.
  Task task = std::move(slots_[due.slot].task);
  const Duration interval = slots_[due.slot].interval;
  if (interval > Duration::zero()) {
    push({due.time + interval, nextOrder(), due.slot, due.generation});
  } else {
    release(slots_[due.slot], due.slot);
  }
  task();
  Slot& slot = slots_[due.slot];
  if (interval > Duration::zero() && slot.isPending && slot.generation == due.generation) {
    slot.task = std::move(task);
  }
  ++turns_;

  // A job may give further jobs.
  for (std::size_t at = 0; at < background_.size(); ++at) {
    Task job = std::move(background_[at]);
    job();
  }
  background_.clear();
  if (turnEnded_) turnEnded_();
}

void VirtualRunLoop::forgetStale() {
  if (stale_ < kSmallestCleanUp || stale_ * 2 < queue_.size()) return;
  std::erase_if(queue_, [this](const Due& due) { return isStale(due); });
  std::make_heap(queue_.begin(), queue_.end(), kLater);
  stale_ = 0;
}

}  // namespace halvora
