// SPDX-License-Identifier: Apache-2.0
#include "seats/verbose_seat_map.h"

#include <algorithm>
#include <utility>

namespace halvora {

namespace {

constexpr std::string_view kName = "name";

// A short name as one number, so that looking it up is a few comparisons of numbers. The one in
// front keeps the length.
constexpr std::uint64_t packed(std::string_view name) {
  std::uint64_t value = 1;
  for (const char character : name) value = value << 8 | static_cast<std::uint8_t>(character);
  return value;
}
constexpr std::size_t kLongestKey = 6;

// The keys of a seat's position, for x and then for y. Best first: the first one with a usable
// value counts.
constexpr unsigned kKeysAnAxis = 5;
constexpr std::array kPositionKeys = {
    packed("xPos"), packed("x"), packed("xpos"), packed("column"), packed("col"),
    packed("yPos"), packed("y"), packed("ypos"), packed("row"),    packed("line")};

std::size_t positionKey(std::string_view name) {
  if (name.size() > kLongestKey) return kPositionKeys.size();
  const auto found = std::find(kPositionKeys.begin(), kPositionKeys.end(), packed(name));
  return static_cast<std::size_t>(found - kPositionKeys.begin());
}

bool isNameOrNumber(const JsonScalar& value) { return value.isText() || value.isNumber(); }

}  // namespace

bool VerboseSeatMap::begin(std::string_view name, JsonContainer container) {
  if (isInList()) {
    if (container != JsonContainer::object) return false;
    beginEntry();
    return true;
  }
  if (depth_ == kSeat) {
    settleSeatMember(name, nullptr);
    return false;
  }
  Entry& parent = entry(depth_);
  if (name == kName) settleName(parent, nullptr);
  if (name != listName() || std::exchange(parent.listIsSettled, true)) return false;
  if (container != JsonContainer::array) return false;
  ++depth_;
  entry(depth_ + 1).ordinal = 0;
  return true;
}

void VerboseSeatMap::end() {
  if (!isInList()) endEntry();
  --depth_;
}

void VerboseSeatMap::scalar(std::string_view name, const JsonScalar& value) {
  if (depth_ == kSeat) {
    settleSeatMember(name, &value);
  } else if (!isInList()) {
    Entry& parent = entry(depth_);
    if (name == kName) settleName(parent, &value);
    if (name == listName()) parent.listIsSettled = true;
  } else if (depth_ == kSeats && isNameOrNumber(value)) {
    // Shorthand for a seat that has a name and nothing else.
    beginEntry();
    settleName(entry(kSeat), &value);
    end();
  }
}

void VerboseSeatMap::beginEntry() {
  ++depth_;
  Entry& begun = entry(depth_);
  ++begun.ordinal;
  begun.name = {};
  begun.nameIsSettled = begun.listIsSettled = false;
  x_.rank = y_.rank = Axis::kNoRank;
  met_ = 0;
}

void VerboseSeatMap::endEntry() {
  const Entry& ended = entry(depth_);
  if (depth_ == kSection) {
    builder_.endSection(nameOr(texts_.sectionFormat, ended));
  } else if (depth_ == kRow) {
    builder_.endRow(nameOr(texts_.rowFormat, ended));
  } else {
    builder_.addSeat(nameOr(texts_.seatFormat, ended), x_.valueOr(ended.ordinal),
                     y_.valueOr(entry(kRow).ordinal));
  }
}

SeatMapName VerboseSeatMap::nameOr(const std::string& format, const Entry& entry) {
  return entry.name.size > 0 ? entry.name : builder_.addName(formatted(format, entry.ordinal));
}

void VerboseSeatMap::settleName(Entry& entry, const JsonScalar* value) {
  if (std::exchange(entry.nameIsSettled, true) || value == nullptr) return;
  const std::string_view name =
      value->isText() ? trimmed(value->text) : nameOf(*value, numberText_);
  if (!name.empty()) entry.name = builder_.addName(name);
}

void VerboseSeatMap::settleSeatMember(std::string_view name, const JsonScalar* value) {
  const auto key = static_cast<unsigned>(positionKey(name));
  if (key == kPositionKeys.size()) {
    if (name == kName) settleName(entry(kSeat), value);
    return;
  }
  const bool isMet = (met_ & 1U << key) != 0;
  met_ |= 1U << key;
  if (!isMet && value != nullptr) (key < kKeysAnAxis ? x_ : y_).settle(key % kKeysAnAxis, *value);
}

void VerboseSeatMap::Axis::settle(unsigned keyRank, const JsonScalar& value) {
  if (keyRank > rank) return;
  if (value.isNumber()) {
    position = value.wholeNumber();
  } else if (value.isText() && !value.text.empty()) {
    position = leadingInteger(value.text);
  } else {
    return;
  }
  rank = keyRank;
}

}  // namespace halvora
