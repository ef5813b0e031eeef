// SPDX-License-Identifier: Apache-2.0
// A YAML document as values that know their lines. Bounded in depth and size; an alias shares the
// value that it stands for, so no document grows when it is read. Values, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace halvora {

/// Levels of lists and maps within each other.
inline constexpr int kDeepestYaml = 32;

struct YamlNode;
using YamlValue = std::shared_ptr<const YamlNode>;

/// Bytes of the text, from and to; comments at its ends are no part of it.
struct YamlSpan {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct YamlMember {
  std::string key;
  /// Where the key stands, from 1.
  std::size_t line = 0;
  YamlValue value;
  YamlSpan keySpan;
  /// Where the value is written, or the alias that stands for it.
  YamlSpan span;
};

struct YamlNode {
  enum class Kind : std::uint8_t { scalar, list, map };
  Kind kind = Kind::scalar;
  /// Where it begins, from 1.
  std::size_t line = 0;
  /// A scalar's, empty also for none; in plain style numbers and texts look alike.
  std::string text;
  std::vector<YamlValue> items;
  /// One an item.
  std::vector<YamlSpan> itemSpans;
  /// In brackets or braces; not by indentation.
  bool isFlow = false;
  /// In the order of the file, no key twice.
  std::vector<YamlMember> members;
};

struct YamlFault {
  std::size_t line = 0;
  std::string what;
};

/// The one document of a text in UTF-8, or the first fault. Never null.
std::variant<YamlValue, YamlFault> parseYaml(std::string_view text);

}  // namespace halvora
