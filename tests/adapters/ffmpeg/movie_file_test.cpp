// SPDX-License-Identifier: Apache-2.0
// What the decoder's library is given of a file: boxes that it must not look into have no name.
#include "adapters/ffmpeg/movie_file.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace halvora {
namespace {

struct Text final : ByteSource {
  explicit Text(std::string its) : text(std::move(its)) {}
  std::uint64_t size() const override { return text.size(); }
  std::size_t read(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    if (offset >= text.size()) return 0;
    const std::string part = text.substr(offset, bytes.size());
    std::ranges::copy(part, bytes.begin());
    return part.size();
  }
  std::string text;
};

TEST(MovieFileTest, HiddenBoxesAreSkippedFromWhereverItIsRead) {
  MovieFile file{std::make_unique<Text>("0123udta89abcdefmeta4567"), {}};
  file.outline.hiddenTypes = {4, 16};
  const std::string whole = "0123skip89abcdefskip4567";
  for (std::size_t offset = 0; offset < whole.size(); ++offset) {
    for (std::size_t size = 1; size <= whole.size() - offset; ++size) {
      std::vector<std::uint8_t> bytes(size);
      ASSERT_EQ(file.read(offset, bytes), size);
      EXPECT_EQ(std::string(bytes.begin(), bytes.end()), whole.substr(offset, size)) << offset;
    }
  }
}

}  // namespace
}  // namespace halvora
