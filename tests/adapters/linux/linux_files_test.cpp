// SPDX-License-Identifier: Apache-2.0
// What LinuxFiles adds to the files of the standard library: files that last, and leftovers.
#include "adapters/linux/linux_files.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "adapters/standard/file_names.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/support/storage_calls.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Names = std::vector<std::string>;

const std::string kLeft = ".new-0123456789abcdef";

class LinuxFilesTest : public testing::Test {
 protected:
  std::string pathOf(const std::string& name) const { return folder_.path() + "/" + name; }
  std::string folderName() const { return folder_.path().substr(folder_.path().rfind('/') + 1); }
  Names names() const { return files_.list(folder_.path()).value_or(Names{"(none)"}); }

  TemporaryFolder folder_;
  LinuxFiles files_;
};

TEST_F(LinuxFilesTest, TellsATimeToTheBitAsTheStandardLibraryDoes) {
  const std::string path = folder_.write("file", "");
  const StandardFiles standard;
  std::mt19937_64 random(20261122);
  for (int count = 0; count < 2000; ++count) {
    const timespec time{static_cast<time_t>(random() % 4'000'000'000),
                        static_cast<long>(random() % 1'000'000'000)};
    const timespec times[2] = {time, time};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    ASSERT_EQ(files_.attributes(path)->modifiedAt, standard.attributes(path)->modifiedAt)
        << time.tv_sec << "." << time.tv_nsec;
  }
}

using LastingFile = LinuxFilesTest;
using Leftovers = LinuxFilesTest;

TEST_F(LastingFile, ItsBytesAreOnTheMediumBeforeItsNameAndTheNameBeforeTheAnswer) {
  folder_.write("file", "old");
  StorageCalls calls;
  EXPECT_TRUE(files_.replaceLastingly(pathOf("file"), "new"));
  EXPECT_THAT(calls.all, ElementsAre(StartsWith("sync file.new-"), StartsWith("rename file.new-"),
                                     "sync " + folderName()));
  EXPECT_THAT(calls.all.at(1), testing::EndsWith(" file"));
  EXPECT_EQ(files_.read(pathOf("file"), 10), "new");
}

TEST_F(LastingFile, SoAreTheFoldersThatWereMadeForIt) {
  StorageCalls calls;
  EXPECT_TRUE(files_.makeFolder(pathOf("a/b")));
  EXPECT_THAT(calls.all, ElementsAre("sync " + folderName(), "sync a"));
  calls.all.clear();
  EXPECT_TRUE(files_.makeFolder(pathOf("a/b")));
  EXPECT_THAT(calls.all, IsEmpty());
}

TEST_F(LastingFile, AnOrdinaryOneCostsNoSync) {
  StorageCalls calls;
  EXPECT_TRUE(files_.replace(pathOf("file"), "new"));
  EXPECT_THAT(calls.all, ElementsAre(StartsWith("rename ")));
}

TEST_F(LastingFile, LeavesTheOldOneWhereItsBytesCannotBeSynced) {
  folder_.write("file", "old");
  StorageCalls calls;
  calls.firstFailure = 1;
  for (const int error : {EIO, ENOSPC, EDQUOT, EINVAL}) {
    calls.error = error;
    EXPECT_FALSE(files_.replaceLastingly(pathOf("file"), "new")) << error;
    EXPECT_EQ(files_.read(pathOf("file"), 10), "old");
    EXPECT_THAT(names(), ElementsAre("file"));
  }
}

TEST_F(LastingFile, DoesNotSayThatItLastsWhereItsFolderCannotBeSynced) {
  StorageCalls calls;
  calls.firstFailure = 2;
  calls.error = EIO;
  EXPECT_FALSE(files_.replaceLastingly(pathOf("file"), "new"));
  EXPECT_EQ(files_.read(pathOf("file"), 10), "new");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(LastingFile, AFileSystemThatSyncsNoFoldersDoesWhatItCan) {
  StorageCalls calls;
  calls.firstFailure = 2;
  calls.error = EINVAL;
  EXPECT_TRUE(files_.replaceLastingly(pathOf("file"), "new"));
}

TEST_F(LastingFile, SignalsDoNotKeepItFromTheMedium) {
  StorageCalls calls;
  calls.interruptions = 3;
  EXPECT_TRUE(files_.replaceLastingly(pathOf("file"), "new"));
  EXPECT_EQ(calls.all.size(), 3U);
}

TEST_F(Leftovers, OfTheDeadGoAndNothingElse) {
  const Names others = {"file",
                        "file.new-",
                        "file.new-0123456789abcde",
                        "file.new-0123456789ABCDEF",
                        "file.new-2026",
                        "other" + kLeft,
                        "filed"};
  for (const std::string& name : others) folder_.write(name, "");
  folder_.write("file" + kLeft, "half");
  folder_.write("file.tmp" + kLeft, "half");
  files_.makeFolder(pathOf("file.new-00000000000000ff"));
  files_.removeLeftovers(pathOf("file"));
  EXPECT_THAT(names(), testing::UnorderedElementsAreArray(
                           {"file", "file.new-", "file.new-0123456789abcde",
                            "file.new-0123456789ABCDEF", "file.new-2026", "filed",
                            "file.new-00000000000000ff", ("other" + kLeft).c_str()}));
  files_.removeLeftovers(pathOf(""));
  EXPECT_THAT(names(), testing::Not(testing::Contains("other" + kLeft)));
  EXPECT_EQ(names().size(), 7U);
}

TEST_F(Leftovers, OfAFolderThatIsNotThereAreNone) {
  files_.removeLeftovers(pathOf("missing/file"));
  files_.removeLeftovers("");
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Leftovers, LinksAndPipesAreNone) {
  const std::string kept = folder_.write("kept", "kept");
  ASSERT_EQ(symlink(kept.c_str(), pathOf("file" + kLeft).c_str()), 0);
  ASSERT_EQ(mkfifo(pathOf("pipe" + kLeft).c_str(), 0600), 0);
  files_.removeLeftovers(pathOf(""));
  EXPECT_THAT(names(), ElementsAre("file" + kLeft, "kept", "pipe" + kLeft));
  EXPECT_EQ(files_.read(kept, 10), "kept");
}

/// A process that writes a file without end, until it is killed.
class Writer {
 public:
  explicit Writer(const std::string& path) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) ADD_FAILURE() << "no pipe";
    child_ = fork();
    if (child_ == 0) {
      LinuxFiles files;
      const std::string bytes(1 << 20, 'x');
      for (char said = '.'; write(ends[1], &said, 1) == 1 && files.replace(path, bytes);) {
      }
      _exit(1);
    }
    ::close(ends[1]);
    said_ = ends[0];
  }
  ~Writer() {
    kill();
    ::close(said_);
  }
  /// Waits until it has begun to write so many times more.
  void wait(int times) const {
    for (char said = 0; times > 0; --times) ASSERT_EQ(read(said_, &said, 1), 1);
  }
  void kill() {
    if (child_ <= 0) return;
    ::kill(child_, SIGKILL);
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = -1;
    EXPECT_TRUE(WIFSIGNALED(status)) << "one of its writes failed";
  }

 private:
  pid_t child_ = -1;
  int said_ = -1;
};

TEST_F(Leftovers, OfManyKilledWritersAreGoneAfterTheNextOne) {
  int left = 0;
  for (int death = 0; death < 30; ++death) {
    Writer writer(pathOf("file"));
    writer.wait(1 + death % 3);
    writer.kill();
    for (const std::string& name : names()) left += isLeftover(name) ? 1 : 0;
    files_.removeLeftovers(pathOf("file"));
    for (const std::string& name : names()) ASSERT_EQ(name, "file");
  }
  RecordProperty("left", left);
}

TEST_F(Leftovers, WhatALivingWriterIsAtStays) {
  const Writer writer(pathOf("file"));
  writer.wait(2);
  for (int turn = 0; turn < 200; ++turn) {
    files_.removeLeftovers(pathOf("file"));
    ASSERT_EQ(files_.read(pathOf("file"), 2 << 20).value_or("").size(), std::size_t{1} << 20);
  }
}

// In one process too: every write succeeds while another thread removes leftovers all the time.
TEST_F(Leftovers, WhatAnotherThreadIsWritingStays) {
  std::atomic<bool> isOver{false};
  std::thread remover([&] {
    while (!isOver) files_.removeLeftovers(pathOf("file"));
  });
  for (int turn = 0; turn < 500; ++turn) {
    EXPECT_TRUE(files_.replace(pathOf("file"), std::to_string(turn)));
  }
  isOver = true;
  remover.join();
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(Leftovers, ALockedOneStaysUntilItsLockGoes) {
  const std::string path = folder_.write("file" + kLeft, "half");
  const int held = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(held, LOCK_EX), 0);
  files_.removeLeftovers(pathOf("file"));
  EXPECT_THAT(names(), ElementsAre("file" + kLeft));
  close(held);
  files_.removeLeftovers(pathOf("file"));
  EXPECT_THAT(names(), IsEmpty());
}

}  // namespace
}  // namespace halvora
