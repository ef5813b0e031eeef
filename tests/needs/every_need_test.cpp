// SPDX-License-Identifier: Apache-2.0
// A need that is new has the rows that all others have: what the compiler is to refuse of it, and
// what keeps its promise on an adapter of the kit and breaks it where a fault is planted.
#include <cstddef>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/standard/standard_files.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

using testing::IsEmpty;

/// The texts of a folder's files whose whole names are so, one after the other.
std::string textsIn(const std::string& folder, const std::string& names) {
  const std::string path = sourceTree() + "/" + folder;
  std::string texts;
  for (const std::string& name : StandardFiles().list(path).value_or(std::vector<std::string>())) {
    if (!std::regex_match(name, std::regex(names))) continue;
    texts += readFile(path + "/" + name, std::size_t{1} << 20).value_or("");
  }
  return texts;
}

/// What the first group of the pattern found.
std::set<std::string> allOf(const std::string& text, const std::string& pattern) {
  const std::regex wanted(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator at(text.begin(), text.end(), wanted), end; at != end; ++at) {
    found.insert((*at)[1]);
  }
  return found;
}

std::set<std::string> needs() {
  return allOf(textsIn("include/halvora/platform", R"(.*\.h)"), R"(\nclass (\w+) : public Need )");
}

std::set<std::string> without(std::set<std::string> all, const std::set<std::string>& those) {
  for (const std::string& one : those) all.erase(one);
  return all;
}

TEST(EveryNeed, HasItsRowAmongThoseThatTheCompilerRefusesToSlice) {
  EXPECT_GT(needs().size(), 25U);
  const std::string rows = textsIn("tests/needs", R"(needs_test\.cpp)");
  EXPECT_THAT(without(needs(), allOf(rows, R"(\b(\w+)[,>])")), IsEmpty());
}

TEST(EveryNeed, IsNamedByACheckOfWhatItPromises) {
  // Waiting for descriptors, and films, are what programs of the kit need, not a phone.
  const std::set<std::string> ofPrograms = {"Descriptors", "MovieWriter", "MovieWriters"};
  const std::string checks = textsIn("conformance", R"(.*\.(h|cpp))");
  EXPECT_THAT(without(without(needs(), ofPrograms), allOf(checks, R"(\b(\w+)\b)")), IsEmpty());
}

TEST(EveryNeed, EachCheckIsRunOnAnAdapterAndOnPlantedFaults) {
  const auto checks = allOf(textsIn("conformance", R"(.*\.h)"), R"(> (check[A-Z]\w*)\()");
  EXPECT_GT(checks.size(), 20U);
  const std::string call = R"(\b(check\w+)\()";
  const std::string planted = textsIn("tests/conformance", R"(planted_.*\.cpp)");
  EXPECT_THAT(without(checks, allOf(planted, call)), IsEmpty());
  std::string own = textsIn("tests/conformance", R"(own_.*\.cpp)");
  for (const char* adapter : {"image", "nettle", "qt", "standard"}) {
    own += textsIn(std::string("tests/adapters/") + adapter, R"(.*_test\.cpp)");
  }
  EXPECT_THAT(without(checks, allOf(own, call)), IsEmpty());
}

}  // namespace
}  // namespace halvora
