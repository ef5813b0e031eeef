// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/ledger.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <execinfo.h>

namespace halvora::ledger {

namespace {

// A table of what is out, by address; it lies in no heap. Twice what any case has out at a time.
constexpr std::size_t kRows = std::size_t{1} << 18;
constexpr std::size_t kTraceDepth = 24;

struct Row {
  void* block = nullptr;
  std::size_t size = 0;
  std::uint64_t number = 0;
};

struct Book {
  std::array<Row, kRows> rows{};
  std::size_t count = 0;
  std::uint64_t last = 0;
  bool keepsTraces = false;
  /// Of each block, in the order of the rows; touched only where traces are kept.
  std::array<std::array<void*, kTraceDepth>, kRows> traces{};
  std::array<int, kRows> traceSizes{};
};

Book book;
std::atomic<bool> isOpen{false};
std::atomic_flag isBusy = ATOMIC_FLAG_INIT;
thread_local int pauses = 0;

class Lock {
 public:
  Lock() {
    while (isBusy.test_and_set(std::memory_order_acquire)) {
    }
  }
  ~Lock() { isBusy.clear(std::memory_order_release); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
};

std::size_t homeOf(const void* block) {
  return (reinterpret_cast<std::uintptr_t>(block) >> 4) * 0x9E3779B97F4A7C15U >> 46;
}

void enter(void* block, std::size_t size) {
  if (block == nullptr || !isOpen.load(std::memory_order_acquire) || pauses > 0) return;
  const Lock lock;
  if (book.count * 2 > kRows) abort();
  std::size_t at = homeOf(block) % kRows;
  while (book.rows[at].block != nullptr) at = (at + 1) % kRows;
  book.rows[at] = {block, size, ++book.last};
  ++book.count;
  if (book.keepsTraces) {
    const Pause own;
    book.traceSizes[at] = backtrace(book.traces[at].data(), static_cast<int>(kTraceDepth));
  }
}

// What is not in it was taken before it was begun.
void strike(const void* block) {
  if (block == nullptr || !isOpen.load(std::memory_order_acquire)) return;
  const Lock lock;
  std::size_t at = homeOf(block) % kRows;
  while (book.rows[at].block != block) {
    if (book.rows[at].block == nullptr) return;
    at = (at + 1) % kRows;
  }
  --book.count;
  // Closes the gap, so that what lies behind it is still found.
  for (std::size_t behind = (at + 1) % kRows; book.rows[behind].block != nullptr;
       behind = (behind + 1) % kRows) {
    const std::size_t home = homeOf(book.rows[behind].block) % kRows;
    if ((behind - home) % kRows < (behind - at) % kRows) continue;
    book.rows[at] = book.rows[behind];
    if (book.keepsTraces) {
      book.traces[at] = book.traces[behind];
      book.traceSizes[at] = book.traceSizes[behind];
    }
    at = behind;
  }
  book.rows[at] = {};
}

}  // namespace

void begin() {
  const Lock lock;
  for (Row& row : book.rows) {
    if (row.block != nullptr) row = {};
  }
  book.count = 0;
  isOpen = true;
}

Balance end() {
  isOpen = false;
  const Lock lock;
  Balance balance;
  std::uint64_t oldest = UINT64_MAX;
  for (std::size_t at = 0; book.count > 0 && at < kRows; ++at) {
    const Row& row = book.rows[at];
    if (row.block == nullptr) continue;
    ++balance.blocks;
    balance.bytes += row.size;
    if (row.number >= oldest) continue;
    oldest = row.number;
    balance.trace = {book.traces[at].data(), static_cast<std::size_t>(book.traceSizes[at])};
  }
  return balance;
}

void keepTraces(bool isWanted) { book.keepsTraces = isWanted; }

Pause::Pause() { ++pauses; }
Pause::~Pause() { --pauses; }

namespace {

template <class Take>
void* taken(std::size_t size, const Take& take) {
  if (faults::failsToAllocate()) return nullptr;
  void* const block = take();
  enter(block, size);
  return block;
}

}  // namespace

}  // namespace halvora::ledger

// NOLINTBEGIN: these names and shapes are not ours to choose.
#if HALVORA_OWNS_HEAP

using halvora::ledger::enter;
using halvora::ledger::strike;
using halvora::ledger::taken;

extern "C" {

void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);

void* malloc(size_t size) {
  return taken(size, [&] { return __libc_malloc(size); });
}

void* calloc(size_t count, size_t size) {
  return taken(count * size, [&] { return __libc_calloc(count, size); });
}

void* realloc(void* block, size_t size) {
  if (halvora::faults::failsToAllocate()) return nullptr;
  strike(block);
  void* const moved = __libc_realloc(block, size);
  enter(moved == nullptr && size > 0 ? block : moved, size);
  return moved;
}

void* reallocarray(void* block, size_t count, size_t size) {
  size_t bytes = 0;
  if (__builtin_mul_overflow(count, size, &bytes)) {
    errno = ENOMEM;
    return nullptr;
  }
  return realloc(block, bytes);
}

void* memalign(size_t alignment, size_t size) {
  return taken(size, [&] { return __libc_memalign(alignment, size); });
}

void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }

int posix_memalign(void** block, size_t alignment, size_t size) {
  void* const memory = memalign(alignment, size);
  if (memory == nullptr) return ENOMEM;
  *block = memory;
  return 0;
}

void free(void* block) {
  strike(block);
  __libc_free(block);
}

}  // extern "C"

#else

namespace {

void* orThrow(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* take(size_t size) {
  return halvora::ledger::taken(size, [&] { return std::malloc(size > 0 ? size : 1); });
}

void* takeAligned(size_t size, std::align_val_t alignment) {
  const auto step = static_cast<size_t>(alignment);
  return halvora::ledger::taken(
      size, [&] { return std::aligned_alloc(step, (size + step - 1) / step * step); });
}

}  // namespace

void* operator new(size_t size) { return orThrow(take(size)); }
void* operator new[](size_t size) { return orThrow(take(size)); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new(size_t size, std::align_val_t step) { return orThrow(takeAligned(size, step)); }
void* operator new[](size_t size, std::align_val_t step) {
  return orThrow(takeAligned(size, step));
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }
void operator delete(void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete[](void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete(void* block, size_t, std::align_val_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t, std::align_val_t) noexcept { std::free(block); }

#endif
// NOLINTEND
