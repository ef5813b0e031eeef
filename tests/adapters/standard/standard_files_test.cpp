// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/standard_files.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "adapters/linux/linux_files.h"
#include "adapters/standard/file_names.h"
#include "tests/adapters/standard/temporary_folder.h"

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

// Of a regular file that the system opens and will not read: nothing lies at that address.
TEST(ReadFile, WhatCannotBeReadIsNone) {
  ASSERT_TRUE(std::ifstream("/proc/self/mem").is_open());
  EXPECT_EQ(readFile("/proc/self/mem", 100), std::nullopt);
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

using FilesMaker = std::unique_ptr<Files> (*)();

/// The superuser may write anywhere; for as long as one of these lives, it is nobody.
class Nobody {
 public:
  Nobody() {
    constexpr uid_t kNobody = 65534;
    if (geteuid() == 0) isDropped_ = seteuid(kNobody) == 0;
  }
  ~Nobody() {
    if (isDropped_ && seteuid(0) != 0) ADD_FAILURE() << "nobody for good";
  }
  Nobody(const Nobody&) = delete;
  Nobody& operator=(const Nobody&) = delete;

  bool isReal() const { return geteuid() != 0; }

 private:
  bool isDropped_ = false;
};

/// No file of the process grows beyond so many bytes, as on a disk that is full.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) : handler_(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    signal(SIGXFSZ, handler_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  void (*handler_)(int);
  rlimit before_{};
};

/// The machine's files, through the standard library or the system's calls, in a folder of the
/// test's own.
class StandardFilesTest : public testing::TestWithParam<std::pair<const char*, FilesMaker>> {
 protected:
  std::string pathOf(const std::string& name) const { return folder_.path() + "/" + name; }
  Names names(const std::string& folder = "") const {
    return files_.list(folder_.path() + folder).value_or(Names{"(none)"});
  }
  /// No permission for anybody to write into the folder, until the test ends.
  void lock() const { ASSERT_EQ(chmod(folder_.path().c_str(), 0555), 0); }
  ~StandardFilesTest() override { chmod(folder_.path().c_str(), 0755); }

  TemporaryFolder folder_;
  const std::unique_ptr<Files> own_ = GetParam().second();
  Files& files_ = *own_;
};

template <class Kind>
std::unique_ptr<Files> make() {
  return std::make_unique<Kind>();
}

const auto kEitherWay =
    testing::Values(std::pair<const char*, FilesMaker>("Standard", make<StandardFiles>),
                    std::pair<const char*, FilesMaker>("Linux", make<LinuxFiles>));
constexpr auto kNameOf = [](const auto& info) { return std::string(info.param.first); };

using StandardFilesAttributes = StandardFilesTest;
using StandardFilesList = StandardFilesTest;
using StandardFilesReplace = StandardFilesTest;
using StandardFilesFolders = StandardFilesTest;
using StandardFilesThreads = StandardFilesTest;
INSTANTIATE_TEST_SUITE_P(Disk, StandardFilesAttributes, kEitherWay, kNameOf);
INSTANTIATE_TEST_SUITE_P(Disk, StandardFilesList, kEitherWay, kNameOf);
INSTANTIATE_TEST_SUITE_P(Disk, StandardFilesReplace, kEitherWay, kNameOf);
INSTANTIATE_TEST_SUITE_P(Disk, StandardFilesFolders, kEitherWay, kNameOf);
INSTANTIATE_TEST_SUITE_P(Disk, StandardFilesThreads, kEitherWay, kNameOf);

