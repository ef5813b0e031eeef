// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/local_file.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

TEST(FfmpegLocalFile, ReadsAsFarAsThereIsSomething) {
  const TemporaryFolder folder;
  const auto file = LocalFile::open(folder.write("file", "abcdefgh"));
  ASSERT_TRUE(file);
  EXPECT_EQ(file->size(), 8U);
  const auto read = [&](std::uint64_t offset, std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    const std::size_t got = file->read(offset, bytes);
    return std::string(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(got));
  };
  EXPECT_EQ(read(0, 8), "abcdefgh");
  EXPECT_EQ(read(2, 3), "cde");
  EXPECT_EQ(read(5, 100), "fgh");
  EXPECT_EQ(read(8, 1), "");
  EXPECT_EQ(read(0, 0), "");
  EXPECT_EQ(read(INT64_MAX, 1), "");
  EXPECT_EQ(read(std::uint64_t{INT64_MAX} + 1, 1), "");
  EXPECT_EQ(read(UINT64_MAX, 8), "") << "nor does it begin anew";
}

}  // namespace
}  // namespace halvora
