// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/mapped_file.h"

#include <algorithm>
#include <filesystem>
#include <utility>

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
