// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_keys.h"

#include <algorithm>

#include "seats/digits.h"
#include "seats/seat_texts.h"

namespace halvora {

namespace {

/// Takes a run of digits off the text; the answer is without leading zeros.
std::string_view takeDigits(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(digits.size());
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits;
}

std::weak_ordering orderingOf(int comparison) { return comparison <=> 0; }

}  // namespace

std::weak_ordering compareWithNumbers(std::string_view left, std::string_view right) {
  while (!left.empty() && !right.empty()) {
    if (isDigit(left.front()) && isDigit(right.front())) {
      const std::string_view leftDigits = takeDigits(left);
      const std::string_view rightDigits = takeDigits(right);
      if (leftDigits.size() != rightDigits.size()) return leftDigits.size() <=> rightDigits.size();
      const int comparison = leftDigits.compare(rightDigits);
      if (comparison != 0) return orderingOf(comparison);
    } else {
      // Bytes of UTF-8 sort as the code points do.
      const int comparison = left.substr(0, 1).compare(right.substr(0, 1));
      if (comparison != 0) return orderingOf(comparison);
      left.remove_prefix(1);
      right.remove_prefix(1);
    }
  }
  return left.size() <=> right.size();
}

void SeatKeyList::clear() {
  keys_.clear();
  itemCount_ = 0;
  isSorted_ = true;
}

void SeatKeyList::add(std::string_view key) {
  const Key& next = keys_.emplace_back(leadingInteger(key), builder_.addName(prefix_, key));
  if (!isSorted_ || keys_.size() == 1) return;
  const Key& last = keys_[keys_.size() - 2];
  isSorted_ = last.integer < next.integer || std::is_lt(compare(last, next));
}

std::weak_ordering SeatKeyList::compare(const Key& left, const Key& right) const {
  if (left.integer != right.integer) return left.integer <=> right.integer;
  return compareWithNumbers(text(left), text(right));
}

std::optional<std::vector<std::uint32_t>> SeatKeyList::order() {
  if (isSorted_) return std::nullopt;
  std::sort(keys_.begin(), keys_.end(), [this](const Key& left, const Key& right) {
    const std::weak_ordering ordering = compare(left, right);
    // The names lie one behind the other as the keys came.
    return std::is_neq(ordering) ? std::is_lt(ordering) : left.name.offset < right.name.offset;
  });
  dropRepeated();
  std::vector<std::uint32_t> items;
  items.reserve(itemCount_);
  for (const Key& key : keys_) {
    if (key.item != kNoItem) items.push_back(key.item);
  }
  return items;
}

// Equal keys are equivalent, so they lie in one run of the sorted ones.
void SeatKeyList::dropRepeated() {
  for (auto begin = keys_.begin(); begin != keys_.end();) {
    const auto end = std::find_if(
        begin + 1, keys_.end(), [&](const Key& key) { return std::is_neq(compare(*begin, key)); });
    if (end - begin > 1) {
      std::vector<Key*> run;
      for (auto key = begin; key != end; ++key) run.push_back(&*key);
      std::stable_sort(run.begin(), run.end(), [this](const Key* left, const Key* right) {
        return text(*left) < text(*right);
      });
      for (std::size_t at = 1; at < run.size(); ++at) {
        if (text(*run[at]) == text(*run[at - 1])) run[at]->item = kNoItem;
      }
    }
    begin = end;
  }
}

}  // namespace halvora
