// SPDX-License-Identifier: Apache-2.0
// What the commands of the tool have in common.
#include "venue/base/input_text.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

TEST(AbsolutePath, OfAnAbsolutePathIsThatPath) {
  EXPECT_EQ(absolutePath("/a/b.mp4"), "/a/b.mp4");
  EXPECT_EQ(absolutePath("/"), "/");
}

TEST(AbsolutePath, OfARelativeOneBeginsHere) {
  const std::string here = fs::current_path().string();
  EXPECT_EQ(absolutePath("b.mp4"), here + "/b.mp4");
  EXPECT_EQ(absolutePath("."), here);
}

TEST(AbsolutePath, OfNothingIsNothing) { EXPECT_EQ(absolutePath(""), ""); }

TEST(AbsolutePath, LeavesOutWhatLeadsNowhere) {
  EXPECT_EQ(absolutePath("//a///b/"), "/a/b");
  EXPECT_EQ(absolutePath("/a/./b/."), "/a/b");
  EXPECT_EQ(absolutePath("/a/b/../c"), "/a/c");
  EXPECT_EQ(absolutePath("/a/b/../../c"), "/c");
  EXPECT_EQ(absolutePath("/../../c"), "/c");
  EXPECT_EQ(absolutePath("/.."), "/");
  EXPECT_EQ(absolutePath("/a/..."), "/a/...");
}

TEST(AbsolutePath, GoesUpFromWhereALinkLeads) {
  const TestFolder folder;
  const std::string root = folder.path().string();
  fs::create_directories(folder.path() / "hall/maps");
  fs::create_directory_symlink("hall/maps", folder.path() / "link");
  EXPECT_EQ(absolutePath(root + "/link/a"), root + "/link/a");
  EXPECT_EQ(absolutePath(root + "/link/../a"), root + "/link/../a");
  EXPECT_EQ(absolutePath(root + "/link/../../a"), root + "/link/../../a");
  EXPECT_EQ(absolutePath(root + "/link/b/../a"), root + "/link/a");
  EXPECT_EQ(absolutePath(root + "/hall/../link"), root + "/link");
}

TEST(WholeNumber, IsDigitsWithASignPerhaps) {
  EXPECT_EQ(wholeNumber("0"), 0);
  EXPECT_EQ(wholeNumber("-12"), -12);
  EXPECT_EQ(wholeNumber("9223372036854775807"), INT64_MAX);
  for (const char* text : {"", "-", "+1", "1.0", " 1", "1 ", "--1", "9223372036854775808"}) {
    EXPECT_EQ(wholeNumber(text), std::nullopt) << text;
  }
}

TEST(Version, IsOneLineWithTheLibrariesOfTheBuild) {
  const ToolRun run = runTool({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.error, "");
  ASSERT_EQ(linesOf(run.output).size(), 1U);
  EXPECT_THAT(run.output,
              testing::MatchesRegex("halvora [0-9]+\\.[0-9]+\\.[0-9]+ "
                                    "\\(CLI11 [0-9.]+, RapidJSON [0-9.]+(, [a-z]+ [0-9.]+)*\\)\n"));
}

TEST(FolderCheck, LetsFilesBeNoFolders) {
  const TestFolder folder;
  EXPECT_TRUE(mayBeFolder(folder.path().string()));
  EXPECT_TRUE(mayBeFolder((folder.path() / "new/one").string()));
  EXPECT_FALSE(mayBeFolder(folder.write("file", "")));
  EXPECT_FALSE(mayBeFolder(""));
}

}  // namespace
}  // namespace halvora
