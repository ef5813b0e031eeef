// SPDX-License-Identifier: Apache-2.0
#include "bench/heap_count.h"

#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

thread_local std::uint64_t allocations = 0;
thread_local std::int64_t bytesHeld = 0;
// Asking the heap for a block's size costs more than a small allocation's count; only where bytes
// are measured is it asked.
thread_local bool isWatched = false;

void release(void* block) {
  if (isWatched) bytesHeld -= static_cast<std::int64_t>(malloc_usable_size(block));
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
  void* block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  ++allocations;
  if (isWatched) bytesHeld += static_cast<std::int64_t>(malloc_usable_size(block));
  return block;
}
void operator delete(void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }

namespace halvora {

std::uint64_t heapAllocations() { return allocations; }

HeapWatch::HeapWatch() {
  ::bytesHeld = 0;
  isWatched = true;
}
HeapWatch::~HeapWatch() { isWatched = false; }
std::int64_t HeapWatch::bytesHeld() const { return ::bytesHeld; }

}  // namespace halvora
