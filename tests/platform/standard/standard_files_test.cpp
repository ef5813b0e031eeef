// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/standard_files.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/platform/standard/temporary_folder.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

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

TEST(ListingOrder, NumbersByValueComeBeforeNamesByCodePoint) {
  const Names inOrder{"0",
                      "07",
                      "7",
                      "9",
                      "10",
                      "123456789012345678",
                      "",
                      "+1",
                      "-1",
                      "1.",
                      "1000000000000000000",
                      "1a",
                      "A",
                      "a",
                      "\u00E9"};
  for (std::size_t left = 0; left < inOrder.size(); ++left) {
    for (std::size_t right = 0; right < inOrder.size(); ++right) {
      EXPECT_EQ(isListedBefore(inOrder[left], inOrder[right]), left < right)
          << inOrder[left] << " and " << inOrder[right];
    }
  }
}

/// The machine's files in a folder of the test's own.
class StandardFilesTest : public testing::Test {
 protected:
  std::string pathOf(const std::string& name) const { return folder_.path() + "/" + name; }
  Names names(const std::string& folder = "") const {
    return files_.list(folder_.path() + folder).value_or(Names{"(none)"});
  }
  /// No permission for anybody to write into the folder, until the test ends.
  void lock() const { ASSERT_EQ(chmod(folder_.path().c_str(), 0555), 0); }
  ~StandardFilesTest() override { chmod(folder_.path().c_str(), 0755); }

  TemporaryFolder folder_;
  StandardFiles files_;
};

using StandardFilesAttributes = StandardFilesTest;
using StandardFilesList = StandardFilesTest;
using StandardFilesReplace = StandardFilesTest;
using StandardFilesFolders = StandardFilesTest;