TEST_P(StandardFilesAttributes, OfAFileAreSizeAndTime) {
  const std::string path = folder_.write("file", "12345");
  const timespec times[2] = {{1'000'000'000, 250'000'000}, {1'000'000'000, 750'000'000}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  const auto attributes = files_.attributes(path);
  ASSERT_TRUE(attributes.has_value());
  EXPECT_FALSE(attributes->isFolder);
  EXPECT_EQ(attributes->size, 5U);
  EXPECT_DOUBLE_EQ(attributes->modifiedAt, 1'000'000'000.75);
}

TEST_P(StandardFilesAttributes, OfAFolderSayThatItIsOne) {
  const auto attributes = files_.attributes(folder_.path());
  ASSERT_TRUE(attributes.has_value());
  EXPECT_TRUE(attributes->isFolder);
  EXPECT_EQ(attributes->size, 0U);
}

TEST_P(StandardFilesAttributes, AreNoneWhereThereIsNothing) {
  folder_.write("file", "");
  EXPECT_EQ(files_.attributes(pathOf("missing")), std::nullopt);
  EXPECT_EQ(files_.attributes(pathOf("file/within")), std::nullopt);
  EXPECT_EQ(files_.attributes(""), std::nullopt);
}

TEST_P(StandardFilesAttributes, FollowLinks) {
  folder_.write("folder/file", "12345");
  fs::create_symlink("folder", pathOf("link"));
  fs::create_symlink("missing", pathOf("nowhere"));
  ASSERT_TRUE(files_.attributes(pathOf("link")).has_value());
  EXPECT_TRUE(files_.attributes(pathOf("link"))->isFolder);
  EXPECT_EQ(files_.attributes(pathOf("link/file"))->size, 5U);
  EXPECT_EQ(files_.read(pathOf("link/file"), 5), "12345");
  EXPECT_EQ(files_.attributes(pathOf("nowhere")), std::nullopt);
}

TEST_P(StandardFilesList, NumbersComeByValueThenNames) {
  for (const char* name : {"x", "10", "9", "B/file", "2", ".hidden", "a"}) folder_.write(name, "");
  EXPECT_THAT(names(), ElementsAre("2", "9", "10", ".hidden", "B", "a", "x"));
}

TEST_P(StandardFilesList, IsEmptyForAnEmptyFolderAndNoneForWhatIsNone) {
  EXPECT_THAT(names(), IsEmpty());
  const std::string file = folder_.write("file", "");
  EXPECT_EQ(files_.list(file), std::nullopt);
  EXPECT_EQ(files_.list(pathOf("missing")), std::nullopt);
}

TEST_P(StandardFilesReplace, WritesTheBytesAndNothingElse) {
  const std::string bytes("a\r\n\0\xFFz", 6);
  EXPECT_TRUE(files_.replace(pathOf("file"), bytes));
  EXPECT_EQ(files_.read(pathOf("file"), 6), bytes);
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_P(StandardFilesReplace, TakesThePlaceOfAnOlderFile) {
  folder_.write("file", "a longer text");
  EXPECT_TRUE(files_.replace(pathOf("file"), "short"));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "short");
  EXPECT_TRUE(files_.replace(pathOf("file"), ""));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_P(StandardFilesReplace, WhoeverReadsTheOldFileKeepsIt) {
  const std::string path = folder_.write("file", "old");
  std::ifstream reader(path);
  EXPECT_TRUE(files_.replace(path, "new"));
  std::string text;
  reader >> text;
  EXPECT_EQ(text, "old");
}

TEST_P(StandardFilesReplace, LeavesNothingWhereTheFolderIsMissing) {
  EXPECT_FALSE(files_.replace(pathOf("missing/file"), "bytes"));
  folder_.write("file", "old");
  EXPECT_FALSE(files_.replace(pathOf("file/within"), "bytes"));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "old");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_P(StandardFilesReplace, LeavesNothingWhereAFolderHasTheName) {
  folder_.write("taken/file", "old");
  EXPECT_FALSE(files_.replace(pathOf("taken"), "bytes"));
  EXPECT_THAT(names(), ElementsAre("taken"));
  EXPECT_THAT(names("/taken"), ElementsAre("file"));
}

TEST_P(StandardFilesReplace, LeavesTheOldFileWhereNobodyMayWrite) {
  folder_.write("file", "old");
  lock();
  const Nobody nobody;
  if (!nobody.isReal()) GTEST_SKIP() << "there is nobody here but the superuser";
  EXPECT_FALSE(files_.replace(pathOf("file"), "new"));
  EXPECT_FALSE(files_.replace(pathOf("other"), "new"));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "old");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_P(StandardFilesReplace, LeavesTheOldFileWhereTheDiskIsFull) {
  const std::string path = folder_.write("file", "old");
  for (const std::size_t room : {0U, 1U, 4096U, 99'999U}) {
    bool isReplaced = true;
    {
      const FullDisk disk(room);
      isReplaced = files_.replace(path, std::string(100'000, 'x'));
    }
    EXPECT_FALSE(isReplaced) << room;
    EXPECT_EQ(files_.read(path, 100), "old") << room;
    EXPECT_THAT(names(), ElementsAre("file")) << room;
  }
}

TEST_P(StandardFilesReplace, GivesAFileThePermissionsThatNewFilesHave) {
  const mode_t before = umask(027);
  EXPECT_TRUE(files_.replace(pathOf("file"), "bytes"));
  umask(before);
  struct stat status {};
  ASSERT_EQ(stat(pathOf("file").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_P(StandardFilesAttributes, AreNoneOfWhatIsNeitherFileNorFolder) {
  ASSERT_EQ(mkfifo(pathOf("pipe").c_str(), 0600), 0);
  EXPECT_EQ(files_.attributes(pathOf("pipe")), std::nullopt);
  EXPECT_EQ(files_.attributes("/dev/null"), std::nullopt);
}

TEST_P(StandardFilesFolders, AreMadeWithThoseAbove) {
  EXPECT_TRUE(files_.makeFolder(pathOf("a/b/c")));
  EXPECT_TRUE(files_.attributes(pathOf("a/b/c"))->isFolder);
  EXPECT_TRUE(files_.makeFolder(pathOf("a/b"))) << "it is there";
}

TEST_P(StandardFilesFolders, AreNotMadeInThePlaceOfAFile) {
  folder_.write("file", "old");
  EXPECT_FALSE(files_.makeFolder(pathOf("file")));
  EXPECT_FALSE(files_.makeFolder(pathOf("file/within")));
  EXPECT_EQ(files_.read(pathOf("file"), 100), "old");
}

TEST_P(StandardFilesReplace, AMoveTakesAFileToAnothersPlace) {
  const std::string from = folder_.write("from", "new");
  const std::string to = folder_.write("to", "old");
  EXPECT_TRUE(files_.move(from, to));
  EXPECT_EQ(files_.read(to, 10), "new");
  EXPECT_THAT(names(), ElementsAre("to"));
  EXPECT_FALSE(files_.move(from, to)) << "there is none any more";
  EXPECT_EQ(files_.read(to, 10), "new");
}

TEST_P(StandardFilesFolders, AreNotMadeWhereNobodyMayWrite) {
  lock();
  const Nobody nobody;
  if (!nobody.isReal()) GTEST_SKIP() << "there is nobody here but the superuser";
  EXPECT_FALSE(files_.makeFolder(pathOf("a/b")));
  EXPECT_TRUE(files_.makeFolder(folder_.path()));
}

TEST_P(StandardFilesFolders, AreRemovedWithEverythingInThem) {
  folder_.write("a/file", "");
  folder_.write("a/b/file", "");
  folder_.write("ab/file", "");
  files_.removeFolder(pathOf("a"));
  files_.removeFolder(pathOf("missing"));
  EXPECT_THAT(names(), ElementsAre("ab"));
}

TEST_P(StandardFilesFolders, AreRemovedWithoutWhatTheirLinksLeadTo) {
  folder_.write("outside/file", "kept");
  ASSERT_TRUE(files_.makeFolder(pathOf("a")));
  fs::create_directory_symlink(pathOf("outside"), pathOf("a/link"));
  files_.removeFolder(pathOf("a"));
  EXPECT_EQ(files_.read(pathOf("outside/file"), 100), "kept");
  EXPECT_THAT(names(), ElementsAre("outside"));
}

TEST_P(StandardFilesThreads, ReadersSeeTheOldFileOrTheNewOneWhole) {
  const std::string path = pathOf("file");
  const std::string first(100'000, 'a');
  const std::string second(50'000, 'b');
  ASSERT_TRUE(files_.replace(path, first));
  std::thread writer([&] {
    for (int turn = 0; turn < 100; ++turn) {
      EXPECT_TRUE(files_.replace(path, turn % 2 == 0 ? second : first));
    }
  });
  for (int turn = 0; turn < 200; ++turn) {
    const auto bytes = files_.read(path, 200'000);
    EXPECT_TRUE(bytes == first || bytes == second) << bytes.value_or("(none)").size();
  }
  writer.join();
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_P(StandardFilesThreads, WritersOfOneFileDoNotMixTheirBytes) {
  const std::string path = pathOf("file");
  std::vector<std::thread> writers;
  for (const char letter : {'a', 'b', 'c'}) {
    writers.emplace_back([this, &path, letter] {
      for (int turn = 0; turn < 50; ++turn) {
        EXPECT_TRUE(files_.replace(path, std::string(20'000, letter)));
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  const std::string bytes = files_.read(path, 20'000).value_or("");
  EXPECT_EQ(bytes.size(), 20'000U);
  EXPECT_EQ(bytes.find_first_not_of(bytes[0]), std::string::npos);
  EXPECT_THAT(names(), ElementsAre("file"));
}

}  // namespace
}  // namespace halvora
