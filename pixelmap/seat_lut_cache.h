// SPDX-License-Identifier: Apache-2.0
// The tables last used, at most eight: the one that was asked for longest ago goes first. Any
// thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "pixelmap/seat_lut.h"

namespace halvora {

class SeatLutCache {
 public:
  static constexpr std::size_t kCountLimit = 8;

  /// Null for none.
  SeatLut find(std::string_view key) {
    const std::lock_guard lock(mutex_);
    const auto found = at(key);
    if (found == tables_.end()) return nullptr;
    std::rotate(found, found + 1, tables_.end());
    return tables_.back().second;
  }

  void store(const std::string& key, SeatLut lut) {
    const std::lock_guard lock(mutex_);
    if (const auto found = at(key); found != tables_.end()) {
      tables_.erase(found);
    } else if (tables_.size() == kCountLimit) {
      tables_.erase(tables_.begin());
    }
    tables_.emplace_back(key, std::move(lut));
  }

  void clear() {
    const std::lock_guard lock(mutex_);
    tables_.clear();
  }

 private:
  using Tables = std::vector<std::pair<std::string, SeatLut>>;

  Tables::iterator at(std::string_view key) {
    return std::find_if(tables_.begin(), tables_.end(),
                        [key](const auto& table) { return table.first == key; });
  }

  std::mutex mutex_;
  /// The last one used at the end.
  Tables tables_;
};

}  // namespace halvora
