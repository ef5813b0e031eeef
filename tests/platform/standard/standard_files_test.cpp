// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/standard_files.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/platform/standard/temporary_folder.h"

namespace halvora {
namespace {

TEST(ReadFile, GivesTheBytesAsTheyAre) {
  const TemporaryFolder folder;
  const std::string bytes("a\r\n\0\xFFz", 6);
  EXPECT_EQ(readFile(folder.write("file", bytes), 100), bytes);
}

TEST(ReadFile, AnEmptyFileIsAnEmptyText) {
  const TemporaryFolder folder;
  EXPECT_EQ(readFile(folder.write("file", ""), 0), "");
}

TEST(ReadFile, TheLimitItselfIsAllowedAndOneByteMoreIsNot) {
  const TemporaryFolder folder;
  const std::string path = folder.write("file", std::string(40'000, 'x'));
  EXPECT_EQ(readFile(path, 40'000).value_or("").size(), 40'000U);
  EXPECT_EQ(readFile(path, 39'999), std::nullopt);
  EXPECT_EQ(readFile(path, 0), std::nullopt);
}

TEST(ReadFile, WhatIsMissingOrNoFileIsNone) {
  const TemporaryFolder folder;
  EXPECT_EQ(readFile(folder.path() + "/missing", 100), std::nullopt);
  EXPECT_EQ(readFile(folder.path(), 100), std::nullopt);
  EXPECT_EQ(readFile("", 100), std::nullopt);
  EXPECT_EQ(readFile("/dev/zero", 100), std::nullopt);
}

}  // namespace
}  // namespace halvora
