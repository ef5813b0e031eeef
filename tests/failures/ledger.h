// SPDX-License-Identifier: Apache-2.0
// The heap of a program in which allocations may fail: stands in for malloc and its family, asks
// the plan first, and keeps a ledger of what is out. Under a sanitizer, which has a heap of its
// own, it stands in for operator new alone and keeps no ledger. Any thread.
#pragma once

#include <cstddef>
#include <span>

#if defined(__SANITIZE_ADDRESS__)
#define HALVORA_OWNS_HEAP 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HALVORA_OWNS_HEAP 0
#endif
#endif
#ifndef HALVORA_OWNS_HEAP
#define HALVORA_OWNS_HEAP 1
#endif

namespace halvora::faults {
/// Asks the plan; sets `errno` where the answer is yes.
bool failsToAllocate();
}  // namespace halvora::faults

namespace halvora::ledger {

struct Balance {
  std::size_t blocks = 0;
  std::size_t bytes = 0;
  /// Of the oldest block, where traces are kept.
  std::span<void* const> trace;
};

void begin();
Balance end();
void keepTraces(bool isWanted);

/// What this thread takes meanwhile does not go into the ledger.
class Pause {
 public:
  Pause();
  ~Pause();
  Pause(const Pause&) = delete;
  Pause& operator=(const Pause&) = delete;
};

}  // namespace halvora::ledger