TEST_F(StandardFilesAttributes, OfAFileAreSizeAndTime) {
  const std::string path = folder_.write("file", "12345");
  const timespec times[2] = {{1'000'000'000, 250'000'000}, {1'000'000'000, 750'000'000}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  const auto attributes = files_.attributes(path);
  ASSERT_TRUE(attributes.has_value());
  EXPECT_FALSE(attributes->isFolder);
  EXPECT_EQ(attributes->size, 5U);
  EXPECT_DOUBLE_EQ(attributes->modifiedAt, 1'000'000'000.75);
}

TEST_F(StandardFilesAttributes, OfAFolderSayThatItIsOne) {
  const auto attributes = files_.attributes(folder_.path());
  ASSERT_TRUE(attributes.has_value());
  EXPECT_TRUE(attributes->isFolder);
  EXPECT_EQ(attributes->size, 0U);
}

TEST_F(StandardFilesAttributes, AreNoneWhereThereIsNothing) {
  folder_.write("file", "");
  EXPECT_EQ(files_.attributes(pathOf("missing")), std::nullopt);
  EXPECT_EQ(files_.attributes(pathOf("file/within")), std::nullopt);
  EXPECT_EQ(files_.attributes(""), std::nullopt);
}

TEST_F(StandardFilesAttributes, FollowLinks) {
  folder_.write("folder/file", "12345");
  fs::create_symlink("folder", pathOf("link"));
  fs::create_symlink("missing", pathOf("nowhere"));
  ASSERT_TRUE(files_.attributes(pathOf("link")).has_value());
  EXPECT_TRUE(files_.attributes(pathOf("link"))->isFolder);
  EXPECT_EQ(files_.attributes(pathOf("link/file"))->size, 5U);
  EXPECT_EQ(files_.read(pathOf("link/file"), 5), "12345");
  EXPECT_EQ(files_.attributes(pathOf("nowhere")), std::nullopt);
}

TEST_F(StandardFilesList, NumbersComeByValueThenNames) {
  for (const char* name : {"x", "10", "9", "B/file", "2", ".hidden", "a"}) folder_.write(name, "");
  EXPECT_THAT(names(), ElementsAre("2", "9", "10", ".hidden", "B", "a", "x"));
}

TEST_F(StandardFilesList, IsEmptyForAnEmptyFolderAndNoneForWhatIsNone) {
  EXPECT_THAT(names(), IsEmpty());
  const std::string file = folder_.write("file", "");
  EXPECT_EQ(files_.list(file), std::nullopt);
  EXPECT_EQ(files_.list(pathOf("missing")), std::nullopt);
}

TEST_F(StandardFilesReplace, WritesTheBytesAndNothingElse) {
  const std::string bytes("a\r\n\0\xFFz", 6);
  EXPECT_TRUE(files_.replace(pathOf("file"), bytes));
  EXPECT_EQ(files_.read(pathOf("file"), 6), bytes);
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(StandardFilesReplace, TakesThePlaceOfAnOlderFile) {
  folder_.write("file", "a longer text");
  EXPECT_TRUE(files_.replace(pathOf("file"), "short"));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "short");
  EXPECT_TRUE(files_.replace(pathOf("file"), ""));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(StandardFilesReplace, WhoeverReadsTheOldFileKeepsIt) {
  const std::string path = folder_.write("file", "old");
  std::ifstream reader(path);
  EXPECT_TRUE(files_.replace(path, "new"));
  std::string text;
  reader >> text;
  EXPECT_EQ(text, "old");
}

TEST_F(StandardFilesReplace, LeavesNothingWhereTheFolderIsMissing) {
  EXPECT_FALSE(files_.replace(pathOf("missing/file"), "bytes"));
  folder_.write("file", "old");
  EXPECT_FALSE(files_.replace(pathOf("file/within"), "bytes"));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "old");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(StandardFilesReplace, LeavesNothingWhereAFolderHasTheName) {
  folder_.write("taken/file", "old");
  EXPECT_FALSE(files_.replace(pathOf("taken"), "bytes"));
  EXPECT_THAT(names(), ElementsAre("taken"));
  EXPECT_THAT(names("/taken"), ElementsAre("file"));
}

TEST_F(StandardFilesReplace, LeavesTheOldFileWhereNobodyMayWrite) {
  if (geteuid() == 0) GTEST_SKIP() << "the superuser may write anywhere";
  folder_.write("file", "old");
  lock();
  EXPECT_FALSE(files_.replace(pathOf("file"), "new"));
  EXPECT_FALSE(files_.replace(pathOf("other"), "new"));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "old");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(StandardFilesFolders, AreMadeWithThoseAbove) {
  EXPECT_TRUE(files_.makeFolder(pathOf("a/b/c")));
  EXPECT_TRUE(files_.attributes(pathOf("a/b/c"))->isFolder);
  EXPECT_TRUE(files_.makeFolder(pathOf("a/b"))) << "it is there";
}

TEST_F(StandardFilesFolders, AreNotMadeInThePlaceOfAFile) {
  folder_.write("file", "old");
  EXPECT_FALSE(files_.makeFolder(pathOf("file")));
  EXPECT_FALSE(files_.makeFolder(pathOf("file/within")));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "old");
}

TEST_F(StandardFilesFolders, AreNotMadeWhereNobodyMayWrite) {
  if (geteuid() == 0) GTEST_SKIP() << "the superuser may write anywhere";
  lock();
  EXPECT_FALSE(files_.makeFolder(pathOf("a/b")));
  EXPECT_TRUE(files_.makeFolder(folder_.path()));
}

TEST_F(StandardFilesFolders, AreRemovedWithEverythingInThem) {
  folder_.write("a/file", "");
  folder_.write("a/b/file", "");
  folder_.write("ab/file", "");
  files_.removeFolder(pathOf("a"));
  files_.removeFolder(pathOf("missing"));
  EXPECT_THAT(names(), ElementsAre("ab"));
}

TEST_F(StandardFilesFolders, AreRemovedWithoutWhatTheirLinksLeadTo) {
  folder_.write("outside/file", "kept");
  ASSERT_TRUE(files_.makeFolder(pathOf("a")));
  fs::create_directory_symlink(pathOf("outside"), pathOf("a/link"));
  files_.removeFolder(pathOf("a"));
  EXPECT_EQ(files_.read(pathOf("outside/file"), 100), "kept");
  EXPECT_THAT(names(), ElementsAre("outside"));
}

TEST(StandardFilesThreads, ReadersSeeTheOldFileOrTheNewOneWhole) {
  const TemporaryFolder folder;
  StandardFiles files;
  const std::string path = folder.path() + "/file";
  const std::string first(100'000, 'a');
  const std::string second(50'000, 'b');
  ASSERT_TRUE(files.replace(path, first));
  std::thread writer([&] {
    for (int turn = 0; turn < 100; ++turn) {
      EXPECT_TRUE(files.replace(path, turn % 2 == 0 ? second : first));
    }
  });
  for (int turn = 0; turn < 200; ++turn) {
    const auto bytes = files.read(path, 200'000);
    EXPECT_TRUE(bytes == first || bytes == second) << bytes.value_or("(none)").size();
  }
  writer.join();
  EXPECT_THAT(files.list(folder.path()).value(), ElementsAre("file"));
}

TEST(StandardFilesThreads, WritersOfOneFileDoNotMixTheirBytes) {
  const TemporaryFolder folder;
  StandardFiles files;
  const std::string path = folder.path() + "/file";
  std::vector<std::thread> writers;
  for (const char letter : {'a', 'b', 'c'}) {
    writers.emplace_back([&files, &path, letter] {
      for (int turn = 0; turn < 50; ++turn) {
        EXPECT_TRUE(files.replace(path, std::string(20'000, letter)));
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  const std::string bytes = files.read(path, 20'000).value_or("");
  EXPECT_EQ(bytes.size(), 20'000U);
  EXPECT_EQ(bytes.find_first_not_of(bytes[0]), std::string::npos);
  EXPECT_THAT(files.list(folder.path()).value(), ElementsAre("file"));
}

}  // namespace
}  // namespace halvora
