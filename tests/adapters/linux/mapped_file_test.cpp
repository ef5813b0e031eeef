// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/mapped_file.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

using testing::Each;
using testing::SizeIs;

struct MappedFileTest : testing::Test {
  TestFolder folder;

  bool isFolderEmpty() const { return std::filesystem::is_empty(folder.path()); }
};

TEST_F(MappedFileTest, IsAllZeroAndTakesWhatIsWritten) {
  const auto file = MappedFile::make(folder.path().string(), 100'001);
  ASSERT_TRUE(file);
  const auto bytes = file->bytes();
  ASSERT_THAT(bytes, SizeIs(100'001));
  EXPECT_THAT(bytes, Each(std::byte{0}));
  std::fill(bytes.begin(), bytes.end(), std::byte{7});
  EXPECT_THAT(file->bytes(), Each(std::byte{7}));
}

TEST_F(MappedFileTest, HasNoName) {
  const auto file = MappedFile::make(folder.path().string(), 5000);
  ASSERT_TRUE(file);
  EXPECT_TRUE(isFolderEmpty());
}

TEST_F(MappedFileTest, BeginsWhereAnyTypeMayBegin) {
  const auto file = MappedFile::make(folder.path().string(), 1);
  ASSERT_TRUE(file);
  void* begin = file->bytes().data();
  std::size_t space = 64;
  EXPECT_EQ(std::align(64, 1, begin, space), file->bytes().data());
}

TEST_F(MappedFileTest, ThatDoesNotFitOnTheDiskIsNone) {
  EXPECT_FALSE(MappedFile::make(folder.path().string(), std::size_t{1} << 62));
  EXPECT_FALSE(MappedFile::make(folder.path().string(), SIZE_MAX));
  EXPECT_TRUE(isFolderEmpty());
}

TEST_F(MappedFileTest, InAFolderThatIsNotThereIsNone) {
  EXPECT_FALSE(MappedFile::make((folder.path() / "missing").string(), 5000));
}

TEST_F(MappedFileTest, OfNoBytesIsEmpty) {
  const auto file = MappedFile::make(folder.path().string(), 0);
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->bytes().empty());
}

/// How many descriptors and mappings this process has.
std::pair<std::ptrdiff_t, std::ptrdiff_t> held() {
  using Entries = std::filesystem::directory_iterator;
  std::ifstream maps("/proc/self/maps");
  return {std::distance(Entries("/proc/self/fd"), Entries()),
          std::count(std::istreambuf_iterator<char>(maps), {}, '\n')};
}

TEST_F(MappedFileTest, GivesBackWhatItTook) {
  // Of odd sizes, so that neighbours do not count as one.
  const auto make = [this](std::size_t size) {
    return MappedFile::make(folder.path().string(), size);
  };
  make(5000);
  const auto before = held();
  {
    std::vector<std::optional<MappedFile>> files;
    for (int count = 0; count < 20; ++count) files.push_back(make(5000));
    const auto during = held();
    EXPECT_EQ(during.first, before.first) << "the mapping is enough";
    EXPECT_GT(during.second, before.second);
  }
  EXPECT_FALSE(make(std::size_t{1} << 62));
  const auto after = held();
  EXPECT_EQ(after.first, before.first);
  // The heap may have grown by a mapping of its own.
  EXPECT_LE(after.second, before.second + 2);
}

TEST_F(MappedFileTest, MovesWithItsBytes) {
  auto file = MappedFile::make(folder.path().string(), 5000);
  ASSERT_TRUE(file);
  file->bytes()[4999] = std::byte{9};
  const MappedFile moved = std::move(*file);
  EXPECT_TRUE(file->bytes().empty());
  EXPECT_EQ(moved.bytes()[4999], std::byte{9});
}

}  // namespace
}  // namespace halvora
