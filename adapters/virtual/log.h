// SPDX-License-Identifier: Apache-2.0
// What was done to a virtual thing, in order. Tests read it, the trace drains it; a crowd of phones
// turns it off.
#pragma once

#include <utility>
#include <vector>

namespace halvora {

template <class Entry>
struct Log {
  std::vector<Entry> entries;
  bool isKept = true;

  void add(Entry entry) {
    if (isKept) entries.push_back(std::move(entry));
  }
  /// Hands the entries out and begins anew.
  std::vector<Entry> drain() { return std::exchange(entries, {}); }
};

}  // namespace halvora
