// SPDX-License-Identifier: Apache-2.0
// Any bytes as a defaults file: what is read of it can be written, and reads back as the same.
#include <algorithm>
#include <cmath>
#include <string>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/defaults_document.h"
#include "tests/fuzz/fuzz_targets.h"

namespace halvora {

namespace {

// Numbers that are none are equal here, as they are the same on disk.
bool isSame(const DefaultsValue& left, const DefaultsValue& right) {
  if (left.storage.index() != right.storage.index()) return false;
  const auto isSameNumber = [](double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
  };
  if (const auto* real = std::get_if<double>(&left.storage)) {
    return isSameNumber(*real, std::get<double>(right.storage));
  }
  if (const auto* date = std::get_if<Date>(&left.storage)) {
    return isSameNumber(date->secondsSince1970, std::get<Date>(right.storage).secondsSince1970);
  }
  if (const auto* array = std::get_if<DefaultsArray>(&left.storage)) {
    return std::ranges::equal(*array, std::get<DefaultsArray>(right.storage), isSame);
  }
  if (const auto* members = std::get_if<DefaultsDictionary>(&left.storage)) {
    return std::ranges::equal(*members, std::get<DefaultsDictionary>(right.storage),
                              [](const DefaultsMember& a, const DefaultsMember& b) {
                                return a.key == b.key && isSame(a.value, b.value);
                              });
  }
  return left == right;
}

}  // namespace

int fuzzDefaults(FuzzBytes bytes) {
  const ExactJsonReader reader;
  const JsonReader& json = reader;
  const auto document = json.parse(textOf(bytes));
  if (!document) return 0;
  const ReadDefaults read = readDefaultsDocument(*document);
  const std::string written = defaultsDocument(read.values);
  const auto again = json.parse(written);
  require(again.has_value(), "what is written is a document");
  const ReadDefaults reread = readDefaultsDocument(*again);
  require(reread.isWhole, "and one of ours");
  require(std::ranges::equal(read.values, reread.values,
                             [](const auto& a, const auto& b) {
                               return a.first == b.first && isSame(a.second, b.second);
                             }),
          "values read back as they were");
  return 0;
}

}  // namespace halvora
