// SPDX-License-Identifier: Apache-2.0
// Counts what the test program takes from the heap while a count is wanted, by standing in for the
// global operators new. Not in builds with a sanitizer of memory or threads, which has operators of
// its own; a memory checker that brings its own at run time must leave out the tests that count.
// One count at a time; any thread.
#pragma once

#include <cstdint>

namespace halvora {

/// Whether this build counts at all.
bool countsAllocations();

/// Counts from its making on.
class AllocationCount {
 public:
  AllocationCount();
  ~AllocationCount();
  AllocationCount(const AllocationCount&) = delete;
  AllocationCount& operator=(const AllocationCount&) = delete;

  std::uint64_t allocations() const;
};

}  // namespace halvora
