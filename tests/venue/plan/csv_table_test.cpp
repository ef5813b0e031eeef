// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/csv_table.h"

#include <string>
#include <variant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvora {
namespace {

using testing::ElementsAre;

std::string columns(int count) {
  std::string line = "a";
  for (int column = 1; column < count; ++column) line += ",a";
  return line + "\n";
}

TEST(CsvTableTest, AThousandColumnsAreRead) {
  const auto table = parseCsv(columns(1000) + columns(1000));
  ASSERT_TRUE(std::holds_alternative<CsvTable>(table));
  EXPECT_EQ(std::get<CsvTable>(table).columns.size(), 1000U);
  EXPECT_EQ(std::get<CsvTable>(table).rows.front().fields.size(), 1000U);
  const auto more = parseCsv(columns(1001));
  ASSERT_TRUE(std::holds_alternative<CsvFault>(more));
  EXPECT_EQ(std::get<CsvFault>(more).what, "more than 1000 columns");
  EXPECT_EQ(std::get<CsvFault>(more).line, 1U);
}

TEST(CsvTableTest, WhatTheFirstLineHasMostOfSeparates) {
  const auto table = std::get<CsvTable>(parseCsv("a;b,c;d\n1;2,5;3\n"));
  EXPECT_THAT(table.columns, ElementsAre("a", "b,c", "d"));
  EXPECT_THAT(table.rows.front().fields, ElementsAre("1", "2,5", "3"));
}

}  // namespace
}  // namespace halvora
