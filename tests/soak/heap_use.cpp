// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/heap_use.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

halvora::HeapUse inUse;

void* take(std::size_t size) {
  void* block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  inUse.bytes += static_cast<std::int64_t>(malloc_usable_size(block));
  ++inUse.blocks;
  return block;
}

void giveBack(void* block) {
  if (block == nullptr) return;
  inUse.bytes -= static_cast<std::int64_t>(malloc_usable_size(block));
  --inUse.blocks;
  std::free(block);
}

}  // namespace

namespace halvora {

HeapUse heapUse() { return inUse; }

}  // namespace halvora

void* operator new(std::size_t size) { return take(size); }
void* operator new[](std::size_t size) { return take(size); }
void operator delete(void* block) noexcept { giveBack(block); }
void operator delete[](void* block) noexcept { giveBack(block); }
void operator delete(void* block, std::size_t) noexcept { giveBack(block); }
void operator delete[](void* block, std::size_t) noexcept { giveBack(block); }
