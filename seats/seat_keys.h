// SPDX-License-Identifier: Apache-2.0
// The keys of a keyed seat map and their order: by the integers that they begin with (0 without
// one), then as texts in which runs of digits count by value. Any thread.
#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "seats/seat_map.h"

namespace halvora {

/// Runs of digits compare by value, everything else by code point. "01" and "1" are equivalent.
std::weak_ordering compareWithNumbers(std::string_view left, std::string_view right);

/// The keys of one object, as they come, each with the name that it gives ("PREFIX KEY") and
/// whether its value became an item.
class SeatKeyList {
 public:
  /// The builder keeps the names; it must outlive the list.
  SeatKeyList(SeatMapBuilder& builder, const std::string& prefix)
      : builder_(builder), prefix_(prefix + " ") {}

  void clear();
  void add(std::string_view key);
  /// The value of the last key became an item: the first one is item 0, the next one item 1.
  void keepItem() { keys_.back().item = itemCount_++; }
  /// The integer that the last key begins with.
  std::int64_t lastInteger() const { return keys_.back().integer; }
  SeatMapName lastName() const { return keys_.back().name; }

  /// The items in the order of their keys; equivalent keys stay as they came, and of equal ones
  /// only the first counts. None where the items are in that order already. Once, at the end.
  std::optional<std::vector<std::uint32_t>> order();

 private:
  static constexpr std::uint32_t kNoItem = UINT32_MAX;

  struct Key {
    Key() = default;
    Key(std::int64_t value, SeatMapName its) : integer(value), name(its), item(kNoItem) {}
    std::int64_t integer;
    SeatMapName name;
    std::uint32_t item;
  };

  std::string_view text(const Key& key) const {
    const std::string_view name = builder_.text(key.name);
    return name.substr(std::min(prefix_.size(), name.size()));
  }
  std::weak_ordering compare(const Key& left, const Key& right) const;
  void dropRepeated();

  SeatMapBuilder& builder_;
  const std::string prefix_;
  std::vector<Key> keys_;
  std::uint32_t itemCount_ = 0;
  bool isSorted_ = true;
};

}  // namespace halvora
