// SPDX-License-Identifier: Apache-2.0
// A seat map made the usual way: the document as a tree of some library's values, then the map out
// of the tree. It is what the direct parse is measured against, so it makes the same map by the
// same rules, and no detours. A Tree tells how the library's values are looked at:
//   bool isObject(value), isArray(value)
//   std::size_t size(value)                           of an array
//   std::optional<Value> find(value, "name")          a member
//   void forEach(value, function(element))            of an array
//   void forEachMember(value, function(key, value))   of an object, the key a text of UTF-8
//   JsonScalar scalar(value)                          its text lives until the next call
//   Key                                               what keeps a key: a view where that lasts
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "seats/seat_keys.h"
#include "seats/seat_map.h"
#include "seats/seat_texts.h"
#include "text/numbers.h"

namespace halvora {

template <class Tree>
class SeatMapOfTree {
 public:
  using Value = typename Tree::Value;

  SeatMapOfTree(Tree& tree, const SeatMapTexts& texts) : tree_(tree), texts_(texts) {}

  SeatMap map(const Value& document) {
    const auto keyed = tree_.find(document, "s");
    const auto listed = tree_.find(document, "sections");
    if (keyed && tree_.isObject(*keyed)) {
      addKeyed(*keyed);
    } else if (listed && tree_.isArray(*listed)) {
      addListed(*listed);
    }
    return builder_.finish();
  }

 private:
  static constexpr std::array kXKeys = {"xPos", "x", "xpos", "column", "col"};
  static constexpr std::array kYKeys = {"yPos", "y", "ypos", "row", "line"};

  SeatMapName name(const std::optional<Value>& value, const std::string& format,
                   std::int64_t ordinal) {
    const std::string_view text = value ? nameOf(tree_.scalar(*value), numberText_) : "";
    return builder_.addName(text.empty() ? formatted(format, ordinal) : text);
  }

  std::int64_t position(const Value& seat, const std::array<const char*, 5>& keys,
                        std::int64_t fallback) {
    for (const char* key : keys) {
      const std::optional<Value> value = tree_.find(seat, key);
      if (!value) continue;
      const JsonScalar scalar = tree_.scalar(*value);
      if (scalar.isNumber()) return scalar.wholeNumber();
      if (scalar.isText() && !scalar.text.empty()) return integerValue(scalar.text);
    }
    return fallback;
  }

  void addListed(const Value& sections) {
    std::int64_t sectionOrdinal = 0;
    tree_.forEach(sections, [&](const Value& section) {
      if (!tree_.isObject(section)) return;
      ++sectionOrdinal;
      std::int64_t rowOrdinal = 0;
      const auto rows = tree_.find(section, "rows");
      if (rows && tree_.isArray(*rows)) {
        tree_.forEach(*rows, [&](const Value& row) {
          if (tree_.isObject(row)) addListedRow(row, ++rowOrdinal);
        });
      }
      builder_.endSection(name(tree_.find(section, "name"), texts_.sectionFormat, sectionOrdinal));
    });
  }

  void addListedRow(const Value& row, std::int64_t rowOrdinal) {
    std::int64_t ordinal = 0;
    const auto seats = tree_.find(row, "seats");
    if (seats && tree_.isArray(*seats)) {
      tree_.forEach(*seats, [&](const Value& seat) {
        if (tree_.isObject(seat)) {
          ++ordinal;
          const SeatMapName seatName = name(tree_.find(seat, "name"), texts_.seatFormat, ordinal);
          builder_.addSeat(seatName, position(seat, kXKeys, ordinal),
                           position(seat, kYKeys, rowOrdinal));
        } else if (const JsonScalar scalar = tree_.scalar(seat);
                   scalar.isText() || scalar.isNumber()) {
          ++ordinal;
          builder_.addSeat(name(seat, texts_.seatFormat, ordinal), ordinal, rowOrdinal);
        }
      });
    }
    builder_.endRow(name(tree_.find(row, "name"), texts_.rowFormat, rowOrdinal));
  }

  struct Member {
    std::int64_t integer;
    typename Tree::Key key;
    Value value;
  };

  // The keys of a document that is measured are all different.
  std::vector<Member> sortedMembers(const Value& object) {
    std::vector<Member> members;
    tree_.forEachMember(object, [&](std::string_view key, const Value& value) {
      members.push_back({integerValue(key), typename Tree::Key(key), value});
    });
    const auto isBefore = [](const Member& left, const Member& right) {
      if (left.integer != right.integer) return left.integer < right.integer;
      return compareWithNumbers(left.key, right.key) < 0;
    };
    if (!std::is_sorted(members.begin(), members.end(), isBefore)) {
      std::stable_sort(members.begin(), members.end(), isBefore);
    }
    return members;
  }

  void addKeyed(const Value& sections) {
    for (const Member& section : sortedMembers(sections)) {
      if (!tree_.isObject(section.value)) continue;
      for (const Member& row : sortedMembers(section.value)) {
        if (tree_.isObject(row.value)) addKeyedRow(row);
      }
      builder_.endSection(builder_.addName(sectionPrefix_, section.key));
    }
  }

  void addKeyedRow(const Member& row) {
    for (const Member& seat : sortedMembers(row.value)) {
      if (!tree_.isArray(seat.value) || tree_.size(seat.value) < 2) continue;
      std::array<std::int64_t, 2> position = {seat.integer, row.integer};
      std::size_t count = 0;
      tree_.forEach(seat.value, [&](const Value& element) {
        if (count == position.size()) return;
        const JsonScalar scalar = tree_.scalar(element);
        if (scalar.isNumber()) position[count] = scalar.wholeNumber();
        if (scalar.isText()) position[count] = integerValue(scalar.text);
        ++count;
      });
      builder_.addSeat(builder_.addName(seatPrefix_, seat.key), position[0], position[1]);
    }
    builder_.endRow(builder_.addName(rowPrefix_, row.key));
  }

  Tree& tree_;
  const SeatMapTexts& texts_;
  const std::string sectionPrefix_ = texts_.sectionPrefix + " ";
  const std::string rowPrefix_ = texts_.rowPrefix + " ";
  const std::string seatPrefix_ = texts_.seatPrefix + " ";
  SeatMapBuilder builder_;
  std::string numberText_;
};

}  // namespace halvora
