// SPDX-License-Identifier: Apache-2.0
// What this program holds of the heap, by standing in for the global operators new and delete. One
// thread.
#pragma once

#include <cstdint>

namespace halvora {

struct HeapUse {
  /// As the heap rounds them.
  std::int64_t bytes = 0;
  std::int64_t blocks = 0;
};

HeapUse heapUse();

}  // namespace halvora
