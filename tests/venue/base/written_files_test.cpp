// SPDX-License-Identifier: Apache-2.0
// What a command writes over: never anything but files.
#include "venue/base/written_files.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

std::string textOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class WrittenFilesTest : public testing::Test {
 protected:
  std::string at(const char* name) const { return folder_.path() + "/" + name; }

  TemporaryFolder folder_;
  std::atomic<bool> isInterrupted_ = false;
  WrittenFiles files_{isInterrupted_};
};

// As many as the kernel follows.
TEST_F(WrittenFilesTest, FollowFortyLinksAndNoMore) {
  std::ofstream(at("0")) << "old";
  for (int link = 1; link <= 41; ++link) {
    fs::create_symlink(std::to_string(link - 1), at(std::to_string(link).c_str()));
  }
  EXPECT_TRUE(files_.replace(at("40"), "new"));
  EXPECT_EQ(textOf(at("0")), "new");
  EXPECT_FALSE(files_.replace(at("41"), "newer"));
  EXPECT_EQ(textOf(at("0")), "new");
}

TEST_F(WrittenFilesTest, ALinkGoesOnPointingToItsFile) {
  std::ofstream(at("file")) << "old";
  fs::create_symlink("file", at("link"));
  fs::create_symlink("link", at("further"));
  EXPECT_TRUE(files_.replace(at("further"), "new"));
  EXPECT_TRUE(fs::is_symlink(at("link")));
  EXPECT_TRUE(fs::is_symlink(at("further")));
  EXPECT_EQ(textOf(at("file")), "new");
}

TEST_F(WrittenFilesTest, ALinkToNothingMakesItsFile) {
  fs::create_symlink("file", at("link"));
  EXPECT_TRUE(files_.replace(at("link"), "new"));
  EXPECT_TRUE(fs::is_symlink(at("link")));
  EXPECT_EQ(textOf(at("file")), "new");
}

TEST_F(WrittenFilesTest, APipeStaysOneAndIsNamed) {
  ASSERT_EQ(mkfifo(at("pipe").c_str(), 0600), 0);
  fs::create_symlink("pipe", at("link"));
  for (const std::string& path : {at("pipe"), at("link")}) {
    EXPECT_FALSE(files_.replace(path, "new"));
  }
  EXPECT_TRUE(fs::is_fifo(at("pipe")));
  EXPECT_TRUE(fs::is_symlink(at("link")));
  EXPECT_EQ(files_.firstFailure(), at("pipe"));
}

TEST_F(WrittenFilesTest, ALinkThatGoesInACircleIsNoFile) {
  fs::create_symlink("b", at("a"));
  fs::create_symlink("a", at("b"));
  EXPECT_FALSE(files_.replace(at("a"), "new"));
}

}  // namespace
}  // namespace halvora
