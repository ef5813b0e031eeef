// SPDX-License-Identifier: Apache-2.0
#include "seats/keyed_seat_map.h"

namespace halvora {

bool KeyedSeatMap::begin(std::string_view name, JsonContainer container) {
  if (depth_ == kPosition) {
    ++elements_;
    return false;
  }
  keys(depth_).add(name);
  if (container != (depth_ == kSeats ? JsonContainer::array : JsonContainer::object)) return false;
  ++depth_;
  if (depth_ == kPosition) {
    position_[0] = keys(kSeats).lastInteger();
    position_[1] = keys(kRows).lastInteger();
    elements_ = 0;
  } else {
    keys(depth_).clear();
  }
  return true;
}

void KeyedSeatMap::scalar(std::string_view name, const JsonScalar& value) {
  if (depth_ != kPosition) {
    // Of no use, but a later member of the same name does not count.
    keys(depth_).add(name);
    return;
  }
  if (elements_ < position_.size()) {
    if (value.isNumber()) position_[elements_] = value.wholeNumber();
    if (value.isText()) position_[elements_] = leadingInteger(value.text);
  }
  ++elements_;
}

void KeyedSeatMap::end() {
  const bool isItem = depth_ == kPosition ? endPosition() : endObject();
  --depth_;
  if (isItem) keys(depth_).keepItem();
}

bool KeyedSeatMap::endPosition() {
  if (elements_ < position_.size()) return false;
  builder_.addSeat(keys(kSeats).lastName(), position_[0], position_[1]);
  return true;
}

bool KeyedSeatMap::endObject() {
  const auto order = keys(depth_).order();
  if (depth_ == kSeats) {
    if (order) builder_.arrangeSeats(*order);
    return builder_.endRow(keys(kRows).lastName());
  }
  if (depth_ == kRows) {
    if (order) builder_.arrangeRows(*order);
    return builder_.endSection(keys(kSections).lastName());
  }
  if (order) builder_.arrangeSections(*order);
  return false;
}

}  // namespace halvora
