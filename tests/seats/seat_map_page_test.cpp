// SPDX-License-Identifier: Apache-2.0
// The two examples of docs/seat-map.md are the same map, and are read.
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/standard_files.h"
#include "tests/seats/seat_map_lines.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

std::vector<std::string> examplesOf(std::string_view page) {
  constexpr std::string_view kBegin = "```json\n";
  std::vector<std::string> examples;
  for (std::size_t at = page.find(kBegin); at != std::string_view::npos;
       at = page.find(kBegin, at)) {
    at += kBegin.size();
    examples.emplace_back(page.substr(at, page.find("```", at) - at));
  }
  return examples;
}

TEST(SeatMapPage, HasTwoExamplesOfOneMap) {
  const auto page = readFile(sourceTree() + "/docs/seat-map.md", 1U << 20);
  ASSERT_TRUE(page);
  const std::vector<std::string> examples = examplesOf(*page);
  ASSERT_EQ(examples.size(), 2U);
  const std::vector<std::string> lines = linesOfDocument(examples[0]);
  EXPECT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines, linesOfDocument(examples[1]));
}

TEST(SeatMapPage, HasASchemaThatIsJson) {
  const auto schema = readFile(sourceTree() + "/docs/seat-map.schema.json", 1U << 20);
  ASSERT_TRUE(schema);
  const ExactJsonReader json;
  EXPECT_TRUE(json.parse(*schema, nullptr));
}

}  // namespace
}  // namespace halvora
