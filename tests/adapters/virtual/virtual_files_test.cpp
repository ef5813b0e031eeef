// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_files.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/standard/file_names.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(VirtualFiles, HaveNothingAtFirst) {
  VirtualFiles files;
  EXPECT_EQ(files.attributes("/a"), std::nullopt);
  EXPECT_EQ(files.list("/a"), std::nullopt);
  EXPECT_EQ(files.read("/a", 100), std::nullopt);
}

TEST(VirtualFiles, KnowSizeAndTimeOfAFileAndWhatIsAFolder) {
  VirtualFiles files;
  files.put("/a/b/file", "12345", 7.25);
  const auto file = files.attributes("/a/b/file");
  ASSERT_TRUE(file.has_value());
  EXPECT_FALSE(file->isFolder);
  EXPECT_EQ(file->size, 5U);
  EXPECT_EQ(file->modifiedAt, 7.25);
  ASSERT_TRUE(files.attributes("/a/b").has_value());
  EXPECT_TRUE(files.attributes("/a/b")->isFolder);
  EXPECT_TRUE(files.attributes("/a")->isFolder);
  EXPECT_EQ(files.attributes("/a/b/fil"), std::nullopt);
  files.touch("/a/b/file", 8);
  EXPECT_EQ(files.attributes("/a/b/file")->modifiedAt, 8);
  files.touch("/a/other", 8);
  EXPECT_EQ(files.attributes("/a/other"), std::nullopt);
}

TEST(VirtualFiles, ListAFoldersOwnNamesInOrder) {
  VirtualFiles files;
  for (const char* path : {"/a/x", "/a/10/deep/file", "/a/10/file", "/a/9", "/ab/other"}) {
    files.put(path, "");
  }
  EXPECT_THAT(files.list("/a").value(), ElementsAre("9", "10", "x"));
  EXPECT_THAT(files.list("/a/10").value(), ElementsAre("deep", "file"));
  EXPECT_EQ(files.list("/a/9"), std::nullopt) << "a file";
  EXPECT_TRUE(files.makeFolder("/empty"));
  EXPECT_THAT(files.list("/empty").value(), IsEmpty());
}

TEST(VirtualFiles, ReadUpToTheLimitAndWriteDownWhatWasAskedFor) {
  VirtualFiles files;
  files.put("/a", "12345");
  EXPECT_EQ(files.read("/a", 5), "12345");
  EXPECT_EQ(files.read("/a", 4), std::nullopt);
  EXPECT_EQ(files.read("/b", 4), std::nullopt);
  EXPECT_THAT(files.reads.entries, ElementsAre("/a", "/a", "/b"));
}

TEST(VirtualFiles, ReplaceNeedsTheFolderAndSetsTheTime) {
  VirtualFiles files;
  files.now = 3;
  EXPECT_FALSE(files.replace("/a/file", "1"));
  EXPECT_TRUE(files.makeFolder("/a"));
  EXPECT_TRUE(files.replace("/a/file", "1"));
  files.now = 4;
  EXPECT_TRUE(files.replace("/a/file", "22"));
  EXPECT_EQ(files.read("/a/file", 10), "22");
  EXPECT_EQ(files.attributes("/a/file")->modifiedAt, 4);
  EXPECT_THAT(files.writes.entries, ElementsAre("/a/file", "/a/file"));
}

TEST(VirtualFiles, FullDiskTakesFoldersButNoFiles) {
  VirtualFiles files;
  files.put("/a/file", "old");
  files.isFull = true;
  EXPECT_FALSE(files.replace("/a/file", "new"));
  EXPECT_EQ(files.read("/a/file", 10), "old");
  EXPECT_TRUE(files.makeFolder("/a/b"));
  EXPECT_THAT(files.writes.entries, IsEmpty());
}

TEST(VirtualFiles, ReadOnlyDiskTakesAndGivesNothing) {
  VirtualFiles files;
  files.put("/a/file", "old");
  files.isReadOnly = true;
  EXPECT_FALSE(files.replace("/a/file", "new"));
  EXPECT_FALSE(files.move("/a/file", "/a/other"));
  EXPECT_FALSE(files.makeFolder("/a/b"));
  EXPECT_TRUE(files.makeFolder("/a")) << "it is there";
  files.removeFolder("/a");
  EXPECT_EQ(files.read("/a/file", 10), "old");
}

TEST(VirtualFiles, AMoveLeavesNothingBehind) {
  VirtualFiles files;
  files.put("/a/from", "new");
  files.put("/a/to", "old");
  EXPECT_TRUE(files.move("/a/from", "/a/to"));
  EXPECT_EQ(files.read("/a/to", 10), "new");
  EXPECT_FALSE(files.attributes("/a/from"));
  EXPECT_FALSE(files.move("/a/from", "/a/to"));
  EXPECT_FALSE(files.move("/a/to", "/nowhere/to"));
}

TEST(VirtualFiles, LeftoversOfAPathGoAndNothingElseDoes) {
  VirtualFiles files;
  const std::string left = std::string(kLeftoverMark) + std::string(kLeftoverDigits, 'a');
  for (const char* file : {"/a/f", "/a/f2", "/a/g"}) files.put(file + left, "half");
  files.put("/a/f/in" + left, "half");
  files.put("/a/f2", "whole");
  files.isReadOnly = true;
  files.removeLeftovers("/a/f");
  EXPECT_TRUE(files.attributes("/a/f" + left)) << "a disk that takes nothing";
  files.isReadOnly = false;
  files.removeLeftovers("/a/f");
  EXPECT_FALSE(files.attributes("/a/f" + left));
  EXPECT_FALSE(files.attributes("/a/f2" + left)) << "its name begins alike";
  EXPECT_TRUE(files.attributes("/a/g" + left));
  EXPECT_TRUE(files.attributes("/a/f/in" + left)) << "in a folder of its own";
  EXPECT_TRUE(files.attributes("/a/f2"));
}

TEST(VirtualFiles, MakeFolderMakesThoseAbove) {
  VirtualFiles files;
  EXPECT_TRUE(files.makeFolder("/a/b/c"));
  EXPECT_TRUE(files.attributes("/a")->isFolder);
  EXPECT_TRUE(files.attributes("/a/b/c")->isFolder);
  EXPECT_THAT(files.list("/a").value(), ElementsAre("b"));
}

TEST(VirtualFiles, RemoveTakesWhatIsInTheFolderAndNothingBeside) {
  VirtualFiles files;
  for (const char* path : {"/a/file", "/a/b/file", "/ab/file", "/c"}) files.put(path, "");
  files.removeFolder("/a");
  EXPECT_EQ(files.attributes("/a"), std::nullopt);
  EXPECT_EQ(files.attributes("/a/b/file"), std::nullopt);
  EXPECT_TRUE(files.attributes("/ab/file").has_value());
  files.remove("/c");
  EXPECT_EQ(files.attributes("/c"), std::nullopt);
}

}  // namespace
}  // namespace halvora
