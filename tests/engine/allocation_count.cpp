// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HALVORA_COUNTS_ALLOCATIONS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define HALVORA_COUNTS_ALLOCATIONS 0
#endif
#endif
#ifndef HALVORA_COUNTS_ALLOCATIONS
#define HALVORA_COUNTS_ALLOCATIONS 1
#endif

namespace halvora {

namespace {

std::atomic<bool> isCounting{false};
std::atomic<std::uint64_t> allocationCount{0};

}  // namespace

bool countsAllocations() { return HALVORA_COUNTS_ALLOCATIONS == 1; }

AllocationCount::AllocationCount() {
  allocationCount = 0;
  isCounting = true;
}

AllocationCount::~AllocationCount() { isCounting = false; }

std::uint64_t AllocationCount::allocations() const { return allocationCount; }

#if HALVORA_COUNTS_ALLOCATIONS
namespace {

void* allocate(std::size_t size) {
  if (isCounting.load(std::memory_order_relaxed)) ++allocationCount;
  return std::malloc(size > 0 ? size : 1);
}

void* allocateAligned(std::size_t size, std::align_val_t alignment) {
  if (isCounting.load(std::memory_order_relaxed)) ++allocationCount;
  const auto step = static_cast<std::size_t>(alignment);
  return std::aligned_alloc(step, (size + step - 1) / step * step);
}

void* orThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace
#endif

}  // namespace halvora

#if HALVORA_COUNTS_ALLOCATIONS
using std::align_val_t;
using std::nothrow_t;
using std::size_t;

void* operator new(size_t size) { return halvora::orThrow(halvora::allocate(size)); }
void* operator new[](size_t size) { return halvora::orThrow(halvora::allocate(size)); }
void* operator new(size_t size, const nothrow_t&) noexcept { return halvora::allocate(size); }
void* operator new[](size_t size, const nothrow_t&) noexcept { return halvora::allocate(size); }
void* operator new(size_t size, align_val_t alignment) {
  return halvora::orThrow(halvora::allocateAligned(size, alignment));
}
void* operator new[](size_t size, align_val_t alignment) {
  return halvora::orThrow(halvora::allocateAligned(size, alignment));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const nothrow_t&) noexcept { std::free(memory); }
void operator delete(void* memory, align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, size_t, align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t, align_val_t) noexcept { std::free(memory); }
#endif
