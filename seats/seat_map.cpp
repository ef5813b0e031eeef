// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_map.h"

namespace halvora {

namespace {

/// Makes one group of what `items` holds from `first` on, and moves `first` behind it.
template <class Item, class Group>
bool group(const std::vector<Item>& items, std::size_t& first, SeatMapName name,
           std::vector<Group>& groups) {
  const std::size_t count = items.size() - first;
  if (count == 0) return false;
  groups.push_back({name, static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(count)});
  first = items.size();
  return true;
}

template <class Item>
void arrange(std::vector<Item>& items, std::size_t first, std::span<const std::uint32_t> order) {
  std::vector<Item> arranged;
  arranged.reserve(order.size());
  for (const std::uint32_t index : order) arranged.push_back(items[first + index]);
  items.erase(items.begin() + static_cast<std::ptrdiff_t>(first), items.end());
  items.insert(items.end(), arranged.begin(), arranged.end());
}

}  // namespace

SeatMapName SeatMapBuilder::addName(std::string_view text) {
  const std::size_t offset = map_.names_.size();
  isFull_ = isFull_ || text.size() > kMostNameBytes - offset;
  if (isFull_) return {};
  map_.names_ += text;
  return {static_cast<std::uint32_t>(offset), static_cast<std::uint32_t>(text.size())};
}

SeatMapName SeatMapBuilder::addName(std::string_view prefix, std::string_view key) {
  const SeatMapName name = addName(prefix);
  return {name.offset, name.size + addName(key).size};
}

bool SeatMapBuilder::endRow(SeatMapName name) {
  return group(map_.seats_, firstSeat_, name, map_.rows_);
}

bool SeatMapBuilder::endSection(SeatMapName name) {
  return group(map_.rows_, firstRow_, name, map_.sections_);
}

void SeatMapBuilder::arrangeSeats(std::span<const std::uint32_t> order) {
  arrange(map_.seats_, firstSeat_, order);
}

void SeatMapBuilder::arrangeRows(std::span<const std::uint32_t> order) {
  arrange(map_.rows_, firstRow_, order);
}

void SeatMapBuilder::arrangeSections(std::span<const std::uint32_t> order) {
  arrange(map_.sections_, 0, order);
}

}  // namespace halvora
