// SPDX-License-Identifier: Apache-2.0
// What this process asks of the disk for as long as one of these lives: what it syncs and what it
// renames, in their order. Syncing and locking may be made to fail, and chance to be none. One at a
// time; owned by a test.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace halvora {

class StorageCalls {
 public:
  StorageCalls();
  ~StorageCalls();
  StorageCalls(const StorageCalls&) = delete;
  StorageCalls& operator=(const StorageCalls&) = delete;

  /// "sync PATH", "rename FROM TO", of names without their folders.
  std::vector<std::string> all;
  /// From this call to sync on (1 is the first), each fails with `error`; 0 for none.
  int firstFailure = 0;
  int error = 0;
  /// So many calls to sync are interrupted by a signal before the next one goes through.
  int interruptions = 0;
  /// With what each lock fails; of 0 it is had. Those after the last one are had.
  std::vector<int> locks;
  /// What chance gives, instead of a number of its own; `hasNoChance` refuses even that.
  std::optional<std::uint64_t> chance;
  bool hasNoChance = false;
};

}  // namespace halvora
